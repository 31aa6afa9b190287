// Running programs through posix_spawn with inherited stdio, and waiting for them.
#include "os/os_process.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace {

// Spawn attributes that give the child default dispositions for every signal and an empty mask.
class spawn_attrs {
 public:
  spawn_attrs() {
    ::posix_spawnattr_init(&attr_);
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attr_, &all);
    ::posix_spawnattr_setsigmask(&attr_, &none);
    ::posix_spawnattr_setflags(&attr_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~spawn_attrs() { ::posix_spawnattr_destroy(&attr_); }
  spawn_attrs(const spawn_attrs&) = delete;
  spawn_attrs& operator=(const spawn_attrs&) = delete;
  const posix_spawnattr_t* get() const { return &attr_; }

 private:
  posix_spawnattr_t attr_;
};

int wait_for(pid_t pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return -errno;
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return -ECHILD;
}

}  // namespace

int os_run(const std::vector<std::string>& argv) {
  if (argv.empty()) return -EINVAL;
  std::vector<char*> args;
  args.reserve(argv.size() + 1);
  for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  spawn_attrs attrs;
  pid_t pid = 0;
  int rc = ::posix_spawnp(&pid, args[0], nullptr, attrs.get(), args.data(), environ);
  if (rc != 0) return -rc;
  return wait_for(pid);
}

int os_run_shell(std::string_view text) { return os_run({"/bin/sh", "-c", std::string(text)}); }
