// Word built-ins: words are split at blanks only.
#include "rexxlib/bu_frame.h"

namespace {

using word_list = std::vector<std::pair<std::size_t, std::size_t>>;

// Words n (1-based) for len words of s, with the blanks between them kept.
std::string_view word_span(std::string_view s, const word_list& w, std::size_t n, std::size_t len) {
  if (n > w.size() || len == 0) return {};
  std::size_t last = std::min(w.size(), n - 1 + len) - 1;
  return s.substr(w[n - 1].first, w[last].first + w[last].second - w[n - 1].first);
}

}  // namespace

rx_value bu_words(bu_call& c) {
  bu_count(c, 1, 1);
  return bu_whole(static_cast<long long>(bu_word_list(c.str(0)).size()));
}

rx_value bu_word(bu_call& c) {
  bu_count(c, 2, 2);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  return rx_value::string(word_span(s, bu_word_list(s), n, 1));
}

rx_value bu_subword(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  auto len = static_cast<std::size_t>(bu_int(c, 2, 1, 2147483647));
  return rx_value::string(word_span(s, bu_word_list(s), n, len));
}

rx_value bu_delword(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  auto len = static_cast<std::size_t>(bu_int(c, 2, 1, 2147483647));
  word_list w = bu_word_list(s);
  if (n > w.size() || len == 0) return rx_value::string(s);
  std::size_t from = w[n - 1].first;
  std::size_t after = n - 1 + len;  // index of the first word kept behind the deleted ones
  std::size_t to = after < w.size() ? w[after].first : s.size();
  return rx_value::string(std::string(s.substr(0, from)) + std::string(s.substr(to)));
}

rx_value bu_wordindex(bu_call& c) {
  bu_count(c, 2, 2);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  word_list w = bu_word_list(s);
  return bu_whole(n <= w.size() ? static_cast<long long>(w[n - 1].first + 1) : 0);
}

rx_value bu_wordlength(bu_call& c) {
  bu_count(c, 2, 2);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 2, 1));
  word_list w = bu_word_list(s);
  return bu_whole(n <= w.size() ? static_cast<long long>(w[n - 1].second) : 0);
}

// The word number where `phrase` starts in `s`, from word `start`, comparing word by word; 0 when absent.
long long phrase_at(std::string_view phrase, std::string_view s, std::size_t start) {
  word_list p = bu_word_list(phrase), w = bu_word_list(s);
  if (p.empty()) return 0;
  for (std::size_t i = start - 1; i + p.size() <= w.size(); ++i) {
    std::size_t k = 0;
    while (k < p.size() && s.substr(w[i + k].first, w[i + k].second) == phrase.substr(p[k].first, p[k].second)) ++k;
    if (k == p.size()) return static_cast<long long>(i + 1);
  }
  return 0;
}

rx_value bu_wordpos(bu_call& c) {
  bu_count(c, 2, 3);
  auto start = static_cast<std::size_t>(bu_int(c, 2, 2, 1));
  return bu_whole(phrase_at(c.str(0, 0), c.str(1, 1), start));
}

rx_value bu_find(bu_call& c) {
  bu_count(c, 2, 2);
  return bu_whole(phrase_at(c.str(1, 1), c.str(0, 0), 1));
}

rx_value bu_space(bu_call& c) {
  bu_count(c, 1, 3);
  std::string_view s = c.str(0);
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 1));
  char pad = bu_pad(c, 2);
  word_list w = bu_word_list(s);
  std::string out;
  for (std::size_t i = 0; i < w.size(); ++i) {
    if (i) {
      rx_check_length(out.size() + n, c.first);
      out.append(n, pad);
    }
    out += s.substr(w[i].first, w[i].second);
  }
  return rx_value::string(out);
}

rx_value bu_justify(bu_call& c) {
  bu_count(c, 2, 3);
  std::string_view s = c.str(0);
  auto len = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  char pad = bu_pad(c, 2);
  rx_check_length(len, c.first);
  std::vector<std::string_view> kept;
  std::size_t used = 0;
  for (const auto& [at, n] : bu_word_list(s)) {
    std::size_t blank = kept.empty() ? 0 : 1;
    if (used + blank + n <= len) {
      kept.push_back(s.substr(at, n));
      used += blank + n;
      continue;
    }
    if (used + blank < len) {  // the word that passes the length is cut
      kept.push_back(s.substr(at, len - used - blank));
      used = len;
    }
    break;
  }
  std::string out;
  if (kept.size() <= 1) {
    if (!kept.empty()) out = kept[0];
    out.append(len - out.size(), pad);
    return rx_value::string(out);
  }
  std::size_t gaps = kept.size() - 1;
  std::size_t gap = (len - used) / gaps + 1;
  std::size_t extra = len - (used + (gap - 1) * gaps);
  out = kept[0];
  for (std::size_t i = 1; i < kept.size(); ++i) {
    out.append(gap + (i - 1 < extra ? 1 : 0), pad);
    out += kept[i];
  }
  return rx_value::string(out);
}
