// Handlers of the search commands: REGtype, \, -\, r/, the XEDIT FIND family, ALl, EXClude, SHOw, SELect.
#include <algorithm>
#include <cctype>
#include <vector>

#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/regex.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

namespace {

constexpr int32_t top_level = 0x7fffffff;



int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

// A one-line test: the first hit at or after `from` (forward) or the last starting at or before `from`
// (backward); gives its first and last column.
struct line_search {
  virtual ~line_search() = default;
  virtual int hit(int32_t l, int32_t from, int32_t& col, int32_t& end) = 0;  // 1 hit, 0 none, -1 stop

  int last_before(int32_t l, int32_t limit, int32_t& col, int32_t& end) {
    int found = 0;
    int32_t c = 0, e = 0;
    for (int32_t from = 0;;) {
      int r = hit(l, from, c, e);
      if (r < 0) return r;
      if (r == 0 || c > limit) break;
      found = 1;
      col = c;
      end = e;
      from = c + 1;
    }
    return found;
  }
};

// Walks the lines from the current one, then wraps. Returns the hit line, -1 none, -2 when the search stopped.
int32_t walk(line_search& s, bool backward, int32_t& col, int32_t& end) {
  const xf_file& f = *xf_ring.file;
  const int32_t cur = xf_current_line();
  const bool at_cursor = xf_ring.read_view == xf_ring.view_no && xf_ring.read_line == cur && cur >= 0 &&
                         cur < f.size && xf_ring.read_column >= 0 && !xf_set.mode_locate_stay;
  auto try_line = [&](int32_t l, int32_t from) -> int {
    if (!xf_target_in_scope(l)) return 0;
    return backward ? s.last_before(l, from, col, end) : s.hit(l, from, col, end);
  };
  const int32_t far = 0x7ffffffe;
  if (at_cursor) {
    int r = try_line(cur, backward ? xf_ring.read_column - 1 : xf_ring.read_column + 1);
    if (r) return r > 0 ? cur : -2;
  }
  if (!backward) {
    for (int32_t l = std::max(cur + 1, 0); l < f.size; ++l)
      if (int r = try_line(l, 0)) return r > 0 ? l : -2;
  } else {
    for (int32_t l = std::min(cur - 1, f.size - 1); l >= 0; --l)
      if (int r = try_line(l, far)) return r > 0 ? l : -2;
  }
  if (!xf_search.wrap) return -1;
  if (!backward) {
    for (int32_t l = 0; l <= cur && l < f.size; ++l)
      if (int r = try_line(l, 0)) {
        if (r < 0) return -2;
        xf_msg(23, XF_MSG_INFO);
        return l;
      }
  } else {
    for (int32_t l = f.size - 1; l >= std::max(cur, 0); --l)
      if (int r = try_line(l, far)) {
        if (r < 0) return -2;
        xf_msg(23, XF_MSG_INFO);
        return l;
      }
  }
  return -1;
}

struct word_search : line_search {
  std::string pat;
  bool fold = false;
  int hit(int32_t l, int32_t from, int32_t& col, int32_t& end) override {
    std::string_view line = xf_ring.file->line(l);
    xf_zone_cols z = xf_zone();
    int32_t stop = std::min<int32_t>(static_cast<int32_t>(line.size()), z.last + 1);
    for (int32_t c = std::max(from, z.first);;) {
      int32_t at = xf_find_text(line, c, stop, pat, fold);
      if (at < 0) return 0;
      if (xf_word_test(line, at, static_cast<int32_t>(pat.size()), 3)) {
        col = at;
        end = at + static_cast<int32_t>(pat.size()) - 1;
        return 1;
      }
      c = at + 1;
    }
  }
};

struct regex_search : line_search {
  int hit(int32_t l, int32_t from, int32_t& col, int32_t& end) override {
    int32_t s = 0, e = 0;
    int r = xf_regex_in_line(l, from, s, e);
    if (r <= 0) return r;
    col = s;
    end = std::max(e - 1, s);
    return 1;
  }
};

// After a failed search: the return code, and with WRap OFF and STAY OFF the current line goes to the far end.
void not_found(bool backward) {
  rc = xf_search.wrap ? 2 : 1;
  if (!xf_search.wrap && !xf_search.stay)
    xf_current_line() = backward ? xf_ring.lowest_line : std::max(xf_ring.file->size - 1, xf_ring.lowest_line);
}

// \text\ and -\text\: a whole-word search.
int word_locate(std::string_view body, bool backward) {
  if (!xf_ring.file) return 1;
  if (!body.empty() && body.back() == '\\') body.remove_suffix(1);
  word_search s;
  if (body.empty()) {
    if (!xf_search.has_memorised) return fail(167, 5);
    s.pat = xf_search.memorised;
  } else {
    s.pat.assign(body);
    xf_search.memorised = s.pat;
    xf_search.has_memorised = true;
  }
  s.fold = xf_search_folds();
  int32_t col = 0, end = 0;
  int32_t l = walk(s, backward, col, end);
  if (l < 0) {
    xf_msgf(XF_MSG_ERROR, "..... String \"%s\" not found.", s.pat.c_str());
    not_found(backward);
    return 1;
  }
  xf_goto_hit(l, col, end);
  return 1;
}

}  // namespace

int xfcm_word_forward(const xf_cmd_call& c) {
  if (c.text.empty() || c.text[0] != '\\') return 0;
  return word_locate(c.text.substr(1), false);
}

int xfcm_word_backward(const xf_cmd_call& c) {
  if (!c.text.starts_with("-\\")) return 0;
  return word_locate(c.text.substr(2), true);
}

// r/expr/ and r-/expr/; the closing "/" may be left out.
int xfcm_rlocate(const xf_cmd_call& c) {
  std::string_view t = c.text;
  if (t.size() < 2 || (t[0] != 'r' && t[0] != 'R')) return 0;
  bool backward = t[1] == '-';
  std::size_t open = backward ? 2 : 1;
  if (open >= t.size() || t[open] != '/') return 0;
  if (!xf_ring.file) return 1;
  std::string_view expr = t.substr(open + 1);
  if (!expr.empty() && expr.back() == '/') expr.remove_suffix(1);
  if (expr.empty()) return fail(108, 1);
  xf_search.last_locate.assign(t);
  if (!xf_regex_prepare(expr, xf_search_folds())) {
    rc = 1;
    return 1;
  }
  regex_search s;
  int32_t col = 0, end = 0;
  int32_t l = walk(s, backward, col, end);
  if (l == -2) {
    rc = 1;
    return 1;
  }
  if (l < 0) {
    xf_msgf(XF_MSG_ERROR, "..... Regular expression \"%.*s\" not found.", static_cast<int>(expr.size()),
            expr.data());
    not_found(backward);
    return 1;
  }
  xf_goto_hit(l, col, end);
  return 1;
}

int xfcm_regtype(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty()) return xf_msg(xf_re.kind == XF_RE_LEGACY ? 208 : 209, XF_MSG_INFO), 1;
  if (std::string_view("legacy").starts_with(w))
    xf_re.kind = XF_RE_LEGACY;
  else if (std::string_view("ecmascript").starts_with(w) || std::string_view("pcre").starts_with(w))
    xf_re.kind = XF_RE_ECMASCRIPT;
  else
    return fail(16, 1);
  return 1;
}

// ---- The XEDIT FIND family: a pattern compared with the start of lines. ----

namespace {

bool find_matches(std::string_view line, std::string_view pat, bool fold) {
  if (line.size() < pat.size()) return false;
  for (std::size_t k = 0; k < pat.size(); ++k) {
    unsigned char p = static_cast<unsigned char>(pat[k]), y = static_cast<unsigned char>(line[k]);
    if (p == ' ') continue;
    if (p == '_') {
      if (y != ' ') return false;
      continue;
    }
    if (fold && p >= 'A' && p <= 'Z') p = static_cast<unsigned char>(p + 32);
    if (fold && y >= 'A' && y <= 'Z') y = static_cast<unsigned char>(y + 32);
    if (p != y) return false;
  }
  return true;
}

int xed_find(const xf_cmd_call& c, bool up, bool negate) {
  if (!xf_ring.file) return 1;
  std::size_t sp = c.text.find(' ');
  std::string_view pat = sp == std::string_view::npos ? std::string_view() : c.text.substr(sp + 1);
  if (pat.empty()) return fail(159, 1);
  xf_search.last_locate.assign(pat);
  const xf_file& f = *xf_ring.file;
  const bool fold = xf_search_folds();
  const int32_t cur = xf_current_line();
  auto test = [&](int32_t l) { return find_matches(f.line(l), pat, fold) != negate; };
  int32_t hit = -1;
  bool wrapped = false;
  if (!up) {
    for (int32_t l = std::max(cur + 1, 0); l < f.size && hit < 0; ++l)
      if (test(l)) hit = l;
    for (int32_t l = 0; hit < 0 && xf_search.wrap && l <= cur && l < f.size; ++l)
      if (test(l)) hit = l, wrapped = true;
  } else {
    for (int32_t l = std::min(cur - 1, f.size - 1); l >= 0 && hit < 0; --l)
      if (test(l)) hit = l;
    for (int32_t l = f.size - 1; hit < 0 && xf_search.wrap && l >= std::max(cur, 0); --l)
      if (test(l)) hit = l, wrapped = true;
  }
  if (hit < 0) {
    xf_msg(18, XF_MSG_ERROR);
    rc = 1;
    if (!xf_search.wrap && !xf_search.stay)
      xf_current_line() = up ? xf_ring.lowest_line : std::max(f.size - 1, xf_ring.lowest_line);
    return 1;
  }
  if (wrapped) xf_msg(23, XF_MSG_INFO);
  xf_current_line() = hit;
  return 1;
}

}  // namespace

int xfcm_xedfind(const xf_cmd_call& c) { return xed_find(c, false, false); }
int xfcm_findup(const xf_cmd_call& c) { return xed_find(c, true, false); }
int xfcm_nfind(const xf_cmd_call& c) { return xed_find(c, false, true); }
int xfcm_nfindup(const xf_cmd_call& c) { return xed_find(c, true, true); }

int xfcm_find(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? xfcm_pdffind(c) : xfcm_xedfind(c);
}

// ---- ALl, EXClude, SHOw: a list of items joined by & and |, evaluated over the whole file. ----

namespace {

struct scope_item {
  enum kind_t { TEXT, REGEX, BLANK } kind = TEXT;
  bool negate = false;
  bool word = false;
  std::string text;
  std::vector<std::string> pieces;  // with ARBchar ON: the text between arbitrary characters
};

struct scope_expr {
  std::vector<scope_item> items;
  std::vector<char> ops;  // ops[k] joins items[k] and items[k + 1]
};

bool is_blank_word(std::string_view w, std::size_t min) {
  return w.size() >= min && std::string_view("blank").starts_with(w);
}

// Parses the operand; false with the message and rc given.
bool parse_scope(std::string_view t, scope_expr& e) {
  std::size_t p = 0, n = t.size();
  auto skip = [&]() {
    while (p < n && t[p] == ' ') ++p;
  };
  for (;;) {
    skip();
    if (p >= n) return fail(16, 5), false;
    scope_item it;
    if (t[p] == '~') {
      it.negate = true;
      ++p;
    }
    std::size_t w = p;
    while (w < n && ((t[w] >= 'a' && t[w] <= 'z') || (t[w] >= 'A' && t[w] <= 'Z'))) ++w;
    std::string word = xf_lower(t.substr(p, w - p));
    if (!word.empty() && is_blank_word(word, 1) && (w >= n || t[w] == ' ' || t[w] == '&' || t[w] == '|')) {
      it.kind = scope_item::BLANK;
      p = w;
    } else {
      if (p + 1 < n && (t[p] == 'r' || t[p] == 'R') && !std::isalnum(static_cast<unsigned char>(t[p + 1])) &&
          t[p + 1] != ' ') {
        it.kind = scope_item::REGEX;
        ++p;
      } else if (std::isalnum(static_cast<unsigned char>(t[p])) || t[p] == ' ') {
        return fail(16, 5), false;
      }
      char delim = t[p];
      it.word = delim == '\\' && it.kind == scope_item::TEXT;
      std::size_t close = t.find(delim, p + 1);
      if (close == std::string_view::npos) {
        it.text.assign(xf_trim(t.substr(p + 1)));
        p = n;
      } else {
        it.text.assign(t.substr(p + 1, close - p - 1));
        p = close + 1;
      }
      if (it.kind == scope_item::REGEX && it.text.empty()) return fail(108, 1), false;
      if (it.kind == scope_item::TEXT && it.text.empty()) return fail(16, 5), false;
      bool lead = false, trail = false;
      if (it.kind == scope_item::TEXT && xf_search.arb_on &&
          xf_arb_split(it.text, xf_search.arb, it.pieces, lead, trail) && it.pieces.empty())
        return fail(146, 1), false;
    }
    e.items.push_back(std::move(it));
    skip();
    if (p >= n) return true;
    if (t[p] != '&' && t[p] != '|') return fail(16, 5), false;
    e.ops.push_back(t[p++]);
  }
}

// Is the item true of line l?
int item_true(const scope_item& it, int32_t l, bool fold) {
  std::string_view line = xf_ring.file->line(l);
  xf_zone_cols z = xf_zone();
  int32_t end = std::min<int32_t>(static_cast<int32_t>(line.size()), z.last + 1);
  bool v = false;
  if (it.kind == scope_item::BLANK) {
    v = true;
    for (int32_t k = z.first; k < end; ++k)
      if (line[k] != ' ') v = false;
  } else if (it.kind == scope_item::REGEX) {
    int32_t s = 0, e = 0;
    int r = xf_regex_in_line(l, 0, s, e);
    if (r < 0) return -1;
    v = r > 0;
  } else if (!it.pieces.empty()) {  // ARBchar: the pieces in order, each leftmost after the one before
    v = true;
    int32_t c = z.first;
    for (const std::string& p : it.pieces) {
      int32_t at = xf_find_text(line, c, end, p, fold);
      if (at < 0) {
        v = false;
        break;
      }
      c = at + static_cast<int32_t>(p.size());
    }
  } else {
    for (int32_t c = z.first;;) {
      int32_t at = xf_find_text(line, c, end, it.text, fold);
      if (at < 0) break;
      if (!it.word || xf_word_test(line, at, static_cast<int32_t>(it.text.size()), 3)) {
        v = true;
        break;
      }
      c = at + 1;
    }
  }
  return v != it.negate;
}

// Evaluates the expression over the lines whose start value is true. False when it stopped with a message.
bool evaluate(const scope_expr& e, std::vector<char>& truth) {
  const xf_file& f = *xf_ring.file;
  const bool fold = xf_search_folds();
  for (std::size_t k = 0; k < e.items.size(); ++k) {
    const scope_item& it = e.items[k];
    if (it.kind == scope_item::REGEX && !xf_regex_prepare(it.text, fold)) return false;
    const char op = k == 0 ? '&' : e.ops[k - 1];
    for (int32_t l = 0; l < f.size; ++l) {
      if (!xf_target_in_scope(l)) continue;
      if (op == '&' && !truth[l]) continue;
      if (op == '|' && truth[l]) continue;
      int v = item_true(it, l, fold);
      if (v < 0) return false;
      truth[l] = static_cast<char>(v);
    }
  }
  return true;
}

enum scope_cmd { SC_ALL, SC_EXCLUDE, SC_SHOW };

int scope_command(std::string_view ops, scope_cmd which) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  xf_view& v = *xf_ring.view;
  const int32_t high = v.display[1];
  const int32_t hide = high == top_level ? top_level : high + 1;
  ops = xf_trim(ops);
  if (ops.empty()) {
    if (which == SC_SHOW) return fail(159, 1);
    for (int32_t l = 0; l < f.size; ++l) f.select[l] = which == SC_ALL ? high : hide;
    v.scope = 0;
    return 1;
  }
  scope_expr e;
  if (!parse_scope(ops, e)) return 1;
  std::vector<char> truth(f.size);
  // SHOw works among the hidden lines: they take the place of the lines in scope for the sweep.
  const int32_t saved_scope = v.scope;
  if (which == SC_SHOW) v.scope = 1;
  for (int32_t l = 0; l < f.size; ++l)
    truth[l] = static_cast<char>(which == SC_SHOW ? !xf_in_scope(l) : xf_target_in_scope(l));
  std::vector<char> start = truth;
  bool ok = evaluate(e, truth);
  v.scope = saved_scope;
  if (!ok) {
    if (rc == 0) rc = 1;
    return 1;
  }
  int32_t first_true = -1;
  for (int32_t l = 0; l < f.size && first_true < 0; ++l)
    if (truth[l]) first_true = l;
  if (first_true < 0) return fail(18, 2);
  switch (which) {
    case SC_ALL:
      for (int32_t l = 0; l < f.size; ++l) f.select[l] = truth[l] ? high : hide;
      xf_current_line() = first_true;
      break;
    case SC_EXCLUDE: {
      int32_t first_shown = -1;
      for (int32_t l = 0; l < f.size; ++l) {
        if (start[l]) f.select[l] = truth[l] ? hide : high;
        if (first_shown < 0 && f.select[l] >= v.display[0] && f.select[l] <= high) first_shown = l;
      }
      if (first_shown >= 0) xf_current_line() = first_shown;
      break;
    }
    case SC_SHOW:
      for (int32_t l = 0; l < f.size; ++l)
        if (start[l] && truth[l]) f.select[l] = high;
      break;
  }
  v.scope = 0;
  return 1;
}

// EXClude and SHOw take their operand with or without a blank behind the name.
std::string_view glued_operands(const xf_cmd_call& c) {
  std::string_view t = c.text;
  std::size_t e = 0;
  while (e < t.size() && e < c.row_name.size() && std::tolower(static_cast<unsigned char>(t[e])) == c.row_name[e])
    ++e;
  return t.substr(e);
}

}  // namespace

int xfcm_all(const xf_cmd_call& c) { return scope_command(xf_operands(c.text), SC_ALL); }
int xfcm_xedexclude(const xf_cmd_call& c) { return scope_command(glued_operands(c), SC_EXCLUDE); }
int xfcm_show(const xf_cmd_call& c) { return scope_command(glued_operands(c), SC_SHOW); }

int xfcm_exclude(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? xfcm_pdfexclude(c) : xfcm_xedexclude(c);
}

// SELect [+|-]n [target|ALL|SEL]
int xfcm_select(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (ops.empty()) return fail(159, 5);
  std::size_t sp = ops.find(' ');
  std::string_view num = ops.substr(0, sp);
  std::string_view range = sp == std::string_view::npos ? std::string_view() : xf_trim(ops.substr(sp));
  char sign = 0;
  if (!num.empty() && (num[0] == '+' || num[0] == '-')) {
    sign = num[0];
    num.remove_prefix(1);
  }
  int64_t n = 0;
  if (num.empty() || num.size() > 10) return fail(16, 5);
  for (char ch : num) {
    if (ch < '0' || ch > '9') return fail(16, 5);
    n = n * 10 + (ch - '0');
  }
  if (n > top_level) return fail(16, 5);
  int32_t cur = xf_current_line();
  int32_t first = cur, last = cur;
  std::string lr = xf_lower(range);
  if (!lr.empty() && std::string_view("all").starts_with(lr)) {
    first = 0;
    last = f.size - 1;
  } else if (lr == "sel") {
    return 1;  // no selection in this view
  } else if (!range.empty()) {
    int32_t status = 0, fell = 0;
    int32_t d = xf_target_distance(range, status, fell, false);
    if (status != 0) {
      rc = 5;
      return 1;
    }
    if (d >= 0)
      last = cur + std::max(d, 1) - 1;
    else
      first = cur + d + 1;
  }
  first = std::max(first, 0);
  last = std::min(last, f.size - 1);
  for (int32_t l = first; l <= last; ++l) {
    if (!xf_target_in_scope(l)) continue;
    int64_t v = sign == '+' ? static_cast<int64_t>(f.select[l]) + n
                : sign == '-' ? std::max<int64_t>(static_cast<int64_t>(f.select[l]) - n, 0)
                              : n;
    f.select[l] = static_cast<int32_t>(std::min<int64_t>(v, top_level));
  }
  if (!xf_search.stay && last >= first) xf_current_line() = last;
  return 1;
}
