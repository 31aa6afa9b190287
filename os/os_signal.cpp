// Signals: fault and termination handlers, the emergency writer's safe helpers, the re-exec restart.
#include "os/os_signal.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>
#include <exception>

#include "os/os_path.h"

extern char** environ;

namespace {

constexpr int fault_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr int term_signals[] = {SIGHUP, SIGTERM, SIGINT};
constexpr char restarts_var[] = "TOLVA_RESTARTS=";
constexpr int64_t restart_window = 60;
constexpr int64_t max_restarts = 2;

// The family's program-wide state; what handlers read is set up before they are installed.
struct os_signal_state {
  os_signal_setup setup;
  std::vector<char> alt_stack;
  int pipe_rd = -1, pipe_wr = -1;
  volatile sig_atomic_t term_sig = 0;
  volatile sig_atomic_t looked = 0;
  bool installed = false;
  // Restart.
  std::string exe;
  std::vector<std::string> args;
  std::vector<std::string> env;
  std::vector<char*> argv;
  std::vector<char*> envp;
  char restarts_slot[64] = {};
  int64_t restarts = 0;        // restarts so far in the current series
  int64_t series_start = 0;    // when that series began
  bool prepared = false;
};

os_signal_state& state() {
  static os_signal_state s;
  return s;
}

void on_fault(int sig) {
  os_signal_fn fn = state().setup.fault;
  if (fn != nullptr) fn(sig);
  // The road came back: die of the signal so that the exit status tells what happened.
  ::signal(sig, SIG_DFL);
  ::raise(sig);
}

void on_term(int sig) {
  int saved = errno;
  auto& s = state();
  if (s.term_sig == 0) {
    s.term_sig = sig;
    if (s.pipe_wr >= 0) {
      char b = 1;
      [[maybe_unused]] ssize_t n = ::write(s.pipe_wr, &b, 1);
    }
    if (s.setup.watchdog > 0 && s.setup.emergency != nullptr) ::alarm(s.setup.watchdog);
  }
  errno = saved;
}

// Nobody polled within the watchdog's time: run the emergency road from here.
void on_alarm(int) {
  auto& s = state();
  if (s.term_sig != 0 && !s.looked && s.setup.emergency != nullptr) {
    s.setup.emergency(s.term_sig);
    ::_exit(1);
  }
}

int set_handler(int sig, void (*fn)(int), int flags) {
  struct sigaction sa;
  std::memset(&sa, 0, sizeof sa);
  sa.sa_handler = fn;
  sa.sa_flags = flags;
  sigemptyset(&sa.sa_mask);
  return ::sigaction(sig, &sa, nullptr) == 0 ? 0 : errno;
}

int64_t parse_int(const char*& p) {
  int64_t v = 0;
  while (*p >= '0' && *p <= '9') v = v * 10 + (*p++ - '0');
  return v;
}

}  // namespace

int os_signals_install(const os_signal_setup& setup) {
  auto& s = state();
  s.setup = setup;
  s.term_sig = 0;
  s.looked = 0;
  if (s.alt_stack.empty()) {
    long sz = ::sysconf(_SC_SIGSTKSZ);
    if (sz < MINSIGSTKSZ) sz = SIGSTKSZ;
    s.alt_stack.resize(static_cast<std::size_t>(sz) * 4);
  }
  stack_t ss;
  std::memset(&ss, 0, sizeof ss);
  ss.ss_sp = s.alt_stack.data();
  ss.ss_size = s.alt_stack.size();
  if (::sigaltstack(&ss, nullptr) != 0) return errno;
  if (s.pipe_rd < 0) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0) return errno;
    s.pipe_rd = fds[0];
    s.pipe_wr = fds[1];
  }
  for (int sig : fault_signals) {
    if (int e = set_handler(sig, on_fault, SA_ONSTACK | SA_NODEFER)) return e;
  }
  for (int sig : term_signals) {
    if (int e = set_handler(sig, on_term, SA_RESTART)) return e;
  }
  if (int e = set_handler(SIGALRM, on_alarm, SA_RESTART)) return e;
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  if (setup.out_of_memory != nullptr) std::set_new_handler(setup.out_of_memory);
  if (setup.terminate != nullptr) std::set_terminate(setup.terminate);
  s.installed = true;
  return 0;
}

void os_signals_reset() {
  auto& s = state();
  ::alarm(0);
  for (int sig : fault_signals) ::signal(sig, SIG_DFL);
  for (int sig : term_signals) ::signal(sig, SIG_DFL);
  ::signal(SIGALRM, SIG_DFL);
  ::signal(SIGPIPE, SIG_DFL);
  ::signal(SIGXFSZ, SIG_DFL);
  std::set_new_handler(nullptr);
  s.setup = os_signal_setup{};
  s.term_sig = 0;
  s.looked = 0;
  if (s.pipe_rd >= 0) {
    char buf[64];
    while (::read(s.pipe_rd, buf, sizeof buf) > 0) {
    }
  }
  s.installed = false;
}

int os_term_pending() {
  auto& s = state();
  int sig = s.term_sig;
  if (sig != 0 && !s.looked) {
    s.looked = 1;
    ::alarm(0);
  }
  return sig;
}

int os_term_fd() { return state().pipe_rd; }

int os_sa_open_write(const char* path) {
  int fd;
  do {
    fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

bool os_sa_write_all(int fd, const char* data, std::size_t n) {
  while (n > 0) {
    ssize_t w = ::write(fd, data, n);
    if (w < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (w == 0) return false;
    data += w;
    n -= static_cast<std::size_t>(w);
  }
  return true;
}

bool os_sa_write_str(int fd, const char* text) { return os_sa_write_all(fd, text, os_sa_strlen(text)); }
int os_sa_fsync(int fd) { return ::fsync(fd) == 0 ? 0 : -1; }
int os_sa_close(int fd) { return ::close(fd) == 0 ? 0 : -1; }
int os_sa_rename(const char* from, const char* to) { return ::rename(from, to) == 0 ? 0 : -1; }
int os_sa_unlink(const char* path) { return ::unlink(path) == 0 ? 0 : -1; }

std::size_t os_sa_strlen(const char* text) {
  std::size_t n = 0;
  while (text[n] != '\0') ++n;
  return n;
}

std::size_t os_sa_format_int(char* buf, std::size_t cap, int64_t v) {
  char digits[24];
  std::size_t n = 0;
  // Work on the negative side so that INT64_MIN needs no special case.
  int64_t x = v < 0 ? v : -v;
  do {
    digits[n++] = static_cast<char>('0' - x % 10);
    x /= 10;
  } while (x != 0);
  std::size_t len = n + (v < 0 ? 1 : 0);
  if (cap < len + 1) return 0;
  std::size_t i = 0;
  if (v < 0) buf[i++] = '-';
  while (n > 0) buf[i++] = digits[--n];
  buf[i] = '\0';
  return len;
}

void os_sa_stderr(const char* text) { os_sa_write_all(2, text, os_sa_strlen(text)); }

void os_sa_exit(int code) { ::_exit(code); }

int os_restart_prepare(int argc, const char* const* argv, const char* exe) {
  auto& s = state();
  s.prepared = false;
  if (exe != nullptr) {
    s.exe = exe;
  } else if (auto self = os_self_exe()) {
    s.exe = *self;
  } else {
    return errno != 0 ? errno : ENOENT;
  }
  s.args.assign(argv, argv + argc);
  s.env.clear();
  s.restarts = 0;
  s.series_start = 0;
  for (char** e = environ; e != nullptr && *e != nullptr; ++e) {
    if (std::strncmp(*e, restarts_var, sizeof restarts_var - 1) == 0) {
      const char* p = *e + sizeof restarts_var - 1;
      s.restarts = parse_int(p);
      if (*p == ':') s.series_start = parse_int(++p);
      continue;
    }
    s.env.emplace_back(*e);
  }
  s.argv.clear();
  for (auto& a : s.args) s.argv.push_back(a.data());
  s.argv.push_back(nullptr);
  s.envp.clear();
  for (auto& e : s.env) s.envp.push_back(e.data());
  s.envp.push_back(s.restarts_slot);
  s.envp.push_back(nullptr);
  s.prepared = true;
  return 0;
}

/* The crash-loop guard: TOLVA_RESTARTS=n:t counts the restarts of a series that began at t. A restart more than
   60 s after t begins a new series; a third one within the window is refused. */
bool os_restart(int fault_sig, bool batch, bool have_terminal) {
  auto& s = state();
  if (!s.prepared || batch || !have_terminal) return false;
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  int64_t n = s.restarts, start = s.series_start;
  bool in_window = n > 0 && now.tv_sec - start < restart_window;
  if (in_window && n >= max_restarts) return false;
  if (!in_window) {
    n = 0;
    start = now.tv_sec;
  }
  char* p = s.restarts_slot;
  char* end = s.restarts_slot + sizeof s.restarts_slot;
  for (const char* q = restarts_var; *q != '\0'; ++q) *p++ = *q;
  p += os_sa_format_int(p, static_cast<std::size_t>(end - p), n + 1);
  *p++ = ':';
  os_sa_format_int(p, static_cast<std::size_t>(end - p), start);
  if (fault_sig > 0) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, fault_sig);
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
  }
  ::execve(s.exe.c_str(), s.argv.data(), s.envp.data());
  return false;
}
