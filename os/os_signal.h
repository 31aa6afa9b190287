// Signals: fault handlers on an alternate stack, termination requests with a watchdog, the async-signal-safe
// helpers of the emergency writer, and the re-exec restart.
#pragma once

#include <cstddef>
#include <cstdint>

using os_signal_fn = void (*)(int sig);

struct os_signal_setup {
  os_signal_fn fault = nullptr;      // SIGSEGV, SIGBUS, SIGFPE, SIGILL: called in signal context, on the alt stack
  os_signal_fn emergency = nullptr;  // a SIGHUP/SIGTERM/SIGINT nobody looked at within `watchdog` s (signal context)
  void (*out_of_memory)() = nullptr; // std::set_new_handler
  void (*terminate)() = nullptr;     // std::set_terminate
  unsigned watchdog = 5;             // seconds; 0 = no watchdog
};

// Installs the handlers (SIGPIPE and SIGXFSZ ignored). Returns 0 or errno. May be called again to replace them.
int os_signals_install(const os_signal_setup& setup);
// Puts every handled signal back to its default and clears the pending request (tests, and before an exec).
void os_signals_reset();

// The termination signal received (SIGHUP, SIGTERM, SIGINT), or 0. A look stops the watchdog: the caller now
// owns the emergency road in normal context.
int os_term_pending();
// A descriptor that becomes readable when a termination signal arrives, for poll(); -1 before install.
int os_term_fd();

// Async-signal-safe helpers for the emergency writer: no malloc, no stdio, errno kept.
int os_sa_open_write(const char* path);                    // O_WRONLY|O_CREAT|O_TRUNC|O_CLOEXEC, 0666; fd or -1
bool os_sa_write_all(int fd, const char* data, std::size_t n);
bool os_sa_write_str(int fd, const char* text);
int os_sa_fsync(int fd);                                   // 0 or -1
int os_sa_close(int fd);                                   // 0 or -1
int os_sa_rename(const char* from, const char* to);        // 0 or -1
int os_sa_unlink(const char* path);                        // 0 or -1
std::size_t os_sa_strlen(const char* text);
// Writes `v` in decimal into buf with a NUL; returns its length, or 0 when `cap` is too small.
std::size_t os_sa_format_int(char* buf, std::size_t cap, int64_t v);
// Writes the text to stderr.
void os_sa_stderr(const char* text);
[[noreturn]] void os_sa_exit(int code);

// Caches what a restart needs, in normal context at start: the program's path (/proc/self/exe, or `exe`),
// argv, and the environment with a slot for TOLVA_RESTARTS. Returns 0 or errno.
int os_restart_prepare(int argc, const char* const* argv, const char* exe = nullptr);
// Re-executes the program with the same argv (same pid and terminal), after unblocking `fault_sig` (0: none).
// Refused (returns false) in batch, without a terminal, before prepare, or at the third restart within 60 s;
// also returns false when execve fails. Async-signal-safe.
bool os_restart(int fault_sig, bool batch, bool have_terminal);
