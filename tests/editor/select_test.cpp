// The selection commands in batch: S_Set's forms and faults, copying to the shelf (linear, line ends, blocks),
// cutting, pasting from the shelf and the clipboard with the ownership rule, case folding, shifting, the
// cancelling of a selection by a change or a close, SELECTAll, and the keyboard's C_STARTS/C_ENDS family.
#include "editor/select.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "editor/input.h"
#include "editor/paste.h"
#include "os/os_clipboard.h"
#include "tests/editor/test_support.h"

namespace {

using lines = std::vector<std::string>;

class select_test : public ::testing::Test {
 protected:
  void SetUp() override { os_clip_force(OS_CLIP_NONE); }
  void TearDown() override {
    os_clip_force(-1);
    xf_state_reset();
    xf_paste_reset();
  }
  // The cursor on a 0-based line and column of the current file, as a read would have noted it.
  static void cursor_at(int32_t line, int32_t column) {
    xf_place p;
    p.kind = XP_LINE;
    p.view = 0;
    p.line = line;
    p.column = column;
    xf_set_cursor_place(p);
  }
  static const xf_selection& sel() { return xf_sel.sel; }
};

TEST_F(select_test, s_set_forms_and_faults) {
  fresh_file({"alpha", "beta gamma", "delta"});
  EXPECT_EQ(cmd("s_set l n 2 3 2 *"), 0);
  ASSERT_TRUE(xf_sel_active());
  EXPECT_EQ(sel().kind, XS_LINEAR);
  EXPECT_EQ(sel().first_line, 2);
  EXPECT_EQ(sel().first_column, 3);
  EXPECT_EQ(sel().last_column, -1);
  EXPECT_EQ(xf_sel_text(), "ta gamma");  // from column 3 to the end of line 2
  EXPECT_EQ(cmd("s_set rectangular pending 1 2 3 4"), 0);
  EXPECT_EQ(sel().kind, XS_RECT_PENDING);
  EXPECT_EQ(cmd("s_set a"), 0);
  EXPECT_EQ(sel().first_line, 1);
  EXPECT_EQ(sel().last_line, 3);
  EXPECT_EQ(cmd("s_set o"), 0);
  EXPECT_FALSE(xf_sel_active());
  for (const char* bad : {"s_set l n 0 1 1 1", "s_set l n 1 1 4 1", "s_set x n 1 1 1 1", "s_set l q 1 1 1 1",
                          "s_set l n 1 1 1", "s_set l n 1 a 1 1", "s_set", "s_set l n 2 5 1 1"}) {
    queued_messages().clear();
    EXPECT_EQ(cmd(bad), 1) << bad;
    EXPECT_EQ(last_msg(), "..... Invalid parameters") << bad;
    EXPECT_FALSE(xf_sel_active()) << bad;
  }
}

TEST_F(select_test, copy_takes_linear_pieces_and_line_ends) {
  fresh_file({"alpha", "beta gamma", "delta", "omega"});
  cmd("s_set l n 1 3 3 2");
  EXPECT_EQ(cmd("s_copy"), 0);
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"pha", "beta gamma", "de"}));
  EXPECT_FALSE(xf_sel.shelf.line_end);
  EXPECT_FALSE(xf_sel.shelf.rectangular);
  EXPECT_EQ(xf_shelf_text(), "pha\nbeta gamma\nde");
  EXPECT_TRUE(xf_sel.shelf.owner);
  // To the line's end: the line end comes too.
  cmd("s_set l n 2 6 3 *");
  cmd("s_copy");
  EXPECT_EQ(xf_shelf_text(), "gamma\ndelta\n");
  // One line: the part between the columns.
  cmd("s_set l n 2 2 2 4");
  cmd("s_copy");
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"eta"}));
  // A block: the same columns of each line, short lines give short pieces.
  cmd("s_set r n 1 4 3 6");
  cmd("s_copy");
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"ha", "a g", "ta"}));
  EXPECT_TRUE(xf_sel.shelf.rectangular);
  // No selection: nothing happens, and what was offered stays.
  cmd("s_set off");
  EXPECT_EQ(cmd("s_copy"), 0);
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"ha", "a g", "ta"}));
  // Text as the shelf's line, replaced or appended.
  cmd("s_copy r one two");
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"one two"}));
  EXPECT_FALSE(xf_sel.shelf.rectangular);
  cmd("s_copy append three");
  EXPECT_EQ(xf_shelf_text(), "one two\nthree");
  EXPECT_EQ(cmd("s_copy z x"), 1);
}

TEST_F(select_test, clipboard_text_becomes_lines) {
  xf_shelf_from_text(std::string("a\r\nb\rc\nd\0e\x1a" "after", 12), false);
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"a", "b\rc", "de"}));
  EXPECT_FALSE(xf_sel.shelf.line_end);
  xf_shelf_from_text("x\r\ny\r\n", true);
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"x", "y"}));
  EXPECT_TRUE(xf_sel.shelf.line_end);
  EXPECT_TRUE(xf_sel.shelf.rectangular);
  EXPECT_EQ(xf_shelf_text(), "x\ny\n");
}

TEST_F(select_test, cut_deletes_in_one_step_and_ends_the_selection) {
  fresh_file({"one", "two", "three", "four", "five"});
  cmd("s_set l n 2 1 3 *");  // whole lines 2 and 3
  int32_t alt = xf_ring.file->alt_save;
  EXPECT_EQ(cmd("s_cut"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"one", "four", "five"}));  // no blank line left behind
  EXPECT_EQ(xf_ring.file->alt_save, alt + 1);
  EXPECT_FALSE(xf_sel_active());
  EXPECT_EQ(xf_shelf_text(), "two\nthree\n");
  cmd("undo");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"one", "two", "three", "four", "five"}));
  // Across lines: the first line's head joins the last line's tail.
  cmd("s_set l n 1 2 3 3");
  cmd("s_cut");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"oee", "four", "five"}));
  EXPECT_EQ(xf_shelf_text(), "ne\ntwo\nthr");
  // Within a line.
  cmd("s_set l n 2 2 2 3");
  cmd("s_cut");
  EXPECT_EQ(xf_ring.file->line(1), "fr");
  // A first column of 0 takes the first line whole; the last line keeps what follows the last column.
  cmd("s_set l n 1 0 2 1");
  cmd("s_cut");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"r", "five"}));
  // A block: the columns of each line.
  fresh_file({"abcdef", "ghijkl", "mn"});
  cmd("s_set r n 1 2 3 4");
  cmd("s_cut");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"aef", "gkl", "m"}));
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"bcd", "hij", "n"}));
  // Nothing selected, or a read-only file.
  EXPECT_EQ(cmd("s_cut"), 1);
  EXPECT_EQ(last_msg(), "..... No current selection");
  cmd("s_set a");
  xf_ring.file->read_write = 0;
  EXPECT_EQ(cmd("s_cut"), 1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"aef", "gkl", "m"}));
}

TEST_F(select_test, paste_from_the_shelf_linear_and_block) {
  fresh_file({"0123456789", "abcdefghij", "ABC"});
  cmd("s_set l n 1 3 1 5");
  cmd("s_copy");
  EXPECT_EQ(cmd("s_paste i 2 2"), 0);
  EXPECT_EQ(xf_ring.file->line(1), "a234bcdefghij");
  EXPECT_EQ(cmd("s_paste o 2 1"), 0);
  EXPECT_EQ(xf_ring.file->line(1), "2344bcdefghij");
  // A shelf ending with a line end makes the rest of the line a line of its own.
  cmd("s_copy r xy");
  xf_sel.shelf.line_end = true;
  cmd("s_paste i 3 2");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"0123456789", "2344bcdefghij", "Axy", "BC"}));
  // A block keeps its columns; short lines are padded and new lines added at the end.
  fresh_file({"abcdef", "ghijkl", "mnopqr"});
  cmd("s_set r n 1 2 2 3");
  cmd("s_copy");
  EXPECT_EQ(cmd("s_paste i 2 5"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abcdef", "ghijbckl", "mnophiqr"}));
  cmd("s_paste o 3 10");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abcdef", "ghijbckl", "mnophiqr bc", "         hi"}));
  // Faults of the place.
  EXPECT_EQ(cmd("s_paste 99999 1"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid line/column specification.");
  EXPECT_EQ(cmd("s_paste 1 0"), 5);
  EXPECT_EQ(cmd("s_paste 1"), 5);
  EXPECT_EQ(cmd("s_paste q"), 1);
}

TEST_F(select_test, paste_follows_the_clipboard_owner) {
  fresh_file({"abc", "def"});
  // Nothing anywhere yet.
  EXPECT_NE(cmd("s_paste i 1 1"), 0);
  EXPECT_EQ(last_msg(), "..... The Clipboard is empty");
  // Our own block, still on the clipboard: pasted as a block.
  cmd("s_set r n 1 1 2 1");
  cmd("s_copy");
  cmd("s_paste i 1 3");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"abac", "dedf"}));
  // Another program's text arrived (the terminal's paste): it replaces the shelf, as lines.
  xf_paste.clip = "X\r\nY";
  xf_paste.have_clip = true;
  cmd("s_paste i 1 1");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"X", "Yabac", "dedf"}));
  EXPECT_FALSE(xf_sel.shelf.rectangular);
  EXPECT_FALSE(xf_sel.shelf.owner);
  // p: the selection is copied first.
  cmd("s_set l n 3 1 3 2");
  cmd("s_paste p i 1 2");
  EXPECT_EQ(xf_ring.file->line(0), "Xde");
  // CASE upper does not change what is pasted.
  xf_ring.file->case_mode = 2;
  cmd("s_copy r low");
  cmd("s_paste i 1 1");
  EXPECT_EQ(xf_ring.file->line(0), "lowXde");
  EXPECT_EQ(xf_ring.file->case_mode, 2);
}

TEST_F(select_test, fold_and_shift_the_selected_text) {
  fresh_file({"Hello World", "second Line", "Third"});
  cmd("s_set l n 1 7 2 6");
  int32_t alt = xf_ring.file->alt_save;
  EXPECT_EQ(cmd("s_upper"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"Hello WORLD", "SECOND Line", "Third"}));
  EXPECT_EQ(xf_ring.file->alt_save, alt + 1);
  EXPECT_FALSE(xf_sel_active());
  cmd("s_set r n 1 1 3 2");
  cmd("s_lower");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"hello WORLD", "seCOND Line", "third"}));
  EXPECT_EQ(cmd("s_lower"), 1);
  EXPECT_EQ(last_msg(), "..... No current selection");
  // Shifting at the selection's first column; the selection stays.
  cmd("s_set l n 1 3 2 1");
  EXPECT_EQ(cmd("s_rshift 2"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"he  llo WORLD", "se  COND Line", "third"}));
  EXPECT_TRUE(xf_sel_active());
  EXPECT_EQ(cmd("s_lshift"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"he llo WORLD", "se COND Line", "third"}));
  EXPECT_EQ(cmd("s_lshift x"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
}

TEST_F(select_test, a_change_undo_or_close_cancels_the_selection) {
  fresh_file({"one", "two", "three"});
  cmd("s_set l n 1 1 2 2");
  cmd("locate 1");  // moving about keeps it
  EXPECT_TRUE(xf_sel_active());
  cmd("change /two/2/ *");
  EXPECT_FALSE(xf_sel_active());
  cmd("s_set l n 1 1 2 2");
  cmd("undo");
  EXPECT_FALSE(xf_sel_active());
  // A save that frees the undo records changes no line: the selection stays.
  cmd("s_set l n 1 1 2 2");
  xf_undo_clear(*xf_ring.file);
  EXPECT_TRUE(xf_sel_active());
  cmd("input new");
  EXPECT_FALSE(xf_sel_active());
  // A selection in one file survives the closing of another, and goes with its own file.
  file_with({"other"}, "/tmp/other.txt");
  cmd("s_set a");
  ASSERT_TRUE(xf_sel_active());
  const int32_t other = xf_ring.file_no;
  xf_set_file(0);
  xf_close_file();
  ASSERT_TRUE(xf_sel_active());
  EXPECT_EQ(xf_sel.sel.file, other - 1);
  xf_close_file();
  EXPECT_FALSE(xf_sel_active());
}

TEST_F(select_test, selectall_sets_levels_in_turn) {
  fresh_file({"a", "b", "c", "d", "e"});
  EXPECT_EQ(cmd("selectall 0 1"), 0);
  EXPECT_EQ(std::vector<int32_t>(xf_ring.file->select.begin(), xf_ring.file->select.begin() + 5),
            (std::vector<int32_t>{0, 1, 0, 1, 0}));
  cmd("selectall 7");
  EXPECT_EQ(xf_ring.file->select[4], 7);
  EXPECT_EQ(cmd("selectall"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("selectall 1 x"), 5);
  EXPECT_EQ(xf_ring.file->select[0], 7);
}

TEST_F(select_test, keyboard_starts_extends_and_ends) {
  fresh_file({"abcdef", "ghijkl", "mnopqr"});
  cursor_at(0, 1);
  EXPECT_EQ(cmd("c_starts"), 0);
  EXPECT_EQ(sel().kind, XS_LINEAR_PENDING);
  cursor_at(1, 3);
  cmd("c_ends");
  EXPECT_EQ(sel().kind, XS_LINEAR_PENDING);
  EXPECT_EQ(sel().first_line, 1);
  EXPECT_EQ(sel().first_column, 2);
  EXPECT_EQ(sel().last_line, 2);
  EXPECT_EQ(sel().last_column, 4);
  cmd("c_ends");  // the moving end is at the cursor already: the selection ends there
  EXPECT_EQ(sel().kind, XS_LINEAR);
  // Backwards of the anchor, the other way round.
  cursor_at(0, 0);
  cmd("c_ends");
  EXPECT_EQ(sel().first_column, 1);
  EXPECT_EQ(sel().last_line, 1);
  EXPECT_EQ(sel().last_column, 2);
  // By whole lines; it never ends.
  cursor_at(2, 2);
  cmd("c_endsall");
  cmd("c_endsall");
  EXPECT_EQ(sel().first_column, 1);
  EXPECT_EQ(sel().last_line, 3);
  EXPECT_EQ(sel().last_column, -1);
  EXPECT_EQ(sel().kind, XS_LINEAR_PENDING);
  // A block: two presses at one place start it, then end it as kind 2.
  cmd("s_set off");
  cursor_at(0, 4);
  cmd("c_endsr");
  cursor_at(2, 1);
  cmd("c_endsr");
  EXPECT_EQ(sel().kind, XS_RECT_PENDING);
  EXPECT_EQ(sel().first_column, 2);
  EXPECT_EQ(sel().last_column, 5);
  cmd("c_endsr");
  EXPECT_EQ(sel().kind, XS_RECT);
  cmd("s_copy");
  EXPECT_EQ(xf_sel.shelf.lines, (lines{"bcde", "hijk", "nopq"}));
  // Not on a file line.
  xf_set_cursor_place(xf_place{});
  EXPECT_EQ(cmd("c_starts"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid cursor position");
}

TEST_F(select_test, xed_opens_the_selected_name_and_prsh_keeps_the_shelf) {
  const std::string name = "/tmp/tolva-select-xed-" + std::to_string(getpid()) + ".txt";
  {
    std::FILE* f = std::fopen(name.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs("inside\n", f);
    std::fclose(f);
  }
  fresh_file({"see " + name + " here", "two"});
  EXPECT_EQ(cmd("s_xed"), 1);
  EXPECT_EQ(last_msg(), "..... No current selection");
  cmd("s_set l n 1 5 1 " + std::to_string(4 + name.size()));
  cmd("s_copy r kept");
  EXPECT_EQ(cmd("s_prsh"), 0);
  EXPECT_EQ(xf_shelf_text(), "kept");
  EXPECT_TRUE(xf_sel_active());
  EXPECT_EQ(cmd("s_xed"), 0);
  EXPECT_FALSE(xf_sel_active());
  ASSERT_EQ(xf_file_count(), 2);
  EXPECT_EQ(xf_ring.file->name, name);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"inside"}));
  std::remove(name.c_str());
}

}  // namespace
