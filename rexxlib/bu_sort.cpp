// SORT: a stem's elements sorted in place by keys of columns, as bytes, numbers or in natural order.
#include <algorithm>
#include <cmath>

#include "rexxlib/bu_frame.h"

namespace {

enum key_kind { K_BYTES, K_NUMBER, K_NATURAL, K_NATURAL_FOLD };

// One key: columns first..last (1-based; last 0 for the end of the line), its kind and direction.
struct sort_key {
  key_kind kind = K_BYTES;
  bool falling = false;
  long first = 1, last = 0;
};

// The order letters: kind and direction of each.
struct order_row {
  char letter;
  key_kind kind;
  bool falling;
};
const order_row orders[] = {
    {'a', K_BYTES, false},   {'A', K_BYTES, false},         {'d', K_BYTES, true},
    {'D', K_BYTES, true},    {'N', K_NUMBER, false},        {'n', K_NUMBER, true},
    {'X', K_NATURAL, false}, {'x', K_NATURAL, true},        {'Z', K_NATURAL_FOLD, false},
    {'z', K_NATURAL_FOLD, true},
};

const order_row* order_of(std::string_view w) {
  if (w.size() != 1) return nullptr;
  for (const order_row& r : orders)
    if (r.letter == w[0]) return &r;
  return nullptr;
}

// A column number: a whole number from 1.
bool column(std::string_view w, long& out) { return bu_digits(w, out) && out >= 1; }

// Parses the list of keys; false when it is malformed.
bool parse_keys(std::string_view text, std::vector<sort_key>& keys) {
  std::vector<std::string_view> w;
  for (auto [at, len] : bu_word_list(text)) w.push_back(text.substr(at, len));
  const order_row* current = &orders[0];
  for (std::size_t i = 0; i < w.size();) {
    if (const order_row* r = order_of(w[i])) {
      current = r;
      ++i;
    }
    if (i + 1 >= w.size()) return false;
    sort_key k;
    k.kind = current->kind;
    k.falling = current->falling;
    if (!column(w[i], k.first)) return false;
    if (w[i + 1] == "*") {
      k.last = 0;
    } else if (!column(w[i + 1], k.last) || k.last < k.first) {
      return false;
    }
    keys.push_back(k);
    i += 2;
  }
  return !keys.empty();
}

// The piece of a line a key looks at.
std::string_view piece(std::string_view line, const sort_key& k) {
  auto from = static_cast<std::size_t>(k.first - 1);
  if (from >= line.size()) return {};
  std::size_t len = k.last == 0 ? std::string_view::npos : static_cast<std::size_t>(k.last - k.first + 1);
  return line.substr(from, len);
}

int compare_padded(std::string_view a, std::string_view b) {
  std::size_t n = std::max(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    auto x = static_cast<unsigned char>(i < a.size() ? a[i] : ' ');
    auto y = static_cast<unsigned char>(i < b.size() ? b[i] : ' ');
    if (x != y) return x < y ? -1 : 1;
  }
  return 0;
}

bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
bool is_white(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
unsigned char fold(unsigned char c) { return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c; }

// Natural order: white space skipped; runs of digits by value (runs with a leading "0" as fractions, left-aligned),
// other bytes one by one, folded when `nocase`.
int compare_natural(std::string_view a, std::string_view b, bool nocase) {
  std::size_t i = 0, j = 0;
  for (;;) {
    while (i < a.size() && is_white(static_cast<unsigned char>(a[i]))) ++i;
    while (j < b.size() && is_white(static_cast<unsigned char>(b[j]))) ++j;
    if (i == a.size() || j == b.size()) return i == a.size() ? (j == b.size() ? 0 : -1) : 1;
    auto ca = static_cast<unsigned char>(a[i]), cb = static_cast<unsigned char>(b[j]);
    if (is_digit(ca) && is_digit(cb)) {
      std::size_t ei = i, ej = j;
      while (ei < a.size() && is_digit(static_cast<unsigned char>(a[ei]))) ++ei;
      while (ej < b.size() && is_digit(static_cast<unsigned char>(b[ej]))) ++ej;
      std::string_view ra = a.substr(i, ei - i), rb = b.substr(j, ej - j);
      int r;
      if (ca == '0' || cb == '0')
        r = ra.compare(rb);
      else
        r = ra.size() != rb.size() ? (ra.size() < rb.size() ? -1 : 1) : ra.compare(rb);
      if (r != 0) return r < 0 ? -1 : 1;
      i = ei;
      j = ej;
      continue;
    }
    if (nocase) {
      ca = fold(ca);
      cb = fold(cb);
    }
    if (ca != cb) return ca < cb ? -1 : 1;
    ++i;
    ++j;
  }
}

// A number key: blank gives none (below every number).
struct number_key {
  bool blank = true;
  double value = 0;
};

// The value of a 1..2147483647 whole-number argument, or 0 when it is none.
long whole_arg(std::string_view s) {
  double x = 0;
  int32_t dec = 0;
  if (!rx_is_number(s, &x, &dec)) return 0;
  x = bu_round(x, 9);
  if (x != std::floor(x) || x < 1 || x > 2147483647.0) return 0;
  return static_cast<long>(x);
}

std::string text_of(const rx_value& v) {
  if (v.kind == RX_STR) return v.text;
  std::string buf;
  return std::string(rx_text_of(v, buf, nullptr));
}

}  // namespace

rx_value bu_sort(bu_call& c) {
  if (!c.has(0)) bu_error(c, 0, "SORT(): argument 1 missing.");
  if (c.count() > 4) bu_error(c, 0, "SORT(): up to 4 arguments allowed.");
  const char* symbol = bu_symbol_arg(c, 0);
  if (!symbol) bu_error(c, 0, "SORT(): \"" + std::string(c.str(0)) + "\" is not a valid REXX symbol.");
  std::string stem = symbol;
  if (!stem.empty() && stem.back() == '.') stem.pop_back();
  std::vector<sort_key> keys;
  if (c.has(1)) {
    std::string_view cols = c.str(1, 1);
    if (!parse_keys(cols, keys)) bu_error(c, 1, "Invalid columns \"" + std::string(cols) + "\" SORT() parameters.");
  } else {
    keys.push_back(sort_key{});
  }
  long first = 1;
  if (c.has(2) && (first = whole_arg(c.str(2, 2))) == 0)
    bu_error(c, 2, "SORT(): Argument 3 (" + std::string(c.str(2, 2)) + ") is not a valid number.");
  long last = 0;
  if (c.has(3)) {
    if ((last = whole_arg(c.str(3, 3))) == 0)
      bu_error(c, 3, "SORT(): Argument 4 (" + std::string(c.str(3, 3)) + ") is not a valid number.");
  } else {
    std::string name0 = bu_stem_ref(stem, 0);
    const rx_value* v0 = bu_get_derived(name0);
    std::string t = v0 ? text_of(*v0) : name0;
    double x = 0;
    int32_t dec = 0;
    if (!rx_is_number(t, &x, &dec) || x < 0 || bu_round(x, 9) != std::floor(bu_round(x, 9)) || x > 2147483647.0)
      bu_error(c, 0, "SORT(): " + name0 + " (" + t + ") is not a valid number.");
    last = static_cast<long>(bu_round(x, 9));
    if (last == 0) return bu_whole(0);
  }
  if (first > last) return bu_whole(0);

  // Read the lines and work out the number keys once, so that a bad number is told before anything moves.
  auto n = static_cast<std::size_t>(last - first + 1);
  std::vector<std::string> lines(n);
  for (std::size_t i = 0; i < n; ++i) {
    std::string name = bu_stem_ref(stem, first + static_cast<long long>(i));
    const rx_value* v = bu_get_derived(name);
    lines[i] = v ? text_of(*v) : name;
  }
  std::vector<std::vector<number_key>> numbers(keys.size());
  for (std::size_t k = 0; k < keys.size(); ++k) {
    if (keys[k].kind != K_NUMBER) continue;
    numbers[k].resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      std::string_view p = piece(lines[i], keys[k]);
      std::size_t a = p.find_first_not_of(' ');
      if (a == std::string_view::npos) continue;
      p = p.substr(a, p.find_last_not_of(' ') - a + 1);
      number_key& nk = numbers[k][i];
      int32_t dec = 0;
      if (p.size() > 40 || !rx_is_number(p, &nk.value, &dec)) {
        std::string cols = std::to_string(keys[k].first) + " " +
                           (keys[k].last == 0 ? std::string("*") : std::to_string(keys[k].last));
        bu_error(c, 1, "SORT(): Invalid number (\"" + std::string(p) + "\") for " +
                           bu_stem_ref(stem, first + static_cast<long long>(i)) + " on columns " + cols);
      }
      nk.blank = false;
    }
  }

  std::vector<std::size_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = i;
  auto less = [&](std::size_t x, std::size_t y) {
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const sort_key& key = keys[k];
      int r = 0;
      if (key.kind == K_NUMBER) {
        const number_key &a = numbers[k][x], &b = numbers[k][y];
        r = a.blank || b.blank ? (a.blank == b.blank ? 0 : a.blank ? -1 : 1)
                               : (a.value < b.value ? -1 : a.value > b.value ? 1 : 0);
      } else if (key.kind == K_BYTES) {
        r = compare_padded(piece(lines[x], key), piece(lines[y], key));
      } else {
        r = compare_natural(piece(lines[x], key), piece(lines[y], key), key.kind == K_NATURAL_FOLD);
      }
      if (r != 0) return key.falling ? r > 0 : r < 0;
    }
    return false;
  };
  std::stable_sort(order.begin(), order.end(), less);
  std::string order_tail = bu_fold("SortOrder.");
  for (std::size_t i = 0; i < n; ++i) {
    long long at = first + static_cast<long long>(i);
    bu_stem_set(stem, at, lines[order[i]]);
    bu_stem_set(stem, order_tail + std::to_string(at), std::to_string(first + static_cast<long long>(order[i])));
  }
  return bu_whole(0);
}
