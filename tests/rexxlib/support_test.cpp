// Tests of the support library: every splitting rule, quoting, options, joining, PATH search, the /bin/sh rule.
#include "rexxlib/support.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "os/os_path.h"

namespace {

using words = std::vector<std::string>;

TEST(SplitBlanks, OnlyByte32Separates) {
  EXPECT_EQ(split_blanks("  a  bb c "), (words{"a", "bb", "c"}));
  EXPECT_EQ(split_blanks("a\tb c"), (words{"a\tb", "c"}));
  EXPECT_EQ(split_blanks("\"a b\""), (words{"\"a", "b\""}));
  EXPECT_TRUE(split_blanks("").empty());
  EXPECT_TRUE(split_blanks("    ").empty());
}

TEST(SplitQuoted, PlainQuotedAndMixedWords) {
  EXPECT_EQ(split_quoted("a \"b c\" d"), (words{"a", "b c", "d"}));
  EXPECT_EQ(split_quoted("'it'"), (words{"it"}));
  EXPECT_EQ(split_quoted("'say \"hi\"' x"), (words{"say \"hi\"", "x"}));
  EXPECT_EQ(split_quoted("\"it's\""), (words{"it's"}));
  EXPECT_EQ(split_quoted("ab\"cd\"ef"), (words{"ab", "cd", "ef"}));  // a quote ends the word before it
  EXPECT_EQ(split_quoted("a\tb"), (words{"a\tb"}));
  EXPECT_TRUE(split_quoted("").empty());
  EXPECT_TRUE(split_quoted("   ").empty());
}

TEST(SplitQuoted, EmptyWords) {
  EXPECT_TRUE(split_quoted("\"\"").empty());
  EXPECT_EQ(split_quoted("\"\"", true), (words{""}));
  EXPECT_EQ(split_quoted("a '' b", true), (words{"a", "", "b"}));
  EXPECT_EQ(split_quoted("a '' b"), (words{"a", "b"}));
}

TEST(SplitQuoted, QuoteLeftOpen) {
  EXPECT_EQ(split_quoted("\"a"), (words{"a"}));
  EXPECT_EQ(split_quoted("\"a b "), (words{"a b "}));
  EXPECT_EQ(split_quoted("\""), (words{"\""}));
  EXPECT_EQ(split_quoted("x '"), (words{"x", "'"}));
  EXPECT_EQ(split_quoted("x '", true), (words{"x", "'"}));
}

TEST(SplitQuoted, BackslashRules) {
  // No quote open: backslash-quote is a quote in the text.
  EXPECT_EQ(split_quoted("a\\\"b"), (words{"a\"b"}));
  EXPECT_EQ(split_quoted("a\\'b"), (words{"a'b"}));
  // Inside quotes, the open quote escaped mid-word.
  EXPECT_EQ(split_quoted("\"a\\\"b\""), (words{"a\"b"}));
  // Inside quotes, backslash before the open quote at the end or before a blank: kept, and the quote closes.
  EXPECT_EQ(split_quoted("\"c:\\dir\\\""), (words{"c:\\dir\\"}));
  EXPECT_EQ(split_quoted("\"dir\\\" next"), (words{"dir\\", "next"}));
  // Inside quotes, the other quote escaped: the backslash goes.
  EXPECT_EQ(split_quoted("\"a\\'b\""), (words{"a'b"}));
  EXPECT_EQ(split_quoted("'a\\\"b'"), (words{"a\"b"}));
  // Other backslashes are text, and so is a last one.
  EXPECT_EQ(split_quoted("a\\b c\\"), (words{"a\\b", "c\\"}));
  EXPECT_EQ(split_quoted("\"a\\nb\""), (words{"a\\nb"}));
  EXPECT_EQ(split_quoted("\\"), (words{"\\"}));
}

TEST(SplitQuotedRest, RestBecomesOneWord) {
  EXPECT_EQ(split_quoted_rest("cmd a b   c d", 2), (words{"cmd", "a b   c d"}));
  EXPECT_EQ(split_quoted_rest("cmd  x y", 1), (words{"cmd  x y"}));
  EXPECT_EQ(split_quoted_rest("one two three", 3), (words{"one", "two", "three"}));
  // Double quotes in the rest stay as text.
  EXPECT_EQ(split_quoted_rest("cmd a \"b\"c", 2), (words{"cmd", "a \"b\"c"}));
  // A rest that begins with a quote, or a backslash and a quote, is split as it stands.
  EXPECT_EQ(split_quoted_rest("cmd \"a b\" c", 2), (words{"cmd", "a b", "c"}));
  EXPECT_EQ(split_quoted_rest("cmd 'a b' c", 2), (words{"cmd", "a b", "c"}));
  EXPECT_EQ(split_quoted_rest("cmd \\\"a b", 2), (words{"cmd", "\"a", "b"}));
  // Fewer words than asked: as it stands.
  EXPECT_EQ(split_quoted_rest("cmd \"x y\"", 5), (words{"cmd", "x y"}));
  EXPECT_EQ(split_quoted_rest("cmd ", 2), (words{"cmd"}));
  EXPECT_TRUE(split_quoted_rest("", 1).empty());
}

TEST(Quote, NameAndIfBlank) {
  EXPECT_EQ(quote_name("a b"), "\"a b\"");
  EXPECT_EQ(quote_name("say \"x\""), "\"say \\\"x\\\"\"");
  EXPECT_EQ(quote_name(""), "\"\"");
  EXPECT_EQ(quote_if_blank("plain"), "plain");
  EXPECT_EQ(quote_if_blank("has blank"), "\"has blank\"");
  EXPECT_EQ(quote_if_blank("plain", true), "\"plain\"");
  EXPECT_EQ(quote_if_blank("tab\there"), "tab\there");
  // What quote_name makes, split_quoted takes back.
  for (std::string s : {"a b", "x\"y z", "it's here"}) EXPECT_EQ(split_quoted(quote_name(s)), (words{s})) << s;
}

const option_row table[] = {{"-c", 1}, {"-batch", 0}, {"-Wp", 2}, {"-p", 1}};

TEST(GetOptions, TakesOptionsInOrder) {
  std::vector<option_found> found;
  words args{"tolva", "-c", "save", "-batch", "-Wp", "10", "-20", "-c", "-x", "file", "-c"};
  EXPECT_EQ(get_options(args, table, found), 9);
  ASSERT_EQ(found.size(), 4u);
  EXPECT_EQ(found[0].index, 0);
  EXPECT_EQ(found[0].operands, (words{"save"}));
  EXPECT_EQ(found[1].index, 1);
  EXPECT_TRUE(found[1].operands.empty());
  EXPECT_EQ(found[2].index, 2);
  EXPECT_EQ(found[2].operands, (words{"10", "-20"}));  // an operand may start with "-"
  EXPECT_EQ(found[3].operands, (words{"-x"}));
}

TEST(GetOptions, EndsAndErrors) {
  std::vector<option_found> found;
  EXPECT_EQ(get_options(words{"tolva"}, table, found), 1);
  EXPECT_EQ(get_options(words{"tolva", "-batch"}, table, found), 2);
  EXPECT_EQ(get_options(words{"tolva", "-c"}, table, found), -1);
  EXPECT_EQ(get_options(words{"tolva", "-batch", "-Wp", "1"}, table, found), -1);
  EXPECT_EQ(get_options(words{"tolva", "-bat"}, table, found), -2);   // full compare only
  EXPECT_EQ(get_options(words{"tolva", "-C", "x"}, table, found), -2);  // exact case
  EXPECT_EQ(get_options(words{"tolva", "-"}, table, found), -2);
  EXPECT_EQ(get_options(words{"tolva", "", "-batch"}, table, found), 1);
}

TEST(JoinQuotedArgs, JoinsRuns) {
  auto r = join_quoted_args(words{"tolva", "\"my", "long", "name.txt\"", "\"one\"", "x"}, false);
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(*r, (words{"tolva", "my long name.txt", "one", "x"}));
  r = join_quoted_args(words{"\"a", "b\"c\""}, false);
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(*r, (words{"a b\"c"}));
  r = join_quoted_args(words{"\"\"", "\"", "x\""}, false);
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(*r, (words{"", " x"}));
}

TEST(JoinQuotedArgs, StrayQuoteIsAnError) {
  testing::internal::CaptureStderr();
  auto r = join_quoted_args(words{"tolva", "abc\""}, false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "tolva: Too many \"'s\n");
  EXPECT_FALSE(r.has_value());

  testing::internal::CaptureStderr();
  r = join_quoted_args(words{"tolva", "abc\""}, true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(*r, (words{"tolva", "abc\""}));

  testing::internal::CaptureStderr();
  r = join_quoted_args(words{"\"never", "closed"}, false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "tolva: Too many \"'s\n");
  EXPECT_FALSE(r.has_value());
  r = join_quoted_args(words{"\"never", "closed"}, true);
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(*r, (words{"never closed"}));
}

class PathSearch : public ::testing::Test {
 protected:
  std::string root;
  void SetUp() override {
    char tmpl[] = "/tmp/tolva-support-test-XXXXXX";
    root = ::mkdtemp(tmpl);
    std::filesystem::create_directories(root + "/a");
    std::filesystem::create_directories(root + "/b");
    std::filesystem::create_directories(root + "/b/dirprog");
    make(root + "/a/plain", 0644);    // not executable
    make(root + "/b/plain", 0755);
    make(root + "/a/Tool", 0755);
    make(root + "/b/tool", 0755);
    make(root + "/b/run.sh", 0755);
  }
  void TearDown() override { std::filesystem::remove_all(root); }
  static void make(const std::string& p, mode_t mode) {
    std::ofstream(p) << "#!/bin/sh\n";
    ::chmod(p.c_str(), mode);
  }
  os_env env() const { return os_env_map({{"PATH", root + "/a:" + root + "/b/"}}); }
};

TEST_F(PathSearch, ExactCaseExecutableRegularFiles) {
  EXPECT_EQ(find_on_path("plain", env()), root + "/b/plain");  // the first one is not executable
  EXPECT_EQ(find_on_path("Tool", env()), root + "/a/Tool");
  EXPECT_EQ(find_on_path("tool", env()), root + "/b/tool");
  EXPECT_EQ(find_on_path("\"tool\"", env()), root + "/b/tool");
  EXPECT_EQ(find_on_path("'tool'", env()), root + "/b/tool");
  EXPECT_FALSE(find_on_path("dirprog", env()).has_value());
  EXPECT_FALSE(find_on_path("run", env()).has_value());  // no extensions added
  EXPECT_FALSE(find_on_path("TOOL", env()).has_value());
  EXPECT_FALSE(find_on_path("", env()).has_value());
  // A name with a directory part is tried as it stands.
  EXPECT_EQ(find_on_path(root + "/b/run.sh", env()), root + "/b/run.sh");
  EXPECT_FALSE(find_on_path(root + "/a/plain", env()).has_value());
  EXPECT_EQ(find_on_path("/bin/sh", os_env_map({})), "/bin/sh");
}

TEST_F(PathSearch, MakeCommandTheShellRule) {
  auto via_sh = [&](const std::string& cmd) { return make_command(cmd, env()) == words{"/bin/sh", "-c", cmd}; };
  for (const char* c : {"ls | wc", "a && b", "x; y", "cat < f", "echo > f", "(sub)", "echo $HOME", "echo `x`",
                        "a\\b", "say \"hi\"", "it's", "ls *.c", "ls ?", "ls [ab]", "x # c", "ls ~", "A=1 prog",
                        "100%", "two\nlines", "a\tb"}) {
    EXPECT_TRUE(via_sh(c)) << c;
  }
  for (const char* c : {"cd /tmp", "export A", "set -x", "ulimit -f 10", "umask 022", "alias x", "source f",
                        ". f", "exec prog", "eval x", "if true", "for i", "  cd"}) {
    EXPECT_TRUE(via_sh(c)) << c;
  }
  EXPECT_EQ(make_command("tool -x  y", env()), (words{root + "/b/tool", "-x", "y"}));
  EXPECT_EQ(make_command("  Tool", env()), (words{root + "/a/Tool"}));
  // Not found: left as it stands; running it gives ENOENT.
  EXPECT_EQ(make_command("missing_prog arg", env()), (words{"missing_prog", "arg"}));
  EXPECT_EQ(make_command("cdx", env()), (words{"cdx"}));  // not the builtin cd
  EXPECT_TRUE(make_command("", env()).empty());
  EXPECT_TRUE(make_command("   ", env()).empty());
  EXPECT_FALSE(needs_shell("ls -l"));
  EXPECT_TRUE(needs_shell("cd"));
}

}  // namespace
