// The change engine of the XEDIT personality: plain, arbitrary-character, whole-word and regular-expression
// replacement over a range of lines, also used to count occurrences.
#pragma once

#include <cstdint>
#include <string>

// One call of the engine.
struct xf_change_request {
  std::string s1, s2;
  int32_t lines = 1;      // lines from the current one
  int32_t per_line = -1;  // occurrences to change on each line; -1 all
  int32_t first = 1;      // the first occurrence on a line to change
  bool word = false;
  bool ask = false;
  bool count_only = false;
  bool regex = false;
};

// Engine outcomes.
enum xf_change_result { XF_CH_DONE = 0, XF_CH_NOT_FOUND = 1, XF_CH_BAD_ARB = 2, XF_CH_BAD_HEX = 3, XF_CH_BAD_RE = 4 };

// The keys of the selective form and the texts built from them.
struct xf_change_keys {
  int32_t quit = 1, doit = 12;
  std::string prompt = "F1 : Quit    Return : Skipp     F12 : Do     ^F12 : Stop asking";
  std::string found = "..... String found; F12 key set for change";
};
extern xf_change_keys xf_sckeys;

// Runs the engine on the current file from its current line. `count` receives the occurrences counted or
// changed. Messages for faults are given here; the caller reports the result.
int xf_change_engine(const xf_change_request& r, int64_t& count);
