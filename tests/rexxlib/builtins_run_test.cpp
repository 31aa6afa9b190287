// Behaviour tests of the built-ins that need a prepared environment: each program under run/<area>/ runs in palom
// with GLOBALVHOME in a fresh temporary directory and COLUMNS set, against its NAME.out (and NAME.err, NAME.rc);
// and GLOBALV across processes: sessions, the trees they load, stale working copies, and two writers at once.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void spill(const fs::path& p, const std::string& text) {
  fs::create_directories(p.parent_path());
  std::ofstream(p, std::ios::binary) << text;
}

fs::path palom() { return fs::path(TOLVA_TEST_BINARY_DIR) / "app" / "palom"; }
fs::path fixtures() { return fs::path(TOLVA_TEST_SOURCE_DIR) / "tests" / "rexxlib" / "globalv"; }

// A temporary directory that goes with the object.
struct temp_home {
  fs::path path;
  temp_home() {
    char tmpl[] = "/tmp/tolva-bu-test-XXXXXX";
    path = ::mkdtemp(tmpl);
  }
  ~temp_home() {
    std::error_code ec;
    fs::remove_all(path, ec);
  }
  fs::path root() const { return path / "palom.globalv"; }
};

// The environment prefix of a palom run: no session inherited from whoever runs the tests.
std::string clean_env(const fs::path& home) {
  return "env -u palom_STORAGE_GL -u palom_GROUP_GL -u palom_GL_INI_IS_DONE -u QdbPid GLOBALVHOME='" +
         home.string() + "' COLUMNS=77 ";
}

struct outcome {
  int rc = -1;
  std::string out, err;
};

// Runs `program` (with arguments) in `dir` under the environment `env`.
outcome run(const std::string& env, const fs::path& dir, const std::string& program, const fs::path& scratch) {
  std::string cmd = "cd '" + dir.string() + "' && " + env + "'" + palom().string() + "' " + program +
                    " </dev/null >'" + (scratch / "out").string() + "' 2>'" + (scratch / "err").string() + "'";
  int status = std::system(cmd.c_str());
  outcome o;
  o.rc = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  o.out = slurp(scratch / "out");
  o.err = slurp(scratch / "err");
  return o;
}

// A write lock over a whole file, held by this process as another GLOBALV user would hold it.
struct os_locked_file_holder {
  int fd = -1;
  bool held = false;
  explicit os_locked_file_holder(const std::string& path) {
    fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock fl {};
    fl.l_type = F_WRLCK;
    fl.l_whence = SEEK_SET;
    held = fd >= 0 && ::fcntl(fd, F_OFD_SETLK, &fl) == 0;
  }
  ~os_locked_file_holder() {
    if (fd >= 0) ::close(fd);
  }
};

std::vector<std::string> storage_dirs(const fs::path& root) {
  std::vector<std::string> out;
  std::error_code ec;
  for (const auto& e : fs::directory_iterator(root, ec))
    if (e.path().filename().string().rfind("storage.", 0) == 0) out.push_back(e.path().filename().string());
  return out;
}

void run_area(const std::string& area) {
  fs::path dir = fs::path(TOLVA_TEST_SOURCE_DIR) / "tests" / "rexx" / "run" / area;
  ASSERT_TRUE(fs::exists(palom())) << "palom is built before its tests";
  std::vector<fs::path> programs;
  for (const auto& e : fs::directory_iterator(dir))
    if (e.path().extension() == ".rexx") programs.push_back(e.path());
  std::sort(programs.begin(), programs.end());
  ASSERT_FALSE(programs.empty()) << dir;
  for (const fs::path& src : programs) {
    std::string name = src.stem().string();
    temp_home home, scratch;
    outcome o = run(clean_env(home.path), dir, name + ".rexx", scratch.path);
    int expected_rc = fs::exists(dir / (name + ".rc")) ? std::stoi(slurp(dir / (name + ".rc"))) : 0;
    EXPECT_EQ(o.rc, expected_rc) << area << "/" << name << "\nstderr:\n" << o.err;
    EXPECT_EQ(o.out, slurp(dir / (name + ".out"))) << area << "/" << name;
    std::string want_err = fs::exists(dir / (name + ".err")) ? slurp(dir / (name + ".err")) : "";
    EXPECT_EQ(o.err, want_err) << area << "/" << name;
    // The process that made the session's working copy removes it when it ends.
    EXPECT_TRUE(storage_dirs(home.root()).empty()) << area << "/" << name;
  }
}

}  // namespace

TEST(RexxBuiltinsRun, Format) { run_area("builtins_format"); }
TEST(RexxBuiltinsRun, SortAndParg) { run_area("builtins_sort"); }
TEST(RexxBuiltinsRun, Globalv) { run_area("builtins_globalv"); }
TEST(RexxBuiltinsRun, Console) { run_area("builtins_console"); }

// "set" lives as long as the session, "sets" until the session store is cleared, "setp" for good; "initial"
// is loaded first and a later tree wins.
TEST(RexxGlobalvSessions, EachLifetimeSurvivesWhatItShould) {
  temp_home home, scratch;
  std::string env = clean_env(home.path);
  outcome w = run(env, fixtures(), "session_write.rexx", scratch.path);
  ASSERT_EQ(w.out, "0\n") << w.err;
  // The group and value names are hexadecimal: "unnamed", and "P", "PL", "S" as the case mode folded them.
  EXPECT_EQ(slurp(home.root() / "lasting" / "756e6e616d6564" / "50"), "lasting");
  EXPECT_EQ(slurp(home.root() / "lasting" / "756e6e616d6564" / "504c"), "a lasting line");
  EXPECT_EQ(slurp(home.root() / "session" / "756e6e616d6564" / "53"), "session");
  EXPECT_FALSE(fs::exists(home.root() / "lasting" / "756e6e616d6564" / "57"));  // "set" stays in the session

  spill(home.root() / "initial" / "756e6e616d6564" / "49", "from initial");
  spill(home.root() / "initial" / "756e6e616d6564" / "50", "overridden by lasting");
  outcome r = run(env, fixtures(), "session_read.rexx", scratch.path);
  EXPECT_EQ(r.out,
            "W = \"\"\nS = \"session\"\nP = \"lasting\"\nPL = \"a lasting line\"\nI = \"from initial\"\n");

  fs::remove_all(home.root() / "session");
  r = run(env, fixtures(), "session_read.rexx", scratch.path);
  EXPECT_EQ(r.out, "W = \"\"\nS = \"\"\nP = \"lasting\"\nPL = \"a lasting line\"\nI = \"from initial\"\n");
}

// A child started by a process of the session shares its working copy and does not load the stores again.
TEST(RexxGlobalvSessions, AChildSharesTheWorkingCopy) {
  temp_home home, scratch;
  spill(scratch.path / "child.rexx", "trace off\n'globalv list w'\n'globalv set w child'\n");
  spill(scratch.path / "parent.rexx",
        "trace off\n'globalv set w parent'\n'" + palom().string() + " child.rexx'\n'globalv list w'\n");
  outcome o = run(clean_env(home.path), scratch.path, "parent.rexx", scratch.path);
  EXPECT_EQ(o.out, "W = \"parent\"\nW = \"child\"\n") << o.err;
  EXPECT_TRUE(storage_dirs(home.root()).empty());
}

// The working copy of a session whose first process is gone is swept; a live one is left alone.
TEST(RexxGlobalvSessions, StaleWorkingCopiesAreRemoved) {
  temp_home home, scratch;
  spill(home.root() / "storage.99999999" / "aa" / "bb", "left behind");
  std::string live = "storage." + std::to_string(::getpid());
  spill(home.root() / live / "aa" / "bb", "still in use");
  spill(scratch.path / "touch.rexx", "trace off\n'globalv set x 1'\nsay rc\n");
  outcome o = run(clean_env(home.path), scratch.path, "touch.rexx", scratch.path);
  EXPECT_EQ(o.out, "0\n");
  EXPECT_FALSE(fs::exists(home.root() / "storage.99999999"));
  EXPECT_TRUE(fs::exists(home.root() / live / "aa" / "bb"));
}

// Two processes write the same value of a shared working copy, and the same lasting value, 300 times each, at
// once: no read sees a torn value, no write fails, and the last value is the last write of one of them.
TEST(RexxGlobalvConcurrency, TwoWritersLoseNothing) {
  temp_home home, scratch;
  fs::path shared = home.root() / "storage.shared";
  fs::create_directories(shared);
  fs::create_directories(home.root() / "lasting");
  fs::create_directories(home.root() / "session");
  std::string env = clean_env(home.path) + "palom_STORAGE_GL='" + shared.string() + "' palom_GL_INI_IS_DONE=1 ";
  std::string p = "'" + palom().string() + "'";
  std::string cmd = "cd '" + fixtures().string() + "' && { " + env + p + " race.rexx A 300 >'" +
                    (scratch.path / "a").string() + "' 2>&1 & " + env + p + " race.rexx B 300 >'" +
                    (scratch.path / "b").string() + "' 2>&1 & wait; }";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  EXPECT_EQ(slurp(scratch.path / "a"), "A torn 0 failed 0\n");
  EXPECT_EQ(slurp(scratch.path / "b"), "B torn 0 failed 0\n");
  outcome o = run(clean_env(home.path), fixtures(), "report.rexx", scratch.path);
  EXPECT_TRUE(o.out == "rc 0 countA 300 countB 300 last A-300\n" ||
              o.out == "rc 0 countA 300 countB 300 last B-300\n")
      << o.out << o.err;
  std::string value = slurp(shared / "72616365" / "534841524544");  // group "race", name "SHARED"
  EXPECT_EQ(value.size(), 3003u) << value.substr(0, 10);
}

// Each store's failure has its code: lasting 1502000, session 1503000, the working copy 1504000, the initial
// copy 1501000, and a value whose file stays locked 1505000.
TEST(RexxGlobalvSessions, FailuresAreToldByTheirCodes) {
  temp_home home, scratch;
  const std::string unnamed = "756e6e616d6564";
  spill(home.root() / "lasting" / unnamed, "a file where the group's directory should be");
  spill(home.root() / "session" / "6732", "the same for group g2");
  spill(scratch.path / "stores.rexx",
        "trace off\n'globalv setp a 1'; say rc\n'globalv select g2 sets a 1'; say rc\n'globalv set a 1'; say rc\n");
  outcome o = run(clean_env(home.path), scratch.path, "stores.rexx", scratch.path);
  EXPECT_EQ(o.out, "1502000\n1503000\n0\n") << o.err;

  // A working copy that cannot be made fails the initial copy first, then every write.
  spill(home.path / "blocker", "not a directory");
  std::string blocked = clean_env(home.path) + "palom_STORAGE_GL='" + (home.path / "blocker" / "x").string() + "' ";
  spill(home.root() / "initial" / unnamed / "41", "initial value");
  spill(scratch.path / "working.rexx", "trace off\n'globalv set a 1'; say rc\n'globalv init'; say rc\n");
  o = run(blocked, scratch.path, "working.rexx", scratch.path);
  EXPECT_EQ(o.out, "1501000\n1501000\n") << o.err;
  fs::remove_all(home.root() / "initial");
  o = run(blocked, scratch.path, "working.rexx", scratch.path);
  EXPECT_EQ(o.out, "1504000\n0\n") << o.err;  // with nothing to copy, init has nothing to fail
}

TEST(RexxGlobalvSessions, AValueThatStaysLockedGives1505000) {
  temp_home home, scratch;
  fs::path shared = home.root() / "storage.shared";
  spill(shared / "756e6e616d6564" / "58", "held");  // group "unnamed", name "X"
  os_locked_file_holder hold((shared / "756e6e616d6564" / "58").string());
  ASSERT_TRUE(hold.held);
  spill(scratch.path / "locked.rexx", "trace off\n'globalv get x'; say rc\n'globalv set y 1'; say rc\n");
  std::string env = clean_env(home.path) + "palom_STORAGE_GL='" + shared.string() + "' palom_GL_INI_IS_DONE=1 ";
  outcome o = run(env, scratch.path, "locked.rexx", scratch.path);
  EXPECT_EQ(o.out, "1505000\n0\n") << o.err;
}

// Without a terminal on standard output the width is COLUMNS when that is a positive number, else 80.
TEST(RexxBuiltinsRun, LinesizeFallsBackTo80) {
  temp_home home, scratch;
  spill(scratch.path / "width.rexx", "say linesize()\n");
  for (const char* columns : {"abc", "0", "-5", "12x"}) {
    outcome o = run(clean_env(home.path) + "COLUMNS='" + columns + "' ", scratch.path, "width.rexx", scratch.path);
    EXPECT_EQ(o.out, "80\n") << "COLUMNS=" << columns;
  }
  outcome o = run(clean_env(home.path) + "env -u COLUMNS ", scratch.path, "width.rexx", scratch.path);
  EXPECT_EQ(o.out, "80\n");
  o = run(clean_env(home.path) + "COLUMNS=132 ", scratch.path, "width.rexx", scratch.path);
  EXPECT_EQ(o.out, "132\n");
}
