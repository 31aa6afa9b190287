// RPOS and RCHANGE: search and replace with the compact regular-expression dialect, compiled to a sequence of
// atoms and matched by bounded backtracking.
#include <bitset>
#include <cstring>

#include "rexxlib/bu_frame.h"

namespace {

constexpr int max_groups = 9;
constexpr int max_sets = 10;
// Steps one search may take before it is given up, so that a pattern that backtracks without end stops.
constexpr long step_limit = 20'000'000;

enum node_kind : uint8_t { N_CHAR, N_ANY, N_SET, N_OPEN, N_CLOSE, N_WORD_START, N_WORD_END };
enum repeat_kind : uint8_t { R_ONE, R_STAR, R_PLUS, R_OPT };

struct node {
  node_kind kind;
  repeat_kind rep = R_ONE;
  unsigned char ch = 0;  // N_CHAR: the byte (folded when the pattern is); N_OPEN, N_CLOSE: the group
  int set = -1;
};

// A compiled pattern: "^" and "$" as flags, the atoms in order, and the bytes a match cannot do without.
struct program {
  std::vector<node> nodes;
  std::vector<std::bitset<256>> sets;
  bool bol = false, eol = false, fold = false;
  int groups = 0;
  std::string required;
};

unsigned char fold(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }
bool word_char(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Compiles "^" first and "$" last, ".", "*", "[...]" with "^" and ranges, "\(" "\)" groups, "\+" "\?" repeats,
// "\<" "\>" word edges; any other escaped byte stands for itself. Returns "" or the reason.
const char* compile_into(std::string_view p, bool fold_case, program& g) {
  g.fold = fold_case;
  std::size_t i = 0, n = p.size();
  if (i < n && p[i] == '^') {
    g.bol = true;
    ++i;
  }
  int open = 0;
  auto repeat = [&](repeat_kind r) -> const char* {
    if (g.nodes.empty()) return "* or \\+ or \\? follows nothing";
    node& last = g.nodes.back();
    if (last.kind != N_CHAR && last.kind != N_ANY && last.kind != N_SET)
      return "* or \\+ or \\? can only follow a normal character or . or []";
    if (last.rep != R_ONE) return "* or \\+ or \\? doubled up";
    last.rep = r;
    return nullptr;
  };
  auto literal = [&](unsigned char c) { g.nodes.push_back({N_CHAR, R_ONE, fold_case ? fold(c) : c}); };
  while (i < n) {
    auto c = static_cast<unsigned char>(p[i]);
    const char* err = nullptr;
    if (c == '$' && i + 1 == n) {
      g.eol = true;
      break;
    }
    if (c == '*') {
      err = repeat(R_STAR);
      ++i;
    } else if (c == '\\' && i + 1 < n) {
      auto d = static_cast<unsigned char>(p[i + 1]);
      i += 2;
      switch (d) {
        case '(':
          if (g.groups == max_groups) return "Too many \\(s";
          ++open;
          g.nodes.push_back({N_OPEN, R_ONE, static_cast<unsigned char>(++g.groups)});
          break;
        case ')': {
          if (open == 0) return "Mismatched \\)";
          // The group closed is the last one opened that is not closed yet.
          int depth = 0;
          unsigned char which = 0;
          for (auto it = g.nodes.rbegin(); it != g.nodes.rend(); ++it) {
            if (it->kind == N_CLOSE) ++depth;
            if (it->kind == N_OPEN && depth-- == 0) {
              which = it->ch;
              break;
            }
          }
          --open;
          g.nodes.push_back({N_CLOSE, R_ONE, which});
          break;
        }
        case '+': err = repeat(R_PLUS); break;
        case '?': err = repeat(R_OPT); break;
        case '<': g.nodes.push_back({N_WORD_START}); break;
        case '>': g.nodes.push_back({N_WORD_END}); break;
        default: literal(d);
      }
    } else if (c == '.') {
      g.nodes.push_back({N_ANY});
      ++i;
    } else if (c == '[') {
      if (static_cast<int>(g.sets.size()) == max_sets) return "Too many []s";
      std::bitset<256> set;
      std::size_t k = i + 1;
      bool negate = k < n && p[k] == '^';
      if (negate) ++k;
      bool first = true, closed = false;
      while (k < n) {
        auto a = static_cast<unsigned char>(p[k]);
        if (a == ']' && !first) {
          closed = true;
          break;
        }
        first = false;
        unsigned char b = a;
        if (k + 2 < n && p[k + 1] == '-' && p[k + 2] != ']') {
          b = static_cast<unsigned char>(p[k + 2]);
          if (b < a) return "Backwards span in []";
          k += 3;
        } else {
          ++k;
        }
        for (unsigned x = a; x <= b; ++x) set.set(x);
      }
      if (!closed) return "] missing";
      if (fold_case)
        for (unsigned x = 'a'; x <= 'z'; ++x)
          if (set.test(x) || set.test(x - 32)) set.set(x).set(x - 32);
      if (negate) set.flip();
      g.sets.push_back(set);
      node nd{N_SET};
      nd.set = static_cast<int>(g.sets.size()) - 1;
      g.nodes.push_back(nd);
      i = k + 1;
    } else {
      literal(c);
      ++i;
    }
    if (err) return err;
  }
  if (open > 0) return "Not enough \\)s";
  for (const node& nd : g.nodes)
    if (nd.kind == N_CHAR && (nd.rep == R_ONE || nd.rep == R_PLUS) && !(fold_case && word_char(nd.ch)))
      g.required += static_cast<char>(nd.ch);
  return "";
}

bool atom_matches(const program& g, const node& nd, unsigned char c) {
  switch (nd.kind) {
    case N_CHAR: return (g.fold ? fold(c) : c) == nd.ch;
    case N_ANY: return true;
    case N_SET: return g.sets[static_cast<std::size_t>(nd.set)].test(c);
    default: return false;
  }
}

// Where a match and its groups lie: pairs of begin and end, -1 when a group took no part.
struct captures {
  long begin[max_groups + 1];
  long end[max_groups + 1];
};

enum match_result { NO_MATCH, MATCH, TOO_LONG };

// Matches the whole program at `start` of `s`, by greedy repeats and backtracking over them.
match_result match_at(const program& g, std::string_view s, std::size_t start, captures& cap, long& steps) {
  struct choice {
    std::size_t node, base, count, min;
  };
  std::vector<choice> stack;
  std::size_t i = 0, p = start, n = s.size();
  for (int k = 0; k <= max_groups; ++k) cap.begin[k] = cap.end[k] = -1;
  auto at = [&](std::size_t x) { return static_cast<unsigned char>(s[x]); };
  for (;;) {
    if (++steps > step_limit) return TOO_LONG;
    bool ok = true;
    if (i == g.nodes.size()) {
      if (!g.eol || p == n) {
        cap.begin[0] = static_cast<long>(start);
        cap.end[0] = static_cast<long>(p);
        return MATCH;
      }
      ok = false;
    } else {
      const node& nd = g.nodes[i];
      switch (nd.kind) {
        case N_OPEN: cap.begin[nd.ch] = static_cast<long>(p); break;
        case N_CLOSE: cap.end[nd.ch] = static_cast<long>(p); break;
        case N_WORD_START: ok = p < n && word_char(at(p)) && (p == 0 || !word_char(at(p - 1))); break;
        case N_WORD_END: ok = p > 0 && word_char(at(p - 1)) && (p == n || !word_char(at(p))); break;
        default:
          if (nd.rep == R_ONE) {
            ok = p < n && atom_matches(g, nd, at(p));
            if (ok) ++p;
          } else {
            std::size_t most = nd.rep == R_OPT ? 1 : n - p, k = 0;
            while (k < most && atom_matches(g, nd, at(p + k))) ++k;
            std::size_t min = nd.rep == R_PLUS ? 1 : 0;
            ok = k >= min;
            if (ok && k > min) stack.push_back({i, p, k, min});
            if (ok) p += k;
          }
      }
      if (ok) ++i;
    }
    if (ok) continue;
    if (stack.empty()) return NO_MATCH;
    choice& c = stack.back();
    --c.count;
    p = c.base + c.count;
    i = c.node + 1;
    if (c.count == c.min) stack.pop_back();
  }
}

// The first match at or after `from`: MATCH with its captures, NO_MATCH, or TOO_LONG.
match_result search(const program& g, std::string_view s, std::size_t from, captures& cap) {
  for (char r : g.required)
    if (from > s.size() || std::memchr(s.data() + from, r, s.size() - from) == nullptr) return NO_MATCH;
  long steps = 0;
  for (std::size_t pos = from; pos <= s.size(); ++pos) {
    if (g.bol && pos != 0) break;
    match_result r = match_at(g, s, pos, cap, steps);
    if (r != NO_MATCH) return r;
  }
  return NO_MATCH;
}

// The last pattern compiled, kept so that a loop over lines compiles once; an empty pattern reuses it.
struct bu_regex_state {
  bool have = false;
  std::string pattern;
  bool fold = false;
  program prog;
};
bu_regex_state bu_rs;

// Compiles `pattern`; "" or the reason it failed.
std::string compile(std::string_view pattern, bool fold_case) {
  if (pattern.empty()) {
    if (!bu_rs.have) return "No previous RE";
    pattern = bu_rs.pattern;
  }
  if (bu_rs.have && bu_rs.pattern == pattern && bu_rs.fold == fold_case) return "";
  program g;
  const char* err = compile_into(pattern, fold_case, g);
  if (*err) return err;
  bu_rs.prog = std::move(g);
  bu_rs.have = true;
  bu_rs.pattern = std::string(pattern);
  bu_rs.fold = fold_case;
  return "";
}

bool fold_arg(bu_call& c, std::size_t i, const char* text) {
  if (!c.has(i)) return false;
  std::string_view f = c.str(i, 3);
  if (f != "0" && f != "1") bu_error(c, i, text);
  return f == "1";
}

// The replacement for one match: "\0" to "\9" give the match and its groups, "\\" a backslash.
void expand(std::string_view repl, std::string_view s, const captures& cap, std::string& out) {
  for (std::size_t i = 0; i < repl.size(); ++i) {
    if (repl[i] == '\\' && i + 1 < repl.size() && repl[i + 1] >= '0' && repl[i + 1] <= '9') {
      auto g = static_cast<std::size_t>(repl[++i] - '0');
      if (cap.begin[g] >= 0 && cap.end[g] >= cap.begin[g])
        out.append(s.substr(static_cast<std::size_t>(cap.begin[g]), static_cast<std::size_t>(cap.end[g] - cap.begin[g])));
    } else if (repl[i] == '\\' && i + 1 < repl.size() && repl[i + 1] == '\\') {
      out += '\\';
      ++i;
    } else {
      out += repl[i];
    }
  }
}

}  // namespace

rx_value bu_rpos(bu_call& c) {
  c.name = "POS";
  bu_count(c, 2, 4);
  long start = bu_int(c, 2, 2, 1);
  bool fold_case = fold_arg(c, 3, "POS(): argument 4 must be 0 or 1.");
  std::string_view pattern = c.str(0, 0), hay = c.str(1, 1);
  std::string err = compile(pattern, fold_case);
  if (!err.empty()) bu_error(c, 0, "RPOS: invalid \"" + std::string(pattern) + "\" regular expression: " + err);
  if (static_cast<std::size_t>(start) > hay.size()) return bu_whole(0);
  captures cap;
  match_result r = search(bu_rs.prog, hay, static_cast<std::size_t>(start - 1), cap);
  if (r == TOO_LONG) bu_error(c, 0, "POS(): the regular expression takes too long to match.");
  return bu_whole(r == MATCH ? cap.begin[0] + 1 : 0);
}

rx_value bu_rchange(bu_call& c) {
  bu_count_msg(c, 3, 4, "must receive 3 to 4 arguments.");
  bool fold_case = fold_arg(c, 3, "RCHANGE(): argument 4 must be 0 or 1");
  std::string_view s = c.str(0, 0), pattern = c.str(1, 1), repl = c.str(2, 2);
  if (!compile(pattern, fold_case).empty()) bu_error(c, 1, "RCHANGE(): Invalid regular expression.");
  std::string out;
  std::size_t at = 0;
  long last_end = -1;  // where the last match ended
  captures cap;
  while (at <= s.size()) {
    match_result r = search(bu_rs.prog, s, at, cap);
    if (r == TOO_LONG) bu_error(c, 1, "RCHANGE(): the regular expression takes too long to match.");
    if (r == NO_MATCH) break;
    auto mb = static_cast<std::size_t>(cap.begin[0]), me = static_cast<std::size_t>(cap.end[0]);
    if (mb == me && cap.begin[0] == last_end) {  // an empty match right behind the last match is no new match
      if (mb == s.size()) break;
      out.append(s.substr(at, mb + 1 - at));
      at = mb + 1;
      continue;
    }
    out.append(s.substr(at, mb - at));
    expand(repl, s, cap, out);
    rx_check_length(out.size(), c.first);
    at = me;
    last_end = cap.end[0];
    if (mb == me) {  // an empty match: keep the byte behind it and go on after it
      if (at == s.size()) break;
      out += s[at++];
    }
  }
  if (at < s.size()) out.append(s.substr(at));
  return rx_value::string(out);
}
