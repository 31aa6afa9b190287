// The undo journal: steps, redo, the change counters, and long random chains of line commands.
#include <gtest/gtest.h>

#include <random>

#include "editor/journal.h"
#include "editor/select.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

// One user-level command: a new step, then the command.
int32_t run(const std::string& cmd) {
  xf_new_step();
  return xfcom2(cmd, "/tmp");
}

int undo_all() {
  int n = 0;
  while (xf_undo()) ++n;
  return n;
}

}  // namespace

TEST(Journal, UndoRedoOneStepAtATimeWithoutCopyingText) {
  fresh_editor();
  file_with({"a", "b", "c"});
  xf_file& f = *xf_ring.file;
  const char* b_buffer = f.text[1].get();
  run(":2");
  run("delete 1");
  EXPECT_EQ(lines_of(f), (lines{"a", "c"}));
  run(":1");
  run("input x");
  EXPECT_EQ(lines_of(f), (lines{"a", "x", "c"}));
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(lines_of(f), (lines{"a", "c"}));
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(lines_of(f), (lines{"a", "b", "c"}));
  // The deleted line came back as the very buffer that left the file.
  EXPECT_EQ(f.text[1].get(), b_buffer);
  EXPECT_FALSE(xf_undo());
  EXPECT_TRUE(xf_redo());
  EXPECT_EQ(lines_of(f), (lines{"a", "c"}));
  EXPECT_TRUE(xf_redo());
  EXPECT_EQ(lines_of(f), (lines{"a", "x", "c"}));
  EXPECT_FALSE(xf_redo());
  EXPECT_TRUE(xf_undo());
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(f.text[1].get(), b_buffer);
}

TEST(Journal, TheCursorGoesBackToTheChange) {
  fresh_editor();
  file_with({"a", "b", "c"});
  xf_file& f = *xf_ring.file;
  xf_ring.read_view = 0;
  xf_ring.read_line = 2;
  xf_ring.read_column = 4;
  run(":3");
  run("replace x");
  xf_ring.read_view = -1;
  xf_undo();
  EXPECT_EQ(f.cursor.line, 2);
  EXPECT_EQ(f.cursor.column, 4);
  EXPECT_EQ(f.cursor.priority, 257);
  EXPECT_EQ(lines_of(f), (lines{"a", "b", "c"}));
}

TEST(Journal, EverythingOneCommandDoesIsOneStep) {
  fresh_editor();
  file_with({"1", "2", "3", "4", "5", "6"});
  xf_file& f = *xf_ring.file;
  run(":2");
  run("move 2 3");  // a delete and an insert
  EXPECT_EQ(lines_of(f), (lines{"1", "4", "5", "2", "3", "6"}));
  EXPECT_EQ(f.alt_save, 1);
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(lines_of(f), (lines{"1", "2", "3", "4", "5", "6"}));
  EXPECT_EQ(f.alt_save, 0);
  EXPECT_TRUE(xf_redo());
  EXPECT_EQ(lines_of(f), (lines{"1", "4", "5", "2", "3", "6"}));
}

TEST(Journal, CountersFollowUndoAndANewChangeEndsRedo) {
  fresh_editor();
  file_with({"a", "b", "c"});
  xf_file& f = *xf_ring.file;
  run("input 1");
  run("input 2");
  run("input 3");
  EXPECT_EQ(f.alt_save, 3);
  run("undo 5");  // stops when the stack is empty
  EXPECT_EQ(f.alt_save, 0);
  EXPECT_EQ(lines_of(f), (lines{"a", "b", "c"}));
  run("redo");
  EXPECT_EQ(f.alt_save, 1);
  run("input new");  // a change at the start of a step: nothing left to redo
  EXPECT_FALSE(xf_redo());
  run("undo all");
  EXPECT_EQ(lines_of(f), (lines{"a", "b", "c"}));
  EXPECT_EQ(run("undo x"), 1);
  EXPECT_EQ(queued_messages().back(), "..... Invalid parameters");
}

TEST(Journal, SelectionLevelsComeBackWithTheirLines) {
  fresh_editor();
  file_with({"a", "b", "c", "d"});
  xf_file& f = *xf_ring.file;
  f.select[1] = 7;
  f.select[2] = 9;
  xf_ring.view->scope = 1;
  run(":1");
  run("delete 3");
  EXPECT_EQ(lines_of(f), (lines{"d"}));
  xf_undo();
  EXPECT_EQ(lines_of(f), (lines{"a", "b", "c", "d"}));
  EXPECT_EQ(f.select[1], 7);
  EXPECT_EQ(f.select[2], 9);
}

TEST(Journal, AltAndSaveClearUndo) {
  fresh_editor();
  file_with({"a"});
  xf_file& f = *xf_ring.file;
  run(":1");
  run("input b");
  f.alt_auto = 1;
  run("alt");
  EXPECT_EQ(queued_messages().back(), "..... 1 1");
  run("alt 4 0");  // like a save: the undo stack goes under SAVEClearundo ON
  EXPECT_FALSE(xf_undo());
  run("input c");
  run("saveclearundo off");
  run("alt 0 0");
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(lines_of(f), (lines{"a", "b"}));
  EXPECT_EQ(run("alt -1"), 1);
  run("saveclearundo");
  EXPECT_EQ(queued_messages().back(), "..... Is OFF");
}

TEST(Journal, UndoAfterAChangeKeepsTheFileChangedWhenOlderStepsRemain) {
  fresh_editor();
  file_with({"a"});
  xf_file& f = *xf_ring.file;
  run("input b");
  run("input c");
  f.alt_save = 1;  // as after a save that kept the journal
  xf_undo();
  EXPECT_EQ(f.alt_save, 1);
  xf_undo();
  EXPECT_EQ(f.alt_save, 0);
}

// Random chains of line commands: undoing every step gives back the original byte for byte, and redoing
// every step gives back the final file.
TEST(Journal, RandomChainsUndoToTheOriginalAndRedoToTheEnd) {
  const std::vector<std::string> commands = {
      "delete 2",     "delete -1",   "delete /q/",     "input new line",  "add 2",         "replace changed",
      "copy 2 3",     "move 1 -2",   "move 3 :2",      "duplicat 2",      "dup 1 2",       "shift right 3 2",
      "shift left 2 *", "upper 3",   "lower -2",       "merge 1 +3 4",    "cappend tail",  "cinsert ins",
      "coverlay a_b", "creplace ZZ", "get",            "put 3",           "putd 2",        "top",
      "next 1",       ":3",          "/e/",            "-/a/",            "~/x/",          "delete *",
      "input",        "2",           "+2",             "-1",              "up 1",          "*"};
  std::mt19937 rng(20261123);
  int changed_rounds = 0;
  for (int round = 0; round < 60; ++round) {
    fresh_editor();
    lines start;
    std::uniform_int_distribution<int> nlines(0, 12);
    const std::string words[] = {"alpha", "beta  gamma", "quux", "e", "", "xyz", "  indented", "ABC def"};
    for (int k = nlines(rng); k > 0; --k) start.push_back(words[rng() % 8] + std::to_string(k));
    file_with(start);
    xf_file& f = *xf_ring.file;
    std::uniform_int_distribution<std::size_t> pick(0, commands.size() - 1);
    int steps = 20 + static_cast<int>(rng() % 30);
    std::vector<std::string> done;
    for (int s = 0; s < steps; ++s) {
      done.push_back(commands[pick(rng)]);
      run(done.back());
      ASSERT_LE(f.size, f.capacity);
      ASSERT_GE(xf_current_line(), xf_ring.lowest_line);
      ASSERT_LT(xf_current_line(), std::max(f.size, 1));
    }
    lines end = lines_of(f);
    if (end != start) ++changed_rounds;
    std::string trail;
    for (auto& d : done) trail += d + "; ";
    undo_all();
    ASSERT_EQ(lines_of(f), start) << "round " << round << ": " << trail;
    EXPECT_EQ(f.alt_save, 0);
    while (xf_redo()) {
    }
    ASSERT_EQ(lines_of(f), end) << "round " << round << ": " << trail;
    undo_all();
    ASSERT_EQ(lines_of(f), start) << "round " << round << " (second undo): " << trail;
  }
  EXPECT_GT(changed_rounds, 50);
}

TEST(Journal, UndoAndRedoActInTheViewUnderTheCursor) {
  fresh_editor();
  file_with({"a"}, "/tmp/one.txt");
  file_with({"b"}, "/tmp/two.txt");
  // View 0 shows two.txt; a second view shows one.txt.
  int32_t v2 = xf_new_view(12, 1, 11, 80, 0, 1, 1);
  xf_ring.views[v2]->current_file = 0;
  xf_set_view(v2);
  xf_current_line() = 0;
  run("input in one");
  xf_set_view(0);
  xf_current_line() = 0;
  run("input in two");
  ASSERT_EQ(xf_ring.file->name, "/tmp/two.txt");

  xf_ring.read_view = v2;  // the cursor was last read in the second view
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(xf_ring.view_no, v2);
  EXPECT_EQ(lines_of(*xf_ring.files[0]), (lines{"a"}));
  EXPECT_EQ(lines_of(*xf_ring.files[1]), (lines{"b", "in two"})) << "the other view's file is untouched";

  xf_set_view(0);
  EXPECT_TRUE(xf_redo());
  EXPECT_EQ(xf_ring.view_no, v2);
  EXPECT_EQ(lines_of(*xf_ring.files[0]), (lines{"a", "in one"}));

  xf_set_view(0);
  xf_ring.read_view = -1;  // no cursor noted: the current view stays
  EXPECT_TRUE(xf_undo());
  EXPECT_EQ(xf_ring.view_no, 0);
  EXPECT_EQ(lines_of(*xf_ring.files[1]), (lines{"b"}));
}

TEST(Journal, UndoDropsWaitingPrefixCommandsAndTheSelection) {
  fresh_editor();
  file_with({"a", "b", "c"});
  run(":1");
  run("input x");
  run("pending on d");
  run("s_set linear nopending 1 1 1 *");
  ASSERT_FALSE(xf_ring.file->prefix_pending_a.empty());
  EXPECT_TRUE(xf_undo());
  EXPECT_TRUE(xf_ring.file->prefix_pending_a.empty());
  EXPECT_FALSE(xf_sel_active());
}
