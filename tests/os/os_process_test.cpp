// Tests of running programs, and of the time helpers.
#include "os/os_process.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "os/os_time.h"
#include "tests/os/test_util.h"

namespace {

TEST(OsProcess, ShellExitCodes) {
  EXPECT_EQ(os_run_shell("true"), 0);
  EXPECT_EQ(os_run_shell("exit 3"), 3);
  EXPECT_EQ(os_run_shell("exit 255"), 255);
  EXPECT_EQ(os_run_shell("no_such_program_tolva_zz 2>/dev/null"), 127);
  EXPECT_EQ(os_run_shell("kill -KILL $$"), 128 + SIGKILL);
}

TEST(OsProcess, DirectRunAndMissingProgram) {
  EXPECT_EQ(os_run({"/bin/sh", "-c", "exit 7"}), 7);
  EXPECT_EQ(os_run({"sh", "-c", "exit 9"}), 9);  // found on PATH
  EXPECT_EQ(os_run({"no_such_program_tolva_zz"}), -ENOENT);
  EXPECT_EQ(os_run({"/nonexistent/dir/prog"}), -ENOENT);
  EXPECT_EQ(os_run({}), -EINVAL);
}

TEST(OsProcess, OutputReachesInheritedStdout) {
  ostest::temp_dir t;
  std::string out = t / "out";
  EXPECT_EQ(os_run_shell("printf 'a b\\n' > " + out), 0);
  EXPECT_EQ(ostest::read_file(out), "a b\n");
}

TEST(OsProcess, ChildrenGetDefaultSignals) {
  // Ignored here, but the child must die of it: an inherited SIG_IGN would let sh survive its own kill.
  struct sigaction old {};
  struct sigaction ign {};
  ign.sa_handler = SIG_IGN;
  ::sigaction(SIGTERM, &ign, &old);
  sigset_t block, oldmask;
  sigemptyset(&block);
  sigaddset(&block, SIGUSR1);
  ::sigprocmask(SIG_BLOCK, &block, &oldmask);
  int term = os_run_shell("kill -TERM $$; exit 0");
  int usr1 = os_run_shell("kill -USR1 $$; exit 0");
  ::sigprocmask(SIG_SETMASK, &oldmask, nullptr);
  ::sigaction(SIGTERM, &old, nullptr);
  EXPECT_EQ(term, 128 + SIGTERM);
  EXPECT_EQ(usr1, 128 + SIGUSR1);
}

TEST(OsProcess, CaptureJoinsOutputAndErrorAndKeepsTheStatus) {
  std::string out;
  EXPECT_EQ(os_run_capture("echo out; echo err >&2; exit 4", out), 4);
  EXPECT_EQ(out, "out\nerr\n");
  out = "kept:";
  EXPECT_EQ(os_run_capture("printf 'a\\0b'", out), 0);  // appended, NUL bytes included
  EXPECT_EQ(out, std::string("kept:a\0b", 8));
  out.clear();
  EXPECT_EQ(os_run_capture("no_such_program_tolva_zz", out), 127);
  EXPECT_NE(out.find("not found"), std::string::npos);
}

TEST(OsProcess, CaptureOfMegabytesDrainsBeyondTheLimit) {
  std::string out;
  bool truncated = true;
  EXPECT_EQ(os_run_capture("head -c 3000000 /dev/zero", out, static_cast<std::size_t>(-1), &truncated), 0);
  EXPECT_EQ(out.size(), 3000000u);
  EXPECT_FALSE(truncated);
  out.clear();
  // The child is not blocked by a full pipe once the limit is reached: the rest is read and dropped.
  EXPECT_EQ(os_run_capture("head -c 1000000 /dev/zero; exit 2", out, 1000, &truncated), 2);
  EXPECT_EQ(out.size(), 1000u);
  EXPECT_TRUE(truncated);
}

TEST(OsProcess, EnvironmentReachesChildren) {
  ASSERT_EQ(os_set_env("TOLVA_OS_TEST_VAR", "v1"), 0);
  std::string out;
  EXPECT_EQ(os_run_capture("printf %s \"$TOLVA_OS_TEST_VAR\"", out), 0);
  EXPECT_EQ(out, "v1");
  ASSERT_EQ(os_unset_env("TOLVA_OS_TEST_VAR"), 0);
  out.clear();
  EXPECT_EQ(os_run_capture("printf %s \"${TOLVA_OS_TEST_VAR-unset}\"", out), 0);
  EXPECT_EQ(out, "unset");
  EXPECT_NE(os_set_env("BAD=NAME", "x"), 0);
}

TEST(OsTime, LocalTimeBreakdown) {
  const char* old_tz = ::getenv("TZ");
  std::string saved = old_tz ? old_tz : "";
  ::setenv("TZ", "UTC", 1);
  ::tzset();
  os_local a = os_local_time(0);
  EXPECT_EQ(a.year, 1970);
  EXPECT_EQ(a.month, 1);
  EXPECT_EQ(a.day, 1);
  EXPECT_EQ(a.weekday, 4);
  os_local b = os_local_time(951827696);  // a leap day
  EXPECT_EQ(b.year, 2000);
  EXPECT_EQ(b.month, 2);
  EXPECT_EQ(b.day, 29);
  EXPECT_EQ(b.hour, 12);
  EXPECT_EQ(b.minute, 34);
  EXPECT_EQ(b.second, 56);
  ::setenv("TZ", "UTC-2", 1);  // two hours east
  ::tzset();
  EXPECT_EQ(os_local_time(951827696).hour, 14);
  if (old_tz) {
    ::setenv("TZ", saved.c_str(), 1);
  } else {
    ::unsetenv("TZ");
  }
  ::tzset();
  int64_t before = static_cast<int64_t>(::time(nullptr));
  int64_t now = os_now();
  EXPECT_GE(now, before);
  EXPECT_LE(now, before + 2);
}

}  // namespace

TEST(OsChild, OutputComesInPiecesUntilTheEndAndTheStatus) {
  os_child c;
  ASSERT_EQ(c.start("printf 'one\\n'; echo err >&2; exit 3"), 0);
  std::string out;
  while (c.read_some(out, 2000) != 0) {
  }
  EXPECT_EQ(out, "one\nerr\n") << "standard error shares the pipe";
  EXPECT_EQ(c.wait(), 3);
}

TEST(OsChild, InputPipeAndATimeoutWhileTheChildIsQuiet) {
  os_child c;
  ASSERT_EQ(c.start("read line; echo \"got $line\"", true), 0);
  std::string out;
  EXPECT_EQ(c.read_some(out, 50), -1) << "nothing comes while the child waits for input";
  EXPECT_EQ(c.write_input("abc\n"), 0);
  c.close_input();
  while (c.read_some(out, 2000) != 0) {
  }
  EXPECT_EQ(out, "got abc\n");
  EXPECT_EQ(c.wait(), 0);
}

TEST(OsChild, KillStopsALongChildAndAClosedReaderGivesEpipe) {
  os_child c;
  ASSERT_EQ(c.start("sleep 30"), 0);
  c.kill();
  EXPECT_EQ(c.wait(), 128 + 9);
  os_child d;
  ASSERT_EQ(d.start("exec 0<&-; sleep 1", true), 0);
  std::string big(1 << 20, 'x');
  EXPECT_NE(d.write_input(big), 0) << "writing to a child that closed its input fails, without a signal";
}
