// The mouse in the editor on the test host: where a press puts the cursor, what the wheel, the view's first row,
// the prefix area, button 3 and the ring bar do, the click count, and the MOUSEMode and WHeel settings.
#include "editor/mouse.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/command.h"
#include "editor/ring.h"
#include "live_editor.h"

namespace {

using mouse_test = live_editor;

std::vector<std::string> numbered(int n) {
  std::vector<std::string> v;
  for (int i = 1; i <= n; ++i) v.push_back("line " + std::to_string(i));
  return v;
}

TEST_F(mouse_test, button_1_puts_the_cursor_on_text_command_line_and_prefix_fields) {
  start();
  file_with({"alpha", "beta", "gamma"});
  xf_current_line() = 0;
  xf_compose();
  host->click(1, row_of(1), col_of(3));  // on "beta", behind "bet"
  end_read();
  turn();
  xf_place p = xf_cursor_place();
  EXPECT_EQ(p.kind, XP_LINE);
  EXPECT_EQ(p.line, 1);
  EXPECT_EQ(p.column, 3);
  // Past the end of a line's text the cursor still goes to the cell.
  host->click(1, row_of(2), col_of(20));
  end_read();
  turn();
  p = xf_cursor_place();
  EXPECT_EQ(p.kind, XP_LINE);
  EXPECT_EQ(p.line, 2);
  EXPECT_EQ(p.column, 20);
  // The command line: its field begins behind "====> ".
  const int cmd_row = xf_ring.views[0]->top + xf_scr.views[0].cmd_row - 1;
  host->click(1, cmd_row, 10);
  end_read();
  turn();
  p = xf_cursor_place();
  EXPECT_EQ(p.kind, XP_CMD);
  EXPECT_EQ(p.column, 4);
  // A prefix field, ready for a prefix command; the press also marks a drag of whole lines.
  host->press(1, row_of(0), 2);
  end_read();
  turn();
  p = xf_cursor_place();
  EXPECT_EQ(p.kind, XP_PREFIX);
  EXPECT_EQ(p.line, 0);
  EXPECT_EQ(p.column, 1);
  EXPECT_TRUE(xf_mouse.prefix_drag);
  EXPECT_EQ(xf_mouse.anchor_line, 0);
  EXPECT_EQ(cur(), 0);  // a plain button 1 on a prefix field does not scroll
}

TEST_F(mouse_test, a_click_keeps_what_was_typed_and_runs_no_enter_definition) {
  start();
  file_with({"alpha", "beta"});
  xf_current_line() = 0;
  xf_keys.enter[0] = {"command bottom", XK_ONLY};
  xf_compose();
  host->click(1, row_of(0), col_of(5));
  host->type("!!");  // overwrites nothing: typed behind "alpha"
  host->click(1, row_of(1), col_of(0));
  host->type("B");
  end_read();
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"alpha!!", "Beta"}));
  // The wheel ends the read; the Enter definition (here: go to the bottom) must not run after it.
  host->wheel(false, row_of(0), col_of(0));
  turn();
  EXPECT_EQ(cur(), 1);  // down 4 stops at the last line; "bottom" would also say 1, so look at the event
  EXPECT_EQ(xf_in.ev.kind, ASR_WHEEL_DOWN);
  EXPECT_EQ(xf_in.ev.no_key, 1);
}

TEST_F(mouse_test, the_wheel_scrolls_by_the_wheel_values_and_pages_with_ctrl) {
  start();
  file_with(numbered(200));
  xf_current_line() = 0;
  auto wheel = [&](bool up, uint16_t mods) {
    host->wheel(up, 10, 20, mods);
    turn();
    return cur();
  };
  EXPECT_EQ(wheel(false, 0), 4);
  EXPECT_EQ(wheel(false, FSM_SHIFT), 14);
  EXPECT_EQ(wheel(true, 0), 10);
  int32_t before = cur();
  int32_t paged = wheel(false, FSM_CTRL);
  EXPECT_GT(paged, before + 10);  // a page is the file area less two lines
  EXPECT_EQ(wheel(true, FSM_CTRL), before);
  EXPECT_EQ(wheel(false, FSM_CTRL | FSM_SHIFT), 199);
  EXPECT_EQ(wheel(true, FSM_CTRL | FSM_SHIFT), -1);
  xfcom1("wheel 2 7", xf_run.work_dir);
  EXPECT_EQ(wheel(false, 0), 1);
  EXPECT_EQ(wheel(false, FSM_SHIFT), 8);
}

TEST_F(mouse_test, the_first_row_of_the_view_scrolls_by_four_or_eight) {
  start();
  file_with(numbered(100));
  xf_current_line() = 50;
  auto press = [&](int button, uint16_t mods) {
    host->press(button, 1, 10, mods);
    turn();
    return cur();
  };
  EXPECT_EQ(press(1, 0), 46);
  EXPECT_EQ(press(1, FSM_SHIFT), 38);
  EXPECT_EQ(press(1, FSM_ALT), 42);  // Meta turns button 1 downward
  EXPECT_EQ(press(2, 0), 46);
  EXPECT_EQ(press(2, FSM_SHIFT), 54);
  EXPECT_EQ(press(2, FSM_ALT), 50);
}

TEST_F(mouse_test, presses_in_the_prefix_area_page_through_the_file) {
  start();
  file_with(numbered(200));
  xf_current_line() = 100;
  xf_compose();
  const int page = [] {
    int32_t first = 0, last = 0;
    xf_file_rows(*xf_ring.views[0], first, last);
    return last - first + 1 - 2;
  }();
  auto press = [&](int button, uint16_t mods) {
    xf_compose();
    host->press(button, row_of(cur()), 2, mods);
    turn();
    return cur();
  };
  EXPECT_EQ(press(2, 0), 100 + page);              // FORward
  EXPECT_EQ(press(2, FSM_ALT), 100);               // BAckward
  EXPECT_EQ(press(2, FSM_SHIFT), 100 + page);      // PGDown
  EXPECT_EQ(press(1, FSM_SHIFT), 100);             // PGUp
  EXPECT_EQ(press(1, FSM_ALT), 100 + page);        // FORward
  EXPECT_EQ(press(1, FSM_CTRL), -1);               // TOP
  xf_current_line() = 100;
  EXPECT_EQ(press(2, FSM_CTRL), 199);              // Bottom
  // The prefix columns of an empty row below the end have no field: a plain button 1 there goes backward.
  xf_current_line() = 199;
  xf_compose();
  ASSERT_FALSE(xf_scr.views[0].below.empty());
  int empty_row = row_of(199) + 2;
  host->press(1, empty_row, 2);
  turn();
  EXPECT_EQ(cur(), 199 - page);
}

TEST_F(mouse_test, button_3_with_shift_makes_the_row_current_or_says_invalid_field) {
  start();
  file_with(numbered(20));
  xf_current_line() = 0;
  xf_compose();
  host->press(3, row_of(5), col_of(2), FSM_SHIFT);
  turn();
  EXPECT_EQ(cur(), 5);
  xf_compose();
  host->press(3, row_of(-1), col_of(0), FSM_SHIFT);  // the top-of-file row is no line of the file
  turn();
  EXPECT_EQ(cur(), 5);
  std::string shown = xf_ring.views[0]->message_text.empty() ? last_msg() : xf_ring.views[0]->message_text;
  EXPECT_EQ(shown.substr(0, shown.find_last_not_of(' ') + 1), "..... Invalid field");
  // Without Shift, button 3 goes to a popup, and the editor sets none.
  host->press(3, row_of(7), col_of(0));
  end_read();
  turn();
  EXPECT_EQ(cur(), 5);
}

TEST_F(mouse_test, a_press_on_the_ring_bar_brings_that_file_to_the_front) {
  start();
  file_with({"a"}, "/tmp/first.txt");
  file_with({"b"}, "/tmp/second.txt");
  EXPECT_EQ(xf_ring.file->name, "/tmp/second.txt");
  xf_compose();
  const xf_view_fields& vf = xf_scr.views[0];
  ASSERT_EQ(vf.ring_spans.size(), 2u);
  host->press(1, vf.ring_row, vf.ring_spans[0].first + 2);
  turn();
  EXPECT_EQ(xf_ring.file->name, "/tmp/first.txt");
  xf_compose();
  host->press(2, xf_scr.views[0].ring_row, xf_scr.views[0].ring_spans[1].second);
  turn();
  EXPECT_EQ(xf_ring.file->name, "/tmp/second.txt");
}

TEST_F(mouse_test, the_click_count_grows_at_one_cell_within_the_double_click_time) {
  start();
  xf_mouse_reset();
  EXPECT_EQ(xf_click_count(5, 5, 1'000'000), 1);
  EXPECT_EQ(xf_click_count(5, 5, 1'200'000), 2);
  EXPECT_EQ(xf_click_count(5, 5, 1'400'000), 3);
  EXPECT_EQ(xf_click_count(5, 5, 1'500'000), 1);  // a fourth press counts as one
  EXPECT_EQ(xf_click_count(5, 6, 1'600'000), 1);  // another cell
  EXPECT_EQ(xf_click_count(5, 6, 2'000'000), 1);  // too late
  EXPECT_EQ(xf_click_count(5, 6, 2'100'000), 2);
  // Through the read: two presses on a line's text, then one after a pause.
  file_with({"alpha"});
  xf_current_line() = 0;
  xf_compose();
  host->click(1, row_of(0), col_of(1));
  host->click(1, row_of(0), col_of(1));
  end_read();
  turn();
  EXPECT_EQ(xf_mouse.count, 2);
  host->advance(500000);
  host->click(1, row_of(0), col_of(1));
  end_read();
  turn();
  EXPECT_EQ(xf_mouse.count, 1);
}

TEST_F(mouse_test, button_2_on_text_places_the_cursor_only_where_it_would_extend_a_selection) {
  start();
  file_with({"alpha", "beta"});
  xf_current_line() = 0;
  xf_compose();
  host->click(1, row_of(0), col_of(0));
  host->click(2, row_of(1), col_of(2));  // WINDOWS: would paste a selection, and there is none
  end_read();
  turn();
  EXPECT_EQ(xf_cursor_place().line, 0);
  xfcom1("mousemode openlook", xf_run.work_dir);
  host->click(2, row_of(1), col_of(2));  // OPENLOOK: extends, so the cursor goes there
  end_read();
  turn();
  EXPECT_EQ(xf_cursor_place().line, 1);
  EXPECT_EQ(xf_cursor_place().column, 2);
}

TEST(mouse_settings, mousemode_words_reports_and_faults) {
  fresh_editor();
  xf_input_reset();
  auto run = [](const std::string& c) {
    xfcom1(c, "/tmp");
    return last_msg();
  };
  EXPECT_EQ(run("mousemode"), "..... Is MOTIF");  // the start value in batch
  const std::pair<const char*, const char*> cases[] = {
      {"mousemode o", "..... Is OPENLOOK"},          {"mousemode openlook", "..... Is OPENLOOK"},
      {"mousemode openlookw", "..... Is OPENLOOK WHEEL"}, {"mousemode W", "..... Is WINDOWS"},
      {"mousemode fullm", "..... Is WINDOWS"},        {"mousemode m", "..... Is MOTIF"},
  };
  for (const auto& [cmd, report] : cases) {
    xfcom1(cmd, "/tmp");
    EXPECT_EQ(rc, 0) << cmd;
    EXPECT_EQ(run("mousemode"), report) << cmd;
  }
  for (const char* bad : {"mousemode x", "mousemode openlookwx", "mousemode m o"}) {
    EXPECT_EQ(run(bad), "..... Invalid parameters") << bad;
    EXPECT_EQ(rc, 1) << bad;
  }
  EXPECT_EQ(run("mousemode"), "..... Is MOTIF");  // a fault leaves the old value
  EXPECT_EQ(run("query mousemode"), "..... Is MOTIF");
}

TEST(mouse_settings, wheel_values_report_and_faults) {
  fresh_editor();
  xf_input_reset();
  auto run = [](const std::string& c) {
    xfcom1(c, "/tmp");
    return last_msg();
  };
  EXPECT_EQ(run("wheel"), " ..... Is 4 10");
  xfcom1("wheel 3 12", "/tmp");
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(run("wheel"), " ..... Is 3 12");
  for (const char* bad : {"wheel 5", "wheel a 3", "wheel 1 2 3", "wheel -1 2", "wheel 9999999 1"}) {
    EXPECT_EQ(run(bad), "..... Invalid parameters") << bad;
    EXPECT_EQ(rc, 1) << bad;
  }
  EXPECT_EQ(run("wheel"), " ..... Is 3 12");
}

}  // namespace
