// Regular expressions: the editor's own compact matcher (legacy) and PCRE2 in its ECMAScript-like options.
#include "editor/regex.h"

#include <bitset>
#include <cstring>
#include <memory>
#include <vector>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

xf_regex_state xf_re;

namespace {

// A match may take at most this many steps (legacy) or PCRE2 match calls, so that a catastrophic pattern ends.
constexpr uint32_t match_limit = 20'000'000;
constexpr int max_groups = 9;
constexpr int max_sets = 10;

unsigned char fold(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }
bool word_char(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// ---- The legacy matcher: a sequence of atoms, each with a repeat, matched by greedy backtracking. ----

enum node_kind : uint8_t { N_CHAR, N_ANY, N_SET, N_OPEN, N_CLOSE, N_WORD_START, N_WORD_END };
enum repeat_kind : uint8_t { R_ONE, R_STAR, R_PLUS, R_OPT };

struct node {
  node_kind kind;
  repeat_kind rep = R_ONE;
  unsigned char ch = 0;
  int set = -1;
};

struct legacy_program {
  std::vector<node> nodes;
  std::vector<std::bitset<256>> sets;
  bool bol = false, eol = false;
  bool fold = false;
  int first_literal = -1;  // a byte every match begins with, to skip to quickly
  int32_t min_len = 0;
};

bool quantifiable(const node& n) { return n.kind == N_CHAR || n.kind == N_ANY || n.kind == N_SET; }

// Compiles the pattern; returns "" or the reason.
const char* legacy_compile(std::string_view p, bool fold_case, legacy_program& out) {
  legacy_program g;
  g.fold = fold_case;
  std::size_t i = 0, n = p.size();
  if (i < n && p[i] == '^') {
    g.bol = true;
    ++i;
  }
  int groups = 0;
  std::vector<int> open;
  auto add_repeat = [&](repeat_kind r) -> const char* {
    if (g.nodes.empty()) return "* or \\+ or \\? follows nothing";
    node& last = g.nodes.back();
    if (!quantifiable(last)) return "* or \\+ or \\? can only follow a normal character or . or []";
    if (last.rep != R_ONE) return "* or \\+ or \\? doubled up";
    last.rep = r;
    return nullptr;
  };
  while (i < n) {
    unsigned char c = static_cast<unsigned char>(p[i]);
    if (c == '$' && i + 1 == n) {
      g.eol = true;
      break;
    }
    const char* err = nullptr;
    if (c == '*') {
      err = add_repeat(R_STAR);
      ++i;
    } else if (c == '\\' && i + 1 < n) {
      unsigned char d = static_cast<unsigned char>(p[i + 1]);
      i += 2;
      if (d == '(') {
        if (++groups > max_groups) return "Too many \\(s";
        open.push_back(groups);
        g.nodes.push_back({N_OPEN});
      } else if (d == ')') {
        if (open.empty()) return "Mismatched \\)";
        open.pop_back();
        g.nodes.push_back({N_CLOSE});
      } else if (d == '+') {
        err = add_repeat(R_PLUS);
      } else if (d == '?') {
        err = add_repeat(R_OPT);
      } else if (d == '<') {
        g.nodes.push_back({N_WORD_START});
      } else if (d == '>') {
        g.nodes.push_back({N_WORD_END});
      } else {
        g.nodes.push_back({N_CHAR, R_ONE, d});
      }
    } else if (c == '.') {
      g.nodes.push_back({N_ANY});
      ++i;
    } else if (c == '[') {
      if (static_cast<int>(g.sets.size()) >= max_sets) return "Too many []s";
      std::bitset<256> s;
      std::size_t k = i + 1;
      bool neg = k < n && p[k] == '^';
      if (neg) ++k;
      bool first = true;
      bool closed = false;
      while (k < n) {
        unsigned char a = static_cast<unsigned char>(p[k]);
        if (a == ']' && !first) {
          closed = true;
          break;
        }
        first = false;
        if (k + 2 < n && p[k + 1] == '-' && p[k + 2] != ']') {
          unsigned char b = static_cast<unsigned char>(p[k + 2]);
          if (b < a) return "Backwards span in []";
          for (int x = a; x <= b; ++x) s.set(x);
          k += 3;
        } else {
          s.set(a);
          ++k;
        }
      }
      if (!closed) return "] missing";
      if (fold_case)
        for (int x = 'a'; x <= 'z'; ++x)
          if (s[x] || s[x - 32]) s.set(x), s.set(x - 32);
      if (neg) s.flip();
      g.sets.push_back(s);
      g.nodes.push_back({N_SET, R_ONE, 0, static_cast<int>(g.sets.size()) - 1});
      i = k + 1;
    } else {
      g.nodes.push_back({N_CHAR, R_ONE, c});
      ++i;
    }
    if (err) return err;
  }
  if (!open.empty()) return "Not enough \\)s";
  for (const node& x : g.nodes)
    if (quantifiable(x) && (x.rep == R_ONE || x.rep == R_PLUS)) ++g.min_len;
  for (const node& x : g.nodes) {
    if (x.kind == N_OPEN || x.kind == N_CLOSE || x.kind == N_WORD_START) continue;
    bool letter = (x.ch >= 'a' && x.ch <= 'z') || (x.ch >= 'A' && x.ch <= 'Z');
    if (x.kind == N_CHAR && (x.rep == R_ONE || x.rep == R_PLUS) && !(fold_case && letter))
      g.first_literal = x.ch;
    break;
  }
  out = std::move(g);
  return nullptr;
}

struct legacy_run {
  const legacy_program& g;
  const unsigned char* s;
  int32_t len;
  uint64_t steps = 0;
  bool over = false;

  bool one(const node& x, int32_t pos) const {
    if (pos >= len) return false;
    unsigned char c = s[pos];
    switch (x.kind) {
      case N_ANY: return true;
      case N_SET: return g.sets[x.set][c];
      default: return g.fold ? fold(c) == fold(x.ch) : c == x.ch;
    }
  }

  // Matches nodes from k at pos; returns the end or -1.
  int32_t match(std::size_t k, int32_t pos) {
    if (++steps > match_limit) {
      over = true;
      return -1;
    }
    if (k == g.nodes.size()) return !g.eol || pos == len ? pos : -1;
    const node& x = g.nodes[k];
    switch (x.kind) {
      case N_OPEN:
      case N_CLOSE: return match(k + 1, pos);
      case N_WORD_START:
        if (pos < len && word_char(s[pos]) && (pos == 0 || !word_char(s[pos - 1]))) return match(k + 1, pos);
        return -1;
      case N_WORD_END:
        if (pos > 0 && word_char(s[pos - 1]) && (pos == len || !word_char(s[pos]))) return match(k + 1, pos);
        return -1;
      default: break;
    }
    int32_t lo = x.rep == R_ONE || x.rep == R_PLUS ? 1 : 0;
    int32_t hi = x.rep == R_ONE || x.rep == R_OPT ? 1 : len - pos;
    int32_t got = 0;
    while (got < hi && one(x, pos + got)) ++got;
    for (int32_t m = got; m >= lo; --m) {
      int32_t e = match(k + 1, pos + m);
      if (e >= 0 || over) return e;
    }
    return -1;
  }
};

legacy_program legacy;
bool legacy_ready = false;

// ---- PCRE2 ----

struct pcre_deleter {
  void operator()(pcre2_code* p) const { pcre2_code_free(p); }
  void operator()(pcre2_match_data* p) const { pcre2_match_data_free(p); }
  void operator()(pcre2_match_context* p) const { pcre2_match_context_free(p); }
  void operator()(pcre2_compile_context* p) const { pcre2_compile_context_free(p); }
  void operator()(pcre2_jit_stack* p) const { pcre2_jit_stack_free(p); }
};

struct pcre_engine {
  std::unique_ptr<pcre2_code, pcre_deleter> code;
  std::unique_ptr<pcre2_match_data, pcre_deleter> data;
  std::unique_ptr<pcre2_match_context, pcre_deleter> mctx;
  std::unique_ptr<pcre2_jit_stack, pcre_deleter> stack;
};

pcre_engine pcre;

// The compiled pattern is kept while it is reused.
struct compiled_key {
  std::string pattern;
  bool fold = false;
  int32_t kind = -1;
  bool ready = false;
} key;

std::string matched;
std::string pcre_message(int code) {
  PCRE2_UCHAR buf[256];
  if (pcre2_get_error_message(code, buf, sizeof buf) < 0) return "unknown error";
  return reinterpret_cast<const char*>(buf);
}

bool pcre_compile(std::string_view p, bool fold_case) {
  std::unique_ptr<pcre2_compile_context, pcre_deleter> cctx(pcre2_compile_context_create(nullptr));
  pcre2_set_compile_extra_options(cctx.get(), PCRE2_EXTRA_ALT_BSUX);
  uint32_t options = PCRE2_ALT_BSUX | PCRE2_MATCH_UNSET_BACKREF | PCRE2_ALLOW_EMPTY_CLASS | PCRE2_DOLLAR_ENDONLY |
                     PCRE2_NEVER_BACKSLASH_C | PCRE2_NO_UTF_CHECK;
  if (fold_case) options |= PCRE2_CASELESS;
  int err = 0;
  PCRE2_SIZE off = 0;
  pcre2_code* c = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(p.data()), p.size(), options, &err, &off, cctx.get());
  if (!c) {
    xf_re.error = pcre_message(err) + " at offset " + std::to_string(off);
    return false;
  }
  pcre.code.reset(c);
  pcre2_jit_compile(c, PCRE2_JIT_COMPLETE);  // without JIT the interpreter serves
  pcre.data.reset(pcre2_match_data_create_from_pattern(c, nullptr));
  if (!pcre.mctx) {
    pcre.mctx.reset(pcre2_match_context_create(nullptr));
    pcre2_set_match_limit(pcre.mctx.get(), match_limit);
    pcre2_set_depth_limit(pcre.mctx.get(), 100000);
    pcre2_set_heap_limit(pcre.mctx.get(), 256 * 1024);  // kibibytes
    pcre.stack.reset(pcre2_jit_stack_create(64 * 1024, 8 * 1024 * 1024, nullptr));
    pcre2_jit_stack_assign(pcre.mctx.get(), nullptr, pcre.stack.get());
  }
  return true;
}

}  // namespace

void xf_re_reset() {
  xf_re = xf_regex_state{};
  key = compiled_key{};
  legacy_ready = false;
  pcre.code.reset();
  pcre.data.reset();
  matched.clear();
}

bool xf_re_compile(std::string_view pattern, bool fold_case) {
  xf_re.error.clear();
  if (xf_re.kind == XF_RE_LEGACY && pattern.empty()) {
    if (!legacy_ready) {
      xf_re.error = "No previous RE";
      return false;
    }
    return true;
  }
  if (key.ready && key.kind == xf_re.kind && key.fold == fold_case && key.pattern == pattern) return true;
  key.ready = false;
  if (xf_re.kind == XF_RE_LEGACY) {
    const char* err = legacy_compile(pattern, fold_case, legacy);
    if (err) {
      xf_re.error = err;
      return false;
    }
    legacy_ready = true;
  } else if (!pcre_compile(pattern, fold_case)) {
    return false;
  }
  key.pattern.assign(pattern);
  key.fold = fold_case;
  key.kind = xf_re.kind;
  key.ready = true;
  return true;
}

int xf_re_exec(std::string_view subject, int32_t from, bool at_line_start, int32_t& start, int32_t& end) {
  int32_t len = static_cast<int32_t>(subject.size());
  if (from > len || !key.ready) return 0;
  if (key.kind == XF_RE_LEGACY) {
    const legacy_program& g = legacy;
    legacy_run r{g, reinterpret_cast<const unsigned char*>(subject.data()), len};
    int32_t last = g.bol ? from : len - g.min_len;
    for (int32_t s = from; s <= last; ++s) {
      if (g.bol && !at_line_start) return 0;
      if (g.first_literal >= 0) {
        const void* q = std::memchr(subject.data() + s, g.first_literal, static_cast<std::size_t>(len - s));
        if (!q) return 0;
        s = static_cast<int32_t>(static_cast<const char*>(q) - subject.data());
        if (s > last) return 0;
      }
      int32_t e = r.match(0, s);
      if (r.over) {
        xf_re.error = "Regular expression match limit exceeded";
        return -1;
      }
      if (e >= 0) {
        start = s;
        end = e;
        if (xf_re.fetching) matched.assign(subject.substr(s, e - s));
        return 1;
      }
    }
    return 0;
  }
  // A pattern anchored with ^ cannot match past the line's start.
  int rc = pcre2_match(pcre.code.get(), reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(),
                       static_cast<PCRE2_SIZE>(from), at_line_start ? 0 : PCRE2_NOTBOL, pcre.data.get(),
                       pcre.mctx.get());
  if (rc == PCRE2_ERROR_NOMATCH) return 0;
  if (rc < 0) {
    xf_re.error = pcre_message(rc);
    return -1;
  }
  PCRE2_SIZE* ov = pcre2_get_ovector_pointer(pcre.data.get());
  start = static_cast<int32_t>(ov[0]);
  end = static_cast<int32_t>(ov[1]);
  if (xf_re.fetching) matched.assign(subject.substr(start, end - start));
  return 1;
}

const std::string& xf_re_fetch() {
  static const std::string none;
  return xf_re.fetching ? matched : none;
}

void xf_re_set_fetch(bool on) { xf_re.fetching = on; }
