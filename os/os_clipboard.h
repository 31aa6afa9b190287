// The system clipboard: the first backend that applies (Wayland, X11, the terminal's OSC 52, none), chosen at run
// time, and the side file that tells a later paste that the clipboard's text is a rectangular block.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum os_clip_kind : int32_t { OS_CLIP_NONE, OS_CLIP_WAYLAND, OS_CLIP_X11, OS_CLIP_OSC52 };

// The backend in force now: WAYLAND_DISPLAY with wl-copy on PATH, DISPLAY with xclip on PATH, a terminal that
// takes OSC 52 (tmux, xterm-like TERM), or none.
int32_t os_clip_backend();
// Fixes the backend whatever the environment says (tests); -1 chooses at run time again.
void os_clip_force(int32_t backend);
// Can the backend give text back (OSC 52 and none cannot)?
bool os_clip_readable(int32_t backend);
// Offers text (lines ended by LF) to the clipboard, or to the primary selection; false when it could not.
bool os_clip_put(std::string_view text, bool primary = false);
// Reads the clipboard's text as it stands: 1 text, 0 no text, -1 it could not be read within a second.
int os_clip_get(std::string& text);
// Notes whether the text just offered is a rectangular block (a side file, so other instances see it too).
void os_clip_mark(std::string_view text, bool rectangular);
// Is `text` the rectangular block last offered?
bool os_clip_is_rect(std::string_view text);
// The OSC 52 sequence that sets the clipboard ('c') or primary ('p') to text.
std::string os_clip_osc52(std::string_view text, char which);
