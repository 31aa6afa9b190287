// The command processor: line ends, substitution, synonyms, the number and comment forms, history, macros.
#include <gtest/gtest.h>

#include <fstream>

#include "editor/macros.h"
#include "editor/messages.h"
#include "tests/editor/test_support.h"

namespace {

int32_t run(const std::string& text) {
  xfcom1(text, "/tmp");
  return rc;
}

}  // namespace

TEST(Command, UnknownWordInBatchIsAnInvalidCommand) {
  fresh_editor();
  EXPECT_EQ(run("frobnicate now"), -1);
  EXPECT_EQ(last_msg(), "..... Invalid command \"frobnicate now\"");
  EXPECT_EQ(xf_run.command_line, "frobnicate now");  // put back for the user
}

TEST(Command, NameAbuttingItsOperandGetsABlank) {
  fresh_editor();
  file_with({"a", "b"});
  EXPECT_EQ(run("input x"), 0);
  EXPECT_EQ(run("i:y"), 0);  // reaches Input as "i :y"
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"x", ":y", "a", "b"}));
}

TEST(Command, NumberGoesToTheLineThenRunsTheRest) {
  fresh_editor();
  file_with({"1", "2", "3", "4", "5", "6"});
  EXPECT_EQ(run("3"), 0);
  EXPECT_EQ(xf_current_line(), 2);
  EXPECT_EQ(run("99"), 0);
  EXPECT_EQ(xf_current_line(), 5);  // limited to the file
  EXPECT_EQ(run("5 top"), 0);
  EXPECT_EQ(xf_current_line(), -1);
  xf_ring.file->select[1] = 9;
  EXPECT_EQ(run("2"), 1);
  EXPECT_EQ(last_msg(), "..... Line not in scope");
}

TEST(Command, CommentsAndBlankStringsDoNothing) {
  fresh_editor();
  EXPECT_EQ(run("# nothing here"), 0);
  EXPECT_EQ(run("   "), 0);
  EXPECT_TRUE(queued_messages().empty());
}

TEST(Command, LineEndSplitsPiecesAndAFailureDropsTheStacked) {
  fresh_editor();
  file_with({});
  xf_stack("input stacked");
  EXPECT_EQ(run("input one\finput two"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(xf_run.stacked.size(), 1u);
  run("input three\fbogus");
  EXPECT_TRUE(xf_run.stacked.empty());
  EXPECT_EQ(run("linend on #"), 0);
  EXPECT_EQ(run("input 4#input 5"), 0);
  EXPECT_EQ(xf_ring.file->size, 5);
  // A piece that begins with SET keeps its line-end bytes.
  EXPECT_EQ(run("set synonym tw input x#input y"), 0);
  EXPECT_EQ(xf_cmd.synonyms.back().defs[0], "input x#input y");
}

TEST(Command, LineFeedInsideACommandIsRefused) {
  fresh_editor();
  EXPECT_EQ(run(std::string("msg a\nb")), 1);
  EXPECT_EQ(last_msg(), "..... Invalid \\n character within a command");
  EXPECT_EQ(run(std::string("msg a\0b", 7)), 1);  // NUL bytes count as line feeds
}

TEST(Command, SubstitutionOfFileWordsAndProtection) {
  fresh_editor();
  file_with({}, "/home/u/src/prog.c");
  xf_run.xhome = "/opt/tolva/";
  EXPECT_EQ(xf_substitute("$name $lfn $fn $fd $ft"), "/home/u/src/prog.c /home/u/src/prog prog /home/u/src c");
  EXPECT_EQ(xf_substitute("$xhome/x"), "/opt/tolva/x");
  EXPECT_EQ(xf_substitute("\\$name"), "$name");
  EXPECT_EQ(xf_substitute("\\\\$fn"), "\\prog");
  EXPECT_EQ(xf_substitute("a$fnb"), "aprogb");  // inside a word too
  EXPECT_EQ(xf_substitute("$1 stays outside macros"), "$1 stays outside macros");
  xf_set.mode_expand_on = 0;
  EXPECT_EQ(xf_substitute("$name"), "$name");
  xf_set.mode_expand_on = 1;
  xf_set.mode_expand_env = 1;
  setenv("TOLVA_TEST_VAR", "val", 1);
  EXPECT_EQ(xf_substitute("$TOLVA_TEST_VAR and $NO_SUCH_TOLVA_VAR."), "val and ");
}

TEST(Command, SubstitutionWithoutAFileLeavesFileWords) {
  fresh_editor();
  EXPECT_EQ(xf_substitute("$name"), "$name");
}

TEST(Command, StartupSynonymQuitRunsAquitAndCapitalsReachTheRow) {
  fresh_editor();
  file_with({"x"});
  xf_ring.file->alt_save = 1;
  EXPECT_EQ(run("quit"), 1);  // through "command aquit": refused, the file changed
  EXPECT_EQ(last_msg(), "..... File has been changed; type QQUIT to quit anyway");
  EXPECT_EQ(run("pquit"), 12);
  EXPECT_EQ(run("QUIT"), 1);
  EXPECT_EQ(run("qquit"), 0);
  EXPECT_EQ(xf_file_count(), 0);
}

TEST(Command, SynonymsWithLinendAndTheRestOfTheTypedText) {
  fresh_editor();
  file_with({});
  EXPECT_EQ(run("synonym ins 2 input"), 0);
  EXPECT_EQ(run("ins hello"), 0);
  EXPECT_EQ(run("in again"), 0);  // "in" is Input itself: the synonym needs "ins"
  EXPECT_EQ(run("synonym linend ; two input a;input b;"), 0);
  EXPECT_EQ(run("two"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"hello", "again", "a", "b"}));
  queued_messages().clear();
  run("query synonym");
  ASSERT_EQ(queued_messages().size(), 3u);
  EXPECT_EQ(queued_messages()[0], "SYNONYM quit 4 command aquit");
  EXPECT_EQ(queued_messages()[1], "SYNONYM ins 2 input");
  EXPECT_EQ(queued_messages()[2], "SYNONYM LINEND ; two 3 input a;input b;");
  EXPECT_EQ(run("synonym clear two"), 0);
  EXPECT_EQ(run("two"), -1);
  EXPECT_EQ(run("synonym off"), 0);
  EXPECT_EQ(run("ins x"), -1);
}

TEST(Command, HistoryAndEqual) {
  fresh_editor();
  file_with({});
  xf_history_add("input h1");
  xf_history_add("input h1");  // the same again only moves the position
  xf_history_add("= ignored");
  xf_history_add("   ");
  ASSERT_EQ(xf_cmd.history.size(), 1u);
  EXPECT_EQ(run("="), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"h1"}));
  EXPECT_EQ(run("history 1"), 0);
  xf_history_add("input h2");
  EXPECT_EQ(xf_cmd.history.size(), 1u);
  EXPECT_EQ(run("?"), 0);
  EXPECT_EQ(xf_run.command_line, "input h2");
  EXPECT_EQ(run("history x"), 5);
}

TEST(Command, EqualWithEmptyHistoryDoesNothing) {
  fresh_editor();
  EXPECT_EQ(run("="), 0);
  EXPECT_EQ(run("?"), 0);
  EXPECT_TRUE(queued_messages().empty());
}

TEST(Command, CommandMacrosWithArgumentsAndRecursion) {
  fresh_editor();
  file_with({});
  std::string dir = testing::TempDir();
  {
    std::ofstream m(dir + "/twice.x");
    m << "input $0 $1\ninput $argv   \ninput [$9]\n";
  }
  {
    std::ofstream m(dir + "/loop.x");
    m << "loop\n";
  }
  EXPECT_EQ(run("hash " + dir + "/twice.x " + dir + "/loop.x"), 0);
  EXPECT_EQ(run("twice a b"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"twice a", "a b", "[]"}));
  xf_stack("input never");
  EXPECT_EQ(run("loop"), 1);
  EXPECT_EQ(last_msg(), "..... Recursive call for \"loop\"");
  EXPECT_TRUE(xf_run.stacked.empty());
}

TEST(Command, MacroPrefixAndCommandPrefix) {
  fresh_editor();
  file_with({"1", "2", "3"});
  std::string dir = testing::TempDir();
  {
    std::ofstream m(dir + "/top.x");
    m << "input from macro\n";
  }
  run("hash " + dir + "/top.x");
  xf_current_line() = 1;
  EXPECT_EQ(run("top"), 0);  // MACRO OFF: the built-in answers first
  EXPECT_EQ(xf_current_line(), -1);
  EXPECT_EQ(run("set macro on"), 0);
  xf_current_line() = 1;
  EXPECT_EQ(run("top"), 0);  // now the macro
  EXPECT_EQ(xf_ring.file->line(2), "from macro");
  EXPECT_EQ(run("command top"), 0);
  EXPECT_EQ(xf_current_line(), -1);
  EXPECT_EQ(run("macro nosuch"), -1);
}

TEST(Command, UnbuiltRowsSayNotImplemented) {
  fresh_editor();
  EXPECT_EQ(run("help"), 1);
  EXPECT_EQ(last_msg(), "..... Not implemented");
  EXPECT_EQ(run("apl"), 0);  // a row that does nothing on purpose
}

TEST(Command, ModeWordsSetAndReport) {
  fresh_editor();
  EXPECT_EQ(run("mode expand"), 0);
  EXPECT_EQ(last_msg(), "..... Is ON NOENV");
  EXPECT_EQ(run("mode expand off env"), 0);
  EXPECT_EQ(run("mode expand"), 0);
  EXPECT_EQ(last_msg(), "..... Is OFF ENV");
  EXPECT_EQ(run("mode autoexit on"), 0);
  EXPECT_EQ(xf_set.mode_autoexit, 1);
  EXPECT_EQ(run("mode number"), 0);
  EXPECT_EQ(last_msg(), "..... Is GOTO");
  EXPECT_EQ(run("mode bogus"), 1);
  EXPECT_EQ(run("mode topline 1"), 0);
  EXPECT_EQ(xf_ring.lowest_line, 0);
}
