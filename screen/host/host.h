// The screen host: the narrow cell-level interface through which the screen library reaches a display.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// One painted cell, already resolved by the library: a byte to show, highlight (0-4), a colour-table index (0-63)
// and an intensity (0-2). A cell that shows no text arrives as a blank.
struct fs_hcell {
  uint8_t ch;
  uint8_t hlt;
  uint8_t color;
  uint8_t intens;
};

// Modifier bits of fs_event::mods.
inline constexpr uint16_t FSM_SHIFT = 14;
inline constexpr uint16_t FSM_CTRL = 48;
inline constexpr uint16_t FSM_ALT = 64;

// One input event, as the read cycle consumes it. Codes: 0-255 characters, 32512 and up named events (as_read.h).
struct fs_event {
  uint16_t code = 0;
  uint16_t release = 0;  // bit 1: key or button up
  uint16_t mods = 0;     // FSM_* bits
  int16_t x = 0, y = 0;  // mouse position in client pixels
  uint32_t seconds = 0, microseconds = 0;
  uint16_t origin = 0;   // 31743 for a character pushed by a macro
  int ch = -1;           // the character as typed, or -1
};

// What the host tells about its display. Pixel values may be nominal on a terminal.
struct fs_geometry {
  int lines = 24, cols = 80;  // the grid; the status row lies below it
  int cell_w = 8, cell_h = 16;
  int desk_w = 640, desk_h = 400, left = 0, top = 0, client_w = 640, client_h = 400;
};

// The result of waiting for input.
enum class fs_wait { event, timeout, resize, quit };

// Capability flags.
inline constexpr unsigned FSH_COLOUR = 1;      // can show colours
inline constexpr unsigned FSH_MOUSE = 2;       // delivers mouse events
inline constexpr unsigned FSH_OWN_REPEAT = 4;  // the device repeats keys itself: the library's repeat waits are skipped
inline constexpr unsigned FSH_POPUP = 8;       // can show a popup menu

// Event code of a paste of text (a terminal's bracketed paste); the text is taken with take_paste.
inline constexpr uint16_t FSH_PASTE = 32840;

class fs_host {
 public:
  virtual ~fs_host() = default;
  // Takes the display; false with a reason when it cannot.
  virtual bool start(int argc, char** argv, std::string& why) = 0;
  // Gives the display back in the state it was found.
  virtual void stop() = 0;
  // Current grid size and pixel metrics.
  virtual fs_geometry geometry() const = 0;
  // Paints a run of cells from (line, col), 1-based; line lines+1 is the status row.
  virtual void paint(int line, int col, std::span<const fs_hcell> run) = 0;
  // Clears the whole display.
  virtual void clear() = 0;
  // Places the text cursor.
  virtual void cursor(int line, int col) = 0;
  // Waits up to timeout_ms (-1: no limit) for one event.
  virtual fs_wait wait(fs_event& ev, int timeout_ms) = 0;
  // Sounds one alarm; flash is the refusal signal.
  virtual void beep() = 0;
  virtual void flash() = 0;
  // Leaves the display for a while (true) or takes it back (false).
  virtual void suspend(bool on) = 0;
  virtual unsigned caps() const = 0;
  // The 64 RGB entries of the colour table.
  virtual void palette(std::span<const uint32_t, 64> rgb) = 0;
  // Shows a failure message to the user.
  virtual void message(std::string_view text) = 0;
  // Shows a popup menu at a cell; the chosen item from 0, or -1.
  virtual int popup(std::span<const std::string> labels, int line, int col) = 0;
  // Hides or shows the display.
  virtual void show(bool visible) = 0;
  // The text of the last FSH_PASTE event, lines ended by LF; empty once taken, and on hosts that have no paste.
  virtual std::string take_paste() { return {}; }
  // Takes pending input in without waiting and tells whether it held Ctrl+C, which is taken out; other input
  // stays for the next read. Hosts that cannot look ahead say no.
  virtual bool take_interrupt() { return false; }
};
