// Line commands: ranges, scope, STAY, the change counter, the column pointer and bad operands.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

#include "editor/journal.h"
#include "editor/linecmds.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"
#include "rexx/paloma.h"

using lines = std::vector<std::string>;

namespace {

int32_t run(const std::string& cmd) {
  xf_new_step();
  return xfcom2(cmd, "/tmp");
}
xf_file& file() { return *xf_ring.file; }
lines now() { return lines_of(file()); }

void numbered(int n) {
  fresh_editor();
  lines l;
  for (int k = 1; k <= n; ++k) l.push_back(std::to_string(k));
  file_with(l);
}

}  // namespace

TEST(LineDelete, CountsTargetsAndTheEnd) {
  numbered(6);
  run(":2");
  EXPECT_EQ(run("delete 0"), 0);
  EXPECT_EQ(now().size(), 6u);
  run("delete /4/");
  EXPECT_EQ(now(), (lines{"1", "4", "5", "6"}));
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(file().alt_save, 1);
  run(":3");
  EXPECT_EQ(run("delete 5"), 1);  // runs off the file: what is there goes
  EXPECT_EQ(now(), (lines{"1", "4"}));
  run("delete -1");
  EXPECT_EQ(now(), (lines{"1"}));
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(run("delete /nothing/"), 2);
  EXPECT_EQ(run("delete 99999999999"), 5);
  EXPECT_EQ(now(), (lines{"1"}));
  run("top");
  run("delete *");
  EXPECT_EQ(file().size, 0);
  EXPECT_EQ(cur(), -1);
}

TEST(LineDelete, OnlyLinesInScopeAndBothPersonalities) {
  numbered(6);
  file().select[2] = 5;  // "3" hidden
  run(":2");
  run("delete 3");  // three shown lines: 2, 4, 5
  EXPECT_EQ(now(), (lines{"1", "3", "6"}));
  numbered(5);
  file().points = {{".a", 1}, {".b", 3}};
  file().select[2] = 5;
  run("mode command ispf");
  run("delete .a .b x");
  EXPECT_EQ(now(), (lines{"1", "2", "4", "5"}));
  EXPECT_EQ(run("delete"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid range");
  run("delete all nx");
  EXPECT_TRUE(now().empty());
  run("mode command xedit");
  numbered(3);
  run("pdfdelete all");
  EXPECT_TRUE(now().empty());
}

TEST(LineCopyMove, TargetsAndMessages) {
  numbered(5);
  run(":3");
  run("copy 2 :1");
  EXPECT_EQ(now(), (lines{"1", "3", "4", "2", "3", "4", "5"}));
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(last_msg(), " ..... 2 lines copied");
  numbered(5);
  run(":2");
  run("move 2 1");  // just behind itself: the order stays
  EXPECT_EQ(now(), (lines{"1", "2", "3", "4", "5"}));
  run(":1");
  run("move 1 *");
  EXPECT_EQ(now(), (lines{"2", "3", "4", "5", "1"}));
  EXPECT_EQ(cur(), 4);
  EXPECT_EQ(last_msg(), " ..... 1 line moved");
  EXPECT_EQ(file().alt_save, 2);
  EXPECT_EQ(run("copy 1"), 5);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  EXPECT_EQ(run("copy 1 /zz/"), 2);
  run("mode command ispf");
  EXPECT_EQ(run("copy 1 2"), 5) << "in ISPF two words are a place, after or before a label";
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  run("xedcopy 1 -*");
  EXPECT_EQ(now().front(), "1");
}

TEST(LineDuplicateMerge, CopiesAndOverlays) {
  numbered(3);
  run(":1");
  run("duplicat 2 2");
  EXPECT_EQ(now(), (lines{"1", "2", "1", "2", "1", "2", "3"}));
  EXPECT_EQ(cur(), 5);
  EXPECT_EQ(run("dup 1 -1"), 5);
  run("dup 0");
  EXPECT_EQ(now().size(), 7u);
  fresh_editor();
  file_with({"ab", "cd", "x", "12345678901", "y"});
  run(":1");
  run("merge 2 +3 5");
  EXPECT_EQ(now(), (lines{"x", "1234ab78901", "y   cd"}));
  EXPECT_EQ(cur(), 2);
  run(":1");
  EXPECT_EQ(run("merge 2 +1"), 5);
  EXPECT_EQ(last_msg(), "..... Overlapping [1-2] [2-3] areas.");
}

TEST(LineShiftCase, RangesZoneAndStay) {
  fresh_editor();
  file_with({"abc", "def", " ", "ghi"});
  run(":3");
  run("shift right 2 3");  // two lines left in the file
  EXPECT_EQ(now(), (lines{"abc", "def", " ", "  ghi"}));
  EXPECT_EQ(cur(), 3);
  run(":1");
  run("shift left 99");
  EXPECT_EQ(now().front(), " ");
  EXPECT_EQ(run("shift up 1"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid Operand: \"up\"");
  EXPECT_EQ(run("shift"), 5);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
  EXPECT_EQ(run("shift r x"), 5);
  run("zone 2 *");
  run(":2");
  run("upper 3");
  EXPECT_EQ(now(), (lines{" ", "dEF", " ", "  GHI"}));
  EXPECT_EQ(cur(), 3);
  run("stay on");
  run(":2");
  run("lower 2");
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(now(), (lines{" ", "def", " ", "  GHI"}));
}

TEST(LineAddInputReplace, TextRulesAndTopOfFile) {
  fresh_editor();
  file_with({"x"});
  run(":1");
  run("input   lead  ");
  EXPECT_EQ(now(), (lines{"x", "  lead"}));
  run("input");
  EXPECT_EQ(now().back(), " ");
  run("top");
  run("replace first");
  EXPECT_EQ(now().front(), "first");
  EXPECT_EQ(cur(), -1);
  run(":2");
  run("replace");
  EXPECT_EQ(now()[1], " ");
  run("add 2");
  EXPECT_EQ(now().size(), 6u);
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("add x"), 5);
  EXPECT_EQ(run("add 99999999999"), 5);
  run("mode command ispf");
  EXPECT_EQ(run("replace abc"), 0) << "in ISPF REPLACE names a file, and waits for the lines to write";
  EXPECT_EQ(last_msg(), "..... PDF REPLACE pending");
  run("xedreplace abc");
  EXPECT_EQ(now()[1], "abc");
}

TEST(LineColumnCommands, PointerInsertOverlayAppend) {
  fresh_editor();
  file_with({"xyz", " "});
  run(":1");
  run("coverlay a_b");
  EXPECT_EQ(now().front(), "a b");
  run("creplace QQQQ");
  EXPECT_EQ(now().front(), "QQQQ");
  file().column = 2;
  run("cinsert --");
  EXPECT_EQ(now().front(), "QQ--QQ");
  file().column = 8;
  run("cinsert !");
  EXPECT_EQ(now().front(), "QQ--QQ  !");
  run(":2");
  run("cappend xyz");
  EXPECT_EQ(now()[1], "xyz");
  EXPECT_EQ(file().column, 0);
  run("cappend 12");
  EXPECT_EQ(now()[1], "xyz12");
  EXPECT_EQ(file().column, 3);
  run("top");
  file().column = 2;
  run("cinsert top");
  EXPECT_EQ(now().front(), "  top");
  EXPECT_EQ(cur(), 0);
  run("top");
  EXPECT_EQ(run("cappend x"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid current line");
  run("zone 5 *");
  run("cfirst");
  EXPECT_EQ(file().column, 4);
  run("clast");
  EXPECT_EQ(file().column, 0x7ffffffe);
  run(":1");
  EXPECT_EQ(run("cinsert x"), 1);  // a line that long needs a yes
  run("cfirst");
  file().column = 1;
  size_t before = now().front().size();
  run("cinsert x");  // outside the zone: nothing
  EXPECT_EQ(now().front().size(), before);
}

TEST(LineStackPutGet, BufferFilesAndErrors) {
  numbered(4);
  run(":2");
  run("stack 2 1 1");
  std::vector<std::string> stacked;
  for (std::string l; paloma_queue_pull(l);) stacked.push_back(l);
  EXPECT_EQ(stacked, (std::vector<std::string>{"2", "3"}));
  EXPECT_EQ(run("stack 1 x"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid Operand: \"1 x\"");
  run("put 2");
  EXPECT_EQ(xf_lcmd.prefix_buffer, (lines{"2", "3"}));
  run(":4");
  run("get");
  EXPECT_EQ(now(), (lines{"1", "2", "3", "4", "2", "3"}));
  EXPECT_EQ(cur(), 5);
  std::string path = "/tmp/tolva_linecmds_put.txt";
  std::remove(path.c_str());
  run(":1");
  run("putd 2 " + path);
  EXPECT_EQ(now(), (lines{"3", "4", "2", "3"}));
  std::ifstream in(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(bytes, "1\r\n2\r\n");
  run("top");
  run("get " + path + " 2 1");
  EXPECT_EQ(now().front(), "2");
  EXPECT_EQ(run("get " + path + " 5"), 1);
  EXPECT_EQ(last_msg(), "..... File " + path + " has only 2 records");
  EXPECT_EQ(run("get /tmp/no/such/file.txt"), 1);
  EXPECT_EQ(last_msg(), "..... File not found");
  EXPECT_EQ(run("put 1 /tmp/no_such_dir_x/f.txt"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid directory");
  EXPECT_EQ(run("get /tmp"), 1);
  EXPECT_EQ(last_msg(), "..... Not an editable file");
  EXPECT_EQ(run("put 1 a b c d"), 5);
  std::remove(path.c_str());
}

TEST(LineStackPutGet, AnUnreadableFileIsRefusedAndNothingChanges) {
  numbered(2);
  std::string path = "/tmp/tolva_linecmds_unreadable.txt";
  { std::ofstream(path) << "secret\n"; }
  chmod(path.c_str(), 0);
  if (std::ifstream(path).good()) {  // a privileged user reads it anyway
    std::remove(path.c_str());
    GTEST_SKIP() << "permissions do not stop this user";
  }
  EXPECT_EQ(run("get " + path), 1);
  EXPECT_EQ(last_msg(), "..... Unable to open file");
  EXPECT_EQ(now(), (lines{"1", "2"}));
  std::remove(path.c_str());
}

TEST(LineRepeatAndCursorCommands, HistoryAndBatch) {
  fresh_editor();
  file_with({"a", "b", "c", "d"});
  run(":1");
  xf_history_add("cappend !");
  xf_history_add("repeat 2");
  run("repeat 2");
  EXPECT_EQ(now(), (lines{"a", "b!", "c!", "d"}));
  EXPECT_EQ(cur(), 2);
  // Cursor commands do nothing in batch.
  EXPECT_EQ(run("c_linedel"), 0);
  EXPECT_EQ(run("spltjoin"), 0);
  EXPECT_EQ(now().size(), 4u);
  xf_run.batch = 0;
  file().cursor = xf_cursor{};
  file().cursor.view = xf_ring.view_no;
  file().cursor.line = 1;
  file().cursor.column = 2;
  run("spltjoin");
  EXPECT_EQ(now(), (lines{"a", "b", "!", "c!", "d"}));
  file().cursor.line = 0;
  file().cursor.column = 3;
  run("spltjoin");  // beyond the end: join
  EXPECT_EQ(now(), (lines{"a b", "!", "c!", "d"}));
  file().cursor.line = 2;
  run("c_dup");
  run("c_linedel");
  EXPECT_EQ(now(), (lines{"a b", "!", "c!", "d"}));
  file().cursor.screen_col = 5;
  EXPECT_EQ(run("c_lineadd"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid cursor position");
  xf_run.batch = 1;
}

TEST(LineCommands, ReadOnlyFilesAndNoFile) {
  numbered(2);
  file().read_write = 0;
  for (const char* cmd : {"delete 1", "input x", "add", "shift right 1", "copy 1 1", "get", "cappend x"}) {
    EXPECT_EQ(run(cmd), 1) << cmd;
    EXPECT_EQ(last_msg(), "..... Read only file; use the \"RW ON\" command before") << cmd;
  }
  EXPECT_EQ(now(), (lines{"1", "2"}));
  fresh_editor();
  for (const char* cmd : {"delete 1", "input x", "merge 1 2", "stack", "put", "get", "point .a", "repeat"})
    EXPECT_EQ(run(cmd), 0) << cmd;
}
