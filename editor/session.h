// Shell sessions: the settings and memory of the XSHell family.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
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
// The next session file for `word` ("xshell", "compile"): the first <dir>/<n>.<word> on no disk and in no ring
// up to XSHELLMax, else the next in turn.
std::string xf_session_pick(std::string_view word);
// Runs `text` (behind the value of `shell_var` when that variable is set) with its output growing in the file
// `path`, which replaces any file of that name in the ring; then the view and the file from before come back.
// False when the file could not be made or the user stopped the command.
bool xf_session_run(const std::string& text, const char* shell_var, const std::string& path);
