// SOrt and NSort put lines in order by keys of columns; SORTRing puts the files of the ring in order by name.
#include <algorithm>
#include <array>
#include <cctype>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

struct sort_key {
  int32_t first, last;  // 0-based columns
  int direction;        // 1 ascending, -1 descending
};

int bad(int msg = 16) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = 1;
  return 1;
}

bool folding() { return xf_ring.file->case_search_s != 0; }

unsigned char lowered(unsigned char c) { return static_cast<unsigned char>(std::tolower(c)); }
unsigned char uppered(unsigned char c) { return static_cast<unsigned char>(std::toupper(c)); }

// Column by column; a line shorter than a column counts as a blank there, both shorter is equal.
int compare_columns(std::string_view a, std::string_view b, const sort_key& k, bool fold) {
  for (int32_t col = k.first; col <= k.last; ++col) {
    bool in_a = col < static_cast<int32_t>(a.size()), in_b = col < static_cast<int32_t>(b.size());
    if (!in_a && !in_b) return 0;
    unsigned char x = in_a ? static_cast<unsigned char>(a[static_cast<std::size_t>(col)]) : ' ';
    unsigned char y = in_b ? static_cast<unsigned char>(b[static_cast<std::size_t>(col)]) : ' ';
    if (fold) {
      x = lowered(x);
      y = lowered(y);
    }
    if (x != y) return x < y ? -1 : 1;
  }
  return 0;
}

std::string_view key_text(std::string_view s, const sort_key& k) {
  if (k.first >= static_cast<int32_t>(s.size())) return {};
  std::size_t end = std::min<std::size_t>(s.size(), static_cast<std::size_t>(k.last) + 1);
  return s.substr(static_cast<std::size_t>(k.first), end - static_cast<std::size_t>(k.first));
}

bool white(char c) { return c == ' ' || c == '\t'; }
bool digit(char c) { return c >= '0' && c <= '9'; }

// Natural order: runs of digits compare as numbers (as fractions when either starts with 0), white space is
// skipped, other characters compare one by one.
int compare_natural(std::string_view a, std::string_view b, bool fold) {
  std::size_t i = 0, j = 0;
  while (true) {
    while (i < a.size() && white(a[i])) ++i;
    while (j < b.size() && white(b[j])) ++j;
    if (i >= a.size() || j >= b.size()) return i >= a.size() && j >= b.size() ? 0 : (i >= a.size() ? -1 : 1);
    if (digit(a[i]) && digit(b[j])) {
      std::size_t ei = i, ej = j;
      while (ei < a.size() && digit(a[ei])) ++ei;
      while (ej < b.size() && digit(b[ej])) ++ej;
      if (a[i] == '0' || b[j] == '0') {
        for (;; ++i, ++j) {
          bool da = i < ei, db = j < ej;
          if (!da || !db) {
            if (da != db) return da ? 1 : -1;
            break;
          }
          if (a[i] != b[j]) return a[i] < b[j] ? -1 : 1;
        }
      } else {
        if (ei - i != ej - j) return ei - i < ej - j ? -1 : 1;
        for (; i < ei; ++i, ++j)
          if (a[i] != b[j]) return a[i] < b[j] ? -1 : 1;
      }
      i = ei;
      j = ej;
      continue;
    }
    unsigned char x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[j]);
    if (fold) {
      x = uppered(x);
      y = uppered(y);
    }
    if (x != y) return x < y ? -1 : 1;
    ++i;
    ++j;
  }
}

int sort_lines(const xf_cmd_call& c, bool natural) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  int32_t cur = std::max(xf_current_line(), 0);
  int32_t first = cur, last = f.size - 1;
  std::vector<sort_key> keys;
  // Keys: [a|d] first last, the direction carried over from the key before.
  auto parse_keys = [&](std::size_t k) {
    keys.clear();
    int direction = 1;
    while (k < w.size()) {
      if (w[k] == "a" || w[k] == "d") {
        direction = w[k] == "a" ? 1 : -1;
        ++k;
      }
      int32_t a = 0, b = 0;
      if (k + 1 >= w.size() || !xf_parse_count(w[k], a) || a < 1) return false;
      if (w[k + 1] == "*")
        b = vf.zone_last >= 0x7ffffffe ? 0x7ffffffe : vf.zone_last + 1;
      else if (!xf_parse_count(w[k + 1], b) || b < a)
        return false;
      keys.push_back({a - 1, b - 1, direction});
      k += 2;
    }
    return true;
  };
  bool parsed = false;
  if (!w.empty()) {
    const std::string& r = w[0];
    int32_t n = 0;
    if (r[0] == ':') {
      if (!xf_parse_count(std::string_view(r).substr(1), n) || n - 1 < cur) return bad();
      last = n - 2;
      parsed = parse_keys(1);
    } else if (std::string_view("all").starts_with(r)) {
      first = 0;
      parsed = parse_keys(1);
    } else if (r == "*") {
      parsed = parse_keys(1);
    } else if (std::string_view("sel").starts_with(r)) {
      return bad(58);
    } else if (parse_keys(0)) {
      parsed = true;
    } else if (xf_parse_count(r, n) && n >= 1) {
      // A count of lines from the current line, when what follows reads as keys.
      last = cur + n - 1;
      parsed = parse_keys(1);
    }
  } else {
    parsed = true;
  }
  if (!parsed) return bad();
  if (keys.empty()) keys.push_back({vf.zone_first, vf.zone_last, 1});
  last = std::min(last, f.size - 1);
  if (!f.read_write) return bad(118);
  std::vector<int32_t> rows;
  for (int32_t l = first; l <= last; ++l)
    if (xf_in_scope(l)) rows.push_back(l);
  if (rows.size() < 2) return 1;
  bool fold = folding();
  std::vector<int32_t> order = rows;
  std::stable_sort(order.begin(), order.end(), [&](int32_t x, int32_t y) {
    for (const sort_key& key : keys) {
      int r = natural ? compare_natural(key_text(f.line(x), key), key_text(f.line(y), key), fold)
                      : compare_columns(f.line(x), f.line(y), key, fold);
      if (r != 0) return r * key.direction < 0;
    }
    return false;
  });
  std::vector<std::string> texts;
  texts.reserve(order.size());
  for (int32_t l : order) texts.emplace_back(f.line(l));
  bool changed = false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (order[i] == rows[i]) continue;
    xf_do('r', xf_new_text(texts[i]), rows[i], 1, 1, nullptr, "xfcm_sort");
    changed = true;
  }
  if (changed) f.alt_save++;
  return 1;
}

// The rank of each byte in the order of file names: letters as a, A, a high byte, b, B, ...; "@", "[" to "`"
// before them; "{" and after behind them; the other high bytes last.
std::array<int, 256> name_order() {
  std::array<int, 256> rank{};
  int next = 0;
  for (int ch = 0; ch <= '@'; ++ch) rank[static_cast<std::size_t>(ch)] = next++;
  for (int ch = '['; ch <= '`'; ++ch) rank[static_cast<std::size_t>(ch)] = next++;
  for (int k = 0; k < 26; ++k) {
    rank[static_cast<std::size_t>('a' + k)] = next++;
    rank[static_cast<std::size_t>('A' + k)] = next++;
    rank[static_cast<std::size_t>(0xAB + k)] = next++;
  }
  for (int ch = '{'; ch <= 0x7f; ++ch) rank[static_cast<std::size_t>(ch)] = next++;
  for (int ch = 0x80; ch < 0x100; ++ch)
    if (ch < 0xAB || ch > 0xC4) rank[static_cast<std::size_t>(ch)] = next++;
  return rank;
}

std::string_view base_name(std::string_view path) {
  std::size_t s = path.find_last_of("/\\");
  return s == std::string_view::npos ? path : path.substr(s + 1);
}

}  // namespace

int xfcm_sort(const xf_cmd_call& c) { return sort_lines(c, false); }

int xfcm_nsort(const xf_cmd_call& c) { return sort_lines(c, true); }

// SORTRing: the files in the order of their names; each view keeps its file.
int xfcm_sortring(const xf_cmd_call&) {
  int32_t n = xf_file_count();
  if (n < 2) return 1;
  static const std::array<int, 256> rank = name_order();
  std::vector<int32_t> perm(static_cast<std::size_t>(n));  // new place -> old index
  for (int32_t i = 0; i < n; ++i) perm[static_cast<std::size_t>(i)] = i;
  std::stable_sort(perm.begin(), perm.end(), [](int32_t a, int32_t b) {
    std::string_view x = base_name(xf_ring.files[static_cast<std::size_t>(a)]->name);
    std::string_view y = base_name(xf_ring.files[static_cast<std::size_t>(b)]->name);
    for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
      int rx = rank[static_cast<unsigned char>(x[i])], ry = rank[static_cast<unsigned char>(y[i])];
      if (rx != ry) return rx < ry;
    }
    return x.size() < y.size();
  });
  std::vector<int32_t> where(static_cast<std::size_t>(n));  // old index -> new place
  for (int32_t i = 0; i < n; ++i) where[static_cast<std::size_t>(perm[static_cast<std::size_t>(i)])] = i;
  std::vector<std::unique_ptr<xf_file>> files;
  std::vector<int32_t> order;
  for (int32_t old : perm) {
    files.push_back(std::move(xf_ring.files[static_cast<std::size_t>(old)]));
    order.push_back(xf_ring.ring_order[static_cast<std::size_t>(old)]);
  }
  xf_ring.files = std::move(files);
  xf_ring.ring_order = std::move(order);
  for (auto& v : xf_ring.views) {
    std::vector<xf_view_file> per_file;
    for (int32_t old : perm) per_file.push_back(v->per_file[static_cast<std::size_t>(old)]);
    v->per_file = std::move(per_file);
    if (v->current_file >= 0) v->current_file = where[static_cast<std::size_t>(v->current_file)];
  }
  xf_set_view(xf_ring.view_no);
  return 1;
}
