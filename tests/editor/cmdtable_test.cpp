// The command table, the hash of abbreviations, the matching rules and the message table.
#include <gtest/gtest.h>

#include "editor/cmdtable.h"
#include "editor/messages.h"

TEST(CommandTable, EveryAbbreviationReachesItsRowOrAnEarlierOne) {
  xf_cmd_init();
  const auto& e = xf_cmd_entries();
  ASSERT_EQ(e.size(), 365u);
  for (int32_t i = xf_cmd_special; i < xf_cmd_count; ++i) {
    for (int32_t l = e[i].min_len; l <= e[i].name_len; ++l) {
      int32_t row = xf_cmd_lookup(e[i].name.substr(0, l));
      ASSERT_GE(row, 0) << e[i].name << " cut to " << l;
      EXPECT_LE(row, i) << e[i].name << " cut to " << l;
      // A later row never wins a key it shares with an earlier one.
      if (row != i) {
        EXPECT_EQ(e[row].name.substr(0, l), e[i].name.substr(0, l));
      }
    }
  }
}

TEST(CommandTable, KnownRowsAndTheirMinimums) {
  xf_cmd_init();
  const auto& e = xf_cmd_entries();
  auto row = [&](const char* w) { return xf_cmd_lookup(w) >= 0 ? e[xf_cmd_lookup(w)].name : std::string("-"); };
  EXPECT_EQ(row("c"), "change");
  EXPECT_EQ(row("ch"), "change");
  EXPECT_EQ(row("cha"), "change");
  EXPECT_EQ(row("al"), "all");
  EXPECT_EQ(row("a"), "add");
  EXPECT_EQ(row("l"), "locate");
  EXPECT_EQ(row("xed"), "xedit");
  EXPECT_EQ(row("x"), "x");
  EXPECT_EQ(row("quitx"), "-");  // longer than the name: nothing
  EXPECT_EQ(row("\xbd"), "\xbd");
  EXPECT_EQ(xf_cmd_lookup("="), -1);  // the special rows are not in the hash
  EXPECT_EQ(e[xf_cmd_lookup("all")].min_len, 2);
  EXPECT_EQ(e[xf_cmd_lookup("c_dup")].min_len, 3);
}

TEST(CommandTable, SettingAndQueryFlags) {
  xf_cmd_init();
  const auto& e = xf_cmd_entries();
  const xf_cmd_entry& alt = e[xf_cmd_lookup("alt")];
  EXPECT_EQ(alt.is_setting, 1);
  EXPECT_EQ(alt.is_query, 1);
  const xf_cmd_entry& fd = e[xf_cmd_lookup("fd")];
  EXPECT_EQ(fd.is_setting, 1);
  EXPECT_EQ(fd.is_query, 0);
  EXPECT_EQ(e[xf_cmd_lookup("apl")].is_query, 1);
  int32_t n = 0;
  EXPECT_GE(xf_set_lookup("ALT 1", &n), 0);
  EXPECT_EQ(n, 3);
  EXPECT_GE(xf_set_lookup("translat x", &n), 0);  // a name without a handler
  EXPECT_EQ(xf_set_lookup("quit", &n), -1);        // not a setting
}

TEST(CommandTable, HashIsTheThirtyOneMultiplierOverThirteenBits) {
  EXPECT_EQ(xf_cmd_hash("c"), (99u * 31 + 99) & 0x1fff);
  EXPECT_EQ(xf_cmd_hash("ab"), (((97u * 31 + 97) & 0x1fff) * 31 + 98) & 0x1fff);
}

TEST(Matching, AbbreviationRules) {
  EXPECT_EQ(xf_abbrev("al", "all", 2), 2);
  EXPECT_EQ(xf_abbrev("a", "all", 2), 0);
  EXPECT_EQ(xf_abbrev("all xyz", "all", 2), 3);
  EXPECT_EQ(xf_abbrev("allx", "all", 2), 0);
  EXPECT_EQ(xf_abbrev("alx", "all", 2), 0);
  EXPECT_EQ(xf_abbrev("al\tx", "all", 2), 2);
  EXPECT_EQ(xf_abbrev_word("set5", "set", 2), 3);  // a digit ends the word
  EXPECT_EQ(xf_abbrev_word("s", "set", 2), 0);
}

TEST(Matching, SynonymsAreCaseSensitiveAndEndAtBlankDigitOrMinus) {
  EXPECT_EQ(xf_synonym_match("quit", "quit", 4), 4);
  EXPECT_EQ(xf_synonym_match("QUIT", "quit", 4), 0);
  EXPECT_EQ(xf_synonym_match("quit 3", "quit", 4), 4);
  EXPECT_EQ(xf_synonym_match("quit-", "quit", 4), 4);
  EXPECT_EQ(xf_synonym_match("quitx", "quit", 4), 0);
  EXPECT_EQ(xf_synonym_match("qu", "quit", 2), 2);
  EXPECT_EQ(xf_synonym_match("q", "quit", 2), 0);
}

TEST(Messages, TableRowsAndUnknownNumbers) {
  EXPECT_EQ(xf_msg_table_text(0), "..... Unable to open file");
  EXPECT_EQ(xf_msg_table_text(16), "..... Invalid parameters");
  EXPECT_EQ(xf_msg_table_text(118), "..... Read only file; use the \"RW ON\" command before");
  EXPECT_EQ(xf_msg_table_text(210), "..... Is PCRE");
  EXPECT_EQ(xf_msg_table_text(36), "");
  EXPECT_EQ(xf_msg_table_text(211), "....... Unknown error");
  EXPECT_EQ(xf_msg_table_text(-1), "....... Unknown error");
}
