// The terminal host's inside, shared by its sources: the state behind term_host and helpers. Includes curses.
#pragma once

#include <curses.h>
#include <signal.h>
#include <term.h>
#undef lines  // terminfo names that clash with ours
#undef columns

#include <array>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "screen/host/term_colour.h"
#include "screen/host/term_host.h"
#include "screen/host/term_keys.h"

inline constexpr int TERM_NOMINAL_CELL_W = 8, TERM_NOMINAL_CELL_H = 16;  // pixels of a cell the terminal hides

bool term_write_all(int fd, std::string_view s);  // false when the terminal would take no more
uint64_t term_now_us();                           // the monotonic clock, in microseconds
bool term_take_continued();                       // a SIGCONT came since the last look

struct term_host::impl {
  term_options opt;
  bool started = false, visible = true, suspended = false, in_popup = false, lost = false;
  SCREEN* screen = nullptr;
  FILE* in_fp = nullptr;
  FILE* out_fp = nullptr;
  int tty_fd = -1, out_fd = -1, opened_fd = -1;
  bool xtermish = false, mouse = false, kitty_pushed = false;
  struct sigaction old_cont {};
  bool cont_installed = false;

  term_colour_mode mode = term_colour_mode::none;
  std::array<int, 64> map{};
  std::unordered_map<uint64_t, int> pairs;
  int next_pair = 1;

  std::array<wchar_t, 256> glyph{};
  std::unordered_map<int, term_key> keys;

  std::deque<fs_event> queue;
  bool resize_pending = false;
  bool in_paste = false;
  std::string paste, last_paste;
  bool paste_refused = false;
  int held = 0;  // the mouse button held down, 0 none
  int cell_w = TERM_NOMINAL_CELL_W, cell_h = TERM_NOMINAL_CELL_H;
  uint64_t last_beep_us = 0;
  std::vector<fs_hcell> status;  // the status row as the library last painted it
  std::vector<cchar_t> run_cells;
  bool message_shown = false;
  std::string enable_seq, disable_seq;

  // --- start and leave ---
  bool open_tty(std::string& why);
  void build_keys();
  void build_glyphs();
  void build_sequences();
  void publish_reset();
  void update_cells();
  void release_tty();

  // --- input ---
  int read_now(wint_t& wc, int wait_ms);
  bool read_available();
  void take(int rc, wint_t wc);
  void escape();
  void csi(std::string_view body);
  void push(fs_event ev, bool with_release);
  void push_key(term_key k, bool with_release = true);
  void mouse_report();
  void sgr_mouse(const term_csi& r);
  void paste_byte(int byte);
  void paste_escape(int rc, wint_t wc);
  void paste_end();

  // --- output ---
  void update();
  cchar_t cell(const fs_hcell& h);
  int pair_of(int fg, int bg);
  void restore_status();
};
