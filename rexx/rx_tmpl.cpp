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
  std::string_view str;
  long long cursor = 0, last = 0, end = 0;
  std::string pattern;  // the text of a variable pattern, "(name)", while it is used
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
long long variable_position(const elem& e) {
  rx_value t;
  const rx_value& v = rx_eval(e.var, t);
  double d;
  if (!rx_whole(v, rx_st.run->proc->numeric.digits, &d) || d < 0) rx_raise(26, e.var);
  return d > 1e12 ? 1000000000000LL : static_cast<long long>(d);
}

inline long long position(const elem& e) { return e.var ? variable_position(e) : e.n; }

// A pattern's text: a literal is read in place; a variable pattern is evaluated into `buf`.
std::string_view pattern_text(const elem& e, std::string& buf) {
  if (e.kind != E_VSTR) return e.tok->value;
  buf = var_text(e.var);
  return buf;
}

long long find(const parse_state& ps, std::string_view pat) {
  if (pat.empty()) return -1;
  std::size_t p = ps.str.find(pat, static_cast<std::size_t>(ps.cursor));
  return p == std::string::npos ? -1 : static_cast<long long>(p);
}

void apply_pattern(parse_state& ps, const elem& e) {
  switch (e.kind) {
    case E_STR:
    case E_VSTR: {
      std::string_view pat = pattern_text(e, ps.pattern);
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
long long region_end(parse_state& ps, const elem* behind) {
  if (!behind || behind->kind == E_COMMA) return ps.len();
  switch (behind->kind) {
    case E_STR:
    case E_VSTR: {
      long long p = find(ps, pattern_text(*behind, ps.pattern));
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

// What the assignments of one PARSE share: the variable context and whether values are traced.
struct assign_ctx {
  rx_var_ctx vars;
  bool upper;
  bool traced;
};

void assign(const assign_ctx& ac, const elem& e, std::string_view value) {
  if (e.kind == E_DOT) {
    if (ac.traced) rx_trace_detail(">.> . <-- \"" + std::string(value) + "\"");
    return;
  }
  const rx_node* v = e.tok;
  if (v->value[0] == '.') rx_raise(31, v);
  rx_var* slot;
  if (v->slot_pool == ac.vars.pool->id && v->parts.empty() && v->slot->state != 2) {
    // The target's slot in this pool, remembered by the token: the value's buffer takes the text.
    slot = v->slot;
    ++slot->changes;
    slot->state = 1;
    slot->value.set_text(value);
  } else {
    slot = rx_assign_text(ac.vars, *v, value);
  }
  if (ac.upper)
    for (char& c : slot->value.text)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  if (v->value[0] == '$' && rx_env_symbol(*v)) rx_env_store(*v, slot->value.text);
  if (ac.traced) rx_trace_detail(">>> " + rx_default_text(ac.vars, *v) + " <-- \"" + slot->value.text + "\"");
}

// `first` is the string parsed; with PARSE ARG the commas move on to the routine's later arguments. The strings
// are read in place: the caller makes sure that no assignment of the template can change them.
void run_template(const std::vector<elem>& el, std::string_view first, bool is_arg, bool upper) {
  parse_state ps;
  std::size_t src = 0;
  ps.str = first;
  ps.end = ps.len();
  bool group = false;
  const assign_ctx ac{rx_ctx(), upper, rx_tracing(0x04 | 0x20)};
  for (std::size_t i = 0; i < el.size(); ++i) {
    const elem& e = el[i];
    if (e.kind == E_COMMA) {
      if (!is_arg) rx_raise(38, e.tok, "A comma may be used only within a PARSE ARG instructin");
      ++src;
      const std::vector<rx_arg>& args = rx_st.run->proc->args;
      ps.str = src < args.size() ? std::string_view(args[src].text) : std::string_view();
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
      after = ps.end + static_cast<long long>(pattern_text(*next, ps.pattern).size());
    } else if (next && next->kind == E_PLUS) {
      after = ps.cursor + position(*next);
    } else if (next && next->kind == E_ABS) {
      long long n = position(*next) - 1;
      if (n > ps.cursor) to = after = n < ps.end ? n : ps.end;
    }
    assign(ac, e, ps.str.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
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

namespace {

// A template made ready once for its statement: its elements, and whether the source variable (PARSE VAR, or
// PARSE VALUE of a lone variable) may be read in place: it is a simple symbol that no target of the template
// assigns, and the template reads no variable (whose NOVALUE handler could change it).
struct prepared_template {
  std::vector<elem> el;
  bool source_in_place = false;
};

const prepared_template& prepare(const rx_stmt& s) {
  if (!s.prepared) {
    auto p = std::make_shared<prepared_template>();
    elements(s.chain, p->el);
    const rx_node* src = s.form == RX_SRC_VAR ? s.target : s.form == RX_SRC_VALUE ? s.expr : nullptr;
    if (src && src->type == SYMBOL && src->parts.empty() && src->value[0] != '$') {
      bool ok = true;
      for (const elem& e : p->el) {
        if (e.var) ok = false;
        if (e.kind == E_VAR && e.tok->value == src->value) ok = false;
      }
      p->source_in_place = ok;
    }
    s.prepared = p;
  }
  return *static_cast<const prepared_template*>(s.prepared.get());
}

}  // namespace

void rx_exec_parse(const rx_stmt& s) {
  const prepared_template& pt = prepare(s);
  std::string source;       // a source of its own, when it is not read in place
  std::string_view text;    // what the template parses
  rx_value tmp;
  std::string buf;
  const rx_numeric& n = rx_st.run->proc->numeric;
  switch (s.form) {
    case RX_SRC_ARG:
      if (!rx_st.run->proc->args.empty()) text = rx_st.run->proc->args[0].text;
      break;
    case RX_SRC_LINEIN:
      text = source = input_line();
      break;
    case RX_SRC_PULL: {
      if (!rx_queue_pull(source)) source = input_line();
      text = source;
      break;
    }
    case RX_SRC_SOURCE:
      text = source = rx_st.run->source_desc;
      break;
    case RX_SRC_VALUE:
    case RX_SRC_VAR: {
      const rx_node* e = s.form == RX_SRC_VAR ? s.target : s.expr;
      if (!e) break;
      const rx_value& v = rx_eval(e, tmp);
      text = rx_text_of(v, buf, e);
      // A value of the statement's own (a result, a number's text, a constant) stays as it is; a variable's
      // text is copied unless nothing in the template can change it.
      bool own = &v == &tmp || text.data() == buf.data() || e->type == STRING || pt.source_in_place;
      if (!own) text = source.assign(text);
      break;
    }
    case RX_SRC_VERSION:
      text = source = version_text();
      break;
    default:
      text = source =
          std::to_string(n.digits) + " " + std::to_string(n.fuzz) + (n.form ? " ENGINEERING" : " SCIENTIFIC");
      break;
  }
  run_template(pt.el, text, s.form == RX_SRC_ARG, s.upper != 0);
}
