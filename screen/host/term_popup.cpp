// The terminal host's popup menu: a boxed list over the screen, modal until an item is chosen or refused.
#include <algorithm>

#include "screen/as_read.h"
#include "screen/host/term_impl.h"

int term_host::popup(std::span<const std::string> labels, int line, int col) {
  impl& s = *p_;
  if (!s.started || s.suspended || labels.empty()) return -1;
  int width = 0;
  for (const auto& l : labels) width = std::max(width, static_cast<int>(l.size()));
  const int n = static_cast<int>(labels.size());
  const int w = std::min(width + 4, COLS), h = std::min(n + 2, LINES);
  const int shown = h - 2;
  if (shown < 1 || w < 3) return -1;
  const int y = std::clamp(line - 1, 0, LINES - h), x = std::clamp(col - 1, 0, COLS - w);
  WINDOW* win = newwin(h, w, y, x);
  if (!win) return -1;
  int sel = 0, top = 0, result = -1;
  bool done = false;
  s.in_popup = true;
  auto draw = [&] {
    werase(win);
    box(win, 0, 0);
    for (int r = 0; r < shown && top + r < n; ++r) {
      const std::string& l = labels[static_cast<size_t>(top + r)];
      for (int c = 0; c < w - 2; ++c) {
        int k = c - 1;  // a blank before and after the label
        uint8_t b = k >= 0 && k < static_cast<int>(l.size()) ? static_cast<uint8_t>(l[static_cast<size_t>(k)]) : ' ';
        cchar_t cc = s.cell(fs_hcell{b, static_cast<uint8_t>(top + r == sel ? 2 : 0), 63, 1});
        mvwadd_wch(win, r + 1, c + 1, &cc);
      }
    }
    wmove(win, sel - top + 1, 1);
    wnoutrefresh(stdscr);
    wnoutrefresh(win);
    if (s.visible) doupdate();
  };
  auto choose = [&](int i) {
    sel = std::clamp(i, 0, n - 1);
    if (sel < top) top = sel;
    if (sel >= top + shown) top = sel - shown + 1;
  };
  while (!done) {
    draw();
    fs_event ev;
    fs_wait got = wait(ev, -1);
    if (got != fs_wait::event) {
      if (got == fs_wait::resize) s.resize_pending = true;  // the read that follows sees it
      break;
    }
    if (ev.release && !(ev.code >= FSK_BUTTON1 && ev.code <= FSK_BUTTON3)) continue;
    const int row = ev.y / s.cell_h - y - 1 + top, cx = ev.x / s.cell_w - x;
    const bool on_item = row >= top && row < top + shown && row < n && cx >= 1 && cx < w - 1;
    switch (ev.code) {
      case FSK_UP: choose(sel == 0 ? n - 1 : sel - 1); break;
      case FSK_DOWN: choose(sel == n - 1 ? 0 : sel + 1); break;
      case FSK_HOME: case FSK_PGUP: choose(0); break;
      case FSK_END: case FSK_PGDN: choose(n - 1); break;
      case 13: result = sel, done = true; break;
      case 27: done = true; break;
      case FSK_BUTTON1: case FSK_BUTTON2: case FSK_BUTTON3:
        if (!on_item) {
          done = !ev.release;  // a press outside the box closes it
          break;
        }
        choose(row);
        if (ev.release) result = sel, done = true;
        break;
      case FSK_DRAG: case FSK_MOVE:
        if (on_item) choose(row);
        break;
      default:
        if (ev.code == 'c' && ev.mods == FSM_CTRL) {
          done = true;
          break;
        }
        if (ev.code < 256 && ev.code > 32 && !(ev.mods & (FSM_CTRL | FSM_ALT))) {
          // the first item from the selected one on whose first letter is the key
          auto lower = [](int c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
          for (int k = 1; k <= n; ++k) {
            int i = (sel + k) % n;
            const std::string& l = labels[static_cast<size_t>(i)];
            size_t at = l.find_first_not_of(' ');
            if (at != std::string::npos && lower(static_cast<unsigned char>(l[at])) == lower(ev.code)) {
              result = i;
              done = true;
              break;
            }
          }
        }
        break;
    }
  }
  s.in_popup = false;
  delwin(win);
  touchwin(stdscr);
  s.update();
  return result;
}
