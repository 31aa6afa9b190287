// Tests of the read cycle: scripted events drive in-field editing, and the read's reason, value and fields are checked.
#include "tests/screen/screen_fixture.h"

using screen_read = screen_test;

namespace {
constexpr int kEnter = 13, kEsc = 27, kTab = 9, kDel = 127, kBack = 8;
}

TEST_F(screen_read, typing_overwrites_and_moves_the_cursor) {
  field({1, 2, 5, 1, 10});
  field({2, 3, 5, 1, 10});
  asfcur(1, 1, 1);
  host->type("abc");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(nmod, 1);
  EXPECT_EQ(trimmed(1), "abc");
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 8}));
  EXPECT_EQ(host->row(2).substr(4, 10), "abc       ");
  EXPECT_EQ(host->cursor_line, 2);
  EXPECT_EQ(host->cursor_col, 8);
  int ids[2], sizes[2], used[2];
  EXPECT_EQ(asqmod(2, ids, sizes, used), 1);
  EXPECT_EQ(ids[0], 1);
  EXPECT_EQ(used[0], 3);
  // overwrite in the middle
  asfcur(1, 1, 2);
  host->type("Z");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(trimmed(1), "aZc");
}

TEST_F(screen_read, last_cell_goes_to_next_field_or_reports_end) {
  field({1, 1, 1, 1, 3});
  field({2, 1, 10, 1, 3, 0, 1, 0, 0, 0, 0, FA_REPORT_FULL});
  field({3, 2, 1, 1, 3});
  asfcur(1, 1, 1);
  host->type("xyzq");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1), "xyz");
  EXPECT_EQ(trimmed(2), "q");
  asfcur(2, 1, 3);
  host->type("e");
  EXPECT_EQ(read(), ASR_FIELD_END);
  EXPECT_EQ(value, 'e');
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 12}));  // the cursor stays on that cell
  EXPECT_EQ(text(2), "q e");
}

TEST_F(screen_read, numeric_and_protected_fields_refuse) {
  field({1, 1, 1, 1, 5, FT_NUMERIC, 1});
  field({2, 2, 1, 1, 5, FT_PROTECTED, 1});
  asfcur(1, 1, 1);
  host->type("1a.2 ");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1), "1.2  ");
  EXPECT_EQ(host->flashes, 1);
  asfcur(2, 1, 1);
  host->type("x");
  host->key(kDel);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(nmod, 0);
  EXPECT_EQ(text(2), "     ");
  EXPECT_EQ(host->flashes, 3);
  asfcur(0, 10, 10);  // on no field at all
  host->type("y");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->flashes, 4);
}

TEST_F(screen_read, insert_needs_a_free_cell_at_the_end) {
  field({1, 1, 1, 1, 5});
  put(1, "abcde");
  asfinsert(1);
  asfcur(1, 1, 2);
  host->type("X");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1), "abcde");  // full: the window flashes and nothing changes
  EXPECT_EQ(host->flashes, 1);
  EXPECT_EQ(nmod, 0);
  // a trailing blank is free space in a text field
  put(1, "abcd");
  asfcur(1, 1, 2);
  host->type("XY");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1), "aXbcd");  // the blank made room once
  EXPECT_EQ(host->flashes, 2);  // the second push found no room
}

TEST_F(screen_read, binary_field_only_frees_null_cells) {
  int rec[7] = {1, 1, 1, 1, 5, 0, 1};
  ASSERT_EQ(asrfmtx(7, rec, nullptr, nullptr, nullptr, nullptr, 0, 1, -1), 0);
  put(1, "abcd");  // a blank at the end: not free in a binary field
  asfinsert(1);
  asfcur(1, 1, 1);
  host->type("X");
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "abcd ");
  EXPECT_EQ(host->flashes, 1);
  uint16_t cells[4] = {'a', 'b', 'c', 'd'};
  ascput_short(1, 4, cells);  // a null cell at the end lets the insert through
  asfcur(1, 1, 1);
  host->type("X");
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "Xabcd");
}

TEST_F(screen_read, reported_full_and_edit_fields) {
  field({1, 1, 1, 1, 4, 0, 1, 0, 0, 0, 0, FA_REPORT_FULL});
  field({2, 2, 1, 1, 4, 0, 1, 0, 0, 0, 0, FA_REPORT_EDIT});
  put(1, "abcd");
  put(2, "ab");
  asfinsert(1);
  asfcur(1, 1, 1);
  host->type("X");
  EXPECT_EQ(read(), ASR_FULL);
  EXPECT_EQ(value, 'X');
  EXPECT_EQ(text(1), "abcd");
  asfcur(2, 1, 1);
  host->type("Y");  // the caller does the insertion
  EXPECT_EQ(read(), ASR_FULL);
  EXPECT_EQ(text(2), "ab  ");
  host->key(kDel);
  EXPECT_EQ(read(), ASR_DEL);
  EXPECT_EQ(text(2), "b   ");
  host->key(kEsc);
  EXPECT_EQ(read(), ASR_ERASE);
  EXPECT_EQ(text(2), "    ");
  // a reverse cell of a FA_REPORT_FULL field
  int h[1] = {2};
  aschlt(1, 1, h);
  asfcur(1, 1, 1);
  host->type("r");
  EXPECT_EQ(read(), ASR_REVERSE);
  EXPECT_EQ(value, 'r');
}

TEST_F(screen_read, delete_backspace_and_erase) {
  field({1, 1, 1, 1, 6});
  put(1, "abcdef");
  asfcur(1, 1, 2);
  host->key(kDel);  // pulls the rest back, a null cell at the end
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1), "acdef ");
  uint16_t last;
  ascget_short(1, 1, &last);
  EXPECT_EQ(last, 'a');
  // backspace in overwrite mode blanks the cell before
  asfcur(1, 1, 3);
  host->key(kBack);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "a def ");
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 2}));
  // in insert mode it deletes
  asfinsert(1);
  asfcur(1, 1, 4);
  host->key(kBack);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "a ef  ");
  // backspace at the first cell does nothing
  asfcur(1, 1, 1);
  host->key(kBack);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "a ef  ");
  // Esc erases to the end, Shift+Esc the whole field with the cursor to its start
  asfcur(1, 1, 2);
  host->key(kEsc);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "a     ");
  put(1, "xyz");
  asfcur(1, 1, 3);
  host->key(kEsc, FSM_SHIFT);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "      ");
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 1}));
  int n = 0;
  asfcur(0, 20, 20);
  del_end_f(n);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "del_end_f : position curseur invalide");
}

TEST_F(screen_read, tab_walks_input_fields_of_every_type) {
  field({1, 1, 1, 1, 5, FT_TEXT, 1});
  field({2, 1, 20, 1, 5, FT_PROTECTED, 1});
  field({3, 1, 30, 1, 5, FT_NUMERIC, 1});
  field({4, 3, 10, 2, 5, FT_TEXT, 1});     // two lines: two tab stops
  field({5, 6, 78, 1, 6, FT_TEXT, 1});     // wrapping run
  std::vector<std::pair<int, int>> seen;
  asfcur(1, 1, 3);
  for (int i = 0; i < 6; ++i) {
    host->key(kTab, 0, true);
    host->key(kEnter);
    read();
    seen.push_back(cursor());
  }
  std::vector<std::pair<int, int>> want = {{1, 30}, {3, 10}, {4, 10}, {6, 78}, {1, 1}, {1, 30}};
  EXPECT_EQ(seen, want);
  // back tab: first to the start of the field, then to the previous field
  asfcur(4, 2, 3);
  host->key(kTab, FSM_SHIFT, true);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 10}));
  host->key(kTab, FSM_SHIFT, true);
  host->key(kTab, FSM_SHIFT, true);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 30}));
  int n = 0;
  astabb(n);
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 1}));
  astabb(n);
  EXPECT_EQ(cursor(), (std::pair<int, int>{6, 78}));
}

TEST_F(screen_read, tab_with_one_or_no_field) {
  host->key(kTab, 0, true);
  host->key(kEnter);
  asfcur(0, 5, 5);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 1}));
  field({1, 4, 4, 1, 5});
  asfcur(1, 1, 3);
  host->key(kTab, 0, true);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 4}));  // back to its own start after a full round
}

TEST_F(screen_read, held_tab_repeats_after_ten_quiet_polls) {
  for (int i = 0; i < 4; ++i) field({i + 1, i + 1, 1, 1, 3});
  asfcur(1, 1, 1);
  host->key(kTab);
  host->quiet(12);  // ten polls of the first delay, then two repeats
  host->release(kTab);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 1}));
}

TEST_F(screen_read, arrows_wrap_and_exit_fields) {
  field({1, 1, 1, 1, 5, 0, 1, 0, 0, 0, 0, FA_UP_EXIT});
  field({2, 3, 1, 1, 5, 0, 1, 0, 0, 0, 0, FA_DOWN_EXIT});
  asfcur(0, 2, 1);
  host->key(FSK_UP);
  EXPECT_EQ(read(), ASR_UP_EXIT);
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 1}));
  host->key(FSK_DOWN);
  EXPECT_EQ(read(), ASR_DOWN_EXIT);
  asfcur(0, 24, 80);
  host->key(FSK_RIGHT);  // round the screen to 1, 1 and back
  host->key(FSK_RIGHT);
  host->key(FSK_LEFT);
  host->key(FSK_LEFT);
  host->key(FSK_UP);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(cursor(), (std::pair<int, int>{23, 80}));
  asfcur(0, 1, 10);
  host->key(FSK_UP);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{24, 10}));
}

TEST_F(screen_read, skip_jumps_over_protected_columns) {
  field({1, 1, 1, 1, 3});
  field({2, 1, 4, 1, 3, FT_PROTECTED, 1});
  field({3, 1, 7, 1, 3});
  asfskip(1);
  asfcur(1, 1, 3);
  host->key(FSK_RIGHT);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 7}));
}

TEST_F(screen_read, wrapping_field_takes_typing_across_lines) {
  field({1, 2, 79, 1, 5});
  asfcur(1, 1, 1);
  host->type("abcd");
  host->key(kEnter);
  read();
  EXPECT_EQ(trimmed(1), "abcd");
  EXPECT_EQ(host->row(2).substr(78), "ab");
  EXPECT_EQ(host->row(3).substr(0, 3), "cd ");
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 3}));
}

TEST_F(screen_read, keyed_field_reports_each_character) {
  field({7, 1, 1, 1, 6, 0, 1, 0, 0, 0, 0, FA_KEYED});
  put(7, "abcdef");
  asfcur(7, 1, 2);
  host->type("x");
  EXPECT_EQ(read(), ASR_KEYED);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(nmod, 1);
  EXPECT_EQ(text(7), "ax    ");
}

TEST_F(screen_read, yes_no_fields_flip_by_letter_and_click) {
  field({1, 1, 1, 1, 3, 0, 1, 0, 0, 0, 0, FA_YES_NO});
  field({2, 2, 1, 1, 3, 0, 1, 0, 0, 0, 0, FA_OUI_NON});
  put(1, "YES");
  put(2, "OUI");
  host->click(1, 1, 2);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(trimmed(1), "NO");
  EXPECT_EQ(nmod, 1);
  host->click(1, 1, 1);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "YES");
  asfcur(2, 1, 1);
  host->type("n");
  host->key(kEnter);
  read();
  EXPECT_EQ(text(2), "NON");
  host->type("o");
  host->type("q");  // not a yes/no letter: an alarm
  host->key(kEnter);
  read();
  EXPECT_EQ(text(2), "OUI");
  EXPECT_EQ(host->beeps, 1);
}

TEST_F(screen_read, push_buttons_report_on_release) {
  field({5, 1, 1, 1, 6, 0, 1, 0, 0, 0, 0, FA_CLICK});
  put(5, "[ OK ]");
  host->press(1, 1, 3);
  host->key(kEnter);  // the press is swallowed: the read goes on
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->hlt_row(1).substr(0, 6), "222222");  // armed: shown reversed
  host->unpress(1, 1, 3);
  EXPECT_EQ(read(), ASR_CLICK);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(host->hlt_row(1).substr(0, 6), "000000");
  // released elsewhere: no click
  host->press(1, 1, 3);
  host->drag(5, 5);  // moving off disarms it, and the drag is reported
  EXPECT_EQ(read(), ASR_DRAG);
  EXPECT_EQ(host->hlt_row(1).substr(0, 6), "000000");
  host->unpress(1, 5, 5);
  EXPECT_EQ(read(), ASR_BUTTON_UP);
  EXPECT_EQ(value, 1);
}

TEST_F(screen_read, mouse_buttons_and_clicks) {
  field({1, 3, 1, 1, 10});
  host->press(3, 3, 4);
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(value, 3);
  int id, l, c;
  asqmou(1, id, l, c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(c, 4);
  host->unpress(3, 3, 4);
  EXPECT_EQ(read(), ASR_BUTTON_UP);
  EXPECT_EQ(value, 3);
  host->drag(4, 4);  // drags after a release are dropped
  host->press(1, 2, 2);
  host->drag(2, 6);
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(read(), ASR_DRAG);
  EXPECT_EQ(value, 1);
  host->key(FSK_WHEEL_DOWN);
  EXPECT_EQ(read(), ASR_WHEEL_DOWN);
}

TEST_F(screen_read, left_click_moves_and_double_click_returns) {
  field({1, 3, 1, 1, 10});
  asflclk(1);
  host->click(1, 3, 5);
  host->advance(400000);
  host->click(1, 3, 7);  // 400 ms later: another cursor move
  host->advance(100000);
  host->press(1, 3, 8);  // close to the last press: a double click
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 7}));
  int f[14] = {2, 5, 1, 1, 10, 0, 1, 0, 0, 0, 0, FA_NO_CLICK_MOVE};
  asrfmt(1, 14, f);
  host->advance(1000000);
  host->press(1, 5, 3);
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 7}));
}

TEST_F(screen_read, drag_selection) {
  field({1, 2, 1, 1, 20, 0, 1, 0, 0, 0, 0, FA_DRAG_SELECT});
  put(1, "  hello world");
  host->press(1, 2, 1);
  EXPECT_EQ(read(), ASR_BUTTON);
  host->drag(2, 2);
  host->drag(2, 3);
  host->drag(2, 9);
  host->unpress(1, 2, 9);
  EXPECT_EQ(read(), ASR_SELECTED);
  int d[6];
  asqdrag(d);
  EXPECT_EQ(d[0], 1);
  EXPECT_EQ(d[2], 3);  // started on a blank: the first non-blank cell reached
  EXPECT_EQ(d[5], 9);
  EXPECT_EQ(host->hlt_row(2).substr(0, 10), "0000000000");  // the mark went with the release
  // while dragging, the mark follows the mouse as one inverted cell
  host->press(1, 2, 4);
  host->drag(2, 6);
  host->drag(2, 7);
  host->key(FSK_F1);
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(host->hlt_row(2).substr(0, 10), "0000002000");
}

TEST_F(screen_read, function_and_named_keys) {
  host->key(FSK_F1 + 2, FSM_SHIFT);
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 15);
  host->release(FSK_F1 + 2, FSM_SHIFT);
  EXPECT_EQ(read(), ASR_PFK_UP);
  EXPECT_EQ(value, 15);
  asfup(0);
  host->release(FSK_F1 + 2);
  host->key(FSK_F1 + 12);  // F13: not reported
  host->key(FSK_PGUP, FSM_CTRL | FSM_ALT);
  EXPECT_EQ(read(), ASR_KEY);
  EXPECT_EQ(value, 6 + 15 * 6);
  host->key(FSK_UP, FSM_CTRL);  // an arrow with a modifier is a named key
  EXPECT_EQ(read(), ASR_KEY);
  EXPECT_EQ(value, 8 + 15 * 2);
  EXPECT_EQ(asqctrl(), 1);
  EXPECT_EQ(asqalt(), 0);
}

TEST_F(screen_read, control_keys) {
  field({1, 1, 1, 1, 5});
  asfcur(1, 1, 1);
  host->key('c', FSM_CTRL);
  EXPECT_EQ(read(), ASR_CTRL);
  EXPECT_EQ(value, 'c');
  host->key(kTab, FSM_CTRL);  // Ctrl+Tab types a TAB
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1)[0], '\t');
  host->key(FSK_INSERT);
  host->key(kEnter);
  read();
  EXPECT_EQ(asqinsert(), 1);
  EXPECT_EQ(host->row(25).substr(35, 8), "< INS > ");
  asfalttab('x', 1);
  host->key('x', FSM_ALT);
  EXPECT_EQ(read(), ASR_ALT);
  EXPECT_EQ(value, 'x');
  host->key('1', FSM_ALT);  // not in the Alt table: typed through the Alt row
  host->key(kEnter);
  read();
  EXPECT_EQ(static_cast<unsigned char>(text(1)[1]), 0xe2);
}

TEST_F(screen_read, home_and_new_line_roles) {
  field({1, 2, 5, 1, 5, FT_PROTECTED, 1});
  field({2, 3, 7, 1, 5});
  field({3, 6, 3, 1, 5});
  asfcur(0, 10, 10);
  host->key(FSK_HOME);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 7}));
  host->key(FSK_END);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{6, 3}));
  host->key(10);  // the new-line role: next line's first input cell, round the screen
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 7}));
  host->key(10, FSM_SHIFT);
  host->key(kEnter);
  read();
  EXPECT_EQ(cursor(), (std::pair<int, int>{6, 3}));
  asfrole(AR_HOME, -1, 0, 0, 0);  // unbound: Home is a plain named key again
  host->key(FSK_HOME);
  EXPECT_EQ(read(), ASR_KEY);
  EXPECT_EQ(value, 5);
}

TEST_F(screen_read, resize_during_a_read) {
  field({1, 2, 1, 1, 10});
  field({2, 20, 1, 1, 10});
  put(1, "kept");
  asfcur(1, 1, 1);
  host->type("K");
  host->resize(10, 40);
  EXPECT_EQ(read(), ASR_RESIZE);
  EXPECT_EQ(nmod, 1);
  int q[4];
  fsqury(0, 0, 4, q);
  EXPECT_EQ(q[2], 10);
  EXPECT_EQ(q[3], 40);
  EXPECT_EQ(trimmed(1), "Kept");  // what was typed is still there to be read
  asq_ff(2);
  EXPECT_EQ(fsstatus(), 28);       // the field below the new grid is gone
  int ids[1], sizes[1], used[1];
  EXPECT_EQ(asqmod(1, ids, sizes, used), 1);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->row(2).substr(0, 4), "Kept");
}

TEST_F(screen_read, read_timer_and_quit) {
  asftimer(50);
  host->quiet();
  EXPECT_EQ(read(), ASR_TIMEOUT);
  asftimer(0);
  host->quiet(3);  // without a timer quiet spells just pass
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(read(), ASR_QUIT);  // the display went away
  EXPECT_EQ(read(), ASR_QUIT);
}

TEST_F(screen_read, macro_pushed_characters_are_typed_in_order) {
  field({1, 1, 1, 1, 5});
  asfcur(1, 1, 1);
  aspush('p');
  aspush('q');
  aspushkey(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(trimmed(1), "pq");
}

TEST_F(screen_read, modified_flags_between_reads) {
  field({1, 1, 1, 1, 5});
  field({2, 2, 1, 1, 5});
  asfcur(1, 1, 1);
  host->type("a");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(nmod, 1);
  // not handed over: the next read of the same page clears the flags...
  host->key(kEnter);
  read();
  EXPECT_EQ(nmod, 0);
  int ids[2], sizes[2], used[2];
  EXPECT_EQ(asqmod(2, ids, sizes, used), 0);
  // ...unless asfkeep was called
  asfmod(2, 1);
  asfkeep();
  host->key(kEnter);
  read();
  EXPECT_EQ(nmod, 1);
  EXPECT_EQ(asqmod(2, ids, sizes, used), 1);
  EXPECT_EQ(ids[0], 2);
}

TEST_F(screen_read, field_popup_ends_the_read) {
  field({1, 1, 1, 1, 8});
  const char* labels[2] = {"First", "Second"};
  const char* texts[2] = {"one", "two"};
  asfmenu(1, 3, 2, labels, texts, 1);
  host->popup_answer(1);
  host->press(3, 1, 5);
  EXPECT_EQ(read(), ASR_FIELD_MENU);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(trimmed(1), "two");
  ASSERT_EQ(host->popups_shown.size(), 1u);
  EXPECT_EQ(host->popups_shown[0][0], "First");
}

TEST_F(screen_read, ignore_release_mark_and_shift_right) {
  field({1, 1, 1, 1, 5});
  put(1, "abcde");
  asfignrel();
  host->release(FSK_F1);
  host->release(FSK_F1);
  EXPECT_EQ(read(), ASR_PFK_UP);  // only the first release was ignored
  asfshright(1);
  asfcur(1, 1, 2);
  host->key(FSK_RIGHT, FSM_SHIFT);
  host->key(kEnter);
  read();
  EXPECT_EQ(text(1), "a bcd");
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 2}));
}

namespace {
int g_edits = 0, g_last_op = -1;
int count_edits(const uint16_t*, const uint16_t*, int, void*, int, int op, int) {
  ++g_edits;
  g_last_op = op;
  return op == 6 ? 1 : 0;  // ask for recolouring after a delete
}
}  // namespace

TEST_F(screen_read, on_edit_hook_and_limit) {
  int rec[7] = {1, 1, 1, 1, 8, 0, 1};
  fs_segment seg{0, 7, 0};
  int map[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  fs_segments sd{1, &seg, map};
  ASSERT_EQ(asrfmtx(7, rec, nullptr, &sd, count_edits, nullptr, 0, 0, 4), 0);
  field({2, 3, 1, 1, 5});
  asfcur(1, 1, 1);
  host->type("abcd");  // column 4 is the limit: typing there counts as the field's end
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(g_edits, 4);
  EXPECT_EQ(g_last_op, 0);
  EXPECT_EQ(cursor(), (std::pair<int, int>{3, 1}));
  asfcur(1, 1, 1);
  host->key(kDel);
  EXPECT_EQ(read(), ASR_RECOLOUR);
  EXPECT_EQ(trimmed(1), "bcd");
}

// A field showing four content columns as text, a separator, and as hexadecimal digit pairs.
class screen_hex : public screen_test {
 protected:
  void SetUp() override {
    screen_test::SetUp();
    int rec[7] = {1, 2, 1, 1, 13, 0, 1};
    ASSERT_EQ(asrfmtx(7, rec, tabs, &sd, nullptr, nullptr, 7, 0, -1), 0);
    EXPECT_EQ(fsstatus(), 0);
    put(1, "AB  .41422020");
  }
  std::string hex_part() { return text(1).substr(5); }
  std::string text_part() { return text(1).substr(0, 4); }
  fs_segment segs[2] = {{0, 3, 0}, {0, 3, 1}};
  int map[13] = {1, 2, 3, 4, 0, -1, -1, -2, -2, -3, -3, -4, -4};
  fs_segments sd{2, segs, map};
  int tabs[4] = {2, 0, 1, 3};
};

TEST_F(screen_hex, typing_digits_mirrors_into_text) {
  asfcur(1, 1, 6);
  host->type("6");
  host->key(kEnter);
  read();
  EXPECT_EQ(hex_part(), "61422020");
  EXPECT_EQ(text_part(), "aB  ");
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 7}));
  asfcur(1, 1, 8);  // column 2: "0" is taken, then "A" would make 0A
  host->type("0A");
  host->key(kEnter);
  read();
  EXPECT_EQ(host->flashes, 1);
  EXPECT_EQ(hex_part(), "61022020");
  EXPECT_EQ(static_cast<int>(text_part()[1]), 2);
  asfcur(1, 1, 10);
  host->type("g");  // not a hexadecimal digit
  host->key(kEnter);
  read();
  EXPECT_EQ(host->flashes, 2);
}

TEST_F(screen_hex, typing_text_mirrors_into_digits_and_separator_refuses) {
  asfcur(1, 1, 3);
  host->type("z");
  host->key(kEnter);
  read();
  EXPECT_EQ(hex_part(), "41427A20");
  asfcur(1, 1, 5);
  host->type("q");
  host->key(kEnter);
  read();
  EXPECT_EQ(host->flashes, 1);
  EXPECT_EQ(text(1).substr(4, 1), ".");
}

TEST_F(screen_hex, insert_moves_whole_columns) {
  asfinsert(1);
  asfcur(1, 1, 6);
  host->type("5");
  host->key(kEnter);
  read();
  EXPECT_EQ(hex_part(), "50414220");
  EXPECT_EQ(text_part(), "PAB ");
  // the last column now holds a blank: one more insert fits, a third does not
  asfcur(1, 1, 6);
  host->type("7");
  host->key(kEnter);
  read();
  EXPECT_EQ(text_part(), "pPAB");
  asfcur(1, 1, 6);
  host->type("7");
  host->key(kEnter);
  read();
  EXPECT_EQ(host->flashes, 1);
  EXPECT_EQ(text_part(), "pPAB");
}

TEST_F(screen_hex, delete_and_backspace_in_digits) {
  asfcur(1, 1, 6);
  host->key(kDel);  // on a first digit: the columns move back
  host->key(kEnter);
  read();
  EXPECT_EQ(text_part().substr(0, 3), "B  ");
  uint16_t cells[13];
  ascget_short(1, 13, cells);
  EXPECT_EQ(cells[3], FS_NULL_CELL);  // the last column became null in both renderings
  EXPECT_EQ(cells[12], FS_NULL_CELL);
  asfcur(1, 1, 7);
  host->key(kDel);  // on a second digit: nothing
  host->key(kBack);  // back onto the first digit: "2"
  host->key(kEnter);
  read();
  EXPECT_EQ(hex_part().substr(0, 2), "22");
  EXPECT_EQ(text_part()[0], '"');
}

TEST_F(screen_hex, status_row_and_tab_stops) {
  asflinecol(1);
  asfcur(1, 1, 6);
  asrefresh();
  EXPECT_EQ(host->row(25).substr(1, 21), "Line=8  Col=1  Hex=41");
  asfcur(1, 1, 5);
  asrefresh();
  EXPECT_EQ(host->row(25).substr(1, 21), "Line=8  Hex=2E       ");
  field({2, 10, 1, 1, 5});
  asfcur(0, 10, 1);
  asrefresh();
  EXPECT_EQ(host->row(25).substr(1, 20), std::string(20, ' '));
  // tab stops at content columns 1 and 3: the text cell, then the digit pairs
  asfcur(1, 1, 1);
  int n = 0;
  astabf(n);
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 3}));
  astabf(n);
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 6}));
  astabf(n);
  EXPECT_EQ(cursor(), (std::pair<int, int>{2, 10}));
}

TEST_F(screen_read, right_click_moves_and_tracking_reports) {
  field({1, 4, 1, 1, 10});
  field({2, 6, 1, 1, 10, 0, 1, 0, 0, 0, 0, FA_NO_CLICK_MOVE});
  asfrclk(1);
  host->click(3, 4, 6);  // moves the cursor; the release of button 3 is not reported either
  host->press(3, 6, 2);  // this field keeps the click for the caller
  EXPECT_EQ(read(), ASR_BUTTON);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 6}));
  asftrack(1);
  host->key(FSK_FOCUS_IN);  // handled, but the cursor stays: nothing to report
  host->key(FSK_RIGHT);
  EXPECT_EQ(read(), ASR_MOVED);
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 7}));
  host->key(FSK_F1);
  EXPECT_EQ(read(), ASR_PFK);  // no move: nothing to report
}

TEST_F(screen_read, focus_events_and_escape) {
  host->key(FSK_FOCUS_IN);  // not reported while focus reports are off
  host->key(FSK_FOCUS_OUT);
  EXPECT_EQ(read(), ASR_FOCUS_OUT);
  asffocus(1);
  host->key(FSK_FOCUS_IN);
  EXPECT_EQ(read(), ASR_FOCUS_IN);
  asfrole(AR_EOF, -1, 0, 0, 0);  // with Esc free of the erase role, Ctrl+Esc is its own reason
  host->key(kEsc, FSM_CTRL);
  EXPECT_EQ(read(), ASR_ESC);
  EXPECT_EQ(value, kEsc);
  asfrole(AR_COUNT, 1, 0, 0, 0);
  EXPECT_EQ(fsstatus(), 1);
  host->key(FSK_CLOSE);
  EXPECT_EQ(read(), ASR_CLOSE);
}

TEST_F(screen_read, repeat_handles_the_last_event_again) {
  field({1, 1, 1, 1, 10});
  asfcur(1, 1, 1);
  host->type("a");
  host->key(FSK_F1 + 1);
  EXPECT_EQ(read(), ASR_PFK);
  asfrepeat(1);
  host->quiet(4);  // four quiet waits of the first delay: F2 again
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 2);
  asfrepeat(1);
  host->key(FSK_F1 + 2);  // an event during the waits stops the repeat
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 3);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  asfrepeat(1);  // not after Enter
  host->key(FSK_F1 + 3);
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 4);
}

TEST_F(screen_read, remanent_attributes_when_typing) {
  field({1, 1, 1, 1, 4, 0, 1, 0, 0, 0});
  field({2, 2, 1, 1, 4, 0, 1, 0, 0, 0, 0, FA_PLAIN});
  int h[4] = {4, 4, 4, 4};
  aschlt(1, 4, h);
  aschlt(2, 4, h);
  asfrem(1);
  asfcur(1, 1, 1);
  host->type("ab");
  asfinsert(1);  // FA_PLAIN: no insert mode, and the field's own highlight comes back
  host->key(kTab, 0, true);
  host->type("cd");
  host->key(kEnter);
  read();
  EXPECT_EQ(host->hlt_row(1).substr(0, 4), "4444");
  EXPECT_EQ(host->hlt_row(2).substr(0, 4), "0044");
  EXPECT_EQ(text(2), "cd  ");
  asfrem(0);
  asfcur(1, 1, 3);
  asfinsert(0);
  host->type("x");
  host->key(kEnter);
  read();
  EXPECT_EQ(host->hlt_row(1).substr(0, 4), "4404");
}

TEST_F(screen_read, immediate_field_paint) {
  field({1, 3, 3, 1, 6});
  asrefresh();
  ascputd(1, 5, "quick");
  EXPECT_EQ(host->row(3).substr(2, 6), "quick ");
  asdrawfld(4, 0);
  EXPECT_EQ(fsstatus(), 28);
}

TEST_F(screen_read, pages_keep_their_own_fields_and_cursor) {
  field({1, 1, 1, 1, 5});
  put(1, "zero");
  fspcrt(1, 0, 0, 0);
  field({1, 5, 5, 1, 5});
  asfcur(1, 1, 1);
  host->type("one");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->row(5).substr(4, 3), "one");
  EXPECT_EQ(host->row(1).substr(0, 4), "    ");
  fspsel(0);
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->row(1).substr(0, 4), "zero");  // selecting repaints the whole page
  EXPECT_EQ(host->row(5).substr(4, 3), "   ");
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 1}));
}

TEST_F(screen_read, random_events_and_records_keep_the_page_sound) {
  // A deterministic storm of field definitions (good and bad) and events: every read ends with a known reason,
  // the cursor stays on the grid, and every field stays readable at its size.
  uint32_t seed = 12345;
  auto next = [&seed](int n) {
    seed = seed * 1103515245u + 12345u;
    return static_cast<int>((seed >> 8) % static_cast<uint32_t>(n));
  };
  const int codes[] = {kEnter, kTab, kDel, kBack, kEsc, 10, 'a', '7', ' ', FSK_UP, FSK_DOWN, FSK_LEFT, FSK_RIGHT,
                       FSK_HOME, FSK_END, FSK_INSERT, FSK_F1, FSK_PGUP};
  asfquiet(1);
  for (int round = 0; round < 200; ++round) {
    int rec[14] = {next(12) - 1, next(26), next(82), next(3), next(120) - 5, next(3), 1, next(70), 0,
                   next(5),      0,        next(16384), 0, next(2)};
    asrfmt(1, 14, rec);
    EXPECT_TRUE(fsstatus() == 0 || fsstatus() == 1 || fsstatus() == 4) << fserror();
    for (int e = 0; e < 10; ++e) {
      switch (next(4)) {
        case 0: host->click(1 + next(3), 1 + next(24), 1 + next(80), next(2) ? FSM_SHIFT : 0); break;
        case 1: host->drag(1 + next(24), 1 + next(80)); break;
        default: host->key(codes[next(static_cast<int>(std::size(codes)))], next(3) ? 0 : FSM_SHIFT, next(2)); break;
      }
    }
    host->key(kEnter);
    int kind = read();
    EXPECT_NE(kind, ASR_QUIT);
    auto [line, col] = cursor();
    EXPECT_TRUE(line >= 1 && line <= 24 && col >= 1 && col <= 80);
    if (round % 50 == 49) asclear();
    while (host->pending() > 0) read();  // drain what an early result left
  }
  for (int id = 1; id <= 10; ++id) {
    int q[5];
    asqfld(0, id, 5, q);
    if (fsstatus() != 0) continue;
    auto s = ascget_char(id, 0);
    ASSERT_TRUE(s.has_value());
    int cells = q[3] == 1 ? q[4] : q[3] * q[4];
    EXPECT_EQ(static_cast<int>(s->size()), cells);
  }
}

TEST_F(screen_read, pastes_are_typed_refused_or_reported) {
  field({1, 1, 1, 1, 20});
  asfcur(1, 1, 1);
  // A reader that takes no pastes: the text is typed (a tab through Ctrl+Tab, other control bytes dropped).
  asfinsert(1);
  host->paste("ab\tc\x01");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(text(1).substr(0, 4), "ab\tc");
  EXPECT_EQ(cursor(), (std::pair<int, int>{1, 5}));
  // With line ends it would run line by line: refused with the flash, and nothing is typed.
  int flashes = host->flashes;
  host->paste("x\ny");
  host->key(kEnter);
  EXPECT_EQ(read(), ASR_ENTER);
  EXPECT_EQ(host->flashes, flashes + 1);
  EXPECT_EQ(text(1).substr(0, 5), "ab\tc ");
  // A reader that takes them gets the whole text as the reason's own, and the typing before it stays.
  asfpaste(1);
  host->type("Z");
  host->paste("one\ntwo\n");
  EXPECT_EQ(read(), ASR_PASTE);
  EXPECT_EQ(asqpaste(), "one\ntwo\n");
  EXPECT_EQ(nmod, 1);
  EXPECT_EQ(text(1).substr(0, 5), "ab\tcZ");
  asfpaste(0);
}
