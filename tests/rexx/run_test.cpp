// Behaviour tests of palom: every program under run/<area>/ is run and its standard output (NAME.out), and where
// given its standard error (NAME.err, or its beginning NAME.errstart; else it must be empty) and exit status
// (NAME.rc, else 0), must match byte for byte. NAME.in feeds
// standard input (else it is empty); NAME.args holds the command-line arguments.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

std::string trim_line(std::string s) {
  while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) s.pop_back();
  return s;
}

// Run every program of one area; each mismatch is a failure naming the program.
void run_area(const std::string& area) {
  fs::path dir = fs::path(TOLVA_TEST_SOURCE_DIR) / "tests" / "rexx" / "run" / area;
  fs::path palom = fs::path(TOLVA_TEST_BINARY_DIR) / "app" / "palom";
  ASSERT_TRUE(fs::exists(palom)) << "palom is built before its tests";
  ASSERT_TRUE(fs::is_directory(dir)) << dir;
  std::vector<fs::path> programs;
  for (const auto& e : fs::directory_iterator(dir))
    if (e.path().extension() == ".rexx") programs.push_back(e.path());
  std::sort(programs.begin(), programs.end());
  ASSERT_FALSE(programs.empty()) << dir;
  fs::path tmp = fs::temp_directory_path() / ("rexx_run_" + area + "_" + std::to_string(::getpid()));
  fs::create_directories(tmp);
  for (const fs::path& src : programs) {
    std::string name = src.stem().string();
    fs::path expected_out = dir / (name + ".out");
    ASSERT_TRUE(fs::exists(expected_out)) << expected_out;
    fs::path in = dir / (name + ".in");
    std::string args = fs::exists(dir / (name + ".args")) ? " " + trim_line(slurp(dir / (name + ".args"))) : "";
    std::string cmd = "cd '" + dir.string() + "' && '" + palom.string() + "' " + name + ".rexx" + args + " <" +
                      (fs::exists(in) ? "'" + in.string() + "'" : std::string("/dev/null")) + " >'" +
                      (tmp / "out").string() + "' 2>'" + (tmp / "err").string() + "'";
    int status = std::system(cmd.c_str());
    int rc = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    int expected_rc = fs::exists(dir / (name + ".rc")) ? std::stoi(slurp(dir / (name + ".rc"))) : 0;
    EXPECT_EQ(rc, expected_rc) << area << "/" << name << "\nstderr:\n" << slurp(tmp / "err");
    EXPECT_EQ(slurp(tmp / "out"), slurp(expected_out)) << area << "/" << name;
    if (fs::exists(dir / (name + ".err"))) {
      EXPECT_EQ(slurp(tmp / "err"), slurp(dir / (name + ".err"))) << area << "/" << name;
    } else if (fs::exists(dir / (name + ".errstart"))) {
      std::string want = slurp(dir / (name + ".errstart"));
      EXPECT_EQ(slurp(tmp / "err").substr(0, want.size()), want) << area << "/" << name;
    } else {
      EXPECT_EQ(slurp(tmp / "err"), "") << area << "/" << name;
    }
  }
  fs::remove_all(tmp);
}

}  // namespace

TEST(RexxRun, Expressions) { run_area("expressions"); }
TEST(RexxRun, Arithmetic) { run_area("arithmetic"); }
TEST(RexxRun, Comparisons) { run_area("comparisons"); }
TEST(RexxRun, DoLoops) { run_area("do"); }
TEST(RexxRun, Variables) { run_area("variables"); }
TEST(RexxRun, ParseTemplates) { run_area("parse"); }
TEST(RexxRun, Signal) { run_area("signal"); }
TEST(RexxRun, Routines) { run_area("routines"); }
TEST(RexxRun, HostCommands) { run_area("commands"); }
TEST(RexxRun, Conditions) { run_area("conditions"); }
TEST(RexxRun, Trace) { run_area("trace"); }
TEST(RexxRun, Interpret) { run_area("interpret"); }
TEST(RexxRun, Errors) { run_area("errors"); }
TEST(RexxRun, BadInput) { run_area("bad_input"); }
TEST(RexxRun, BuiltinsFrame) { run_area("builtins_frame"); }
TEST(RexxRun, BuiltinsStrings) { run_area("builtins_strings"); }
TEST(RexxRun, BuiltinsWords) { run_area("builtins_words"); }
TEST(RexxRun, BuiltinsNumbers) { run_area("builtins_numbers"); }
TEST(RexxRun, BuiltinsConvert) { run_area("builtins_convert"); }
TEST(RexxRun, BuiltinsQueue) { run_area("builtins_queue"); }
TEST(RexxRun, BuiltinsState) { run_area("builtins_state"); }
TEST(RexxRun, BuiltinsDateTime) { run_area("builtins_datetime"); }
