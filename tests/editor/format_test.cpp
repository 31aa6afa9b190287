// MARgins, FORMAT, FLOW, CEnter, LEFTAdjust and RIGHTAdjust.
#include <gtest/gtest.h>

#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

lines now() { return lines_of(*xf_ring.file); }

}  // namespace

TEST(Format, MarginsAndFormatSettings) {
  fresh_file({"a"});
  cmd("margins");
  EXPECT_EQ(last_msg(), "1 72 +0");
  cmd("margins 5 60 8");
  cmd("margins");
  EXPECT_EQ(last_msg(), "5 60 8");
  cmd("margins 5 60 -2");
  cmd("margins");
  EXPECT_EQ(last_msg(), "5 60 -2");
  EXPECT_EQ(cmd("margins 9 3"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("margins 1 *"), 1);
  EXPECT_EQ(last_msg(), "..... Set truncation column first");
  cmd("format");
  EXPECT_EQ(last_msg(), "NOJUSTIFY BLANK DOUBLE");
  cmd("format j dote s");
  cmd("format");
  EXPECT_EQ(last_msg(), "JUSTIFY DOTEXTENDED SINGLE");
  EXPECT_EQ(cmd("format dot d"), 1) << "d is too short for dot and double";
  cmd("format");
  EXPECT_EQ(last_msg(), "JUSTIFY DOTEXTENDED SINGLE") << "a fault changes nothing";
}

TEST(Format, FlowFillsBetweenTheMargins) {
  fresh_file({"one two", "three four five six", "", "seven"});
  cmd("margins 1 12");
  cmd("flow");
  EXPECT_EQ(now(), (lines{"one two", "three four", "five six", "", "seven"}));
  EXPECT_EQ(xf_ring.file->alt_save, 1);
  cmd("undo");
  EXPECT_EQ(now(), (lines{"one two", "three four five six", "", "seven"}));
}

TEST(Format, SentenceEndsAndDoubleSpacing) {
  fresh_file({"It is 3.5 now. Next one. and e.g. Fine"});
  cmd("flow");
  EXPECT_EQ(now(), (lines{"It is 3.5 now.  Next one. and e.g.  Fine"}));
  fresh_file({"It is 3.5 now. Next one."});
  cmd("format single");
  cmd("flow");
  EXPECT_EQ(now(), (lines{"It is 3.5 now. Next one."}));
}

TEST(Format, LongWordsAndPunctuationAtTheBreak) {
  fresh_file({"ab abcdefghijklmnop cd"});
  cmd("margins 1 8");
  cmd("flow");
  EXPECT_EQ(now(), (lines{"ab", "abcdefghijklmnop", "cd"})) << "a long word stands alone past the margin";
  fresh_file({"aaa bbb ccc ."});
  cmd("margins 1 11");
  cmd("flow");
  EXPECT_EQ(now(), (lines{"aaa bbb", "ccc ."})) << "no line starts with a stop: the word before comes down";
}

TEST(Format, JustifyAndParagraphIndent) {
  fresh_file({"aa bb cc dd ee ff"});
  cmd("margins 3 12 1");
  cmd("format justify single");
  cmd("flow");
  // The first line starts at column 1 and is 12 wide: one blank short, given to the first gap.
  EXPECT_EQ(now(), (lines{"aa  bb cc dd", "  ee ff"}));
}

TEST(Format, FlowAllAndATarget) {
  fresh_file({"a b", "c", "", "d e", "f", "", "g", "h"});
  cmd("flow all");
  EXPECT_EQ(now(), (lines{"a b c", "", "d e f", "", "g h"}));
  fresh_file({"a", "b", "", "c", "d", "", "e", "f"});
  cmd("flow 3");
  EXPECT_EQ(now(), (lines{"a b", "", "c", "d", "", "e", "f"})) << "the range holds the first paragraph only";
  fresh_file({"   ", ""});
  cmd("flow");
  EXPECT_EQ(now(), (lines{"   ", ""})) << "no paragraph after blank lines: nothing changes";
}

TEST(Format, DotParagraphsEndAtAStop) {
  fresh_file({"one two.", "three four", "five."});
  cmd("format dot");
  cmd("margins 1 40");
  xf_current_line() = 1;
  cmd("flow");
  EXPECT_EQ(now(), (lines{"one two.", "three four five."}));
}

TEST(Format, CenterAndAdjust) {
  fresh_file({"  abc  ", "abcdefghijkl", "   ", "xy"});
  cmd("margins 3 10");
  cmd("center all");
  EXPECT_EQ(now(), (lines{"    abc", "abcdefghijkl", " ", "     xy"})) << "a longer text starts left of the band";
  EXPECT_EQ(xf_ring.file->alt_save, 1) << "one change for all the lines";
  cmd("rightadjust all");
  EXPECT_EQ(now(), (lines{"       abc", "abcdefghijkl", " ", "        xy"}));
  cmd("leftadjust 2");
  EXPECT_EQ(now()[0], "  abc");
  EXPECT_EQ(now()[1], "  abcdefghijkl");
  EXPECT_EQ(cmd("center sel"), 1);
  EXPECT_EQ(last_msg(), "..... No current selection");
}
