// Targets: the grammar that names a line relative to the current one, the string and compound searches that
// resolve it, the search settings that shape them, and the record of the last result.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The last resolved target; lines and columns 0-based.
struct xf_target_record {
  int32_t first_line = 0;
  int32_t first_column = 0;
  int32_t last_line = 0;
  int32_t last_column = 0;
  int32_t relative_count = 0;  // the count of the last numeric relative target
  int32_t is_counted = 0;      // 1 when the last target was a numeric relative count (5, +5, -5)
};
extern xf_target_record xf_target;

// Program-wide search settings and remembered strings.
struct xf_search_state {
  int32_t arb_on = 0;
  char arb = '$';
  int32_t span_on = 0;
  int32_t span_blank = 1;  // BLANK: joined lines are separated by one blank
  int32_t span_lines = 2;  // 0: to the end of the file
  int32_t varblank = 0;
  int32_t wrap = 1;
  int32_t stay = 0;
  int32_t hex = 0;
  std::string last_locate;  // LASTLorc: the text of the last explicit target
  std::string memorised;    // the last single string searched for
  bool has_memorised = false;
  int32_t fell_off = 0;  // the last +n or -n target ran off the file
};
extern xf_search_state xf_search;

constexpr int32_t xf_target_not_found = -2;
constexpr int32_t xf_target_invalid = -3;

// What resolving a target gave.
struct xf_target_result {
  int32_t line = 0;      // the target line (-1 .. size), or xf_target_not_found / xf_target_invalid
  int32_t rc = 0;        // 1 when a count ran off the file or a named point is missing; otherwise 0
  bool search = false;   // a string search that found nothing
  bool backward = false;
};

// Resets the record, the settings and the remembered strings.
void xf_target_reset();
// How many bytes of `text` the target at its start occupies; what follows is the rest of a command.
int32_t xf_target_length(std::string_view text);
// Resolves exactly one target. With `move` the current line goes to it and a string hit places the cursor;
// `quiet` suppresses the "Wrapped" note. Failures give their message.
xf_target_result xf_target_resolve(std::string_view text, bool move, bool quiet);
// A command's range operand as a signed distance from the current line (an empty operand is 1). `status` is
// 0, or the not-found/invalid value; with `forward_only` a target at or before the current line is invalid.
int32_t xf_target_distance(std::string_view text, int32_t& status, int32_t& fell_rc, bool forward_only);
// Is this command text a target typed alone?
bool xf_is_implied_target(std::string_view text);
// A target typed alone: the current line moves to it, as with Locate.
void xf_implied_locate(std::string_view text, std::string_view work_dir);
// Locate: resolve the target at the start of `operand`, then run what follows as a command.
void xf_locate(std::string_view operand, std::string_view work_dir);
// Is line `l` of the current file in scope (always under SCOpe ALL)?
bool xf_target_in_scope(int32_t l);
