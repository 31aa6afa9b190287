// The regular expression engines: the legacy matcher's grammar and messages, PCRE2's ECMAScript-like
// options, match limits, and kept compiled patterns.
#include <gtest/gtest.h>

#include <string>

#include "editor/regex.h"

namespace {

// The match of `pat` in `s` from column 0 as "start,end", "none", "limit", or "error: reason".
std::string m(int kind, const std::string& pat, const std::string& s, bool fold = false, int32_t from = 0) {
  xf_re_reset();
  xf_re.kind = kind;
  if (!xf_re_compile(pat, fold)) return "error: " + xf_re.error;
  int32_t a = 0, b = 0;
  int r = xf_re_exec(s, from, from == 0, a, b);
  if (r < 0) return "limit";
  if (r == 0) return "none";
  return std::to_string(a) + "," + std::to_string(b);
}

}  // namespace

TEST(LegacyRegex, Grammar) {
  EXPECT_EQ(m(XF_RE_LEGACY, "b.d", "abcde"), "1,4");
  EXPECT_EQ(m(XF_RE_LEGACY, "^abc", "xabc"), "none");
  EXPECT_EQ(m(XF_RE_LEGACY, "^abc", "abcx"), "0,3");
  EXPECT_EQ(m(XF_RE_LEGACY, "c$", "abcc"), "3,4");
  EXPECT_EQ(m(XF_RE_LEGACY, "ab*c", "xacx"), "1,3");
  EXPECT_EQ(m(XF_RE_LEGACY, "ab\\+c", "xac abbc"), "4,8");
  EXPECT_EQ(m(XF_RE_LEGACY, "colou\\?r", "color"), "0,5");
  EXPECT_EQ(m(XF_RE_LEGACY, "[0-9][0-9]*", "ab 123 c"), "3,6");
  EXPECT_EQ(m(XF_RE_LEGACY, "[^a-z ]", "ab cD"), "4,5");
  EXPECT_EQ(m(XF_RE_LEGACY, "\\<is\\>", "this is"), "5,7");
  EXPECT_EQ(m(XF_RE_LEGACY, "\\(ab\\)c", "xabc"), "1,4");
  EXPECT_EQ(m(XF_RE_LEGACY, "a\\.b", "axb a.b"), "4,7");
  EXPECT_EQ(m(XF_RE_LEGACY, "ABC", "xabc", true), "1,4");
  EXPECT_EQ(m(XF_RE_LEGACY, "[A-C]x", "bX", true), "0,2");
  // "^" matches only where the engine is told the line starts.
  EXPECT_EQ(m(XF_RE_LEGACY, "^b", "ab", false, 1), "none");
}

TEST(LegacyRegex, CompileMessages) {
  EXPECT_EQ(m(XF_RE_LEGACY, "*a", "a"), "error: * or \\+ or \\? follows nothing");
  EXPECT_EQ(m(XF_RE_LEGACY, "\\(a\\)*", "a"), "error: * or \\+ or \\? can only follow a normal character or . or []");
  EXPECT_EQ(m(XF_RE_LEGACY, "a**", "a"), "error: * or \\+ or \\? doubled up");
  EXPECT_EQ(m(XF_RE_LEGACY, "\\(a", "a"), "error: Not enough \\)s");
  EXPECT_EQ(m(XF_RE_LEGACY, "a\\)", "a"), "error: Mismatched \\)");
  EXPECT_EQ(m(XF_RE_LEGACY, "\\(\\(\\(\\(\\(\\(\\(\\(\\(\\(a\\)\\)\\)\\)\\)\\)\\)\\)\\)\\)", "a"),
            "error: Too many \\(s");
  EXPECT_EQ(m(XF_RE_LEGACY, "[a][a][a][a][a][a][a][a][a][a][a]", "a"), "error: Too many []s");
  EXPECT_EQ(m(XF_RE_LEGACY, "[z-a]", "a"), "error: Backwards span in []");
  EXPECT_EQ(m(XF_RE_LEGACY, "[abc", "a"), "error: ] missing");
  xf_re_reset();
  xf_re.kind = XF_RE_LEGACY;
  EXPECT_FALSE(xf_re_compile("", false));
  EXPECT_EQ(xf_re.error, "No previous RE");
  // An empty pattern reuses the last one.
  ASSERT_TRUE(xf_re_compile("b\\+", false));
  ASSERT_TRUE(xf_re_compile("", false));
  int32_t a = 0, b = 0;
  EXPECT_EQ(xf_re_exec("abbc", 0, true, a, b), 1);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 3);
}

TEST(EcmaRegex, GrammarDiffersFromLegacy) {
  // The same pattern text means different things in the two engines.
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "a+", "xaa+"), "1,3");
  EXPECT_EQ(m(XF_RE_LEGACY, "a+", "xaa+"), "2,4");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "(ab)", "x(ab)"), "2,4");
  EXPECT_EQ(m(XF_RE_LEGACY, "(ab)", "x(ab)"), "1,5");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "\\d+", "ab 42"), "3,5");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "\\u0041", "zA"), "1,2");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "[]", "abc"), "none");  // an empty class matches nothing
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "(a)|\\1b", "b"), "0,1");  // an unset back reference matches empty
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "ABC", "xabc", true), "1,4");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "^b", "ab", false, 1), "none");
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "b$", "ab\n"), "none");  // "$" only at the very end
}

TEST(EcmaRegex, FaultsEndWithAMessage) {
  std::string e = m(XF_RE_ECMASCRIPT, "(ab", "ab");
  EXPECT_EQ(e.rfind("error: missing closing parenthesis", 0), 0u) << e;
  std::string line(100000, 'a');
  line += 'b';
  EXPECT_EQ(m(XF_RE_ECMASCRIPT, "(a+)+$", line), "limit");
  EXPECT_FALSE(xf_re.error.empty());
  std::string legacy_line(3000, 'a');
  EXPECT_EQ(m(XF_RE_LEGACY, "a*a*a*a*a*b", legacy_line), "limit");
  EXPECT_EQ(xf_re.error, "Regular expression match limit exceeded");
}

TEST(EcmaRegex, FetchAndKeptPattern) {
  xf_re_reset();
  ASSERT_TRUE(xf_re_compile("b+", false));
  int32_t a = 0, b = 0;
  ASSERT_EQ(xf_re_exec("abbbc", 0, true, a, b), 1);
  EXPECT_EQ(xf_re_fetch(), "bbb");
  xf_re_set_fetch(false);
  ASSERT_EQ(xf_re_exec("abc", 0, true, a, b), 1);
  EXPECT_EQ(xf_re_fetch(), "");
  xf_re_set_fetch(true);
  // A failed compile leaves no usable pattern behind it and says why.
  EXPECT_FALSE(xf_re_compile("[", false));
  EXPECT_FALSE(xf_re.error.empty());
  EXPECT_EQ(xf_re_exec("abc", 0, true, a, b), 0);
}
