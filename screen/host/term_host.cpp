// The terminal host: taking the terminal and giving it back on every road out, painting, colours, the console.
#include "screen/host/term_host.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <utility>
#include <vector>

#include "screen/as_read.h"
#include "screen/host/term_impl.h"

namespace {

constexpr long kBeepGapNs = 100'000'000;  // between two alarms
constexpr size_t kResetMax = 1024;

// What the emergency road needs, in static storage: it is read in signal context with no allocation.
// The reset string is double-buffered so that a rebuild in normal context never shows a half-written one.
struct term_emergency {
  volatile sig_atomic_t active = 0;
  int out_fd = -1, tty_fd = -1;
  struct termios saved {};
  bool have_termios = false;
  char reset[2][kResetMax] = {};
  size_t len[2] = {};
  volatile sig_atomic_t which = 0;
  volatile sig_atomic_t continued = 0;  // SIGCONT came: counts as focus gained
  bool exit_guard = false;
};
term_emergency g_em;

void on_sigcont(int) { g_em.continued = 1; }

void exit_guard() { term_emergency_reset(); }

// A terminfo string capability, or empty when the terminal has none.
std::string cap(const char* name) {
  const char* s = tigetstr(const_cast<char*>(name));
  if (s == nullptr || s == reinterpret_cast<const char*>(-1)) return {};
  return s;
}

// A terminfo string without its padding marks ("$<5>"), for writing it directly.
std::string unpadded(std::string s) {
  for (size_t at; (at = s.find("$<")) != std::string::npos;) {
    size_t end = s.find('>', at);
    if (end == std::string::npos) break;
    s.erase(at, end - at + 1);
  }
  return s;
}

}  // namespace

bool term_write_all(int fd, std::string_view s) {
  while (!s.empty()) {
    ssize_t n = ::write(fd, s.data(), s.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    s.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

uint64_t term_now_us() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return uint64_t(ts.tv_sec) * 1'000'000 + uint64_t(ts.tv_nsec) / 1000;
}

namespace {

// Options of the command line that name a window size, by every form they take.
int size_option(int argc, char** argv, std::initializer_list<const char*> names) {
  for (int i = 0; i + 1 < argc; ++i)
    for (const char* n : names)
      if (argv[i] && std::strcmp(argv[i], n) == 0) return std::atoi(argv[i + 1]);
  return 0;
}

}  // namespace

// ------------------------------------------------------------------------------------------------ start, leave

bool term_host::impl::open_tty(std::string& why) {
  if (opt.in_fd >= 0 && opt.out_fd >= 0) {
    tty_fd = opt.in_fd;
    out_fd = opt.out_fd;
  } else if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {
    tty_fd = STDIN_FILENO;
    out_fd = STDOUT_FILENO;
  } else {
    opened_fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (opened_fd < 0) {
      why = "no terminal";
      return false;
    }
    tty_fd = out_fd = opened_fd;
  }
  if (!isatty(tty_fd)) {
    why = "no terminal";
    return false;
  }
  int in_dup = ::fcntl(tty_fd, F_DUPFD_CLOEXEC, 0), out_dup = ::fcntl(out_fd, F_DUPFD_CLOEXEC, 0);
  in_fp = in_dup >= 0 ? fdopen(in_dup, "r") : nullptr;
  out_fp = out_dup >= 0 ? fdopen(out_dup, "w") : nullptr;
  if (!in_fp || !out_fp) {
    why = "cannot open the terminal";
    return false;
  }
  return true;
}

void term_host::impl::build_glyphs() {
  for (int b = 0; b < 256; ++b) {
    wchar_t g = static_cast<wchar_t>(term_glyph(static_cast<uint8_t>(b)));
    char buf[MB_LEN_MAX];
    std::mbstate_t st{};
    // A glyph the locale cannot write, or that does not take one column, shows as "?".
    if (wcwidth(g) != 1 || wcrtomb(buf, g, &st) == static_cast<size_t>(-1)) g = L'?';
    glyph[static_cast<size_t>(b)] = g;
  }
}

void term_host::impl::build_sequences() {
  enable_seq.clear();
  disable_seq.clear();
  if (mouse) {
    enable_seq += "\033[?1002h\033[?1006h";  // motion with a button down, coordinates past column 223
    disable_seq += "\033[?1006l\033[?1002l\033[?1003l\033[?1000l";
  }
  std::string be = cap("BE"), bd = cap("BD");
  if (be.empty() && xtermish) be = "\033[?2004h", bd = "\033[?2004l";
  enable_seq += be;
  disable_seq += bd;
  if (xtermish) {
    enable_seq += "\033[?1004h\033[>4;1m\033[?u";  // focus reports, modifyOtherKeys, ask for the kitty protocol
    disable_seq += "\033[?1004l\033[>4m";
  }
  std::string ss = cap("Ss");
  if (!ss.empty()) {
    enable_seq += unpadded(tiparm(ss.c_str(), 4));  // steady underline
    std::string se = cap("Se");
    disable_seq += se.empty() ? std::string("\033[0 q") : unpadded(se);
  }
  if (kitty_pushed) disable_seq += "\033[<u";
}

// The emergency string: our modes off, then what endwin would send, from terminfo.
void term_host::impl::publish_reset() {
  std::string s = disable_seq;
  for (const char* name : {"sgr0", "cnorm", "rmkx", "rmcup"}) s += unpadded(cap(name));
  if (s.size() >= kResetMax) s.resize(kResetMax - 1);
  int next = 1 - g_em.which;
  std::memcpy(g_em.reset[next], s.data(), s.size());
  g_em.len[next] = s.size();
  g_em.which = next;
}

void term_host::impl::update_cells() {
  winsize ws{};
  cell_w = TERM_NOMINAL_CELL_W;
  cell_h = TERM_NOMINAL_CELL_H;
  if (::ioctl(out_fd, TIOCGWINSZ, &ws) == 0 && ws.ws_xpixel > 0 && ws.ws_ypixel > 0 && ws.ws_col > 0 &&
      ws.ws_row > 0) {
    cell_w = std::max(1, ws.ws_xpixel / ws.ws_col);
    cell_h = std::max(1, ws.ws_ypixel / ws.ws_row);
  }
}

void term_host::impl::release_tty() {
  if (in_fp) fclose(in_fp);
  if (out_fp) fclose(out_fp);
  in_fp = out_fp = nullptr;
  if (opened_fd >= 0) ::close(opened_fd);
  opened_fd = -1;
}

term_host::term_host(const term_options& options) : p_(std::make_unique<impl>()) { p_->opt = options; }

term_host::~term_host() { stop(); }

bool term_host::start(int argc, char** argv, std::string& why) {
  impl& s = *p_;
  if (s.started) return true;
  const char* type = s.opt.term ? s.opt.term : std::getenv("TERM");
  if (!type || !*type || std::strcmp(type, "dumb") == 0) {
    why = type && *type ? "the terminal type \"dumb\" cannot show a screen" : "TERM is not set";
    return false;
  }
  // ncursesw writes and reads characters in the user's character set; a program that never set it gets it here
  const char* ctype = std::setlocale(LC_CTYPE, nullptr);
  if (!ctype || std::strcmp(ctype, "C") == 0 || std::strcmp(ctype, "POSIX") == 0) std::setlocale(LC_CTYPE, "");
  if (!s.open_tty(why)) {
    s.release_tty();
    return false;
  }
  int err = 0;
  if (setupterm(const_cast<char*>(type), s.out_fd, &err) != OK) {  // a quiet check before newterm
    s.release_tty();
    why = std::string("unknown terminal type ") + type;
    return false;
  }
  del_curterm(cur_term);
  g_em.tty_fd = s.tty_fd;
  g_em.out_fd = s.out_fd;
  g_em.have_termios = tcgetattr(s.tty_fd, &g_em.saved) == 0;
  use_extended_names(TRUE);
  s.screen = newterm(type, s.out_fp, s.in_fp);
  if (!s.screen) {
    s.release_tty();
    why = std::string("unknown terminal type ") + type;
    return false;
  }
  set_term(s.screen);
  if (cap("cup").empty()) {
    endwin();
    delscreen(s.screen);
    s.screen = nullptr;
    s.release_tty();
    why = std::string("the terminal type ") + type + " cannot place the cursor";
    return false;
  }
  raw();
  noecho();
  nonl();
  keypad(stdscr, TRUE);
  meta(stdscr, TRUE);
  intrflush(stdscr, FALSE);
  set_escdelay(s.opt.escape_delay_ms);

  const char* no_color = std::getenv("NO_COLOR");
  int rgb = tigetflag(const_cast<char*>("RGB"));
  bool colours = has_colors() && !(no_color && *no_color);
  if (colours) {
    start_color();
    use_default_colors();
  }
  s.mode = term_colour_mode_for(colours ? COLORS : 0, rgb > 0, no_color && *no_color);
  s.map.fill(-1);
  s.pairs.clear();
  s.next_pair = 1;

  s.xtermish = tigetflag(const_cast<char*>("XT")) > 0 || !cap("kmous").empty();
  s.mouse = mousemask(ALL_MOUSE_EVENTS | REPORT_MOUSE_POSITION, nullptr) != 0;
  mouseinterval(0);
  s.build_keys();
  s.build_glyphs();
  s.kitty_pushed = false;
  s.build_sequences();
  s.publish_reset();
  s.update_cells();
  term_write_all(s.out_fd, s.enable_seq);
  int rows = size_option(argc, argv, {"-Wh", "-height", "/Wh", "/height"});
  int cols = size_option(argc, argv, {"-Ww", "-width", "/Ww", "/width"});
  if (s.xtermish && (rows > 0 || cols > 0)) {
    char req[48];
    std::snprintf(req, sizeof req, "\033[8;%d;%dt", rows > 0 ? rows + 1 : LINES, cols > 0 ? cols : COLS);
    term_write_all(s.out_fd, req);
  }

  struct sigaction cur {};
  s.cont_installed = false;
  if (sigaction(SIGCONT, nullptr, &cur) == 0 && cur.sa_handler == SIG_DFL) {
    struct sigaction sa {};
    sa.sa_handler = on_sigcont;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    s.cont_installed = sigaction(SIGCONT, &sa, &s.old_cont) == 0;
  }
  if (!g_em.exit_guard) g_em.exit_guard = std::atexit(exit_guard) == 0;
  g_em.continued = 0;
  g_em.active = 1;
  s.queue.clear();
  s.status.assign(static_cast<size_t>(COLS), fs_hcell{' ', 0, 63, 1});
  s.held = 0;
  s.in_paste = s.resize_pending = s.lost = s.suspended = s.message_shown = false;
  s.started = true;
  return true;
}

void term_host::stop() {
  impl& s = *p_;
  if (!s.started) return;
  if (!s.suspended) {  // from the console, the modes are off and ncurses has left already
    if (s.visible) s.update();
    term_write_all(s.out_fd, s.disable_seq);
    mousemask(0, nullptr);
    endwin();
  }
  s.suspended = false;
  delscreen(s.screen);
  s.screen = nullptr;
  if (g_em.have_termios) tcsetattr(s.tty_fd, TCSADRAIN, &g_em.saved);
  g_em.active = 0;
  if (s.cont_installed) sigaction(SIGCONT, &s.old_cont, nullptr);
  s.cont_installed = false;
  s.release_tty();
  s.started = false;
}

void term_emergency_reset() {
  if (!g_em.active) return;
  g_em.active = 0;
  int w = g_em.which;
  const char* p = g_em.reset[w];
  size_t n = g_em.len[w];
  while (n > 0) {
    ssize_t k = ::write(g_em.out_fd, p, n);
    if (k < 0 && errno == EINTR) continue;
    if (k <= 0) break;
    p += k;
    n -= static_cast<size_t>(k);
  }
  if (g_em.have_termios) tcsetattr(g_em.tty_fd, TCSANOW, &g_em.saved);
}

bool term_take_continued() {
  if (!g_em.continued) return false;
  g_em.continued = 0;
  return true;
}

std::string_view term_reset_string() {
  if (!g_em.active) return {};
  return {g_em.reset[g_em.which], g_em.len[g_em.which]};
}

// ------------------------------------------------------------------------------------------------ output

void term_host::impl::update() {
  if (!started || suspended || !visible) return;
  wnoutrefresh(stdscr);
  doupdate();
}

int term_host::impl::pair_of(int fg, int bg) {
  if (fg < 0 && bg < 0) return 0;
  uint64_t key = uint64_t(uint32_t(fg + 1)) << 32 | uint32_t(bg + 1);
  auto it = pairs.find(key);
  if (it != pairs.end()) return it->second;
  if (next_pair >= COLOR_PAIRS || init_extended_pair(next_pair, fg, bg) != OK) return 0;
  pairs.emplace(key, next_pair);
  return next_pair++;
}

cchar_t term_host::impl::cell(const fs_hcell& h) {
  term_look l = term_cell_look(h, map, mode);
  attr_t a = A_NORMAL;
  if (l.reverse) a |= A_REVERSE;
  if (l.underline) a |= A_UNDERLINE;
  if (l.bold) a |= A_BOLD;
  int pair = mode == term_colour_mode::none ? 0 : pair_of(l.fg, l.bg);
  wchar_t text[2] = {glyph[h.ch], L'\0'};
  cchar_t c{};
  setcchar(&c, text, a, 0, &pair);
  return c;
}

void term_host::paint(int line, int col, std::span<const fs_hcell> run) {
  impl& s = *p_;
  if (!s.started || line < 1 || line > LINES || col < 1 || col > COLS) return;
  size_t n = std::min(run.size(), static_cast<size_t>(COLS - col + 1));
  std::vector<cchar_t>& cells = s.run_cells;  // kept between paints: painting does not allocate once grown
  cells.resize(n);
  for (size_t i = 0; i < n; ++i) cells[i] = s.cell(run[i]);
  if (line == LINES) {
    if (s.status.size() != static_cast<size_t>(COLS)) s.status.assign(static_cast<size_t>(COLS), {' ', 0, 63, 1});
    std::copy(run.begin(), run.begin() + static_cast<long>(n), s.status.begin() + (col - 1));
    if (s.message_shown) return;  // the message stays until the next event; the row comes back then
  }
  mvwadd_wchnstr(stdscr, line - 1, col - 1, cells.data(), static_cast<int>(n));
}

void term_host::clear() {
  impl& s = *p_;
  if (!s.started) return;
  werase(stdscr);
  s.status.assign(static_cast<size_t>(COLS), {' ', 0, 63, 1});
  s.message_shown = false;
}

void term_host::cursor(int line, int col) {
  if (!p_->started) return;
  wmove(stdscr, std::clamp(line, 1, LINES) - 1, std::clamp(col, 1, COLS) - 1);
}

void term_host::flush() { p_->update(); }

void term_host::impl::restore_status() {
  if (!message_shown) return;
  message_shown = false;
  run_cells.clear();
  for (const auto& h : status) run_cells.push_back(cell(h));
  int y, x;
  getyx(stdscr, y, x);
  mvwadd_wchnstr(stdscr, LINES - 1, 0, run_cells.data(), std::min(COLS, static_cast<int>(run_cells.size())));
  wmove(stdscr, y, x);
}

void term_host::message(std::string_view text) {
  impl& s = *p_;
  if (!s.started) return;
  int y, x;
  getyx(stdscr, y, x);
  std::vector<cchar_t> cells;
  for (int c = 0; c < COLS; ++c) {
    uint8_t b = c < static_cast<int>(text.size()) ? static_cast<uint8_t>(text[static_cast<size_t>(c)]) : ' ';
    cells.push_back(s.cell(fs_hcell{b, 2, 63, 1}));
  }
  mvwadd_wchnstr(stdscr, LINES - 1, 0, cells.data(), COLS);
  wmove(stdscr, y, x);
  s.message_shown = true;
  s.update();
}

void term_host::beep() {
  impl& s = *p_;
  if (!s.started) return;
  uint64_t t = term_now_us();
  if (s.last_beep_us && t - s.last_beep_us < kBeepGapNs / 1000) {
    timespec ts{0, static_cast<long>(kBeepGapNs - (t - s.last_beep_us) * 1000)};
    nanosleep(&ts, nullptr);
  }
  ::beep();
  s.last_beep_us = term_now_us();
}

void term_host::flash() {
  if (p_->started) ::flash();
}

void term_host::suspend(bool on) {
  impl& s = *p_;
  if (!s.started || on == s.suspended) return;
  if (on) {
    s.update();
    term_write_all(s.out_fd, s.disable_seq);
    def_prog_mode();
    endwin();
    s.suspended = true;
    return;
  }
  reset_prog_mode();
  term_write_all(s.out_fd, s.enable_seq);
  clearok(curscr, TRUE);  // the terminal's screen is not what ncurses last drew
  s.suspended = false;
  fs_event ev;
  ev.code = FSK_FOCUS_IN;  // where no focus reports exist, coming back counts as focus gained
  s.push(ev, false);
}

unsigned term_host::caps() const {
  unsigned c = FSH_OWN_REPEAT | FSH_POPUP;
  if (p_->mouse) c |= FSH_MOUSE;
  if (p_->mode != term_colour_mode::none) c |= FSH_COLOUR;
  return c;
}

void term_host::palette(std::span<const uint32_t, 64> rgb) {
  impl& s = *p_;
  s.map = term_map_palette(rgb, s.mode);
}

void term_host::show(bool visible) {
  p_->visible = visible;
  if (visible) p_->update();
}

fs_geometry term_host::geometry() const {
  const impl& s = *p_;
  fs_geometry g;
  if (!s.started) return g;
  g.lines = std::max(1, LINES - 1);
  g.cols = std::max(1, COLS);
  g.cell_w = s.cell_w;
  g.cell_h = s.cell_h;
  g.desk_w = g.client_w = COLS * s.cell_w;
  g.desk_h = g.client_h = LINES * s.cell_h;
  g.left = g.top = 0;
  return g;
}

void term_host::set_escape_delay(int ms) {
  p_->opt.escape_delay_ms = std::max(ms, 0);
  if (p_->started) set_escdelay(p_->opt.escape_delay_ms);
}

bool term_host::lost() const { return p_->lost; }

term_host::shown_cell term_host::shown(int line, int col) const {
  shown_cell r;
  if (!p_->started || line < 1 || line > LINES || col < 1 || col > COLS) return r;
  cchar_t c{};
  int y, x;
  getyx(curscr, y, x);  // curscr's cursor is where ncurses believes the terminal's is: it must stay
  int got = mvwin_wch(curscr, line - 1, col - 1, &c);
  wmove(curscr, y, x);
  if (got != OK) return r;
  wchar_t text[CCHARW_MAX + 1] = {};
  attr_t a = 0;
  short short_pair = 0;
  int pair = 0;
  getcchar(&c, text, &a, &short_pair, &pair);
  int b = term_byte_of(static_cast<char32_t>(text[0]));
  r.byte = b < 0 ? '?' : b;
  r.reverse = a & A_REVERSE;
  r.underline = a & A_UNDERLINE;
  r.bold = a & A_BOLD;
  if (pair > 0) extended_pair_content(pair, &r.fg, &r.bg);
  return r;
}

std::string term_host::shown_text(int line) const {
  std::string t;
  if (!p_->started) return t;
  for (int c = 1; c <= COLS; ++c) t.push_back(static_cast<char>(shown(line, c).byte));
  return t;
}

void term_host::shown_cursor(int& line, int& col) const {
  line = col = 0;
  if (!p_->started) return;
  int y, x;
  getyx(curscr, y, x);
  line = y + 1;
  col = x + 1;
}

