// The command processor: from a command string to its handler, through line ends, substitution,
// synonyms, macros, the command table, implied commands and the system.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct xf_synonym {
  std::string name;
  int32_t min_len = 0;
  char linend = ' ';
  std::vector<std::string> defs;
};

struct xf_cmd_state {
  int32_t nesting = 0;
  bool prefix_command = false;  // COMmand / BUILTIN for the next xfcom2: no macros, no synonyms
  bool prefix_macro = false;    // MACRO for the next xfcom2: only a macro may answer
  bool one_shot_macro = false;  // find a macro even with MACRO OFF (the profile)
  bool from_synonym = false;
  std::vector<xf_synonym> synonyms;
  std::vector<std::string> history;  // oldest first
  int32_t history_pos = -1;
};
extern xf_cmd_state xf_cmd;

// Runs a string from any source: NUL bytes become line feeds, a line feed is refused (message 70), and the
// string is cut at the LINENd byte.
void xfcom1(std::string_view text, std::string_view work_dir);
// Runs one command string and returns rc.
int32_t xfcom2(std::string_view text, std::string_view work_dir);
// Substitution of $xhome, $name, ..., and inside a command macro $0..$9 and $argv.
std::string xf_substitute(std::string_view text);
// Adds a command to the history (not blank, not beginning with "=").
void xf_history_add(std::string_view text);
// Queues a command on `stacked`.
void xf_stack(std::string_view text);
void xf_stack_front(std::string_view text);
// One turn of command processing in batch: a stacked command, else a line of the REXX stack.
// Returns false when there was nothing to run.
bool xfcom(std::string_view work_dir);
// Resets the command processor (history, synonyms with their start-up row).
void xf_cmd_reset();
