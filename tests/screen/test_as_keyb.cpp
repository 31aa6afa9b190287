// Tests of keyboard files: the rows they rewrite, the lines they skip, and every refusal with its line number.
#include <fstream>

#include "tests/screen/screen_fixture.h"

class screen_keyb : public screen_test {
 protected:
  std::string write(const std::string& name, const std::string& body) {
    std::string path = ::testing::TempDir() + "screen_keyb_" + name;
    std::ofstream(path) << body;
    return path;
  }
  std::string typed(const std::string& keys, uint16_t mods = 0) {
    ascput(1, 0, "");
    asfcur(1, 1, 1);
    for (char c : keys) host->key(static_cast<unsigned char>(c), mods);
    host->key(13);
    read();
    return trimmed(1);
  }
  void SetUp() override {
    screen_test::SetUp();
    field({1, 1, 1, 1, 10});
  }
};

TEST_F(screen_keyb, rows_rewritten_and_lines_skipped) {
  std::string path = write("good", R"(* a comment
# another
+ and another

f1 : whatever the terminal reader wants
CU : 0x1b
0 : 'a' : 'b'
0 : ';' : ':'
1 : 'q' : 0x40
2 : '1' : '\\'
)");
  asfkeyb(path.c_str(), 0);
  ASSERT_EQ(fsstatus(), 0) << fserror();
  EXPECT_EQ(typed("ab;"), "bb:");
  EXPECT_EQ(typed("Q"), "@");  // an emitted Shift character types from the Shift row
  asfalttab('1', 0);
  EXPECT_EQ(typed("1", FSM_ALT), "\\");
}

TEST_F(screen_keyb, emitted_rows_from_rank_6) {
  std::string path = write("rank6", "6 : 'a' : 'A'\n6 : 0x62 : 0x42\n0 : 'b' : 'z'\n");
  asfkeyb(path.c_str(), 0);
  ASSERT_EQ(fsstatus(), 0) << fserror();
  EXPECT_EQ(typed("b"), "z");
  EXPECT_EQ(typed("c"), "c");  // no longer on the keyboard: passes unchanged
}

TEST_F(screen_keyb, refusals_name_file_and_line) {
  struct row {
    const char* body;
    const char* tail;
  } rows[] = {
      {"* c\n7 : 'a' : 'b'\n", ", line 2: invalid rank"},
      {"0 : 'a'\n", ", line 1: invalid format"},
      {"0 : zz : 'b'\n", ", line 1: invalid emitted character format"},
      {"0 : 'a' : 0xfff\n", ", line 1: invalid displayed character format"},
      {"0 : '~' : 'b'\n", ", line 1: emitted character not found"},
      {"0 : 'a' : '\\q'\n", ", line 1: invalid escape format"},
      {"6 : x : 'A'\n", ", line 1: invalid lowercase character format"},
      {"6 : 'a' : y\n", ", line 1: invalid uppercase character format"},
  };
  int n = 0;
  for (const auto& r : rows) {
    std::string path = write("bad" + std::to_string(n++), r.body);
    asfkeyb(path.c_str(), 0);
    EXPECT_EQ(fsstatus(), 28) << r.body;
    EXPECT_EQ(fserror(), "asfkeyb: file " + path + r.tail);
  }
  // a refused file changes nothing
  std::string half = write("half", "0 : 'a' : 'x'\n0 : 'a'\n");
  asfkeyb(half.c_str(), 0);
  EXPECT_EQ(typed("a"), "a");
  asfkeyb("/nonexistent/keys", 0);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "asfkeyb: File /nonexistent/keys not found");
  asfkeyb(nullptr, 3);
  EXPECT_EQ(fserror(), "asfkeyb: invalid type");
}

TEST_F(screen_keyb, kind_1_turns_three_keys_into_function_keys) {
  asfkeyb(nullptr, 1);
  EXPECT_EQ(fsstatus(), 0);
  host->key(FSK_PRINT);
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 10);
  host->key(FSK_PAUSE, FSM_SHIFT);
  EXPECT_EQ(read(), ASR_PFK);
  EXPECT_EQ(value, 12 + 15);
}
