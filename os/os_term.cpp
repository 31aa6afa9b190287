// The terminal as the interpreter's console sees it: its width and the input waiting on it.
#include "os/os_term.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

int os_tty_columns() {
  struct winsize ws {};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col > 0) return ws.ws_col;
  if (const char* env = std::getenv("COLUMNS")) {
    char* end = nullptr;
    long n = std::strtol(env, &end, 10);
    if (end != env && *end == '\0' && n > 0 && n < 100000) return static_cast<int>(n);
  }
  return 80;
}

int os_tty_pending() {
  if (!::isatty(STDIN_FILENO)) return 0;
  int n = 0;
  if (::ioctl(STDIN_FILENO, FIONREAD, &n) != 0 || n < 0) return 0;
  return n;
}
