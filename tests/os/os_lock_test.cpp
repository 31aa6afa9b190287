// Tests of the per-file lock shared between processes, and of the process and tree helpers beside it.
#include "os/os_lock.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/os/test_util.h"

using ostest::read_file;
using ostest::temp_dir;
using ostest::write_file;

namespace {

// A child that takes the lock of `path` for writing, tells the parent through a pipe, and holds the lock until
// the parent writes back (or for `hold_ms` when that is not 0). Returns the child's pid; `to_child` is the pipe
// end the parent writes to.
pid_t holder(const std::string& path, int hold_ms, int& to_child) {
  int ready[2], release[2];
  EXPECT_EQ(::pipe(ready), 0);
  EXPECT_EQ(::pipe(release), 0);
  pid_t pid = ::fork();
  if (pid == 0) {
    os_locked_file f;
    if (f.open(path, true) != 0 || f.lock(1, 0) != 0) ::_exit(3);
    char c = 'r';
    if (::write(ready[1], &c, 1) != 1) ::_exit(4);
    if (hold_ms > 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(hold_ms));
    else if (::read(release[0], &c, 1) != 1)
      ::_exit(5);
    ::_exit(0);
  }
  char c;
  EXPECT_EQ(::read(ready[0], &c, 1), 1);
  ::close(ready[0]);
  ::close(ready[1]);
  ::close(release[0]);
  to_child = release[1];
  return pid;
}

int reap(pid_t pid) {
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(OsLock, WriteOpenCreatesWithoutTruncatingAndReplaceTruncates) {
  temp_dir d;
  std::string p = d / "v";
  os_locked_file f;
  ASSERT_EQ(f.open(p, true), 0);
  ASSERT_EQ(f.lock(1, 0), 0);
  ASSERT_EQ(f.replace("hello world"), 0);
  f.close();
  os_locked_file g;
  ASSERT_EQ(g.open(p, true), 0);  // opening for writing keeps the bytes
  std::string got;
  ASSERT_EQ(g.read_all(got), 0);
  EXPECT_EQ(got, "hello world");
  ASSERT_EQ(g.replace("hi"), 0);  // a shorter value leaves nothing of the longer one
  ASSERT_EQ(g.read_all(got), 0);
  EXPECT_EQ(got, "hi");
  ASSERT_EQ(g.replace(""), 0);
  EXPECT_EQ(read_file(p), "");
}

TEST(OsLock, ReadingAMissingFileSaysSo) {
  temp_dir d;
  os_locked_file f;
  EXPECT_EQ(f.open(d / "none", false), ENOENT);
  EXPECT_EQ(f.lock(1, 0), EBADF);
}

TEST(OsLock, TwoDescriptorsOfOneProcessExcludeEachOther) {
  temp_dir d;
  std::string p = d / "v";
  os_locked_file a, b;
  ASSERT_EQ(a.open(p, true), 0);
  ASSERT_EQ(a.lock(1, 0), 0);
  ASSERT_EQ(b.open(p, true), 0);
  EXPECT_EQ(b.lock(3, 1), EAGAIN);
  a.close();  // the lock ends with its file
  EXPECT_EQ(b.lock(1, 0), 0);
}

TEST(OsLock, ReadersShareAndKeepAWriterOut) {
  temp_dir d;
  std::string p = d / "v";
  write_file(p, "x");
  os_locked_file r1, r2, w;
  ASSERT_EQ(r1.open(p, false), 0);
  ASSERT_EQ(r2.open(p, false), 0);
  EXPECT_EQ(r1.lock(1, 0), 0);
  EXPECT_EQ(r2.lock(1, 0), 0);
  ASSERT_EQ(w.open(p, true), 0);
  EXPECT_EQ(w.lock(2, 1), EAGAIN);
  r1.close();
  r2.close();
  EXPECT_EQ(w.lock(1, 0), 0);
  os_locked_file r3;
  ASSERT_EQ(r3.open(p, false), 0);
  EXPECT_EQ(r3.lock(2, 1), EAGAIN);  // and a writer keeps readers out
}

TEST(OsLock, AnotherProcessHoldsTheLockUntilItLetsGo) {
  temp_dir d;
  std::string p = d / "v";
  int to_child = -1;
  pid_t pid = holder(p, 0, to_child);
  os_locked_file f;
  ASSERT_EQ(f.open(p, false), 0);
  EXPECT_EQ(f.lock(3, 1), EAGAIN);
  char c = 'x';
  ASSERT_EQ(::write(to_child, &c, 1), 1);
  ::close(to_child);
  EXPECT_EQ(reap(pid), 0);
  EXPECT_EQ(f.lock(1, 0), 0);  // a process's locks end with it
}

TEST(OsLock, RetriesWaitForAShortHolder) {
  temp_dir d;
  std::string p = d / "v";
  int to_child = -1;
  pid_t pid = holder(p, 60, to_child);
  os_locked_file f;
  ASSERT_EQ(f.open(p, true), 0);
  EXPECT_EQ(f.lock(300, 10), 0);  // given up to 3 seconds, it gets the lock once the holder ends
  ::close(to_child);
  EXPECT_EQ(reap(pid), 0);
}

TEST(OsLock, ProcessIdsAndWhetherTheyRun) {
  EXPECT_EQ(os_pid(), static_cast<int>(::getpid()));
  EXPECT_TRUE(os_process_alive(os_pid()));
  EXPECT_TRUE(os_process_alive(1));  // init runs, though it belongs to another user
  EXPECT_FALSE(os_process_alive(0));
  EXPECT_FALSE(os_process_alive(-5));
  pid_t pid = ::fork();
  if (pid == 0) ::_exit(0);
  reap(pid);
  EXPECT_FALSE(os_process_alive(static_cast<int>(pid)));
}

TEST(OsLock, RemoveTreeTakesEverythingButFollowsNoLink) {
  temp_dir d;
  std::string outside = d / "outside";
  ::mkdir(outside.c_str(), 0777);
  write_file(outside + "/keep", "k");
  std::string tree = d / "tree";
  std::filesystem::create_directories(tree + "/a/b");
  write_file(tree + "/a/b/f", "1");
  write_file(tree + "/g", "2");
  ASSERT_EQ(::symlink(outside.c_str(), (tree + "/a/link").c_str()), 0);
  EXPECT_EQ(os_remove_tree(tree), 0);
  EXPECT_FALSE(ostest::exists(tree));
  EXPECT_EQ(read_file(outside + "/keep"), "k");
  EXPECT_EQ(os_remove_tree(d / "missing"), 0);
  EXPECT_EQ(os_remove_dir(outside), ENOTEMPTY);
  EXPECT_EQ(os_remove_dir(d / "missing"), ENOENT);
}
