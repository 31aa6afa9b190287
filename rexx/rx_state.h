// Program-wide state of the interpreter family, grouped in one structure that rx_init resets.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_errors.h"

struct rx_run;

// OPTION switches. Case mode: 0 mixed, 1 upper, 2 lower, 3 not set (folds like upper). The other switches hold
// 2 while unset, then 0 for SETENV, LOAD, GLOBALV and 1 for UNSETENV, NOLOAD, NOGLOBALV.
struct rx_switches {
  int case_mode = 3;
  int setenv = 2;
  int load = 2;
  int globalv = 2;
};

// An ADDRESS environment: upper-case name, handler and its user data. The handler runs one command and returns
// its result (RC).
using rx_env_fn = int32_t (*)(std::string_view command, void* user);
struct rx_env {
  std::string name;
  rx_env_fn fn = nullptr;
  void* user = nullptr;
};
// The starting table: the direct environments WINDOWS, UNIX, EXEC and the shells SH, KSH, CSH, TCSH.
std::vector<rx_env> rx_default_envs();

struct rx_state {
  std::vector<rx_env> envs = rx_default_envs();
  int env_start = 0;                // the environment a run starts in
  rx_switches sw;
  rx_error_state error;
  rx_run* run = nullptr;            // the run in progress, null between runs
  bool (*poll)() = nullptr;         // the host's poll, asked before each clause: true ends the run with -1
  // The host's answer to a function whose name holds a dot (size.1()) that no label or built-in answers.
  bool (*dotted)(std::string_view name, std::string_view arg, std::string& result) = nullptr;
  std::deque<std::string> queue;    // PUSH/QUEUE/PULL lines of the current buffer; shared by all runs
  std::vector<std::deque<std::string>> buffers;  // the queues saved by MAKEBUF, the last made on top
};

// The family's state; tests call rx_init to start clean.
extern rx_state rx_st;
void rx_init();

// Turn the unset switches into their defaults, as a run does once the first source is lexed.
void rx_settle_switches();
