// Regular expressions for searching and changing: the engine chosen by REGtype behind four operations
// (compile with a case flag, execute from an offset, fetch the match, fetching on or off).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum xf_re_kind { XF_RE_LEGACY = 0, XF_RE_ECMASCRIPT = 1 };

// Program-wide engine choice and the last outcome.
struct xf_regex_state {
  int32_t kind = XF_RE_ECMASCRIPT;
  bool fetching = true;
  std::string error;  // the reason the last compile or execution failed
};
extern xf_regex_state xf_re;

// Resets the engine choice and drops the compiled pattern.
void xf_re_reset();
// Compiles `pattern` for the current engine; a pattern already compiled with the same flag is kept. An empty
// pattern reuses the last one under the legacy engine. False with `xf_re.error` set on failure.
bool xf_re_compile(std::string_view pattern, bool fold);
// Searches `subject` (its whole length is the line) from `from`; `at_line_start` is false when `^` may not
// match at `from`. Returns 1 with the match's columns, 0 for no match, -1 when the match limit ran out
// (`xf_re.error` says so).
int xf_re_exec(std::string_view subject, int32_t from, bool at_line_start, int32_t& start, int32_t& end);
// The text of the last match (empty while fetching is off).
const std::string& xf_re_fetch();
// Turns the fetching of matched text on or off.
void xf_re_set_fetch(bool on);
