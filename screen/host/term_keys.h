// Terminal input decoding: what the terminal host makes of ncurses key codes, tty bytes and the escape sequences
// ncurses leaves alone (CSI-u, modifyOtherKeys, focus, bracketed paste), plus the byte <-> glyph table.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// A decoded key: an event code of the read cycle (0-255 characters, 32512 and up named keys) and FSM_* bits.
struct term_key {
  int code = 0;
  uint16_t mods = 0;
  bool operator==(const term_key&) const = default;
};

// Modifiers from the xterm parameter m (1 none, 2 Shift, 3 Alt, 4 Shift+Alt, 5 Ctrl ... 8 Ctrl+Shift+Alt).
uint16_t term_mods_from_param(int m);

// A byte typed on the tty (0-255): Ctrl+letter for 1-26 except Tab, Enter and Ctrl+J; 8 and 127 the backspace
// code; other bytes themselves.
term_key term_tty_byte(int byte);

// A character typed together with Ctrl or Alt: its plain key (lower case, the unshifted symbol) with Shift added
// when the character was the shifted one.
term_key term_plain_key(int byte, uint16_t mods);

// A function key number of ncurses (KEY_F(n), 1-63) in the xterm convention: 13-24 Shift, 25-36 Ctrl, ...
std::optional<term_key> term_fkey(int n);

// An extended key name of terminfo (kLFT5, kDC3, ...): the key by its base name and the modifiers by its digit.
std::optional<term_key> term_extended_name(std::string_view name);

// What a control sequence (the bytes after ESC [, final byte included) stands for.
struct term_csi {
  enum kind_t { none, key, focus_in, focus_out, paste_begin, paste_end, kitty_answer, mouse } kind = none;
  term_key k;
  // An SGR mouse report ncurses left alone (its terminfo names another mouse protocol, as tmux-256color does):
  // the report's button number, the 1-based cell, and whether it is a release.
  int button = 0, x = 0, y = 0;
  bool release = false;
};
term_csi term_parse_csi(std::string_view body);

// The glyph (Unicode) that shows a byte of a cell: ASCII, Latin-1 above 0xA0, the CP1252 glyphs at 0x80-0x9F,
// and a visible substitute for control bytes.
char32_t term_glyph(uint8_t byte);
// The byte that a typed Unicode character stands for, or -1 when no byte shows it.
int term_byte_of(char32_t ch);
