// The editor's side of PALOMA: running REXX macros inside the editor, with the TOLVA environment and EXTRACT.
#pragma once

#include <string>
#include <string_view>

struct xf_rexx_state {
  bool ready = false;  // the built-ins and the TOLVA environment are installed
  int depth = 0;       // REXX macros running now
  bool console = false;  // a running macro has the terminal's own screen
  bool killed = false;   // the user stopped the running macros
  long polls = 0;        // clauses polled since the outermost macro started
  std::string name;      // the macro running now, for the message that it was killed
};
extern xf_rexx_state xf_rexx;

// Runs the REXX macro file `path` with its argument string; `called` is the name it was called by. Returns the
// macro command's return code: 1 when the run failed or ended with a non-zero code, else 0.
int xf_rexx_run(const std::string& path, std::string_view args, std::string_view called);
