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

// What a screen cell stands on: the command line, a text cell of a line, an empty row below the end (line: the
// line typing there makes), a row above the top (index: nearest first), the TOF row, a prefix field (column: the
// cell in it), or nothing of these.
enum xf_place_kind { XP_NONE, XP_CMD, XP_LINE, XP_BELOW, XP_ABOVE, XP_TOF, XP_PREFIX };
struct xf_place {
  xf_place_kind kind = XP_NONE;
  int32_t view = 0, line = 0, column = 0, index = 0;  // column: 0-based in the line; 1-based on the command line
  int32_t screen_line = 0, screen_col = 0;            // the cell itself, 1-based
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
// Where the cursor stood when the input was last taken (xf_note_cursor, moved with lines a take-in made).
const xf_place& xf_cursor_place();
// Moves the noted cursor (a paste leaves it behind the text); the next composition puts it there.
void xf_set_cursor_place(const xf_place& p);
// What field `id` (0: none) and its 1-based cell `cell` stand on, as the last composition laid them out.
xf_place xf_place_at(int id, int cell, int screen_line, int screen_col);
// Takes the typed fields in, opening an undo step, and keeps the cursor where it stood.
void xf_store_changes();
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
