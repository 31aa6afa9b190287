// Targets: parsing, the line searches that resolve them, and Locate.
#include "editor/target.h"

#include <algorithm>
#include <array>
#include <vector>

#include "editor/command.h"
#include "editor/find.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/trace.h"

xf_target_record xf_target;
xf_search_state xf_search;

namespace {

constexpr int32_t max_digits = 9;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Only A to Z fold; bytes of 128 and up never do.
constexpr std::array<unsigned char, 256> make_fold() {
  std::array<unsigned char, 256> t{};
  for (int i = 0; i < 256; ++i) t[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i - 'A' + 'a' : i);
  return t;
}
constexpr std::array<unsigned char, 256> fold_table = make_fold();
constexpr std::array<unsigned char, 256> same_table = [] {
  std::array<unsigned char, 256> t{};
  for (int i = 0; i < 256; ++i) t[i] = static_cast<unsigned char>(i);
  return t;
}();

// How often a byte turns up in typical text and program source; the rarest pattern bytes are compared first.
constexpr std::array<uint16_t, 256> make_frequencies() {
  std::array<uint16_t, 256> t{};
  for (int i = 32; i < 127; ++i) t[i] = 20;  // punctuation
  for (int i = '0'; i <= '9'; ++i) t[i] = 60;
  const char* by_rank = "etaoinsrhldcumfpgwybvkxjqz";
  for (int k = 0; by_rank[k]; ++k) {
    uint16_t v = static_cast<uint16_t>(1000 - 35 * k);
    t[static_cast<unsigned char>(by_rank[k])] = v;
    t[static_cast<unsigned char>(by_rank[k] - 'a' + 'A')] = static_cast<uint16_t>(v / 4);
  }
  t[' '] = 1500;
  t['\t'] = 50;
  t['_'] = 80;
  t['('] = t[')'] = t[';'] = t[','] = t['.'] = t['='] = 90;
  return t;
}
constexpr std::array<uint16_t, 256> frequency = make_frequencies();

// The Optimal Mismatch search: pattern bytes compared rarest first, shifted by the larger of the
// quick-search bad-character shift and the shift that keeps the bytes already matched in place.
// Its tables are rebuilt only when the pattern or the folding changes.
struct om_pattern {
  std::string pat;  // folded when `fold`
  bool fold = false;
  bool ready = false;
  std::vector<int32_t> loc;         // scan order: positions, m + 1 entries (the last is the sentinel)
  std::vector<unsigned char> byte;  // the bytes at those positions
  std::vector<int32_t> gs;          // shift after a mismatch at scan index i
  std::array<int32_t, 256> bc{};    // shift by the byte just past the window

  int32_t match_shift(int32_t ploc, int32_t lshift) const {
    int32_t m = static_cast<int32_t>(pat.size());
    for (; lshift < m; ++lshift) {
      int32_t i = ploc;
      while (--i >= 0) {
        int32_t j = loc[i] - lshift;
        if (j < 0) continue;
        if (byte[i] != static_cast<unsigned char>(pat[j])) break;
      }
      if (i < 0) break;
    }
    return lshift;
  }

  void prepare(std::string_view p, bool f) {
    if (ready && fold == f && pat == p) return;
    fold = f;
    pat.assign(p);
    const auto& t = f ? fold_table : same_table;
    for (char& c : pat) c = static_cast<char>(t[static_cast<unsigned char>(c)]);
    int32_t m = static_cast<int32_t>(pat.size());
    std::vector<int32_t> order(m);
    for (int32_t i = 0; i < m; ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
      return frequency[static_cast<unsigned char>(pat[a])] < frequency[static_cast<unsigned char>(pat[b])];
    });
    loc = order;
    loc.push_back(m);
    byte.resize(m + 1);
    for (int32_t i = 0; i < m; ++i) byte[i] = static_cast<unsigned char>(pat[loc[i]]);
    byte[m] = 0;
    bc.fill(m + 1);
    for (int32_t i = 0; i < m; ++i) {
      int32_t s = m - i;
      unsigned char c = static_cast<unsigned char>(pat[i]);
      bc[c] = s;
      // A folded pattern meets the line's bytes through the fold table: upper case shifts like lower case.
      if (f && c >= 'a' && c <= 'z') bc[c - 'a' + 'A'] = s;
    }
    gs.assign(m + 1, 1);
    int32_t lshift = 1;
    for (int32_t ploc = 1; ploc <= m; ++ploc) {
      lshift = match_shift(ploc, lshift);
      gs[ploc] = lshift;
    }
    for (int32_t ploc = 0; ploc <= m; ++ploc) {
      lshift = gs[ploc];
      while (lshift < m) {
        int32_t i = loc[ploc] - lshift;
        if (i < 0 || byte[ploc] != static_cast<unsigned char>(pat[i])) break;
        ++lshift;
        lshift = match_shift(ploc, lshift);
      }
      gs[ploc] = lshift;
    }
    ready = true;
  }

  // First match starting at `from` or later and ending at or before `end`; y[end] must be readable.
  int32_t find(const unsigned char* y, int32_t from, int32_t end) const {
    if (pat.empty()) return from <= end ? from : -1;
    return fold ? scan<true>(y, from, end) : scan<false>(y, from, end);
  }

  template <bool folding>
  int32_t scan(const unsigned char* y, int32_t from, int32_t end) const {
    int32_t m = static_cast<int32_t>(pat.size());
    const int32_t* l = loc.data();
    const unsigned char* b = byte.data();
    for (int32_t j = from; j <= end - m;) {
      int32_t i = 0;
      while (i < m && b[i] == (folding ? fold_table[y[j + l[i]]] : y[j + l[i]])) ++i;
      if (i >= m) return j;
      j += std::max(gs[i], bc[y[j + m]]);
    }
    return -1;
  }
};

om_pattern om_cache;

// A string item of a target, ready to search for.
struct string_item {
  std::string text;  // after hexadecimal conversion
  bool negate = false;
  bool arb = false;
  std::vector<std::string> pieces;  // with ARBchar: the text between arbitrary characters
  bool lead_gap = false, trail_gap = false;
  bool all_blank = false;          // the string is only blanks
  bool ends_blank = false;         // ... or ends in blanks, and may match at a line's end without them
  std::string trimmed;             // the string without its trailing blanks
  const om_pattern* om = nullptr;  // the prepared plain search
  om_pattern own;                  // an item's own tables, when it is one of several
};

struct hit {
  int32_t col = -1;
  int32_t end_line = 0;
  int32_t end_col = 0;
};

// The search's view of the current file and view.
struct search_env {
  xf_file* f;
  int32_t zone_first, zone_last;  // 0-based
  int32_t verify_first, verify_last;
  bool fold;
  bool scope_all;
};

search_env make_env() {
  search_env e;
  e.f = xf_ring.file;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  e.zone_first = vf.zone_first;
  e.zone_last = vf.zone_last;
  e.verify_first = vf.verify_first - 1;
  e.verify_last = vf.verify_last - 1;
  e.fold = e.f->case_mode == 0 || e.f->case_mode == 2;
  e.scope_all = xf_ring.view->scope == 1;
  return e;
}

bool eq(const search_env& e, unsigned char a, unsigned char b) {
  return e.fold ? fold_table[a] == fold_table[b] : a == b;
}

// Plain compare of `p` at column c of the line (bounded by `end`).
bool equal_at(const search_env& e, const unsigned char* y, int32_t c, int32_t end, std::string_view p) {
  if (c < 0 || c + static_cast<int32_t>(p.size()) > end) return false;
  for (std::size_t k = 0; k < p.size(); ++k)
    if (!eq(e, y[c + k], static_cast<unsigned char>(p[k]))) return false;
  return true;
}

// Blank-tolerant compare: runs of blanks in pattern and text count as one. Returns the column after the
// match, or -1.
int32_t varblank_at(const search_env& e, const unsigned char* y, int32_t c, int32_t end, std::string_view p) {
  std::size_t i = 0;
  int32_t j = c;
  while (i < p.size()) {
    if (p[i] == ' ') {
      while (i < p.size() && p[i] == ' ') ++i;
      if (j >= end || y[j] != ' ') return -1;
      while (j < end && y[j] == ' ') ++j;
      continue;
    }
    if (j >= end || !eq(e, y[j], static_cast<unsigned char>(p[i]))) return -1;
    ++i;
    ++j;
  }
  return j;
}

// First place of `p` at `from` or later, ending by `end`; sets `after` to the column behind it.
int32_t find_piece(const search_env& e, const unsigned char* y, int32_t from, int32_t end, std::string_view p,
                   int32_t& after) {
  for (int32_t c = from; c <= end - (xf_search.varblank ? 1 : static_cast<int32_t>(p.size())); ++c) {
    if (xf_search.varblank) {
      int32_t a = varblank_at(e, y, c, end, p);
      if (a >= 0) {
        after = a;
        return c;
      }
    } else if (equal_at(e, y, c, end, p)) {
      after = c + static_cast<int32_t>(p.size());
      return c;
    }
  }
  return -1;
}

std::string_view rtrim(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

bool in_verify(const search_env& e, int32_t c) {
  return xf_set.mode_locate_stay || (c >= e.verify_first && c <= e.verify_last);
}

// The arbitrary-character match on one line from column `from`.
bool arb_in_line(const search_env& e, const string_item& it, int32_t line, int32_t from, hit& h) {
  const unsigned char* y = reinterpret_cast<const unsigned char*>(e.f->text[line].get());
  int32_t len = e.f->len[line];
  int32_t end = std::min(len, e.zone_last + 1);
  int32_t start;
  int32_t cursor;
  if (it.lead_gap) {
    if (e.zone_first < from) return false;
    start = e.zone_first;
    cursor = e.zone_first;
  } else {
    start = -1;
    cursor = std::max(from, e.zone_first);
  }
  for (std::size_t k = 0; k < it.pieces.size(); ++k) {
    const std::string& p = it.pieces[k];
    int32_t after = 0;
    int32_t at = find_piece(e, y, cursor, end, p, after);
    if (at < 0 && k + 1 == it.pieces.size() && !p.empty() && p.back() == ' ') {
      std::string_view t = rtrim(p);
      int32_t c = len - static_cast<int32_t>(t.size());
      if (end >= len && c >= cursor && equal_at(e, y, c, len, t)) {
        at = c;
        after = len;
      }
    }
    if (at < 0) return false;
    if (start < 0) start = at;
    cursor = after;
  }
  h.col = start;
  h.end_line = line;
  h.end_col = (it.trail_gap ? std::max(end, cursor) : cursor) - 1;
  return true;
}

// SPAN: the string sought across this line's zone part from `from` and the lines after it.
bool span_in_line(const search_env& e, std::string_view pat, int32_t line, int32_t from, hit& h) {
  const xf_file& f = *e.f;
  int32_t nlines = xf_search.span_lines == 0 ? f.size - line : xf_search.span_lines;
  struct seg {
    int32_t at, line, col0;
  };
  std::vector<seg> segs;
  std::string joined;
  for (int32_t l = line; l < f.size && l < line + nlines; ++l) {
    std::string s(f.line(l));
    if (s == " ") s.clear();
    if (f.trunc > 0 && static_cast<int32_t>(s.size()) < f.trunc) s.resize(f.trunc, ' ');
    int32_t c0 = l == line ? std::max(from, e.zone_first) : e.zone_first;
    int32_t c1 = std::min<int32_t>(static_cast<int32_t>(s.size()), e.zone_last + 1);
    segs.push_back({static_cast<int32_t>(joined.size()), l, c0});
    if (c1 > c0) joined.append(s, c0, c1 - c0);
    if (xf_search.span_blank) joined += ' ';
  }
  if (segs.size() < 2) return false;
  const auto* y = reinterpret_cast<const unsigned char*>(joined.c_str());
  int32_t first_end = segs[1].at;
  for (int32_t c = 0; c < first_end; ++c) {
    if (!equal_at(e, y, c, static_cast<int32_t>(joined.size()), pat)) continue;
    int32_t last = c + static_cast<int32_t>(pat.size()) - 1;
    std::size_t k = segs.size() - 1;
    while (k > 0 && segs[k].at > last) --k;
    h.col = segs[0].col0 + c;
    h.end_line = segs[k].line;
    h.end_col = segs[k].col0 + (last - segs[k].at);
    return true;
  }
  return false;
}

// The single string search on one line, from column `from`.
bool plain_in_line(const search_env& e, const string_item& it, int32_t line, int32_t from, bool span, hit& h) {
  if (it.arb) return arb_in_line(e, it, line, from, h);
  const xf_file& f = *e.f;
  const auto* y = reinterpret_cast<const unsigned char*>(f.text[line].get());
  int32_t len = f.len[line];
  int32_t m = static_cast<int32_t>(it.text.size());
  int32_t end = std::min(len, e.zone_last + 1);
  int32_t start = std::max(from, e.zone_first);
  if (it.all_blank && e.zone_first >= len && start <= e.zone_first) {
    h = {e.zone_first, line, e.zone_first + m - 1};
    return true;
  }
  if (xf_search.varblank) {
    for (int32_t c = start; c < end; ++c) {
      int32_t after = varblank_at(e, y, c, end, it.text);
      if (after >= 0 && in_verify(e, c)) {
        h = {c, line, after - 1};
        return true;
      }
    }
  } else {
    for (int32_t c = start; c <= end - m;) {
      int32_t at = it.om->find(y, c, end);
      if (at < 0) break;
      if (in_verify(e, at)) {
        h = {at, line, at + m - 1};
        return true;
      }
      c = at + 1;
    }
  }
  // A pattern that ends in blanks also matches at the very end of a line that the zone reaches.
  if (it.ends_blank && e.zone_last + 1 >= len) {
    std::string_view t = it.trimmed;
    int32_t c = len - static_cast<int32_t>(t.size());
    if (c >= start && equal_at(e, y, c, len, t)) {
      h = {c, line, len - 1};
      return true;
    }
  }
  return span && xf_search.span_on && span_in_line(e, it.text, line, from, h);
}

// The last match on the line that starts at or before `limit`.
bool plain_in_line_back(const search_env& e, const string_item& it, int32_t line, int32_t limit, hit& h) {
  bool found = false;
  hit best;
  int32_t from = 0;
  hit now;
  while (plain_in_line(e, it, line, from, false, now) && now.col <= limit) {
    best = now;
    found = true;
    from = now.col + 1;
    if (it.arb && it.lead_gap) break;
  }
  if (found) h = best;
  return found;
}

// Prepares an item's string: hexadecimal form and arbitrary pieces. Returns false with the message given.
bool prepare_item(string_item& it) {
  if (xf_search.hex) {
    int h = xf_hex_string(it.text);
    if (h < 0) {
      xf_msg(150, XF_MSG_ERROR);
      return false;
    }
  }
  it.all_blank = it.text.find_first_not_of(' ') == std::string::npos;
  it.trimmed.assign(rtrim(it.text));
  it.ends_blank = !it.all_blank && it.trimmed.size() < it.text.size();
  it.arb = false;
  it.pieces.clear();
  if (xf_search.arb_on && it.text.find(xf_search.arb) != std::string::npos) {
    it.arb = true;
    std::string cur;
    for (char c : it.text) {
      if (c == xf_search.arb) {
        if (!cur.empty()) it.pieces.push_back(cur);
        cur.clear();
      } else {
        cur += c;
      }
    }
    if (!cur.empty()) it.pieces.push_back(cur);
    it.lead_gap = it.text.front() == xf_search.arb;
    it.trail_gap = it.text.back() == xf_search.arb;
    if (it.pieces.empty()) {
      xf_msg(146, XF_MSG_ERROR);
      return false;
    }
  }
  return true;
}

struct item_source {
  std::string entry;  // as typed, with its delimiters (and ~)
  string_item item;
};

// Splits a compound at its operators. Entries alternate: item, operator, item ...
std::vector<std::string> split_compound(std::string_view t) {
  std::vector<std::string> out;
  std::size_t n = t.size();
  std::size_t first = 0;
  if (first < n && t[first] == '~') ++first;
  char target_delim = first < n ? t[first] : '/';
  std::size_t pos = 0;
  while (pos < n) {
    std::size_t p = pos;
    if (t[p] == '~') ++p;
    std::size_t open = p;
    char delim = p < n ? t[p] : target_delim;
    std::string item;
    std::size_t k = p + 1;
    std::size_t next = n;
    char op = 0;
    for (; k < n; ++k) {
      char c = t[k];
      if (c == '\\' && k + 1 < n && (t[k + 1] == '&' || t[k + 1] == '|' || t[k + 1] == '\x8f')) {
        ++k;
        continue;
      }
      if (c != '&' && c != '|') continue;
      std::size_t q = k;
      while (q > open + 1 && t[q - 1] == ' ') --q;
      if (q == 0 || q - 1 <= open || t[q - 1] != delim) continue;
      std::size_t r = k + 1;
      while (r < n && t[r] == ' ') ++r;
      if (r >= n) continue;
      char s = t[r];
      bool starts = s == delim || s == '\\' ||
                    (s == '~' && r + 1 < n && (t[r + 1] == target_delim || t[r + 1] == '\\' ||
                                               (t[r + 1] != 'b' && t[r + 1] != 'r' && t[r + 1] != '~'))) ||
                    (s != 'b' && s != 'r' && s != '~');
      if (!starts) continue;
      item.assign(t.substr(pos, q - pos));
      op = c;
      next = r;
      break;
    }
    if (!op) item.assign(t.substr(pos));
    // A backslash before an operator byte made it literal; it goes now.
    std::string clean;
    for (std::size_t i = 0; i < item.size(); ++i) {
      if (item[i] == '\\' && i + 1 < item.size() &&
          (item[i + 1] == '&' || item[i + 1] == '|' || item[i + 1] == '\x8f'))
        continue;
      clean += item[i];
    }
    out.push_back(clean);
    if (!op) break;
    out.emplace_back(1, op);
    pos = next;
  }
  return out;
}

// The string of an item entry: between its delimiters, or to the end with trailing blanks dropped.
void item_from_entry(const std::string& entry, string_item& it) {
  std::size_t p = 0;
  it.negate = false;
  if (p < entry.size() && entry[p] == '~') {
    it.negate = true;
    ++p;
  }
  if (p >= entry.size()) {
    it.text.clear();
    return;
  }
  char delim = entry[p];
  std::string_view body = std::string_view(entry).substr(p + 1);
  if (!body.empty() && body.back() == delim)
    body.remove_suffix(1);
  else
    body = rtrim(body);
  it.text.assign(body);
}

bool scope_ok(const search_env& e, int32_t l) { return e.scope_all || xf_in_scope(l); }

// Where a search starts: the line, and the column on it (forward) or the last column allowed (backward).
struct search_start {
  int32_t line;
  int32_t col;
};

search_start start_of(const search_env& e, bool backward, bool move, int32_t cur) {
  const xf_file& f = *e.f;
  bool at_cursor = move && !xf_set.mode_locate_stay && xf_ring.read_view == xf_ring.view_no &&
                   xf_ring.read_line == cur && cur >= 0 && cur < f.size && xf_ring.read_column >= 0;
  if (!backward) {
    if (at_cursor && xf_ring.read_column + 1 < f.len[cur]) return {cur, xf_ring.read_column + 1};
    return {cur + 1, 0};
  }
  if (at_cursor && xf_ring.read_column - 1 >= 0) return {cur, xf_ring.read_column - 1};
  return {cur - 1, 0x7ffffffe};
}

using line_test = bool (*)(const search_env&, const void*, int32_t, int32_t, bool, hit&);

// Walks the lines in the search direction, with the wrap pass. Returns the hit line or -1.
int32_t walk(const search_env& e, bool backward, bool move, bool quiet, const void* what, line_test test,
             hit& h) {
  const xf_file& f = *e.f;
  int32_t cur = xf_current_line();
  search_start s = start_of(e, backward, move, cur);
  if (!backward) {
    for (int32_t l = std::max(s.line, 0); l < f.size; ++l) {
      if (!scope_ok(e, l)) continue;
      if (test(e, what, l, l == s.line ? s.col : 0, false, h)) return l;
    }
    if (!xf_search.wrap) return -1;
    for (int32_t l = 0; l <= cur && l < f.size; ++l) {
      if (!scope_ok(e, l)) continue;
      if (test(e, what, l, 0, false, h)) {
        if (!quiet) xf_msg(23, XF_MSG_INFO);
        return l;
      }
    }
    return -1;
  }
  for (int32_t l = std::min(s.line, f.size - 1); l >= 0; --l) {
    if (!scope_ok(e, l)) continue;
    if (test(e, what, l, l == s.line ? s.col : 0x7ffffffe, true, h)) return l;
  }
  if (!xf_search.wrap) return -1;
  for (int32_t l = f.size - 1; l >= std::max(cur, 0); --l) {
    if (!scope_ok(e, l)) continue;
    if (test(e, what, l, 0x7ffffffe, true, h)) {
      if (!quiet) xf_msg(23, XF_MSG_INFO);
      return l;
    }
  }
  return -1;
}

bool single_test(const search_env& e, const void* what, int32_t l, int32_t col, bool backward, hit& h) {
  const auto& it = *static_cast<const string_item*>(what);
  return backward ? plain_in_line_back(e, it, l, col, h) : plain_in_line(e, it, l, col, true, h);
}

struct compound {
  std::vector<string_item> items;
  std::vector<char> ops;  // ops[k] joins items[k] and items[k + 1]
};

// Items are evaluated from the left with no precedence; the first positive item that matched gives the column.
bool compound_test(const search_env& e, const void* what, int32_t l, int32_t col, bool backward, hit& h) {
  const auto& c = *static_cast<const compound*>(what);
  hit first_hit;
  bool have_hit = false;
  for (std::size_t k = 0; k < c.items.size(); ++k) {
    const string_item& it = c.items[k];
    int32_t from = k == 0 && !backward ? col : 0;
    hit now;
    bool found = backward ? plain_in_line_back(e, it, l, k == 0 ? col : 0x7ffffffe, now)
                          : plain_in_line(e, it, l, from, false, now);
    bool v = it.negate ? !found : found;
    if (v && !it.negate && !have_hit) {
      first_hit = now;
      have_hit = true;
    }
    bool last = k + 1 == c.items.size();
    if (v && (last || c.ops[k] == '|')) {
      h = have_hit ? first_hit : hit{-1, l, -1};
      return true;
    }
    if (!v && (last || c.ops[k] == '&')) return false;
  }
  return false;
}

void set_record(int32_t line, int32_t col, int32_t end_line, int32_t end_col) {
  xf_target.first_line = line;
  xf_target.first_column = col;
  xf_target.last_line = end_line;
  xf_target.last_column = end_col;
}

// Moves the current line to a resolved target and, for a string hit, places the cursor.
void move_to(int32_t line, const hit* h) {
  const xf_file& f = *xf_ring.file;
  int32_t l = std::max(std::min(line, f.size - 1), xf_ring.lowest_line);
  xf_current_line() = l;
  if (!h || xf_set.mode_locate_stay) return;
  xf_cursor& c = xf_ring.file->cursor;
  c.view = xf_ring.view_no;
  if (h->col < 0) {  // only negated items matched: the cursor goes to the command line
    c.screen_col = 1;
    c.line = -1;
  } else {
    c.screen_col = 0;
    c.line = line;
    c.column = h->col + 1;
  }
  c.priority = 30;
}

xf_target_result invalid() {
  xf_target_result r;
  r.line = xf_target_invalid;
  return r;
}

// A string or compound target: `t` begins at its first item (after the direction sign).
xf_target_result resolve_strings(std::string_view t, bool backward, bool move, bool quiet) {
  std::vector<std::string> entries = split_compound(t);
  if (entries.size() % 2 == 0) {
    xf_msg(163, XF_MSG_ERROR);
    return invalid();
  }
  search_env e = make_env();
  hit h;
  int32_t line;
  xf_target_result r;
  r.backward = backward;
  auto joined = [&entries]() {
    std::string s;
    for (std::size_t k = 0; k < entries.size(); ++k) s += (k ? " " : "") + entries[k];
    return s;
  };
  string_item single;
  if (entries.size() == 1) item_from_entry(entries[0], single);
  if (entries.size() == 1 && !single.negate) {
    if (single.text.empty()) {
      if (!xf_search.has_memorised) {
        xf_msg(167, XF_MSG_ERROR);
        return invalid();
      }
      single.text = xf_search.memorised;
    } else {
      xf_search.memorised = single.text;
      xf_search.has_memorised = true;
    }
    std::string shown = single.text;
    if (!prepare_item(single)) return invalid();
    om_cache.prepare(single.text, e.fold);
    single.om = &om_cache;
    line = walk(e, backward, move, quiet, &single, single_test, h);
    if (line < 0) {
      xf_msgf(XF_MSG_ERROR, "..... String \"%s\" not found.", shown.c_str());
      r.line = xf_target_not_found;
      r.search = true;
      return r;
    }
  } else {
    compound c;
    for (std::size_t k = 0; k < entries.size(); ++k) {
      if (k % 2) {
        if (entries[k] != "&" && entries[k] != "|") {
          xf_msgf(XF_MSG_ERROR, "..... Invalid target \"%s\" not found.", joined().c_str());
          return invalid();
        }
        c.ops.push_back(entries[k][0]);
        continue;
      }
      std::string_view body = entries[k];
      if (!body.empty() && body[0] == '~') body.remove_prefix(1);
      if (entries.size() > 1 && body.size() <= 1) {
        xf_msgf(XF_MSG_ERROR, "..... Invalid subtarget \"%s\"", entries[k].c_str());
        return invalid();
      }
      string_item it;
      item_from_entry(entries[k], it);
      if (!prepare_item(it)) return invalid();
      c.items.push_back(std::move(it));
    }
    for (string_item& it : c.items) {
      it.own.prepare(it.text, e.fold);
      it.om = &it.own;
    }
    line = walk(e, backward, move, quiet, &c, compound_test, h);
    if (line < 0) {
      xf_msgf(XF_MSG_ERROR, "..... Target \"%s\" not found.", joined().c_str());
      r.line = xf_target_not_found;
      r.search = true;
      return r;
    }
  }
  set_record(line, h.col, h.col < 0 ? line : h.end_line, h.col < 0 ? -1 : h.end_col);
  if (move) move_to(line, &h);
  r.line = line;
  return r;
}

// Reads up to nine digits that make up the whole of `s`.
bool read_count(std::string_view s, int32_t& n) {
  if (s.empty() || static_cast<int32_t>(s.size()) > max_digits) return false;
  int32_t v = 0;
  for (char c : s) {
    if (!is_digit(c)) return false;
    v = v * 10 + (c - '0');
  }
  n = v;
  return true;
}

// n lines down (or up), counting only lines in scope under SCOpe DISPLAY; clamped to the file.
int32_t walk_count(int32_t cur, int32_t n, bool backward, bool& fell) {
  const xf_file& f = *xf_ring.file;
  bool all = xf_ring.view->scope == 1;
  fell = false;
  if (all) {
    int64_t to = backward ? static_cast<int64_t>(cur) - n : static_cast<int64_t>(cur) + n;
    if (!backward && to >= f.size) {
      fell = n > 0;
      return f.size;
    }
    if (backward && to <= xf_ring.lowest_line) {
      fell = n > 0 && cur <= xf_ring.lowest_line;
      return xf_ring.lowest_line;
    }
    return static_cast<int32_t>(to);
  }
  int32_t l = cur;
  for (int32_t k = 0; k < n;) {
    l += backward ? -1 : 1;
    if (!backward && l >= f.size) {
      fell = true;
      return f.size;
    }
    if (backward && l <= xf_ring.lowest_line) {
      fell = cur <= xf_ring.lowest_line;
      return xf_ring.lowest_line;
    }
    if (xf_in_scope(l)) ++k;
  }
  return l;
}

// A target that is not a string: counts, *, :n and .name. `handled` is false for a string target.
xf_target_result resolve_lines(std::string_view t, bool move, bool& handled) {
  const xf_file& f = *xf_ring.file;
  int32_t cur = xf_current_line();
  handled = true;
  xf_target_result r;
  std::size_t p = 0;
  bool minus = false, sign = false;
  if (t[0] == '+' || t[0] == '-') {
    sign = true;
    minus = t[0] == '-';
    p = 1;
    if (t.size() == 1) return invalid();
  }
  int32_t line;
  std::string_view rest = t.substr(p);
  if (rest == "*") {
    line = minus ? xf_ring.lowest_line : f.size;
  } else if (is_digit(rest[0])) {
    int32_t n;
    if (!read_count(rest, n)) {
      xf_msg(163, XF_MSG_ERROR);
      return invalid();
    }
    bool fell;
    line = walk_count(cur, n, minus, fell);
    xf_target.relative_count = minus ? -n : n;
    xf_target.is_counted = 1;
    xf_search.fell_off = fell;
    if (fell) r.rc = 1;
  } else if (!sign && rest[0] == ':') {
    std::string_view num = rest.substr(1);
    while (!num.empty() && num.front() == ' ') num.remove_prefix(1);
    if (num.empty() || !is_digit(num[0])) {
      handled = false;
      return r;
    }
    int32_t n;
    if (!read_count(num, n)) {
      xf_msg(54, XF_MSG_ERROR);
      r.line = xf_target_not_found;
      return r;
    }
    bool zero = xf_ring.view->per_file[xf_ring.file_no].number == 2;
    int64_t l = zero ? n : static_cast<int64_t>(n) - 1;
    line = static_cast<int32_t>(std::max<int64_t>(std::min<int64_t>(l, f.size), xf_ring.lowest_line));
  } else if (!sign && rest[0] == '.' && rest.size() > 1) {
    line = -1;
    for (const xf_point& pt : f.points)
      if (pt.name == rest) line = pt.line;
    if (line < 0) {
      xf_msg(165, XF_MSG_ERROR);
      r.line = xf_target_not_found;
      r.rc = 1;
      return r;
    }
  } else {
    handled = false;
    return r;
  }
  if (xf_ring.view->scope != 1 && !xf_in_scope(line)) {
    xf_msg(55, XF_MSG_ERROR);
    return invalid();
  }
  set_record(line, xf_ring.file->column, line, xf_ring.file->column);
  if (move) move_to(line, nullptr);
  r.line = line;
  return r;
}

std::string_view ltrim(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  return s;
}

}  // namespace

void xf_target_reset() {
  xf_target = xf_target_record{};
  xf_search = xf_search_state{};
  om_cache = om_pattern{};
}

bool xf_target_in_scope(int32_t l) { return xf_ring.view->scope == 1 || xf_in_scope(l); }

int32_t xf_target_length(std::string_view text) {
  int32_t n = static_cast<int32_t>(text.size());
  int32_t p = 0;
  if (p < n && (text[p] == '+' || text[p] == '-')) ++p;
  if (p >= n) return n;
  char c = text[p];
  auto to_blank = [&](int32_t from) {
    while (from < n && text[from] != ' ') ++from;
    return from;
  };
  if (c == '*') return p + 1;
  if (is_digit(c)) return to_blank(p);
  if (p == 0 && c == ':') {
    int32_t q = 1;
    while (q < n && text[q] == ' ') ++q;
    if (q < n && is_digit(text[q])) return to_blank(q);
  }
  if (p == 0 && c == '.' && n > 1) {
    int32_t q = 1;
    while (q < n && std::string_view(" *+~-/:.").find(text[q]) == std::string_view::npos) ++q;
    return q;
  }
  if (c == '~') ++p;
  if (p >= n) return n;
  char delim = text[p];
  int32_t q = n - 1;
  while (q > p && text[q] != delim) --q;
  if (q == p) return n;
  auto op = [](char ch) { return ch == '|' || ch == '&'; };
  if (op(text[q - 1]) || (q >= 2 && text[q - 1] == '~' && op(text[q - 2]))) return n;
  return q + 1;
}

xf_target_result xf_target_resolve(std::string_view text, bool move, bool quiet) {
  xf_target.is_counted = 0;
  xf_search.fell_off = 0;
  if (!xf_ring.file) return invalid();
  std::string_view t = text;
  while (!t.empty() && t.back() == ' ') t.remove_suffix(1);
  t = ltrim(t);
  if (t.empty()) {
    xf_msg(163, XF_MSG_ERROR);
    return invalid();
  }
  bool handled;
  xf_target_result r = resolve_lines(t, move, handled);
  if (handled) return r;
  bool backward = false;
  if (t[0] == '+' || t[0] == '-') {
    backward = t[0] == '-';
    t.remove_prefix(1);
  }
  return resolve_strings(t, backward, move, quiet);
}

int32_t xf_target_distance(std::string_view text, int32_t& status, int32_t& fell_rc, bool forward_only) {
  status = 0;
  fell_rc = 0;
  text = ltrim(text);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.empty() || !xf_ring.file) {
    xf_target.is_counted = 1;
    xf_target.relative_count = 1;
    return 1;
  }
  xf_target_result r = xf_target_resolve(text, false, true);
  if (r.line < -1) {
    status = r.line;
    fell_rc = r.rc;
    return 0;
  }
  int32_t cur = xf_current_line();
  if (forward_only && r.line <= cur) {
    xf_msg(168, XF_MSG_ERROR);
    status = xf_target_invalid;
    return 0;
  }
  fell_rc = r.rc;
  return r.line - cur;
}

bool xf_is_implied_target(std::string_view s) {
  if (s.empty()) return false;
  char c = s[0];
  if (s.starts_with("-\\")) return false;
  if (is_digit(c) || c == '+' || c == '-' || c == ':' || c == '*' || c == '/') return true;
  return s.size() >= 2 && (c == '.' || s.starts_with("~/"));
}

void xf_locate(std::string_view operand, std::string_view work_dir) {
  operand = ltrim(operand);
  if (!xf_ring.file) return;
  if (operand.empty()) {
    xf_msg(159, XF_MSG_ERROR);
    rc = 1;
    return;
  }
  xf_search.last_locate.assign(operand);
  int32_t len = xf_target_length(operand);
  std::string target(operand.substr(0, len));
  std::string rest(ltrim(operand.substr(len)));
  xf_target_result r = xf_target_resolve(target, true, false);
  if (r.line == xf_target_invalid) {
    rc = 5;
    return;
  }
  if (r.line == xf_target_not_found) {
    rc = r.rc ? r.rc : xf_search.wrap ? 2 : 1;
    if (r.search && !xf_search.wrap && !xf_search.stay) {
      const xf_file& f = *xf_ring.file;
      xf_current_line() = r.backward ? xf_ring.lowest_line : std::max(f.size - 1, xf_ring.lowest_line);
    }
    return;
  }
  rc = r.rc;
  if (!rest.empty()) xfcom2(rest, work_dir);
}

void xf_implied_locate(std::string_view text, std::string_view work_dir) {
  xf_trace("xf_implied_locate");
  xf_locate(text, work_dir);
}
