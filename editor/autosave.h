// Protection of work: autosave copies of changed files, and the reload of files changed on disk by others.
#pragma once

#include <cstdint>
#include <string>

struct xf_file;

struct xf_autosave_state {
  int32_t count = 0;       // AUtosave: changes between two autosaves, 0 for OFF
  std::string dir;         // where the copies go, ending in "/" (the XDG state directory until set)
  bool skip_once = false;  // the next reload sweep does nothing
};
extern xf_autosave_state xf_autosave_st;

void xf_autosave_reset();
// The autosave copy's name: the directory, "autosave", the process id, the file's directory with "/" and ":"
// as "_", then "_", the file's name and "_".
std::string xf_autosave_name(const xf_file& f);
// Writes the autosave copy (each line followed by a line feed); false after its message.
bool xf_autosave(xf_file& f);
// Deletes the file's autosave copy and sets its count of changes since the autosave to 0 (after a save).
void xf_autosave_drop(xf_file& f);
// The autosave step of a turn: the growth of each file's changes since the last round counts towards AUtosave.
void xf_autosave_round();
// Checks one file against the disk; reloads it when it changed there and has no changes of its own. `saving`:
// called from a save. `back_to`: the file made current afterwards, or -1. True when it was reloaded.
bool xf_reload_check(int32_t file, bool saving, int32_t back_to);
// The check for every file of the ring; true if any was reloaded.
bool xf_reload_sweep();
