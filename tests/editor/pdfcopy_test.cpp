// ISPF COPY, CREATE and REPLACE: parked requests and their completion, and the CANcel family.
#include "editor/pdfcopy.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "editor/journal.h"
#include "tests/editor/test_support.h"

namespace {

namespace fs = std::filesystem;

struct PdfCopy : ::testing::Test {
  fs::path dir;
  void SetUp() override {
    dir = fs::temp_directory_path() / ("tolva-pdfcopy-" + std::to_string(getpid()));
    fs::create_directories(dir);
    std::ofstream(dir / "src.txt") << "s1\ns2\ns3\n";
    fresh_file({"one", "two", "three"});
    xf_run.work_dir = dir.string();
    xf_set.mode_command_ispf = 1;
  }
  void TearDown() override { fs::remove_all(dir); }
  void xfcom(const std::string& c) {
    xf_new_step();
    xfcom2(c, dir.string());
  }
  static std::string read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
  }
};

TEST_F(PdfCopy, ParkedCopyWaitsThenGoesBeforeOrAfterTheNamedLine) {
  xfcom("copy src.txt 2 3");
  EXPECT_EQ(last_msg(), "..... PDF COPY pending");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two", "three"}));
  ASSERT_TRUE(xf_ring.file->pdf_copy.active);

  ASSERT_TRUE(xf_pdf_copy_complete(1, true));
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "s2", "s3", "two", "three"}));
  EXPECT_FALSE(xf_ring.file->pdf_copy.active);
  EXPECT_FALSE(xf_pdf_copy_complete(1, false)) << "a request completes once";

  xfcom("copy src.txt");
  ASSERT_TRUE(xf_pdf_copy_complete(-1, false));
  EXPECT_EQ(lines_of(*xf_ring.file).front(), "s1") << "a destination on the top of file puts the lines first";
  EXPECT_EQ(xf_ring.file->size, 8);
}

TEST_F(PdfCopy, CompletedCopyIsOneUndoStep) {
  xfcom("copy src.txt");
  int32_t before = xf_ring.file->alt_save;
  ASSERT_TRUE(xf_pdf_copy_complete(2, false));
  EXPECT_EQ(xf_ring.file->alt_save, before + 1);
  xfcom("undo");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one", "two", "three"}));
}

TEST_F(PdfCopy, SourceThatVanishedWhileParkedFailsWithoutChange) {
  xfcom("copy src.txt");
  fs::remove(dir / "src.txt");
  EXPECT_FALSE(xf_pdf_copy_complete(0, false));
  EXPECT_EQ(last_msg(), "..... File not found");
  EXPECT_EQ(xf_ring.file->size, 3);
}

TEST_F(PdfCopy, ParkedCreateWritesTheLinesAndMoveDeletesThem) {
  xfcom("create out.txt");
  EXPECT_EQ(last_msg(), "..... PDF CREATE pending");
  EXPECT_FALSE(fs::exists(dir / "out.txt"));
  ASSERT_TRUE(xf_pdf_create_complete(1, 2, true));
  EXPECT_EQ(read(dir / "out.txt"), "two\r\nthree\r\n");
  EXPECT_EQ(lines_of(*xf_ring.file), (std::vector<std::string>{"one"}));

  xfcom("create out.txt");
  EXPECT_EQ(last_msg(), "..... File exists. Use the REPLACE command");
  EXPECT_FALSE(xf_ring.file->pdf_create.active);

  xfcom("replace out.txt");
  EXPECT_EQ(last_msg(), "..... PDF REPLACE pending");
  ASSERT_TRUE(xf_pdf_create_complete(0, 0, false));
  EXPECT_EQ(read(dir / "out.txt"), "one\r\n");
  EXPECT_EQ(xf_ring.file->size, 1);
}

TEST_F(PdfCopy, CreateParkedThenTheFileAppearsIsRefused) {
  xfcom("create late.txt");
  std::ofstream(dir / "late.txt") << "keep\n";
  EXPECT_FALSE(xf_pdf_create_complete(0, 1, false));
  EXPECT_EQ(read(dir / "late.txt"), "keep\n");
}

struct Cancel : ::testing::Test {
  void SetUp() override {
    fresh_editor();
    file_with({"a"}, "/tmp/a.txt");
    file_with({"b"}, "/tmp/b.txt");
    file_with({"c"}, "/tmp/c.txt");
  }
  static void xfcom(const std::string& c) {
    xf_new_step();
    xfcom2(c, "/tmp");
  }
  static std::vector<std::string> names() {
    std::vector<std::string> v;
    for (const auto& f : xf_ring.files) v.push_back(f->name);
    return v;
  }
};

TEST_F(Cancel, XeditFormClosesEveryUnchangedFileAndKeepsTheCurrentOne) {
  xf_ring.files[0]->alt_save = 1;
  xf_set_file(2);
  xf_ring.file->alt_save = 2;
  xfcom("cancel");
  EXPECT_EQ(names(), (std::vector<std::string>{"/tmp/a.txt", "/tmp/c.txt"}));
  EXPECT_EQ(xf_ring.file->name, "/tmp/c.txt");
}

TEST_F(Cancel, IspfFormQuitsTheCurrentFileEvenWhenChanged) {
  xf_set.mode_command_ispf = 1;
  xf_set_file(1);
  xf_ring.file->alt_save = 3;
  xfcom("cancel");
  EXPECT_EQ(names(), (std::vector<std::string>{"/tmp/a.txt", "/tmp/c.txt"}));
  xfcom("pdfcancel");
  EXPECT_EQ(xf_file_count(), 1);
}

}  // namespace
