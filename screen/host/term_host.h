// The terminal host: the screen library's display on a text terminal, through ncursesw. Chosen at run time
// beside the test host; nothing outside screen/host/ sees curses.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "screen/host/host.h"

struct term_options {
  const char* term = nullptr;  // terminal type; null: $TERM
  int in_fd = -1, out_fd = -1;  // the terminal; -1: stdin and stdout when both are ttys, else /dev/tty
  int escape_delay_ms = 100;   // ESC followed by a key within this time is Alt with the key (ESCAPEdelay)
  int wake_fd = -1;            // when readable, a wait ends with fs_wait::quit (the termination self-pipe)
};

class term_host final : public fs_host {
 public:
  explicit term_host(const term_options& options = {});
  ~term_host() override;  // gives the terminal back if stop() was not called

  // Takes the terminal: fails (with a reason) without a tty, or with an unknown or "dumb" terminal type.
  // Options read from argv: -Wh/-height lines and -Ww/-width columns ask the terminal for that size once.
  bool start(int argc, char** argv, std::string& why) override;
  void stop() override;
  fs_geometry geometry() const override;
  void paint(int line, int col, std::span<const fs_hcell> run) override;
  void clear() override;
  void cursor(int line, int col) override;
  fs_wait wait(fs_event& ev, int timeout_ms) override;
  void beep() override;
  void flash() override;
  // The console: on leaves the program's screen for the terminal's normal one (cooked tty); off comes back.
  void suspend(bool on) override;
  unsigned caps() const override;
  void palette(std::span<const uint32_t, 64> rgb) override;
  // Shows the text on the status row, reversed, until the next input event.
  void message(std::string_view text) override;
  // A boxed menu at the cell: arrows, Enter, Esc, first letter or mouse; the item from 0 or -1.
  int popup(std::span<const std::string> labels, int line, int col) override;
  void show(bool visible) override;
  // A bracketed paste arrives as one FSH_PASTE event with this text (CR LF and lone CR made LF).
  std::string take_paste() override;
  bool take_interrupt() override { return drain(); }

  // Puts what was painted on the terminal now (a wait does it before it sleeps).
  void flush();
  // ESCAPEdelay: how long an ESC waits for a key to make an Alt combination.
  void set_escape_delay(int ms);
  // Takes pending input into the queue without waiting (typeahead kept); true when it held Ctrl+C, which is
  // taken out.
  bool drain();
  // The terminal went away (end of file, I/O error, hang-up): every wait ends with fs_wait::quit.
  bool lost() const;

  // What the terminal shows at a cell (1-based), as ncurses last put it there: the byte, the colours (-1 the
  // terminal's default) and the attributes. Reads the screen back, for tests and whoever needs it.
  struct shown_cell {
    int byte = ' ';
    int fg = -1, bg = -1;
    bool reverse = false, underline = false, bold = false;
  };
  shown_cell shown(int line, int col) const;
  std::string shown_text(int line) const;     // the bytes of a row
  void shown_cursor(int& line, int& col) const;

 private:
  struct impl;  // term_impl.h
  std::unique_ptr<impl> p_;
};

// Turns off what the terminal host turned on and puts the tty modes back as they were found, by a string made
// at start and tcsetattr. Async-signal-safe, for the emergency road; does nothing when no host holds a terminal.
void term_emergency_reset();
// The string term_emergency_reset writes (empty when no host holds a terminal).
std::string_view term_reset_string();
