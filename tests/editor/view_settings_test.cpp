// Settings that shape a view: CMDline, CURLine, SCALe, TABLine, NUMber, SHAdow, DISPlay and WORDChars.
#include <gtest/gtest.h>

#include <climits>

#include "editor/filetype.h"
#include "editor/find.h"
#include "editor/journal.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

namespace {

xf_view& view() { return *xf_ring.view; }
xf_view_file& here() { return view().per_file[xf_ring.file_no]; }

}  // namespace

TEST(ViewSettings, CmdlinePlaceAndReports) {
  fresh_file({"a"});
  cmd("cmdline");
  EXPECT_EQ(last_msg(), "..... Is ON BOT");
  cmd("cmdline top");
  cmd("cmdline");
  EXPECT_EQ(last_msg(), "..... Is ON TOP");
  cmd("cmdline off");
  cmd("cmdline");
  EXPECT_EQ(last_msg(), "..... Is OFF TOP");
  cmd("cmdline on bottom");
  EXPECT_EQ(view().cmdline_place[0], 2);
  EXPECT_EQ(cmd("cmdline sideways"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
}

TEST(ViewSettings, CmdlineMovesRowsOutOfItsWay) {
  fresh_file({"a"});
  cmd("cmdline top");
  view().curline = view().height;
  cmd("scale on 10");
  here().scale_row = view().height;
  cmd("cmdline bottom");
  EXPECT_EQ(view().curline, view().height - 1);
  EXPECT_EQ(here().scale_row, view().height - 2) << "the current line took the row below";
  view().curline = 3;
  cmd("cmdline top");
  EXPECT_EQ(view().curline, 4);
}

TEST(ViewSettings, CurlineRowForms) {
  fresh_file({"a"});
  const int32_t h = view().height;
  cmd("curline 10");
  EXPECT_EQ(view().curline, 10);
  cmd("curline on m");
  EXPECT_EQ(view().curline, h / 2);
  cmd("curline m-2");
  EXPECT_EQ(view().curline, h / 2 - 2);
  cmd("curline -5");
  EXPECT_EQ(view().curline, h - 3);
  cmd("curline 1");
  EXPECT_EQ(view().curline, 3) << "with the command line at the bottom the first rows are taken";
  cmd("curline 999");
  EXPECT_EQ(view().curline, h - 1);
  cmd("curline");
  EXPECT_EQ(last_msg(), " ..... Is ON " + std::to_string(h - 1));
  cmd("scale on 12");
  EXPECT_EQ(cmd("curline 12"), 1);
  EXPECT_EQ(last_msg(), "..... Already used position");
  EXPECT_EQ(cmd("curline x"), 1);
}

TEST(ViewSettings, ScaleAndTablineRows) {
  fresh_file({"a"});
  cmd("scale");
  EXPECT_EQ(last_msg(), "..... Is OFF 3");
  cmd("scale on");
  EXPECT_EQ(here().scale_row, 3);
  cmd("tabline on 6");
  EXPECT_EQ(here().tabline_row, 6);
  cmd("tabline off");
  EXPECT_EQ(here().tabline_row, -6);
  view().curline = 9;
  EXPECT_EQ(cmd("scale on 9"), 1);
  EXPECT_EQ(last_msg(), "..... This is the current line position");
  EXPECT_EQ(here().scale_row, 3);
  cmd("scale_screen on 7");
  EXPECT_EQ(view().defaults.scale_row, 7);
  EXPECT_EQ(here().scale_row, 3) << "the _Screen form sets the default for files opened later";
}

TEST(ViewSettings, NumberShadowAndDisplay) {
  fresh_file({"a"});
  cmd("number zero");
  EXPECT_EQ(here().number, 2);
  cmd("number");
  EXPECT_EQ(last_msg(), "..... Is ZERO");
  cmd("number_screen off");
  EXPECT_EQ(view().defaults.number, 0);
  cmd("shadow off");
  EXPECT_EQ(view().shadow, 0);
  EXPECT_EQ(cmd("shadow zero"), 1);

  cmd("display 1 *");
  EXPECT_EQ(view().display[0], 1);
  EXPECT_EQ(view().display[1], INT32_MAX);
  EXPECT_FALSE(xf_in_scope(0)) << "a line at level 0 is out of the range";
  cmd("display 0");
  cmd("display");
  EXPECT_EQ(last_msg(), "...... is 0 0");
  EXPECT_EQ(cmd("display 5 2"), 5);
  EXPECT_EQ(cmd("display x"), 5);
}

TEST(ViewSettings, WordCharsByFileType) {
  fresh_editor();
  file_with({"foo-bar baz"}, "/tmp/t.lisp");
  xf_current_line() = 0;
  EXPECT_FALSE(xf_word_char('-'));
  cmd("wordchars lisp abcdefghijklmnopqrstuvwxyz-");
  EXPECT_TRUE(xf_word_char('-'));
  EXPECT_FALSE(xf_word_char('_')) << "the row replaces the default set";
  file_with({"x"}, "/tmp/t.c");
  EXPECT_TRUE(xf_word_char('_')) << "other types keep letters, digits and underscore";
  cmd("wordchars xyz");
  EXPECT_FALSE(xf_word_char('a')) << "the row for * now answers types without their own";
  cmd("wordchars");
  EXPECT_EQ(last_msg(), "..... Is xyz");
}

TEST(ViewSettings, TabsetKeepsOrderedStopsAndTypeDefaults) {
  fresh_file({"a"});
  cmd("tabset");
  EXPECT_EQ(last_msg(), "..... Is OFF");
  cmd("tabset 9 1 5 5");
  EXPECT_EQ(xf_ring.file->tabs, (std::vector<int32_t>{3, 0, 1, 5, 9}));
  cmd("tabset");
  EXPECT_EQ(last_msg(), "..... Is 1 5 9");
  EXPECT_EQ(cmd("tabset 3 x"), 5);
  EXPECT_EQ(cmd("tabset 0"), 5);
  EXPECT_EQ(xf_ring.file->tabs.size(), 5u) << "a refused list changes nothing";
  cmd("tabset 4 8 ft py");
  file_with({"b"}, "/tmp/t.py");
  xf_ft_apply(*xf_ring.file);  // as the opener does
  EXPECT_EQ(xf_ring.file->tabs, (std::vector<int32_t>{2, 0, 4, 8})) << "a new file of the type takes the stops";
  cmd("tabset off");
  EXPECT_TRUE(xf_ring.file->tabs.empty());
}
