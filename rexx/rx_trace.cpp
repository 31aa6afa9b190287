// TRACE: the instruction's settings, clause lines, detail lines of values and commands, and interactive trace.
#include <cstring>

#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {

rx_run& R() { return *rx_st.run; }
rx_proc& P() { return *rx_st.run->proc; }

enum : int {
  T_C = 0x01, T_E = 0x02, T_I = 0x04, T_L = 0x08, T_F = 0x10, T_R = 0x20, T_S = 0x40, T_A = 0x80, T_ASK = 0x100,
  T_NOEXEC = 0x200, T_DEBUG = 0x400, T_Y = 0x800,
};

// The one bit that each letter sets, keeping only '?' and '!' of the rest.
struct letter_bit {
  char letter;
  int bit;
};
constexpr letter_bit letters[] = {{'A', T_A}, {'C', T_C}, {'E', T_E}, {'F', T_F},
                                  {'I', T_I}, {'L', T_L}, {'N', T_F}, {'R', T_R}};

// The source line `line` (0-based) of a text.
std::string_view source_line(std::string_view src, int32_t line) {
  std::size_t at = 0;
  for (int32_t i = 0; i < line; ++i) {
    std::size_t nl = src.find('\n', at);
    if (nl == std::string_view::npos) return {};
    at = nl + 1;
  }
  std::size_t end = src.find('\n', at);
  std::string_view out = src.substr(at, end == std::string_view::npos ? std::string_view::npos : end - at);
  if (!out.empty() && out.back() == '\r') out.remove_suffix(1);
  return out;
}

std::string base_name(std::string_view path) {
  std::size_t slash = path.rfind('/');
  return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

// The clause line of a statement ("\n  3 *-* text\n"), setting the indent of the detail lines below it.
std::string clause_line(const rx_stmt& s) {
  rx_run& r = R();
  if (r.cur_interpreted) {
    r.trace_indent = 15;
    return "\n*interpreted*  *-* " + std::string(source_line(r.cur_source, s.line)) + "\n";
  }
  int32_t n = s.line + 1;
  int width = n < 999 ? 3 : n < 9999 ? 4 : n < 99999 ? 5 : n < 999999 ? 6 : 7;
  std::string num = std::to_string(n);
  if (static_cast<int>(num.size()) < width) num.insert(0, static_cast<std::size_t>(width) - num.size(), ' ');
  std::string head;
  if (r.cur_prog && r.cur_prog != r.prog) {
    std::string base = base_name(r.cur_prog->name);
    head = "<" + base + ">  ";
    r.trace_indent = static_cast<int>(base.size() + num.size() + 5);
  } else {
    r.trace_indent = static_cast<int>(num.size()) + 1;
  }
  return "\n" + head + num + " *-* " + std::string(source_line(r.cur_source, s.line)) + "\n";
}

bool is_command(const rx_stmt& s) {
  return s.kind == RX_COMMAND || s.kind == RX_SAYX || (s.kind == RX_ADDRESS && s.expr);
}

// Whether the clause line of `s` is written before it runs, under flags `t`.
bool shows_clause(const rx_stmt& s, int t) {
  if (t & (T_A | T_S | T_R | T_I)) return true;
  if (s.kind == RX_LABEL && (t & T_L)) return true;
  return is_command(s) && (t & (T_C | T_NOEXEC));
}

}  // namespace

bool rx_tracing(int bits) {
  rx_run& r = *rx_st.run;
  return (r.proc->trace & bits) && r.trace_quiet == 0 && !r.interactive;
}

void rx_trace_detail(std::string_view text) {
  std::string line(static_cast<std::size_t>(R().trace_indent), ' ');
  line.append(text);
  line += '\n';
  rx_output(line);
}

void rx_trace_clause(const rx_stmt& s) {
  rx_run& r = R();
  if (r.interactive) return;
  if (!shows_clause(s, P().trace)) return;
  if (r.trace_quiet > 0) {
    --r.trace_quiet;
    return;
  }
  rx_output(clause_line(s));
}

void rx_trace_after_command(const rx_stmt& s, const std::string& command, int32_t result, bool shown_before) {
  rx_run& r = R();
  if (r.interactive || r.trace_quiet > 0) return;
  int t = P().trace;
  std::string indent;
  if (!shown_before) {
    if (!((t & T_E) && result != 0) && !((t & T_F) && result < 0)) return;
    std::string clause = clause_line(s);
    indent.assign(static_cast<std::size_t>(r.trace_indent), ' ');
    rx_report_out(clause + indent + ">>> \"" + command + "\"\n");
  }
  indent.assign(static_cast<std::size_t>(r.trace_indent), ' ');
  if (result != 0) rx_report_out(indent + ">>> RC(" + std::to_string(result) + ")\n");
}

namespace {

// Apply a TRACE value (not empty, not a number) from its left. Returns 0, or the offending character's position
// plus one when a character is no setting; the flags then stand as the characters before it left them.
std::size_t apply_letters(std::string_view v) {
  rx_run& r = R();
  rx_proc& p = P();
  int flags = p.trace;
  for (std::size_t i = 0; i < v.size(); ++i) {
    char ch = v[i];
    char u = ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 32) : ch;
    if (u == '!') {
      flags ^= T_NOEXEC;
      continue;
    }
    if (u == '?') {
      flags ^= T_ASK;
      if (flags & T_ASK) r.trace_skip = r.trace_count = 0;
      continue;
    }
    if (u == 'Y') {
      flags |= T_Y;
      continue;
    }
    if (u == 'X') {
      if (flags & T_DEBUG) continue;
      p.trace = flags;
      throw rx_unavailable{"the debugger (TRACE X)"};
    }
    if (u == 'O') {
      flags = 0;
      break;
    }
    if (u == 'S') {
      if (!p.caller && p.interpret_depth == 0) flags = (flags & (T_ASK | T_NOEXEC | T_DEBUG | T_Y)) | T_S;
      break;
    }
    const letter_bit* hit = nullptr;
    for (const letter_bit& l : letters)
      if (l.letter == u) hit = &l;
    if (!hit) {
      p.trace = flags;
      return i + 1;
    }
    flags = (flags & (T_ASK | T_NOEXEC | T_DEBUG | T_Y)) | hit->bit;
    break;
  }
  if ((p.trace & T_ASK) && !(flags & T_ASK)) r.pause_end = true;
  p.trace = flags;
  return 0;
}

// A number as a TRACE value: counts of interactive trace. False when it is not whole.
bool apply_count(std::string_view v) {
  rx_run& r = R();
  rx_proc& p = P();
  double d;
  if (!rx_whole(rx_value::string(v), p.numeric.digits, &d)) return false;
  if (!(p.trace & T_ASK)) return true;  // counts matter only in interactive trace
  if (d >= 0) r.trace_skip = static_cast<int>(d > 1e9 ? 1e9 : d);
  else r.trace_quiet = static_cast<int>(-d > 1e9 ? 1e9 : -d);
  r.pause_end = true;
  return true;
}

}  // namespace

void rx_exec_trace(const rx_stmt& s) {
  rx_run& r = R();
  rx_proc& p = P();
  if ((p.trace & T_ASK) && !r.interactive) return;  // under interactive trace only what the user types counts
  std::string v;
  if (s.target) {
    if (s.upper) {
      rx_value t;
      std::string buf;
      v = rx_text_of(rx_eval(s.target, t), buf, s.target);
    } else {
      v = s.target->value;
    }
  }
  if (v.empty()) {
    p.trace = (p.trace & T_DEBUG) | T_E;
    return;
  }
  if (rx_is_number(v, nullptr, nullptr)) {
    if (!apply_count(v)) rx_raise(26, s.target, "Expression evaluates to " + v);
    return;
  }
  if (apply_letters(v) != 0) rx_raise(24, s.target);
}

std::string rx_trace_letters() {
  int t = P().trace;
  std::string out;
  if (t & T_ASK) out += '?';
  if (t & T_NOEXEC) out += '!';
  // Each letter leaves one bit of these; F and N share theirs, shown as N.
  static constexpr letter_bit shown[] = {{'A', T_A}, {'C', T_C}, {'E', T_E}, {'I', T_I},
                                         {'L', T_L}, {'N', T_F}, {'R', T_R}, {'S', T_S}};
  for (const letter_bit& l : shown)
    if (t & l.bit) return out + l.letter;
  return out + 'O';
}

bool rx_trace_set(std::string_view v) {
  rx_proc& p = P();
  if (v.empty()) {
    p.trace = (p.trace & T_DEBUG) | T_E;
    return true;
  }
  if (rx_is_number(v, nullptr, nullptr)) return apply_count(v);
  int before = p.trace;
  if (apply_letters(v) == 0) return true;
  p.trace = before;
  return false;
}

bool rx_trace_pause(const rx_cell* c) {
  rx_run& r = R();
  if (r.interactive) return false;
  if (++r.trace_count <= r.trace_skip) return false;
  r.trace_count = 0;
  r.trace_skip = 0;
  const rx_stmt& s = *c->stmt;
  for (;;) {
    std::string line;
    if (!rx_read_line(line)) return false;  // no more input: run on
    if (line.empty()) return false;
    if (line[0] == '=') return true;
    r.pause_end = false;
    r.interactive = true;
    struct back {
      rx_run& r;
      ~back() { r.interactive = false; }
    } restore{r};
    try {
      rx_interpret_text(line + ";", s.line, s.column);
    } catch (const rx_error_exit&) {
      // reported with the typed text; the pause goes on
    }
    restore.r.interactive = false;
    if (r.pending) {
      if (r.pending == RX_PEND_LEAVE || r.pending == RX_PEND_ITERATE) r.pending = RX_PEND_NONE;
      else return false;
    }
    if (r.pause_end || !(P().trace & T_ASK)) return false;
  }
}

// Spellings of operators in detail lines; an operator outside the tables shows none.
const char* rx_trace_op(rx_op op) {
  switch (op) {
    case rx_op::fx_bl: return " ";
    case rx_op::fx_or: return "|";
    case rx_op::fx_xor: return "&&";
    case rx_op::fx_and: return "&";
    case rx_op::fx_neq: return "\\=";
    case rx_op::fx_nneq: return "\\==";
    case rx_op::fx_sup: return ">";
    case rx_op::fx_ssup: return ">>";
    case rx_op::fx_inf: return "<";
    case rx_op::fx_iinf: return "<<";
    case rx_op::fx_supeq: return ">=";
    case rx_op::fx_infeq: return "<=";
    case rx_op::fx_ssupeq: return ">>=";
    case rx_op::fx_iinfeq: return "<<=";
    case rx_op::fx_eq: return "=";
    case rx_op::fx_eeq: return "==";
    case rx_op::fx_conc: return "||";
    case rx_op::fx_plus: case rx_op::fx_uplus: return "+";
    case rx_op::fx_min: case rx_op::fx_umin: return "-";
    case rx_op::fx_mult: return "*";
    case rx_op::fx_div: return "/";
    case rx_op::fx_idiv: return "%";
    case rx_op::fx_rem: return "//";
    case rx_op::fx_exp: return "**";
    case rx_op::fx_not: return "\\";
    case rx_op::fx_backq: return "`";
    default: return "";
  }
}
