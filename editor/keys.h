// The key tables: what each function, right-hand, left-hand, Ctrl, Meta and Enter key runs, and in which order
// with the text typed on the command line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Modes of a definition: ONLY, AFTER, BEFORE, IGNORE.
enum xf_key_mode { XK_ONLY = 0, XK_AFTER = 1, XK_BEFORE = 2, XK_IGNORE = 3 };

struct xf_key_def {
  std::string text;  // empty: no definition
  int32_t mode = XK_ONLY;
};

struct xf_key_state {
  int32_t count_l = 10, count_f = 12, count_r = 15;
  std::vector<xf_key_def> f, l, r;  // count * 8 + 1 rows; row n + count * modifiers
  xf_key_def ctrl[256], meta[256];
  xf_key_def enter[8];
};
extern xf_key_state xf_keys;

// The start-up tables with every default definition.
void xf_keys_reset();
// The definition a read result selects (kind and value of asread), or null for no key.
xf_key_def* xf_key_for(int kind, int value);
// The commands a key runs with the typed text, in order: the definition and the typed text by the mode.
// keep_typed is set when the typed text stays on the command line ("&" in front).
std::vector<std::string> xf_key_commands(const xf_key_def* def, bool plain_enter, std::string_view typed,
                                         bool& keep_typed);
