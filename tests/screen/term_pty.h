// A pseudo-terminal for the terminal host's tests: the host runs on the slave side; the test types into the
// master and reads back what the host wrote.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <utility>

#include "screen/host/term_host.h"

class term_pty {
 public:
  term_pty(int rows = 25, int cols = 80) {
    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(rows);
    ws.ws_col = static_cast<unsigned short>(cols);
    ok_ = openpty(&master_, &slave_, nullptr, nullptr, &ws) == 0;
    if (ok_) fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
  }
  ~term_pty() {
    if (master_ >= 0) close(master_);
    if (slave_ >= 0) close(slave_);
  }
  term_pty(const term_pty&) = delete;
  term_pty& operator=(const term_pty&) = delete;

  bool ok() const { return ok_; }
  int slave() const { return slave_; }
  term_options options(const char* type = "xterm-256color", int escape_ms = 40) const {
    term_options o;
    o.term = type;
    o.in_fd = o.out_fd = slave_;
    o.escape_delay_ms = escape_ms;
    return o;
  }
  // Types bytes as the terminal would send them.
  void type(std::string_view bytes) const {
    while (!bytes.empty()) {
      ssize_t n = write(master_, bytes.data(), bytes.size());
      if (n <= 0) return;
      bytes.remove_prefix(static_cast<size_t>(n));
    }
  }
  // Everything the host wrote since the last call.
  std::string output() {
    char buf[4096];
    for (;;) {
      ssize_t n = read(master_, buf, sizeof buf);
      if (n <= 0) break;
      out_.append(buf, static_cast<size_t>(n));
    }
    return std::exchange(out_, std::string());
  }
  // Reads the output into a buffer so that the host never blocks on a full pty.
  void drain() {
    std::string o = output();
    kept_ += o;
  }
  std::string kept() { drain(); return std::exchange(kept_, std::string()); }
  void resize(int rows, int cols) const {
    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(rows);
    ws.ws_col = static_cast<unsigned short>(cols);
    ioctl(master_, TIOCSWINSZ, &ws);
  }
  // The terminal goes away: the master side closes.
  void hangup() {
    if (master_ >= 0) close(master_);
    master_ = -1;
  }
  termios modes() const {
    termios t{};
    tcgetattr(slave_, &t);
    return t;
  }

 private:
  int master_ = -1, slave_ = -1;
  bool ok_ = false;
  std::string out_, kept_;
};
