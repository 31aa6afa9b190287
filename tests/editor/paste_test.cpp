// Pasting on the test host and by S_Paste: text typed at the cursor, lines inserted where the cursor stands and
// taken back by one UNDo, pastes below the end and on the top-of-file row, a large paste, and S_Paste's faults.
#include "editor/paste.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/command.h"
#include "editor/journal.h"
#include "editor/ring.h"
#include "live_editor.h"

namespace {

using paste_test = live_editor;

// Puts the cursor on a cell, pastes, and ends the read.
void paste_at(live_editor& t, test_host& host, int row, int col, const std::string& text) {
  (void)t;
  host.click(1, row, col);
  host.paste(text);
  host.key(FSK_F1 + 3, FSM_CTRL, true);
}

TEST_F(paste_test, text_without_line_ends_is_typed_by_the_insert_state) {
  start();
  file_with({"hello", "world"});
  xf_current_line() = 0;
  xf_compose();
  paste_at(*this, *host, row_of(0), col_of(2), "abc");  // overwrite mode at start
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"heabc", "world"}));
  EXPECT_EQ(xf_cursor_place().column, 5);
  asfinsert(1);
  xf_compose();
  paste_at(*this, *host, row_of(1), col_of(1), "XYZ");
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"heabc", "wXYZorld"}));
  EXPECT_EQ(xf_cursor_place().line, 1);
  EXPECT_EQ(xf_cursor_place().column, 4);
  // Far behind the end of the text: blanks fill the gap; tabs and other bytes stay as they are.
  xf_compose();
  paste_at(*this, *host, row_of(0), col_of(8), "\tq\x01");
  turn();
  EXPECT_EQ(xf_ring.file->line(0), std::string("heabc   \tq\x01"));
  EXPECT_EQ(xf_paste.clip, "\tq\x01");  // the clipboard's text as this host knows it
}

TEST_F(paste_test, typing_and_a_paste_in_one_read_both_stay) {
  start();
  file_with({"one", "two"});
  xf_current_line() = 0;
  xf_compose();
  host->click(1, row_of(0), col_of(3));
  host->type("!");  // typed in the field, not yet taken in
  host->paste("[p]");
  end_read();
  turn();
  EXPECT_EQ(xf_ring.file->line(0), "one![p]");
}

TEST_F(paste_test, lines_go_in_at_the_cursor_and_one_undo_takes_them_back) {
  start();
  file_with({"hello world", "last"});
  xf_current_line() = 0;
  xf_compose();
  paste_at(*this, *host, row_of(0), col_of(6), "one\ntwo\nthree ");
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file),
            (std::vector<std::string>{"hello one", "two", "three world", "last"}));
  EXPECT_EQ(xf_cursor_place().line, 2);
  EXPECT_EQ(xf_cursor_place().column, 6);
  xfcom1("undo", xf_run.work_dir);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"hello world", "last"}));
  // A text that ends with a line end makes the rest of the line a line of its own; insert mode plays no part.
  xf_compose();
  paste_at(*this, *host, row_of(1), col_of(2), "A\nB\n");
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"hello world", "laA", "B", "st"}));
  EXPECT_EQ(xf_cursor_place().line, 3);
  EXPECT_EQ(xf_cursor_place().column, 0);
  EXPECT_EQ(xf_ring.file->alt_save, 1);  // the undone paste took its count back
}

TEST_F(paste_test, below_the_end_lines_are_made_and_on_the_top_row_a_first_line) {
  start();
  file_with({"a", "b"});
  xf_current_line() = 0;
  xf_compose();
  ASSERT_GE(xf_scr.views[0].below.size(), 3u);
  int below_row = row_of(1) + 3;  // the third empty row below the end: line 5 (index 4)
  paste_at(*this, *host, below_row, col_of(2), "x\ny");
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"a", "b", "", "", "  x", "y"}));
  xfcom1("undo", xf_run.work_dir);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"a", "b"}));
  xf_compose();
  paste_at(*this, *host, row_of(-1), col_of(0), "top\n");
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"top", "", "a", "b"}));
}

TEST_F(paste_test, on_the_command_line_the_text_is_one_command) {
  start();
  file_with({"a"});
  const int cmd_row = [] {
    xf_compose();
    return xf_ring.views[0]->top + xf_scr.views[0].cmd_row - 1;
  }();
  host->click(1, cmd_row, 7);
  host->paste("locate /b/\n");
  end_read();
  turn();
  EXPECT_EQ(xf_run.command_line, "locate /b/");
  EXPECT_EQ(xf_cursor_place().kind, XP_CMD);
  // A paste too long for the command line's two rows is cut there, with the bell.
  int beeps = host->beeps;
  xf_compose();
  host->click(1, cmd_row, 7);
  host->paste(std::string(400, 'z'));
  end_read();
  turn();
  EXPECT_EQ(xf_run.command_line.size(), static_cast<std::size_t>(2 * 80 - 13));
  asrefresh();
  EXPECT_GT(host->beeps, beeps);
}

TEST_F(paste_test, a_megabyte_of_lines_goes_in_whole) {
  start();
  file_with({"head", "tail"});
  xf_current_line() = 0;
  std::string big;
  std::vector<std::string> want = {"head"};
  for (int i = 0; big.size() < (1u << 20); ++i) {
    std::string l = "line " + std::to_string(i) + std::string(static_cast<std::size_t>(i % 97), '.') + "\tend";
    big += l + "\n";
    want.push_back(l);
  }
  want.push_back("tail");
  xf_compose();
  paste_at(*this, *host, row_of(1), col_of(0), big);
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), want);
  // The view follows the cursor behind the text.
  EXPECT_EQ(xf_cursor_place().line, static_cast<int32_t>(want.size()) - 1);
  xf_compose();
  EXPECT_NE(row_of(static_cast<int32_t>(want.size()) - 1), 0);
  xfcom1("undo", xf_run.work_dir);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"head", "tail"}));
}

TEST_F(paste_test, a_megabyte_without_line_ends_makes_one_long_line) {
  start();
  file_with({"<>"});
  xf_current_line() = 0;
  asfinsert(1);
  std::string big;
  for (int i = 0; big.size() < (1u << 20); ++i) big += "w" + std::to_string(i) + (i % 7 ? " " : "\t");
  xf_compose();
  paste_at(*this, *host, row_of(0), col_of(1), big);
  turn();
  ASSERT_EQ(xf_ring.file->size, 1);
  EXPECT_EQ(xf_ring.file->line(0), "<" + big + ">");
  xf_compose();  // the long line is shown cut, and the screen is whole
  EXPECT_EQ(fsstatus(), 0);
}

TEST(s_paste, inserts_or_overlays_the_clipboard_text_at_a_line_and_column) {
  fresh_file({"abcdef", "ghij", "klm"});
  xf_paste_reset();
  xfcom1("s_paste 1 1", "/tmp");
  EXPECT_EQ(last_msg(), "..... The Clipboard is empty");
  xf_paste.clip = "XY\nZ";
  xf_paste.have_clip = true;
  xf_new_step();
  xfcom1("s_paste i 1 3", "/tmp");
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"abXY", "Zcdef", "ghij", "klm"}));
  xf_new_step();
  xfcom1("s_paste o 3 2", "/tmp");  // overlay: over "hij" of line 3, then line 4 from its start
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"abXY", "Zcdef", "gXYj", "Zlm"}));
  xf_new_step();
  xfcom1("s_paste overlay 4 1", "/tmp");  // lines past the end are added
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"abXY", "Zcdef", "gXYj", "XYm", "Z"}));
  xfcom1("undo", "/tmp");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"abXY", "Zcdef", "gXYj", "Zlm"}));
}

TEST(s_paste, bad_operands_and_positions) {
  fresh_file({"one", "two"});
  xf_paste_reset();
  xf_paste.clip = "x";
  xf_paste.have_clip = true;
  const std::pair<const char*, int> faults[] = {
      {"s_paste 9 1", 5}, {"s_paste 1", 5}, {"s_paste 0 1", 5}, {"s_paste 1 0", 5}, {"s_paste 1 2 3", 5},
  };
  for (const auto& [cmd, code] : faults) {
    xfcom1(cmd, "/tmp");
    EXPECT_EQ(last_msg(), "..... Invalid line/column specification.") << cmd;
    EXPECT_EQ(rc, code) << cmd;
  }
  xfcom1("s_paste q", "/tmp");
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(rc, 1);
  xfcom1("s_paste i", "/tmp");  // in batch there is no cursor to paste at
  EXPECT_EQ(last_msg(), "..... Invalid cursor position");
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two"}));
  xfcom1("s_paste p i 2 4", "/tmp");  // with no selection the primary source is the clipboard
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "twox"}));
}

TEST_F(paste_test, s_paste_at_the_cursor_and_on_a_row_that_takes_no_paste) {
  start();
  file_with({"abc"});
  xf_current_line() = 0;
  xf_paste.clip = "--";
  xf_paste.have_clip = true;
  xf_compose();
  host->click(1, row_of(0), col_of(1));
  host->key(FSK_F1 + 3, FSM_CTRL, true);
  turn();
  xfcom1("s_paste i", xf_run.work_dir);
  EXPECT_EQ(xf_ring.file->line(0), "a--bc");
  // A cursor on a protected field (the id row) is no place to paste: the message, and nothing changes.
  xf_place nowhere;
  nowhere.screen_line = 1;
  nowhere.screen_col = 3;
  xf_set_cursor_place(nowhere);
  xfcom1("s_paste", xf_run.work_dir);
  EXPECT_EQ(last_msg(), "..... Invalid cursor position");
  EXPECT_EQ(xf_ring.file->line(0), "a--bc");
}

}  // namespace
