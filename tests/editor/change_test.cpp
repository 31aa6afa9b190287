// The change engine and its commands: counts and occurrences, words, arbitrary characters, regular
// expressions, zones, case, line limits, undo, and the messages and return codes.
#include <gtest/gtest.h>

#include "editor/change.h"
#include "editor/journal.h"
#include "editor/regex.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

int32_t run(const std::string& cmd) { return xfcom2(cmd, "/tmp"); }

}  // namespace

TEST(ChangeXedit, CountsOccurrencesAndMessages) {
  fresh_file({"a a a", "b", "a"});
  EXPECT_EQ(run("c/a/b/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"b b b", "b", "a"}));
  EXPECT_EQ(last_msg(), "..... 3 occurrences changed");
  EXPECT_EQ(run("c/b/x/ 2 1"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"x b b", "x", "a"}));
  EXPECT_EQ(run("c/x/y/ 1 1"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence changed");
  EXPECT_EQ(run("c/zz/y/ *"), 1);
  EXPECT_EQ(last_msg(), "..... String \"zz\" not found");
}

TEST(ChangeXedit, OccurrenceOperandsAndTargets) {
  fresh_file({"a1 a2 a3 a4", "a5 a6 a7 a8", "a9"});
  // Three occurrences from the second, on each of two lines.
  EXPECT_EQ(run("c/a/X/ 2 3 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a1 X2 X3 X4", "a5 X6 X7 X8", "a9"}));
  EXPECT_EQ(cur(), 1);  // the last changed line is current
  fresh_file({"a a a", "a a a"});
  EXPECT_EQ(run("c/a/b/ 1 1 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a b a", "a a a"}));
  fresh_file({"a", "a", "a", "a"});
  xf_current_line() = 1;
  EXPECT_EQ(run("c/a/b/ *"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a", "b", "b", "b"}));
  // From the top-of-file position the first line of the range is line 0.
  fresh_file({"a", "a", "a"});
  xf_current_line() = -1;
  EXPECT_EQ(run("c/a/b/ 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"b", "a", "a"}));
}

TEST(ChangeXedit, BadOperands) {
  fresh_file({"abc", "def"});
  xf_current_line() = 1;
  EXPECT_EQ(run("c/abc"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(run("c/a/b/ 1 1 0"), 1);
  EXPECT_EQ(run("c/a/b/ 1 -1"), 1);
  EXPECT_EQ(run("c/a/b/ -1"), 1);
  EXPECT_EQ(last_msg(), "..... The specified target is before the current line");
  EXPECT_EQ(run("schange/a/b/"), 1);
  EXPECT_EQ(last_msg(), "..... SCHANGE not supported in batch mode.");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abc", "def"}));
}

TEST(ChangeXedit, AllOnALineDoesNotLoopAndEmptyString1Inserts) {
  fresh_file({"aaa"});
  EXPECT_EQ(run("c/a/aa/ * *"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"aaaaaa"}));
  fresh_file({"abc", "xyz"});
  EXPECT_EQ(run("c//x/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"xabc", "xyz"}));
  run("zone 6 *");
  EXPECT_EQ(run("c//-/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"xabc -", "xyz"}));
}

TEST(ChangeXedit, DeletingLeavesASingleBlankAndTrailingBlanksMatchAtTheEnd) {
  fresh_file({"abc", "x abc"});
  EXPECT_EQ(run("c/abc // 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{" ", "x"}));  // KEEPBlanks OFF trims
  fresh_file({"one two", "two one"});
  EXPECT_EQ(run("c/one /1/ 2"), 0);  // "one " matches "one" at the end of the second line
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"1two", "two 1"}));
}

TEST(ChangeXedit, WordsCaseAndZone) {
  fresh_file({"cat catalog cat"});
  EXPECT_EQ(run("cn/cat/dog/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"dog catalog dog"}));
  fresh_file({"Apple apple"});
  run("case mixed ignore crespect");
  EXPECT_EQ(run("c/apple/x/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"Apple x"}));
  run("case mixed respect cignore");
  EXPECT_EQ(run("c/apple/y/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"y x"}));
  fresh_file({"aaaaaa"});
  run("zone 2 4");
  EXPECT_EQ(run("c/a/b/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abbbaa"}));
  fresh_file({"a a a"});
  run("mode change one");
  EXPECT_EQ(run("c/a/b/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"b a a"}));
  run("mode change all");
}

TEST(ChangeXedit, ArbitraryCharacters) {
  fresh_file({"abbbc"});
  run("arbchar on $");
  EXPECT_EQ(run("c/a$c/$x/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"bbbx"}));
  fresh_file({"k=1; j=22;"});
  run("arbchar on $");
  EXPECT_EQ(run("c/=$;/:=$./"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"k:=1. j:=22."}));
  EXPECT_EQ(run("c/a$b/$$/"), 1);
  EXPECT_EQ(last_msg(), "..... String 2 contains more arbitrary characters than string 1.");
  run("arbchar off");
}

TEST(ChangeXedit, RegularExpressions) {
  fresh_file({"x12 y345", "none"});
  EXPECT_EQ(run("rchange/[0-9]+/N/ 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"xN yN", "none"}));
  // With ARBchar ON the arbitrary character in string 2 stands for the matched text.
  fresh_file({"ab12"});
  run("arbchar on @");
  EXPECT_EQ(run("rc/[0-9]+/<@>/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"ab<12>"}));
  run("arbchar off");
  // An empty match changes without looping.
  fresh_file({"abc"});
  EXPECT_EQ(run("rc/x*/-/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"-a-b-c-"}));
  // The legacy grammar reads the same text differently.
  fresh_file({"aa+ aa+"});
  run("regtype legacy");
  EXPECT_EQ(run("rc/a+/X/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"aX aX"}));
  run("regtype ecmascript");
  fresh_file({"aa+ aa+"});
  EXPECT_EQ(run("rc/a+/X/"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"X+ X+"}));
  EXPECT_EQ(run("rc/(a/X/"), 1);
  EXPECT_EQ(last_msg().rfind("..... missing closing parenthesis", 0), 0u) << last_msg();
}

TEST(ChangeXedit, LinesPastTruncAndLreclAreCut) {
  fresh_file({"abc", "abc"});
  run("trunc 5");
  EXPECT_EQ(run("c/b/bbbbbb/ 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abbbb", "abbbb"}));
  xf_current_line() = 0;
  EXPECT_EQ(run("c/bbbb// 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"a", "a"}));
}

TEST(ChangeXedit, UndoTakesBackAWholeChangeInOneStep) {
  lines orig;
  for (int i = 0; i < 500; ++i) orig.push_back("line " + std::to_string(i) + " x");
  fresh_file(orig);
  xf_new_step();
  EXPECT_EQ(run("c/x/yy/ *"), 0);
  EXPECT_EQ(last_msg(), "..... 500 occurrences changed");
  EXPECT_EQ(xf_ring.file->line(499), "line 499 yy");
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(lines_of(*xf_ring.file), orig);
  EXPECT_TRUE(xf_redo());
  EXPECT_EQ(xf_ring.file->line(0), "line 0 yy");
}

TEST(Count, RangesAndMessages) {
  fresh_file({"a b", "aa", "b", "a"});
  EXPECT_EQ(run("count /a/"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(run("count /a/ *"), 0);
  EXPECT_EQ(last_msg(), "..... 4 occurrences found.");
  EXPECT_EQ(cur(), 3);  // the last line with a hit
  EXPECT_EQ(run("count /a/ -2"), 0);  // from the line after the target to the current line
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  xf_current_line() = 2;
  EXPECT_EQ(run("count /a/"), 0);
  EXPECT_EQ(last_msg(), "..... 0 occurrence found.");
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("count \\a\\ *"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(run("count"), 1);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  EXPECT_EQ(run("count //"), 5);
  EXPECT_EQ(last_msg(), "..... Empty String");
}

TEST(ChangeKeys, SckeysSetsAndShows) {
  fresh_file({"a"});
  EXPECT_EQ(run("sckeys"), 0);
  EXPECT_EQ(last_msg(), "..... KEY_QUIT = F1   KEY_DO = F12 ");
  EXPECT_EQ(run("sckeys f3 5"), 0);
  EXPECT_EQ(xf_sckeys.prompt, "F3 : Quit    Return : Skipp     F5 : Do     ^F5 : Stop asking");
  EXPECT_EQ(xf_sckeys.found, "..... String found; F5 key set for change");
  EXPECT_EQ(run("sckeys 3 13"), 1);  // past the function keys
  EXPECT_EQ(run("sckeys 3"), 1);
  run("sckeys");
  EXPECT_EQ(last_msg(), "..... KEY_QUIT = F3   KEY_DO = F5 ");
  run("sckeys 1 12");
}
