// The ISPF personality's locate, find, exclude and change: PDFLocate, PDFFINd, RFINd, PDFEXClude, PDFChange,
// PDFRChange, with the operand parser they share and the last-FIND record.
#include "editor/pdffind.h"
#include "editor/operands.h"

#include <algorithm>
#include <vector>

#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

xf_pdf_record xf_pdf_last;

namespace {

enum direction { D_NEXT = 0, D_ALL = 1, D_FIRST = 2, D_LAST = 3, D_PREV = 4 };
constexpr int32_t far_col = 0x7ffffffe;
constexpr int32_t top_level = 0x7fffffff;

struct keyword {
  const char* word;
  int group;  // 0 direction, 1 kind, 2 filter
  int value;
};
constexpr keyword keywords[] = {
    {"next", 0, D_NEXT},  {"all", 0, D_ALL},     {"first", 0, D_FIRST}, {"last", 0, D_LAST},
    {"prev", 0, D_PREV},  {"chars", 1, 0},       {"prefix", 1, 1},      {"suffix", 1, 2},
    {"word", 1, 3},       {"x", 2, 0},           {"nx", 2, 1},
};


int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

bool is_quote(char c) { return c == '\'' || c == '"'; }
bool is_string_prefix(char c) { return c == 'c' || c == 'C' || c == 'p' || c == 'P' || c == 'x' || c == 'X'; }

// Blank-separated tokens; a quoted token runs to its matching quote and on to the next blank.
std::vector<std::string> tokenize(std::string_view t) {
  std::vector<std::string> out;
  std::size_t i = 0, n = t.size();
  while (i < n) {
    while (i < n && t[i] == ' ') ++i;
    if (i >= n) break;
    std::size_t start = i;
    std::size_t q = is_quote(t[i]) ? i : (i + 1 < n && is_string_prefix(t[i]) && is_quote(t[i + 1])) ? i + 1 : n;
    if (q < n) {
      std::size_t close = t.find(t[q], q + 1);
      i = close == std::string_view::npos ? n : close + 1;
    }
    while (i < n && t[i] != ' ') ++i;
    out.emplace_back(t.substr(start, i - start));
  }
  return out;
}

bool all_digits(std::string_view s) {
  return !s.empty() && s.size() <= 9 && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// One string operand. Returns 0, or the return code of its fault (the message given).
int read_string(const std::string& tok, xf_pdf_string& s) {
  s = xf_pdf_string{};
  s.given = true;
  char kind = 0;
  std::size_t p = 0;
  if (tok.size() > 1 && is_string_prefix(tok[0]) && is_quote(tok[1])) {
    kind = static_cast<char>(tok[0] | 0x20);
    p = 1;
  }
  if (p < tok.size() && is_quote(tok[p])) {
    std::size_t close = tok.find(tok[p], p + 1);
    if (close == std::string::npos) close = tok.size();
    s.text = tok.substr(p + 1, close - p - 1);
    std::string suffix = close < tok.size() ? tok.substr(close + 1) : "";
    if (!suffix.empty()) {
      if (kind || suffix.size() != 1 || !is_string_prefix(suffix[0])) return fail(16, 12), 12;
      kind = static_cast<char>(suffix[0] | 0x20);
    }
  } else {
    s.text = tok;
  }
  if (kind == 'c') s.fold = false;
  if (kind == 'p') {
    s.picture = true;
    s.fold = false;
  }
  if (kind == 'x') {
    s.hex = true;
    s.fold = false;
    std::string h = "x'" + s.text + "'";
    if (xf_hex_string(h) < 0) return fail(150, 6), 6;
    s.text = h;
  }
  return 0;
}

// A label of the range operand: the file's points and the built-in names. -1 when unknown.
int32_t label_line(const std::string& name) {
  const xf_file& f = *xf_ring.file;
  std::string n = xf_lower(name);
  if (n == ".zcsr") return std::max(xf_current_line(), 0);
  if (n == ".zfirst" || n == ".zf") return 0;
  if (n == ".zlast" || n == ".zl") return f.size - 1;
  for (const xf_point& pt : f.points)
    if (xf_lower(pt.name) == n) return pt.line;
  return -1;
}

// The shared FIND and CHANGE parser. `need` is the number of strings. Returns 0 or the return code.
int parse(std::string_view text, int need, xf_pdf_record& r) {
  std::vector<std::string> tokens = tokenize(text);
  const bool keywords_on = static_cast<int>(tokens.size()) > need;
  bool seen[3] = {false, false, false};
  std::vector<std::string> strings, labels;
  bool cols = false;
  for (std::size_t k = 0; k < tokens.size(); ++k) {
    const std::string& tok = tokens[k];
    std::string low = xf_lower(tok);
    const keyword* kw = nullptr;
    for (const keyword& w : keywords)
      if (keywords_on && low == w.word) kw = &w;
    if (kw) {
      if (seen[kw->group]) return fail(184, 12), 12;
      seen[kw->group] = true;
      if (kw->group == 0) r.direction = kw->value;
      if (kw->group == 1) r.kind = kw->value;
      if (kw->group == 2) r.filter = kw->value;
      continue;
    }
    if (keywords_on && tok.size() > 1 && tok[0] == '.') {
      labels.push_back(tok);
      continue;
    }
    if (keywords_on && all_digits(tok) && k + 1 < tokens.size() && all_digits(tokens[k + 1])) {
      if (cols) return fail(184, 12), 12;
      cols = true;
      r.col_first = std::stoi(tok) - 1;
      r.col_last = std::stoi(tokens[k + 1]) - 1;
      if (r.col_first < 0 || r.col_last < r.col_first) return fail(16, 12), 12;
      ++k;
      continue;
    }
    if (cols && all_digits(tok)) return fail(184, 12), 12;
    strings.push_back(tok);
  }
  if (strings.size() + labels.size() + (cols ? 2 : 0) > 6) return fail(16, 12), 12;
  if (static_cast<int>(strings.size()) < need) return fail(16, 12), 12;
  if (static_cast<int>(strings.size()) > need) return fail(184, 12), 12;
  if (!labels.empty()) {
    if (labels.size() != 2) return fail(179, 12), 12;
    int32_t a = label_line(labels[0]), b = label_line(labels[1]);
    if (a < 0 || b < 0) return fail(178, 7), 7;
    r.has_range = true;
    r.first_line = std::min(a, b);
    r.last_line = std::max(a, b);
  }
  if (strings[0] == "*") {
    if (!xf_pdf_last.has_find) return fail(180, 5), 5;
    r.s1 = xf_pdf_last.s1;
  } else if (int code = read_string(strings[0], r.s1)) {
    return code;
  }
  if (r.s1.text.empty()) return fail(16, 12), 12;
  if (need == 2) {
    if (int code = read_string(strings[1], r.s2)) return code;
    if (r.s1.picture && r.s2.picture && r.s1.text.size() != r.s2.text.size()) return fail(181, 12), 12;
  }
  return 0;
}

// ---- Matching ----

bool picture_char(char p, unsigned char c) {
  bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  bool digit = c >= '0' && c <= '9';
  switch (p) {
    case '=': return true;
    case '@': return letter;
    case '#': return digit;
    case '<': return c >= 'a' && c <= 'z';
    case '>': return c >= 'A' && c <= 'Z';
    case '$': return !letter && !digit;
    case '-': return !digit;
    case '.': return c < 0x20;
    case '~': return c != ' ';
    default: return static_cast<unsigned char>(p) == c;
  }
}

struct search_cols {
  int32_t first, last;
};

search_cols columns_of(const xf_pdf_record& r) {
  xf_zone_cols z = xf_zone();
  return r.col_first >= 0 ? search_cols{r.col_first, r.col_last} : search_cols{z.first, z.last};
}

// The first hit at or after `from` on line l, or -1.
int32_t hit_from(const xf_pdf_record& r, int32_t l, int32_t from) {
  std::string_view line = xf_ring.file->line(l);
  search_cols c = columns_of(r);
  const std::string& p = r.s1.text;
  int32_t m = static_cast<int32_t>(p.size());
  int32_t end = std::min<int32_t>(static_cast<int32_t>(line.size()), c.last + 1);
  for (int32_t at = std::max(from, c.first); at + m <= end; ++at) {
    if (r.s1.picture) {
      int32_t k = 0;
      while (k < m && picture_char(p[k], static_cast<unsigned char>(line[at + k]))) ++k;
      if (k < m) continue;
    } else {
      at = xf_find_text(line, at, end, p, r.s1.fold);
      if (at < 0) return -1;
    }
    if (xf_word_test(line, at, m, r.kind)) return at;
  }
  return -1;
}

// The last hit on line l that starts at or before `limit`, or -1.
int32_t hit_before(const xf_pdf_record& r, int32_t l, int32_t limit) {
  int32_t best = -1;
  for (int32_t at = hit_from(r, l, 0); at >= 0 && at <= limit; at = hit_from(r, l, at + 1)) best = at;
  return best;
}

bool filter_ok(const xf_pdf_record& r, int32_t l) {
  if (r.filter == 2) return true;
  bool shown = xf_in_scope(l);
  return r.filter == 1 ? shown : !shown;
}

int32_t range_last(const xf_pdf_record& r) {
  return r.has_range ? std::min(r.last_line, xf_ring.file->size - 1) : xf_ring.file->size - 1;
}
int32_t range_first(const xf_pdf_record& r) { return r.has_range ? r.first_line : 0; }

// Searches from (line, col) in one direction within the range; gives the hit's line and column.
bool search(const xf_pdf_record& r, int32_t line, int32_t col, bool backward, int32_t& hl, int32_t& hc) {
  const int32_t lo = range_first(r), hi = range_last(r);
  if (!backward) {
    for (int32_t l = std::max(line, lo); l <= hi; ++l) {
      if (!filter_ok(r, l)) continue;
      int32_t at = hit_from(r, l, l == line ? col : 0);
      if (at >= 0) return hl = l, hc = at, true;
    }
  } else {
    for (int32_t l = std::min(line, hi); l >= lo; --l) {
      if (!filter_ok(r, l)) continue;
      int32_t at = hit_before(r, l, l == line ? col : far_col);
      if (at >= 0) return hl = l, hc = at, true;
    }
  }
  return false;
}

// The cursor's column when it stands in the current line of the file, else -1.
int32_t cursor_column() {
  const xf_file& f = *xf_ring.file;
  int32_t cur = xf_current_line();
  if (f.cursor.view != xf_ring.view_no || f.cursor.screen_col != 0 || f.cursor.line != cur || cur < 0 ||
      cur >= f.size)
    return -1;
  return f.cursor.column - 1;
}

// Where a search of this direction starts; `repeat` moves one column on from the cursor.
void start_of(const xf_pdf_record& r, int dir, bool repeat, int32_t& line, int32_t& col, bool& backward) {
  const xf_file& f = *xf_ring.file;
  int32_t cur = xf_current_line();
  int32_t ccol = cursor_column();
  backward = dir == D_LAST || dir == D_PREV;
  switch (dir) {
    case D_FIRST:
    case D_ALL:
      line = range_first(r);
      col = 0;
      return;
    case D_LAST:
      line = range_last(r);
      col = far_col;
      return;
    case D_PREV:
      if (ccol > 0) {
        line = cur;
        col = ccol - 1;
        return;
      }
      line = std::min(cur - 1, f.size - 1);
      while (line >= 0 && !xf_in_scope(line)) --line;
      col = far_col;
      return;
    default:
      if (ccol >= 0) {
        line = cur;
        col = ccol + (repeat ? 1 : 0);
        return;
      }
      line = std::max(cur, 0);
      while (line < f.size && !xf_in_scope(line)) ++line;
      col = 0;
  }
}

void not_found(const xf_pdf_record& r) {
  xf_msgf(XF_MSG_ERROR, ".... String \"%s\" not found.", r.s1.text.c_str());
  rc = 4;
}

// A found line becomes current and visible, and the cursor goes to the hit.
void show_hit(int32_t l, int32_t col) {
  xf_file& f = *xf_ring.file;
  if (!xf_in_scope(l)) f.select[l] = xf_ring.view->display[0];
  xf_goto_hit(l, col, col);
}

int32_t hiding_level() {
  const xf_view& v = *xf_ring.view;
  if (v.display[1] == top_level) return v.display[0] > 1 ? v.display[0] - 1 : top_level;
  return v.display[1] + 1;
}

void found_message(int64_t n) {
  xf_msgf(XF_MSG_INFO, n == 1 ? "..... %lld occurrence found." : "..... %lld occurrences found.",
          static_cast<long long>(n));
}

// FIND or EXCLUDE with a parsed record.
int run_find(const xf_pdf_record& r, int dir, bool repeat) {
  xf_file& f = *xf_ring.file;
  if (dir == D_ALL) {
    int64_t n = 0;
    int32_t first_l = -1, first_c = 0;
    for (int32_t l = range_first(r); l <= range_last(r); ++l) {
      if (!filter_ok(r, l)) continue;
      int32_t at = hit_from(r, l, 0);
      if (at < 0) continue;
      if (first_l < 0) first_l = l, first_c = at;
      for (; at >= 0; at = hit_from(r, l, at + 1)) ++n;
      if (r.exclude) f.select[l] = hiding_level();
    }
    if (n == 0) return not_found(r), 1;
    if (!r.exclude) show_hit(first_l, first_c);
    found_message(n);
    return 1;
  }
  int32_t line = 0, col = 0, hl = 0, hc = 0;
  bool backward = false;
  start_of(r, dir, repeat, line, col, backward);
  if (!search(r, line, col, backward, hl, hc)) return not_found(r), 1;
  if (r.exclude) {
    f.select[hl] = hiding_level();
    xf_current_line() = hl;
    return 1;
  }
  show_hit(hl, hc);
  return 1;
}

int find_command(const xf_cmd_call& c, bool exclude) {
  if (!xf_ring.file) return 1;
  xf_pdf_record r;
  r.exclude = exclude;
  if (parse(xf_operands(c.text), 1, r)) return 1;
  r.has_find = true;
  r.has_change = xf_pdf_last.has_change;
  if (!r.has_change) r.s2 = xf_pdf_last.s2;
  xf_pdf_last = r;
  return run_find(r, r.direction, false);
}

// ---- CHANGE ----

// String 2 for the text matched at ms: a picture takes "<", ">" and "=" from the source.
std::string replacement(const xf_pdf_record& r, std::string_view line, int32_t ms) {
  if (!r.s2.picture) return r.s2.text;
  std::string out = r.s2.text;
  for (std::size_t k = 0; k < out.size(); ++k) {
    unsigned char src = ms + k < line.size() ? static_cast<unsigned char>(line[ms + k]) : ' ';
    if (out[k] == '<') out[k] = static_cast<char>(src >= 'A' && src <= 'Z' ? src + 32 : src);
    else if (out[k] == '>') out[k] = static_cast<char>(src >= 'a' && src <= 'z' ? src - 32 : src);
    else if (out[k] == '=') out[k] = static_cast<char>(src);
  }
  return out;
}

// Replaces the hit at (l, ms), keeping what follows in its columns where blanks allow. Returns the new text's
// length.
int32_t apply_change(const xf_pdf_record& r, int32_t l, int32_t ms, bool all) {
  xf_file& f = *xf_ring.file;
  std::string_view line = f.line(l);
  const int32_t len = static_cast<int32_t>(line.size());
  const int32_t l1 = static_cast<int32_t>(r.s1.text.size());
  const int32_t me = ms + l1;
  std::string repl = replacement(r, line, ms);
  const int32_t l2 = static_cast<int32_t>(repl.size());
  int32_t blanks = 0;
  while (me + blanks < len && line[me + blanks] == ' ') ++blanks;
  const bool keep_columns = blanks >= 2 && me + blanks < len;
  const bool no_pad = all && r.s1.picture && r.s1.text == "=" && r.s2.text.empty();
  int32_t tail = me;
  std::string padded = repl;
  if (keep_columns && l1 > l2 && !no_pad) padded.append(static_cast<std::size_t>(l1 - l2), ' ');
  if (keep_columns && l2 > l1 && blanks >= l2 - l1) tail = me + (l2 - l1);
  std::string out;
  out.reserve(static_cast<std::size_t>(len + l2));
  out.append(line.substr(0, ms));
  out += padded;
  out.append(line.substr(tail));
  if (!f.keep_blanks) out.erase(out.find_last_not_of(' ') + 1);
  if (out.empty()) out.push_back(' ');
  xf_do('r', xf_new_text(out), l, 0, 1, nullptr, "xfpdfc:1");
  return l2;
}

void changed_message(int64_t n) {
  if (n == 1)
    xf_msg(17, XF_MSG_INFO);
  else
    xf_msgf(XF_MSG_INFO, "..... %lld occurrences changed", static_cast<long long>(n));
}

int run_change(const xf_pdf_record& r, int dir) {
  xf_file& f = *xf_ring.file;
  if (dir == D_ALL) {
    const search_cols cols = columns_of(r);
    const int64_t width = static_cast<int64_t>(cols.last) - cols.first + 1;
    int64_t n = 0;
    int32_t line = range_first(r), col = 0, hl = 0, hc = 0, last_l = -1, last_c = 0;
    int64_t on_line = 0;
    while (search(r, line, col, false, hl, hc)) {
      if (hl != last_l) on_line = 0;
      int32_t l2 = apply_change(r, hl, hc, true);
      ++n;
      last_l = hl;
      last_c = hc + l2;
      // Patterns that match their own replacement stop when the changes on a line reach the zone's width.
      if (++on_line >= width) {
        line = hl + 1;
        col = 0;
      } else {
        line = hl;
        col = hc + std::max(l2, 0);
      }
    }
    if (n == 0) return not_found(r), 1;
    f.alt_save++;
    f.alt_auto++;
    xf_goto_hit(last_l, last_c, last_c);
    changed_message(n);
    return 1;
  }
  int32_t line = 0, col = 0, hl = 0, hc = 0;
  bool backward = false;
  start_of(r, dir, false, line, col, backward);
  if (!search(r, line, col, backward, hl, hc)) return not_found(r), 1;
  int32_t l2 = apply_change(r, hl, hc, false);
  f.alt_save++;
  f.alt_auto++;
  if (!backward) {
    xf_goto_hit(hl, hc + l2, hc + l2);
  } else if (hc > 0) {
    xf_goto_hit(hl, hc - 1, hc - 1);
  } else if (hl > 0) {
    int32_t end = f.len[hl - 1];
    xf_goto_hit(hl - 1, end, end);
  } else {
    xf_current_line() = hl;
  }
  changed_message(1);
  return 1;
}

}  // namespace

void xf_pdf_reset() { xf_pdf_last = xf_pdf_record{}; }

int xfcm_pdffind(const xf_cmd_call& c) { return find_command(c, false); }
int xfcm_pdfexclude(const xf_cmd_call& c) { return find_command(c, true); }

int xfcm_rfind(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  if (!xf_pdf_last.has_find) return fail(186, 1);
  int dir = xf_pdf_last.direction;
  dir = dir == D_LAST || dir == D_PREV ? D_PREV : D_NEXT;
  return run_find(xf_pdf_last, dir, true);
}

int xfcm_pdfchange(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_pdf_record r;
  if (parse(xf_operands(c.text), 2, r)) return 1;
  r.has_find = r.has_change = true;
  xf_pdf_last = r;
  return run_change(r, r.direction);
}

int xfcm_pdfrchange(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  if (!xf_pdf_last.has_change) return fail(187, 1);
  int dir = xf_pdf_last.direction;
  dir = dir == D_LAST || dir == D_PREV ? D_PREV : D_NEXT;
  return run_change(xf_pdf_last, dir);
}

// PDFLocate: a label, a line number, or a kind of line with a direction and a range.
int xfcm_pdflocate(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) return fail(159, 1);
  auto land = [&](int32_t l) {
    // From a found line the current line moves forward to the first line in scope.
    while (l < f.size - 1 && !xf_target_in_scope(l)) ++l;
    xf_current_line() = std::max(std::min(l, f.size - 1), xf_ring.lowest_line);
    return 1;
  };
  if (w.size() == 1 && w[0][0] == '.') {
    int32_t l = label_line(w[0]);
    if (l < 0) return fail(178, 1);
    return land(l);
  }
  if (w.size() == 1 && all_digits(w[0])) return land(std::max(std::stoi(w[0]) - 1, 0));
  int dir = D_NEXT, kind = -1;
  std::vector<std::string> labels;
  for (const std::string& x : w) {
    if (x == "first") dir = D_FIRST;
    else if (x == "last") dir = D_LAST;
    else if (x == "next") dir = D_NEXT;
    else if (x == "prev") dir = D_PREV;
    else if (x == "command") kind = 0;
    else if (x == "error") kind = 1;
    else if (x == "excluded" || x == "x") kind = 2;
    else if (x == "label") kind = 3;
    else if (x.size() > 1 && x[0] == '.') labels.push_back(x);
    else return fail(16, 1);
  }
  if (kind < 0) return fail(16, 1);
  int32_t lo = 0, hi = f.size - 1;
  if (!labels.empty()) {
    if (labels.size() != 2 || label_line(labels[0]) < 0 || label_line(labels[1]) < 0) return fail(179, 1);
    lo = std::min(label_line(labels[0]), label_line(labels[1]));
    hi = std::max(label_line(labels[0]), label_line(labels[1]));
  }
  auto matches = [&](int32_t l) {
    switch (kind) {
      case 1:
      case 3:
        return std::any_of(f.points.begin(), f.points.end(), [&](const xf_point& p) {
          return p.line == l && (kind == 3) == (!p.name.empty() && p.name[0] == '.');
        });
      case 2: return !xf_in_scope(l);
      default: return false;  // pending prefix commands are kept by the prefix area, which has none here
    }
  };
  int32_t cur = std::max(xf_current_line(), 0);
  int32_t start = cur;
  while (start < f.size && !xf_in_scope(start)) ++start;
  int32_t from = dir == D_FIRST ? lo : dir == D_LAST ? hi : dir == D_PREV ? start - 1 : start;
  bool backward = dir == D_LAST || dir == D_PREV;
  for (int32_t l = from; l >= lo && l <= hi; l += backward ? -1 : 1)
    if (matches(l)) return land(l);
  return fail(18, 1);
}
