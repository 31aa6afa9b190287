// CLocate and CDElete: column targets relative to the column pointer, and deleting up to one.
#include <algorithm>
#include <vector>

#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

namespace {

constexpr int32_t highest_column = 0x7ffffffd;  // 0-based



bool digits(std::string_view s) {
  return !s.empty() && s.size() <= 9 && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

struct column_target {
  int32_t line = 0;
  int32_t col = 0;
};

// Resolves a column target from the current line and column pointer. 0 found, 1 not found, 5 invalid.
int resolve(std::string_view t, column_target& out) {
  const xf_file& f = *xf_ring.file;
  const xf_zone_cols z = xf_zone();
  const int32_t cur = xf_current_line();
  const int32_t col = f.column;
  out.line = cur;
  auto clamp = [](int64_t c) { return static_cast<int32_t>(std::clamp<int64_t>(c, -1, highest_column)); };
  if (t == "-*") return out.col = z.first - 1, 0;
  if (t == "*" || t == "+*") return out.col = std::min(z.last + 1, highest_column), 0;
  if (t.size() > 1 && t[0] == ':' && digits(xf_trim(t.substr(1)))) {
    return out.col = clamp(std::stoll(std::string(xf_trim(t.substr(1)))) - 1), 0;
  }
  if (digits(t)) return out.col = clamp(static_cast<int64_t>(col) + std::stoll(std::string(t))), 0;
  if (t.size() > 1 && (t[0] == '+' || t[0] == '-') && digits(t.substr(1))) {
    int64_t n = std::stoll(std::string(t.substr(1)));
    return out.col = clamp(t[0] == '+' ? col + n : col - n), 0;
  }
  bool backward = false;
  if (!t.empty() && (t[0] == '-' || t[0] == '+')) {
    backward = t[0] == '-';
    t.remove_prefix(1);
  }
  if (t.empty() || (t[0] != '/' && t[0] != '\\')) return 5;
  std::string_view body = t.substr(1);
  if (!body.empty() && body.back() == t[0]) body.remove_suffix(1);
  if (body.empty()) return out.col = clamp(static_cast<int64_t>(col) + 1), 0;  // "//": the next column
  const bool fold = xf_search_folds();
  const int32_t end_of_zone = z.last + 1;
  auto forward_in = [&](int32_t l, int32_t from) {
    if (l < 0 || l >= f.size || !xf_target_in_scope(l)) return -1;
    return xf_find_text(f.line(l), std::max(from, z.first), end_of_zone, body, fold);
  };
  auto backward_in = [&](int32_t l, int32_t limit) {
    if (l < 0 || l >= f.size || !xf_target_in_scope(l)) return -1;
    int32_t best = -1;
    for (int32_t at = forward_in(l, 0); at >= 0 && at <= limit; at = forward_in(l, at + 1)) best = at;
    return best;
  };
  int32_t at = backward ? backward_in(cur, col - 1) : forward_in(cur, col + 1);
  if (at >= 0) return out.col = at, 0;
  // STReam: the following (or preceding) lines, then with WRap from the other end up to the line before.
  for (int32_t l = cur + (backward ? -1 : 1); l >= 0 && l < f.size; l += backward ? -1 : 1) {
    at = backward ? backward_in(l, highest_column) : forward_in(l, 0);
    if (at >= 0) return out.line = l, out.col = at, 0;
  }
  if (xf_search.wrap) {
    for (int32_t l = backward ? f.size - 1 : 0; backward ? l > cur : l < cur; l += backward ? -1 : 1) {
      at = backward ? backward_in(l, highest_column) : forward_in(l, 0);
      if (at >= 0) {
        xf_msg(23, XF_MSG_INFO);
        return out.line = l, out.col = at, 0;
      }
    }
  }
  return 1;
}

// CDElete: from the column pointer to the column before the target.
void column_delete(const column_target& t) {
  xf_file& f = *xf_ring.file;
  const int32_t cur = xf_current_line();
  const int32_t col = f.column;
  if (cur < 0 || cur >= f.size || col < 0 || col >= f.len[cur]) return;
  auto put = [&](int32_t l, std::string s) {
    if (s.empty()) s.push_back(' ');
    xf_do('r', xf_new_text(s), l, 0, 1, nullptr, "xfcdel:1");
  };
  if (t.line == cur) {
    std::string s(f.line(cur));
    int32_t end = std::min<int32_t>(t.col, static_cast<int32_t>(s.size()));
    s.erase(static_cast<std::size_t>(col), static_cast<std::size_t>(end - col));
    put(cur, s);
  } else {
    std::string tail(f.line(t.line).substr(std::min<std::size_t>(t.col, f.line(t.line).size())));
    put(t.line, tail);
    put(cur, std::string(f.line(cur).substr(0, col)));
    int32_t between = t.line - cur - 1;
    if (between > 0) xf_do('D', nullptr, cur + 1, between, 1, nullptr, "xfcdel:2");
  }
  f.alt_save++;
  f.alt_auto++;
}

}  // namespace

// The second letter of the command as typed tells CLocate from CDElete.
int xfcm_clocate(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  const bool del = c.ltext.size() > 1 && c.ltext[1] == 'd';
  std::string_view t = xf_trim(xf_operands(c.text));
  if (t.empty() && !del) {
    xf_msg(159, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  column_target ct;
  int r = t.empty() ? (ct.line = xf_current_line(), ct.col = f.column + 1, 0) : resolve(t, ct);
  if (r == 5) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  const int32_t cur = xf_current_line();
  if (r == 1 || (del && (ct.line < cur || (ct.line == cur && ct.col <= f.column)))) {
    xf_msg(18, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  xf_target.first_line = xf_target.last_line = ct.line;
  xf_target.first_column = xf_target.last_column = ct.col;
  if (del) {
    column_delete(ct);
    return 1;
  }
  f.column = ct.col;
  if (ct.line != cur) xf_current_line() = ct.line;
  return 1;
}
