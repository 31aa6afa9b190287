// TABExp, HEXType, PREServe and RESTore.
#include <gtest/gtest.h>

#include "editor/journal.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

TEST(SmallCommands, TabExpansionWidthsAndTheFirstTab) {
  fresh_file({"1234567\tx", "\ta\tb", "no tabs", "a\t"});
  cmd("tabexp");
  EXPECT_EQ(lines_of(*xf_ring.file),
            (std::vector<std::string>{"1234567 x", "        a       b", "no tabs", "a"}));
  EXPECT_EQ(xf_ring.file->alt_save, 3) << "each changed line counts";
  cmd("undo");
  cmd("tabexp notf file 4");
  EXPECT_EQ(lines_of(*xf_ring.file)[1], "\ta   b") << "the first tab stays, the next goes to column 8";
  EXPECT_EQ(cmd("tabexp all file 0"), 5);
  EXPECT_EQ(cmd("tabexp sideways"), 5);
  fresh_file({"\tx"});
  cmd("tabexp s");
  EXPECT_EQ(lines_of(*xf_ring.file)[0], "\tx") << "no selection: nothing to expand";
}

TEST(SmallCommands, HexTypeListsBytesInGroupsOfFour) {
  fresh_editor();
  file_with({"abcde", "", std::string("a\nb", 3)}, "/tmp/hx.txt");
  xf_current_line() = 0;
  cmd("hextype 3");
  ASSERT_EQ(xf_ring.file->name, "/tmp/hx.txt.hextype");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"61626364 65", " a b c d  e", "20", " ", "610062",
                                                               " a   b"}));
  EXPECT_EQ(cmd("hextype /zz/"), 2);
}

TEST(SmallCommands, PreserveAndRestoreNest) {
  fresh_file({"a"});
  cmd("wrap off");
  cmd("preserve");
  cmd("wrap on");
  cmd("zone 3 9");
  cmd("preserve");
  cmd("wrap off");
  cmd("zone 1 2");
  cmd("mode locate stay");
  cmd("restore");
  EXPECT_EQ(xf_search.wrap, 1);
  EXPECT_EQ(xf_ring.view->per_file[0].zone_first, 2);
  EXPECT_EQ(xf_set.mode_locate_stay, 0);
  cmd("restore");
  EXPECT_EQ(xf_search.wrap, 0);
  EXPECT_EQ(xf_ring.view->per_file[0].zone_first, 0);
  EXPECT_EQ(cmd("restore"), 0) << "an empty stack does nothing";
}
