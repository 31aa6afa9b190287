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
