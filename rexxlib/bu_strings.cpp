// String built-ins: length, pieces, padding, search, translation and case.
#include <algorithm>
#include <cstring>

#include "rexxlib/bu_frame.h"

namespace {

std::string msg(const bu_call& c, const char* text) { return std::string(c.name) + "(): " + text; }

char fold(char ch) { return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 32) : ch; }

// A string of n bytes filled with `pad`, refused beyond the longest string.
std::string padding(std::size_t n, char pad, const bu_call& c) {
  rx_check_length(n, c.first);
  return std::string(n, pad);
}

// 1-based position of needle in hay from start (1-based), 0 when absent; `nocase` compares folded.
std::size_t find_from(std::string_view needle, std::string_view hay, std::size_t start, bool nocase) {
  if (needle.empty() || start > hay.size()) return 0;
  for (std::size_t i = start - 1; i + needle.size() <= hay.size(); ++i) {
    std::size_t k = 0;
    while (k < needle.size() && (nocase ? fold(hay[i + k]) == fold(needle[k]) : hay[i + k] == needle[k])) ++k;
    if (k == needle.size()) return i + 1;
  }
  return 0;
}

bool fold_flag(bu_call& c, std::size_t i) {
  if (!c.has(i)) return false;
  std::string_view f = c.str(i, 3);
  if (f != "0" && f != "1") bu_error(c, i, msg(c, "argument 4 must be 0 or 1."));
  return f == "1";
}

}  // namespace

rx_value bu_length(bu_call& c) {
  bu_count(c, 1, 1);
  return bu_whole(static_cast<long long>(c.str(0).size()));
}

rx_value bu_left(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  char pad = bu_pad(c, 2);
  if (n <= s.size()) return rx_value::string(s.substr(0, n));
  return rx_value::string(std::string(s) + padding(n - s.size(), pad, c));
}

rx_value bu_right(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  char pad = bu_pad(c, 2);
  if (n <= s.size()) return rx_value::string(s.substr(s.size() - n));
  return rx_value::string(padding(n - s.size(), pad, c) + std::string(s));
}

rx_value bu_center(bu_call& c) {
  c.name = "CENTER";
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  char pad = bu_pad(c, 2);
  if (n <= s.size()) return rx_value::string(s.substr((s.size() - n) / 2, n));
  std::size_t left = (n - s.size()) / 2;
  return rx_value::string(padding(left, pad, c) + std::string(s) + padding(n - s.size() - left, pad, c));
}

rx_value bu_substr(bu_call& c) {
  bu_count(c, 2, 4);
  std::string_view s = c.str(0);
  auto start = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  std::size_t rest = start <= s.size() ? s.size() - start + 1 : 0;
  auto len = static_cast<std::size_t>(bu_int(c, 2, 1, static_cast<long>(rest)));
  char pad = bu_pad(c, 3);
  std::string out = start <= s.size() ? std::string(s.substr(start - 1, len)) : std::string();
  if (out.size() < len) out += padding(len - out.size(), pad, c);
  return rx_value::string(out);
}

rx_value bu_copies(bu_call& c) {
  bu_count(c, 2, 2);
  std::string_view s = c.str(0);
  if (!(c.v[1].kind == RX_NUM || rx_to_number(c.v[1])) || bu_round(c.v[1].num, 9) != static_cast<long long>(bu_round(c.v[1].num, 9)))
    bu_error(c, 1, "COPIES(): argument 2 must be an integer");
  double n = bu_round(c.v[1].num, 9);
  if (n < 0 || n > 2147483647.0) bu_error(c, 1, "COPIES(): argument 2 must be a positive integer");
  rx_check_length(static_cast<std::size_t>(n) * s.size(), c.first);
  std::string out;
  out.reserve(static_cast<std::size_t>(n) * s.size());
  for (long i = 0; i < static_cast<long>(n); ++i) out += s;
  return rx_value::string(out);
}

rx_value bu_reverse(bu_call& c) {
  bu_count(c, 1, 1);
  std::string s(c.str(0));
  std::reverse(s.begin(), s.end());
  return rx_value::string(s);
}

rx_value bu_upper(bu_call& c) {
  bu_count(c, 1, 1);
  std::string s(c.str(0));
  for (char& ch : s) ch = fold(ch);
  return rx_value::string(s);
}

namespace {

// The word characters for UPPERW: letters, digits, "_", and every byte from 128 (so that the letters of a
// multi-byte character never start a word).
bool word_char(unsigned char ch) {
  return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') || ch == '_' || ch >= 128;
}

}  // namespace

rx_value bu_upperw(bu_call& c) {
  bu_count(c, 1, 1);
  std::string s(c.str(0));
  bool at_start = true;
  for (char& ch : s) {
    auto b = static_cast<unsigned char>(ch);
    if (b >= 'A' && b <= 'Z') ch = static_cast<char>(b + 32);
    if (at_start && ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
    at_start = !word_char(b);
  }
  return rx_value::string(s);
}

rx_value bu_lower(bu_call& c) {
  bu_count(c, 1, 1);
  std::string s(c.str(0));
  for (char& ch : s)
    if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch + 32);
  return rx_value::string(s);
}

rx_value bu_pos(bu_call& c) {
  bu_count(c, 2, 4);
  auto start = static_cast<std::size_t>(bu_int(c, 2, 2, 1));
  bool nocase = fold_flag(c, 3);
  return bu_whole(static_cast<long long>(find_from(c.str(0, 0), c.str(1, 1), start, nocase)));
}

rx_value bu_index(bu_call& c) {
  bu_count_msg(c, 2, 4, "must receive 2 or 3 arguments.");
  auto start = static_cast<std::size_t>(bu_int(c, 2, 2, 1));
  bool nocase = fold_flag(c, 3);
  return bu_whole(static_cast<long long>(find_from(c.str(1, 0), c.str(0, 1), start, nocase)));
}

rx_value bu_lastpos(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view needle = c.str(0, 0), hay = c.str(1, 1);
  auto start = static_cast<std::size_t>(bu_int(c, 2, 2, static_cast<long>(hay.size())));
  if (needle.empty() || needle.size() > hay.size()) return bu_whole(0);
  std::size_t last = std::min(start, hay.size()) ;
  if (last < needle.size()) return bu_whole(0);
  std::size_t at = hay.substr(0, last).rfind(needle);
  return bu_whole(at == std::string_view::npos ? 0 : static_cast<long long>(at + 1));
}

rx_value bu_abbrev(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view info = c.str(0, 0), abbr = c.str(1, 1);
  std::size_t need = abbr.size();
  if (c.has(2)) {
    if (!(c.v[2].kind == RX_NUM || rx_to_number(c.v[2])) || c.v[2].num < 0 ||
        bu_round(c.v[2].num, 9) != static_cast<long long>(bu_round(c.v[2].num, 9)))
      bu_error(c, 2, "ABBREV(): the third argument must be an integer.");
    need = static_cast<std::size_t>(bu_round(c.v[2].num, 9));
  }
  bool ok = abbr.size() >= need && abbr.size() <= info.size() && info.substr(0, abbr.size()) == abbr;
  return bu_whole(ok ? 1 : 0);
}

rx_value bu_compare(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view a = c.str(0, 0), b = c.str(1, 1);
  char pad = bu_pad(c, 2);
  std::size_t n = std::max(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    char x = i < a.size() ? a[i] : pad, y = i < b.size() ? b[i] : pad;
    if (x != y) return bu_whole(static_cast<long long>(i + 1));
  }
  return bu_whole(0);
}

rx_value bu_delstr(bu_call& c) {
  bu_count(c, 2, 3);
  std::string s(c.str(0));
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  auto len = static_cast<std::size_t>(bu_int(c, 2, 1, 2147483647));
  if (n <= s.size()) s.erase(n - 1, len);
  return rx_value::string(s);
}

rx_value bu_insert(bu_call& c) {
  bu_count_msg(c, 2, 5, "must receive between 2 and 5 arguments.");
  std::string_view in = c.str(0, 0), target = c.str(1, 1);
  auto n = static_cast<std::size_t>(bu_int(c, 2, 1, 0));
  auto len = static_cast<std::size_t>(bu_int(c, 3, 1, static_cast<long>(in.size())));
  char pad = bu_pad(c, 4);
  std::string head(target.substr(0, std::min(n, target.size())));
  if (head.size() < n) head += padding(n - head.size(), pad, c);
  std::string mid(in.substr(0, std::min(len, in.size())));
  if (mid.size() < len) mid += padding(len - mid.size(), pad, c);
  std::string tail = n < target.size() ? std::string(target.substr(n)) : std::string();
  rx_check_length(head.size() + mid.size() + tail.size(), c.first);
  return rx_value::string(head + mid + tail);
}

rx_value bu_overlay(bu_call& c) {
  bu_count_msg(c, 2, 5, "must receive between 2 and 5 arguments.");
  std::string_view in = c.str(0, 0);
  std::string target(c.str(1, 1));
  auto n = static_cast<std::size_t>(bu_int(c, 2, 2, 1));
  auto len = static_cast<std::size_t>(bu_int(c, 3, 1, static_cast<long>(in.size())));
  char pad = bu_pad(c, 4);
  std::string mid(in.substr(0, std::min(len, in.size())));
  if (mid.size() < len) mid += padding(len - mid.size(), pad, c);
  if (target.size() < n - 1) target += padding(n - 1 - target.size(), pad, c);
  std::string out = target.substr(0, n - 1) + mid;
  if (n - 1 + len < target.size()) out += target.substr(n - 1 + len);
  return rx_value::string(out);
}

rx_value bu_strip(bu_call& c) {
  bu_count(c, 1, 3);
  std::string_view s = c.str(0);
  char opt = 'B';
  if (c.has(1)) {
    std::string_view o = c.str(1, 1);
    opt = o.empty() ? ' ' : fold(o[0]);
    if (opt != 'L' && opt != 'T' && opt != 'B') bu_error(c, 1, "STRIP(): argument 3 must be L|T|B.");
  }
  char pad = bu_pad(c, 2);
  std::size_t a = 0, b = s.size();
  if (opt != 'T')
    while (a < b && s[a] == pad) ++a;
  if (opt != 'L')
    while (b > a && s[b - 1] == pad) --b;
  return rx_value::string(s.substr(a, b - a));
}

rx_value bu_translate(bu_call& c) {
  bu_count(c, 1, 4);
  std::string s(c.str(0, 0));
  if (c.count() == 1) {
    for (char& ch : s) ch = fold(ch);
    return rx_value::string(s);
  }
  std::string_view to = c.str(1, 1);
  std::string all;
  if (!c.has(2)) {
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  }
  std::string_view from = c.has(2) ? c.str(2, 2) : std::string_view(all);
  char pad = bu_pad(c, 3);
  for (char& ch : s) {
    std::size_t at = from.find(ch);
    if (at != std::string_view::npos) ch = at < to.size() ? to[at] : pad;
  }
  return rx_value::string(s);
}

rx_value bu_verify(bu_call& c) {
  bu_count(c, 2, 5);
  std::string_view s = c.str(0, 0), ref = c.str(1, 1);
  bool match = false;
  if (c.has(2)) {
    std::string_view o = c.str(2, 2);
    char k = o.empty() ? ' ' : fold(o[0]);
    if (k != 'M' && k != 'N') bu_error(c, 2, "VERIFY(): arguments 3 must be \"M\" or \"N\".");
    match = k == 'M';
  }
  auto start = static_cast<std::size_t>(bu_int(c, 3, 2, 1));
  if (s.empty() || start > s.size()) return bu_whole(0);
  for (std::size_t i = start - 1; i < s.size(); ++i)
    if ((ref.find(s[i]) != std::string_view::npos) == match) return bu_whole(static_cast<long long>(i + 1));
  return bu_whole(0);
}

rx_value bu_xrange(bu_call& c) {
  bu_count(c, 0, 2);
  int from = 0, to = 255;
  if (c.has(0)) {
    std::string_view a = c.str(0, 0);
    if (a.size() != 1) bu_error(c, 0, "XRANGE(): argument 1 is invalid.");
    from = static_cast<unsigned char>(a[0]);
  }
  if (c.has(1)) {
    std::string_view b = c.str(1, 1);
    if (b.size() != 1) bu_error(c, 1, "XRANGE(): argument 2 is invalid.");
    to = static_cast<unsigned char>(b[0]);
  }
  std::string out;
  for (int i = from;; i = (i + 1) & 255) {
    out += static_cast<char>(i);
    if (i == to) break;
  }
  return rx_value::string(out);
}

rx_value bu_change(bu_call& c) {
  bu_count(c, 3, 4);
  std::string_view s = c.str(0, 0), from = c.str(1, 1), to = c.str(2, 2);
  bool nocase = fold_flag(c, 3);
  if (from.empty()) return rx_value::string(s);
  std::string out;
  std::size_t i = 0;
  while (std::size_t at = find_from(from, s, i + 1, nocase)) {
    out.append(s.substr(i, at - 1 - i));
    out.append(to);
    rx_check_length(out.size(), c.first);
    i = at - 1 + from.size();
  }
  out.append(s.substr(i));
  return rx_value::string(out);
}

namespace {

// Digits grouped by three from the right with commas.
std::string grouped(std::string_view s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (i && (s.size() - i) % 3 == 0) out += ',';
    out += s[i];
  }
  return out;
}

}  // namespace

rx_value bu_comma(bu_call& c) {
  bu_count(c, 1, 1);
  std::string_view s = c.str(0);
  return rx_value::string(s.size() > 6 ? grouped(s) : std::string(s));
}

rx_value bu_fwc(bu_call& c) {
  bu_count(c, 1, 1);
  return rx_value::string(grouped(c.str(0)));
}
