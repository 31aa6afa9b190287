// The screen library's read cycle on the terminal host: what is typed on a pseudo-terminal becomes read results.
#include <gtest/gtest.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

#include "screen/as_read.h"
#include "screen/fs.h"
#include "tests/screen/term_pty.h"

namespace {

class screen_term_read : public ::testing::Test {
 protected:
  void SetUp() override {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    unsetenv("NO_COLOR");
    ASSERT_TRUE(pty.ok());
    host = std::make_unique<term_host>(pty.options());
    fs_sethost(host.get());
    fs_reset();
    fsinit(0, nullptr);
    ASSERT_EQ(fsstatus(), 0) << fserror();
    alarm(30);  // a read that never ends must end the run, not hang it
  }
  void TearDown() override {
    alarm(0);
    fs_reset();
    fs_sethost(nullptr);
    host.reset();
  }
  int field(std::vector<int> rec) {
    rec.resize(14, 0);
    return asrfmt(1, 14, rec.data());
  }
  int read(std::string_view typed) {
    pty.type(typed);
    int kind = -1;
    asread(kind, value, nmod);
    pty.drain();
    return kind;
  }
  term_pty pty;
  std::unique_ptr<term_host> host;
  int value = 0, nmod = 0;
};

TEST_F(screen_term_read, typing_into_a_field_then_enter) {
  ASSERT_EQ(field({1, 2, 5, 1, 10, 0, 1, 1}), 0);
  asfcur(1, 1, 1);
  EXPECT_EQ(read("ab\xc3\xa9\r"), ASR_ENTER);
  EXPECT_EQ(nmod, 1);
  auto text = ascget_char(1, 1);
  ASSERT_TRUE(text);
  EXPECT_EQ(*text, "ab\xe9");
  host->flush();
  EXPECT_EQ(host->shown_text(2).substr(4, 4), "ab\xe9 ");
  EXPECT_EQ(host->shown(2, 5).fg, 21);  // logical colour 1: blue of the 256
  EXPECT_EQ(host->shown(1, 1).fg, -1);  // outside fields: the terminal's own colours
}

TEST_F(screen_term_read, function_keys_and_their_releases) {
  EXPECT_EQ(read("\x1b[15;5~"), ASR_PFK);  // Ctrl+F5
  EXPECT_EQ(value, 5 + 12 * 2);
  EXPECT_EQ(read(""), ASR_PFK_UP);  // the release the host made
  EXPECT_EQ(value, 5 + 12 * 2);
  EXPECT_EQ(read("\x1b[1;3P"), ASR_PFK);  // Alt+F1
  EXPECT_EQ(value, 1 + 12 * 3);
  EXPECT_TRUE(asqalt());
  EXPECT_FALSE(asqctrl());
  asfignrel();
  EXPECT_EQ(read("\x01"), ASR_CTRL);  // the release of Alt+F1 is ignored, Ctrl+A ends the read
  EXPECT_EQ(value, 'a');
}

TEST_F(screen_term_read, mouse_and_wheel) {
  EXPECT_EQ(read("\x1b[<0;7;3M"), ASR_BUTTON);
  EXPECT_EQ(value, 1);
  int id, line, col;
  asqmou(0, id, line, col);
  EXPECT_EQ(line, 3);
  EXPECT_EQ(col, 7);
  EXPECT_EQ(read("\x1b[<0;7;3m"), ASR_BUTTON_UP);
  EXPECT_EQ(read("\x1b[<65;1;1M"), ASR_WHEEL_DOWN);
}

TEST_F(screen_term_read, resize_ends_the_read) {
  pty.resize(31, 100);
  raise(SIGWINCH);
  EXPECT_EQ(read(""), ASR_RESIZE);
  int q[4];
  fsqury(0, 0, 4, q);
  EXPECT_EQ(q[2], 30);
  EXPECT_EQ(q[3], 100);
}

TEST_F(screen_term_read, timer_ends_a_quiet_read) {
  asftimer(50);
  EXPECT_EQ(read(""), ASR_TIMEOUT);
}

}  // namespace
