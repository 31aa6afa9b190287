// Corpus tests: every program under parse/ must print its expected tree (*.tree), every program under errors/
// must give its expected report (*.err) and status.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "rexx/paloma.h"

namespace fs = std::filesystem;

namespace {

fs::path corpus_dir(const char* sub) {
  return fs::path(TOLVA_TEST_SOURCE_DIR) / "tests" / "rexx" / sub;
}

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

std::vector<fs::path> programs(const fs::path& dir) {
  std::vector<fs::path> out;
  for (const auto& e : fs::directory_iterator(dir))
    if (e.path().extension() == ".rexx") out.push_back(e.path());
  std::sort(out.begin(), out.end());
  return out;
}

bool is_lexical(int number) {
  for (int n : {1, 2, 6, 15, 31, 67, 76})
    if (n == number) return true;
  return false;
}

}  // namespace

TEST(RexxCorpus, ValidProgramsPrintTheirTrees) {
  std::vector<fs::path> files = programs(corpus_dir("parse"));
  ASSERT_GE(files.size(), 20u);
  for (const fs::path& src : files) {
    fs::path expected = fs::path(src).replace_extension(".tree");
    ASSERT_TRUE(fs::exists(expected)) << expected;
    paloma_init();
    paloma_load r = paloma_load_string(slurp(src), src.filename().string());
    ASSERT_EQ(r.rc, 0) << src << "\n" << r.message;
    EXPECT_EQ(paloma_dump_tree(*r.program), slurp(expected)) << src;
  }
}

TEST(RexxCorpus, InvalidProgramsGiveTheirReports) {
  std::vector<fs::path> files = programs(corpus_dir("errors"));
  ASSERT_GE(files.size(), 30u);
  for (const fs::path& src : files) {
    fs::path expected = fs::path(src).replace_extension(".err");
    ASSERT_TRUE(fs::exists(expected)) << expected;
    std::string want = slurp(expected);
    paloma_init();
    paloma_load r = paloma_load_string(slurp(src), src.filename().string());
    EXPECT_EQ(r.message, want) << src;
    std::size_t at = want.find("\nError ");
    ASSERT_NE(at, std::string::npos) << expected;
    int number = std::atoi(want.c_str() + at + 7);
    EXPECT_EQ(r.error, number) << src;
    EXPECT_EQ(r.rc, is_lexical(number) ? -2 : number) << src;
    EXPECT_EQ(r.program, nullptr);
  }
}

// palom itself: exit status and streams, run as a process.
TEST(RexxPalom, ExitStatusAndOutput) {
  fs::path palom = fs::path(TOLVA_TEST_BINARY_DIR) / "app" / "palom";
  ASSERT_TRUE(fs::exists(palom)) << "palom is built before its tests";
  fs::path tmp = fs::temp_directory_path() / ("rexx_palom_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  fs::create_directories(tmp);
  auto run = [&](const std::string& args, const std::string& out, const std::string& err) {
    std::string cmd = palom.string() + " " + args + " >" + (tmp / out).string() + " 2>" + (tmp / err).string();
    int status = std::system(cmd.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  std::ofstream(tmp / "ok.rexx") << "say 1\n";
  std::ofstream(tmp / "bad.rexx") << "x = 1 +\n";
  std::ofstream(tmp / "lex.rexx") << "say 'x\n";
  EXPECT_EQ(run((tmp / "ok.rexx").string() + " a b", "o1", "e1"), 0);
  EXPECT_EQ(slurp(tmp / "o1"), "1\n");  // the program runs
  EXPECT_EQ(slurp(tmp / "e1"), "");
  EXPECT_EQ(run((tmp / "bad.rexx").string(), "o2", "e2"), 55);
  EXPECT_EQ(slurp(tmp / "o2"), "");
  EXPECT_NE(slurp(tmp / "e2").find("Error 55 on line 1 in file"), std::string::npos);
  EXPECT_EQ(run((tmp / "lex.rexx").string(), "o3", "e3"), 254);
  EXPECT_EQ(run((tmp / "missing.rexx").string(), "o4", "e4"), 255);
  EXPECT_NE(slurp(tmp / "e4").find("palom: unable to open file"), std::string::npos);
  EXPECT_EQ(run("-dump-tree " + (tmp / "ok.rexx").string(), "o5", "e5"), 0);
  EXPECT_EQ(slurp(tmp / "o5"), "1: SAY 1\nlines: 1\n");
  EXPECT_EQ(run("", "o6", "e6"), 1);
  EXPECT_NE(slurp(tmp / "e6").find("usage: palom"), std::string::npos);
  fs::remove_all(tmp);
}
