// Search helpers that the locate, find, scope and change commands share: zones, case, words, hexadecimal
// strings, one-line string and regular-expression searches, and moving to a hit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The current view's zone of the current file, 0-based, `last` inclusive.
struct xf_zone_cols {
  int32_t first = 0;
  int32_t last = 0x7ffffffe;
};
xf_zone_cols xf_zone();

// Does CASE make target searches case-insensitive in the current file?
bool xf_search_folds();
// Is c a word character (letters, digits, underscore)?
bool xf_word_char(unsigned char c);
// Forgets the WORDChars rows (letters, digits and "_" again).
void xf_wordchars_reset();
// Kinds of word test: 0 any text, 1 a word's start, 2 a word's end, 3 a whole word.
bool xf_word_test(std::string_view line, int32_t col, int32_t len, int kind);
// First place of `pat` in line[from, end) or -1; `fold` compares A-Z as a-z.
int32_t xf_find_text(std::string_view line, int32_t from, int32_t end, std::string_view pat, bool fold);
// x'hh..' into bytes: 0 not of that form, 1 converted, -1 invalid.
int xf_hex_string(std::string& s);
// The ARBchar pieces of s: false when s holds no arbitrary character.
bool xf_arb_split(std::string_view s, char arb, std::vector<std::string>& pieces, bool& lead, bool& trail);

// Makes `line` current and puts the cursor at column `col` (0-based; -1 leaves the cursor alone), and records
// the hit in xf_target.
void xf_goto_hit(int32_t line, int32_t col, int32_t end_col);
// Compiles a pattern for a search with the file's case word; false with the engine's reason shown.
bool xf_regex_prepare(std::string_view pattern, bool fold);
// A regular expression search of line `l` from `from`, cut at the zone's right edge. 1 hit, 0 none, -1 limit.
int xf_regex_in_line(int32_t l, int32_t from, int32_t& start, int32_t& end);
