// The system clipboard through wl-copy/wl-paste, xclip or OSC 52, and the side file of the rectangular marker.
#include "os/os_clipboard.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

extern char** environ;

namespace {

constexpr int kReadLimitMs = 1000;

std::string env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

// Is there an executable of this name in a directory of PATH?
bool on_path(const std::string& name) {
  std::string path = env("PATH");
  std::size_t from = 0;
  while (from <= path.size()) {
    std::size_t colon = path.find(':', from);
    std::string dir = path.substr(from, colon == std::string::npos ? std::string::npos : colon - from);
    std::string full = (dir.empty() ? std::string(".") : dir) + "/" + name;
    if (access(full.c_str(), X_OK) == 0) return true;
    if (colon == std::string::npos) break;
    from = colon + 1;
  }
  return false;
}

// Terminals known to take OSC 52.
bool terminal_takes_osc52() {
  if (!env("TMUX").empty()) return true;
  std::string term = env("TERM");
  for (const char* p : {"xterm", "tmux", "screen", "alacritty", "foot", "kitty", "wezterm", "rxvt"})
    if (term.rfind(p, 0) == 0) return true;
  return false;
}

// A child whose stdin is fed from `input` and whose stdout goes to `output` when given (else /dev/null); waits
// at most kReadLimitMs for it. Returns the exit status, or -1 when it could not run or took too long.
int run_piped(const std::vector<std::string>& argv, std::string_view input, std::string* output) {
  int in[2], out[2] = {-1, -1};
  if (pipe2(in, O_CLOEXEC) != 0) return -1;
  if (output && pipe2(out, O_CLOEXEC) != 0) {
    close(in[0]);
    close(in[1]);
    return -1;
  }
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_adddup2(&fa, in[0], 0);
  if (output)
    posix_spawn_file_actions_adddup2(&fa, out[1], 1);
  else
    posix_spawn_file_actions_addopen(&fa, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
  std::vector<char*> args;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  pid_t pid = -1;
  int err = posix_spawnp(&pid, args[0], &fa, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&fa);
  close(in[0]);
  if (output) close(out[1]);
  if (err != 0) {
    close(in[1]);
    if (output) close(out[0]);
    return -1;
  }
  // A child that stops reading must not kill us by SIGPIPE.
  struct sigaction ignore{}, old{};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &old);
  for (std::size_t done = 0; done < input.size();) {
    ssize_t n = write(in[1], input.data() + done, input.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<std::size_t>(n);
  }
  sigaction(SIGPIPE, &old, nullptr);
  close(in[1]);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kReadLimitMs);
  auto left_ms = [&] {
    auto d = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<long long>(0, d.count()));
  };
  bool late = false;
  if (output) {
    char buf[4096];
    for (;;) {
      pollfd p{out[0], POLLIN, 0};
      int r = poll(&p, 1, left_ms());
      if (r < 0 && errno == EINTR) continue;
      if (r <= 0) {
        late = true;
        break;
      }
      ssize_t n = read(out[0], buf, sizeof buf);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      output->append(buf, static_cast<std::size_t>(n));
    }
    close(out[0]);
  }
  int status = 0;
  for (;;) {
    pid_t w = waitpid(pid, &status, WNOHANG);
    if (w == pid) break;
    if (w < 0 && errno != EINTR) return -1;
    if (late || left_ms() == 0) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      return -1;
    }
    usleep(2000);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string base64(std::string_view s) {
  static const char* k = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::size_t i = 0;
  for (; i + 2 < s.size(); i += 3) {
    uint32_t v = (uint32_t(uint8_t(s[i])) << 16) | (uint32_t(uint8_t(s[i + 1])) << 8) | uint8_t(s[i + 2]);
    for (int sh : {18, 12, 6, 0}) out += k[(v >> sh) & 63];
  }
  if (i < s.size()) {
    uint32_t v = uint32_t(uint8_t(s[i])) << 16;
    if (i + 1 < s.size()) v |= uint32_t(uint8_t(s[i + 1])) << 8;
    out += k[(v >> 18) & 63];
    out += k[(v >> 12) & 63];
    out += i + 1 < s.size() ? k[(v >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

std::string marker_path() {
  std::string dir = env("XDG_RUNTIME_DIR");
  if (dir.empty()) dir = "/tmp/tolva-" + std::to_string(getuid());
  else dir += "/tolva";
  mkdir(dir.c_str(), 0700);
  return dir + "/clip-rect";
}

// Length and FNV-1a hash of a block, as the side file keeps them.
std::string marker_of(std::string_view text) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%zu %016llx\n", text.size(), static_cast<unsigned long long>(h));
  return buf;
}

}  // namespace

namespace {
int32_t forced = -1;
}  // namespace

void os_clip_force(int32_t backend) { forced = backend; }

int32_t os_clip_backend() {
  if (forced >= 0) return forced;
  if (!env("WAYLAND_DISPLAY").empty() && on_path("wl-copy")) return OS_CLIP_WAYLAND;
  if (!env("DISPLAY").empty() && on_path("xclip")) return OS_CLIP_X11;
  if (terminal_takes_osc52()) return OS_CLIP_OSC52;
  return OS_CLIP_NONE;
}

bool os_clip_readable(int32_t backend) { return backend == OS_CLIP_WAYLAND || backend == OS_CLIP_X11; }

std::string os_clip_osc52(std::string_view text, char which) {
  return std::string("\x1b]52;") + which + ";" + base64(text) + "\x07";
}

bool os_clip_put(std::string_view text, bool primary) {
  switch (os_clip_backend()) {
    case OS_CLIP_WAYLAND:
      return run_piped(primary ? std::vector<std::string>{"wl-copy", "--primary"} : std::vector<std::string>{"wl-copy"},
                       text, nullptr) == 0;
    case OS_CLIP_X11:
      return run_piped({"xclip", "-selection", primary ? "primary" : "clipboard"}, text, nullptr) == 0;
    case OS_CLIP_OSC52: {
      int fd = open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
      if (fd < 0) return false;
      std::string seq = os_clip_osc52(text, primary ? 'p' : 'c');
      bool ok = write(fd, seq.data(), seq.size()) == static_cast<ssize_t>(seq.size());
      close(fd);
      return ok;
    }
    default: return false;
  }
}

int os_clip_get(std::string& text) {
  text.clear();
  int st = -1;
  switch (os_clip_backend()) {
    case OS_CLIP_WAYLAND: st = run_piped({"wl-paste", "-n"}, {}, &text); break;
    case OS_CLIP_X11: st = run_piped({"xclip", "-selection", "clipboard", "-o"}, {}, &text); break;
    default: return -1;
  }
  if (st < 0) return -1;
  return text.empty() ? 0 : 1;
}

void os_clip_mark(std::string_view text, bool rectangular) {
  std::string path = marker_path();
  if (!rectangular) {
    unlink(path.c_str());
    return;
  }
  if (FILE* f = std::fopen(path.c_str(), "w")) {
    std::string m = marker_of(text);
    std::fwrite(m.data(), 1, m.size(), f);
    std::fclose(f);
  }
}

bool os_clip_is_rect(std::string_view text) {
  FILE* f = std::fopen(marker_path().c_str(), "r");
  if (!f) return false;
  char buf[64] = {0};
  std::size_t n = std::fread(buf, 1, sizeof buf - 1, f);
  std::fclose(f);
  return std::string(buf, n) == marker_of(text);
}
