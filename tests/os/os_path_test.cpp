// Tests of os_path: folding, tilde, name parts, PATH lists, home and XDG dirs, realpath, xhome search.
#include "os/os_path.h"

#include <cerrno>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>

#include "tests/os/test_util.h"

namespace {

std::string passwd_home_of_uid() {
  struct passwd* pw = ::getpwuid(::getuid());
  return pw ? pw->pw_dir : "/";
}

TEST(OsPath, FoldsDotsAndSlashesLexically) {
  EXPECT_EQ(os_fold("/a/./b/../c"), "/a/c");
  EXPECT_EQ(os_fold("/../../x"), "/x");
  EXPECT_EQ(os_fold("//a//b/"), "/a/b");
  EXPECT_EQ(os_fold("/"), "/");
  EXPECT_EQ(os_fold("/a/.."), "/");
  EXPECT_EQ(os_fold("/a/b/../../.."), "/");
  EXPECT_EQ(os_fold("/a/..b/c"), "/a/..b/c");
  EXPECT_EQ(os_fold("/a/b\\c"), "/a/b\\c");  // a backslash is a name byte
}

TEST(OsPath, AbsoluteJoinsWorkDirAndExpandsTilde) {
  os_env env = os_env_map({{"HOME", "/h/me"}});
  EXPECT_EQ(os_absolute("x.c", "/w/d", env), "/w/d/x.c");
  EXPECT_EQ(os_absolute("../x.c", "/w/d", env), "/w/x.c");
  EXPECT_EQ(os_absolute("./x.c", "/w/d/", env), "/w/d/x.c");
  EXPECT_EQ(os_absolute("/abs/./y", "/w/d", env), "/abs/y");
  EXPECT_EQ(os_absolute("~/f", "/w", env), "/h/me/f");
  EXPECT_EQ(os_absolute("~", "/w", env), "/h/me");
  EXPECT_EQ(os_absolute("a~/b", "/w", env), "/w/a~/b");
}

TEST(OsPath, TildeForms) {
  os_env env = os_env_map({{"HOME", "/h/me/"}});
  EXPECT_EQ(os_expand_tilde("~/x", env), "/h/me/x");
  EXPECT_EQ(os_expand_tilde("~", env), "/h/me");
  EXPECT_EQ(os_expand_tilde("x/~", env), "x/~");
  struct passwd* root = ::getpwnam("root");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(os_expand_tilde("~root/x", env), std::string(root->pw_dir) + "/x");
  EXPECT_EQ(os_expand_tilde("~no_such_user_tolva/x", env), "~no_such_user_tolva/x");
  // No HOME, or an empty one: the passwd entry.
  EXPECT_EQ(os_expand_tilde("~/x", os_env_map({})), passwd_home_of_uid() + "/x");
  EXPECT_EQ(os_home(os_env_map({{"HOME", ""}})), passwd_home_of_uid());
}

TEST(OsPath, NameParts) {
  const char* paths[] = {"a/b/c.x", "noslash", "/", "/top", "a/b/", ".bashrc", "/a.b/c"};
  for (const char* p : paths) {
    EXPECT_EQ(std::string(os_dir_part(p)) + std::string(os_base_name(p)), p) << p;
  }
  EXPECT_EQ(os_base_name("a/b/c.x"), "c.x");
  EXPECT_EQ(os_dir_part("a/b/c.x"), "a/b/");
  EXPECT_EQ(os_dir_part("noslash"), "");
  EXPECT_EQ(os_base_name("a/b/"), "");
  EXPECT_EQ(os_extension("a/b/c.x"), "x");
  EXPECT_EQ(os_extension("a.tar.gz"), "gz");
  EXPECT_EQ(os_extension("a."), "");
  EXPECT_EQ(os_extension(".bashrc"), "bashrc");
  EXPECT_FALSE(os_extension("/a.b/c").has_value());
  EXPECT_FALSE(os_extension("plain").has_value());
}

TEST(OsPath, PathListKeepsOnlyAbsoluteEntries) {
  EXPECT_EQ(os_split_path_list("/a::b:/c/:rel:./x:/d"), (std::vector<std::string>{"/a", "/c/", "/d"}));
  EXPECT_TRUE(os_split_path_list("").empty());
  EXPECT_TRUE(os_split_path_list(":::").empty());
  EXPECT_EQ(os_split_path_list("/only"), (std::vector<std::string>{"/only"}));
}

TEST(OsPath, XdgDirs) {
  os_env set = os_env_map({{"HOME", "/h"}, {"XDG_CONFIG_HOME", "/cfg/"}, {"XDG_STATE_HOME", "/st"}});
  EXPECT_EQ(os_xdg_config_home(set), "/cfg");
  EXPECT_EQ(os_xdg_state_home(set), "/st");
  os_env relative = os_env_map({{"HOME", "/h"}, {"XDG_CONFIG_HOME", "cfg"}, {"XDG_STATE_HOME", ""}});
  EXPECT_EQ(os_xdg_config_home(relative), "/h/.config");
  EXPECT_EQ(os_xdg_state_home(relative), "/h/.local/state");
}

TEST(OsPath, RealpathFollowsLinksAndTellsLoops) {
  ostest::temp_dir t;
  ostest::write_file(t / "file", "x");
  ASSERT_EQ(::symlink("file", (t / "l1").c_str()), 0);
  ASSERT_EQ(::symlink("l1", (t / "l2").c_str()), 0);
  ASSERT_EQ(::symlink("loopb", (t / "loopa").c_str()), 0);
  ASSERT_EQ(::symlink("loopa", (t / "loopb").c_str()), 0);
  std::string real_dir, out;
  ASSERT_EQ(os_realpath(t.path(), real_dir), 0);
  ASSERT_EQ(os_realpath(t / "l2", out), 0);
  EXPECT_EQ(out, real_dir + "/file");
  EXPECT_EQ(os_realpath(t / "loopa", out), ELOOP);
  EXPECT_EQ(os_realpath(t / "missing", out), ENOENT);
}

TEST(OsPath, SelfAndCurrentDir) {
  auto exe = os_self_exe();
  ASSERT_TRUE(exe.has_value());
  EXPECT_EQ(os_base_name(*exe), "os_tests");
  auto cwd = os_current_dir();
  ASSERT_TRUE(cwd.has_value());
  EXPECT_EQ((*cwd)[0], '/');
}

class OsXhome : public ::testing::Test {
 protected:
  ostest::temp_dir t;
  void mkdirs(const std::string& rel) { std::filesystem::create_directories(t / rel); }
  os_xhome_places places(bool with_source) {
    return {with_source ? t / "src/data/" : t / "nosuch/data/", "/opt/tolva-install/share/tolva"};
  }
};

TEST_F(OsXhome, ProgramDirHoldingHelp) {
  mkdirs("inst/help");
  mkdirs("src/data");
  EXPECT_EQ(os_find_xhome(t / "inst/tolva", places(true)), t / "inst/");
}

TEST_F(OsXhome, ShareBesideBin) {
  mkdirs("prefix/bin");
  mkdirs("prefix/share/tolva/help");
  mkdirs("src/data");
  EXPECT_EQ(os_find_xhome(t / "prefix/bin/tolva", places(true)), t / "prefix/share/tolva/");
}

TEST_F(OsXhome, BuildTreeData) {
  mkdirs("build/app");
  mkdirs("src/data");
  EXPECT_EQ(os_find_xhome(t / "build/app/tolva", places(true)), t / "src/data/");
}

TEST_F(OsXhome, TwoLevelsUpThenInstallDir) {
  mkdirs("inst/machine");
  EXPECT_EQ(os_find_xhome(t / "inst/machine/tolva", places(false)), t / "inst/");
  // A program at the root has no two levels: the compiled-in place, with its "/" added.
  EXPECT_EQ(os_find_xhome("/tolva-no-such-program", places(false)), "/opt/tolva-install/share/tolva/");
}

}  // namespace
