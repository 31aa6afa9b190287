// Reading files into the ring and writing them back: the opener, the reader, the save road, last files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Status values of xf_find and xftr1.
enum xf_find_status {
  XF_FIND_OK = 0,
  XF_FIND_TOO_LONG = 1,
  XF_FIND_READ_FAILED = 3,
  XF_FIND_NOT_EDITABLE = 4,
  XF_FIND_LINE_TOO_LONG = 5,
  XF_FIND_TOO_MANY_LINES = 6,
  XF_FIND_NOT_FOUND = 28,
};

// Longest file name, and longest path at any step of the search.
constexpr std::size_t xf_max_name = 1199;
constexpr std::size_t xf_max_path = 1200;

// Puts the file in the ring, or goes to it if it is there. Returns 0 or 1.
int xf_open(std::string_view name, std::string_view work_dir, bool no_alternative);
// Works out which file a name means (absolute, relative to `dir`, then along path_dirs). With `for_new`, a
// name found nowhere stands for a new file in `dir`; otherwise that is XF_FIND_NOT_FOUND.
int xf_find(std::string_view name, std::string_view dir, bool for_new, std::string& out);
// Reads a file into the lines of the current file. Returns an xf_find_status.
int xftr1(const std::string& path);
// The whole of saving the current file. Returns 0, 1 (failed, message given), 2 (refused), 3 (declined).
int xf_save(std::string_view work_dir, int force, int keep_date, int crlf, int check, int verify);
// The file's bytes and the backup. Returns 0, 2 (failed) or 3 (declined).
int xf_write(int crlf, int verify);
// Applies the optional `fn ft fd` operands of SAve and FIle ("=" keeps a part); returns the new full name,
// or nullopt with message and rc set.
std::optional<std::string> xf_name_args(std::string_view operands, std::string_view work_dir);
// Puts the current file first in the last-files list.
void xf_lastfiles_update();
// Rebuilds the current file's id line text.
void xf_build_id_text();
