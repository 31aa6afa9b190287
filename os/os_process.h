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
