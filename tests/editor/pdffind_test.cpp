// The ISPF personality: FIND and CHANGE operands, directions, kinds, pictures, column keeping, RFIND,
// RCHANGE, EXCLUDE and PDFLocate.
#include <gtest/gtest.h>

#include "editor/pdffind.h"
#include "editor/regex.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

int32_t run(const std::string& cmd) { return xfcom2(cmd, "/tmp"); }
int32_t cursor_col() { return xf_ring.file->cursor.column; }

void ispf(const lines& l) {
  fresh_editor();
  xf_pdf_reset();
  file_with(l);
  xf_current_line() = 0;
  run("mode command ispf");
}

}  // namespace

TEST(IspfFind, KeywordsOnlyWhenMoreTokensThanStrings) {
  ispf({"top", "find next here", "abc", "next abc"});
  EXPECT_EQ(run("find next"), 0);  // looks for the text "next"
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(cursor_col(), 6);
  EXPECT_EQ(run("find next abc"), 0);  // abc in the next direction
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("find next next"), 12);
  EXPECT_EQ(last_msg(), "..... Use quotes for the search string");
  EXPECT_EQ(run("find zzz"), 4);
  EXPECT_EQ(last_msg(), ".... String \"zzz\" not found.");
  EXPECT_EQ(run("find a b c d e f g"), 12);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(run("find ''"), 12);
}

TEST(IspfFind, DirectionsAllAndRepeat) {
  ispf({"abc", "x abc abc", "abc"});
  EXPECT_EQ(run("find abc last"), 0);
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("find abc prev"), 0);  // from the right of the line above
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(cursor_col(), 7);
  EXPECT_EQ(run("find abc first"), 0);
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(run("rfind"), 0);  // one column on from the cursor
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(cursor_col(), 3);
  EXPECT_EQ(run("rfind"), 0);
  EXPECT_EQ(cursor_col(), 7);
  EXPECT_EQ(run("find abc all"), 0);
  EXPECT_EQ(last_msg(), "..... 4 occurrences found.");
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(run("find * all"), 0);  // the last string
  EXPECT_EQ(last_msg(), "..... 4 occurrences found.");
}

TEST(IspfFind, StringFormsKindsAndColumns) {
  ispf({"ABC", "abc", "xabcx", "abcde", "12ab"});
  EXPECT_EQ(run("find c'abc' first"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("find 'abc'c first"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("find x'6263' first"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("find x'6' first"), 6);
  EXPECT_EQ(last_msg(), "..... Invalid hexadecimal string");
  EXPECT_EQ(run("find p'##' all"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(run("find abc prefix all"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(run("find abc word all"), 0);
  EXPECT_EQ(last_msg(), "..... 2 occurrences found.");
  EXPECT_EQ(run("find abc all 2 4"), 0);  // must fit in columns 2 to 4
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("find abc all 2 4 5"), 12);
}

TEST(IspfFind, FiltersLabelsAndExclude) {
  ispf({"a1", "a2", "a3", "a4"});
  run("point .one");
  xf_current_line() = 2;
  run("point .three");
  EXPECT_EQ(run("find a all .one .three"), 0);
  EXPECT_EQ(last_msg(), "..... 3 occurrences found.");
  EXPECT_EQ(run("find a all .one .nope"), 7);
  EXPECT_EQ(last_msg(), "..... Invalid label");
  EXPECT_EQ(run("exclude 2 all"), 0);
  EXPECT_EQ(xf_ring.file->select[1], 1);
  EXPECT_EQ(run("find a x all"), 0);
  EXPECT_EQ(last_msg(), "..... 1 occurrence found.");
  EXPECT_EQ(xf_ring.file->select[1], 0);  // the found line is made visible
  EXPECT_EQ(run("rfind"), 4);
}

TEST(IspfChange, KeepsColumnsAndPictures) {
  ispf({"abc   def"});
  EXPECT_EQ(run("c abc x"), 0);
  EXPECT_EQ(xf_ring.file->line(0), "x     def");
  EXPECT_EQ(last_msg(), "..... 1 occurrence changed");
  ispf({"ab    def", "ab def"});
  EXPECT_EQ(run("c ab wxyz all"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"wxyz  def", "wxyz def"}));
  ispf({"Hello World"});
  EXPECT_EQ(run("c p'@@' p'><' all"), 0);
  EXPECT_EQ(xf_ring.file->line(0), "HeLlo WoRld");  // pairs of letters: upper then lower
  EXPECT_EQ(run("c p'@' p'==' all"), 12);
  EXPECT_EQ(last_msg(), "..... The 2 picture strings must be the same length");
  ispf({"aaa"});
  EXPECT_EQ(run("c a aa all"), 0);  // a pattern that matches its replacement ends
  EXPECT_EQ(xf_ring.file->line(0), "aaaaaa");
}

TEST(IspfChange, RepeatDirectionsAndDispatch) {
  ispf({"k k", "k"});
  EXPECT_EQ(run("rchange"), 1);
  EXPECT_EQ(last_msg(), "..... RCHANGE called before CHANGE");
  EXPECT_EQ(run("rfind"), 1);
  EXPECT_EQ(last_msg(), "..... RFIND called before FIND");
  EXPECT_EQ(run("change k y first"), 0);
  EXPECT_EQ(run("rchange"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"y y", "k"}));
  EXPECT_EQ(run("c k z last"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"y y", "z"}));
  EXPECT_EQ(run("c q z"), 4);
  EXPECT_EQ(last_msg(), ".... String \"q\" not found.");
  // With more tokens than strings "x" is the filter keyword, so the strings are missing.
  EXPECT_EQ(run("c y x all"), 12);
  // The XEDIT forms stay reachable by their own names.
  EXPECT_EQ(run("xedchange/y/w/ *"), 0);
  run("mode command xedit");
  EXPECT_EQ(run("c/w/v/ * *"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"v v", "z"}));
}

TEST(IspfLocate, LabelsNumbersAndKinds) {
  ispf({"a", "b", "c", "d", "e"});
  xf_current_line() = 3;
  run("point .here");
  EXPECT_EQ(run("locate 2"), 0);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("locate .HERE"), 0);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("locate .zf"), 0);
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(run("locate .nope"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid label");
  EXPECT_EQ(run("locate label"), 0);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("locate first"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  xf_ring.file->select[4] = 3;
  EXPECT_EQ(run("locate excluded"), 0);
  EXPECT_EQ(cur(), 4);
  EXPECT_EQ(run("locate prev label"), 0);
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("locate next error"), 1);
  EXPECT_EQ(last_msg(), "..... Not found");
}
