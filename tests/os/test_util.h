// Helpers for the os tests: a temp dir removed at the end, small file helpers, running a function in a child.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <grp.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace ostest {

class temp_dir {
 public:
  temp_dir() {
    char tmpl[] = "/tmp/tolva-os-test-XXXXXX";
    char* p = ::mkdtemp(tmpl);
    if (p == nullptr) throw std::runtime_error("mkdtemp failed");
    path_ = p;
  }
  ~temp_dir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  temp_dir(const temp_dir&) = delete;
  temp_dir& operator=(const temp_dir&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void write_file(const std::string& path, const std::string& content) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f << content;
}

inline std::string read_file(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::ostringstream s;
  s << f.rdbuf();
  return s.str();
}

inline bool exists(const std::string& path) {
  struct stat st;
  return ::lstat(path.c_str(), &st) == 0;
}

inline struct stat stat_of(const std::string& path) {
  struct stat st {};
  ::stat(path.c_str(), &st);
  return st;
}

// Names in a directory that look like save temp files (".<name>.tolva-XXXXXX").
inline int count_temp_files(const std::string& dir) {
  int n = 0;
  for (auto& e : std::filesystem::directory_iterator(dir)) {
    if (e.path().filename().string().find(".tolva-") != std::string::npos) ++n;
  }
  return n;
}

// Runs `fn` in a forked child and returns its exit code (or 200 + signal when it was killed).
inline int in_child(const std::function<int()>& fn) {
  pid_t pid = ::fork();
  if (pid == 0) {
    int rc = fn();
    ::_exit(rc);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  return 200 + WTERMSIG(status);
}

// As in_child, with the child running as nobody (65534), so that permission bits apply even when tests run as root.
inline int as_nobody(const std::function<int()>& fn) {
  return in_child([&] {
    if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) return 99;
    return fn();
  });
}

}  // namespace ostest
