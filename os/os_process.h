// Running programs with the terminal's stdio inherited, and waiting for them.
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
