// The input cycle: the read that waits for the user, the take-in of changed fields, the key step, and the main
// loop of the interactive editor.
#pragma once

#include <cstdint>
#include <string_view>

// The event that ended the last read.
struct xf_event {
  int kind = -1, value = 0, nb_modified = 0;
  int no_key = 0;  // served already: no key definition runs
};

struct xf_input_state {
  xf_event ev;
  bool shown = false;  // the window has been shown once
  int32_t autoindent = 0;       // AUTOIndent ON: Enter behind a line's end opens a new line under its indentation
  int32_t autoindent_stay = 1;  // AUTOIndent ... STAY: otherwise the cursor stays where it is
};
extern xf_input_state xf_in;

// Back to the start-up state.
void xf_input_reset();
// Takes all changed fields into the lines and the command line; with step 1 the next change opens an undo step.
void xfack(int step);
// Notes where the cursor stands, so that the next composition puts it back there.
void xf_note_cursor();
// One turn of user input: waits, serves what needs no command, takes typing in, and returns with ev set.
void xfread(std::string_view work_dir);
// The key step of xfcom: runs the key's definition and the command line's text by the key's mode.
void xf_key_step(std::string_view work_dir);
// After a plain Enter that ran nothing: opens a line (AUTOIndent ON), or leaves the cursor, or sends it to the
// command line.
void xfautoi();
// The indentation a new line after `line` gets: the leading blanks and TABs of the nearest line above with text.
std::string xf_indent(int32_t line);
// The console: leaves the screen for the terminal's normal one (on), or waits for Return and comes back (off).
void xf_console(bool on);
// The interactive loop: queued commands first, else compose, read and run the key. Never returns.
[[noreturn]] void xfx(std::string_view work_dir);
