// FILTer: the selection through a command, its output in the selection's place.
#include <gtest/gtest.h>

#include "editor/input.h"
#include "editor/select.h"
#include "tests/editor/test_support.h"

namespace {

using lines = std::vector<std::string>;

lines now() { return lines_of(*xf_ring.file); }

}  // namespace

TEST(Filter, WholeLinesGoThroughTheCommand) {
  fresh_file({"b", "c", "a", "z"});
  cmd("s_set linear nopending 1 1 3 *");
  cmd("filter sort");
  EXPECT_EQ(now(), (lines{"a", "b", "c", "z"})) << "each output line takes the place of an input line";
  EXPECT_FALSE(xf_sel_active()) << "the selection ends";
  cmd("undo");
  cmd("undo");
  EXPECT_EQ(now()[0], "b");
}

TEST(Filter, APartOfALineStaysInTheLine) {
  fresh_file({"say hello world"});
  cmd("s_set linear nopending 1 5 1 9");
  cmd("filter tr a-z A-Z");
  EXPECT_EQ(now(), (lines{"say HELLO world"}));
}

TEST(Filter, TheLastLinesOfTheFileAndTrailingBlanks) {
  fresh_file({"keep", "x  ", "y"});
  cmd("s_set linear nopending 2 1 3 *");
  cmd("filter sed 's/$/  /'");
  EXPECT_EQ(now(), (lines{"keep", "x", "y"})) << "output lines lose their trailing blanks";
}

TEST(Filter, FaultsAndTheCursorLine) {
  fresh_file({"a"});
  EXPECT_EQ(cmd("filter"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("filter time-out 0 sort"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid time-out");
  EXPECT_EQ(cmd("filter sort"), 1) << "no selection and no cursor on a line (batch)";
  EXPECT_EQ(last_msg(), "..... Invalid cursor position");
  xf_run.batch = 0;
  xf_place p;
  p.kind = XP_LINE;
  p.line = 0;
  xf_set_cursor_place(p);
  cmd("filter time-out 5 tr a-z A-Z");
  EXPECT_EQ(now(), (lines{"A"}));
  fresh_file({"abc"});
  xf_run.batch = 0;
  xf_set_cursor_place(p);
  cmd("filter tr a-c x-z");
  EXPECT_EQ(now(), (lines{"xyz"})) << "the cursor's line stands for the selection";
}
