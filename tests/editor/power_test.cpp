// POWerinput: the reflow of joined lines between the margins with the cursor's character kept, the paragraph
// the reflow takes, typing that flows on to a new line at the end of a field, and the setting's words.
#include "editor/power.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/command.h"
#include "editor/filetype.h"
#include "editor/journal.h"
#include "editor/ring.h"
#include "live_editor.h"

namespace {

using lines_t = std::vector<std::string>;

TEST(power_flow, words_move_whole_and_the_cursor_keeps_its_character) {
  // MOVE: a word that would cross the limit goes to the next line; a cell stays free behind the last one.
  xf_flow_result r = xf_flow({"one two three four"}, 0, 18, 0, 10, true, false);
  EXPECT_EQ(r.lines, (lines_t{"one two", "three", "four"}));
  EXPECT_EQ(r.cursor_line, 2);
  EXPECT_EQ(r.cursor_col, 4);
  // NOMOVE: the break falls where the limit is, inside the word.
  r = xf_flow({"one two three four"}, 0, 18, 0, 10, false, false);
  EXPECT_EQ(r.lines, (lines_t{"one two th", "ree four"}));
  EXPECT_EQ(r.cursor_line, 1);
  EXPECT_EQ(r.cursor_col, 8);
  // Lines are joined without the blanks of the left margin, and each new line gets them back.
  r = xf_flow({"  alpha beta", "  gamma"}, 1, 4, 2, 8, true, false);
  EXPECT_EQ(r.lines, (lines_t{"  alpha", "  beta", "  gamma"}));
  EXPECT_EQ(r.cursor_line, 2);
  EXPECT_EQ(r.cursor_col, 4);  // still on the "m"
  // A word longer than the width is broken where the limit is.
  r = xf_flow({"abcdefghijklmnop"}, 0, 0, 0, 6, true, false);
  EXPECT_EQ(r.lines, (lines_t{"abcdef", "ghijkl", "mnop"}));
  EXPECT_EQ(r.cursor_line, 0);
  EXPECT_EQ(r.cursor_col, 0);
  // KEEPBlanks keeps the trailing blanks; a blank at a break is dropped either way.
  r = xf_flow({"ab cd  ", "ef"}, 1, 2, 0, 5, false, true);
  EXPECT_EQ(r.lines, (lines_t{"ab cd", "  ef "}));
  EXPECT_EQ(r.cursor_line, 1);
  EXPECT_EQ(r.cursor_col, 4);
}

TEST(power_pow, the_paragraph_stops_at_sentence_ends_and_blank_lines) {
  fresh_file({"End of para.", "the quick brown", "fox jumps", "", "next"});
  xf_input_reset();
  xf_ring.file->power[0] = 1;
  xf_ring.file->format[1] = 11;  // columns 1 to 12
  xf_place p;
  p.kind = XP_LINE;
  p.line = 1;
  p.column = 4;  // on the "q"
  xf_set_cursor_place(p);
  xf_new_step();
  xf_pow(1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines_t{"End of para.", "the quick", "brown fox", "jumps", "", "next"}));
  EXPECT_EQ(xf_cursor_place().line, 1);
  EXPECT_EQ(xf_cursor_place().column, 4);
  xfcom1("undo", "/tmp");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines_t{"End of para.", "the quick brown", "fox jumps", "", "next"}));
  // NOPREVIOUS: only the cursor's line and, whole, those below it take part.
  xf_ring.file->power[1] = 1;
  p.line = 2;
  p.column = 0;
  xf_set_cursor_place(p);
  xf_new_step();
  xf_pow(1);
  EXPECT_EQ(lines_of(*xf_ring.file), (lines_t{"End of para.", "the quick brown", "fox jumps", "", "next"}));
  // Off, nothing happens.
  xf_ring.file->power[0] = 0;
  xf_ring.file->power[1] = 0;
  p.line = 1;
  xf_set_cursor_place(p);
  xf_pow(1);
  EXPECT_EQ(xf_ring.file->line(1), "the quick brown");
}

using power_typing = live_editor;

TEST_F(power_typing, typing_past_the_field_flows_on_to_a_new_line) {
  start();
  std::string words;
  for (int i = 0; i < 14; ++i) words += (i ? " " : "") + std::string("abcd");  // 69 characters
  file_with({"Para one.", words});
  xf_current_line() = 0;
  xfcom1("powerinput on", xf_run.work_dir);
  xf_compose();
  host->click(1, row_of(1), col_of(69));
  host->type(" efgh ijkl");  // the field's last cell (column 74) is reached at the "h"
  end_read();
  turn();
  EXPECT_EQ(lines_of(*xf_ring.file), (lines_t{"Para one.", words, "efgh ijkl"}));
  EXPECT_EQ(xf_cursor_place().line, 2);
  EXPECT_EQ(xf_cursor_place().column, 9);
}

TEST(power_setting, words_reports_and_filetype_rows) {
  fresh_file({"x"});
  auto run = [](const std::string& c) {
    xfcom1(c, "/tmp");
    return last_msg();
  };
  EXPECT_EQ(run("powerinput"), "..... Is OFF PREVIOUS MOVE");
  xfcom1("powerinput on nop nom", "/tmp");
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(run("query powerinput"), "..... Is ON NOPREVIOUS NOMOVE");
  xfcom1("powerinput p m", "/tmp");  // the words not given keep their values
  EXPECT_EQ(run("powerinput"), "..... Is ON PREVIOUS MOVE");
  xfcom1("set powerinput no", "/tmp");  // "no" is too short for NOMOVE: NOPREVIOUS
  EXPECT_EQ(run("powerinput"), "..... Is ON NOPREVIOUS MOVE");
  for (const char* bad : {"powerinput o", "powerinput on off", "powerinput maybe", "powerinput on ft"}) {
    EXPECT_EQ(run(bad), "..... Invalid parameters") << bad;
    EXPECT_EQ(rc, 1) << bad;
  }
  EXPECT_EQ(run("powerinput"), "..... Is ON NOPREVIOUS MOVE");
  xf_ft_reset();
  xfcom1("powerinput on nomove ft txt", "/tmp");
  EXPECT_EQ(run("powerinput"), "..... Is ON NOPREVIOUS MOVE");  // the file itself is left alone
  xf_file g;
  g.name = "/tmp/notes.txt";
  xf_ft_apply(g);
  EXPECT_EQ(g.power[0], 1);
  EXPECT_EQ(g.power[1], 0);
  EXPECT_EQ(g.power[2], 1);
  xf_file h;
  h.name = "/tmp/notes.c";
  xf_ft_apply(h);
  EXPECT_EQ(h.power[0], 0);
}

}  // namespace
