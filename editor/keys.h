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

// A key role's key: its code (-1: none set here) and modifier states.
struct xf_key_role {
  int32_t code = -1, shift = 0, ctrl = 0, meta = 0;
};

// The key that carries the copy, paste or cut duty: class 'F', 'L' or 'R' and its table row (cls 0: none).
struct xf_key_duty {
  char cls = 0;
  int32_t row = 0;
};

struct xf_key_state {
  int32_t count_l = 10, count_f = 12, count_r = 15;
  std::vector<xf_key_def> f, l, r;  // count * 8 + 1 rows; row n + count * modifiers
  xf_key_def ctrl[256], meta[256];
  xf_key_def enter[8];
  xf_key_role roles[9];             // HOME .. EOF, as set by SET
  int32_t model = 14;               // keyboard model (SET SERVER)
  bool backspace_is_h = true;       // SET BACKSPACE ^h (else ^?)
  xf_key_duty copy_key, paste_key, cut_key;
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
// SET for a key: "name [mode] [text]", a role word and its key, BACKSPACE, NBKEYS or SERVER. Returns 1 (the
// command handler's value) with rc and the message set on a fault.
int xf_key_set(std::string_view text);
// The key lines of the settings dump, in the dump's order.
std::vector<std::string> xf_key_dump();
