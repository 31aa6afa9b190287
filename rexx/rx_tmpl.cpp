// PARSE and its short forms ARG and PULL: the sources and the template engine (words, string, positional and
// variable patterns, commas between arguments).
#include <cstdio>

#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {

enum elem_kind { E_VAR, E_DOT, E_STR, E_VSTR, E_ABS, E_PLUS, E_MINUS, E_COMMA };

// One element of a template. Positions hold `n` (as written) or, in the "(name)" forms, the variable `var`.
struct elem {
  elem_kind kind;
  const rx_node* tok;
  const rx_node* var = nullptr;
  long long n = 0;
};

bool all_digits(const std::string& s) {
  if (s.empty()) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

long long digits_value(const std::string& s) {
  long long v = 0;
  for (char c : s) {
    v = v * 10 + (c - '0');
    if (v > 1000000000000LL) return 1000000000000LL;
  }
  return v;
}

// "(" SYMBOL ")" at t; returns the symbol and moves t behind the ")".
const rx_node* paren_symbol(const rx_node*& t) {
  const rx_node* open = t;
  t = t->next;
  if (!t || t->type != SYMBOL) rx_raise(46, t ? t : open);
  const rx_node* sym = t;
  t = t->next;
  if (!t || t->type != ')') rx_raise(46, t ? t : sym);
  t = t->next;
  return sym;
}

// The elements of a template, into `out` (a buffer reused from one PARSE to the next).
void elements(const rx_node* chain, std::vector<elem>& out) {
  out.clear();
  for (const rx_node* t = chain; t;) {
    const rx_node* at = t;
    switch (t->type) {
      case SYMBOL:
        out.push_back({t->value == "." ? E_DOT : E_VAR, t});
        t = t->next;
        break;
      case STRING:
        if (t->quoted == 1) {
          out.push_back({E_STR, t});
        } else {
          if (!all_digits(t->value)) rx_raise(38, t);
          out.push_back({E_ABS, t, nullptr, digits_value(t->value)});
        }
        t = t->next;
        break;
      case '(':
        out.push_back({E_VSTR, at, paren_symbol(t)});
        break;
      case '=':
      case '+':
      case '-': {
        elem_kind k = t->type == '=' ? E_ABS : t->type == '+' ? E_PLUS : E_MINUS;
        t = t->next;
        if (t && t->type == '(') {
          out.push_back({k, at, paren_symbol(t)});
        } else if (t && t->type == STRING && t->quoted == 0 && all_digits(t->value)) {
          out.push_back({k, at, nullptr, digits_value(t->value)});
          t = t->next;
        } else {
          rx_raise(38, t ? t : at);
        }
        break;
      }
      case ',':
        out.push_back({E_COMMA, t});
        t = t->next;
        break;
      default:
        rx_raise(38, t);
    }
  }
}

struct parse_state {
  std::string str;
  long long cursor = 0, last = 0, end = 0;
  long long len() const { return static_cast<long long>(str.size()); }
};

long long clamp(long long v, long long lo, long long hi) { return v < lo ? lo : v > hi ? hi : v; }

std::string var_text(const rx_node* var) {
  rx_value t;
  const rx_value& v = rx_eval(var, t);
  std::string b;
  return std::string(rx_text_of(v, b, var));
}

// The number of a position element, read when it is reached; a variable must hold a whole number >= 0.
long long position(const elem& e) {
  if (!e.var) return e.n;
  rx_value t;
  const rx_value& v = rx_eval(e.var, t);
  double d;
  if (!rx_whole(v, rx_st.run->proc->numeric.digits, &d) || d < 0) rx_raise(26, e.var);
  return d > 1e12 ? 1000000000000LL : static_cast<long long>(d);
}

// A pattern's text: a literal is read in place; a variable pattern is evaluated into `buf`.
std::string_view pattern_text(const elem& e, std::string& buf) {
  if (e.kind != E_VSTR) return e.tok->value;
  buf = var_text(e.var);
  return buf;
}

long long find(const parse_state& ps, std::string_view pat) {
  if (pat.empty()) return -1;
  std::size_t p = std::string_view(ps.str).find(pat, static_cast<std::size_t>(ps.cursor));
  return p == std::string::npos ? -1 : static_cast<long long>(p);
}

void apply_pattern(parse_state& ps, const elem& e) {
  switch (e.kind) {
    case E_STR:
    case E_VSTR: {
      std::string buf;
      std::string_view pat = pattern_text(e, buf);
      if (pat.empty()) {
        ps.cursor = ps.end;
        break;
      }
      long long p = find(ps, pat);
      if (p < 0) {
        ps.cursor = ps.len();
      } else {
        ps.last = p;
        ps.cursor = p + static_cast<long long>(pat.size());
      }
      break;
    }
    case E_PLUS: ps.cursor = ps.last = clamp(ps.last + position(e), 0, ps.len()); break;
    case E_MINUS: ps.cursor = ps.last = clamp(ps.last - position(e), 0, ps.len()); break;
    default: ps.cursor = ps.last = clamp(position(e) - 1, 0, ps.len()); break;
  }
  ps.cursor = clamp(ps.cursor, 0, ps.len());
}

// The end of the region that a group of variables shares, from the element behind the group.
long long region_end(const parse_state& ps, const elem* behind) {
  if (!behind || behind->kind == E_COMMA) return ps.len();
  switch (behind->kind) {
    case E_STR:
    case E_VSTR: {
      std::string buf;
      long long p = find(ps, pattern_text(*behind, buf));
      return p < 0 ? ps.len() : p;
    }
    case E_PLUS: {
      long long n = position(*behind);
      return n == 0 ? ps.len() : clamp(ps.cursor + n, 0, ps.len());
    }
    case E_ABS: {
      long long n = position(*behind) - 1;
      return n > 0 && n >= ps.cursor ? clamp(n, 0, ps.len()) : ps.len();
    }
    default:
      return ps.len();
  }
}

void assign(const elem& e, std::string_view value, bool upper) {
  bool traced = rx_tracing(0x04 | 0x20);
  if (e.kind == E_DOT) {
    if (traced) rx_trace_detail(">.> . <-- \"" + std::string(value) + "\"");
    return;
  }
  const rx_node* v = e.tok;
  if (v->value[0] == '.') rx_raise(31, v);
  rx_var* slot = rx_assign_text(rx_ctx(), *v, value);
  if (upper)
    for (char& c : slot->value.text)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  if (rx_env_symbol(*v)) rx_env_store(*v, slot->value.text);
  if (traced) rx_trace_detail(">>> " + rx_default_text(rx_ctx(), *v) + " <-- \"" + slot->value.text + "\"");
}

// `first` is the string parsed; with PARSE ARG the commas move on to the routine's later arguments.
void run_template(const std::vector<elem>& el, std::string first, bool is_arg, bool upper) {
  parse_state ps;
  std::size_t src = 0;
  ps.str = std::move(first);
  ps.end = ps.len();
  bool group = false;
  for (std::size_t i = 0; i < el.size(); ++i) {
    const elem& e = el[i];
    if (e.kind == E_COMMA) {
      if (!is_arg) rx_raise(38, e.tok, "A comma may be used only within a PARSE ARG instructin");
      ++src;
      const std::vector<rx_arg>& args = rx_st.run->proc->args;
      ps.str = src < args.size() ? args[src].text : std::string();
      ps.cursor = ps.last = 0;
      ps.end = ps.len();
      group = false;
      continue;
    }
    if (e.kind != E_VAR && e.kind != E_DOT) {
      apply_pattern(ps, e);
      group = false;
      continue;
    }
    if (!group) {
      std::size_t j = i + 1;
      while (j < el.size() && (el[j].kind == E_VAR || el[j].kind == E_DOT)) ++j;
      ps.end = region_end(ps, j < el.size() ? &el[j] : nullptr);
      group = true;
    }
    const elem* next = i + 1 < el.size() ? &el[i + 1] : nullptr;
    long long from = ps.cursor, to = ps.end, after = ps.end;
    if (from > to) from = to;
    if (next && (next->kind == E_VAR || next->kind == E_DOT)) {
      while (from < ps.end && ps.str[static_cast<std::size_t>(from)] == ' ') ++from;
      to = from;
      while (to < ps.end && ps.str[static_cast<std::size_t>(to)] != ' ') ++to;
      after = to + 1;
    } else if (next && (next->kind == E_STR || next->kind == E_VSTR)) {
      std::string buf;
      after = ps.end + static_cast<long long>(pattern_text(*next, buf).size());
    } else if (next && next->kind == E_PLUS) {
      after = ps.cursor + position(*next);
    } else if (next && next->kind == E_ABS) {
      long long n = position(*next) - 1;
      if (n > ps.cursor) to = after = n < ps.end ? n : ps.end;
    }
    assign(e, std::string_view(ps.str).substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)),
           upper);
    ps.cursor = clamp(after, 0, ps.end);
  }
}

// "REXX 4.00 ", the build date as "dd Mmm yyyy", " - PALOMA(x64) " and the release.
std::string version_text() {
  const char* d = __DATE__;  // "Mmm dd yyyy"
  int day = (d[4] == ' ' ? 0 : d[4] - '0') * 10 + (d[5] - '0');
  char buf[64];
  std::snprintf(buf, sizeof buf, "REXX 4.00 %02d %.3s %s - PALOMA(x64) 0.1", day, d, d + 7);
  return buf;
}

// One input line for LINEIN and an empty queue; RC tells an empty line from the end of the input.
std::string input_line() {
  std::string line;
  bool ok = rx_read_line(line);
  std::string rc = rx_st.sw.case_mode == 0 || rx_st.sw.case_mode == 2 ? "rc" : "RC";
  rx_assign_name(rx_ctx(), rc, ok ? rx_value::number(0, 0) : rx_value::string("EOF"));
  return line;
}

}  // namespace

void rx_exec_parse(const rx_stmt& s) {
  if (!s.prepared) {
    auto prepared = std::make_shared<std::vector<elem>>();
    elements(s.chain, *prepared);
    s.prepared = prepared;
  }
  const std::vector<elem>& el = *static_cast<const std::vector<elem>*>(s.prepared.get());
  std::string source;
  const rx_numeric& n = rx_st.run->proc->numeric;
  switch (s.form) {
    case RX_SRC_ARG:
      if (!rx_st.run->proc->args.empty()) source = rx_st.run->proc->args[0].text;
      break;
    case RX_SRC_LINEIN:
      source = input_line();
      break;
    case RX_SRC_PULL: {
      std::string line;
      source = rx_queue_pull(line) ? line : input_line();
      break;
    }
    case RX_SRC_SOURCE:
      source = rx_st.run->source_desc;
      break;
    case RX_SRC_VALUE:
      source = s.expr ? var_text(s.expr) : std::string();
      break;
    case RX_SRC_VAR:
      source = var_text(s.target);
      break;
    case RX_SRC_VERSION:
      source = version_text();
      break;
    default:
      source = std::to_string(n.digits) + " " + std::to_string(n.fuzz) + (n.form ? " ENGINEERING" : " SCIENTIFIC");
      break;
  }
  run_template(el, std::move(source), s.form == RX_SRC_ARG, s.upper != 0);
}
