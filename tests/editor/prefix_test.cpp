// The prefix area: reading typed prefix texts, the pending lists, the run's order, PENDing, PREfix and RESet.
#include "editor/prefix.h"

#include <gtest/gtest.h>

#include "editor/journal.h"
#include "editor/linecmds.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

// A file of lines "1" .. "n", line 0 current.
void numbered(int n) {
  std::vector<std::string> v;
  for (int k = 1; k <= n; ++k) v.push_back(std::to_string(k));
  fresh_file(v);
}

// Types a prefix text on a 0-based line, as one screen input would.
void type(int32_t line, const std::string& text) { xf_prefix_read(0, line, text, 5 + line); }

// One Enter: a new undo step, then the prefix run.
void enter() {
  xf_new_step();
  xf_prefix_run();
}

lines now() { return lines_of(*xf_ring.file); }
const xf_file& f() { return *xf_ring.file; }

std::string shown(int32_t line) {
  std::string t;
  bool error = false;
  if (!xf_prefix_display(f(), line, t, error)) return "";
  return error ? "!" + t : t;
}

}  // namespace

TEST(PrefixRead, NamesCountsAndTheirSpellings) {
  numbered(10);
  type(0, "3d");
  type(1, "d3");
  type(2, "d 3");
  type(3, "\"3");
  type(4, "3\"");
  type(5, "cc");
  type(6, "pu2");
  type(7, "sc");
  EXPECT_EQ(shown(0), "D3");
  EXPECT_EQ(shown(1), "D3");
  EXPECT_EQ(shown(2), "D3");
  EXPECT_EQ(shown(3), "\"3");
  EXPECT_EQ(shown(4), "\"3");
  EXPECT_EQ(shown(5), "CC");
  EXPECT_EQ(shown(6), "PU2");
  EXPECT_EQ(shown(7), "SCALE");
  EXPECT_EQ(f().prefix_pending_a.size(), 7u);
  EXPECT_EQ(f().prefix_pending_b.size(), 1u);
  EXPECT_EQ(xf_prefix_legend(f()), " Pending: D3:1 D3:2 D3:3 \"3:4 \"3:5 PU2:7 SCALE:8 CC:6");
}

TEST(PrefixRead, NonsenseStaysAsAnErrorTextUntilOvertyped) {
  numbered(5);
  type(1, "zz");
  type(2, "d x");
  type(-1, "m");
  EXPECT_EQ(shown(1), "!zz");
  EXPECT_EQ(shown(2), "!d x");
  EXPECT_EQ(shown(-1), "!m") << "a move cannot start on the top-of-file row";
  enter();
  EXPECT_EQ(now().size(), 5u);
  EXPECT_EQ(shown(1), "!zz") << "an error text survives an Enter";
  type(1, "d");
  EXPECT_EQ(shown(1), "D");
  type(1, "");
  EXPECT_EQ(shown(1), "") << "blanking the field removes the command";
  enter();
  EXPECT_EQ(now().size(), 5u);
}

TEST(PrefixRead, ALabelNamesTheLineAndTakesTheNameFromAnother) {
  numbered(5);
  type(1, ".here");
  type(3, "d");
  type(3, ".here");
  ASSERT_EQ(f().points.size(), 1u);
  EXPECT_EQ(f().points[0].line, 3);
  EXPECT_EQ(shown(3), "") << "the label took the place of the pending D";
}

TEST(PrefixRun, SingleCommandsOfTheXeditTable) {
  numbered(6);
  type(0, "a2");
  type(2, "\"");
  type(4, "d");
  enter();
  EXPECT_EQ(now(), (lines{"1", "", "", "2", "3", "3", "4", "6"}));
  EXPECT_TRUE(f().prefix_pending_a.empty());
  EXPECT_EQ(f().alt_save, 3);
  xf_undo();
  EXPECT_EQ(now(), (lines{"1", "2", "3", "4", "5", "6"})) << "one Enter is one undo step";
}

TEST(PrefixRun, IAndADifferBetweenThePersonalities) {
  numbered(3);
  xf_set.mode_prefix_ispf = 1;
  type(0, "a");
  EXPECT_EQ(f().prefix_pending_b.size(), 1u) << "A is a destination in ISPF";
  type(1, "i");
  enter();
  EXPECT_EQ(now(), (lines{"1", "2", "", "3"}));
  EXPECT_EQ(shown(0), "A") << "a destination alone stays pending";
}

TEST(PrefixRun, DeleteBlockAcrossTwoEntersAndRowsMovingWithTheirLines) {
  numbered(30);
  type(2, "dd");
  enter();
  EXPECT_EQ(now().size(), 30u);
  type(5, "dd");
  enter();
  EXPECT_EQ(now().front(), "1");
  EXPECT_EQ(now()[2], "7");
  EXPECT_EQ(now().size(), 26u);

  numbered(30);
  type(9, "d");
  type(19, "dd");
  type(21, "dd");
  enter();
  lines after = now();
  EXPECT_EQ(after.size(), 26u);
  EXPECT_EQ(after[9], "11");
  EXPECT_EQ(after[17], "19");
  EXPECT_EQ(after[18], "23") << "the block moved up with its lines when D ran first";
}

TEST(PrefixRun, CopyAndMoveBlocksWithDestinations) {
  numbered(6);
  type(0, "cc");
  type(1, "cc");
  enter();
  EXPECT_EQ(now().size(), 6u) << "CC without a destination waits";
  enter();
  EXPECT_EQ(shown(0), "CC");
  type(4, "f");
  enter();
  EXPECT_EQ(now(), (lines{"1", "2", "3", "4", "5", "1", "2", "6"}));

  numbered(6);
  type(0, "mm");
  type(1, "mm");
  type(5, "p");
  enter();
  EXPECT_EQ(now(), (lines{"3", "4", "5", "1", "2", "6"}));

  numbered(6);
  type(4, "m2");
  type(-1, "f");
  enter();
  EXPECT_EQ(now(), (lines{"5", "6", "1", "2", "3", "4"})) << "a destination on the top-of-file row puts lines first";
}

TEST(PrefixRun, DestinationInsideAMovedBlockClearsTheRows) {
  numbered(6);
  type(0, "mm");
  type(3, "mm");
  type(1, "f");
  enter();
  EXPECT_EQ(last_msg(), "..... Invalid F, P, O or OO position");
  EXPECT_EQ(now(), (lines{"1", "2", "3", "4", "5", "6"}));
  EXPECT_TRUE(f().prefix_pending_b.empty()) << "none of the three stays";
}

TEST(PrefixRun, PutAndGetThroughThePrefixBuffer) {
  numbered(4);
  type(0, "pu2");
  enter();
  type(3, "g");
  enter();
  type(0, "g");
  enter();
  EXPECT_EQ(now(), (lines{"1", "1", "2", "2", "3", "4", "1", "2"}));
}

TEST(PrefixRun, ShiftAndDuplicateBlocks) {
  fresh_file({"a", "b", " c"});
  type(0, ">>2");
  type(1, ">>");
  type(2, "<");
  enter();
  EXPECT_EQ(now(), (lines{"  a", "  b", "c"}));
  type(0, "\"\"");
  type(1, "''2");
  enter();
  EXPECT_EQ(now(), (lines{"  a", "  b", "  a", "  b", "  a", "  b", "c"}));
}

TEST(PrefixRun, ExcludeAndShow) {
  numbered(8);
  xf_current_line() = 2;
  type(1, "xx");
  type(4, "xx");
  enter();
  EXPECT_FALSE(xf_in_scope(2));
  EXPECT_EQ(xf_current_line(), 5) << "the current line leaves the hidden block";
  type(0, "s");
  enter();
  for (int l = 0; l < 8; ++l) EXPECT_TRUE(xf_in_scope(l)) << l;

  type(1, "x3");
  enter();
  type(1, "s-1");
  enter();
  EXPECT_FALSE(xf_in_scope(1));
  EXPECT_FALSE(xf_in_scope(2));
  EXPECT_TRUE(xf_in_scope(3)) << "S-1 shows the last hidden line above the next shown one";
}

TEST(PrefixRun, OverlayFillsBlanksInsideTheZone) {
  fresh_file({"ab cd", "x   y", "    z"});
  type(0, "c");
  type(1, "o2");
  enter();
  EXPECT_EQ(now(), (lines{"ab cd", "xb cy", "ab cz"}));
}

TEST(PrefixRun, OutOfScopeRowsAreClearedAndReadOnlyFilesRefuse) {
  numbered(4);
  f();
  xf_ring.file->select[1] = 5;  // hidden under DISPlay 0 0
  type(1, "d");
  enter();
  EXPECT_EQ(last_msg(), "..... Line not in scope");
  EXPECT_EQ(now().size(), 4u);

  xf_ring.file->read_write = 0;
  type(2, "d");
  type(3, "x");
  enter();
  EXPECT_EQ(last_msg(), "..... Read only file; use the \"RW ON\" command before");
  EXPECT_EQ(now().size(), 4u);
  EXPECT_FALSE(xf_in_scope(3)) << "a command that changes no line still runs";
}

TEST(PrefixRun, AMacroRowThatCannotRunBecomesAnErrorText) {
  numbered(3);
  cmd("pending on mymac 1 2");
  EXPECT_EQ(shown(0), "mymac1 2");
  enter();
  EXPECT_EQ(last_msg(), "..... Unable to execute macro \"mymac\".");
  EXPECT_EQ(shown(0), "!mymac 1 2");
}

TEST(PendingCommand, FormsAndFailures) {
  numbered(5);
  xf_current_line() = 1;
  EXPECT_EQ(cmd("pending"), 5);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  EXPECT_EQ(cmd("pending on"), 5);
  EXPECT_EQ(cmd("pending sideways d"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("pending on d"), 0);
  EXPECT_EQ(shown(1), "D");
  EXPECT_EQ(cmd("pending block CC"), 0);
  EXPECT_EQ(f().prefix_pending_b.size(), 1u);
  EXPECT_EQ(cmd("pending b cc"), 0);
  EXPECT_EQ(f().prefix_pending_b[0].kind, -1) << "the block table compares exactly as written";
  EXPECT_EQ(cmd("pending error not good"), 0);
  EXPECT_EQ(cmd("pending off"), 0);
  EXPECT_EQ(shown(1), "!not good") << "OFF removes the rows; the error text stays until overtyped";
  EXPECT_TRUE(f().prefix_pending_a.empty());
  EXPECT_TRUE(f().prefix_pending_b.empty());
  cmd("reset");
  EXPECT_EQ(shown(1), "");
}

TEST(PendingCommand, AThousandthRowIsRefused) {
  numbered(1200);
  for (int32_t l = 0; l < 999; ++l) type(l, "x");
  EXPECT_EQ(f().prefix_pending_a.size(), 999u);
  xf_current_line() = 1100;
  EXPECT_EQ(cmd("pending on d"), 1);
  EXPECT_EQ(last_msg(), "..... Too many prefix commands");
  EXPECT_EQ(f().prefix_pending_a.size(), 999u);
}

TEST(PrefixCommand, SettingsReportsAndSynonyms) {
  numbered(2);
  cmd("prefix");
  EXPECT_EQ(last_msg(), "..... Is ON LEFT");
  cmd("prefix on right");
  cmd("prefix");
  EXPECT_EQ(last_msg(), "..... Is ON RIGHT");
  cmd("prefix off");
  cmd("prefix");
  EXPECT_EQ(last_msg(), "..... Is OFF");
  EXPECT_EQ(cmd("prefix sideways"), 1);
  cmd("prefix_screen nulls");
  EXPECT_EQ(xf_ring.view->defaults.prefix_nulls, 1);
  cmd("prefix synonym zap mydel");
  cmd("prefix synonym zap");
  EXPECT_EQ(last_msg(), "zap mydel");
  cmd("prefix synonym other");
  EXPECT_EQ(last_msg(), "other other");
  cmd("prefix synonym zap newdel");
  cmd("prefix s *");
  EXPECT_EQ(last_msg(), "zap newdel");
}

TEST(PendingCommand, QueryListsRowsByNameOrOldName) {
  numbered(6);
  cmd("prefix synonym zap mydel");
  xf_current_line() = 1;
  cmd("pending on zap 7 x");
  xf_current_line() = 3;
  cmd("pending block CC");
  type(4, "d2");
  queued_messages().clear();
  cmd("query pending *");
  ASSERT_EQ(queued_messages().size(), 3u);
  EXPECT_EQ(queued_messages()[0], "Line 4: 'CC', Oldname='CC'") << "the block list comes first";
  EXPECT_EQ(queued_messages()[1], "Line 2: 'zap', Oldname='mydel', OP1='7', OP2='x'");
  EXPECT_EQ(queued_messages()[2], "Line 5: 'd', Oldname='d', OP1='2'");
  queued_messages().clear();
  cmd("query pending oldname mydel");
  ASSERT_EQ(queued_messages().size(), 1u);
  EXPECT_EQ(queued_messages()[0].substr(0, 7), "Line 2:");
  queued_messages().clear();
  cmd("query pending block *");
  EXPECT_EQ(queued_messages().size(), 1u);
  EXPECT_EQ(cmd("query pending"), 5);
}
