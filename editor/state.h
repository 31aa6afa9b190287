// Program-wide state of the editor: the run (start-up, queues, rc) and the settings that are not per file.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

struct xf_run_state {
  int32_t batch = 0;
  std::string work_dir;  // no trailing "/" except for the root
  std::string xhome;     // ends in "/"
  std::string home;
  std::vector<std::string> path_dirs;
  std::vector<std::string> cd_dirs;
  std::string program_id = "TOLVA";
  std::vector<std::string> saved_argv;
  std::vector<std::string> profile_args;
  std::deque<std::string> stacked;     // commands waiting to run, first in first out
  int32_t crashing = 0;
  int32_t too_small = 0;
  int32_t profile_running = 0;
  int32_t timeload = 0;
  int32_t trace = 0;  // TRAce: echo each command
  int32_t kedit = 0;
  std::string command_line;  // the command line's text (what failed commands are put back on)
};
extern xf_run_state xf_run;

// The program-wide return code of the last command: 0 success, 1 bad operand, 2 not found, 5 bad target
// or number, -1 unknown command.
extern int32_t rc;

struct xf_settings {
  // MODE words.
  int32_t mode_command_ispf = 0;
  int32_t mode_prefix_ispf = 0;
  int32_t mode_locate_stay = 0;
  int32_t mode_enter_stay = 1;
  int32_t mode_autoexit = 0;
  int32_t mode_number_goto = 1;
  int32_t mode_change_all = 1;
  int32_t mode_redisplay = 1;
  int32_t mode_topline = 0;
  int32_t mode_get_stay = 0;
  int32_t mode_icursor = 0;
  int32_t mode_reserved_skip = 1;
  int32_t mode_notimp = 1;
  int32_t mode_scroll_wrap = 0;
  int32_t mode_expand_on = 1;
  int32_t mode_expand_env = 0;
  // The command processor.
  int32_t linend_on = 1;
  char linend = '\f';
  int32_t impcmscp = 2;  // 0 OFF, 1 ON, 2 XON
  int32_t synonym_on = 1;
  int32_t macro_on = 0;
  int32_t history_max = 10;
  // Files.
  int32_t read_eol = 2;      // 2 auto, 1 unix
  int32_t new_file_eol = 0;  // 0 windows, 1 unix
  int32_t auto_binary = 1;
  std::vector<unsigned char> binary_allowed{9, 10, 12, 13, 26};
  int32_t backup_on = 1;
  std::string backup_suffix = "%";
  std::string backup_suffix_reload = "%";
  int32_t reload_default = 1;  // RELoad of new files
  int32_t preserve_links = 0;
  int64_t limit = 0;
  int32_t last_files_on = 1;
  int32_t last_files_max = 30;
  std::string last_files_path = "~/tolva.lastfiles";
  int32_t save_clear_undo = 1;
};
extern xf_settings xf_set;

// Resets all program-wide editor state to its start-up values (tests start clean with it).
void xf_state_reset();
