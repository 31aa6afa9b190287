// Tests of the signal layer: termination flag and watchdog, fault handler on the alternate stack, the
// async-signal-safe helpers, and the re-exec restart with its crash-loop guard. Signal tests run in children.
#include "os/os_signal.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <new>
#include <poll.h>

#include "tests/os/test_util.h"

namespace {

TEST(OsSignal, FormatsIntegers) {
  char buf[32];
  EXPECT_EQ(os_sa_format_int(buf, sizeof buf, 0), 1u);
  EXPECT_STREQ(buf, "0");
  EXPECT_EQ(os_sa_format_int(buf, sizeof buf, -5), 2u);
  EXPECT_STREQ(buf, "-5");
  EXPECT_EQ(os_sa_format_int(buf, sizeof buf, 1234567890), 10u);
  EXPECT_STREQ(buf, "1234567890");
  EXPECT_EQ(os_sa_format_int(buf, sizeof buf, INT64_MAX), 19u);
  EXPECT_STREQ(buf, "9223372036854775807");
  EXPECT_EQ(os_sa_format_int(buf, sizeof buf, INT64_MIN), 20u);
  EXPECT_STREQ(buf, "-9223372036854775808");
  // The NUL must fit too.
  EXPECT_EQ(os_sa_format_int(buf, 3, 123), 0u);
  EXPECT_EQ(os_sa_format_int(buf, 4, 123), 3u);
  EXPECT_STREQ(buf, "123");
  EXPECT_EQ(os_sa_format_int(buf, 0, 1), 0u);
}

TEST(OsSignal, EmergencyFileHelpers) {
  ostest::temp_dir t;
  std::string a = t / "a.check", b = t / "b.check";
  ostest::write_file(a, "a much longer old content");
  int fd = os_sa_open_write(a.c_str());
  ASSERT_GE(fd, 0);
  EXPECT_TRUE(os_sa_write_all(fd, "line 1\n", 7));
  EXPECT_TRUE(os_sa_write_str(fd, "line 2\n"));
  EXPECT_EQ(os_sa_fsync(fd), 0);
  EXPECT_EQ(os_sa_close(fd), 0);
  EXPECT_EQ(ostest::read_file(a), "line 1\nline 2\n");  // truncated first
  EXPECT_EQ(os_sa_rename(a.c_str(), b.c_str()), 0);
  EXPECT_EQ(ostest::read_file(b), "line 1\nline 2\n");
  EXPECT_EQ(os_sa_unlink(b.c_str()), 0);
  EXPECT_EQ(os_sa_unlink(b.c_str()), -1);
  EXPECT_EQ(os_sa_open_write((t / "no/dir").c_str()), -1);
  EXPECT_FALSE(os_sa_write_all(-1, "x", 1));
  EXPECT_EQ(os_sa_strlen(""), 0u);
  EXPECT_EQ(os_sa_strlen("abc"), 3u);
}

TEST(OsSignal, TerminationSetsFlagAndWakesPoll) {
  int rc = ostest::in_child([] {
    os_signal_setup s;
    s.emergency = [](int) { ::_exit(50); };
    if (os_signals_install(s) != 0) return 1;
    if (os_term_pending() != 0) return 2;
    ::raise(SIGTERM);
    struct pollfd p {os_term_fd(), POLLIN, 0};
    if (::poll(&p, 1, 1000) != 1) return 3;
    if (os_term_pending() != SIGTERM) return 4;
    ::sleep(2);  // past a 1 s watchdog: having looked, nothing fires
    return os_term_pending() == SIGTERM ? 0 : 5;
  });
  EXPECT_EQ(rc, 0);
}

TEST(OsSignal, WatchdogRunsEmergencyWhenNobodyLooks) {
  ostest::temp_dir t;
  static std::string marker;
  marker = t / "road";
  int rc = ostest::in_child([] {
    os_signal_setup s;
    s.watchdog = 1;
    s.emergency = [](int sig) {
      int fd = os_sa_open_write(marker.c_str());
      char num[8];
      os_sa_format_int(num, sizeof num, sig);
      os_sa_write_str(fd, num);
      os_sa_close(fd);
      os_sa_exit(42);
    };
    if (os_signals_install(s) != 0) return 1;
    ::raise(SIGHUP);
    for (int i = 0; i < 50; ++i) ::usleep(100000);
    return 0;
  });
  EXPECT_EQ(rc, 42);
  EXPECT_EQ(ostest::read_file(marker), std::to_string(SIGHUP));
}

// Recursion that cannot be turned into a loop, to run off the end of the stack (the limit is never reached).
volatile int depth_limit = INT_MAX;
int deep(int n) {
  volatile char pad[512];
  pad[0] = static_cast<char>(n);
  if (n >= depth_limit) return 0;
  return deep(n + 1) + pad[0];
}

TEST(OsSignal, StackOverflowReachesFaultHandlerOnAltStack) {
  int rc = ostest::in_child([] {
    os_signal_setup s;
    s.fault = [](int sig) { os_sa_exit(sig == SIGSEGV ? 33 : 34); };
    if (os_signals_install(s) != 0) return 1;
    return deep(0) == 0 ? 2 : 3;
  });
  EXPECT_EQ(rc, 33);
}

TEST(OsSignal, FaultHandlerThatReturnsDiesOfTheSignal) {
  int rc = ostest::in_child([] {
    os_signal_setup s;
    s.fault = [](int) { os_sa_stderr(""); };
    if (os_signals_install(s) != 0) return 1;
    ::raise(SIGFPE);
    return 2;
  });
  EXPECT_EQ(rc, 200 + SIGFPE);
}

void out_of_memory_hook() {}
void terminate_hook() { std::abort(); }

TEST(OsSignal, NewHandlerTerminateAndPipe) {
  int rc = ostest::in_child([] {
    os_signal_setup s;
    s.out_of_memory = out_of_memory_hook;
    s.terminate = terminate_hook;
    if (os_signals_install(s) != 0) return 1;
    if (std::get_new_handler() != out_of_memory_hook) return 2;
    if (std::get_terminate() != terminate_hook) return 3;
    ::raise(SIGPIPE);  // ignored
    os_signals_reset();
    if (std::get_new_handler() != nullptr) return 4;
    struct sigaction sa {};
    ::sigaction(SIGTERM, nullptr, &sa);
    return sa.sa_handler == SIG_DFL ? 0 : 5;
  });
  EXPECT_EQ(rc, 0);
}

// Runs a restart in a child whose "program" is sh writing its TOLVA_RESTARTS to `out`; returns the child's code.
int restart_child(const std::string& out, const char* restarts_env, bool batch) {
  return ostest::in_child([&] {
    if (restarts_env) {
      ::setenv("TOLVA_RESTARTS", restarts_env, 1);
    } else {
      ::unsetenv("TOLVA_RESTARTS");
    }
    std::string script = "printf %s \"$TOLVA_RESTARTS\" > '" + out + "'";
    const char* argv[] = {"sh", "-c", script.c_str()};
    if (os_restart_prepare(3, argv, "/bin/sh") != 0) return 1;
    os_restart(SIGSEGV, batch, true);
    return 77;  // refused
  });
}

TEST(OsSignal, RestartReExecsWithCountAndGuardsLoops) {
  ostest::temp_dir t;
  std::string out = t / "env";
  int64_t now = static_cast<int64_t>(::time(nullptr));

  EXPECT_EQ(restart_child(out, nullptr, false), 0);
  std::string v = ostest::read_file(out);
  ASSERT_EQ(v.substr(0, 2), "1:");
  int64_t start = std::stoll(v.substr(2));
  EXPECT_GE(start, now);
  EXPECT_LE(start, now + 5);

  std::string recent = std::to_string(now);
  EXPECT_EQ(restart_child(out, ("1:" + recent).c_str(), false), 0);
  EXPECT_EQ(ostest::read_file(out), "2:" + recent);  // same series

  ::unlink(out.c_str());
  EXPECT_EQ(restart_child(out, ("2:" + recent).c_str(), false), 77);  // third within 60 s
  EXPECT_FALSE(ostest::exists(out));

  std::string old = std::to_string(now - 100);
  EXPECT_EQ(restart_child(out, ("5:" + old).c_str(), false), 0);  // a new series
  EXPECT_EQ(ostest::read_file(out).substr(0, 2), "1:");

  ::unlink(out.c_str());
  EXPECT_EQ(restart_child(out, nullptr, true), 77);  // never in batch
  EXPECT_FALSE(ostest::exists(out));
}

}  // namespace
