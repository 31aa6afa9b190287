// Running programs (stdio inherited, or output captured), waiting for them, and the process environment.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Runs `argv` (argv[0] a path, or a name found on PATH by the system) with inherited stdin/stdout/stderr and
// default signal dispositions, and waits. Returns the exit status 0-255, 128+n when killed by signal n, or
// -errno when it could not be started (-ENOENT for a missing program).
int os_run(const std::vector<std::string>& argv);

// Runs `text` as `/bin/sh -c text` and waits; as os_run (a missing program is sh's 127).
int os_run_shell(std::string_view text);

// Runs `text` as `/bin/sh -c text` with standard output and standard error into one pipe, whose bytes are
// appended to `out` until the process ends and the pipe is empty; stdin is inherited. Returns the exit status as
// os_run does, or -errno when no pipe or process could be made. Reading stops storing (but goes on draining)
// once `out` holds `limit` bytes, and `*truncated` (if given) says so.
int os_run_capture(std::string_view text, std::string& out, std::size_t limit = static_cast<std::size_t>(-1),
                   bool* truncated = nullptr);

// Sets (overwriting) or removes a variable of the process environment; 0 or errno.
int os_set_env(std::string_view name, std::string_view value);
int os_unset_env(std::string_view name);

// A child process run as `/bin/sh -c text`, its standard output and error going into one pipe that is read a
// piece at a time, so that the caller can show the output as it comes and stop the child; with `with_input`
// its standard input is a second pipe. A child still running when the object goes is killed and reaped.
class os_child {
 public:
  os_child() = default;
  os_child(const os_child&) = delete;
  os_child& operator=(const os_child&) = delete;
  ~os_child();

  // Starts the child. Returns 0 or errno.
  int start(std::string_view text, bool with_input = false);
  // Writes to the child's input (all of it, unless the child stops reading). Returns 0 or errno.
  int write_input(std::string_view bytes);
  // Closes the child's input, so that it sees the end.
  void close_input();
  // Waits up to `timeout_ms` for output and appends what came: the byte count, 0 at the end of the output, or -1
  // when nothing came in time.
  long read_some(std::string& out, int timeout_ms);
  // Stops the child at once (SIGKILL).
  void kill();
  // Waits for the child's end: its exit status as os_run gives it (128+n for signal n).
  int wait();

 private:
  int pid_ = -1;
  int out_ = -1, in_ = -1;
};
