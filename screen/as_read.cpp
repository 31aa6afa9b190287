// The read cycle: waits for events, applies the key and mouse rules, and returns one reason with its value.
#include <algorithm>
#include <chrono>
#include <iterator>
#include <tuple>

#include "screen/fs_state.h"

as_state g_as;

namespace {

constexpr uint16_t kMacroOrigin = 31743;
constexpr int kDeleteCode = 127, kBackspaceCode = 8, kEnter = 13, kTab = 9, kEsc = 27;
constexpr uint32_t kDoubleClickUs = 390000;
constexpr int kFirstPfk = 32586, kLastPfk = 32609, kFirstNamed = 32570, kLastNamed = 32584;

// Keyboard rows at start: emitted plain, emitted Shift, then what is typed: plain, Shift, Alt, APL plain, Shift, Alt.
constexpr const char* kRows[] = {
    "313233343536373839302d3d5c6071776572747975696f705b5d6173646667686a6b6c3b277a786376626e6d2c2e2f1b",
    "21402324255e262a28295f2b7c7e51574552545955494f507b7d4153444647484a4b4c3a225a584356424e4d3c3e3f1b",
    "313233343536373839302d3d5c6071776572747975696f705b5d6173646667686a6b6c3b277a786376626e6d2c2e2ff6",
    "21402324255e262a28295f2b7c7e51574552545955494f507b7d4153444647484a4b4c3a225a584356424e4d3c3e3f00",
    "e2e9eef4fbeae8f9e7e0bdadcaeebbc1afbdbec3bfb3b9baf4aaabbdaeb0b1b2b4b5b6eae9c4c2adc0acb8b7ecf2c9ff",
    "313233343536373839302d3d5c6051574552545955494f505b5d4153444647484a4b4c3b275a584356424e4d2c2e2fc5",
    "a8afac88895e9f2a28295f2b5c7eaabeb9bd7e8687bcb1847b7db897985f9291b0ad8c3a859b9c9d9e8382fe3c3e3fc6",
    "21909493b2b3b4b58b8ad88e99bbd9ecc8daddf2fecdd4d58d8fc1dbc7cacbcccecfd09695f5f0c3e3c2d3d2aea99a86",
};

static_assert(std::size(kRows) == std::tuple_size_v<decltype(as_state::rows)>);

// Key roles per keyboard model; rows in role order HOME, IHOME, PREV_FIELD, INS, CAPS, APL, DOWN_FIELD, UP_FIELD, EOF.
struct model_row {
  int model;  // -1: all other models
  as_state::role roles[AR_COUNT];
};
constexpr as_state::role kNone{-1, 0, 0, 0};
constexpr model_row kModels[] = {
    {14, {{32574, 0, 0, 0}, {32576, 0, 0, 0}, kNone, {32573, 0, 0, 0}, kNone, kNone, {10, 0, 0, 0}, {6, 0, 0, 0},
          {27, 0, 0, 0}}},
    {0, {{32575, 0, 0, 0}, {32575, 0, 0, 1}, {32576, 0, 0, 0}, kNone, {32582, 0, 0, 0}, {32580, 0, 0, 0},
         {6, 0, 0, 0}, {10, 0, 0, 0}, {32556, 0, 0, 0}}},
    {3, {{32573, 0, 0, 0}, kNone, {32575, 0, 0, 0}, {32574, 0, 0, 0}, {0, 0, 0, 0}, kNone, {32557, 0, 0, 0},
         {32556, 0, 0, 0}, {32598, 0, 0, 0}}},
    {12, {{32573, 0, 0, 0}, kNone, {32575, 0, 0, 0}, {32574, 0, 0, 0}, {0, 0, 0, 0}, kNone, {32557, 0, 0, 0},
          {32556, 0, 0, 0}, {32598, 0, 0, 0}}},
    {4, {{32576, 0, 0, 0}, kNone, {32581, 0, 0, 0}, {32574, 0, 0, 0}, {0, 0, 0, 0}, kNone, {6, 0, 0, 0},
         {10, 0, 0, 0}, {32554, 0, 0, 0}}},
    {-1, {{32574, 0, 0, 0}, {32576, 0, 0, 0}, kNone, {32573, 0, 0, 0}, {0, 0, 0, 0}, {32584, 0, 0, 0},
          {10, 0, 0, 0}, {6, 0, 0, 0}, {27, 0, 0, 0}}},
};

// The modifier number m of a key number n + count * m, indexed by Shift | Ctrl << 1 | Alt << 2.
constexpr int kModifierNumber[8] = {0, 1, 2, 4, 3, 5, 6, 7};

struct result {
  bool done = false;
  int kind = 0, value = 0;
};
result done(int kind, int value = 0) { return {true, kind, value}; }
const result kNothing{};

fs_page& page() { return *g_fs.cur; }

int field_at_cell(int line, int col) {
  if (line < 1 || line > g_fs.nb_lines || col < 1 || col > g_fs.nb_cols) return -1;
  return page().cellmap[static_cast<size_t>(fs_flat(line, col))] - 1;
}
int cursor_field() { return field_at_cell(page().cur_line, page().cur_col); }
int mouse_field() { return field_at_cell(page().mou_line, page().mou_col); }
const fs_field& field(int i) { return page().fields[static_cast<size_t>(i)]; }

uint64_t event_us(const fs_event& ev) { return uint64_t{ev.seconds} * 1'000'000 + ev.microseconds; }

// --- waiting ---

using clock_type = std::chrono::steady_clock;
clock_type::time_point g_deadline;

// One event from the library's queue or the host; false when the wait ended without one (flags tell why).
bool get_event(fs_event& ev, int timeout_ms, bool& timed_out) {
  timed_out = false;
  if (!g_as.queue.empty()) {
    ev = g_as.queue.front();
    g_as.queue.pop_front();
    return true;
  }
  switch (g_fs.host->wait(ev, timeout_ms)) {
    case fs_wait::event:
      return true;
    case fs_wait::timeout:
      timed_out = true;
      return false;
    case fs_wait::resize:
      g_as.resize = true;
      return false;
    case fs_wait::quit:
      g_as.quit = true;
      return false;
  }
  return false;
}

int read_timeout() {
  if (g_as.timer_ms <= 0) return -1;
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(g_deadline - clock_type::now()).count();
  return static_cast<int>(std::max<long long>(left, 0));
}

void set_modifiers(const fs_event& ev) {
  g_as.ctrl = ev.mods & FSM_CTRL;
  g_as.shift = g_as.shift2 = ev.mods & FSM_SHIFT;
  g_as.alt = ev.mods & FSM_ALT;
}

void set_mouse_cell(const fs_event& ev) {
  fs_geometry g = g_fs.host->geometry();
  int col = ev.x / std::max(g.cell_w, 1) + 1, line = ev.y / std::max(g.cell_h, 1) + 1;
  page().mou_col = std::clamp(col, 1, g_fs.nb_cols);
  page().mou_line = std::clamp(line, 1, g_fs.nb_lines);
}

// Tab and back tab repeat while held: ten polls of the first delay, then one action per poll of the next delay.
void tab_repeat(bool forward, int code) {
  as_tab(forward);
  if (g_fs.host->caps() & FSH_OWN_REPEAT) return;
  for (int polls = 0;;) {
    fs_event ev;
    bool timed_out;
    int delay_ms = g_fs.delays[polls < 10 ? 0 : 1] / 1000;
    if (get_event(ev, delay_ms, timed_out)) {
      if (!(ev.release && ev.code == code)) g_as.queue.push_front(ev);
      return;
    }
    if (!timed_out) return;
    if (++polls > 10) as_tab(forward);
  }
}

// asfrepeat: after quiet waits the last event is handled again.
void entry_repeat() {
  if (!g_fs.repeat) return;
  g_fs.repeat = 0;
  if (!g_as.have_last_event || g_as.last_event.code == kEnter || (g_fs.host->caps() & FSH_OWN_REPEAT)) return;
  const fs_event last = g_as.last_event;
  const bool mouse = last.code >= FSK_BUTTON1 && last.code <= FSK_BUTTON3;
  const bool again = last.code == g_as.repeat_code;
  const int waits = again ? 1 : 4;
  const int delay_ms = g_fs.delays[(mouse ? 2 : 0) + (again ? 1 : 0)] / 1000;
  for (int w = 0; w < waits; ++w) {
    fs_event ev;
    bool timed_out;
    if (get_event(ev, delay_ms, timed_out)) {
      g_as.queue.push_front(ev);
      g_as.repeat_code = 65535;
      return;
    }
    if (!timed_out) return;
  }
  g_as.repeat_code = last.code;
  g_as.queue.push_front(last);
}

// --- mouse ---

bool armable(int i) { return i >= 0 && (field(i).attr & (FA_CLICK | FA_YES_NO | FA_OUI_NON)); }

void show_armed(int i, bool reversed) {
  const fs_field& f = field(i);
  for (int c : page().cells[static_cast<size_t>(i)]) page().hlt[static_cast<size_t>(c)] = reversed ? 2 : f.highlight;
  page().changed[static_cast<size_t>(i)] = 1;
  g_fs.repaint = true;
}

void disarm() {
  if (g_as.armed > 0 && g_as.armed <= static_cast<int>(page().fields.size())) show_armed(g_as.armed - 1, false);
  g_as.armed = 0;
}

void sel_point(int* out, int line, int col) {
  int i = field_at_cell(line, col);
  if (i < 0) {
    out[0] = 0;
    out[1] = line;
    out[2] = col;
    return;
  }
  const fs_field& f = field(i);
  out[0] = f.id;
  if (f.lines == 1 && f.col + f.cols - 1 > g_fs.nb_cols) {
    out[1] = 1;
    out[2] = fs_flat(line, col) - page().cells[static_cast<size_t>(i)].front() + 1;
  } else {
    out[1] = line - f.line + 1;
    out[2] = col - f.col + 1;
  }
}

bool mouse_on_blank() {
  uint16_t c = page().chars[static_cast<size_t>(fs_flat(page().mou_line, page().mou_col))];
  return c == 32 || c == FS_NULL_CELL;
}

result field_popup(int i) {
  fs_popup& m = page().popups[static_cast<size_t>(i)];
  int choice = g_fs.host->popup(m.labels, page().mou_line, page().mou_col);
  if (choice < 0 || choice >= m.count) return done(-1);  // swallowed
  if (m.has_texts) {
    const std::string& text = m.texts[static_cast<size_t>(choice)];
    ascput(field(i).id, static_cast<int>(text.size()), text.c_str());
    const auto& cl = page().cells[static_cast<size_t>(i)];
    page().cur_line = cl.front() / g_fs.nb_cols + 1;
    page().cur_col = cl.front() % g_fs.nb_cols + 1;
    if (!page().modified[static_cast<size_t>(i)]) {
      page().modified[static_cast<size_t>(i)] = 1;
      ++g_as.nmod;
    }
  }
  if (m.ends_read) return done(ASR_FIELD_MENU, choice + 1);
  return done(-1);
}

void move_mark(int flat) {
  if (g_as.mark >= 0) fs_mark_cell(g_as.mark, false);
  g_as.mark = flat;
  if (flat >= 0) fs_mark_cell(flat, true);
}

result mouse_press(const fs_event& ev) {
  const int button = ev.code - FSK_BUTTON1 + 1;
  move_mark(-1);
  g_as.last_button = button;
  g_as.drop_drags = false;
  g_as.selecting = false;
  g_as.drag_x = ev.x;
  g_as.drag_y = ev.y;
  const int i = mouse_field();
  if (ev.mods == 0 && i >= 0) {
    const fs_popup& m = page().popups[static_cast<size_t>(i)];
    if (m.count > 0 && m.button == button) return field_popup(i);
  }
  if (button == 1 && armable(i)) {
    disarm();
    g_as.armed = i + 1;
    show_armed(i, true);
    return done(-1);
  }
  if (i >= 0 && (field(i).attr & FA_DRAG_SELECT)) {
    g_as.selecting = true;
    g_as.sel_moved = false;
    g_as.sel_started = !mouse_on_blank();
    sel_point(g_as.sel, page().mou_line, page().mou_col);
    sel_point(g_as.sel + 3, page().mou_line, page().mou_col);
  }
  return done(ASR_BUTTON, button);
}

result mouse_release(const fs_event& ev) {
  const int button = ev.code - FSK_BUTTON1 + 1;
  if (g_as.selecting) {
    g_as.selecting = false;
    move_mark(-1);
    int i = mouse_field();
    if (g_as.sel_moved && i >= 0 && (field(i).attr & FA_DRAG_SELECT)) return done(ASR_SELECTED);
  }
  if (button == 1 && g_as.armed > 0) {
    const int i = g_as.armed - 1;
    disarm();
    const fs_field& f = field(i);
    if (f.attr & (FA_YES_NO | FA_OUI_NON)) {
      char first = 0;
      ascget(f.id, 1, &first);
      bool negative_now = first == 'N' || first == 'n';
      const char* word = (f.attr & FA_YES_NO) ? (negative_now ? "YES" : "NO") : (negative_now ? "OUI" : "NON");
      ascput(f.id, static_cast<int>(std::char_traits<char>::length(word)), word);
      if (!page().modified[static_cast<size_t>(i)]) {
        page().modified[static_cast<size_t>(i)] = 1;
        ++g_as.nmod;
      }
    }
    if ((f.attr & FA_CLICK) && mouse_field() == i) return done(ASR_CLICK, f.id);
    return kNothing;
  }
  g_as.drop_drags = true;
  if (!g_fs.upm || (g_fs.rclk && button == 3) || (g_fs.lclk && button == 1)) return kNothing;
  return done(ASR_BUTTON_UP, button);
}

result mouse_drag(const fs_event& ev) {
  if (g_as.drop_drags) return kNothing;
  if (g_as.selecting) {
    if (!g_as.sel_started && !mouse_on_blank()) {
      g_as.sel_started = true;
      sel_point(g_as.sel, page().mou_line, page().mou_col);
    }
    sel_point(g_as.sel + 3, page().mou_line, page().mou_col);
    g_as.sel_moved = true;
    move_mark(fs_flat(page().mou_line, page().mou_col));
    return kNothing;
  }
  if (ev.x == g_as.drag_x && ev.y == g_as.drag_y) return kNothing;  // below the one-pixel threshold
  g_as.drag_x = ev.x;
  g_as.drag_y = ev.y;
  if (g_as.last_button == 1 && g_as.armed > 0) {
    int i = mouse_field();
    if (i + 1 != g_as.armed) {
      disarm();
      if (armable(i)) {
        g_as.armed = i + 1;
        show_armed(i, true);
      }
    }
    if (g_as.armed > 0) return kNothing;
  }
  return done(ASR_DRAG, g_as.last_button);
}

// With a click-moves setting, a plain press moves the cursor instead of ending the read.
bool click_moves(result& r, const fs_event& ev) {
  const bool plain = !(ev.mods & (FSM_SHIFT | FSM_CTRL));
  if (!plain) return false;
  const bool right = g_fs.rclk && ((r.kind == ASR_BUTTON && r.value == 3) || (r.kind == ASR_DRAG && r.value == 3));
  bool left = false;
  if (g_fs.lclk && r.kind == ASR_BUTTON && r.value == 1) {
    int i = mouse_field();
    bool hand = i >= 0 && (field(i).attr & FA_HAND);
    if (!hand) {
      uint64_t t = event_us(ev);
      bool dbl = g_as.have_press && t - g_as.last_press_us < kDoubleClickUs;
      g_as.last_press_us = t;
      g_as.have_press = true;
      if (dbl) return false;
      left = true;
    }
  }
  if (!right && !left) return false;
  int i = mouse_field();
  if (i >= 0 && (field(i).attr & FA_NO_CLICK_MOVE)) return false;
  page().cur_line = page().mou_line;
  page().cur_col = page().mou_col;
  if (g_fs.skip && !fs_takes_input(fs_flat(page().cur_line, page().cur_col))) {
    int base = fs_flat(page().cur_line, 1);
    for (int c = page().cur_col; c < g_fs.nb_cols; ++c)
      if (fs_takes_input(base + c)) {
        page().cur_col = c + 1;
        break;
      }
  }
  return true;
}

// --- pastes ---

// A paste for a reader that does not take pastes: text without line ends is typed, as the keys would type it
// (a tab through Ctrl+Tab, which inserts it); text with line ends would run line by line, so it is refused.
result paste_event() {
  std::string text = g_fs.host->take_paste();
  if (g_as.paste_reason) {
    g_as.paste_text = std::move(text);
    return done(ASR_PASTE);
  }
  if (text.find('\n') != std::string::npos) {
    g_fs.host->flash();
    return kNothing;
  }
  std::deque<fs_event> typed;
  for (unsigned char c : text) {
    fs_event k;
    if (c == '\t') {
      k.code = kTab;
      k.mods = FSM_CTRL;
    } else if (c >= 32 && c != 127) {
      k.code = c;
      k.ch = c;
    } else {
      continue;
    }
    typed.push_back(k);
  }
  g_as.queue.insert(g_as.queue.begin(), typed.begin(), typed.end());
  return kNothing;
}

// --- keys ---

bool role_is(as_role r, const fs_event& ev, bool exact) {
  const as_state::role& k = g_as.roles[r];
  if (k.code < 0 || k.code != ev.code) return false;
  if (!exact) return true;
  return k.shift == (g_as.shift ? 1 : 0) && k.ctrl == (g_as.ctrl ? 1 : 0) && k.alt == (g_as.alt ? 1 : 0);
}

int key_number(int n, int count) {
  int m = kModifierNumber[(g_as.shift ? 1 : 0) | (g_as.ctrl ? 2 : 0) | (g_as.alt ? 4 : 0)];
  return n + count * m;
}

result pending_or_nothing(bool decided) {
  if (!decided || g_as.pending_kind < 0) return kNothing;
  result r = done(g_as.pending_kind, g_as.pending_value);
  g_as.pending_kind = -1;
  return r;
}

result vertical(int d) {
  const int nl = g_fs.nb_lines;
  const int line = ((page().cur_line - 1 + d) % nl + nl) % nl + 1;
  const int target = field_at_cell(line, page().cur_col);
  if (target >= 0 && target != cursor_field()) {
    if (d < 0 && (field(target).attr & FA_UP_EXIT)) return done(ASR_UP_EXIT);
    if (d > 0 && (field(target).attr & FA_DOWN_EXIT)) return done(ASR_DOWN_EXIT);
  }
  as_move(d, 0);
  return kNothing;
}

result erase_key(const fs_event& ev) {
  if (g_as.alt || (g_as.ctrl && g_as.shift)) {
    fs_fail(1, "asread : printing the screen is not available");
    return kNothing;
  }
  const int flat = fs_flat(page().cur_line, page().cur_col);
  if (!fs_takes_input(flat)) {
    g_fs.host->flash();
    return kNothing;
  }
  const bool letter = (ev.code >= 'a' && ev.code <= 'z') || (ev.code >= 'A' && ev.code <= 'Z');
  if (g_as.ctrl && letter) return done(ASR_CTRL, ev.code);
  bool decided = (g_as.shift || g_as.ctrl) ? as_erase(false, g_as.ctrl, "del_all_f")
                                           : as_erase(true, false, "del_end_f");
  if (decided) return pending_or_nothing(true);
  if (field(cursor_field()).attr & FA_REPORT_EDIT) return done(ASR_ERASE);
  return kNothing;
}

result key_release(const fs_event& ev) {
  if (ev.code >= FSK_BUTTON1 && ev.code <= FSK_BUTTON3) return mouse_release(ev);
  if (!g_fs.up) return kNothing;
  if (ev.code >= kFirstPfk && ev.code <= kLastPfk) {
    int n = ev.code - kFirstPfk + 1;
    return n <= 12 ? done(ASR_PFK_UP, key_number(n, 12)) : kNothing;
  }
  if (ev.code >= kFirstNamed && ev.code <= kLastNamed) return done(ASR_KEY_UP, key_number(ev.code - kFirstNamed + 1, 15));
  return kNothing;
}

result handle(const fs_event& ev) {
  if (ev.release) {
    if (g_as.ignore_release) {
      g_as.ignore_release = false;
      return kNothing;
    }
    return key_release(ev);
  }
  const int code = ev.code;
  switch (code) {  // rule 2: events that are their own reasons
    case FSK_CLOSE: return done(ASR_CLOSE);
    case FSK_MENUBAR: return done(ASR_MENUBAR);
    case FSK_TOOLBAR: return done(ASR_TOOLBAR);
    case FSK_VSCROLL: return done(ASR_VSCROLL);
    case FSK_FOCUS_IN:
      fs_place_cursor();
      return g_as.focus_reports ? done(ASR_FOCUS_IN) : kNothing;
    case FSK_FOCUS_OUT: return done(ASR_FOCUS_OUT);
    case FSH_PASTE: return paste_event();
    default: break;
  }
  const bool plain = !g_as.shift && !g_as.ctrl && !g_as.alt;
  const bool shift_only = g_as.shift && !g_as.ctrl && !g_as.alt;
  if (plain && code == FSK_UP) return vertical(-1);
  if (plain && code == FSK_DOWN) return vertical(1);
  if (plain && code == FSK_LEFT) return as_move(0, -1), kNothing;
  if (plain && code == FSK_RIGHT) return as_move(0, 1), kNothing;
  if (shift_only && code == FSK_RIGHT && g_as.shift_right) return as_shift_right(), kNothing;
  if (code == kTab) {
    if (g_as.ctrl) return pending_or_nothing(as_ins(kTab));
    tab_repeat(!g_as.shift, code);
    return kNothing;
  }
  if (role_is(AR_HOME, ev, true)) return as_home(false), kNothing;
  if (role_is(AR_IHOME, ev, true)) return as_home(true), kNothing;
  if (role_is(AR_PREV_FIELD, ev, true)) {
    tab_repeat(false, code);
    return kNothing;
  }
  if (role_is(AR_INS, ev, true) || role_is(AR_APL, ev, true)) {
    if (role_is(AR_INS, ev, true))
      g_as.insert = !g_as.insert;
    else
      g_fs.apl = !g_fs.apl;
    fs_draw_indicators();
    return kNothing;
  }
  if (role_is(AR_DOWN_FIELD, ev, false)) return as_newline(g_as.shift), kNothing;
  if (role_is(AR_UP_FIELD, ev, false)) {
    if (g_as.ctrl) return pending_or_nothing(as_ins(12));
    return as_newline(g_as.shift), kNothing;
  }
  if (role_is(AR_EOF, ev, false)) {
    const bool letter = (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
    if (!letter || g_as.ctrl) return erase_key(ev);
  }
  if (code == kEnter) return done(ASR_ENTER);
  if (g_as.ctrl && code < 256) {
    int ch = code;
    if (g_as.shift && g_as.keyfile_loaded)  // the Shift row's character of the same key
      for (int k = 0; k < g_as.row_len; ++k)
        if (g_as.rows[2][static_cast<size_t>(k)] == code) {
          ch = g_as.rows[3][static_cast<size_t>(k)];
          break;
        }
    return done(code == kEsc ? ASR_ESC : ASR_CTRL, ch);
  }
  if (g_as.alt && code < 256 && g_as.alt_table[static_cast<size_t>(code)] && !g_fs.apl) return done(ASR_ALT, code);
  if (code == kDeleteCode) return pending_or_nothing(as_delete());
  if (code == kBackspaceCode) return pending_or_nothing(as_backspace());
  if (code >= kFirstPfk && code <= kLastPfk) {
    int n = code - kFirstPfk + 1;
    return n <= 12 ? done(ASR_PFK, key_number(n, 12)) : kNothing;
  }
  if (g_as.keyfile_kind == 1 && code >= FSK_PRINT && code <= FSK_PAUSE)
    return done(ASR_PFK, key_number(code - FSK_PRINT + 10, 15));
  if (code >= kFirstNamed && code <= kLastNamed) return done(ASR_KEY, key_number(code - kFirstNamed + 1, 15));
  if (code >= FSK_BUTTON1 && code <= FSK_BUTTON3) return mouse_press(ev);
  if (code == FSK_DRAG) return mouse_drag(ev);
  if (code == FSK_WHEEL_UP) return done(ASR_WHEEL_UP);
  if (code == FSK_WHEEL_DOWN) return done(ASR_WHEEL_DOWN);
  if (code >= 256) return kNothing;
  return pending_or_nothing(as_ins(code));
}

void load_model(int model) {
  const model_row* row = &kModels[std::size(kModels) - 1];
  for (const auto& m : kModels)
    if (m.model == model) row = &m;
  for (int r = 0; r < AR_COUNT; ++r) g_as.roles[static_cast<size_t>(r)] = row->roles[r];
}

int hex(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

}  // namespace

void as_reset_state() {
  g_as = as_state{};
  g_as.loaded = true;
  load_model(14);
  for (size_t r = 0; r < 8; ++r)
    for (size_t k = 0; k < 48; ++k)
      g_as.rows[r][k] = static_cast<uint8_t>(hex(kRows[r][2 * k]) * 16 + hex(kRows[r][2 * k + 1]));
}

void asread(int& kind, int& value, int& nmod) {
  kind = ASR_QUIT;
  value = nmod = 0;
  if (!fs_need_init("asread")) return;
  if (g_as.quit) return;
  fs_page& p = page();
  if (g_as.last_kind == ASR_RESIZE) fs_draw_indicators();
  g_as.nmod = 0;
  if (!g_fs.keep && g_as.last_page == &p)
    std::fill(p.modified.begin(), p.modified.end(), 0);
  else
    g_as.nmod = static_cast<int>(std::count(p.modified.begin(), p.modified.end(), 1));
  g_fs.keep = 0;
  g_as.last_page = &p;
  g_as.pending_kind = -1;
  if (!g_as.no_refresh) asrefresh();
  g_as.no_refresh = false;
  if (g_as.timer_ms > 0) g_deadline = clock_type::now() + std::chrono::milliseconds(g_as.timer_ms);
  entry_repeat();

  result r;
  fs_event ev;
  for (;;) {
    if (g_as.queue.empty() && g_fs.repaint) asrefresh();
    fs_place_cursor();
    bool timed_out;
    if (!get_event(ev, read_timeout(), timed_out)) {
      if (timed_out && g_as.timer_ms > 0) {
        r = done(ASR_TIMEOUT);
        break;
      }
      if (g_as.quit) {
        r = done(ASR_QUIT);
        break;
      }
      if (g_as.resize) {
        g_as.resize = false;
        fs_geometry g = g_fs.host->geometry();
        fs_apply_resize(g.lines, g.cols);
        r = done(ASR_RESIZE);
        break;
      }
      continue;
    }
    if ((ev.code >= FSK_MOVE && ev.code <= FSK_DRAG) || (ev.code >= FSK_BUTTON1 && ev.code <= FSK_BUTTON3) ||
        ev.code == FSK_WHEEL_UP || ev.code == FSK_WHEEL_DOWN)
      set_mouse_cell(ev);
    if (ev.code == FSK_MOVE) continue;
    set_modifiers(ev);
    g_as.last_event = ev;
    g_as.have_last_event = true;
    r = handle(ev);
    if (r.done && r.kind >= 0 && !click_moves(r, ev)) break;
    if (g_fs.track && (page().cur_line != g_as.track_line || page().cur_col != g_as.track_col)) {
      g_as.track_line = page().cur_line;
      g_as.track_col = page().cur_col;
      r = done(ASR_MOVED);
      break;
    }
  }
  if (g_fs.repaint) asrefresh();
  fs_place_cursor();
  kind = r.kind;
  value = r.value;
  nmod = g_as.nmod;
  g_as.last_kind = kind;
  g_as.key_sec = ev.seconds;
  g_as.key_usec = ev.microseconds;
  fs_ok();
}

void asfpaste(int on) { g_as.paste_reason = on != 0; }
std::string asqpaste() { return g_as.paste_text; }

void asqdrag(int out[6]) {
  for (int i = 0; i < 6; ++i) out[i] = g_as.sel[i];
}

std::string asqmenu() { return g_as.menu_text; }
std::string asqmenubar() { return {}; }
int asqctrl() { return g_as.ctrl; }
int asqshift() { return g_as.shift; }
int asqshift2() { return g_as.shift2; }
int asqalt() { return g_as.alt; }

void asqkeytime(uint32_t& seconds, uint32_t& microseconds) {
  seconds = g_as.key_sec;
  microseconds = g_as.key_usec;
}

void aspush(int ch) {
  fs_event ev;
  ev.code = static_cast<uint16_t>(ch & 0xff);
  ev.ch = ch & 0xff;
  ev.origin = kMacroOrigin;
  g_as.queue.push_back(ev);
}

void aspushkey(int code) {
  fs_event ev;
  ev.code = static_cast<uint16_t>(code);
  g_as.queue.push_back(ev);
}

void asftimer(int milliseconds) { g_as.timer_ms = std::max(milliseconds, 0); }
void asfinsert(int on) {
  g_as.insert = on != 0;
  if (g_fs.inited) fs_draw_indicators();
}
int asqinsert() { return g_as.insert; }
void asfignrel() { g_as.ignore_release = true; }
void asfnoref() { g_as.no_refresh = true; }
void asffocus(int on) { g_as.focus_reports = on != 0; }
void asfshright(int on) { g_as.shift_right = on != 0; }

void asfrole(int role, int code, int shift, int ctrl, int alt) {
  if (role < 0 || role >= AR_COUNT) {
    fs_fail(1, "asfrole : invalid role %d", role);
    return;
  }
  g_as.roles[static_cast<size_t>(role)] = {code < 0 ? -1 : code, shift != 0, ctrl != 0, alt != 0};
  fs_ok();
}

void asfmodel(int model) {
  load_model(model);
  fs_ok();
}

void asfalttab(int ch, int on) {
  if (ch < 0 || ch > 255) {
    fs_fail(1, "asfalttab : invalid character %d", ch);
    return;
  }
  g_as.alt_table[static_cast<size_t>(ch)] = on != 0;
  fs_ok();
}

bool asqbreak() { return g_fs.host && g_fs.host->take_interrupt(); }
