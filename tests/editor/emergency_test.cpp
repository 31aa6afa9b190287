// The emergency road's last resorts, each run in a child process that it ends.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

#include "editor/emergency.h"
#include "tests/editor/test_support.h"

namespace {

std::string read_all(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

}  // namespace

TEST(EmergencyDeathTest, ASecondFaultWhileSavingGivesUpWithoutALoop) {
  EXPECT_EXIT(
      {
        fresh_editor();
        xf_run.crashing = 1;
        xf_internal_error(SIGSEGV);
      },
      testing::ExitedWithCode(1), "TOLVA: Unable to save modified files");
}

TEST(EmergencyDeathTest, OutOfMemoryDuringTheRoadExitsWithoutSaving) {
  EXPECT_EXIT(
      {
        fresh_editor();
        xf_run.crashing = 1;
        xf_out_of_memory(4096, 0);
      },
      testing::ExitedWithCode(1),
      "No more memory available .*\n.*size = 4096 .*\nTOLVA: exiting without saving files");
}

TEST(EmergencyDeathTest, FullLineArraysSaveChangedFilesWithCheckNames) {
  std::string dir = testing::TempDir() + "emergency_full";
  std::string name = dir + "/f.txt";
  std::remove((name + ".check").c_str());
  mkdir(dir.c_str(), 0700);
  EXPECT_EXIT(
      {
        fresh_editor();
        file_with({"kept", "lines"}, name);
        xf_ring.file->eol_unix = 1;
        xf_ring.file->alt_save = 1;
        xf_out_of_memory(0, 1);
      },
      testing::ExitedWithCode(1), "Maximum number of lines exceeded.(.|\n)*Save successfull");
  EXPECT_EQ(read_all(name + ".check"), "kept\nlines\n");
}
