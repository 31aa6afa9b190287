// SET for keys: the key name grammar, modes, roles, NBKEYS, SERVER, and the dump's key lines.
#include <gtest/gtest.h>

#include <algorithm>

#include "editor/keys.h"
#include "screen/as_read.h"
#include "tests/editor/test_support.h"

namespace {

struct KeySet : ::testing::Test {
  void SetUp() override {
    fresh_editor();
    xf_keys_reset();
  }
  static const xf_key_def& f(int n, int mods = 0) {
    return xf_keys.f[static_cast<std::size_t>(n + xf_keys.count_f * mods)];
  }
};

}  // namespace

TEST_F(KeySet, NamesPrefixesAndModes) {
  EXPECT_EQ(cmd("set f5 top"), 0);
  EXPECT_EQ(f(5).text, "top");
  EXPECT_EQ(f(5).mode, XK_BEFORE);
  cmd("set s+c-pf3 after bottom");
  EXPECT_EQ(f(3, 4).text, "bottom");
  EXPECT_EQ(f(3, 4).mode, XK_AFTER);
  cmd("set c+s-f3 ?");
  EXPECT_EQ(f(3, 4).mode, XK_ONLY) << "a text beginning with ? is ONLY";
  cmd("set m+c+s-f2 compl x");
  EXPECT_EQ(f(2, 7).mode, XK_ONLY) << "complete abbreviated to 5 letters is ONLY";
  cmd("set l-f2 x");
  EXPECT_EQ(f(2, 3).text, "x") << "l- means Meta";
  cmd("set ^k ignore delete");
  EXPECT_EQ(xf_keys.ctrl[static_cast<unsigned char>('k')].text, "delete");
  EXPECT_EQ(xf_keys.ctrl[static_cast<unsigned char>('k')].mode, XK_IGNORE);
  cmd("set m-q quit");
  EXPECT_EQ(xf_keys.meta[static_cast<unsigned char>('q')].text, "quit");
  cmd("set s-enter only next");
  EXPECT_EQ(xf_keys.enter[1].text, "next");
  cmd("set leftarrow left 1");
  EXPECT_EQ(xf_keys.r[10].text, "left 1");
  cmd("set pagedown forward");
  EXPECT_EQ(xf_keys.r[9].text, "forward") << "the start model maps pagedown to R9";
  cmd("set f5");
  EXPECT_TRUE(f(5).text.empty()) << "no text empties the key";
}

TEST_F(KeySet, KeysThatCannotBePlaced) {
  EXPECT_EQ(cmd("set f13 x"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(cmd("set r16 x"), 1);
  EXPECT_EQ(cmd("set s-^a x"), 1) << "a ^x key takes no modifier";
  EXPECT_EQ(cmd("set q+f1 x"), 1);
  EXPECT_EQ(cmd("set brkkey x"), 0) << "a name kept for other editors is accepted";
  cmd("mode notimp off");
  EXPECT_EQ(cmd("set brkkey x"), 1) << "without NOTIMP it is taken for a key name";
}

TEST_F(KeySet, RolesCountsAndServer) {
  cmd("set s-f9 something");
  cmd("set eof s-f9");
  EXPECT_TRUE(f(9, 1).text.empty()) << "a key given a role loses its definition";
  EXPECT_EQ(xf_keys.roles[AR_EOF].code, 32585 + 9);
  EXPECT_EQ(xf_keys.roles[AR_EOF].shift, 0) << "EOF takes no modifiers";
  cmd("set ins c-f9");
  EXPECT_EQ(xf_keys.roles[AR_INS].ctrl, 1);
  cmd("set c-f9 x");
  EXPECT_EQ(xf_keys.roles[AR_INS].code, -1) << "a definition takes the key from its role";
  cmd("set home f7");
  EXPECT_EQ(xf_keys.roles[AR_HOME].code, 32585 + 7);
  cmd("set home top");
  EXPECT_EQ(xf_keys.r[5].text, "top") << "HOME with a text is the key of that name";

  cmd("set f12 last");
  cmd("set nbkeys 10 24 15");
  EXPECT_EQ(f(12).text, "last");
  cmd("set f20 twenty");
  cmd("set nbkeys 10 12 15");
  EXPECT_EQ(f(12).text, "last");
  EXPECT_EQ(cmd("set f20 x"), 1) << "keys past a smaller count are gone";
  EXPECT_EQ(cmd("set nbkeys 16 12 15"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid key numbers: must be within 15 24 15");
  EXPECT_EQ(cmd("set server nowhere"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid server");
  cmd("set server sun");
  EXPECT_EQ(xf_keys.model, 0);
  cmd("set end fin");
  EXPECT_EQ(xf_keys.r[13].text, "fin") << "model 0 maps end to R13";
}

TEST_F(KeySet, DumpLines) {
  xf_keys_reset();
  std::vector<std::string> d = xf_key_dump();
  ASSERT_FALSE(d.empty());
  // Every key name is padded to 16 columns, then the mode and the text.
  EXPECT_EQ(d[0], "SET F1          ONLY quit");
  EXPECT_NE(std::find(d.begin(), d.end(), "SET S-F3        ONLY command file"), d.end());
  EXPECT_NE(std::find(d.begin(), d.end(), "SET S+M-L3      ONLY s_find"), d.end());
  EXPECT_NE(std::find(d.begin(), d.end(), "SET ^a          ONLY command c_lineadd"), d.end());
  EXPECT_NE(std::find(d.begin(), d.end(), "SET NBKEYS      10 12 15"), d.end());
  EXPECT_EQ(d[d.size() - 2], "SET BACKSPACE   ^h");
}
