// The terminal host on a pseudo-terminal: keys, mouse, paste, focus and resize typed into the master; painting
// and colours read back from what ncurses put on the screen; the terminal given back on every road out.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "screen/as_read.h"
#include "tests/screen/term_pty.h"

namespace {

constexpr uint16_t S = FSM_SHIFT, C = FSM_CTRL, A = FSM_ALT;

std::array<uint32_t, 64> test_palette() {
  std::array<uint32_t, 64> rgb{};
  rgb.fill(0x808080);
  rgb[0] = 0xffffff;  // the start values of background and text: the terminal's own colours
  rgb[63] = 0x000000;
  rgb[1] = 0x0000ff;
  rgb[2] = 0xff0000;
  return rgb;
}

std::vector<fs_hcell> cells(std::string_view text, uint8_t colour = 63, uint8_t hlt = 0, uint8_t intens = 1) {
  std::vector<fs_hcell> run;
  for (unsigned char c : text) run.push_back({c, hlt, colour, intens});
  return run;
}

struct press {
  int code;
  uint16_t mods;
  bool operator==(const press&) const = default;
};
std::ostream& operator<<(std::ostream& os, const press& p) { return os << "{" << p.code << ", " << p.mods << "}"; }

class screen_term_host : public ::testing::Test {
 protected:
  void SetUp() override {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    unsetenv("NO_COLOR");
    ASSERT_TRUE(pty->ok());
  }
  void TearDown() override {
    host.reset();
    unsetenv("NO_COLOR");
  }
  bool start(const char* type = "xterm-256color", int argc = 0, char** argv = nullptr) {
    return start_with(pty->options(type), argc, argv);
  }
  bool start_with(const term_options& o, int argc = 0, char** argv = nullptr) {
    host = std::make_unique<term_host>(o);
    bool ok = host->start(argc, argv, why);
    started_output = pty->output();
    return ok;
  }
  // Every event until the host has been quiet for a while.
  std::vector<fs_event> events(int quiet_ms = 80) {  // more than the ESC delay of the options
    std::vector<fs_event> got;
    fs_event ev;
    while (host->wait(ev, quiet_ms) == fs_wait::event) got.push_back(ev);
    pty->drain();
    return got;
  }
  // The presses a typed sequence makes; each must be followed by its own release.
  std::vector<press> presses(std::string_view bytes) {
    pty->type(bytes);
    std::vector<press> got;
    auto evs = events();
    for (size_t i = 0; i < evs.size(); ++i) {
      EXPECT_EQ(evs[i].release, 0) << "event " << i;
      got.push_back({evs[i].code, evs[i].mods});
      if (i + 1 < evs.size() && evs[i + 1].release && evs[i + 1].code == evs[i].code) ++i;
      else ADD_FAILURE() << "no release after " << evs[i].code;
    }
    return got;
  }
  std::unique_ptr<term_pty> pty = std::make_unique<term_pty>();
  std::unique_ptr<term_host> host;
  std::string why, started_output;
};

// --- start and geometry ---

TEST_F(screen_term_host, start_refuses_what_cannot_show_a_screen) {
  EXPECT_FALSE(start("dumb"));
  EXPECT_NE(why.find("dumb"), std::string::npos) << why;
  EXPECT_FALSE(start("no-such-terminal-type"));
  EXPECT_NE(why.find("unknown terminal type"), std::string::npos) << why;
  EXPECT_EQ(pty->output(), "");  // a refused start writes nothing on the terminal

  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  term_options o = pty->options();
  o.in_fd = o.out_fd = fds[0];
  EXPECT_FALSE(start_with(o));
  EXPECT_EQ(why, "no terminal");
  close(fds[0]);
  close(fds[1]);
  EXPECT_EQ(term_reset_string(), "");  // nothing to give back
}

TEST_F(screen_term_host, geometry_leaves_the_last_row_to_the_status) {
  ASSERT_TRUE(start()) << why;
  fs_geometry g = host->geometry();
  EXPECT_EQ(g.lines, 24);
  EXPECT_EQ(g.cols, 80);
  EXPECT_EQ(g.cell_w, 8);
  EXPECT_EQ(g.cell_h, 16);
  EXPECT_EQ(g.client_w, 640);
  EXPECT_EQ(g.client_h, 400);
  unsigned caps = host->caps();
  EXPECT_TRUE(caps & FSH_COLOUR);
  EXPECT_TRUE(caps & FSH_MOUSE);
  EXPECT_TRUE(caps & FSH_OWN_REPEAT);
  EXPECT_TRUE(caps & FSH_POPUP);
}

TEST_F(screen_term_host, size_options_ask_the_terminal_once) {
  const char* args[] = {"tolva", "-Wh", "30", "-Ww", "100"};
  ASSERT_TRUE(start("xterm-256color", 5, const_cast<char**>(args))) << why;
  EXPECT_NE(started_output.find("\033[8;31;100t"), std::string::npos);
  EXPECT_EQ(host->geometry().lines, 24);  // the grid follows the real size
}

TEST_F(screen_term_host, resize_becomes_a_resize_wait) {
  ASSERT_TRUE(start()) << why;
  pty->resize(31, 100);
  raise(SIGWINCH);
  fs_event ev;
  EXPECT_EQ(host->wait(ev, 500), fs_wait::resize);
  EXPECT_EQ(host->geometry().lines, 30);
  EXPECT_EQ(host->geometry().cols, 100);
  EXPECT_EQ(host->wait(ev, 50), fs_wait::timeout);
}

// --- keys ---

TEST_F(screen_term_host, keys_of_xterm_256color) {
  ASSERT_TRUE(start()) << why;
  struct row {
    const char* bytes;
    press key;
  };
  const row rows[] = {
      {"a", {'a', 0}},
      {"Z", {'Z', 0}},
      {"\xc3\xa9", {0xe9, 0}},            // UTF-8 e acute: its byte
      {"\xe2\x82\xac", {0x80, 0}},        // the euro sign: its CP1252 byte
      {"\x01", {'a', C}},
      {"\x1a", {'z', C}},
      {"\x03", {'c', C}},
      {"\r", {13, 0}},
      {"\n", {10, 0}},
      {"\t", {9, 0}},
      {"\x1b[Z", {9, S}},
      {"\x7f", {8, 0}},
      {"\x08", {8, 0}},
      {"\x1bOA", {FSK_UP, 0}},
      {"\x1b[A", {FSK_UP, 0}},
      {"\x1bOB", {FSK_DOWN, 0}},
      {"\x1bOD", {FSK_LEFT, 0}},
      {"\x1bOC", {FSK_RIGHT, 0}},
      {"\x1b[1;2A", {FSK_UP, S}},
      {"\x1b[1;5A", {FSK_UP, C}},
      {"\x1b[1;3D", {FSK_LEFT, A}},
      {"\x1b[1;6C", {FSK_RIGHT, C | S}},
      {"\x1b[1;8B", {FSK_DOWN, C | S | A}},
      {"\x1bOH", {FSK_HOME, 0}},
      {"\x1bOF", {FSK_END, 0}},
      {"\x1b[1;5H", {FSK_HOME, C}},
      {"\x1b[5~", {FSK_PGUP, 0}},
      {"\x1b[6~", {FSK_PGDN, 0}},
      {"\x1b[6;2~", {FSK_PGDN, S}},
      {"\x1b[2~", {FSK_INSERT, 0}},
      {"\x1b[3~", {127, 0}},
      {"\x1b[3;5~", {127, C}},
      {"\x1bOP", {FSK_F1, 0}},
      {"\x1b[24~", {FSK_F1 + 11, 0}},
      {"\x1b[1;2P", {FSK_F1, S}},
      {"\x1b[1;2R", {FSK_F1 + 2, S}},
      {"\x1b[15;5~", {FSK_F1 + 4, C}},
      {"\x1b[24;6~", {FSK_F1 + 11, C | S}},
      {"\x1b[1;3Q", {FSK_F1 + 1, A}},
      {"\x1b[1;4R", {FSK_F1 + 2, A | S}},
      {"\x1b[24;4~", {FSK_F1 + 11, A | S}},
      {"\x1bx", {'x', A}},
      {"\x1bX", {'x', A | S}},
      {"\x1b!", {'1', A | S}},
      {"\x1b\x01", {'a', C | A}},
      {"\x1b\x1b", {27, A}},
      {"\x1b\x1bOP", {FSK_F1, A}},
      {"\x1b[13;5u", {13, C}},
      {"\x1b[13;2u", {13, S}},
      {"\x1b[9;5u", {9, C}},
      {"\x1b[27;5u", {27, C}},
      {"\x1b[97;6u", {'a', C | S}},
      {"\x1b[27;5;13~", {13, C}},
      {"\x1b[27;6;65~", {'a', C | S}},
  };
  for (const auto& r : rows) {
    auto got = presses(r.bytes);
    ASSERT_EQ(got.size(), 1u) << "sequence " << testing::PrintToString(std::string(r.bytes));
    EXPECT_EQ(got[0], r.key) << "sequence " << testing::PrintToString(std::string(r.bytes));
  }
  EXPECT_TRUE(presses("\xe2\x98\x83").empty());  // a snowman: no byte shows it
  EXPECT_EQ(presses("ab"), (std::vector<press>{{'a', 0}, {'b', 0}}));
}

// Inside tmux (TERM=tmux-256color) Home and End come as "CSI 1~" and "CSI 4~", and the modified keys in the
// xterm forms that its terminfo entry names (kf13-kf63, kUP5, kDC3, ...).
TEST_F(screen_term_host, keys_of_tmux_256color) {
  ASSERT_TRUE(start("tmux-256color")) << why;
  struct row {
    const char* bytes;
    press key;
  };
  const row rows[] = {
      {"\x1bOA", {FSK_UP, 0}},          {"\x1b[A", {FSK_UP, 0}},            {"\x1bOB", {FSK_DOWN, 0}},
      {"\x1bOD", {FSK_LEFT, 0}},        {"\x1bOC", {FSK_RIGHT, 0}},         {"\x1b[1;2A", {FSK_UP, S}},
      {"\x1b[1;5B", {FSK_DOWN, C}},     {"\x1b[1;3D", {FSK_LEFT, A}},       {"\x1b[1;6C", {FSK_RIGHT, C | S}},
      {"\x1b[1;7A", {FSK_UP, C | A}},   {"\x1b[1;8B", {FSK_DOWN, C | S | A}},
      {"\x1b[1~", {FSK_HOME, 0}},       {"\x1b[4~", {FSK_END, 0}},          {"\x1b[1;2H", {FSK_HOME, S}},
      {"\x1b[1;5H", {FSK_HOME, C}},     {"\x1b[1;2F", {FSK_END, S}},        {"\x1b[1;5F", {FSK_END, C}},
      {"\x1b[1;3H", {FSK_HOME, A}},     {"\x1b[5~", {FSK_PGUP, 0}},         {"\x1b[6~", {FSK_PGDN, 0}},
      {"\x1b[5;2~", {FSK_PGUP, S}},     {"\x1b[6;5~", {FSK_PGDN, C}},       {"\x1b[5;3~", {FSK_PGUP, A}},
      {"\x1b[2~", {FSK_INSERT, 0}},     {"\x1b[2;2~", {FSK_INSERT, S}},     {"\x1b[2;5~", {FSK_INSERT, C}},
      {"\x1b[3~", {127, 0}},            {"\x1b[3;2~", {127, S}},            {"\x1b[3;5~", {127, C}},
      {"\x1b[3;3~", {127, A}},          {"\x1bOP", {FSK_F1, 0}},            {"\x1bOS", {FSK_F1 + 3, 0}},
      {"\x1b[15~", {FSK_F1 + 4, 0}},    {"\x1b[21~", {FSK_F1 + 9, 0}},      {"\x1b[24~", {FSK_F1 + 11, 0}},
      {"\x1b[1;2P", {FSK_F1, S}},       {"\x1b[1;2R", {FSK_F1 + 2, S}},     {"\x1b[15;2~", {FSK_F1 + 4, S}},
      {"\x1b[24;2~", {FSK_F1 + 11, S}}, {"\x1b[1;5P", {FSK_F1, C}},         {"\x1b[17;5~", {FSK_F1 + 5, C}},
      {"\x1b[1;6S", {FSK_F1 + 3, C | S}}, {"\x1b[23;6~", {FSK_F1 + 10, C | S}}, {"\x1b[1;3P", {FSK_F1, A}},
      {"\x1b[24;3~", {FSK_F1 + 11, A}}, {"\x1b[1;4R", {FSK_F1 + 2, A | S}}, {"\x1b[19;7~", {FSK_F1 + 7, C | A}},
      {"\x1b[1;8Q", {FSK_F1 + 1, C | S | A}},
  };
  for (const auto& r : rows) {
    auto got = presses(r.bytes);
    ASSERT_EQ(got.size(), 1u) << "sequence " << testing::PrintToString(std::string(r.bytes));
    EXPECT_EQ(got[0], r.key) << "sequence " << testing::PrintToString(std::string(r.bytes));
  }
}

TEST_F(screen_term_host, escape_alone_or_alt_depends_on_the_delay) {
  ASSERT_TRUE(start()) << why;  // the delay is 40 ms
  // ESC, and x typed 400 ms later while the host waits: two keys
  std::thread later([&] {
    usleep(400'000);
    pty->type("x");
  });
  pty->type("\x1b");
  auto got = presses("");
  later.join();
  for (auto p : presses("")) got.push_back(p);
  EXPECT_EQ(got, (std::vector<press>{{27, 0}, {'x', 0}}));
  EXPECT_EQ(presses("\x1bx"), (std::vector<press>{{'x', A}}));
  // within a longer delay the same typing is Alt+x
  host->set_escape_delay(1000);
  later = std::thread([&] {
    usleep(150'000);
    pty->type("x");
  });
  pty->type("\x1b");
  got = presses("");
  later.join();
  EXPECT_EQ(got, (std::vector<press>{{'x', A}}));
}

TEST_F(screen_term_host, focus_reports) {
  ASSERT_TRUE(start()) << why;
  EXPECT_NE(started_output.find("\033[?1004h"), std::string::npos);
  pty->type("\x1b[O\x1b[I");
  auto evs = events();
  ASSERT_EQ(evs.size(), 2u);
  EXPECT_EQ(evs[0].code, FSK_FOCUS_OUT);
  EXPECT_EQ(evs[1].code, FSK_FOCUS_IN);
  EXPECT_EQ(evs[1].release, 0);
  raise(SIGCONT);  // back from a stop: counts as focus gained where no reports come
  evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].code, FSK_FOCUS_IN);
}

TEST_F(screen_term_host, interrupt_key_is_found_in_typeahead) {
  ASSERT_TRUE(start()) << why;
  pty->type("ab\x03" "c");
  usleep(50'000);
  EXPECT_TRUE(host->drain());
  auto evs = events();
  std::string typed;
  for (const auto& e : evs)
    if (!e.release) typed.push_back(static_cast<char>(e.code));
  EXPECT_EQ(typed, "abc");
  EXPECT_FALSE(host->drain());
}

TEST_F(screen_term_host, wake_descriptor_ends_the_wait) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  term_options o = pty->options();
  o.wake_fd = fds[0];
  ASSERT_TRUE(start_with(o)) << why;
  fs_event ev;
  EXPECT_EQ(host->wait(ev, 50), fs_wait::timeout);
  ASSERT_EQ(write(fds[1], "x", 1), 1);
  EXPECT_EQ(host->wait(ev, 5000), fs_wait::quit);
  close(fds[0]);
  close(fds[1]);
}

TEST_F(screen_term_host, lost_terminal_ends_every_wait) {
  ASSERT_TRUE(start()) << why;
  pty->hangup();
  fs_event ev;
  EXPECT_EQ(host->wait(ev, 5000), fs_wait::quit);
  EXPECT_TRUE(host->lost());
  EXPECT_EQ(host->wait(ev, 5000), fs_wait::quit);
}

// --- mouse ---

// SGR mouse reports and the events they make: code, release, modifiers, pixel position of the cell's centre.
struct mouse_row {
  const char* bytes;
  int code;
  bool release;
  uint16_t mods;
  int x, y;
};
const mouse_row kMouseRows[] = {
    {"\x1b[<0;12;5M", FSK_BUTTON1, false, 0, 92, 72},
    {"\x1b[<32;13;5M", FSK_DRAG, false, 0, 100, 72},
    {"\x1b[<0;13;5m", FSK_BUTTON1, true, 0, 100, 72},
    {"\x1b[<35;14;6M", FSK_MOVE, false, 0, 108, 88},
    {"\x1b[<1;1;1M", FSK_BUTTON2, false, 0, 4, 8},
    {"\x1b[<1;1;1m", FSK_BUTTON2, true, 0, 4, 8},
    {"\x1b[<2;80;25M", FSK_BUTTON3, false, 0, 636, 392},
    {"\x1b[<2;80;25m", FSK_BUTTON3, true, 0, 636, 392},
    {"\x1b[<64;3;3M", FSK_WHEEL_UP, false, 0, 20, 40},
    {"\x1b[<65;3;3M", FSK_WHEEL_DOWN, false, 0, 20, 40},
    {"\x1b[<4;2;2M", FSK_BUTTON1, false, S, 12, 24},
    {"\x1b[<4;2;2m", FSK_BUTTON1, true, S, 12, 24},
    {"\x1b[<16;2;2M", FSK_BUTTON1, false, C, 12, 24},
    {"\x1b[<16;2;2m", FSK_BUTTON1, true, C, 12, 24},
    {"\x1b[<8;2;2M", FSK_BUTTON1, false, A, 12, 24},
    {"\x1b[<8;2;2m", FSK_BUTTON1, true, A, 12, 24},
};

TEST_F(screen_term_host, mouse_reports_at_cell_centres) {
  for (const char* type : {"xterm-256color", "tmux-256color"}) {
    ASSERT_TRUE(start(type)) << why;
    for (const auto& r : kMouseRows) {
      pty->type(r.bytes);
      auto evs = events();
      std::string what = std::string(type) + " " + testing::PrintToString(std::string(r.bytes));
      ASSERT_EQ(evs.size(), 1u) << what;
      EXPECT_EQ(evs[0].code, r.code) << what;
      EXPECT_EQ(evs[0].release != 0, r.release) << what;
      EXPECT_EQ(evs[0].mods, r.mods) << what;
      EXPECT_EQ(evs[0].x, r.x) << what;
      EXPECT_EQ(evs[0].y, r.y) << what;
    }
    host.reset();
    pty->drain();
  }
}

TEST_F(screen_term_host, press_and_release_read_together) {
  ASSERT_TRUE(start()) << why;
  pty->type("\x1b[<0;5;5M\x1b[<0;5;5m");
  auto evs = events();
  ASSERT_EQ(evs.size(), 2u);
  EXPECT_EQ(evs[0].code, FSK_BUTTON1);
  EXPECT_EQ(evs[0].release, 0);
  EXPECT_EQ(evs[1].code, FSK_BUTTON1);
  EXPECT_EQ(evs[1].release, 1);
  EXPECT_EQ(evs[1].x, 36);
}

TEST_F(screen_term_host, mouse_past_column_223) {
  pty = std::make_unique<term_pty>(40, 300);
  ASSERT_TRUE(start()) << why;
  pty->type("\x1b[<0;300;40M");
  auto evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].x, 299 * 8 + 4);
  EXPECT_EQ(evs[0].y, 39 * 16 + 8);
}

// --- paste ---

TEST_F(screen_term_host, paste_without_line_ends_is_one_paste_event) {
  ASSERT_TRUE(start()) << why;
  EXPECT_NE(started_output.find("\033[?2004h"), std::string::npos);
  pty->type("\x1b[200~hi\tX\xc3\xa9\x1b[201~");
  auto evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].code, FSH_PASTE);
  EXPECT_EQ(host->take_paste(), "hi\tX\xe9");  // the character shown by byte 0xE9 comes as that byte
  EXPECT_EQ(presses("q"), (std::vector<press>{{'q', 0}}));  // typing goes on as before
}

TEST_F(screen_term_host, paste_with_line_ends_is_one_paste_event) {
  ASSERT_TRUE(start()) << why;
  pty->type("\x1b[200~one\r\ntwo\rthree\n\x1b[A\x1b[201~");
  auto evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].code, FSH_PASTE);
  EXPECT_EQ(host->take_paste(), "one\ntwo\nthree\n\x1b[A");  // an arrow's bytes inside the paste are text
  EXPECT_EQ(host->take_paste(), "");
  // a paste whose end is lost is ended after a quiet second, and typing goes on
  pty->type("\x1b[200~lost\r");
  fs_event ev;
  ASSERT_EQ(host->wait(ev, 3000), fs_wait::event);
  EXPECT_EQ(ev.code, FSH_PASTE);
  EXPECT_EQ(host->take_paste(), "lost\n");
  EXPECT_EQ(presses("k"), (std::vector<press>{{'k', 0}}));
}

TEST_F(screen_term_host, escape_bytes_inside_a_paste_stay_in_its_text) {
  ASSERT_TRUE(start()) << why;
  pty->type("\x1b[200~a\x1b[31mb\x1b\x1bxc\x01\x1b[\x02z\r\x1b[201~");
  auto evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].code, FSH_PASTE);
  EXPECT_EQ(host->take_paste(), "a\x1b[31mb\x1b\x1bxc\x01\x1b[\x02z\n");
  EXPECT_EQ(presses("k"), (std::vector<press>{{'k', 0}}));  // the paste is over
}

// --- painting and colours ---

TEST_F(screen_term_host, paints_runs_and_the_cursor) {
  ASSERT_TRUE(start()) << why;
  host->palette(test_palette());
  host->clear();
  host->paint(1, 1, cells("Hello"));
  host->paint(2, 3, cells("\xe9\x80\x01", 1));
  host->paint(3, 1, cells("rev", 63, 2));
  host->paint(3, 5, cells("und", 2, 4, 2));
  host->paint(25, 1, cells("status"));
  host->paint(1, 78, cells("abcdef"));  // cut at the edge
  host->cursor(2, 4);
  host->flush();
  EXPECT_EQ(host->shown_text(1), "Hello" + std::string(72, ' ') + "abc");
  EXPECT_EQ(host->shown_text(2).substr(0, 6), "  \xe9\x80? ");
  EXPECT_EQ(host->shown_text(25).substr(0, 7), "status ");
  EXPECT_EQ(host->shown(1, 1).fg, -1);  // the terminal's own colours
  EXPECT_EQ(host->shown(1, 1).bg, -1);
  EXPECT_EQ(host->shown(2, 3).fg, 21);
  EXPECT_EQ(host->shown(2, 3).bg, -1);
  EXPECT_TRUE(host->shown(3, 1).reverse);
  EXPECT_FALSE(host->shown(3, 1).underline);
  EXPECT_EQ(host->shown(3, 5).fg, 196);
  EXPECT_TRUE(host->shown(3, 5).underline);
  EXPECT_TRUE(host->shown(3, 5).bold);
  EXPECT_FALSE(host->shown(3, 5).reverse);
  int line, col;
  host->shown_cursor(line, col);
  EXPECT_EQ(line, 2);
  EXPECT_EQ(col, 4);

  // ncurses sends only what changed: the same paint again writes none of the text
  pty->output();
  host->paint(1, 1, cells("Hello"));
  host->flush();
  EXPECT_EQ(pty->output().find("Hello"), std::string::npos);
  host->paint(5, 1, cells("A line long enough that moving beats rewriting it"));
  host->flush();
  pty->output();
  host->paint(5, 1, cells("A line long enough that moving beats rewriting IT"));
  host->flush();
  std::string out = pty->output();
  EXPECT_NE(out.find("IT"), std::string::npos);
  EXPECT_EQ(out.find("A line"), std::string::npos);
}

TEST_F(screen_term_host, colours_follow_the_terminal) {
  struct row {
    const char* type;
    bool no_color;
    bool colour;
    int fg_of_1;
  };
  const row rows[] = {
      {"xterm-256color", false, true, 21},
      {"xterm", false, true, 4},
      {"xterm-256color", true, false, -1},
      {"xterm-mono", false, false, -1},
  };
  for (const auto& r : rows) {
    if (r.no_color)
      setenv("NO_COLOR", "1", 1);
    else
      unsetenv("NO_COLOR");
    pty = std::make_unique<term_pty>();
    ASSERT_TRUE(start(r.type)) << r.type << ": " << why;
    EXPECT_EQ((host->caps() & FSH_COLOUR) != 0, r.colour) << r.type;
    host->palette(test_palette());
    host->paint(1, 1, cells("ab", 1));
    host->paint(2, 1, cells("cd", 1, 2));
    host->flush();
    EXPECT_EQ(host->shown(1, 1).fg, r.fg_of_1) << r.type;
    EXPECT_EQ(host->shown_text(1).substr(0, 2), "ab");
    // reversed: the default background over the cell colour, or the reverse attribute where no colour shows
    auto rev = host->shown(2, 1);
    if (r.colour)
      EXPECT_TRUE(rev.reverse && rev.fg == r.fg_of_1) << r.type;
    else
      EXPECT_TRUE(rev.reverse && rev.fg == -1 && rev.bg == -1) << r.type;
    host.reset();
  }
}

TEST_F(screen_term_host, changed_default_colours_are_matched) {
  ASSERT_TRUE(start()) << why;
  auto rgb = test_palette();
  rgb[0] = 0x000000;
  rgb[63] = 0xffffff;
  host->palette(rgb);
  host->paint(1, 1, cells("x"));
  host->paint(1, 2, cells("y", 1, 2));
  host->flush();
  EXPECT_EQ(host->shown(1, 1).fg, 231);
  EXPECT_EQ(host->shown(1, 1).bg, 16);
  auto rev = host->shown(1, 2);  // an explicit pair: background colour on the cell colour
  EXPECT_FALSE(rev.reverse);
  EXPECT_EQ(rev.fg, 16);
  EXPECT_EQ(rev.bg, 21);
}

TEST_F(screen_term_host, message_shows_on_the_status_row_until_the_next_event) {
  ASSERT_TRUE(start()) << why;
  host->palette(test_palette());
  host->paint(25, 1, cells("status"));
  host->message("asfcur: field 3 does not exist.");
  EXPECT_EQ(host->shown_text(25).substr(0, 31), "asfcur: field 3 does not exist.");
  EXPECT_TRUE(host->shown(25, 1).reverse);
  host->paint(25, 40, cells("INS"));  // kept for when the message goes
  pty->type("a");
  fs_event ev;
  ASSERT_EQ(host->wait(ev, 500), fs_wait::event);
  host->flush();
  std::string row = host->shown_text(25);
  EXPECT_EQ(row.substr(0, 8), "status  ");
  EXPECT_EQ(row.substr(39, 3), "INS");
  EXPECT_FALSE(host->shown(25, 1).reverse);
}

TEST_F(screen_term_host, beep_and_flash) {
  ASSERT_TRUE(start()) << why;
  pty->output();
  host->beep();
  host->beep();
  host->flash();
  std::string out = pty->output();
  EXPECT_EQ(std::count(out.begin(), out.end(), '\a'), 2);
  EXPECT_NE(out.find("\033[?5h"), std::string::npos);
}

// --- popup ---

TEST_F(screen_term_host, popup_chooses_by_keys_and_mouse) {
  ASSERT_TRUE(start()) << why;
  host->palette(test_palette());
  host->paint(3, 1, cells("Hello, under the popup"));
  host->flush();
  const std::vector<std::string> labels = {"Open", "Save", "Quit"};
  alarm(30);  // the popup is modal: a fault here must end the run, not hang it
  struct row {
    const char* typed;
    int chosen;
  };
  const row rows[] = {
      {"\x1bOB\r", 1},                        // Down, Enter
      {"\x1bOA\r", 2},                        // Up wraps to the last
      {"q", 2},                               // first letter
      {"S", 1},
      {"\x1b[<0;12;6M\x1b[<0;12;6m", 2},      // a click on the third item (box at line 3, column 10)
      {"\x1b[<0;1;1M", -1},                   // a press outside the box
      {"\x03", -1},                           // Ctrl+C
  };
  for (const auto& r : rows) {
    pty->type(r.typed);
    EXPECT_EQ(host->popup(labels, 3, 10), r.chosen) << testing::PrintToString(std::string(r.typed));
    events(30);  // what is left of the typing
    EXPECT_EQ(host->shown_text(3).substr(0, 22), "Hello, under the popup");
  }
  pty->type("\x1b");
  EXPECT_EQ(host->popup(labels, 3, 10), -1);  // Esc
  EXPECT_EQ(host->popup({}, 3, 10), -1);
  alarm(0);
}

// --- leaving ---

TEST_F(screen_term_host, reset_string_turns_off_what_start_turned_on) {
  termios before = pty->modes();
  ASSERT_TRUE(start()) << why;
  EXPECT_FALSE(pty->modes().c_lflag & ICANON);
  std::string reset(term_reset_string());
  for (const char* mode : {"1002", "1006", "2004", "1004"}) {
    EXPECT_NE(started_output.find(std::string("\033[?") + mode + "h"), std::string::npos) << mode;
    EXPECT_NE(reset.find(std::string("\033[?") + mode + "l"), std::string::npos) << mode;
  }
  EXPECT_NE(started_output.find("\033[>4;1m"), std::string::npos);
  EXPECT_NE(reset.find("\033[>4m"), std::string::npos);
  EXPECT_NE(started_output.find("\033[4 q"), std::string::npos);  // steady underline cursor
  EXPECT_NE(reset.find("\033[2 q"), std::string::npos);
  EXPECT_NE(reset.find("\033[?1049l"), std::string::npos);  // the screen the user had
  EXPECT_EQ(reset.find("\033[<u"), std::string::npos);  // the kitty protocol was not pushed

  term_emergency_reset();
  EXPECT_NE(pty->output().find(reset), std::string::npos);
  termios after = pty->modes();
  EXPECT_EQ(after.c_lflag, before.c_lflag);
  EXPECT_EQ(after.c_iflag, before.c_iflag);
  EXPECT_EQ(after.c_oflag, before.c_oflag);
  EXPECT_EQ(term_reset_string(), "");
  term_emergency_reset();  // a second call writes nothing
  EXPECT_EQ(pty->output(), "");
}

TEST_F(screen_term_host, kitty_protocol_is_pushed_when_the_terminal_answers) {
  ASSERT_TRUE(start()) << why;
  EXPECT_NE(started_output.find("\033[?u"), std::string::npos);
  pty->type("\x1b[?0u");
  EXPECT_TRUE(events().empty());
  EXPECT_NE(pty->kept().find("\033[>1u"), std::string::npos);
  EXPECT_NE(std::string(term_reset_string()).find("\033[<u"), std::string::npos);
  host->stop();
  EXPECT_NE(pty->output().find("\033[<u"), std::string::npos);
}

TEST_F(screen_term_host, stop_gives_the_terminal_back) {
  termios before = pty->modes();
  ASSERT_TRUE(start()) << why;
  host->paint(1, 1, cells("text"));
  host->stop();
  std::string out = pty->output();
  for (const char* off : {"\033[?2004l", "\033[?1004l", "\033[?1002l", "\033[?1049l"})
    EXPECT_NE(out.find(off), std::string::npos) << testing::PrintToString(std::string(off));
  EXPECT_EQ(pty->modes().c_lflag, before.c_lflag);
  EXPECT_EQ(term_reset_string(), "");
  fs_event ev;
  EXPECT_EQ(host->wait(ev, 10), fs_wait::quit);
  host->stop();  // twice is harmless
  ASSERT_TRUE(host->start(0, nullptr, why)) << why;  // and the terminal can be taken again
  EXPECT_EQ(host->geometry().lines, 24);
}

TEST_F(screen_term_host, console_leaves_and_takes_back_the_screen) {
  termios before = pty->modes();
  ASSERT_TRUE(start()) << why;
  host->paint(1, 1, cells("text"));
  host->flush();
  pty->output();
  host->suspend(true);
  std::string out = pty->output();
  EXPECT_NE(out.find("\033[?1049l"), std::string::npos);
  EXPECT_NE(out.find("\033[?2004l"), std::string::npos);
  EXPECT_EQ(pty->modes().c_lflag, before.c_lflag);  // cooked for the console's reads
  host->suspend(false);
  EXPECT_FALSE(pty->modes().c_lflag & ICANON);
  auto evs = events();
  ASSERT_EQ(evs.size(), 1u);
  EXPECT_EQ(evs[0].code, FSK_FOCUS_IN);  // coming back counts as focus gained
  host->paint(2, 1, cells("more"));
  host->flush();
  out = pty->kept();
  EXPECT_NE(out.find("\033[?1049h"), std::string::npos);
  EXPECT_NE(out.find("\033[?2004h"), std::string::npos);
  EXPECT_NE(out.find("text"), std::string::npos);  // repainted whole
  host->suspend(true);
  host->stop();  // leaving from the console
  EXPECT_EQ(pty->modes().c_lflag, before.c_lflag);
  EXPECT_EQ(term_reset_string(), "");
}

}  // namespace
