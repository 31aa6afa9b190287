// Tests of os_file: stat, reading to EOF without a write open, read-only reasons, listings, protection, times.
#include "os/os_file.h"

#include <cerrno>
#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>

#include "tests/os/test_util.h"

namespace {

TEST(OsFile, StatKindsSizesLinks) {
  ostest::temp_dir t;
  ostest::write_file(t / "f", "hello");
  ::chmod((t / "f").c_str(), 0640);
  os_file_info info;
  ASSERT_EQ(os_file_stat(t / "f", info), 0);
  EXPECT_EQ(info.kind, os_kind::regular);
  EXPECT_EQ(info.size, 5);
  EXPECT_EQ(info.mode, 0640u);
  EXPECT_TRUE(info.owner_write);
  EXPECT_FALSE(info.symlink);
  EXPECT_EQ(info.links, 1u);
  ASSERT_EQ(::link((t / "f").c_str(), (t / "g").c_str()), 0);
  ASSERT_EQ(os_file_stat(t / "f", info), 0);
  EXPECT_EQ(info.links, 2u);

  EXPECT_EQ(os_file_kind(t.path()), os_kind::directory);
  EXPECT_EQ(os_file_kind("/dev/null"), os_kind::other);
  EXPECT_EQ(os_file_stat(t / "missing", info), ENOENT);
  EXPECT_EQ(info.kind, os_kind::none);

  ASSERT_EQ(::symlink("f", (t / "ln").c_str()), 0);
  ASSERT_EQ(os_file_stat(t / "ln", info), 0);
  EXPECT_TRUE(info.symlink);
  EXPECT_EQ(info.kind, os_kind::regular);
  EXPECT_EQ(info.size, 5);
  ASSERT_EQ(::symlink("nowhere", (t / "dangling").c_str()), 0);
  EXPECT_EQ(os_file_stat(t / "dangling", info), ENOENT);
  EXPECT_TRUE(info.symlink);
  EXPECT_EQ(info.kind, os_kind::none);
}

TEST(OsFile, TimesWithNanoseconds) {
  ostest::temp_dir t;
  ostest::write_file(t / "f", "x");
  ASSERT_EQ(os_set_times(t / "f", 1000000000, 123456789, 978307200, 987654321), 0);
  os_file_info info;
  ASSERT_EQ(os_file_stat(t / "f", info), 0);
  EXPECT_EQ(info.atime, 1000000000);
  EXPECT_EQ(info.atime_ns, 123456789);
  EXPECT_EQ(info.mtime, 978307200);
  EXPECT_EQ(info.mtime_ns, 987654321);
  EXPECT_EQ(os_set_times(t / "missing", 0, 0, 0, 0), ENOENT);
}

TEST(OsFile, ReaderReadsToEofWhateverSizeSays) {
  os_reader r;
  ASSERT_EQ(r.open("/proc/self/status"), 0);
  os_file_info info;
  ASSERT_EQ(r.stat(info), 0);
  EXPECT_EQ(info.size, 0);  // /proc says 0
  std::string all;
  char buf[7];  // small chunks on purpose
  for (std::ptrdiff_t n; (n = r.read(buf, sizeof buf)) > 0;) all.append(buf, static_cast<std::size_t>(n));
  EXPECT_EQ(r.err(), 0);
  EXPECT_NE(all.find("Pid:"), std::string::npos);
}

TEST(OsFile, ReaderErrorsAndMoves) {
  ostest::temp_dir t;
  os_reader r;
  EXPECT_EQ(r.open(t / "missing"), ENOENT);
  EXPECT_EQ(os_strerror(ENOENT), "No such file or directory");
  EXPECT_EQ(r.open(t.path()), EISDIR);
  char c;
  EXPECT_EQ(r.read(&c, 1), -1);
  EXPECT_EQ(r.err(), EBADF);

  std::string big(300000, 'z');
  big[299999] = 'E';
  ostest::write_file(t / "big", big);
  os_reader a;
  ASSERT_EQ(a.open(t / "big"), 0);
  os_reader b(std::move(a));
  EXPECT_EQ(a.fd(), -1);
  std::string got;
  ASSERT_EQ(os_read_file(t / "big", got), 0);
  EXPECT_EQ(got, big);
  EXPECT_GE(b.fd(), 0);
}

TEST(OsFile, ReadingNeverOpensForWrite) {
  ostest::temp_dir t;
  ostest::write_file(t / "watched", "content\n");
  int in = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(in, 0);
  ASSERT_GE(::inotify_add_watch(in, (t / "watched").c_str(), IN_CLOSE_WRITE | IN_CLOSE_NOWRITE), 0);
  std::string got;
  ASSERT_EQ(os_read_file(t / "watched", got), 0);
  os_read_only_reason(t / "watched");
  alignas(struct inotify_event) char buf[4096];
  ssize_t n = ::read(in, buf, sizeof buf);
  ASSERT_GT(n, 0);
  int nowrite = 0;
  for (char* p = buf; p < buf + n;) {
    auto* ev = reinterpret_cast<struct inotify_event*>(p);
    EXPECT_FALSE(ev->mask & IN_CLOSE_WRITE);
    if (ev->mask & IN_CLOSE_NOWRITE) ++nowrite;
    p += sizeof(struct inotify_event) + ev->len;
  }
  EXPECT_GE(nowrite, 1);
  ::close(in);
}

TEST(OsFile, ReadOnlyReasons) {
  ostest::temp_dir t;
  ostest::write_file(t / "rw", "x");
  ostest::write_file(t / "ro", "x");
  ::chmod((t / "rw").c_str(), 0644);
  ::chmod((t / "ro").c_str(), 0444);
  EXPECT_EQ(os_read_only_reason(t / "rw"), os_ro_reason::writable);
  EXPECT_EQ(os_read_only_reason(t / "ro"), os_ro_reason::read_only);  // even for root
  EXPECT_EQ(os_read_only_reason(t / "missing"), os_ro_reason::other);

  // Write bits, but not for this user: run as nobody on a root-owned 0644 file.
  ::chmod(t.path().c_str(), 0755);
  int rc = ostest::as_nobody([&] { return static_cast<int>(os_read_only_reason(t / "rw")); });
  EXPECT_EQ(rc, static_cast<int>(os_ro_reason::no_write_access));
}

// A child holds a lock of `type` on the file until the parent closes the pipe; returns its pid.
pid_t hold_lock(const std::string& path, short type, int& release_fd) {
  int ready[2], release[2];
  if (::pipe(ready) != 0 || ::pipe(release) != 0) return -1;
  pid_t pid = ::fork();
  if (pid == 0) {
    ::close(ready[0]);
    ::close(release[1]);
    int fd = ::open(path.c_str(), O_RDWR);
    struct flock fl {};
    fl.l_type = type;
    fl.l_whence = SEEK_SET;
    char ok = (fd >= 0 && ::fcntl(fd, F_OFD_SETLK, &fl) == 0) ? 'y' : 'n';
    [[maybe_unused]] ssize_t w = ::write(ready[1], &ok, 1);
    char c;
    [[maybe_unused]] ssize_t r = ::read(release[0], &c, 1);
    ::_exit(0);
  }
  ::close(ready[1]);
  ::close(release[0]);
  char ok = 'n';
  [[maybe_unused]] ssize_t r = ::read(ready[0], &ok, 1);
  ::close(ready[0]);
  release_fd = release[1];
  return ok == 'y' ? pid : -1;
}

TEST(OsFile, LockedByAnotherProcessIsInUse) {
  ostest::temp_dir t;
  ostest::write_file(t / "f", "x");
  int release = -1;
  pid_t pid = hold_lock(t / "f", F_WRLCK, release);
  ASSERT_GT(pid, 0);
  os_reader r;
  ASSERT_EQ(r.open(t / "f"), 0);
  EXPECT_EQ(os_read_only_reason(t / "f", r.fd()), os_ro_reason::in_use);
  EXPECT_EQ(os_read_only_reason(t / "f"), os_ro_reason::in_use);
  ::close(release);
  ::waitpid(pid, nullptr, 0);
  EXPECT_EQ(os_read_only_reason(t / "f"), os_ro_reason::writable);

  // Another's read lock does not stop us writing.
  pid = hold_lock(t / "f", F_RDLCK, release);
  ASSERT_GT(pid, 0);
  EXPECT_EQ(os_read_only_reason(t / "f"), os_ro_reason::writable);
  ::close(release);
  ::waitpid(pid, nullptr, 0);
}

TEST(OsFile, ListingSkipsDots) {
  ostest::temp_dir t;
  ostest::write_file(t / "b", "");
  ostest::write_file(t / "a", "");
  ostest::write_file(t / ".hidden", "");
  std::filesystem::create_directory(t / "sub");
  std::vector<std::string> names;
  ASSERT_EQ(os_list_dir(t.path(), names), 0);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".hidden", "a", "b", "sub"}));
  EXPECT_EQ(os_list_dir(t / "missing", names), ENOENT);
  EXPECT_EQ(os_list_dir(t / "a", names), ENOTDIR);
}

TEST(OsFile, ProtectionRemovalAndSmallWrappers) {
  ostest::temp_dir t;
  ostest::write_file(t / "f", "x");
  ::chmod((t / "f").c_str(), 0404);
  ASSERT_EQ(os_make_writable(t / "f"), 0);
  EXPECT_EQ(ostest::stat_of(t / "f").st_mode & 07777, 0604u);
  EXPECT_EQ(os_make_writable(t / "missing"), ENOENT);

  EXPECT_EQ(os_rename(t / "f", t / "g"), 0);
  EXPECT_FALSE(ostest::exists(t / "f"));
  EXPECT_EQ(os_remove(t / "g"), 0);
  EXPECT_EQ(os_remove(t / "g"), ENOENT);

  EXPECT_EQ(os_make_dirs(t / "x/y/z", 0700), 0);
  EXPECT_EQ(os_file_kind(t / "x/y/z"), os_kind::directory);
  EXPECT_EQ(ostest::stat_of(t / "x/y/z").st_mode & 0777, 0700u);
  EXPECT_EQ(os_make_dirs(t / "x/y/z", 0700), 0);
  EXPECT_EQ(os_make_dir(t / "x", 0700), EEXIST);
  ostest::write_file(t / "plain", "");
  EXPECT_NE(os_make_dirs(t / "plain/sub", 0700), 0);

  EXPECT_TRUE(os_is_executable("/bin/sh"));
  EXPECT_FALSE(os_is_executable("/bin"));
  EXPECT_FALSE(os_is_executable(t / "plain"));
}

}  // namespace
