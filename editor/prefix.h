// The prefix area: commands typed beside lines, the two pending lists they wait in, PENDing and PREfix, and the
// prefix run that carries them out before the command line's command.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "editor/ring.h"

// Indexes of the single table (the commands that complete by themselves).
enum xf_prefix_single {
  XPS_ADD = 1, XPS_DELETE, XPS_PUT, XPS_DUP, XPS_DUP2, XPS_CURRENT, XPS_GET, XPS_OPEN, XPS_RIGHT, XPS_LEFT,
  XPS_REPEAT, XPS_EXCLUDE, XPS_SHOW, XPS_SCALE, XPS_TABL, XPS_INSERT
};
// Indexes of the block table (pairs, destinations and the commands that need one).
enum xf_prefix_block {
  XPB_MOVE_BLOCK = 1, XPB_COPY_BLOCK, XPB_DELETE_BLOCK, XPB_PUT_BLOCK, XPB_BEFORE, XPB_AFTER, XPB_MOVE, XPB_COPY,
  XPB_DUP_BLOCK, XPB_DUP_BLOCK2, XPB_RIGHT_BLOCK, XPB_LEFT_BLOCK, XPB_REPEAT_BLOCK, XPB_EXCLUDE_BLOCK,
  XPB_OVERLAY, XPB_OVERLAY_BLOCK
};

// Program-wide prefix state: the synonyms of PREfix SYNONYM (new name, macro name, in order of definition).
struct xf_prefix_state {
  std::vector<std::pair<std::string, std::string>> synonyms;
  bool running = false;  // a prefix run is in progress
};
extern xf_prefix_state xf_prefix;

// Back to the start-up state.
void xf_prefix_reset();

// The name of table entry `kind` in the table the current MODE PREFIX selects ("" when none).
const char* xf_prefix_name(bool block, int32_t kind);
// Reads the text of the prefix field of `line` (-1: the top-of-file row) of the current file, typed in view
// `view` on screen row `screen_row`: a label, a command into one of the lists, an error text, or, when blank,
// the removal of what waited there.
void xf_prefix_read(int32_t view, int32_t line, std::string_view text, int32_t screen_row);
// The prefix run: the pending commands of every view's file, in their fixed order.
void xf_prefix_run();
// What the prefix field of `line` shows instead of its number: a pending command (false in `error`) or an error
// text. False when nothing waits there.
bool xf_prefix_display(const xf_file& f, int32_t line, std::string& text, bool& error);
// The legend's list of pending commands, " Pending: D:3 CC:7", or "" when none wait.
std::string xf_prefix_legend(const xf_file& f);
// Removes every pending row and error text of a file (RESet).
void xf_prefix_clear(xf_file& f);
// Query pending [BLOCK] [OLDNAME] name|*: a line "Line %d: 'name', Oldname='old'" and its operands per row.
int xf_prefix_query(std::string_view rest);
