// Search helpers shared by the locate, find, scope and change commands.
#include "editor/find.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "editor/messages.h"
#include "editor/regex.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

namespace {

unsigned char fold(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }

int hex_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

xf_zone_cols xf_zone() {
  xf_zone_cols z;
  if (!xf_ring.file || !xf_ring.view) return z;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  z.first = vf.zone_first;
  z.last = vf.zone_last;
  return z;
}

bool xf_search_folds() { return xf_ring.file && (xf_ring.file->case_mode == 0 || xf_ring.file->case_mode == 2); }

bool xf_word_test(std::string_view line, int32_t col, int32_t len, int kind) {
  if (kind == 0) return true;
  int32_t n = static_cast<int32_t>(line.size());
  bool before = col > 0 && xf_word_char(static_cast<unsigned char>(line[col - 1]));
  bool after = col + len < n && xf_word_char(static_cast<unsigned char>(line[col + len]));
  switch (kind) {
    case 1: return !before && after;
    case 2: return before && !after;
    default: return !before && !after;
  }
}

int32_t xf_find_text(std::string_view line, int32_t from, int32_t end, std::string_view pat, bool fold_case) {
  int32_t m = static_cast<int32_t>(pat.size());
  end = std::min<int32_t>(end, static_cast<int32_t>(line.size()));
  if (from < 0) from = 0;
  if (m == 0) return from <= end ? from : -1;
  if (end - from < m) return -1;
  const char* y = line.data();
  if (!fold_case) {
    const void* p = memmem(y + from, static_cast<std::size_t>(end - from), pat.data(), pat.size());
    return p ? static_cast<int32_t>(static_cast<const char*>(p) - y) : -1;
  }
  unsigned char f0 = fold(static_cast<unsigned char>(pat[0]));
  for (int32_t c = from; c <= end - m; ++c) {
    if (fold(static_cast<unsigned char>(y[c])) != f0) continue;
    int32_t k = 1;
    while (k < m && fold(static_cast<unsigned char>(y[c + k])) == fold(static_cast<unsigned char>(pat[k]))) ++k;
    if (k == m) return c;
  }
  return -1;
}

int xf_hex_string(std::string& s) {
  if (s.size() < 3 || (s[0] != 'x' && s[0] != 'X') || s[1] != '\'') return 0;
  std::size_t close = s.find('\'', 2);
  if (close != std::string::npos && close + 1 != s.size()) return 0;
  std::string digits = s.substr(2, close == std::string::npos ? std::string::npos : close - 2);
  if (digits.size() < 2 || digits.size() % 2) return -1;
  std::string out;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    int a = hex_value(digits[i]), b = hex_value(digits[i + 1]);
    if (a < 0 || b < 0) return -1;
    char c = static_cast<char>(a * 16 + b);
    if (c == '\n') return -1;
    out += c == 0 ? '\n' : c;
  }
  s = out;
  return 1;
}

bool xf_arb_split(std::string_view s, char arb, std::vector<std::string>& pieces, bool& lead, bool& trail) {
  if (s.find(arb) == std::string_view::npos) return false;
  pieces.clear();
  std::string cur;
  for (char c : s) {
    if (c == arb) {
      if (!cur.empty()) pieces.push_back(cur);
      cur.clear();
    } else {
      cur += c;
    }
  }
  if (!cur.empty()) pieces.push_back(cur);
  lead = s.front() == arb;
  trail = s.back() == arb;
  return true;
}

void xf_goto_hit(int32_t line, int32_t col, int32_t end_col) {
  xf_current_line() = line;
  xf_target.first_line = xf_target.last_line = line;
  xf_target.first_column = col;
  xf_target.last_column = end_col;
  if (col < 0 || xf_set.mode_locate_stay) return;
  xf_cursor& c = xf_ring.file->cursor;
  c.view = xf_ring.view_no;
  c.screen_col = 0;
  c.line = line;
  c.column = col + 1;
  c.priority = 30;
}

bool xf_regex_prepare(std::string_view pattern, bool fold_case) {
  if (xf_re_compile(pattern, fold_case)) return true;
  xf_msg_text("..... " + xf_re.error, XF_MSG_ERROR);
  return false;
}

int xf_regex_in_line(int32_t l, int32_t from, int32_t& start, int32_t& end) {
  std::string_view line = xf_ring.file->line(l);
  xf_zone_cols z = xf_zone();
  std::string_view cut = line.substr(0, std::min<std::size_t>(line.size(), static_cast<std::size_t>(z.last) + 1));
  from = std::max(from, z.first);
  if (from > static_cast<int32_t>(cut.size())) return 0;
  int r = xf_re_exec(cut, from, from == 0, start, end);
  if (r < 0) xf_msg_text("..... " + xf_re.error, XF_MSG_ERROR);
  return r;
}
