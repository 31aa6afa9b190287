// Pasting: the display's paste event (a terminal's bracketed paste) and S_Paste of linear text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct xf_paste_state {
  // The clipboard's text as this host knows it: what the terminal pasted last (lines ended by LF).
  std::string clip;
  bool have_clip = false;
};
extern xf_paste_state xf_paste;

// Back to the start-up state.
void xf_paste_reset();
// Serves a paste event: text without line ends goes in at the cursor as typing would (insert or overwrite by
// the insert state); text with line ends goes in as lines at the cursor. The cursor ends behind the text.
void xf_paste_event(std::string_view text);
// Puts linear text (lines ended by LF) into the current file at a 0-based line and column, in one undo step:
// inserted, the first piece joins the line at the column and the last piece takes the rest of the line; or
// overlaid, each piece over the characters of successive lines. Sets the cursor behind the text.
void xf_paste_linear(int32_t line, int32_t column, std::string_view text, bool overlay);
