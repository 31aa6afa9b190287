// Program-wide state of the interpreter family, grouped in one structure that rx_init resets.
#pragma once

#include <deque>
#include <string>

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

struct rx_state {
  rx_switches sw;
  rx_error_state error;
  rx_run* run = nullptr;            // the run in progress, null between runs
  std::deque<std::string> queue;    // PUSH/QUEUE/PULL lines; shared by all runs of the process
};

// The family's state; tests call rx_init to start clean.
extern rx_state rx_st;
void rx_init();

// Turn the unset switches into their defaults, as a run does once the first source is lexed.
void rx_settle_switches();
