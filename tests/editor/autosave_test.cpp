// Autosave copies and the reload of files changed on disk.
#include "editor/autosave.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "editor/fileio.h"
#include "tests/editor/test_support.h"

namespace {

namespace fs = std::filesystem;

struct Protect : ::testing::Test {
  fs::path dir;
  void SetUp() override {
    fresh_editor();
    dir = fs::temp_directory_path() / ("tolva-protect-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir / "auto");
    xf_run.work_dir = dir.string();
  }
  void TearDown() override { fs::remove_all(dir); }
  static std::string read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
  }
  void open(const std::string& name, const std::string& bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    ASSERT_EQ(xf_open((dir / name).string(), dir.string(), true), 0);
  }
  // One command, then the autosave step of the turn, as the main loop does.
  void turn(const std::string& text) {
    cmd(text);
    xf_autosave_round();
  }
};

TEST_F(Protect, AutosaveAfterTheCountAndNotBefore) {
  open("a.txt", "one\r\ntwo\r\n");
  turn("autosave 3 " + (dir / "auto").string());
  turn("autosave");
  EXPECT_EQ(last_msg(), "..... is 3 " + (dir / "auto").string());
  std::string copy = xf_autosave_name(*xf_ring.file);
  turn("input x");
  turn("input y");
  EXPECT_FALSE(fs::exists(copy)) << "two changes: not yet";
  turn("input z");
  ASSERT_TRUE(fs::exists(copy));
  EXPECT_EQ(read(copy), "x\ny\nz\none\ntwo\n") << "line feeds, whatever the file's own ends";
  EXPECT_EQ(last_msg(), "..... Autosaved as " + copy);
  EXPECT_EQ(xf_ring.file->alt_auto, 0);
  cmd("save");
  EXPECT_FALSE(fs::exists(copy)) << "a real save deletes the copy";
  turn("input a");
  turn("input b");
  EXPECT_FALSE(fs::exists(copy)) << "the count starts again from the save";
  EXPECT_EQ(cmd("autosave 0"), 1);
  EXPECT_EQ(cmd("autosave 2 " + (dir / "none").string()), 1);
  EXPECT_EQ(last_msg(), "..... Invalid directory");
}

TEST_F(Protect, TheNameCarriesTheProcessAndTheDirectory) {
  open("b.txt", "x\n");
  cmd("autosave 1 " + (dir / "auto").string());
  std::string mangled = dir.string();
  for (char& c : mangled)
    if (c == '/') c = '_';
  EXPECT_EQ(xf_autosave_name(*xf_ring.file),
            (dir / "auto").string() + "/autosave" + std::to_string(::getpid()) + mangled + "_b.txt_");
}

TEST_F(Protect, AFileChangedOnDiskIsReloadedWithItsPlaceAndPoints) {
  open("c.txt", "1\n2\n3\n");
  xf_current_line() = 1;
  cmd("point .here");
  // Something else writes the file a moment later.
  xf_ring.file->mtime -= 10;
  std::ofstream(dir / "c.txt", std::ios::binary) << "one\ntwo\nthree\nfour\n";
  EXPECT_TRUE(xf_reload_sweep());
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two", "three", "four"}));
  EXPECT_EQ(xf_current_line(), 1);
  ASSERT_EQ(xf_ring.file->points.size(), 1u);
  EXPECT_EQ(xf_ring.file->points[0].line, 1);
  EXPECT_EQ(read(dir / "c.txt%"), "1\n2\n3\n") << "the old text stays as a backup";
  EXPECT_EQ(last_msg(), ".... Warning: reloaded \"c.txt\" file; previous version saved in backup format.");
  EXPECT_FALSE(xf_reload_sweep()) << "nothing changed since";
}

TEST_F(Protect, LocalChangesAreKeptAndTheSameDiskTimeIsNotAskedAgain) {
  open("d.txt", "a\n");
  cmd("input mine");
  xf_ring.file->mtime -= 10;
  std::ofstream(dir / "d.txt", std::ios::binary) << "theirs\n";
  EXPECT_FALSE(xf_reload_sweep());
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"mine", "a"}));
  EXPECT_FALSE(xf_reload_sweep()) << "the sweep after a declined reload does nothing";
  cmd("reload off");
  cmd("reload");
  EXPECT_EQ(last_msg(), "..... Is OFF");
}

}  // namespace
