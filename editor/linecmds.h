// Line commands: the state they share (the prefix buffer, REPEat's depth) and the range helpers that the
// prefix area builds on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct xf_linecmd_state {
  std::vector<std::string> prefix_buffer;  // filled by PUT and the prefix area's PU and PP; read by Get and G
  int32_t repeat_depth = 0;                // REPEat inside REPEat takes an older command
};
extern xf_linecmd_state xf_lcmd;

// Resets the shared state.
void xf_linecmd_reset();
// Shifts the in-scope lines first..last by n columns from the left zone edge; returns true if any changed.
// The change counter is the caller's.
bool xf_shift_lines(int32_t first, int32_t last, int32_t n, bool right);
// Copies the in-scope lines first..last behind line `dest` (moving them with `move`); the current line becomes
// the last new line. Returns the count. The change counter is the caller's.
int32_t xf_copy_lines(int32_t first, int32_t last, int32_t dest, bool move);
// The name of a PUT or Get file operand (`name`, `name ext` or `name ext dir`, "=" for the current file's part)
// as a full path; false when the operand is not one.
bool xf_file_operand(std::string_view ops, std::string& path);
// Reads the file that `path` names (sought as Get seeks it) as lines by the reader's rules; false after its message
// and rc. `found_name`, when given, gets the name of the file read.
bool xf_read_lines(const std::string& path, std::vector<std::string>& lines, std::string* found_name = nullptr);
// Writes the given lines of the current file to `path` by the safe save, no backup; false after its message and rc.
bool xf_write_lines(const std::string& path, const std::vector<int32_t>& lines);
// Inserts lines read from outside (a file, the prefix buffer) after line `at` as one change, by the text rules of
// new lines but not the upper-case rule; returns the count.
int32_t xf_insert_read_lines(int32_t at, const std::vector<std::string>& lines);
// The line an ISPF label (".name", any case) stands on in the current file, or -1.
int32_t xf_label_line(std::string_view name);
// The lines a range operand names from the current line (a count, a target; empty is 1), clamped to the file;
// false after the target's failure, with rc 5 (invalid) or 2 (not found).
bool xf_target_range(std::string_view op, int32_t& first, int32_t& last);
