// SOrt, NSort and SORTRing.
#include <gtest/gtest.h>

#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

lines now() { return lines_of(*xf_ring.file); }

}  // namespace

TEST(Sort, RangesAndDefaultKey) {
  fresh_file({"d", "c", "b", "a", "z", "y", "x", "w", "v", "u"});
  xf_current_line() = 3;
  cmd("sort :10");
  EXPECT_EQ(now(), (lines{"d", "c", "b", "a", "v", "w", "x", "y", "z", "u"})) << "lines 4 to 9, not line 10";
  cmd("sort all");
  EXPECT_EQ(now(), (lines{"a", "b", "c", "d", "u", "v", "w", "x", "y", "z"}));
  EXPECT_EQ(xf_ring.file->alt_save, 2);
  cmd("undo");
  EXPECT_EQ(now()[0], "d");
  xf_current_line() = 0;
  cmd("sort 3");
  EXPECT_EQ(now(), (lines{"b", "c", "d", "a", "v", "w", "x", "y", "z", "u"}));
  xf_current_line() = 3;
  EXPECT_EQ(cmd("sort :2"), 1) << "a range ending above the current line";
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("sort sel"), 1);
  EXPECT_EQ(last_msg(), "..... No current selection");
}

TEST(Sort, KeysDirectionsAndStability) {
  fresh_file({"b 2 x", "a 1 y", "b 1 z", "a 2 w", "a 1 v"});
  cmd("sort all 1 1 d 3 3");
  EXPECT_EQ(now(), (lines{"a 2 w", "a 1 y", "a 1 v", "b 2 x", "b 1 z"}))
      << "ascending on the first key, descending on the second, equal lines in their order";
  cmd("sort all d 1 1 3 3");
  EXPECT_EQ(now(), (lines{"b 2 x", "b 1 z", "a 2 w", "a 1 y", "a 1 v"})) << "a key with no letter keeps the last";
  EXPECT_EQ(cmd("sort all 5 2"), 1);
  EXPECT_EQ(cmd("sort all 1"), 1);
  EXPECT_EQ(cmd("sort all x 1 2"), 1);
}

TEST(Sort, ShortLinesCaseAndScope) {
  fresh_file({"bb", "b", "B", "a"});
  cmd("sort all 1 2");
  EXPECT_EQ(now(), (lines{"B", "a", "b", "bb"})) << "a missing column counts as a blank";
  xf_ring.file->case_search_s = 1;
  cmd("sort all d 1 1");
  EXPECT_EQ(now(), (lines{"B", "b", "bb", "a"})) << "SIGNORE folds the keys, the sort stays stable";
  fresh_file({"c", "b", "hidden", "a"});
  xf_ring.file->select[2] = 3;
  cmd("sort all");
  EXPECT_EQ(now(), (lines{"a", "b", "hidden", "c"})) << "a line out of scope stays where it is";
}

TEST(Sort, NaturalOrder) {
  fresh_file({"a10", "a9", "1.5", "1.05", "x  2", "x 10"});
  cmd("nsort all");
  EXPECT_EQ(now(), (lines{"1.05", "1.5", "a9", "a10", "x  2", "x 10"}));
}

TEST(Sort, RingByNameInItsOwnOrder) {
  fresh_editor();
  file_with({"1"}, "/d/beta");
  file_with({"2"}, "/d/Alpha");
  file_with({"3"}, "/d/alpha");
  file_with({"4"}, "/d/_x");
  file_with({"5"}, "/d/{y");
  xf_set_file(0);
  cmd("sortring");
  std::vector<std::string> names;
  for (const auto& f : xf_ring.files) names.push_back(f->name);
  EXPECT_EQ(names, (std::vector<std::string>{"/d/_x", "/d/alpha", "/d/Alpha", "/d/beta", "/d/{y"}));
  EXPECT_EQ(xf_ring.file->name, "/d/beta") << "the view keeps its file";
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"1"}));
}
