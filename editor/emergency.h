// The emergency road: when the program faults, is killed or runs out of memory, every changed file is
// written beside itself with ".check" appended, the trace ring goes to "xed.trace" and "restart.x" is left.
#pragma once

#include <cstddef>

// Installs the fault, termination and memory handlers; caches what the road needs.
void xf_emergency_install(int argc, char** argv);
// The handler of SIGILL, SIGSEGV, SIGFPE and SIGBUS (and of SIGHUP/SIGTERM): never returns.
[[noreturn]] void xf_internal_error(int sig);
// Exhaustion: with lines_full 0 memory ran out, with 1 the line arrays can grow no more. Never returns.
[[noreturn]] void xf_out_of_memory(std::size_t size, int lines_full);
// A termination request (SIGHUP, SIGTERM) that arrived: runs the road now, in normal context.
void xf_emergency_poll();
