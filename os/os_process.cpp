// Running programs through posix_spawn (inherited stdio, or output captured through a pipe), and the environment.
#include "os/os_process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

// Starts `/bin/sh -c text` with standard output and error on `out_fd` and, unless it is -1, standard input on
// `in_fd`. Returns 0 or the spawn's error number.
int spawn_shell(std::string_view text, int out_fd, int in_fd, pid_t& pid) {
  posix_spawn_file_actions_t acts;
  ::posix_spawn_file_actions_init(&acts);
  ::posix_spawn_file_actions_adddup2(&acts, out_fd, 1);
  ::posix_spawn_file_actions_adddup2(&acts, out_fd, 2);
  if (in_fd >= 0) ::posix_spawn_file_actions_adddup2(&acts, in_fd, 0);
  std::string cmd(text);
  char sh[] = "/bin/sh", dash_c[] = "-c";
  char* args[] = {sh, dash_c, cmd.data(), nullptr};
  spawn_attrs attrs;
  int rc = ::posix_spawn(&pid, sh, &acts, attrs.get(), args, environ);
  ::posix_spawn_file_actions_destroy(&acts);
  return rc;
}

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

int os_run_capture(std::string_view text, std::string& out, std::size_t limit, bool* truncated) {
  if (truncated) *truncated = false;
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC) != 0) return -errno;
  pid_t pid = 0;
  int rc = spawn_shell(text, fds[1], -1, pid);
  ::close(fds[1]);
  if (rc != 0) {
    ::close(fds[0]);
    return -rc;
  }
  char buf[65536];
  for (;;) {
    ssize_t n = ::read(fds[0], buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    std::size_t room = out.size() < limit ? limit - out.size() : 0;
    std::size_t take = static_cast<std::size_t>(n) < room ? static_cast<std::size_t>(n) : room;
    out.append(buf, take);
    if (take < static_cast<std::size_t>(n) && truncated) *truncated = true;
  }
  ::close(fds[0]);
  return wait_for(pid);
}

int os_set_env(std::string_view name, std::string_view value) {
  return ::setenv(std::string(name).c_str(), std::string(value).c_str(), 1) == 0 ? 0 : errno;
}

int os_unset_env(std::string_view name) { return ::unsetenv(std::string(name).c_str()) == 0 ? 0 : errno; }

os_child::~os_child() {
  if (in_ >= 0) ::close(in_);
  if (out_ >= 0) ::close(out_);
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    wait_for(pid_);
  }
}

int os_child::start(std::string_view text, bool with_input) {
  int out[2], in[2] = {-1, -1};
  if (::pipe2(out, O_CLOEXEC) != 0) return errno;
  if (with_input && ::pipe2(in, O_CLOEXEC) != 0) {
    int e = errno;
    ::close(out[0]);
    ::close(out[1]);
    return e;
  }
  pid_t pid = 0;
  int rc = spawn_shell(text, out[1], with_input ? in[0] : -1, pid);
  ::close(out[1]);
  if (with_input) ::close(in[0]);
  if (rc != 0) {
    ::close(out[0]);
    if (with_input) ::close(in[1]);
    return rc;
  }
  pid_ = pid;
  out_ = out[0];
  in_ = in[1];
  return 0;
}

int os_child::write_input(std::string_view bytes) {
  if (in_ < 0) return EBADF;
  // A child that stops reading must not end the editor through SIGPIPE.
  struct sigaction ignore = {}, old = {};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &ignore, &old);
  int result = 0;
  while (!bytes.empty()) {
    ssize_t n = ::write(in_, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      result = errno;
      break;
    }
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  ::sigaction(SIGPIPE, &old, nullptr);
  return result;
}

void os_child::close_input() {
  if (in_ >= 0) ::close(in_);
  in_ = -1;
}

long os_child::read_some(std::string& out, int timeout_ms) {
  if (out_ < 0) return 0;
  struct pollfd p = {out_, POLLIN, 0};
  int r = ::poll(&p, 1, timeout_ms);
  if (r == 0) return -1;
  if (r < 0) return errno == EINTR ? -1 : 0;
  char buf[4096];
  ssize_t n;
  do {
    n = ::read(out_, buf, sizeof buf);
  } while (n < 0 && errno == EINTR);
  if (n <= 0) {
    ::close(out_);
    out_ = -1;
    return 0;
  }
  out.append(buf, static_cast<std::size_t>(n));
  return n;
}

void os_child::kill() {
  if (pid_ > 0) ::kill(pid_, SIGKILL);
}

int os_child::wait() {
  if (pid_ <= 0) return -ECHILD;
  int status = wait_for(pid_);
  pid_ = -1;
  return status;
}
