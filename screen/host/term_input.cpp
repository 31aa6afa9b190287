// The terminal host's input: ncurses keys, tty bytes and the sequences ncurses leaves alone, mouse reports and
// bracketed paste, made into the read cycle's events; the wait that delivers them.
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "screen/as_read.h"
#include "screen/host/term_impl.h"

namespace {

constexpr int kSequenceWaitMs = 50;  // for the rest of a control sequence already begun
constexpr int kPasteStallMs = 1000;  // a bracketed paste quiet this long has lost its end

// The keys ncurses decodes by their KEY_ names.
struct curses_key {
  int curses;
  term_key key;
};
const curses_key kCursesKeys[] = {
    {KEY_UP, {FSK_UP, 0}},          {KEY_DOWN, {FSK_DOWN, 0}},       {KEY_LEFT, {FSK_LEFT, 0}},
    {KEY_RIGHT, {FSK_RIGHT, 0}},    {KEY_HOME, {FSK_HOME, 0}},       {KEY_END, {FSK_END, 0}},
    {KEY_PPAGE, {FSK_PGUP, 0}},     {KEY_NPAGE, {FSK_PGDN, 0}},      {KEY_IC, {FSK_INSERT, 0}},
    {KEY_DC, {127, 0}},             {KEY_BACKSPACE, {8, 0}},         {KEY_ENTER, {13, 0}},
    {KEY_BTAB, {9, FSM_SHIFT}},     {KEY_SLEFT, {FSK_LEFT, FSM_SHIFT}}, {KEY_SRIGHT, {FSK_RIGHT, FSM_SHIFT}},
    {KEY_SR, {FSK_UP, FSM_SHIFT}},  {KEY_SF, {FSK_DOWN, FSM_SHIFT}}, {KEY_SHOME, {FSK_HOME, FSM_SHIFT}},
    {KEY_SEND, {FSK_END, FSM_SHIFT}}, {KEY_SNEXT, {FSK_PGDN, FSM_SHIFT}}, {KEY_SPREVIOUS, {FSK_PGUP, FSM_SHIFT}},
    {KEY_SIC, {FSK_INSERT, FSM_SHIFT}}, {KEY_SDC, {127, FSM_SHIFT}}, {KEY_A1, {FSK_HOME, 0}},
    {KEY_A3, {FSK_PGUP, 0}},        {KEY_C1, {FSK_END, 0}},          {KEY_C3, {FSK_PGDN, 0}},
    {KEY_FIND, {FSK_HOME, 0}},      {KEY_SELECT, {FSK_END, 0}},      {KEY_PRINT, {FSK_PRINT, 0}},
};

// Mouse reports of ncurses and the events they become. A press and release read together come as a click.
enum class mouse_act { press, release, click };
struct mouse_row {
  mmask_t mask;
  int code;
  mouse_act act;
};
const mouse_row kMouseRows[] = {
    {BUTTON1_PRESSED, FSK_BUTTON1, mouse_act::press},   {BUTTON1_RELEASED, FSK_BUTTON1, mouse_act::release},
    {BUTTON1_CLICKED, FSK_BUTTON1, mouse_act::click},   {BUTTON2_PRESSED, FSK_BUTTON2, mouse_act::press},
    {BUTTON2_RELEASED, FSK_BUTTON2, mouse_act::release}, {BUTTON2_CLICKED, FSK_BUTTON2, mouse_act::click},
    {BUTTON3_PRESSED, FSK_BUTTON3, mouse_act::press},   {BUTTON3_RELEASED, FSK_BUTTON3, mouse_act::release},
    {BUTTON3_CLICKED, FSK_BUTTON3, mouse_act::click},   {BUTTON4_PRESSED, FSK_WHEEL_UP, mouse_act::press},
    {BUTTON5_PRESSED, FSK_WHEEL_DOWN, mouse_act::press},
};

}  // namespace

void term_host::impl::build_keys() {
  keys.clear();
  for (const auto& k : kCursesKeys) keys[k.curses] = k.key;
  for (int n = 1; n <= 63; ++n)
    if (auto k = term_fkey(n)) keys[KEY_F(n)] = *k;
  // Extended names (kLFT5, kDC3, ...) get codes above KEY_MAX when the terminal type defines them.
  for (int code = KEY_MAX + 1; code < KEY_MAX + 2048; ++code) {
    const char* name = keyname(code);
    if (!name) continue;
    if (auto k = term_extended_name(name)) keys[code] = *k;
  }
}

void term_host::impl::push(fs_event ev, bool with_release) {
  uint64_t t = term_now_us();
  ev.seconds = static_cast<uint32_t>(t / 1'000'000);
  ev.microseconds = static_cast<uint32_t>(t % 1'000'000);
  queue.push_back(ev);
  if (with_release) {  // terminals report no releases: each press is followed by its own
    ev.release = 1;
    queue.push_back(ev);
  }
}

void term_host::impl::push_key(term_key k, bool with_release) {
  fs_event ev;
  ev.code = static_cast<uint16_t>(k.code);
  ev.mods = k.mods;
  ev.ch = k.code < 256 ? k.code : -1;
  push(ev, with_release);
}

// One input of ncurses: OK with a character, KEY_CODE_YES with a key code, or ERR when none came in time.
int term_host::impl::read_now(wint_t& wc, int wait_ms) {
  wtimeout(stdscr, wait_ms);
  errno = 0;
  int rc = wget_wch(stdscr, &wc);
  if (rc == ERR && (errno == EIO || errno == ENXIO || errno == EBADF)) lost = true;
  return rc;
}

// Takes every input that is waiting, without sleeping; true when something came.
bool term_host::impl::read_available() {
  bool any = false;
  for (;;) {
    wint_t wc = 0;
    int rc = read_now(wc, 0);
    if (rc == ERR) break;
    any = true;
    take(rc, wc);
  }
  return any;
}

void term_host::impl::take(int rc, wint_t wc) {
  if (rc == KEY_CODE_YES) {
    int code = static_cast<int>(wc);
    if (code == KEY_RESIZE) {
      resize_pending = true;
      update_cells();
      return;
    }
    if (code == KEY_MOUSE) {
      mouse_report();
      return;
    }
    if (in_paste) return;
    auto it = keys.find(code);
    if (it != keys.end()) push_key(it->second);
    return;
  }
  if (wc == 27) {
    escape();
    return;
  }
  int byte = term_byte_of(static_cast<char32_t>(wc));
  if (in_paste) {
    paste_byte(byte);
    return;
  }
  if (byte < 0) {  // a character no byte shows
    ::flash();
    return;
  }
  push_key(term_tty_byte(byte));
}

// ESC: alone, the start of a control sequence ncurses did not know, or Alt with the next key.
void term_host::impl::escape() {
  wint_t wc = 0;
  int rc = read_now(wc, 0);  // ncurses has already waited ESCAPEdelay for what follows
  if (in_paste) {
    paste_escape(rc, wc);
    return;
  }
  if (rc == ERR) {
    push_key({27, 0});
    return;
  }
  if (rc == OK && wc == '[') {
    std::string body;
    while (body.size() < 64) {
      rc = read_now(wc, kSequenceWaitMs);
      if (rc != OK || wc > 0x7e) break;
      body.push_back(static_cast<char>(wc));
      if (wc >= 0x40) {
        csi(body);
        return;
      }
    }
    push_key({'[', FSM_ALT});  // no sequence after all: Alt+[ and what was typed after it
    for (char c : body) push_key(term_tty_byte(static_cast<unsigned char>(c)));
    if (rc != ERR) take(rc, wc);
    return;
  }
  if (rc == KEY_CODE_YES) {
    auto it = keys.find(static_cast<int>(wc));
    if (it == keys.end()) {
      take(rc, wc);
      return;
    }
    term_key k = it->second;
    k.mods |= FSM_ALT;
    push_key(k);
    return;
  }
  int byte = term_byte_of(static_cast<char32_t>(wc));
  if (byte < 0) return;
  term_key k = term_tty_byte(byte);
  k.mods |= FSM_ALT;
  if (k.code >= 32 && k.code < 256) k = term_plain_key(k.code, k.mods);
  push_key(k);
}

// An ESC inside a paste: the paste's end, or pasted bytes that stay in the text as they came. (Sequences that
// ncurses itself decodes as keys cannot be given back and are left out.)
void term_host::impl::paste_escape(int rc, wint_t wc) {
  paste_byte(27);
  if (rc != OK || wc != '[') {
    if (rc != ERR) take(rc, wc);
    return;
  }
  std::string body;
  bool left_over = false;  // the last input read is no part of the sequence
  while (body.size() < 64) {
    rc = read_now(wc, kSequenceWaitMs);
    if (rc != OK || wc > 0x7e) {
      left_over = rc != ERR;
      break;
    }
    body.push_back(static_cast<char>(wc));
    if (wc >= 0x40) break;
  }
  if (!left_over && !body.empty() && body.back() >= 0x40 && term_parse_csi(body).kind == term_csi::paste_end) {
    paste.pop_back();  // the ESC of the end sequence
    paste_end();
    return;
  }
  paste_byte('[');
  for (char c : body) paste_byte(static_cast<unsigned char>(c));
  if (left_over) take(rc, wc);
}

void term_host::impl::csi(std::string_view body) {
  term_csi r = term_parse_csi(body);
  fs_event ev;
  switch (r.kind) {
    case term_csi::none: return;  // a sequence of no interest
    case term_csi::key: push_key(r.k); return;
    case term_csi::mouse: sgr_mouse(r); return;
    case term_csi::focus_in:
    case term_csi::focus_out:
      ev.code = r.kind == term_csi::focus_in ? FSK_FOCUS_IN : FSK_FOCUS_OUT;
      push(ev, false);
      return;
    case term_csi::paste_begin:
      in_paste = true;
      paste.clear();
      paste_refused = false;
      return;
    case term_csi::paste_end: return;
    case term_csi::kitty_answer:
      // The terminal knows the kitty protocol: have it tell apart the keys that share tty bytes.
      if (!kitty_pushed) {
        term_write_all(out_fd, "\033[>1u");
        kitty_pushed = true;
        build_sequences();
        publish_reset();
      }
      return;
  }
}

void term_host::impl::paste_byte(int byte) {
  if (byte < 0)
    paste_refused = true;
  else
    paste.push_back(static_cast<char>(byte));
}

void term_host::impl::paste_end() {
  in_paste = false;
  if (paste_refused) ::flash();
  std::string text;
  text.reserve(paste.size());
  for (size_t i = 0; i < paste.size(); ++i) {
    char c = paste[i];
    if (c == '\r' || c == '\n') {
      text.push_back('\n');
      if (c == '\r' && i + 1 < paste.size() && paste[i + 1] == '\n') ++i;
      continue;
    }
    text.push_back(c);
  }
  paste.clear();
  // The whole paste is one event, however long: the reader decides how it goes in (asfpaste).
  last_paste = std::move(text);
  fs_event ev;
  ev.code = FSH_PASTE;
  push(ev, false);
}

void term_host::impl::mouse_report() {
  MEVENT me{};
  if (getmouse(&me) != OK) return;
  fs_event ev;
  if (me.bstate & BUTTON_SHIFT) ev.mods |= FSM_SHIFT;
  if (me.bstate & BUTTON_CTRL) ev.mods |= FSM_CTRL;
  if (me.bstate & BUTTON_ALT) ev.mods |= FSM_ALT;
  ev.x = static_cast<int16_t>(std::min(me.x * cell_w + cell_w / 2, 32767));
  ev.y = static_cast<int16_t>(std::min(me.y * cell_h + cell_h / 2, 32767));
  if (in_paste) return;
  for (const auto& r : kMouseRows) {
    if (!(me.bstate & r.mask)) continue;
    fs_event e = ev;
    e.code = static_cast<uint16_t>(r.code);
    e.release = r.act == mouse_act::release ? 1 : 0;
    if (r.code >= FSK_BUTTON1 && r.code <= FSK_BUTTON3) {
      const int button = r.code - FSK_BUTTON1 + 1;
      // ncurses reports motion with a button down as another press of it
      if (r.act == mouse_act::press && held == button) e.code = FSK_DRAG;
      held = r.act == mouse_act::press ? button : 0;
    }
    push(e, r.act == mouse_act::click);
    return;
  }
  if (me.bstate & REPORT_MOUSE_POSITION) {
    ev.code = static_cast<uint16_t>(held ? FSK_DRAG : FSK_MOVE);
    push(ev, false);
  }
}

// An SGR report: the button number's low bits name the button (3: none), 4 Shift, 8 Alt, 16 Ctrl, 32 motion,
// 64 the wheel. The events are those that ncurses' own decoding makes.
void term_host::impl::sgr_mouse(const term_csi& r) {
  if (in_paste) return;
  fs_event ev;
  if (r.button & 4) ev.mods |= FSM_SHIFT;
  if (r.button & 8) ev.mods |= FSM_ALT;
  if (r.button & 16) ev.mods |= FSM_CTRL;
  ev.x = static_cast<int16_t>(std::min((r.x - 1) * cell_w + cell_w / 2, 32767));
  ev.y = static_cast<int16_t>(std::min((r.y - 1) * cell_h + cell_h / 2, 32767));
  const int low = r.button & 3;
  if (r.button & 64) {
    if (low > 1 || r.release) return;  // sideways wheels
    ev.code = static_cast<uint16_t>(low == 0 ? FSK_WHEEL_UP : FSK_WHEEL_DOWN);
    push(ev, false);
    return;
  }
  if (r.button & 32) {
    ev.code = static_cast<uint16_t>(low == 3 ? (held ? FSK_DRAG : FSK_MOVE) : FSK_DRAG);
    push(ev, false);
    return;
  }
  if (low == 3) return;
  ev.code = static_cast<uint16_t>(FSK_BUTTON1 + low);
  ev.release = r.release ? 1 : 0;
  held = r.release ? 0 : low + 1;
  push(ev, false);
}

fs_wait term_host::wait(fs_event& ev, int timeout_ms) {
  impl& s = *p_;
  if (!s.started || s.suspended) return fs_wait::quit;
  const uint64_t deadline = timeout_ms >= 0 ? term_now_us() + uint64_t(timeout_ms) * 1000 : 0;
  bool flushed = false;
  int idle = 0;  // polls that found the terminal readable and reads that found nothing: end of file
  for (;;) {
    if (!s.queue.empty()) {
      ev = s.queue.front();
      s.queue.pop_front();
      s.restore_status();
      return fs_wait::event;
    }
    if (s.resize_pending) {
      s.resize_pending = false;
      s.message_shown = false;
      return fs_wait::resize;
    }
    if (s.lost) return fs_wait::quit;
    if (term_take_continued()) {
      fs_event f;
      f.code = FSK_FOCUS_IN;
      s.push(f, false);
      continue;
    }
    if (s.read_available()) {
      idle = 0;
      continue;
    }
    if (idle > 3) s.lost = true;
    if (s.lost) return fs_wait::quit;
    if (!flushed && !s.in_popup) {
      s.update();
      flushed = true;
    }
    int left = -1;
    if (timeout_ms >= 0) {
      uint64_t t = term_now_us();
      if (t >= deadline) return fs_wait::timeout;
      left = static_cast<int>((deadline - t + 999) / 1000);
    }
    // A paste whose end never comes must not swallow the typing that follows it.
    const bool paste_watch = s.in_paste && (left < 0 || left > kPasteStallMs);
    pollfd fds[2] = {{s.tty_fd, POLLIN, 0}, {s.opt.wake_fd, POLLIN, 0}};
    int n = ::poll(fds, s.opt.wake_fd >= 0 ? 2 : 1, paste_watch ? kPasteStallMs : left);
    if (n < 0) continue;  // a signal (SIGWINCH among them): look again
    if (n == 0 && paste_watch) s.paste_end();
    if (s.opt.wake_fd >= 0 && (fds[1].revents & POLLIN)) return fs_wait::quit;
    if ((fds[0].revents & (POLLHUP | POLLERR | POLLNVAL)) && !(fds[0].revents & POLLIN)) {
      s.lost = true;
      return fs_wait::quit;
    }
    if (fds[0].revents & POLLIN) ++idle;
  }
}

bool term_host::drain() {
  impl& s = *p_;
  if (!s.started || s.suspended) return false;
  s.read_available();
  bool found = false;
  for (auto it = s.queue.begin(); it != s.queue.end();) {
    if (it->code == 'c' && it->mods == FSM_CTRL) {
      found = true;
      it = s.queue.erase(it);
    } else {
      ++it;
    }
  }
  return found;
}

std::string term_host::take_paste() { return std::exchange(p_->last_paste, std::string()); }

