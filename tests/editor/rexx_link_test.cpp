// REXX macros in the editor: Ctrl+C on the screen stops a runaway macro and the macros around it.
#include "editor/rexx_link.h"

#include <filesystem>
#include <fstream>

#include "tests/editor/live_editor.h"

namespace {

namespace fs = std::filesystem;

class rexx_link : public live_editor {
 protected:
  fs::path dir;
  void SetUp() override {
    start();
    dir = fs::temp_directory_path() / ("tolva-rexx-link-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    xf_run.work_dir = dir.string();
    file_with({"a"}, (dir / "a.txt").string());
  }
  void TearDown() override {
    live_editor::TearDown();
    fs::remove_all(dir);
  }
  void macro(const std::string& name, const std::string& text) { std::ofstream(dir / name) << text; }
  int32_t run(const std::string& text) {
    xf_new_step();
    return xfcom2(text, xf_run.work_dir);
  }
};

TEST_F(rexx_link, ControlCKillsARunawayMacroAndTheOnesAroundIt) {
  macro("spin.tolva", "do forever\nend\n");
  macro("outer.tolva", "'spin'\n'input after'\n");
  run("hash spin.tolva outer.tolva");
  host->interrupt();
  EXPECT_EQ(run("spin"), 1);
  EXPECT_EQ(xf_ring.view->messages.back(), "... macro spin killed");
  host->interrupt();
  run("outer");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"a"})) << "the outer macro ended with the inner one";
  EXPECT_EQ(xf_rexx.depth, 0);
  EXPECT_FALSE(xf_rexx.killed) << "the next macro starts unmarked";
  macro("fine.tolva", "'input ok'\n");
  run("hash fine.tolva");
  xf_current_line() = 0;
  EXPECT_EQ(run("fine"), 0);
  EXPECT_EQ(lines_of(*xf_ring.file).back(), "ok");
}

}  // namespace
