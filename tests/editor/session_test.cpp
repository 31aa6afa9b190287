// Shell sessions: output growing in a session file, the exit line, Ctrl+C, reuse of the files, the settings.
#include "editor/session.h"

#include <filesystem>

#include "tests/editor/live_editor.h"

namespace {

namespace fs = std::filesystem;

class session : public live_editor {
 protected:
  fs::path dir;
  void SetUp() override {
    start();
    dir = fs::temp_directory_path() / ("tolva-session-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    xf_run.work_dir = dir.string();
    file_with({"main"}, (dir / "main.txt").string());
  }
  void TearDown() override {
    live_editor::TearDown();
    fs::remove_all(dir);
  }
  int32_t run(const std::string& text) {
    xf_new_step();
    return xfcom2(text, xf_run.work_dir);
  }
  const xf_file* named(const std::string& name) const {
    for (const auto& f : xf_ring.files)
      if (f->name == (dir / name).string()) return f.get();
    return nullptr;
  }
};

TEST_F(session, OutputLinesAndTheExitLine) {
  run("xshell printf 'a\\r\\nb\\nc'; exit 4");
  const xf_file* s = named("1.xshell");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(lines_of(*s), (std::vector<std::string>{"printf 'a\\r\\nb\\nc'; exit 4", "a", "b", "c",
                                                     "Shell \"printf 'a\\r\\nb\\nc'; exit 4\" exiting with return status = 4"}))
      << "CR before LF goes, a last line without LF stays open";
  EXPECT_EQ(xf_ring.file->name, (dir / "main.txt").string()) << "the file from before comes back";
}

TEST_F(session, FilesAreReusedInTurnPastTheMaximum) {
  run("xshellmax 2");
  run("xshell echo one");
  run("xshell echo two");
  ASSERT_NE(named("1.xshell"), nullptr);
  ASSERT_NE(named("2.xshell"), nullptr);
  run("xshell echo three");
  EXPECT_EQ(lines_of(*named("1.xshell"))[1], "three");
  run("xshell echo four");
  EXPECT_EQ(lines_of(*named("2.xshell"))[1], "four");
  EXPECT_EQ(xf_file_count(), 3);
}

TEST_F(session, ControlCStopsTheCommand) {
  host->interrupt();
  run("xshell echo started; sleep 20");
  const xf_file* s = named("1.xshell");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(last_msg(), "..... External process killed");
  for (const std::string& l : lines_of(*s)) EXPECT_EQ(l.find("exiting"), std::string::npos) << "no exit line";
}

TEST_F(session, SettingsAndBatch) {
  EXPECT_EQ(run("xshell"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  run("xshellmax");
  EXPECT_EQ(last_msg(), "..... Is 10");
  EXPECT_EQ(run("xshellmax 0"), 5);
  run("shellext pdf txt");
  run("shellext");
  EXPECT_EQ(last_msg(), "... Is \"pdf\" \"txt\"");
  run("messagesdir");
  EXPECT_EQ(last_msg(), "..... is \".\"");
  xf_run.batch = 1;
  run("xshell echo no");
  EXPECT_EQ(named("1.xshell"), nullptr) << "no session in batch";
}

}  // namespace
