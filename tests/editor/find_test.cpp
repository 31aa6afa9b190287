// The search commands: regular-expression and word locates, the XEDIT FIND family, REGtype, ALl, EXClude,
// SHOw and SELect.
#include <gtest/gtest.h>

#include "editor/regex.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

int32_t run(const std::string& cmd) { return xfcom2(cmd, "/tmp"); }


std::vector<int32_t> levels() {
  const xf_file& f = *xf_ring.file;
  return std::vector<int32_t>(f.select.begin(), f.select.begin() + f.size);
}

}  // namespace

TEST(RegexLocate, ForwardBackwardWrapAndMessages) {
  fresh_file({"abc", "x42", "def", "y7"});
  EXPECT_EQ(run("r/[0-9]+/"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("r/[0-9]$"), 0);  // the closing "/" may be left out
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("r-/^x/"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("r/^a/"), 0);
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(last_msg(), "..... Wrapped");
  EXPECT_EQ(run("r/zz/"), 2);
  EXPECT_EQ(last_msg(), "..... Regular expression \"zz\" not found.");
  run("wrap off");
  EXPECT_EQ(run("r/zz/"), 1);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("r//"), 1);
  EXPECT_EQ(last_msg(), "..... Empty string");
  EXPECT_EQ(run("r/(/"), 1);
  EXPECT_EQ(last_msg().rfind("..... missing closing parenthesis", 0), 0u) << last_msg();
}

TEST(RegexLocate, CaseZoneAndEngines) {
  fresh_file({"top", "ABC", "abc"});
  EXPECT_EQ(run("r/abc/"), 0);
  EXPECT_EQ(cur(), 2);
  xf_current_line() = 0;
  run("case mixed ignore");
  EXPECT_EQ(run("r/abc/"), 0);
  EXPECT_EQ(cur(), 1);
  // A hit outside the zone does not count; the line is cut at its right edge.
  fresh_file({"top", "xxabc", "abc"});
  run("zone 1 4");
  EXPECT_EQ(run("r/abc/"), 0);
  EXPECT_EQ(cur(), 2);
  fresh_file({"top", "a+", "aa"});
  run("regtype legacy");
  EXPECT_EQ(run("r/a+/"), 0);
  EXPECT_EQ(cur(), 1);
  run("regtype pcre");
  EXPECT_EQ(run("regtype"), 0);
  EXPECT_EQ(last_msg(), "..... Is ECMASCRIPT");
  EXPECT_EQ(run("r/a+$/"), 0);
  EXPECT_EQ(cur(), 2);
  run("regtype l");
  run("regtype");
  EXPECT_EQ(last_msg(), "..... Is LEGACY");
  EXPECT_EQ(run("regtype perl"), 1);
}

TEST(WordLocate, WholeWordsBothWays) {
  fresh_file({"top", "category", "the cat", "cat"});
  EXPECT_EQ(run("\\cat\\"), 0);
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("\\cat"), 0);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("-\\cat\\"), 0);
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("\\dog\\"), 2);
  EXPECT_EQ(last_msg(), "..... String \"dog\" not found.");
}

TEST(XeditFind, PrefixMatchBlanksAndUnderscore) {
  fresh_file({"top", "  abc", "a c", "a_c", "abcd"});
  EXPECT_EQ(run("find a c"), 0);  // the blank in the pattern matches any character
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("find a_c"), 0);  // "_" matches a blank
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(last_msg(), "..... Wrapped");
  EXPECT_EQ(run("find   a"), 0);  // one blank is skipped, the rest is pattern
  EXPECT_EQ(cur(), 1);
  xf_current_line() = 4;
  EXPECT_EQ(run("findup a"), 0);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("nfind a"), 0);
  EXPECT_EQ(cur(), 0);  // wrapped to "top"
  EXPECT_EQ(run("nfup a"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("find zz"), 1);
  EXPECT_EQ(last_msg(), "..... Not found");
  EXPECT_EQ(run("find"), 1);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  run("wrap off");
  xf_current_line() = 1;
  EXPECT_EQ(run("find zz"), 1);
  EXPECT_EQ(cur(), 4);
  run("case mixed ignore");
  xf_current_line() = 0;
  EXPECT_EQ(run("find ABCD"), 0);
  EXPECT_EQ(cur(), 4);
}

TEST(ScopeCommands, AllThenChangeOnlyTheDisplayedLines) {
  fresh_file({"a1", "b1", "a2", "b2"});
  EXPECT_EQ(run("all /a/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 1, 0, 1}));
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(xf_ring.view->scope, 0);
  EXPECT_EQ(run("c/1/X/ *"), 0);
  EXPECT_EQ(run("c/2/Y/ *"), 0);  // the range counts hidden lines but skips them
  xf_current_line() = 0;
  EXPECT_EQ(run("c/b/Z/ *"), 1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"aX", "b1", "aY", "b2"}));
  EXPECT_EQ(run("all"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 0, 0, 0}));
}

TEST(ScopeCommands, OperatorsApplyLeftToRight) {
  fresh_file({"a", "b", "ac", "bc", "c"});
  EXPECT_EQ(run("all /a/ | /b/ & /c/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 1, 0, 0, 1}));
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("all ~/c/"), 2);  // only displayed lines are tried, and they all hold c
  run("all");
  EXPECT_EQ(run("all ~/c/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 0, 1, 1, 1}));
  run("all");
  EXPECT_EQ(run("all r/^[ab]c$/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 1, 0, 0, 1}));
  EXPECT_EQ(run("all /a/ x /b/"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(run("all r//"), 1);
  EXPECT_EQ(last_msg(), "..... Empty string");
}

TEST(ScopeCommands, BlankExcludeAndShow) {
  fresh_file({"x", "  ", "y", "xy"});
  EXPECT_EQ(run("all blank"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 0, 1, 1}));
  fresh_file({"x", "y"});
  EXPECT_EQ(run("all b"), 2);
  EXPECT_EQ(last_msg(), "..... Not found");
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 0}));
  fresh_file({"x1", "y1", "x2", "y2"});
  EXPECT_EQ(run("exclude /x/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 0, 1, 0}));
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("show/2/"), 0);  // the operand may follow the name directly
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 0, 0, 0}));
  EXPECT_EQ(run("exclude"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{1, 1, 1, 1}));
  run("all");
  EXPECT_EQ(run("all \\x1"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 1, 1, 1}));
}

TEST(ScopeCommands, SelectSetsAddsAndCaps) {
  fresh_file({"a", "b", "c"});
  EXPECT_EQ(run("select 5"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{5, 0, 0}));
  EXPECT_EQ(run("select +2 all"), 0);  // the hidden line 0 is skipped under SCOPE DISPLAY
  EXPECT_EQ(levels(), (std::vector<int32_t>{5, 2, 2}));
  run("scope all");
  EXPECT_EQ(run("select +2 all"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{7, 4, 4}));
  EXPECT_EQ(run("select 2 all"), 0);
  EXPECT_EQ(run("select +0 all"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{2, 2, 2}));
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("select -3 all"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 0, 0}));
  EXPECT_EQ(run("select 2147483647 all"), 0);
  EXPECT_EQ(run("select +1 all"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0x7fffffff, 0x7fffffff, 0x7fffffff}));
  EXPECT_EQ(run("select"), 5);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  EXPECT_EQ(run("select x"), 5);
}

TEST(ColumnTargets, ClocateFormsAndStream) {
  fresh_file({"abcdef abc", "xyz abc", "end"});
  xf_ring.file->column = 0;
  EXPECT_EQ(run("clocate :5"), 0);
  EXPECT_EQ(xf_ring.file->column, 4);
  EXPECT_EQ(run("clocate -2"), 0);
  EXPECT_EQ(xf_ring.file->column, 2);
  EXPECT_EQ(run("clocate 3"), 0);
  EXPECT_EQ(xf_ring.file->column, 5);
  EXPECT_EQ(run("clocate -9"), 0);  // never before the position before column 1
  EXPECT_EQ(xf_ring.file->column, -1);
  EXPECT_EQ(run("clocate /abc/"), 0);
  EXPECT_EQ(xf_ring.file->column, 0);
  EXPECT_EQ(run("clocate /abc/"), 0);
  EXPECT_EQ(xf_ring.file->column, 7);
  EXPECT_EQ(run("clocate /abc/"), 0);  // on to the next line
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(xf_ring.file->column, 4);
  EXPECT_EQ(run("clocate -/y/"), 0);
  EXPECT_EQ(xf_ring.file->column, 1);
  EXPECT_EQ(run("clocate /zz/"), 1);
  EXPECT_EQ(last_msg(), "..... Not found");
  EXPECT_EQ(run("clocate *"), 0);
  EXPECT_EQ(xf_ring.file->column, 0x7ffffffd);
  EXPECT_EQ(run("clocate"), 1);
  EXPECT_EQ(run("clocate ?"), 5);
}

TEST(ColumnTargets, CdeleteUpToTheTarget) {
  fresh_file({"abcdef", "one", "two", "three"});
  xf_ring.file->column = 1;
  EXPECT_EQ(run("cdelete"), 0);
  EXPECT_EQ(xf_ring.file->line(0), "acdef");
  EXPECT_EQ(run("cdelete :4"), 0);
  EXPECT_EQ(xf_ring.file->line(0), "aef");
  EXPECT_EQ(run("cdelete -1"), 1);  // the target must lie after the pointer
  EXPECT_EQ(last_msg(), "..... Not found");
  EXPECT_EQ(run("cdelete /re/"), 0);  // over several lines
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a", "ree"}));
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(xf_ring.file->column, 1);
}

TEST(ScopeCommands, ArbitraryCharactersInItems) {
  fresh_file({"a1b", "ab", "b1a"});
  run("arbchar on $");
  EXPECT_EQ(run("all /a$b/"), 0);
  EXPECT_EQ(levels(), (std::vector<int32_t>{0, 0, 1}));
  run("all");
  EXPECT_EQ(run("all /$/"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid arbitrary string");
  run("arbchar off");
}
