// NEXTWord, PREVWord and ISWitch.
#include <gtest/gtest.h>

#include "editor/compose.h"
#include "editor/input.h"
#include "editor/journal.h"
#include "tests/editor/test_support.h"

namespace {

// The cursor noted in line `line`, column `col` (0-based), as a screen read leaves it.
void cursor_at(int32_t line, int32_t col) {
  xf_place p;
  p.kind = XP_LINE;
  p.line = line;
  p.column = col;
  xf_set_cursor_place(p);
}

std::pair<int32_t, int32_t> cursor_wish() { return {xf_scr.cursor_line, xf_scr.cursor_col}; }

}  // namespace

TEST(CursorCommands, WordsAcrossLinesSkippingBlankOnes) {
  fresh_file({"alpha  beta", "", "   ", "\tgamma"});
  xf_run.batch = 0;
  cursor_at(0, 2);
  cmd("nextword");
  EXPECT_EQ(cursor_wish(), (std::pair<int32_t, int32_t>{0, 7}));
  cursor_at(0, 7);
  cmd("nextword");
  EXPECT_EQ(cursor_wish(), (std::pair<int32_t, int32_t>{3, 1})) << "empty and blank lines are passed over";
  cursor_at(3, 1);
  cmd("prevword");
  EXPECT_EQ(cursor_wish(), (std::pair<int32_t, int32_t>{0, 7}));
  cursor_at(0, 9);
  cmd("prevword");
  EXPECT_EQ(cursor_wish(), (std::pair<int32_t, int32_t>{0, 7})) << "from inside a word, to its start";
  xf_scr.cursor_line = -5;
  cursor_at(3, 3);
  cmd("nextword");
  EXPECT_EQ(xf_scr.cursor_line, -5) << "nothing after the last word";
  xf_run.batch = 1;
  cursor_at(0, 0);
  cmd("nextword");
  EXPECT_EQ(xf_scr.cursor_line, -5) << "nothing in batch";
}

TEST(CursorCommands, IswitchWalksTheOrderOfUseRound) {
  fresh_editor();
  file_with({"a"}, "/tmp/a.txt");
  file_with({"b"}, "/tmp/b.txt");
  file_with({"c"}, "/tmp/c.txt");
  xf_set_file(0);
  xf_run.command_line = "typed";
  std::vector<std::string> seen;
  for (int k = 0; k < 4; ++k) {
    cmd("iswitch");
    seen.push_back(xf_ring.file->name);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"/tmp/b.txt", "/tmp/c.txt", "/tmp/a.txt", "/tmp/b.txt"}));
  EXPECT_TRUE(xf_run.command_line.empty());
}
