// Composition and the input cycle on the test host: composed pages compared as text with expected pictures,
// typing taken into the lines, and keys run by their definitions.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "editor/compose.h"
#include "editor/input.h"
#include "editor/keys.h"
#include "editor/messages.h"
#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/test_host.h"
#include "tests/editor/live_editor.h"

namespace {

class compose_test : public live_editor {
 protected:
  // The screen as text, one row a line, trailing blanks cut.
  std::string picture() {
    xf_compose();
    asrefresh();
    std::string out;
    for (int r = 1; r <= xf_scr.nb_rows; ++r) {
      std::string row = host->row(r);
      while (!row.empty() && row.back() == ' ') row.pop_back();
      out += row + "\n";
    }
    return out;
  }
};

// The id row of a view of the given width: the name, then "Len:" and the size, then "mod: " and the count.
std::string id_row(const std::string& name, int lines, int width = 80, const std::string& mod = "") {
  std::string r = name;
  r.resize(static_cast<std::size_t>(width - 9 - 6 - 4), ' ');
  std::string size = std::to_string(lines);
  size.resize(6, ' ');
  r += "Len:" + size + "mod: " + mod;
  while (!r.empty() && r.back() == ' ') r.pop_back();
  return r + "\n";
}
std::string blank_rows(int n) { return std::string(static_cast<std::size_t>(n), '\n'); }
const std::string legend = "1:Q  2:E  3:Save  4:Sp  5:x  6:cu  7:U  8:D  9:?  10:h  12:=  S-11:top  S-12:bot\n";

TEST_F(compose_test, short_file_xedit_layout) {
  start();
  file_with({"alpha", "beta", "gamma"}, "/tmp/short.txt");
  EXPECT_EQ(picture(),
            id_row("/tmp/short.txt", 3) +
            "short.txt\n\n\n\n\n\n"
            "00000\n"
            "00001 alpha\n"
            "00002 beta\n"
            "00003 gamma\n"
            "\n\n\n\n\n\n\n\n\n\n\n"
            "====>\n" + legend);
}

TEST_F(compose_test, long_lines_wrap_and_a_cut_line_marks_its_last_cell) {
  start(12, 40);
  std::string longl(70, 'x');
  longl += "END";
  file_with({"one", longl, "three"}, "/tmp/w.txt");
  xf_current_line() = 0;
  // 40 columns: 6 for the prefix and its gap, 34 cells a row; 73 cells take three rows.
  EXPECT_EQ(picture(), id_row("/tmp/w.txt", 3, 40) + "w.txt\n\n" + "00000\n" + "00001 one\n" + "00002 " +
                           std::string(34, 'x') + "\n" + "      " + std::string(34, 'x') + "\n" + "      xxEND\n" +
                           "00003 three\n\n" + "====>\n" + "1:Q  2:E  3:Save  4:Sp  5:x  6:cu  7:U\n");
  // The current line two rows from the end of the area: the long line has two rows and is cut.
  xf_ring.view->curline = 9;
  xf_current_line() = 1;
  std::string p = picture();
  EXPECT_NE(p.find("00002 " + std::string(34, 'x') + "\n      " + std::string(34, 'x') + "\n====>"),
            std::string::npos)
      << p;
  EXPECT_EQ(host->hlt_row(10).substr(39, 1), "2");  // the last cell of the cut line in reverse
  EXPECT_EQ(host->hlt_row(9).substr(39, 1), "0");
}

TEST_F(compose_test, empty_file_shows_tof_with_empty_rows_above_and_below) {
  start();
  file_with({}, "/tmp/empty.txt");
  std::string p = picture();
  EXPECT_EQ(p, id_row("/tmp/empty.txt", 0) + "empty.txt\n" + blank_rows(5) + "00000\n" + blank_rows(14) +
                   "====>\n" + legend);
  const xf_view_fields& vf = xf_scr.views[0];
  EXPECT_EQ(vf.above.size(), 5u);
  ASSERT_EQ(vf.below.size(), 14u);
  EXPECT_EQ(vf.below[0].second, 0);
  EXPECT_EQ(vf.below[13].second, 13);
}

TEST_F(compose_test, ispf_personality_has_its_command_line_on_top) {
  start(24, 80, true);
  file_with({"alpha", "beta"}, "/tmp/p.txt");
  std::string p = picture();
  EXPECT_EQ(p, id_row("/tmp/p.txt", 2) + "====>\n" + "p.txt\n" + blank_rows(4) + "00000\n00001 alpha\n00002 beta\n" +
                   blank_rows(13) + legend);
}

TEST_F(compose_test, smallest_screen_and_number_off) {
  start(6, 38);
  file_with({"a", "b", "c"}, "/tmp/s.txt");
  xf_ring.view->per_file[xf_ring.file_no].number = 0;
  xf_current_line() = 1;
  EXPECT_EQ(picture(), id_row("/tmp/s.txt", 3, 38) + "s.txt\n===== a\n===== b\n====>\n" + legend.substr(0, 38) +
                           "\n");
}

TEST_F(compose_test, hidden_lines_become_shadow_lines_and_messages_take_a_row) {
  start(14, 60);
  file_with({"l1", "l2", "l3", "l4", "l5"}, "/tmp/h.txt");
  xf_view& v = *xf_ring.views[0];
  v.display[0] = v.display[1] = 0;
  xf_ring.file->select[1] = 1;  // out of the display range: hidden
  xf_ring.file->select[2] = 1;
  xf_ring.file->select[4] = 1;
  xf_current_line() = 0;
  xf_msg_text("..... Hello", XF_MSG_INFO);
  std::string p = picture();
  std::string two = xf_shadow_text(2, 54), one = xf_shadow_text(1, 54);
  EXPECT_EQ(p, id_row("/tmp/h.txt", 5, 60) + "h.txt\n..... Hello\n00000\n00001 l1\n00002 " + two + "\n00004 l4\n00005 " +
                   one + "\n\n\n\n\n====>\n" + legend.substr(0, 60) + "\n");
  // The message is shown once.
  EXPECT_EQ(picture().find("Hello"), std::string::npos);
}

TEST_F(compose_test, a_scale_row_cuts_a_long_line_and_the_next_line_follows_it) {
  start(12, 40);
  file_with({"one", std::string(73, 'y'), "three"}, "/tmp/sc.txt");
  xf_current_line() = 0;
  xf_ring.view->per_file[xf_ring.file_no].scale_row = 7;
  std::string p = picture();
  EXPECT_EQ(p, id_row("/tmp/sc.txt", 3, 40) + "sc.txt\n\n00000\n00001 one\n00002 " + std::string(34, 'y') + "\n" +
                   "      |...+....1....+....2....+....3....\n" + "00003 three\n\n\n====>\n" +
                   "1:Q  2:E  3:Save  4:Sp  5:x  6:cu  7:U\n");
  EXPECT_EQ(host->hlt_row(6).substr(39, 1), "2");  // the cut line's last cell
}

TEST_F(compose_test, hidden_lines_at_the_top_give_a_shadow_line_above_the_first_shown) {
  start(12, 60);
  file_with({"h1", "h2", "s3", "s4"}, "/tmp/ht.txt");
  xf_view& v = *xf_ring.views[0];
  v.display[0] = v.display[1] = 0;
  xf_ring.file->select[0] = xf_ring.file->select[1] = 1;
  xf_current_line() = 3;
  v.curline = 7;
  std::string p = picture();
  EXPECT_NE(p.find("ht.txt\n\n00000\n00001 " + xf_shadow_text(2, 54) + "\n00003 s3\n00004 s4\n"), std::string::npos) << p;
}

TEST_F(compose_test, two_messages_of_a_turn_go_to_the_message_file_and_one_stands_alone) {
  start();
  file_with({"x"}, "/tmp/m.txt");
  xf_msg_text("..... first", XF_MSG_INFO);
  picture();
  EXPECT_EQ(xf_file_count(), 1);
  xf_msg_text("..... second", XF_MSG_INFO);
  xf_msg_text("..... third", XF_MSG_INFO);
  std::string p = picture();
  ASSERT_EQ(xf_file_count(), 2);
  EXPECT_EQ(xf_ring.file->name, "/tmp/m.txt");  // the view stays on its file
  const xf_file& mf = *xf_ring.files[1];
  EXPECT_EQ(mf.name, "/tmp/tolva.@messages");
  EXPECT_EQ(lines_of(mf), (std::vector<std::string>{"..... second", "..... third"}));
  EXPECT_EQ(mf.alt_save, 0);
  EXPECT_NE(p.find("\n..... third\n"), std::string::npos);
  EXPECT_EQ(p.find("..... second"), std::string::npos);
}

TEST(compose_parts, shadow_text_and_prefix_width) {
  EXPECT_EQ(xf_shadow_text(1, 10), "1 line  not displayed ");
  EXPECT_EQ(xf_shadow_text(3, 40), "-------- 3 lines not displayed ---------");
  EXPECT_EQ(xf_shadow_text(3, 40).size(), 40u);
  EXPECT_EQ(xf_prefix_width(0), 5);
  EXPECT_EQ(xf_prefix_width(99939), 5);
  EXPECT_EQ(xf_prefix_width(99940), 6);
  EXPECT_EQ(xf_prefix_width(999940), 7);
  EXPECT_EQ(xf_prefix_width(99999940), 9);
}

TEST_F(compose_test, typing_in_the_file_area_changes_the_lines) {
  start();
  file_with({"hello", "world"}, "/tmp/t1.txt");
  xf_cursor_to_line(0, 0);
  xf_compose();
  host->type("J");
  host->key(FSK_DOWN);
  host->key(FSK_RIGHT);
  host->type("O");
  host->key(13);
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"Jello", "woOld"}));
  EXPECT_EQ(xf_ring.file->alt_save, 2);
  // Enter in the file area leaves the cursor where it is (MODE ENTER STAY, AUTOIndent OFF).
  EXPECT_FALSE(xf_scr.cursor_on_cmd);
  EXPECT_EQ(xf_scr.cursor_line, 1);
  EXPECT_EQ(xf_scr.cursor_col, 3);
}

TEST_F(compose_test, autoindent_opens_a_line_under_the_indentation_after_enter_behind_the_end) {
  start();
  file_with({"  if (x) {", "  }"}, "/tmp/t7.txt");
  xfcom2("autoindent on", "/tmp");
  EXPECT_EQ(rc, 0);
  xf_cursor_to_line(0, 10);
  xf_compose();
  host->key(13);
  turn(false);
  ASSERT_EQ(xf_ring.file->size, 3) << xf_in.ev.kind << " " << xf_in.ev.value << " " << xf_ring.views[0]->message_text;
  EXPECT_EQ(lines_of(*xf_ring.file)[2], "  }");
  EXPECT_EQ(xf_scr.cursor_line, 1);
  EXPECT_EQ(xf_scr.cursor_col, 2);
  // Enter in mid-line opens nothing.
  xf_cursor_to_line(0, 3);
  xf_compose();
  host->key(13);
  turn(false);
  EXPECT_EQ(xf_ring.file->size, 3);
  EXPECT_EQ(xf_indent(0), "  ");
  xfcom2("autoindent maybe", "/tmp");
  EXPECT_EQ(rc, 1);
}

TEST_F(compose_test, typing_below_the_end_and_above_the_top_makes_lines) {
  start();
  file_with({"mid"}, "/tmp/t2.txt");
  xf_compose();
  // Row 11 is the second row below the end (TOF on 8, "mid" on 9), row 5 three rows above the TOF row.
  asfcur(0, 11, 7);
  host->type("low");
  host->key(13);
  turn(false);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"mid", "", "low"}));
  xf_compose();
  asfcur(0, 5, 7);
  host->type("top");
  host->key(13);
  turn(false);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"top", "", "", "", "mid", "", "low"}));
  // The file's text stays on the rows it stood on.
  std::string p = picture();
  EXPECT_NE(p.find("\n00005 mid\n"), std::string::npos) << p;
  EXPECT_EQ(p.substr(0, p.find("00005 mid")).find("00001 top"), p.find("00001 top"));
}

TEST_F(compose_test, a_line_and_a_row_below_the_end_typed_in_one_read) {
  start();
  file_with({"keep me"}, "/tmp/t5.txt");
  xf_compose();
  asfcur(0, 10, 7);
  host->type("typed");
  host->key(FSK_UP);
  host->type("X");
  host->key(13);
  turn(false);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"keep Xe", "typed"}));
}

TEST_F(compose_test, prefix_commands_typed_over_the_numbers_wait_for_their_partner_and_then_run) {
  start();
  file_with({"one", "two", "three"}, "/tmp/t6.txt");
  xf_compose();
  asfcur(0, 9, 1);  // the prefix field of line 1
  host->type("dd");
  host->key(13);
  turn(false);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two", "three"})) << "DD alone waits";
  std::string p = picture();
  EXPECT_NE(p.find("\nDD    one\n"), std::string::npos) << p;
  EXPECT_NE(p.find(" Pending: DD:1"), std::string::npos) << "the legend lists what waits";
  asfcur(0, 10, 3);  // over the middle of line 2's number
  host->type("dd");
  host->key(13);
  turn(false);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"three"}));
  p = picture();
  EXPECT_NE(p.find("\n00001 three\n"), std::string::npos) << p;
  EXPECT_EQ(p.find("Pending"), std::string::npos);
}

TEST_F(compose_test, a_prefix_text_that_means_nothing_stays_highlighted_until_blanked) {
  start();
  file_with({"one", "two"}, "/tmp/t7.txt");
  xf_compose();
  asfcur(0, 9, 1);
  host->type("zz");
  host->key(13);
  turn(false);
  std::string p = picture();
  EXPECT_NE(p.find("\nzz    one\n"), std::string::npos) << p;
  EXPECT_EQ(host->hlt_row(9).substr(0, 1), "2") << "the error text is shown in reverse";
  asfcur(0, 9, 1);
  host->type("     ");
  host->key(13);
  turn(false);
  EXPECT_NE(picture().find("\n00001 one\n"), std::string::npos);
}

TEST_F(compose_test, the_command_line_runs_on_enter_and_keys_run_their_definitions) {
  start();
  std::vector<std::string> many;
  for (int i = 1; i <= 100; ++i) many.push_back("line " + std::to_string(i));
  file_with(many, "/tmp/t3.txt");
  xf_current_line() = 0;
  xf_compose();
  host->type(":50");
  host->key(13);
  turn();
  EXPECT_EQ(xf_current_line(), 49);
  EXPECT_TRUE(xf_run.command_line.empty());
  host->key(FSK_F1 + 7);  // F8: forward a page
  turn();
  EXPECT_EQ(xf_current_line(), 49 + 18);  // 20 rows of file area less 2
  host->key(FSK_F1 + 6);  // F7: backward
  turn();
  EXPECT_EQ(xf_current_line(), 49);
  host->type("bottom");
  host->key(13);
  turn();
  EXPECT_EQ(xf_current_line(), 99);
  ASSERT_FALSE(xf_cmd.history.empty());
  EXPECT_EQ(xf_cmd.history.back(), "bottom");
  host->key(FSK_F1 + 8);  // F9: the last command back on the command line
  turn();
  EXPECT_EQ(xf_run.command_line, "bottom");
  EXPECT_NE(picture().find("====> bottom"), std::string::npos);
}

TEST_F(compose_test, a_character_with_no_room_goes_into_the_line) {
  start(12, 40);
  file_with({std::string(34, 'a')}, "/tmp/t4.txt");
  xf_current_line() = 0;
  asfinsert(1);
  xf_cursor_to_line(0, 3);
  xf_compose();
  host->type("Z");
  host->key(13);
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file)[0], "aaaZ" + std::string(31, 'a'));
}

TEST_F(compose_test, cursor_keys_go_to_the_ends_of_lines) {
  start();
  file_with({"abc def", "xy"}, "/tmp/t8.txt");
  xf_cursor_to_line(0, 2);
  xf_compose();
  host->key(FSK_F1 + 5);  // F6: behind the last character of the line under the cursor
  turn(false);
  EXPECT_EQ(xf_scr.cursor_line, 0);
  EXPECT_EQ(xf_scr.cursor_col, 7);
  xf_current_line() = 1;
  host->key(FSK_F1 + 5, FSM_SHIFT);  // S-F6: behind the current line
  turn();
  EXPECT_EQ(xf_scr.cursor_line, 1);
  EXPECT_EQ(xf_scr.cursor_col, 2);
  xf_cursor_to_cmd();
  xf_compose();
  host->key(FSK_F1 + 1);  // F2 on the command line: not a line
  turn(false);
  EXPECT_EQ(xf_ring.views[0]->message_text.substr(0, 29), "..... Invalid cursor position");
}

TEST_F(compose_test, a_resized_screen_is_laid_out_again_and_a_too_small_one_shows_nothing) {
  start();
  file_with({"one"}, "/tmp/t9.txt");
  xf_compose();
  host->resize(30, 100);
  host->key(13);
  turn(false);
  EXPECT_EQ(xf_ring.views[0]->height, 29);
  EXPECT_EQ(xf_ring.views[0]->width, 100);
  std::string p = picture();
  EXPECT_EQ(host->row(29).substr(0, 5), "====>");
  EXPECT_EQ(host->row(1).substr(81, 4), "Len:");
  host->resize(5, 30);
  host->key(13);
  turn(false);
  EXPECT_EQ(xf_run.too_small, 1);
  xf_compose();
  asrefresh();
  EXPECT_EQ(host->row(1).find_first_not_of(' '), std::string::npos);
}

TEST_F(compose_test, line_keys_work_at_the_cursor_and_their_cursor_wish_is_followed) {
  start();
  file_with({"first", "second"}, "/tmp/t10.txt");
  xf_cursor_to_line(0, 2);
  xf_compose();
  host->key('a', FSM_CTRL);  // ^a: c_lineadd, a new line after the cursor's line
  turn(false);
  ASSERT_EQ(xf_ring.file->size, 3);
  EXPECT_EQ(lines_of(*xf_ring.file)[2], "second");
  xf_compose();
  EXPECT_FALSE(xf_scr.cursor_on_cmd);
  EXPECT_EQ(xf_scr.cursor_line, 1);  // on the new line
}

TEST(key_modes, definition_and_typed_text_run_in_the_mode_order) {
  xf_key_def only{"top", XK_ONLY}, after{"top", XK_AFTER}, before{"top", XK_BEFORE}, ignore{"top", XK_IGNORE};
  xf_key_def empty{"", XK_ONLY};
  bool keep = false;
  using v = std::vector<std::string>;
  EXPECT_EQ(xf_key_commands(&only, false, "next", keep), v{"top"});
  EXPECT_EQ(xf_key_commands(&after, false, " next ", keep), (v{"next", "top"}));
  EXPECT_EQ(xf_key_commands(&before, false, "next", keep), (v{"top", "next"}));
  EXPECT_EQ(xf_key_commands(&ignore, false, "next", keep), v{"next"});
  EXPECT_EQ(xf_key_commands(&ignore, false, "", keep), v{"top"});
  EXPECT_EQ(xf_key_commands(&empty, true, "next", keep), v{"next"});
  EXPECT_EQ(xf_key_commands(&empty, false, "next", keep), v{});
  EXPECT_EQ(xf_key_commands(&before, false, "&next", keep), (v{"top", "next"}));
  EXPECT_TRUE(keep);
}

TEST(key_tables, defaults_stand_in_their_rows) {
  xf_keys_reset();
  ASSERT_EQ(xf_keys.f.size(), 12u * 8 + 1);
  EXPECT_EQ(xf_keys.f[1].text, "quit");
  EXPECT_EQ(xf_keys.f[3].text, "command save");
  EXPECT_EQ(xf_keys.f[8].text, "command forward");
  EXPECT_EQ(xf_keys.f[12 + 11].text, "command top");     // S-F11
  EXPECT_EQ(xf_keys.f[24 + 7].text, "command left40");  // C-F7
  EXPECT_EQ(xf_keys.f[36 + 9].text, "command showhistory");  // M-F9
  EXPECT_EQ(xf_keys.l[3 + 10 * 5].text, "s_find");      // S+M-L3
  EXPECT_EQ(xf_keys.r[14 + 15 * 2].text, "macro mvlinedown");
  EXPECT_EQ(xf_keys.ctrl[static_cast<unsigned char>('z')].text, "command left0");
  EXPECT_EQ(xf_keys.meta[static_cast<unsigned char>('x')].text, "command s_xed");
  EXPECT_EQ(xf_keys.enter[0].mode, XK_BEFORE);
  EXPECT_TRUE(xf_keys.r[6].text.empty());
  EXPECT_EQ(xf_key_for(ASR_PFK, 8), &xf_keys.f[8]);
  EXPECT_EQ(xf_key_for(ASR_PFK, 12 * 8 + 1), nullptr);
  EXPECT_EQ(xf_key_for(ASR_CLICK, 1), nullptr);
}

}  // namespace

namespace {

TEST(scroll_commands, lines_pages_and_bad_operands) {
  fresh_editor();
  std::vector<std::string> many;
  for (int i = 1; i <= 50; ++i) many.push_back("l" + std::to_string(i));
  file_with(many, "/tmp/sc2.txt");
  xf_current_line() = 0;
  xfcom2("down 3", "/tmp");
  EXPECT_EQ(xf_current_line(), 3);
  xfcom2("next", "/tmp");
  EXPECT_EQ(xf_current_line(), 4);
  xfcom2("up 10", "/tmp");  // stops at the top-of-file line
  EXPECT_EQ(xf_current_line(), -1);
  xfcom2("forward", "/tmp");  // a page: 20 rows of file area less 2
  EXPECT_EQ(xf_current_line(), 17);
  xfcom2("pgdown 2", "/tmp");
  EXPECT_EQ(xf_current_line(), 49);  // no further than the last line
  xfcom2("backward *", "/tmp");
  EXPECT_EQ(xf_current_line(), -1);
  xfcom2("down x", "/tmp");
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(xf_current_line(), -1);
  // Hidden lines are passed over.
  xf_view& v = *xf_ring.views[0];
  v.display[0] = v.display[1] = 0;
  xf_ring.file->select[1] = xf_ring.file->select[2] = 1;
  xf_current_line() = 0;
  xfcom2("down", "/tmp");
  EXPECT_EQ(xf_current_line(), 3);
  xfcom2("up", "/tmp");
  EXPECT_EQ(xf_current_line(), 0);
}

}  // namespace
