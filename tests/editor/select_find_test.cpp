// S_Find and C_Find in batch: the selected text found again and again with wrap, upward and as a word; the
// remembered string; the clipboard's lines as a linear run or a block; and the faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/paste.h"
#include "editor/select.h"
#include "editor/target.h"
#include "os/os_clipboard.h"
#include "tests/editor/test_support.h"

namespace {

class select_find_test : public ::testing::Test {
 protected:
  void SetUp() override { os_clip_force(OS_CLIP_NONE); }
  void TearDown() override {
    os_clip_force(-1);
    xf_state_reset();
    xf_paste_reset();
  }
  // Where the selection stands: "line:first-last".
  static std::string where() {
    const xf_selection& s = xf_sel.sel;
    if (!xf_sel_active()) return "none";
    return std::to_string(s.first_line) + ":" + std::to_string(s.first_column) + "-" +
           (s.last_line != s.first_line ? std::to_string(s.last_line) + ":" : "") + std::to_string(s.last_column);
  }
  // Another program's text on the clipboard (as a terminal's paste makes it known).
  static void clipboard(const std::string& text) {
    xf_paste.clip = text;
    xf_paste.have_clip = true;
  }
};

TEST_F(select_find_test, the_selection_is_found_again_with_wrap) {
  fresh_file({"foo bar", "xfoo", "bar foo", "food"});
  cmd("s_set l n 1 1 1 3");
  EXPECT_EQ(cmd("s_find"), 0);
  EXPECT_EQ(where(), "2:2-4");
  EXPECT_EQ(cur(), 1);  // the view follows
  cmd("s_find");
  EXPECT_EQ(where(), "3:5-7");
  cmd("s_find");
  EXPECT_EQ(where(), "4:1-3");
  cmd("s_find");
  EXPECT_EQ(where(), "1:1-3");  // round the end of the file
  cmd("s_find up");
  EXPECT_EQ(where(), "4:1-3");
  cmd("s_find u");
  EXPECT_EQ(where(), "3:5-7");
  // As a word, "xfoo" and "food" don't count.
  cmd("s_find word");
  EXPECT_EQ(where(), "1:1-3");
  cmd("s_find w");
  EXPECT_EQ(where(), "3:5-7");
  EXPECT_EQ(xf_sel.shelf.find_memory, "\\foo/");
  // Case follows the file's CASE setting.
  fresh_file({"abc", "ABC"});
  cmd("s_set l n 1 1 1 3");
  xf_ring.file->case_mode = 0;  // MIXED IGNORE
  cmd("s_find");
  EXPECT_EQ(where(), "2:1-3");
  xf_ring.file->case_mode = 1;  // the selection holds "ABC" now, and "abc" is no match for it
  cmd("s_find");
  EXPECT_EQ(where(), "2:1-3");
  EXPECT_EQ(cmd("s_find sideways"), 1);
}

TEST_F(select_find_test, without_a_selection_the_clipboard_then_the_memory) {
  fresh_file({"one two", "two one", "three"});
  clipboard("two\n");
  EXPECT_EQ(cmd("s_find"), 0);
  EXPECT_EQ(where(), "1:5-7");
  cmd("s_set off");
  cmd("s_find");  // the clipboard's line was taken once: now the remembered string
  EXPECT_EQ(where(), "1:5-7");
  cmd("s_find");
  EXPECT_EQ(where(), "2:1-3");
  cmd("s_set off");
  xf_sel.shelf.find_memory = "/zzz/";
  xf_search.varblank = xf_search.span_on = 1;
  EXPECT_EQ(cmd("s_find"), 2);
  EXPECT_EQ(last_msg(), "..... Target Not found");
  EXPECT_EQ(where(), "none");
  // VARblank and SPAN are left as they were.
  EXPECT_EQ(xf_search.varblank, 1);
  EXPECT_EQ(xf_search.span_on, 1);
}

TEST_F(select_find_test, clipboard_lines_as_a_run_or_a_block) {
  fresh_file({"int a;", "int main() {", "  return 0;", "}", "x main() {", "  return 0;", "}"});
  clipboard("main() {\r\n  return 0;\r\n}");
  EXPECT_EQ(cmd("c_find"), 0);
  EXPECT_EQ(where(), "2:5-4:1");
  EXPECT_EQ(cur(), 1);
  cmd("c_find");
  EXPECT_EQ(where(), "5:3-7:1");
  cmd("c_find");
  EXPECT_EQ(where(), "2:5-4:1");
  cmd("c_find up");
  EXPECT_EQ(where(), "5:3-7:1");
  // The first line matches a line's end, the last a line's start.
  clipboard("a;\nint main");
  cmd("s_set off");
  cmd("locate :1");
  cmd("c_find");
  EXPECT_EQ(where(), "1:5-2:8");
  clipboard("nothing\nlike this");
  queued_messages().clear();
  EXPECT_EQ(cmd("c_find"), 1);
  EXPECT_EQ(last_msg(), "");
  // A block: the same columns of successive lines, padded.
  fresh_file({"ab12cd", "ef34gh", "..12..", "..34"});
  cmd("s_set r n 1 3 2 4");
  cmd("s_copy");
  EXPECT_EQ(cmd("c_find"), 0);
  EXPECT_EQ(where(), "3:3-4:4");
  EXPECT_EQ(xf_sel.sel.kind, XS_RECT);
  cmd("c_find");
  EXPECT_EQ(where(), "1:3-2:4");
  // A multi-line selection searches for its own lines.
  cmd("s_find");
  EXPECT_EQ(where(), "3:3-4:4");
}

TEST_F(select_find_test, no_clipboard_text) {
  fresh_file({"a"});
  EXPECT_EQ(cmd("c_find"), 1);
  EXPECT_EQ(last_msg(), "no data in clipboard");
  EXPECT_EQ(cmd("s_find"), 1);
}

}  // namespace
