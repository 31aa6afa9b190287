// Tests of the safe save: what is on disk afterwards, on every road and after every kind of failure.
#include "os/os_save.h"

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/xattr.h>

#include "os/os_file.h"
#include "os/os_path.h"
#include "tests/os/test_util.h"

namespace {

os_save_producer image(std::string text) {
  return [text = std::move(text)](os_save_sink& sink) { sink.append(text); };
}

os_save_options opts(const std::string& target) {
  os_save_options o;
  o.target = target;
  return o;
}

class OsSave : public ::testing::Test {
 protected:
  ostest::temp_dir t;
  std::string f = t / "file.txt";
  void SetUp() override {
#ifdef TOLVA_TEST_HOOKS
    os_save_faults() = {};
#endif
  }
  void TearDown() override {
#ifdef TOLVA_TEST_HOOKS
    os_save_faults() = {};
#endif
  }
};

TEST_F(OsSave, NewFileGetsUmaskModeAndNoBackup) {
  mode_t old = ::umask(022);
  os_save_result r = os_save(opts(f), image("one\ntwo\n"));
  ::umask(old);
  ASSERT_TRUE(r.ok()) << r.reason;
  EXPECT_EQ(ostest::read_file(f), "one\ntwo\n");
  EXPECT_EQ(ostest::stat_of(f).st_mode & 07777, 0644u);
  EXPECT_FALSE(ostest::exists(f + "%"));
  EXPECT_TRUE(r.backup.empty());
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
  struct stat st = ostest::stat_of(f);
  EXPECT_EQ(r.mtime, st.st_mtim.tv_sec);
  EXPECT_EQ(r.mtime_ns, st.st_mtim.tv_nsec);
}

TEST_F(OsSave, ExistingFileRenameRoadKeepsModeAndBacksUp) {
  ostest::write_file(f, "old\n");
  ::chmod(f.c_str(), 0640);
  ino_t old_ino = ostest::stat_of(f).st_ino;
  os_save_result r = os_save(opts(f), image("new\n"));
  ASSERT_TRUE(r.ok()) << r.reason;
  EXPECT_EQ(ostest::read_file(f), "new\n");
  EXPECT_EQ(ostest::read_file(f + "%"), "old\n");
  EXPECT_EQ(r.backup, f + "%");
  EXPECT_EQ(r.backup_err, 0);
  EXPECT_EQ(ostest::stat_of(f).st_mode & 07777, 0640u);
  EXPECT_EQ(ostest::stat_of(f + "%").st_ino, old_ino);  // the old inode became the backup
  EXPECT_NE(ostest::stat_of(f).st_ino, old_ino);
  EXPECT_EQ(ostest::stat_of(f).st_nlink, 1u);
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

TEST_F(OsSave, BackupOffLeavesNoBackupAndOwnSuffix) {
  ostest::write_file(f, "old");
  ostest::write_file(f + "%", "stale backup");
  os_save_options o = opts(f);
  o.backup_on = false;
  ASSERT_TRUE(os_save(o, image("new")).ok());
  EXPECT_EQ(ostest::read_file(f), "new");
  EXPECT_FALSE(ostest::exists(f + "%"));

  o.backup_on = true;
  o.backup_suffix = ".bak";
  os_save_result r = os_save(o, image("newer"));
  ASSERT_TRUE(r.ok());
  EXPECT_EQ(ostest::read_file(f + ".bak"), "new");
  EXPECT_EQ(r.backup, f + ".bak");
}

TEST_F(OsSave, PlantedSymlinkAtBackupIsNeverFollowed) {
  ostest::write_file(f, "old");
  ostest::write_file(t / "victim", "precious");
  ASSERT_EQ(::symlink("victim", (f + "%").c_str()), 0);
  ASSERT_TRUE(os_save(opts(f), image("new")).ok());
  EXPECT_EQ(ostest::read_file(t / "victim"), "precious");
  EXPECT_EQ(ostest::read_file(f + "%"), "old");
  os_file_info info;
  os_file_stat(f + "%", info);
  EXPECT_FALSE(info.symlink);

  // The in-place road copies to the backup: the same holds there.
  ASSERT_EQ(::unlink((f + "%").c_str()), 0);
  ASSERT_EQ(::symlink("victim", (f + "%").c_str()), 0);
  os_save_options o = opts(f);
  o.preserve_links = true;
  ASSERT_TRUE(os_save(o, image("newer")).ok());
  EXPECT_EQ(ostest::read_file(t / "victim"), "precious");
  EXPECT_EQ(ostest::read_file(f + "%"), "new");
}

TEST_F(OsSave, HardLinksKeptByRewritingInPlace) {
  ostest::write_file(f, "old content");
  ASSERT_EQ(::link(f.c_str(), (t / "other").c_str()), 0);
  ino_t ino = ostest::stat_of(f).st_ino;
  os_save_result r = os_save(opts(f), image("new"));
  ASSERT_TRUE(r.ok()) << r.reason;
  EXPECT_EQ(ostest::read_file(f), "new");
  EXPECT_EQ(ostest::read_file(t / "other"), "new");
  EXPECT_EQ(ostest::stat_of(f).st_ino, ino);
  EXPECT_EQ(ostest::stat_of(f).st_nlink, 2u);
  EXPECT_EQ(ostest::read_file(f + "%"), "old content");
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

TEST_F(OsSave, PreserveLinksRewritesInPlaceEvenForOneLink) {
  ostest::write_file(f, "a longer old content");
  ino_t ino = ostest::stat_of(f).st_ino;
  os_save_options o = opts(f);
  o.preserve_links = true;
  o.backup_on = false;
  ASSERT_TRUE(os_save(o, image("short")).ok());
  EXPECT_EQ(ostest::read_file(f), "short");  // cut to the new length
  EXPECT_EQ(ostest::stat_of(f).st_ino, ino);
  EXPECT_FALSE(ostest::exists(f + "%"));
}

TEST_F(OsSave, SymlinkTargetWrittenAndLinkKept) {
  std::filesystem::create_directory(t / "real");
  std::string target = t / "real/target.c";
  ostest::write_file(target, "old");
  std::string link = t / "link.c";
  ASSERT_EQ(::symlink("real/target.c", link.c_str()), 0);
  os_save_result r = os_save(opts(link), image("new"));
  ASSERT_TRUE(r.ok()) << r.reason;
  std::string real;
  ASSERT_EQ(os_realpath(target, real), 0);
  EXPECT_EQ(r.written, real);
  EXPECT_EQ(ostest::read_file(target), "new");
  EXPECT_EQ(ostest::read_file(target + "%"), "old");
  os_file_info info;
  ASSERT_EQ(os_file_stat(link, info), 0);
  EXPECT_TRUE(info.symlink);
  EXPECT_FALSE(ostest::exists(link + "%"));
  EXPECT_EQ(ostest::count_temp_files(t / "real"), 0);
}

TEST_F(OsSave, DanglingSymlinkCreatesItsTarget) {
  ASSERT_EQ(::symlink("made.txt", f.c_str()), 0);
  os_save_result r = os_save(opts(f), image("x"));
  ASSERT_TRUE(r.ok()) << r.reason;
  EXPECT_EQ(ostest::read_file(t / "made.txt"), "x");
  os_file_info info;
  os_file_stat(f, info);
  EXPECT_TRUE(info.symlink);
}

TEST_F(OsSave, LinkToItselfIsRefused) {
  ASSERT_EQ(::symlink("file.txt", f.c_str()), 0);
  bool called = false;
  os_save_result r = os_save(opts(f), [&](os_save_sink&) { called = true; });
  EXPECT_EQ(r.status, os_save_status::linked_to_itself);
  EXPECT_EQ(r.err, ELOOP);
  EXPECT_FALSE(r.reason.empty());
  EXPECT_FALSE(called);
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

TEST_F(OsSave, VanishedDirectoryAndDirectoryTarget) {
  os_save_result r = os_save(opts(t / "gone/file"), image("x"));
  EXPECT_EQ(r.status, os_save_status::create_failed);
  EXPECT_EQ(r.err, ENOENT);
  EXPECT_EQ(r.reason, "No such file or directory");
  r = os_save(opts(t.path()), image("x"));
  EXPECT_EQ(r.status, os_save_status::create_failed);
  EXPECT_EQ(r.err, EISDIR);
}

TEST_F(OsSave, DirectoryMovedOrRemovedWhileSaving) {
  std::filesystem::create_directory(t / "d");
  ostest::write_file(t / "d/f", "old");
  // Moved away mid-save: every step still names the same directory, so the save lands there whole.
  os_save_result r = os_save(opts(t / "d/f"), [&](os_save_sink& sink) {
    sink.append("new");
    std::filesystem::rename(t / "d", t / "moved");
  });
  EXPECT_TRUE(r.ok()) << r.reason;
  EXPECT_EQ(ostest::read_file(t / "moved/f"), "new");
  EXPECT_EQ(ostest::read_file(t / "moved/f%"), "old");
  EXPECT_EQ(ostest::count_temp_files(t / "moved"), 0);
  // Removed mid-save: a clean failure with the system's reason.
  r = os_save(opts(t / "moved/f"), [&](os_save_sink& sink) {
    sink.append("newer");
    std::filesystem::remove_all(t / "moved");
  });
  EXPECT_EQ(r.status, os_save_status::replace_failed);
  EXPECT_EQ(r.err, ENOENT);
  EXPECT_EQ(r.reason, "No such file or directory");
  EXPECT_FALSE(ostest::exists(t / "moved"));
}

TEST_F(OsSave, ReadOnlyDirectoryFailsCleanly) {
  ostest::write_file(f, "old");
  ::chmod(f.c_str(), 0666);
  ::chmod(t.path().c_str(), 0555);
  int rc = ostest::as_nobody([&] {
    os_save_result r = os_save(opts(f), image("new"));
    if (r.status != os_save_status::create_failed) return 1;
    if (r.err != EACCES) return 2;
    return 0;
  });
  ::chmod(t.path().c_str(), 0700);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(ostest::read_file(f), "old");
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
  EXPECT_FALSE(ostest::exists(f + "%"));
}

TEST_F(OsSave, OwnerWeCannotGiveTakesTheInPlaceRoad) {
  ostest::write_file(f, "root's old");
  ::chmod(f.c_str(), 0666);
  ::chmod(t.path().c_str(), 0777);
  ino_t ino = ostest::stat_of(f).st_ino;
  int rc = ostest::as_nobody([&] { return os_save(opts(f), image("nobody's new")).ok() ? 0 : 1; });
  ::chmod(t.path().c_str(), 0700);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(ostest::read_file(f), "nobody's new");
  struct stat st = ostest::stat_of(f);
  EXPECT_EQ(st.st_ino, ino);
  EXPECT_EQ(st.st_uid, 0u);
  EXPECT_EQ(ostest::read_file(f + "%"), "root's old");
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

TEST_F(OsSave, ChunkedProducerOfAnySize) {
  std::string expect;
  os_save_result r = os_save(opts(f), [&](os_save_sink& sink) {
    for (int i = 0; i < 100000; ++i) {
      char c = static_cast<char>('a' + i % 26);
      sink.append(&c, 1);
      expect += c;
    }
    std::string big(200000, 'B');
    sink.append(big);
    expect += big;
    sink.append("", 0);
    sink.append("end");
    expect += "end";
  });
  ASSERT_TRUE(r.ok());
  EXPECT_EQ(ostest::read_file(f), expect);
  ASSERT_TRUE(os_save(opts(f), [](os_save_sink&) {}).ok());
  EXPECT_EQ(ostest::read_file(f), "");
}

TEST_F(OsSave, KeepDatePutsBackOldTimes) {
  ostest::write_file(f, "old");
  ASSERT_EQ(os_set_times(f, 1000000000, 5, 978307200, 123456789), 0);
  os_save_options o = opts(f);
  o.keep_date = true;
  os_save_result r = os_save(o, image("new"));
  ASSERT_TRUE(r.ok());
  struct stat st = ostest::stat_of(f);
  EXPECT_EQ(st.st_mtim.tv_sec, 978307200);
  EXPECT_EQ(st.st_mtim.tv_nsec, 123456789);
  EXPECT_EQ(r.mtime, 978307200);
  EXPECT_EQ(r.mtime_ns, 123456789);

  o.preserve_links = true;  // the in-place road too
  r = os_save(o, image("newer"));
  ASSERT_TRUE(r.ok());
  EXPECT_EQ(ostest::stat_of(f).st_mtim.tv_sec, 978307200);
  EXPECT_EQ(r.mtime, 978307200);

  o.keep_date = false;
  r = os_save(o, image("newest"));
  EXPECT_GT(r.mtime, 978307200);
}

TEST_F(OsSave, ExtendedAttributesCarriedOver) {
  ostest::write_file(f, "old");
  if (::setxattr(f.c_str(), "user.tolva", "v1", 2, 0) != 0) GTEST_SKIP() << "no user xattrs on this file system";
  ASSERT_TRUE(os_save(opts(f), image("new")).ok());
  char buf[16];
  ssize_t n = ::getxattr(f.c_str(), "user.tolva", buf, sizeof buf);
  ASSERT_EQ(n, 2);
  EXPECT_EQ(std::string(buf, 2), "v1");
}

TEST_F(OsSave, CrashingMakesNoBackupAndTouchesNone) {
  ostest::write_file(f, "old");
  ostest::write_file(f + "%", "older");
  ASSERT_EQ(::link(f.c_str(), (t / "hard").c_str()), 0);
  os_save_options o = opts(f);
  o.crashing = true;
  ASSERT_TRUE(os_save(o, image("rescued")).ok());
  EXPECT_EQ(ostest::read_file(f), "rescued");
  EXPECT_EQ(ostest::read_file(f + "%"), "older");
  EXPECT_EQ(ostest::read_file(t / "hard"), "old");  // never rewritten in place without a backup
}

#ifdef TOLVA_TEST_HOOKS
TEST_F(OsSave, InjectedWriteFailureKeepsOldContent) {
  ostest::write_file(f, "old content");
  ostest::write_file(f + "%", "old backup");
  os_save_faults().image_bytes = 70000;
  os_save_faults().err = ENOSPC;
  bool saw_failed = false;
  os_save_result r = os_save(opts(f), [&](os_save_sink& sink) {
    std::string line(1000, 'x');
    for (int i = 0; i < 200 && !sink.failed(); ++i) sink.append(line);
    saw_failed = sink.failed();
  });
  EXPECT_TRUE(saw_failed);
  EXPECT_EQ(r.status, os_save_status::write_failed);
  EXPECT_EQ(r.err, ENOSPC);
  EXPECT_EQ(r.reason, "No space left on device");
  EXPECT_EQ(ostest::read_file(f), "old content");
  EXPECT_EQ(ostest::read_file(f + "%"), "old backup");
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

TEST_F(OsSave, FailedInPlaceRewriteRestoresFromBackup) {
  std::string old(100000, 'o');
  ostest::write_file(f, old);
  ASSERT_EQ(::link(f.c_str(), (t / "other").c_str()), 0);
  os_save_faults().inplace_bytes = 70000;
  os_save_options o = opts(f);
  o.backup_on = false;
  os_save_result r = os_save(o, image(std::string(150000, 'n')));
  EXPECT_EQ(r.status, os_save_status::replace_failed);
  EXPECT_EQ(r.err, EIO);
  EXPECT_EQ(ostest::read_file(f), old);
  EXPECT_EQ(ostest::read_file(t / "other"), old);
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
  EXPECT_FALSE(ostest::exists(f + "%"));  // restored, and backups were off
}
#endif

TEST_F(OsSave, FileSizeLimitFailsCleanlyWithEfbig) {
  std::string old(100, 'o');
  ostest::write_file(f, old);
  int rc = ostest::in_child([&] {
    struct rlimit rl {4096, 4096};
    if (::setrlimit(RLIMIT_FSIZE, &rl) != 0) return 90;
    ::signal(SIGXFSZ, SIG_DFL);  // the save itself must ignore it
    os_save_result r = os_save(opts(f), image(std::string(10000, 'n')));
    if (r.status != os_save_status::write_failed) return 1;
    return r.err == EFBIG ? 0 : 2;
  });
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(ostest::read_file(f), old);
  EXPECT_EQ(ostest::count_temp_files(t.path()), 0);
}

}  // namespace
