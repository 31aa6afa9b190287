// A screen host for tests: records painted cells as text rows and replays scripted events on a virtual clock.
#include "screen/host/test_host.h"

namespace {

constexpr int kCellW = 8, kCellH = 16;
constexpr uint16_t kMouseBase = 32544;  // left, middle, right buttons follow in order
constexpr uint16_t kDragCode = 32515;
constexpr uint16_t kMoveCode = 32512;

}  // namespace

test_host::test_host(int lines, int cols) : lines_(lines), cols_(cols) {
  text_.assign(lines_ + 1, std::string(cols_, ' '));
  hlt_.assign(lines_ + 1, std::string(cols_, '0'));
}

void test_host::push_event(fs_event ev) {
  ev.seconds = static_cast<uint32_t>(clock_us_ / 1'000'000);
  ev.microseconds = static_cast<uint32_t>(clock_us_ % 1'000'000);
  clock_us_ += 1000;  // events a millisecond apart unless the script advances the clock
  script_.push_back({step::event, ev});
}

void test_host::key(int code, uint16_t mods, bool with_release) {
  fs_event ev;
  ev.code = static_cast<uint16_t>(code);
  ev.mods = mods;
  ev.ch = code < 256 ? code : -1;
  push_event(ev);
  if (with_release) release(code, mods);
}

void test_host::release(int code, uint16_t mods) {
  fs_event ev;
  ev.code = static_cast<uint16_t>(code);
  ev.mods = mods;
  ev.release = 1;
  push_event(ev);
}

void test_host::type(std::string_view text) {
  for (unsigned char c : text) key(c);
}

fs_event test_host::mouse_event(int code, int line, int col, uint16_t mods, bool up) const {
  fs_event ev;
  ev.code = static_cast<uint16_t>(code);
  ev.mods = mods;
  ev.release = up ? 1 : 0;
  ev.x = static_cast<int16_t>((col - 1) * kCellW + kCellW / 2);
  ev.y = static_cast<int16_t>((line - 1) * kCellH + kCellH / 2);
  return ev;
}

void test_host::press(int button, int line, int col, uint16_t mods) {
  push_event(mouse_event(kMouseBase + button - 1, line, col, mods, false));
}

void test_host::unpress(int button, int line, int col, uint16_t mods) {
  push_event(mouse_event(kMouseBase + button - 1, line, col, mods, true));
}

void test_host::click(int button, int line, int col, uint16_t mods) {
  press(button, line, col, mods);
  unpress(button, line, col, mods);
}

void test_host::drag(int line, int col) { push_event(mouse_event(kDragCode, line, col, 0, false)); }
void test_host::move(int line, int col) { push_event(mouse_event(kMoveCode, line, col, 0, false)); }

void test_host::wheel(bool up, int line, int col, uint16_t mods) {
  push_event(mouse_event(up ? 670 : 671, line, col, mods, false));
}

void test_host::paste(std::string_view text) {
  fs_event ev;
  ev.code = FSH_PASTE;
  pastes_.emplace_back(text);
  push_event(ev);
}

std::string test_host::take_paste() {
  if (pastes_.empty()) return {};
  std::string t = std::move(pastes_.front());
  pastes_.pop_front();
  return t;
}

void test_host::quiet(int n) {
  for (int i = 0; i < n; ++i) script_.push_back({step::quiet, {}});
}

void test_host::resize(int lines, int cols) { script_.push_back({step::resize, {}, lines, cols}); }

void test_host::advance(uint32_t microseconds) { clock_us_ += microseconds; }

std::string test_host::row(int line) const {
  if (line < 1 || line > static_cast<int>(text_.size())) return {};
  return text_[line - 1];
}

std::string test_host::hlt_row(int line) const {
  if (line < 1 || line > static_cast<int>(hlt_.size())) return {};
  return hlt_[line - 1];
}

bool test_host::start(int, char**, std::string&) {
  started = true;
  return true;
}

void test_host::stop() { started = false; }

fs_geometry test_host::geometry() const {
  fs_geometry g;
  g.lines = lines_;
  g.cols = cols_;
  g.cell_w = kCellW;
  g.cell_h = kCellH;
  g.client_w = g.desk_w = cols_ * kCellW;
  g.client_h = g.desk_h = (lines_ + 1) * kCellH;
  return g;
}

void test_host::paint(int line, int col, std::span<const fs_hcell> run) {
  ++paints;
  painted_cells += static_cast<long>(run.size());
  if (line < 1 || line > static_cast<int>(text_.size())) return;
  std::string& t = text_[line - 1];
  std::string& h = hlt_[line - 1];
  for (size_t i = 0; i < run.size(); ++i) {
    size_t c = static_cast<size_t>(col - 1) + i;
    if (c >= t.size()) break;
    t[c] = static_cast<char>(run[i].ch);
    h[c] = static_cast<char>('0' + run[i].hlt % 10);
  }
}

void test_host::clear() {
  ++clears;
  for (auto& t : text_) t.assign(t.size(), ' ');
  for (auto& h : hlt_) h.assign(h.size(), '0');
}

void test_host::cursor(int line, int col) {
  cursor_line = line;
  cursor_col = col;
}

fs_wait test_host::wait(fs_event& ev, int timeout_ms) {
  while (!script_.empty()) {
    step s = script_.front();
    script_.pop_front();
    switch (s.kind) {
      case step::event:
        ev = s.ev;
        return fs_wait::event;
      case step::quiet:
        if (timeout_ms >= 0) return fs_wait::timeout;
        break;  // an untimed wait sleeps through the quiet spell
      case step::resize:
        lines_ = s.lines;
        cols_ = s.cols;
        text_.assign(lines_ + 1, std::string(cols_, ' '));
        hlt_.assign(lines_ + 1, std::string(cols_, '0'));
        return fs_wait::resize;
    }
  }
  return fs_wait::quit;  // the script is over: the display goes away
}

int test_host::popup(std::span<const std::string> labels, int, int) {
  popups_shown.emplace_back(labels.begin(), labels.end());
  if (popup_answers_.empty()) return -1;
  int a = popup_answers_.front();
  popup_answers_.pop_front();
  return a;
}
