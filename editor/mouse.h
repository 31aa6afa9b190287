// The mouse in the editor: what a press, a drag and the wheel do on each part of a view, the click count, and
// the MOUSEMode and WHeel settings.
#pragma once

#include <cstdint>
#include <string_view>

// MOUSEMode values; FULLMOTIF is WINDOWS.
enum xf_mouse_mode : int32_t { XM_MOTIF, XM_OPENLOOK, XM_OPENLOOK_WHEEL, XM_WINDOWS };

struct xf_mouse_state {
  int32_t mode = -1;            // MOUSEMode; -1 the start value: WINDOWS, MOTIF in batch
  int32_t wheel[2] = {4, 10};   // WHeel: lines one turn scrolls, plain and with Shift
  int32_t count = 0;            // presses at one cell within the double-click time: 1 to 3
  uint64_t last_us = 0;         // time and screen cell of the last press
  int32_t last_line = 0, last_col = 0;
  bool prefix_drag = false;     // button 1 came down on a prefix field: a drag is to take whole lines
  int32_t anchor_line = -1;     // the 0-based line of the last press of button 1 in the file (or prefix) area
  int32_t anchor_col = 0;       // and its 0-based column: a drag makes the selection from there
  bool rect_press = false;      // and came down with Meta or Ctrl: its drag makes a block
};
extern xf_mouse_state xf_mouse;

// Back to the start-up state.
void xf_mouse_reset();
// The mode in force (the start value resolved).
int32_t xf_mouse_mode();
// Counts a press at a screen cell and time (microseconds): 1, 2 or 3; a fourth press at the cell counts 1.
int32_t xf_click_count(int32_t line, int32_t col, uint64_t us);
// Serves a press, drag (ASR_BUTTON, ASR_DRAG with the button) or wheel event of the read. True when commands
// ran and the read is to end without the Enter definition; false when it was served and the read goes on.
bool xf_mouse_event(int kind, int button, std::string_view work_dir);
// The button went up: a selection that was being made is finished.
void xf_mouse_release();
