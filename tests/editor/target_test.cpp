// Targets: the grammar, the string and compound searches, the search settings, named points and Locate.
#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "editor/journal.h"
#include "editor/target.h"
#include "tests/editor/test_support.h"

using lines = std::vector<std::string>;

namespace {

int32_t run(const std::string& cmd) { return xfcom2(cmd, "/tmp"); }

void five() {
  fresh_editor();
  file_with({"alpha", "beta", "gamma", "delta", "epsilon"});
}

}  // namespace

TEST(TargetLength, CutsTheTargetFromTheRestOfTheCommand) {
  EXPECT_EQ(xf_target_length("5 del"), 1);
  EXPECT_EQ(xf_target_length("-12"), 3);
  EXPECT_EQ(xf_target_length("* x"), 1);
  EXPECT_EQ(xf_target_length("-* x"), 2);
  EXPECT_EQ(xf_target_length(": 12 x"), 4);
  EXPECT_EQ(xf_target_length(".here del"), 5);
  EXPECT_EQ(xf_target_length("/abc/ del 3"), 5);
  EXPECT_EQ(xf_target_length("/abc"), 4);
  EXPECT_EQ(xf_target_length("-~/a/ x"), 5);
  EXPECT_EQ(xf_target_length("/a/ & /b/ del"), 9);
  // An operator next to the last delimiter: the whole text is target.
  EXPECT_EQ(xf_target_length("/a/&/b"), 6);
  EXPECT_EQ(xf_target_length("/a/|~/b"), 7);
}

TEST(TargetCounts, RelativeAbsoluteAndEnds) {
  five();
  EXPECT_EQ(run("3"), 0);  // MODE NUMBER GOTO: line 3
  EXPECT_EQ(cur(), 2);
  run("mode number scroll");
  run("locate 1");
  EXPECT_EQ(cur(), 3);
  run("-2");
  EXPECT_EQ(cur(), 1);
  run(":5");
  EXPECT_EQ(cur(), 4);
  run(": 1");
  EXPECT_EQ(cur(), 0);
  run("*");
  EXPECT_EQ(cur(), 4);
  run("-*");
  EXPECT_EQ(cur(), -1);
  run("+*");
  EXPECT_EQ(cur(), 4);
  EXPECT_EQ(run(":0"), 0);
  EXPECT_EQ(cur(), -1);
}

TEST(TargetCounts, FallingOffTheFileMovesAndGivesOne) {
  fresh_editor();
  file_with({"1", "2", "3"});
  run(":1");
  EXPECT_EQ(run("locate 5"), 1);
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(xf_search.fell_off, 1);
  run("top");
  EXPECT_EQ(run("-1"), 1);
  EXPECT_EQ(cur(), -1);
}

TEST(TargetCounts, BadCountsAreInvalidAndMoveNothing) {
  five();
  run(":2");
  EXPECT_EQ(run("locate 99999999999"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid target");
  EXPECT_EQ(run("locate 12x"), 5);
  queued_messages().clear();
  EXPECT_EQ(run("locate +"), 5);
  EXPECT_EQ(run("locate -"), 5);
  EXPECT_TRUE(queued_messages().empty());  // a lone sign has no message of its own
  EXPECT_EQ(run("locate :99999999999"), 2);
  EXPECT_EQ(last_msg(), "..... Invalid line number");
  EXPECT_EQ(run("locate -0"), 0);
  EXPECT_EQ(cur(), 1);
}

TEST(TargetCounts, NumberZeroCountsFromZero) {
  five();
  xf_ring.view->per_file[0].number = 2;
  run(":0");
  EXPECT_EQ(cur(), 0);
  run(":3");
  EXPECT_EQ(cur(), 3);
}

TEST(TargetCounts, ScopeDisplayCountsOnlyShownLines) {
  five();
  xf_file& f = *xf_ring.file;
  f.select[1] = 1;  // beta and gamma hidden
  f.select[2] = 1;
  run(":1");
  run("locate 1");
  EXPECT_EQ(cur(), 3);
  EXPECT_EQ(run("locate :2"), 5);
  EXPECT_EQ(last_msg(), "..... Line not in scope");
  run("scope all");
  run(":1");
  run("locate 1");
  EXPECT_EQ(cur(), 1);
  run("scope");
  EXPECT_EQ(last_msg(), "..... is ALL");
}

TEST(TargetStrings, ForwardBackwardAndAnyDelimiter) {
  five();
  run("/ta/");
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(xf_target.first_column, 2);
  run(":5");
  run("-/l/");
  EXPECT_EQ(cur(), 3);
  run("top");
  run(":gam:");
  EXPECT_EQ(cur(), 2);
  run("locate ,psi,");
  EXPECT_EQ(cur(), 4);
  run("+/alp");  // no closing delimiter; wraps to the top
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(last_msg(), "..... Wrapped");
}

TEST(TargetStrings, NotFoundWithAndWithoutWrap) {
  five();
  run(":2");
  EXPECT_EQ(run("/zzz/"), 2);
  EXPECT_EQ(last_msg(), "..... String \"zzz\" not found.");
  EXPECT_EQ(cur(), 1);
  run("wrap off");
  EXPECT_EQ(run("/zzz/"), 1);
  EXPECT_EQ(cur(), 4);  // to the far end
  run(":3");
  EXPECT_EQ(run("-/zzz/"), 1);
  EXPECT_EQ(cur(), -1);
  run(":3");
  run("stay on");
  EXPECT_EQ(run("/zzz/"), 1);
  EXPECT_EQ(cur(), 2);
  run("wrap off");
  EXPECT_EQ(run("/alpha/"), 1);  // behind the current line, and no wrap
}

TEST(TargetStrings, MemorisedStringAndEmptyTargets) {
  five();
  EXPECT_EQ(run("//"), 5);
  EXPECT_EQ(last_msg(), "..... No memorised string for an empty locate request");
  run("/a/");
  EXPECT_EQ(cur(), 0);
  run("//");
  EXPECT_EQ(cur(), 1);
  run("//");
  EXPECT_EQ(cur(), 2);
}

TEST(TargetStrings, NegationAndCompounds) {
  fresh_editor();
  file_with({"a only", "b only", "c only", "a and b", "x"});
  run("/a/ & /b/");
  EXPECT_EQ(cur(), 3);
  run("top");
  run("/a/ & /b/ | /c/");  // no precedence: a line without a fails whatever c says
  EXPECT_EQ(cur(), 3);
  run("top");
  run("~/only/");
  EXPECT_EQ(cur(), 3);
  run("top");
  run("/b/|/c/");
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(run("/q/ & /r/"), 2);
  EXPECT_EQ(last_msg(), "..... Target \"/q/ & /r/\" not found.");
  EXPECT_EQ(run("/a/ & /"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid subtarget \"/\"");
}

TEST(TargetStrings, OperatorsOnlyInContext) {
  fresh_editor();
  file_with({"a", "b", "x a&b y", "a|b"});
  run("/a&b/");
  EXPECT_EQ(cur(), 2);
  run("top");
  run("/a\\|b/");
  EXPECT_EQ(cur(), 3);
}

TEST(TargetStrings, CaseZoneAndTrailingBlanks) {
  fresh_editor();
  file_with({"Alpha one", "xx ALPHA", "end word", "word in middle"});
  run("/alpha/");
  EXPECT_EQ(run("/alpha/"), 2);  // CASE MIXED RESPECT: not found
  run("case m i");
  run("top");
  run("/alpha/");
  EXPECT_EQ(cur(), 0);
  run("/alpha/");
  EXPECT_EQ(cur(), 1);
  run("case");
  EXPECT_EQ(last_msg(), "..... Case Mixed Ignore CRESPECT SRESPECT");
  run("zone 4 6");
  run("top");
  run("/al/");
  EXPECT_EQ(cur(), 1);  // "Alpha one" has "al" only at column 1
  run("zone");
  EXPECT_EQ(last_msg(), "...... is 4 6");
  run("zone 1 *");
  run("top");
  run("/word /");  // a pattern ending in blanks matches at the end of a line
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("zone 5 2"), 1);
}

TEST(TargetStrings, VarblankArbcharSpanAndHex) {
  fresh_editor();
  file_with({"one    two", "three", "four five", "six", "x'41'", "AB"});
  EXPECT_EQ(run("/one two/"), 2);
  run("varblank on");
  run("/one two/");
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(xf_target.last_column, 9);
  run("varblank off");
  run("arbchar on $");
  run("top");
  run("/f$ve/");
  EXPECT_EQ(cur(), 2);
  EXPECT_EQ(run("/$/"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid arbitrary string");
  run("arbchar");
  EXPECT_EQ(last_msg(), "..... is ON $");
  run("arbchar off");
  run("top");
  EXPECT_EQ(run("/three four/"), 2);
  run("span on");
  run("top");
  run("/three four/");
  EXPECT_EQ(cur(), 1);
  EXPECT_EQ(xf_target.last_line, 2);
  run("span");
  EXPECT_EQ(last_msg(), "..... Is ON B 2");
  EXPECT_EQ(run("span on 0"), 1);
  run("hex on");
  run("top");
  run("/x'4142'/");
  EXPECT_EQ(cur(), 5);
  EXPECT_EQ(run("/x'4'/"), 5);
  EXPECT_EQ(last_msg(), "..... Invalid hexadecimal string");
  run("hex off");
  run("top");
  run("/x'41'/");
  EXPECT_EQ(cur(), 4);
}

TEST(TargetStrings, TheCursorStartsASearchInItsLine) {
  fresh_editor();
  file_with({"a b a", "a"});
  run(":1");
  xf_ring.read_view = xf_ring.view_no;
  xf_ring.read_line = 0;
  xf_ring.read_column = 0;
  run("/a/");
  EXPECT_EQ(cur(), 0);
  EXPECT_EQ(xf_target.first_column, 4);
  xf_ring.read_view = -1;
  run("/a/");
  EXPECT_EQ(cur(), 1);
}

TEST(TargetStrings, OptimalMismatchFindsEveryPlace) {
  // Patterns with repeats and rare bytes, at every place in a line, in both cases.
  fresh_editor();
  std::string base = "aaabaaabbaabaaaqzaabababaaab";
  file_with({base});
  run("case m i");
  const std::vector<std::string> pats = {"aab", "aaab", "baab", "abab", "qz", "aaaq", "b", "AAAB", "babaaab"};
  for (const std::string& p : pats) {
    std::string lp = p;
    for (char& ch : lp) ch = static_cast<char>(std::tolower(ch));
    std::size_t want = base.find(lp);
    xf_current_line() = -1;
    ASSERT_EQ(run("/" + p + "/"), 0) << p;
    EXPECT_EQ(xf_target.first_column, static_cast<int32_t>(want)) << p;
  }
}

TEST(TargetStrings, RandomPatternsAgreeWithAPlainScan) {
  // The shift tables of the search against a naive scan, with and without case folding.
  std::mt19937 rng(7);
  const char alphabet[] = "abAB c";
  for (int round = 0; round < 400; ++round) {
    fresh_editor();
    std::string line;
    for (int k = 10 + static_cast<int>(rng() % 60); k > 0; --k) line += alphabet[rng() % 6];
    std::string pat;
    for (int k = 1 + static_cast<int>(rng() % 6); k > 0; --k) pat += alphabet[rng() % 5];
    if (pat.front() == ' ') pat.front() = 'a';
    if (pat.back() == ' ') pat.back() = 'c';
    bool ignore = rng() % 2;
    file_with({line});
    if (ignore) run("case m i");
    auto low = [](std::string x) {
      for (char& ch : x) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
      return x;
    };
    std::size_t want = ignore ? low(line).find(low(pat)) : line.find(pat);
    int32_t r = run("/" + pat + "/");
    if (want == std::string::npos) {
      EXPECT_EQ(r, 2) << line << " / " << pat;
    } else {
      ASSERT_EQ(r, 0) << line << " / " << pat;
      EXPECT_EQ(xf_target.first_column, static_cast<int32_t>(want)) << line << " / " << pat << " ignore " << ignore;
    }
  }
}

TEST(TargetDistance, RangesForCommands) {
  five();
  run(":2");
  int32_t st, fell;
  EXPECT_EQ(xf_target_distance("", st, fell, false), 1);
  EXPECT_EQ(xf_target_distance("/delta/", st, fell, false), 2);
  EXPECT_EQ(xf_target_distance("-1", st, fell, false), -1);
  EXPECT_EQ(xf_target_distance("-/alpha/", st, fell, true), 0);
  EXPECT_EQ(st, xf_target_invalid);
  EXPECT_EQ(last_msg(), "..... The specified target is before the current line");
  EXPECT_EQ(cur(), 1);  // resolving a range moves nothing
}

TEST(Points, NameListAndRemove) {
  five();
  run(":2");
  run("point .b");
  run("point .two");
  run(":4");
  run("point .d");
  EXPECT_EQ(run("point .b"), 1);
  EXPECT_EQ(last_msg(), "..... Name .b already in use.");
  run(".b");
  EXPECT_EQ(cur(), 1);
  run("point");
  EXPECT_EQ(last_msg(), ".b .two");
  queued_messages().clear();
  run("point *");
  EXPECT_EQ(queued_messages(), (lines{"Line 2: .b .two", "Line 4: .d"}));
  run("point .b off");
  EXPECT_EQ(run("point .b off"), 2);
  EXPECT_EQ(last_msg(), "..... Line Pointer Not found");
  EXPECT_EQ(run(".b"), 1);
  EXPECT_EQ(last_msg(), "..... Target Not found");
  EXPECT_EQ(run("point x y z"), 5);
  run("point * off");
  EXPECT_TRUE(xf_ring.file->points.empty());
}

TEST(Locate, RunsTheRestAtTheTarget) {
  five();
  run("/gamma/ delete 2");
  EXPECT_EQ(lines_of(*xf_ring.file), (lines{"alpha", "beta", "epsilon"}));
  run("mode command ispf");
  EXPECT_EQ(run("locate 1"), 0);  // the ISPF form: line 1
  EXPECT_EQ(xf_current_line(), 0);
  run("mode command xedit");
  EXPECT_EQ(run("xedlocate"), 1);
  EXPECT_EQ(last_msg(), "..... Missing Operand");
}

TEST(SearchSettings, ReportAndRefuse) {
  five();
  const std::vector<std::pair<std::string, std::string>> reports = {
      {"varblank", "..... Is OFF"}, {"wrap", "..... Is ON"}, {"stay", "..... Is OFF"}, {"hex", "..... Is OFF"},
      {"span", "..... Is OFF B 2"}, {"scope", "..... is DISPLAY"}, {"arbchar", "..... is OFF $"},
      {"case", "..... Case Mixed Respect CRESPECT SRESPECT"}, {"zone", "...... is 1 2147483647"},
      {"query arbchar", "..... is OFF $"}};
  for (const auto& [cmd, want] : reports) {
    EXPECT_EQ(run(cmd), 0) << cmd;
    EXPECT_EQ(last_msg(), want) << cmd;
  }
  for (const char* bad : {"varblank maybe", "wrap 2", "scope some", "arbchar on xx", "span on n 0", "case q",
                          "zone 0", "zone a b", "hex on off"}) {
    EXPECT_EQ(run(bad), 1) << bad;
    EXPECT_EQ(last_msg(), "..... Invalid parameters") << bad;
  }
  run("case u i ci si ft txt");  // the file is /tmp/t.txt: applied now
  EXPECT_EQ(xf_ring.file->case_mode, 2);
  EXPECT_EQ(xf_ring.file->case_search_c, 1);
  run("case m r ft c");  // another type: stored only
  EXPECT_EQ(xf_ring.file->case_mode, 2);
}
