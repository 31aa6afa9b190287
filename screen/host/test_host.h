// A screen host for tests: records what is painted as text and replays a script of events.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "screen/host/host.h"

class test_host : public fs_host {
 public:
  test_host(int lines = 24, int cols = 80);

  // Script: each call appends to the events waiting to be read, stamped with the script clock.
  void key(int code, uint16_t mods = 0, bool with_release = false);
  void release(int code, uint16_t mods = 0);
  void type(std::string_view text);
  void press(int button, int line, int col, uint16_t mods = 0);  // button 1-3
  void unpress(int button, int line, int col, uint16_t mods = 0);
  void click(int button, int line, int col, uint16_t mods = 0);   // press and release
  void drag(int line, int col);
  void move(int line, int col);
  void wheel(bool up, int line, int col, uint16_t mods = 0);  // one turn of the wheel over a cell
  void paste(std::string_view text);     // a paste of the display (FSH_PASTE), its text for take_paste
  void interrupt() { interrupts_++; }    // a Ctrl+C that take_interrupt finds while the editor is busy
  void quiet(int n = 1);                 // n waits that end with no event (the timeout of a timed wait)
  void resize(int lines, int cols);      // the display changes size
  void advance(uint32_t microseconds);   // moves the script clock on
  void popup_answer(int item) { popup_answers_.push_back(item); }
  size_t pending() const { return script_.size(); }

  // What the display shows: the text of a row (1-based, the status row is lines+1), highlight digits of a row.
  std::string row(int line) const;
  std::string hlt_row(int line) const;
  int cursor_line = 0, cursor_col = 0;
  int beeps = 0, flashes = 0, paints = 0, clears = 0;
  long painted_cells = 0;
  bool started = false, visible = true, suspended = false;
  std::vector<std::string> messages;
  std::vector<std::vector<std::string>> popups_shown;

  bool start(int argc, char** argv, std::string& why) override;
  void stop() override;
  fs_geometry geometry() const override;
  void paint(int line, int col, std::span<const fs_hcell> run) override;
  void clear() override;
  void cursor(int line, int col) override;
  fs_wait wait(fs_event& ev, int timeout_ms) override;
  void beep() override { ++beeps; }
  void flash() override { ++flashes; }
  void suspend(bool on) override { suspended = on; }
  unsigned caps() const override { return FSH_COLOUR | FSH_MOUSE | FSH_POPUP; }
  void palette(std::span<const uint32_t, 64>) override {}
  void message(std::string_view text) override { messages.emplace_back(text); }
  int popup(std::span<const std::string> labels, int line, int col) override;
  void show(bool on) override { visible = on; }
  std::string take_paste() override;
  bool take_interrupt() override {
    if (interrupts_ == 0) return false;
    --interrupts_;
    return true;
  }

 private:
  struct step {
    enum kind_t { event, quiet, resize } kind;
    fs_event ev;
    int lines = 0, cols = 0;
  };
  void push_event(fs_event ev);
  fs_event mouse_event(int code, int line, int col, uint16_t mods, bool up) const;
  int lines_, cols_;
  int interrupts_ = 0;
  uint64_t clock_us_ = 1'000'000;
  std::deque<step> script_;
  std::deque<int> popup_answers_;
  std::deque<std::string> pastes_;
  std::vector<std::string> text_;
  std::vector<std::string> hlt_;
};
