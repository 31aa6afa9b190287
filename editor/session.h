// Shell sessions: the settings and memory of the XSHell family.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct xf_session_state {
  int32_t max_files = 10;          // XSHELLMax
  int32_t counter = 0;             // the session file reused last when all are taken
  std::string messages_dir = ".";  // MESsagesdir
  std::string last_name;           // the last session file
  std::vector<std::string> shell_ext{"exe", "pdf", "gif", "jpg", "jpeg", "png", "tif", "tiff",
                                     "pnx", "bmp", "doc", "fm",  "xls", "msi", "rtf"};  // SHEllEXT
};
extern xf_session_state xf_session;

void xf_session_reset();
