// Macro tables (filled by HAsh) and the macro step of the command processor.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum xf_macro_kind { XF_MACRO_COMMAND, XF_MACRO_REXX, XF_MACRO_FLIST };

struct xf_macro {
  std::string name;  // base name without extension
  std::string path;
  bool lines_read = false;
  std::vector<std::string> lines;  // command macros: read on first use
};

// A running command macro: its name and arguments, for $0..$9 and $argv.
struct xf_macro_frame {
  std::string name;
  std::vector<std::string> argv;  // argv[0] is the name
  std::string args;
};

struct xf_macro_state {
  std::vector<xf_macro> tables[3];
  std::vector<std::string> running;
  std::vector<xf_macro_frame> frames;
};
extern xf_macro_state xf_macros;

void xf_macro_reset();
// The innermost running command macro, or null.
const xf_macro_frame* xf_macro_current_frame();
// The table an extension belongs to, or -1.
int xf_macro_kind_of(std::string_view path);
// Enters a file in its table (a later entry of the same name replaces the earlier). Returns false if the
// extension belongs to no table.
bool xf_macro_add(const std::string& path, int kind);
// Scans a directory for macro files.
void xf_macro_scan_dir(const std::string& dir);
// Finds a macro by name in a table (index or -1).
int xf_macro_find(int kind, std::string_view name);
// The macro step: runs the macro named by the first word, if there is one. Returns true when found.
bool xf_macro_step(std::string_view text, std::string_view first_word, std::string_view work_dir);
