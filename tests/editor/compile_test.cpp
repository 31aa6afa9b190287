// COMPIle, NEXTError and CLEARErrors: the rules file, marks on the source, stepping through the errors.
#include "editor/compile.h"

#include <filesystem>
#include <fstream>

#include "editor/fileio.h"
#include "tests/editor/live_editor.h"

namespace {

namespace fs = std::filesystem;

class compile : public live_editor {
 protected:
  fs::path dir;
  void SetUp() override {
    start(40, 100);
    dir = fs::temp_directory_path() / ("tolva-compile-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    xf_run.work_dir = dir.string();
    xf_run.home = dir.string();
  }
  void TearDown() override {
    live_editor::TearDown();
    fs::remove_all(dir);
  }
  void write(const std::string& name, const std::string& text) { std::ofstream(dir / name) << text; }
  int32_t run(const std::string& text) {
    xf_new_step();
    return xfcom2(text, xf_run.work_dir);
  }
  const xf_point* mark(const std::string& name) const {
    for (const auto& f : xf_ring.files)
      if (f->name == (dir / "prog.c").string())
        for (const xf_point& p : f->points)
          if (p.name == name) return &p;
    return nullptr;
  }
  // The newest message of the current view, where commands put theirs.
  static std::string message() {
    const auto& m = xf_ring.view->messages;
    return m.empty() ? "" : m.back();
  }
};

TEST_F(compile, ErrorsAreMarkedAndSteppedThrough) {
  write("tolva_compile.rules", "# C compilers\nc:\n  ^[^ :]*:[0-9][0-9]*: error\n");
  write("prog.c", "int a;\nint b;\nint c;\nint d;\n");
  ASSERT_EQ(xf_open((dir / "prog.c").string(), dir.string(), true), 0);
  run("compile printf 'prog.c:2: error one\\nnote\\nprog.c:4: error two\\n'");
  ASSERT_NE(mark("2"), nullptr);
  ASSERT_NE(mark("4"), nullptr);
  EXPECT_EQ(mark("2")->line, 1);
  EXPECT_EQ(xf_ring.views.size(), 2u) << "the output above, the source below";
  EXPECT_EQ(xf_ring.file->name, (dir / "prog.c").string());
  EXPECT_EQ(xf_current_line(), 1) << "the first error's line";
  // A line added above the second error: its mark moves with it.
  xf_current_line() = 0;
  run("input int z;");
  run("nexterror");
  EXPECT_EQ(xf_current_line(), 4);
  run("nexterror");
  EXPECT_EQ(message(), "..... Wrapped");
  EXPECT_EQ(xf_current_line(), 2) << "the first error's line, moved down by the added line";
  run("clearerrors");
  EXPECT_EQ(mark("2"), nullptr);
}

TEST_F(compile, TheSecondNumberAndNoRuleForTheExtension) {
  write("tolva_compile.rules", "c:2 nosource\n  ^line\n");
  write("prog.c", "1\n2\n3\n4\n5\n");
  ASSERT_EQ(xf_open((dir / "prog.c").string(), dir.string(), true), 0);
  run("compile echo 'line 9 col 3'");
  ASSERT_NE(mark("3"), nullptr) << "c:2 reads the second number";
  EXPECT_EQ(mark("3")->line, 2);
  write("other.txt", "x\n");
  ASSERT_EQ(xf_open((dir / "other.txt").string(), dir.string(), true), 0);
  run("compile echo 'line 1'");
  run("nexterror");
  EXPECT_EQ(message(), "..... No error found") << "no block for the extension";
}

TEST_F(compile, RulesFileFaults) {
  write("tolva_compile.rules", "c 3\n  x\n");
  EXPECT_EQ(run("compile -l"), 1);
  EXPECT_EQ(last_msg(), "file " + (dir / "tolva_compile.rules").string() + ": invalid filetype on line 1");
  write("tolva_compile.rules", "c:0\n");
  run("compile -l");
  EXPECT_EQ(last_msg(), "file " + (dir / "tolva_compile.rules").string() + ": invalid numerical ofset on line 1");
  write("tolva_compile.rules", "c:\n  \\(\n");
  run("compile -l");
  EXPECT_EQ(last_msg(), "file " + (dir / "tolva_compile.rules").string() + ": syntax error on rule line 2");
  fs::remove(dir / "tolva_compile.rules");
  EXPECT_EQ(run("compile -l"), 1);
  EXPECT_EQ(last_msg(), "..... File tolva_compile.rules not found");
  EXPECT_EQ(run("compile"), 1);
  write("x.c", "x\n");
  ASSERT_EQ(xf_open((dir / "x.c").string(), dir.string(), true), 0);
  EXPECT_EQ(run("nexterror"), 1);
  EXPECT_EQ(last_msg(), "..... No *.compile file found.");
}

}  // namespace
