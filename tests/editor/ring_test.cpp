// The line store, xf_do and the ring.
#include <gtest/gtest.h>

#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

TEST(LineStore, ReplaceInsertDeleteKeepRowsInOrder) {
  fresh_editor();
  file_with({"a", "b", "c"});
  xf_file& f = *xf_ring.file;
  xf_do('r', xf_new_text("B"), 1, 1, 1, nullptr, "t");
  xf_do('i', xf_new_text("first"), -1, 1, 1, nullptr, "t");
  EXPECT_EQ(lines_of(f), (lines{"first", "a", "B", "c"}));
  xf_do('d', nullptr, 0, 1, 1, nullptr, "t");
  xf_do('D', nullptr, 1, 2, 1, nullptr, "t");
  EXPECT_EQ(lines_of(f), (lines{"a"}));
  EXPECT_EQ(f.size, 1);
}

TEST(LineStore, InsertManyGrowsPastCapacity) {
  fresh_editor();
  file_with({});
  xf_file& f = *xf_ring.file;
  int32_t cap = f.capacity;
  std::vector<xf_text> many;
  for (int i = 0; i < cap + 5; ++i) many.push_back(xf_new_text(std::to_string(i)));
  xf_do('I', nullptr, -1, cap + 5, 1, &many, "t");
  EXPECT_EQ(f.size, cap + 5);
  EXPECT_GT(f.capacity, cap);
  EXPECT_EQ(f.line(cap + 4), std::to_string(cap + 4));
  // Rows past size, where the arrays reach them, are empty.
  for (std::size_t i = f.size; i < f.text.size(); ++i) EXPECT_EQ(f.text[i].get(), nullptr);
}

TEST(LineStore, ModeOneAppliesTheFileRulesButModeZeroDoesNot) {
  fresh_editor();
  file_with({"x"});
  xf_file& f = *xf_ring.file;
  f.case_mode = 2;
  f.lrecl = 10;
  f.trunc = 5;
  xf_do('r', xf_new_text("abc  defghij"), 0, 1, 1, nullptr, "t");
  EXPECT_EQ(f.line(0), "ABC");  // cut to 5 ("ABC  "), then trailing blanks stripped
  xf_do('r', xf_new_text("abc  defghij"), 0, 1, 0, nullptr, "t");
  EXPECT_EQ(f.line(0), "abc  defghij");
  f.keep_blanks = 1;
  xf_do('r', xf_new_text("ab   cdef"), 0, 1, 1, nullptr, "t");
  EXPECT_EQ(f.line(0), "AB   ");
}

TEST(LineStore, PointsFollowInsertsAndVanishWithTheirLine) {
  fresh_editor();
  file_with({"0", "1", "2", "3", "4", "5"});
  xf_file& f = *xf_ring.file;
  f.points = {{".a", 1}, {".b", 3}, {".c", 5}};
  xf_do('i', xf_new_text("new"), 0, 1, 1, nullptr, "t");  // a->2 b->4 c->6
  EXPECT_EQ(f.points[0].line, 2);
  xf_do('D', nullptr, 3, 2, 1, nullptr, "t");  // lines 3,4 go: b (4) is deleted, c 6->4
  ASSERT_EQ(f.points.size(), 2u);
  EXPECT_EQ(f.points[0].name, ".a");
  EXPECT_EQ(f.points[1].name, ".c");
  EXPECT_EQ(f.points[1].line, 4);
}

TEST(LineStore, CurrentLineOfEveryViewStaysInTheFile) {
  fresh_editor();
  file_with({"a", "b", "c", "d"});
  int32_t v2 = xf_new_view(12, 1, 11, 80, 0, 1, 1);
  xf_ring.views[v2]->current_file = 0;
  xf_ring.views[v2]->per_file[0].current_line = 3;
  xf_current_line() = 2;
  xfdel(1, 3);
  EXPECT_EQ(xf_ring.file->size, 1);
  EXPECT_EQ(xf_ring.views[v2]->per_file[0].current_line, 0);
  EXPECT_LE(xf_current_line(), 0);
  xfdel(0, 1);
  EXPECT_EQ(xf_ring.file->size, 0);
  EXPECT_EQ(xf_current_line(), -1);  // the top-of-file line
  EXPECT_EQ(xf_ring.views[v2]->per_file[0].current_line, -1);
}

TEST(LineStore, DeletingTheLastLineUnderToplineOneLeavesOneBlank) {
  fresh_editor();
  xf_ring.lowest_line = 0;
  file_with({"only"});
  xfdel(0, 1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{" "}));
  EXPECT_EQ(xf_ring.file->alt_save, 1);
}

TEST(LineStore, DuplicateFromTopOfFileInsertsBlankLines) {
  fresh_editor();
  file_with({"a"});
  xfdup(-1, 2);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{" ", " ", "a"}));
  xfdup(2, 1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{" ", " ", "a", "a"}));
  EXPECT_EQ(xf_ring.file->alt_save, 2);
}

TEST(LineStore, DeleteSkipsLinesOutOfScope) {
  fresh_editor();
  file_with({"a", "hidden", "b", "c"});
  xf_ring.file->select[1] = 5;  // outside DISPLAY 0 0
  xfdel(0, 3);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"hidden", "c"}));
  xf_ring.view->scope = 1;  // SCOPE ALL takes every line
  xfdel(0, 2);
  EXPECT_EQ(xf_ring.file->size, 0);
}

TEST(LineStore, JoinAndCutWithDdel1) {
  fresh_editor();
  file_with({"hello world", "next"});
  xfddel1(0, 6, 11);  // cut " world"
  EXPECT_EQ(xf_ring.file->line(0), "hello");
  xfddel1(0, 8, -1);  // past the end: the next line joins at column 8
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"hello  next"}));
  xfddel1(0, 1, 20);  // the whole text: one blank stays
  EXPECT_EQ(xf_ring.file->line(0), " ");
}

TEST(LineStore, AddTakesTheIndentationOfTheLineAbove) {
  fresh_editor();
  file_with({"    indented"});
  xf_ring.file->keep_blanks = 1;
  xfadd(0, 2, true);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"    indented", "    ", "    "}));
  EXPECT_EQ(xf_ring.file->cursor.line, 1);
  EXPECT_EQ(xf_ring.file->cursor.column, 5);
}

TEST(LineStore, UnknownChangeCodeChangesNothing) {
  fresh_editor();
  file_with({"a"});
  testing::internal::CaptureStderr();
  xf_do('z', nullptr, 0, 1, 1, nullptr, "t");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "tolva: xf_do: internal error, wrong argument: cd = z\n");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a"}));
}

TEST(Ring, NewFilesGoAfterTheCurrentOneAndWalkingWraps) {
  fresh_editor();
  file_with({}, "/a");
  file_with({}, "/b");
  file_with({}, "/c");  // order a b c
  xf_goto_file(0);      // at a
  file_with({}, "/d");  // order a d b c
  std::vector<std::string> order;
  for (int k = 0; k < 4; ++k) {
    order.push_back(xf_ring.file->name);
    xf_set_file(xf_next_file());
  }
  EXPECT_EQ(order, (lines{"/d", "/b", "/c", "/a"}));
  EXPECT_EQ(xf_ring.file->name, "/d");
  xf_set_file(xf_prev_file());
  EXPECT_EQ(xf_ring.file->name, "/a");
  xf_set_file(xf_prev_file());
  EXPECT_EQ(xf_ring.file->name, "/c");  // wraps to the largest
}

TEST(Ring, GoingToAFileMovesItNextToTheDeparture) {
  fresh_editor();
  file_with({}, "/a");
  file_with({}, "/b");
  file_with({}, "/c");
  xf_goto_file(0);
  xf_goto_file(2);  // c moves right behind a
  EXPECT_EQ(xf_ring.files[xf_prev_file()]->name, "/a");
}

TEST(Ring, ClosingRenumbersLaterFilesAndKeepsTheOrder) {
  fresh_editor();
  file_with({"1"}, "/a");
  file_with({"2"}, "/b");
  file_with({"3"}, "/c");
  xf_set_file(1);
  xf_close_file();  // b goes; a (its predecessor) becomes current
  EXPECT_EQ(xf_file_count(), 2);
  EXPECT_EQ(xf_ring.file->name, "/a");
  EXPECT_EQ(xf_ring.files[1]->name, "/c");
  EXPECT_EQ(xf_ring.view->per_file.size(), 2u);
  EXPECT_EQ(xf_ring.files[xf_next_file()]->name, "/c");
  xf_close_file();
  xf_close_file();
  EXPECT_EQ(xf_file_count(), 0);
  EXPECT_EQ(xf_ring.file, nullptr);
  EXPECT_EQ(xf_ring.view->current_file, -1);
}

TEST(Scope, DisplayRangeDecidesAndScopeTwoInverts) {
  fresh_editor();
  file_with({"a", "b", "c"});
  xf_ring.file->select[1] = 3;
  EXPECT_TRUE(xf_in_scope(-1));
  EXPECT_TRUE(xf_in_scope(3));  // end of file
  EXPECT_FALSE(xf_in_scope(1));
  EXPECT_FALSE(xf_in_scope(7));
  EXPECT_EQ(xf_count_in_scope(0, 2), 2);
  EXPECT_EQ(xf_nth_in_scope(0, 1), 2);
  xf_ring.view->display[1] = 3;
  EXPECT_TRUE(xf_in_scope(1));
  xf_ring.view->scope = 2;
  EXPECT_FALSE(xf_in_scope(1));
  EXPECT_TRUE(xf_in_scope(7));
}
