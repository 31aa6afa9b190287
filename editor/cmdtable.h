// The command table, its hash of abbreviations, and the word-matching rules that commands share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What a handler receives: the command as entered and after substitution (each with a lower-case copy),
// the working directory, and the row's lower-case name (cut to the typed length) with its minimum.
struct xf_cmd_call {
  std::string_view com, lcom;
  std::string_view text, ltext;
  std::string_view work_dir;
  std::string_view row_name;
  int32_t row_min = 0;
};
// Returns 1 when it has taken the command; the result for the caller is the program-wide rc.
using xf_handler = int (*)(const xf_cmd_call&);

struct xf_cmd_row {
  const char* source;  // the name with the capitals that must be typed
  int32_t is_setting;
  int32_t is_query;
  xf_handler handler;
  const char* trace_tag;  // "Commande " and the handler's name, traced before the handler runs
};

struct xf_cmd_entry {
  std::string name;  // lower case
  int32_t name_len = 0;
  int32_t min_len = 0;
  int32_t is_setting = 0;
  int32_t is_query = 0;
  xf_handler handler = nullptr;
  const char* trace_tag = "";
};

constexpr int xf_cmd_count = 365;
constexpr int xf_cmd_special = 5;  // the first rows, tried on every string by their handlers

// Builds the entries and the hash; idempotent.
void xf_cmd_init();
const std::vector<xf_cmd_entry>& xf_cmd_entries();
const xf_cmd_row* xf_cmd_source_rows();
// The row reached by exactly this lower-case word (an abbreviation), or -1.
int32_t xf_cmd_lookup(std::string_view lword);
// The SET table: setting rows in table order, then the rows with no handler. Returns -1 if no row matches.
int32_t xf_set_lookup(std::string_view word, int32_t* matched_len);
// Is the first word one of the names accepted for macros of other editors (MODE NOTIMP)?
bool xf_notimp_name(std::string_view ltext);
// The hash function of the lookup table.
uint32_t xf_cmd_hash(std::string_view key);

// Is `word` an abbreviation of `name` (at least `min` bytes, matching up to the word's end or a blank/tab)?
// Returns the matched length, 0 if not.
int32_t xf_abbrev(std::string_view word, std::string_view name, int32_t min);
// The same, where any byte that is not an ASCII letter ends the word.
int32_t xf_abbrev_word(std::string_view word, std::string_view name, int32_t min);
// Synonym match: case-sensitive; after the common part the word may go on only with tab, blank, digit or "-".
int32_t xf_synonym_match(std::string_view word, std::string_view name, int32_t min);
// Blank-separated words of a command; word 0 is the command.
std::vector<std::string> xf_tokens(std::string_view text);
// ASCII lower/upper case copies.
std::string xf_lower(std::string_view s);
std::string xf_upper(std::string_view s);
