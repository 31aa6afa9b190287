// The small helpers that command handlers share to read their operands.

#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/state.h"

std::string_view xf_operands(std::string_view text) {
  std::size_t sp = text.find(' ');
  return sp == std::string_view::npos ? std::string_view() : text.substr(sp + 1);
}

std::string_view xf_trim(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

int xf_bad_operands(int code) {
  xf_msg(16, XF_MSG_ERROR);
  rc = code;
  return 1;
}

bool xf_parse_digits(std::string_view s, int max_digits, int64_t& out) {
  if (s.empty() || static_cast<int>(s.size()) > max_digits) return false;
  int64_t v = 0;
  for (char ch : s) {
    if (ch < '0' || ch > '9') return false;
    v = v * 10 + (ch - '0');
  }
  out = v;
  return true;
}

bool xf_parse_count(std::string_view s, int32_t& out) {
  int64_t v = 0;
  if (!xf_parse_digits(s, 9, v)) return false;
  out = static_cast<int32_t>(v);
  return true;
}
