// Selections made with the mouse on the test host, and how the screen shows them: a drag by characters, double
// and triple presses for words and lines, Shift to extend, Meta for a block, Ctrl with button 3 to end, button 2
// to paste the selected text, and typing that changes a line cancelling the selection.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/mouse.h"
#include "editor/select.h"
#include "live_editor.h"
#include "os/os_clipboard.h"

namespace {

class select_live : public live_editor {
 protected:
  void SetUp() override { os_clip_force(OS_CLIP_NONE); }
  void TearDown() override {
    os_clip_force(-1);
    live_editor::TearDown();
  }
  // A file of these lines, the first one current, composed.
  void with(const std::vector<std::string>& lines) {
    start();
    file_with(lines);
    xf_current_line() = 0;
    xf_compose();
  }
  // Which cells of a line's row are shown in reverse: "." plain, "#" reverse, for `n` text columns.
  std::string shown(int32_t line, int n) const {
    std::string h = host->hlt_row(row_of(line));
    std::string out;
    for (int c = 0; c < n; ++c) {
      std::size_t at = static_cast<std::size_t>(col_of(c) - 1);
      out += at < h.size() && h[at] == '2' ? '#' : '.';
    }
    return out;
  }
  static std::string where() {
    const xf_selection& s = xf_sel.sel;
    if (!xf_sel_active()) return "none";
    return std::to_string(s.first_line) + ":" + std::to_string(s.first_column) + "-" + std::to_string(s.last_line) +
           ":" + std::to_string(s.last_column) + " k" + std::to_string(s.kind);
  }
};

TEST_F(select_live, a_drag_selects_by_characters_and_the_screen_shows_it) {
  with({"alpha beta", "gamma delta", "epsilon"});
  host->press(1, row_of(0), col_of(2));
  host->drag(row_of(1), col_of(3));
  host->unpress(1, row_of(1), col_of(3));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:3-2:4 k0");  // finished when the button went up
  EXPECT_EQ(shown(0, 12), "..#########.");  // to the line's end, and its line end as one cell more
  EXPECT_EQ(shown(1, 12), "####........");
  EXPECT_EQ(shown(2, 12), "............");
  end_read();
  turn();  // a composition from scratch draws the same
  EXPECT_EQ(shown(0, 12), "..#########.");
  // Dragging back before the anchor selects the other way round.
  host->press(1, row_of(1), col_of(2));
  host->drag(row_of(0), col_of(8));
  host->unpress(1, row_of(0), col_of(8));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:9-2:3 k0");
  xfcom1("s_copy", xf_run.work_dir);
  EXPECT_EQ(xf_shelf_text(), "ta\ngam");
  // A single press with no drag leaves no selection, and the cursor at the cell.
  host->click(1, row_of(2), col_of(1));
  end_read();
  turn();
  EXPECT_EQ(where(), "none");
  EXPECT_EQ(shown(0, 12), "............");
  EXPECT_EQ(xf_cursor_place().line, 2);
  EXPECT_EQ(xf_cursor_place().column, 1);
}

TEST_F(select_live, double_press_takes_words_and_triple_whole_lines) {
  with({"foo_bar(baz) qux", "second line"});
  host->click(1, row_of(0), col_of(2));
  host->advance(100000);
  host->click(1, row_of(0), col_of(2));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:1-1:7 k0");  // "foo_bar": WORDChars run around the cell; finished as the button went up
  host->advance(100000);
  host->click(1, row_of(0), col_of(2));
  end_read();
  turn();
  EXPECT_EQ(xf_mouse.count, 3);
  EXPECT_EQ(where(), "1:1-1:-1 k0");
  EXPECT_EQ(shown(0, 18), "#################.");
  // A word press on punctuation takes the one character; its drag grows by words.
  host->advance(1000000);
  host->click(1, row_of(1), col_of(9));
  host->advance(100000);
  host->press(1, row_of(0), col_of(7));
  host->advance(100000);
  host->press(1, row_of(0), col_of(7));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:8-1:8 k1");  // the button is still down: pending
}

TEST_F(select_live, shift_extends_and_meta_makes_a_block) {
  with({"abcdefgh", "ijklmnop", "qrstuvwx"});
  host->press(1, row_of(0), col_of(1));
  host->drag(row_of(0), col_of(2));
  host->unpress(1, row_of(0), col_of(2));
  host->click(1, row_of(1), col_of(4), FSM_SHIFT);
  end_read();
  turn();
  EXPECT_EQ(where(), "1:2-2:5 k0");
  // Meta at the press: the drag makes a block.
  host->press(1, row_of(0), col_of(2), FSM_ALT);
  host->drag(row_of(2), col_of(4));
  host->unpress(1, row_of(2), col_of(4));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:3-3:5 k2");
  EXPECT_EQ(shown(1, 8), "..###...");
  xfcom1("s_copy", xf_run.work_dir);
  EXPECT_EQ(xf_sel.shelf.lines, (std::vector<std::string>{"cde", "klm", "stu"}));
  EXPECT_TRUE(xf_sel.shelf.rectangular);
  // Button 3 with Ctrl ends it, and the screen no longer shows it.
  host->click(3, row_of(1), col_of(1), FSM_CTRL);
  end_read();
  turn();
  EXPECT_EQ(where(), "none");
  EXPECT_EQ(shown(1, 8), "........");
}

TEST_F(select_live, button_2_pastes_the_selected_text_and_typing_cancels) {
  with({"one two", "three"});
  xfcom1("s_set l n 1 5 1 7", xf_run.work_dir);
  xfcom1("s_copy r shelf stays", xf_run.work_dir);
  xf_compose();
  host->press(2, row_of(1), col_of(0));  // the paste ends the read
  turn();
  EXPECT_EQ(xf_ring.file->line(1), "twoee");  // over the line's text: the keyboard starts in overwrite mode
  EXPECT_EQ(xf_shelf_text(), "shelf stays");
  // A change of a line in the selection's file ends the selection.
  xfcom1("s_set l n 1 1 1 3", xf_run.work_dir);
  xf_compose();
  host->advance(1000000);
  host->click(1, row_of(1), col_of(0));
  host->type("X");
  end_read();
  turn();
  EXPECT_EQ(xf_ring.file->line(1)[0], 'X');
  EXPECT_EQ(where(), "none");
}

TEST_F(select_live, a_drag_down_the_prefix_area_takes_whole_lines) {
  with({"one", "two", "three", "four"});
  host->press(1, row_of(0), 2);
  host->drag(row_of(2), 3);
  host->unpress(1, row_of(2), 3);
  end_read();
  turn();
  EXPECT_EQ(where(), "1:1-3:-1 k0");
  EXPECT_EQ(shown(1, 5), "####.");
  EXPECT_EQ(shown(3, 5), ".....");
  xfcom1("s_cut", xf_run.work_dir);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"four"}));
}

TEST_F(select_live, in_openlook_button_2_extends_instead_of_pasting) {
  with({"abcdef", "ghijkl", "mnopqr"});
  xfcom1("mousemode openlook", xf_run.work_dir);
  xfcom1("s_set l n 1 2 1 3", xf_run.work_dir);
  xf_compose();
  host->press(2, row_of(1), col_of(4));
  end_read();
  turn();
  EXPECT_EQ(where(), "1:2-2:5 k1");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"abcdef", "ghijkl", "mnopqr"}));
  // With no selection, Shift and button 2 begin one of whole lines.
  xfcom1("s_set off", xf_run.work_dir);
  xf_compose();
  host->press(2, row_of(2), col_of(1), FSM_SHIFT);
  end_read();
  turn();
  EXPECT_EQ(where(), "3:1-3:-1 k1");
}

TEST_F(select_live, keyboard_selection_from_the_cursor_shows_on_the_screen) {
  with({"abcdef", "ghijkl"});
  host->click(1, row_of(0), col_of(1));
  end_read();
  turn();
  xfcom1("c_starts", xf_run.work_dir);
  xf_compose();
  host->key(FSK_DOWN);  // the cursor moves by keys (a plain press would start afresh)
  host->key(FSK_RIGHT);
  end_read();
  turn();
  xfcom1("c_ends", xf_run.work_dir);
  end_read();
  turn();  // composed and painted
  EXPECT_EQ(where(), "1:2-2:3 k1");
  EXPECT_EQ(shown(0, 8), ".######.");
  EXPECT_EQ(shown(1, 8), "###.....");
  xfcom1("c_ends", xf_run.work_dir);  // at the moving end already: it ends there
  EXPECT_EQ(where(), "1:2-2:3 k0");
}

TEST_F(select_live, a_terminal_paste_takes_the_clipboard_from_our_own_copy) {
  with({"abc", "def"});
  xfcom1("s_set l n 1 1 1 2", xf_run.work_dir);
  xfcom1("s_copy", xf_run.work_dir);
  xfcom1("s_paste i 2 1", xf_run.work_dir);
  EXPECT_EQ(xf_ring.file->line(1), "abdef");  // our own text, from the shelf
  xf_compose();
  host->click(1, row_of(0), col_of(3));
  host->paste("ZZ");  // another program's text comes in by the terminal
  end_read();
  turn();
  EXPECT_EQ(xf_ring.file->line(0), "abcZZ");
  xfcom1("s_paste i 2 1", xf_run.work_dir);
  EXPECT_EQ(xf_ring.file->line(1), "ZZabdef");  // the clipboard's text now, not the shelf's
  EXPECT_FALSE(xf_sel.shelf.owner);
}

}  // namespace
