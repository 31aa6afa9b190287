// Expression evaluation: leaves, operators with their errors, comparisons, slices and function calls.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {

constexpr double pos_inf = std::numeric_limits<double>::infinity();

const rx_numeric& num() { return rx_st.run->proc->numeric; }

// The stack check of every operator node, with the common case (well within the budget) inline.
inline void check_stack() {
  char here = 0;
  const rx_run* r = rx_st.run;
  auto used = reinterpret_cast<std::uintptr_t>(r->stack_base) - reinterpret_cast<std::uintptr_t>(&here);
  if (!r->stack_base || static_cast<std::ptrdiff_t>(used) > rx_stack_budget + r->stack_extra) rx_check_stack();
}

// The value of a string constant, built once.
const rx_value& constant(const rx_node* n) {
  if (!n->cval_ready) {
    n->cval.set_text(n->value);
    n->cval_ready = true;
  }
  return n->cval;
}

// A compound symbol whose tail is made of digits alone (a.123): NOVALUE never fires for it.
bool constant_tail(std::string_view name) {
  std::size_t dot = name.find('.');
  if (dot == std::string_view::npos || dot + 1 == name.size()) return false;
  for (char c : name.substr(dot + 1))
    if (c != '.' && (c < '0' || c > '9')) return false;
  return true;
}

const rx_value& symbol_value(const rx_node* n, rx_value& tmp) {
  // The common case first: a simple variable whose slot in this pool the token remembers, holding a value.
  // (Names that may not be used never get a slot with a value, so the checks below cannot be skipped wrongly.)
  const rx_pool* pool = rx_st.run->proc->pool;
  if (n->value[0] == '$' && rx_env_symbol(*n)) rx_env_refresh(rx_ctx(), *n);
  if (n->slot_pool == pool->id && n->parts.empty() && n->slot->state == 1) return n->slot->value;
  if (!n->value.empty() && n->value[0] == '.') rx_raise(31, n);
  rx_var_ctx c = rx_ctx();
  if (const rx_value* v = rx_get(c, *n)) return *v;
  tmp.set_text(rx_default_text(c, *n));
  if (rx_st.run->proc->cond[RX_C_NOVALUE] > 0 && !constant_tail(n->value)) rx_novalue(tmp.text);
  return tmp;
}

bool tracing_i() { return (rx_st.run->proc->trace & 0x04) && rx_tracing(0x04); }

std::string shown(const rx_value& v, const rx_node* at) {
  std::string buf;
  return std::string(rx_text_of(v, buf, at));
}

// >V> for a variable, with >C> first when the compound name differs from the symbol.
void trace_symbol(const rx_node* n, const rx_value& v) {
  std::string name = rx_default_text(rx_ctx(), *n);
  if (!n->parts.empty() && name != n->value) rx_trace_detail(">C> " + n->value + " --> \"" + name + "\"");
  rx_trace_detail(">V> " + name + " --> \"" + shown(v, n) + "\"");
}

// The count of integer digits that the size tests of % and // use: ceil(log10(|q|)), 1 for 0.
int int_digits(double q) {
  double a = std::fabs(q);
  if (a == 0) return 1;
  if (a <= 1 || a > 1e15) return static_cast<int>(std::ceil(std::log10(a)));
  int n = 1;
  for (double p = 10; a > p; p *= 10) ++n;
  return n;
}

// Statuses of operator routines: 0 good, 1 first operand unusable, 2 second, 3 the routine set its own detail.
struct op_status {
  int status = 0;
  int error = 0;
};

op_status fail(int status, int error, std::string detail = {}) {
  rx_st.error.detail = std::move(detail);
  return op_status{status, error};
}

// Logical operands of operators: numbers exactly 0 or 1, before rounding.
int strict_logical(const rx_value& v) {
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec)) return -1;
  return d == 0 ? 0 : d == 1 ? 1 : -1;
}

op_status arith(rx_op op, const rx_value& av, const rx_value& bv, rx_value& out) {
  double a, b;
  int32_t da, db;
  if (!rx_as_number(av, &a, &da)) return op_status{1, 41};
  if (!rx_as_number(bv, &b, &db)) return op_status{2, 41};
  const rx_numeric& n = num();
  a = rx_round(a, n.digits + 1);
  b = rx_round(b, n.digits + 1);
  switch (op) {
    case rx_op::fx_plus:
    case rx_op::fx_min: {
      double r = rx_round(op == rx_op::fx_plus ? a + b : a - b, n.digits);
      if (op == rx_op::fx_plus && r == pos_inf) return fail(3, 42);
      int32_t dec = r == 0 ? 0 : a == 0 ? db : b == 0 ? da : std::max(da, db);
      out.set_number(r == 0 ? 0.0 : r, dec);
      return {};
    }
    case rx_op::fx_mult: {
      double r = rx_round(a * b, n.digits);
      if (r == pos_inf) return fail(3, 42);
      out.set_number(r == 0 ? 0.0 : r, da + db);
      return {};
    }
    case rx_op::fx_div:
      if (b == 0) return fail(3, 51);
      out.set_number(rx_round(a / b, n.digits) + 0.0, -1);  // + 0.0: no negative zero
      return {};
    case rx_op::fx_idiv: {
      if (b == 0) return fail(3, 51);
      double q = std::trunc(a / b);
      if (int_digits(q) > n.digits)
        return fail(3, 26, "PALOMA: the result of the integer division is\n        longer than the NUMERIC DIGITS setting.");
      out.set_number(q == 0 ? 0.0 : q, -1);
      return {};
    }
    case rx_op::fx_rem: {
      if (b == 0) return fail(3, 51);
      double r = 0;
      if (a != b) {
        bool negative = a / b < 0;
        if (negative) {
          a = std::fabs(a);
          b = std::fabs(b);
        }
        r = rx_round(a - b * std::floor(a / b), n.digits);
        if (negative) r = -r;
      }
      if (int_digits(r) > n.digits)
        return fail(3, 26,
                    "PALOMA: the result of the remainder operation is\n        longer than the NUMERIC DIGITS setting.");
      out.set_number(r == 0 ? 0.0 : r, -1);
      return {};
    }
    case rx_op::fx_exp: {
      double r = rx_round(std::pow(a, b), n.digits);
      if (r == pos_inf) return op_status{1, 42};
      out.set_number(r + 0.0, -1);
      return {};
    }
    default:
      return {};
  }
}

std::string_view strip_blanks(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

unsigned char fold(unsigned char c, bool ic) { return ic && c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c; }

// Normal comparison: numbers rounded to DIGITS less FUZZ, else texts stripped and padded with blanks.
int normal_compare(const rx_value& a, const rx_value& b, bool ic, const rx_node* at) {
  double x, y;
  int32_t dx, dy;
  if (rx_as_number(a, &x, &dx) && rx_as_number(b, &y, &dy)) {
    int d = num().digits - num().fuzz;
    x = rx_round(x, d);
    y = rx_round(y, d);
    return x < y ? -1 : x > y ? 1 : 0;
  }
  std::string ba, bb;
  std::string_view s = strip_blanks(rx_text_of(a, ba, at));
  std::string_view t = strip_blanks(rx_text_of(b, bb, at));
  if (!ic && s.size() == t.size()) {  // no padding: a plain byte compare
    int c = std::memcmp(s.data(), t.data(), s.size());
    return c < 0 ? -1 : c > 0 ? 1 : 0;
  }
  std::size_t n = std::max(s.size(), t.size());
  for (std::size_t i = 0; i < n; ++i) {
    unsigned char c1 = fold(i < s.size() ? static_cast<unsigned char>(s[i]) : ' ', ic);
    unsigned char c2 = fold(i < t.size() ? static_cast<unsigned char>(t[i]) : ' ', ic);
    if (c1 != c2) return c1 < c2 ? -1 : 1;
  }
  return 0;
}

bool strict_equal(const rx_value& a, const rx_value& b, const rx_node* at) {
  if (a.kind == RX_STR && b.kind == RX_STR) return a.text == b.text;
  if (a.kind == RX_NUM && b.kind == RX_NUM) return a.num == b.num;
  std::string ba, bb;
  return rx_text_of(a, ba, at) == rx_text_of(b, bb, at);
}

// Strict order: numbers as doubles, texts by length first and then by unsigned bytes.
int strict_order(const rx_value& a, const rx_value& b, const rx_node* at) {
  if (a.kind == RX_NUM && b.kind == RX_NUM) return a.num < b.num ? -1 : a.num > b.num ? 1 : 0;
  std::string ba, bb;
  std::string_view s = rx_text_of(a, ba, at), t = rx_text_of(b, bb, at);
  if (s.size() != t.size()) return s.size() < t.size() ? -1 : 1;
  int c = std::memcmp(s.data(), t.data(), s.size());
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

op_status binary(rx_op op, const rx_value& a, const rx_value& b, rx_value& out, const rx_node* at) {
  auto truth = [&out](bool t) {
    out.set_number(t ? 1 : 0, -1);
    return op_status{};
  };
  switch (op) {
    case rx_op::fx_plus: case rx_op::fx_min: case rx_op::fx_mult: case rx_op::fx_div: case rx_op::fx_idiv:
    case rx_op::fx_rem: case rx_op::fx_exp:
      return arith(op, a, b, out);
    case rx_op::fx_or: case rx_op::fx_and: case rx_op::fx_xor: {
      int x = strict_logical(a);
      if (x < 0) return op_status{1, 34};
      int y = strict_logical(b);
      if (y < 0) return op_status{2, 34};
      return truth(op == rx_op::fx_or ? (x | y) : op == rx_op::fx_and ? (x & y) : (x ^ y));
    }
    case rx_op::fx_eq: return truth(normal_compare(a, b, false, at) == 0);
    case rx_op::fx_neq: return truth(normal_compare(a, b, false, at) != 0);
    case rx_op::fx_sup: return truth(normal_compare(a, b, false, at) > 0);
    case rx_op::fx_inf: return truth(normal_compare(a, b, false, at) < 0);
    case rx_op::fx_supeq: return truth(normal_compare(a, b, false, at) >= 0);
    case rx_op::fx_infeq: return truth(normal_compare(a, b, false, at) <= 0);
    case rx_op::fx_eqic: return truth(normal_compare(a, b, true, at) == 0);
    case rx_op::fx_neqic: return truth(normal_compare(a, b, true, at) != 0);
    case rx_op::fx_eeq: return truth(strict_equal(a, b, at));
    case rx_op::fx_nneq:
      if (a.kind == RX_STR && b.kind == RX_STR) return truth(a.text != b.text);
      {
        std::string ba, bb;
        return truth(rx_text_of(a, ba, at) != rx_text_of(b, bb, at));
      }
    case rx_op::fx_ssup: return truth(strict_order(a, b, at) > 0);
    case rx_op::fx_iinf: return truth(strict_order(a, b, at) < 0);
    case rx_op::fx_ssupeq: return truth(strict_equal(a, b, at) || strict_order(a, b, at) > 0);
    case rx_op::fx_iinfeq: return truth(strict_equal(a, b, at) || strict_order(a, b, at) < 0);
    case rx_op::fx_conc:
    case rx_op::fx_bl:
    case rx_op::fx_conc_rho:
    case rx_op::fx_conc_not: {
      std::string ba, bb;
      std::string_view s = rx_text_of(a, ba, at);
      std::string r;
      if (op == rx_op::fx_conc_not) {
        int y = strict_logical(b);
        if (y < 0) return op_status{2, 34};
        r.reserve(s.size() + 2);
        r.append(s).append(y ? " 0" : " 1");
      } else {
        std::string_view t = rx_text_of(b, bb, at);
        if (op == rx_op::fx_conc_rho) {
          r.reserve(s.size() + 12);
          r.append(s).append(" ").append(std::to_string(t.size()));
        } else {
          rx_check_length(s.size() + t.size() + 1, at);
          r.reserve(s.size() + t.size() + 1);
          r.append(s);
          if (op == rx_op::fx_bl) r += ' ';
          r.append(t);
        }
      }
      out.kind = RX_STR;
      out.text = std::move(r);
      out.numchk = 0;
      return {};
    }
    default:
      return {};
  }
}

op_status unary(rx_op op, const rx_value& a, rx_value& out, const rx_node* at) {
  double x;
  int32_t dec;
  switch (op) {
    case rx_op::fx_uplus:
    case rx_op::fx_umin:
      if (!rx_as_number(a, &x, &dec)) return op_status{1, 41};
      if (op == rx_op::fx_umin) x = x == 0 ? 0.0 : -x;
      out.set_number(x, dec);
      return {};
    case rx_op::fx_not: {
      int y = strict_logical(a);
      if (y < 0) return op_status{1, 34};
      out.set_number(1 - y, -1);
      return {};
    }
    case rx_op::fx_rho: {
      std::string b;
      out.set_number(static_cast<double>(rx_text_of(a, b, at).size()), 0);
      return {};
    }
    case rx_op::fx_backq: {
      std::string b;
      out.set_text(rx_backquote(rx_text_of(a, b, at), at));
      return {};
    }
    default:
      return {};
  }
}

// The detail of an unusable operand that is a variable or a string.
std::string operand_detail(const rx_operand& o, const rx_value& v) {
  if (o.kind != SYMBOL && o.kind != STRING) return {};
  std::string buf;
  std::string_view text;
  if (!rx_text(v, num(), buf, &text)) text = "inf";
  if (o.kind == STRING) return "String \"" + std::string(text) + "\" is invalid.";
  return "Variable \"" + rx_default_text(rx_ctx(), *o.node) + "\" = \"" + std::string(text) + "\" is invalid.";
}

[[noreturn]] void operator_error(const rx_node* n, op_status st, const rx_value* a, const rx_value* b) {
  std::string detail;
  if (st.status == 3)
    detail = rx_st.error.detail;
  else if (st.status == 1 && a)
    detail = operand_detail(n->expr->operand[0], *a);
  else if (st.status == 2 && b)
    detail = operand_detail(n->expr->operand[1], *b);
  rx_raise(st.error, n, std::move(detail));
}

// A slice index: a positive whole number at 9 digits; `which` names it in the detail.
double slice_index(const rx_node* node, const char* which, const rx_node* at) {
  rx_value t;
  const rx_value& v = rx_eval(node, t);
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec)) {
    std::string b;
    rx_raise(78, at, std::string("The ") + which + " index evaluates to \"" + std::string(rx_text_of(v, b, at)) + "\".");
  }
  d = rx_round(d, 9);
  if (d < 1 || std::floor(d) != d) rx_raise(78, at, "The index must be a positive integer.");
  return d;
}

const rx_value& subscript(const rx_node* n, rx_value& tmp) {
  const rx_fx* fx = n->expr;
  rx_value t0;
  const rx_value& xv = rx_eval(fx->operand[0].node, t0);
  std::string buf;
  std::string_view text = rx_text_of(xv, buf, n);  // stays valid: the indexes below cannot change variables
  double len = static_cast<double>(text.size());
  double i = fx->operand[1].node ? slice_index(fx->operand[1].node, "first", n) : 1;
  double j;
  if (fx->operand[2].node)
    j = slice_index(fx->operand[2].node, "last", n);
  else
    j = fx->op == rx_op::fx_br ? i : len;
  std::string out;
  if (j < i) {
    if (i <= len) rx_raise(78, n, "The second index must be greater than the first.");
  } else {
    rx_check_length(static_cast<std::size_t>(std::min(j - i + 1, 4e9)), n);
    std::size_t from = static_cast<std::size_t>(i) - 1, count = static_cast<std::size_t>(j - i + 1);
    if (from < text.size()) out.assign(text.substr(from, count));
    out.resize(count, ' ');
  }
  if (tracing_i())
    rx_trace_detail(">O> \"" + std::string(text) + "\"[" + rx_printf_number("%.0f", i) + ":" + rx_printf_number("%.0f", j) +
                    "] --> \"" + out + "\"");
  tmp.set_text(out);
  return tmp;
}

// A function call: the routine search; a routine that returns nothing is error 44 here.
const rx_value& call(const rx_node* n, rx_value& tmp) {
  const rx_fx* fx = n->expr;
  bool has = rx_call_routine(fx->name_node, fx->args, tmp);
  if (rx_st.run->pending == RX_PEND_EXIT) throw rx_exit_jump{};
  if (!has) {
    if (tracing_i()) rx_trace_detail(">F> " + fx->name_node->value + "() --> No Result");
    rx_raise(44, n);
  }
  if (tracing_i()) rx_trace_detail(">F> " + fx->name_node->value + "() --> \"" + shown(tmp, n) + "\"");
  return tmp;
}

bool is_concatenation(const rx_node* n) {
  return n->type == RX_EXPR && n->expr->arity == 2 &&
         (n->expr->op == rx_op::fx_conc || n->expr->op == rx_op::fx_bl);
}

// One step of a chain of concatenations after an operand turned TRACE I on (the TRACE function): the operators
// from there on are traced as they would be one by one.
[[gnu::noinline]] void append_traced(std::string& out, std::string_view add, const rx_node* op) {
  std::string before = out;
  if (op->expr->op == rx_op::fx_bl) out += ' ';
  out.append(add);
  rx_trace_detail(">O> \"" + before + "\" " + rx_trace_op(op->expr->op) + " \"" + std::string(add) + "\" --> \"" + out +
                  "\"");
}

// A chain of || and blank concatenations, a || b c || d, evaluated from the left into one string: each operand is
// taken in turn, as the tree would take it, and appended, with no temporary string per operator.
const rx_value& concatenation(const rx_node* n, rx_value& tmp) {
  constexpr int max_chain = 64;
  const rx_node* chain[max_chain];
  int k = 0;
  const rx_node* left = n;
  while (k < max_chain && is_concatenation(left)) {
    chain[k++] = left;
    left = left->expr->operand[0].node;
  }
  rx_value t;
  std::string buf;
  std::string out;
  {
    const rx_value& first = rx_eval(left, t);
    out = rx_text_of(first, buf, chain[k - 1]);
  }
  for (int j = k - 1; j >= 0; --j) {
    const rx_node* op = chain[j];
    rx_value tr;
    const rx_value& right = rx_eval(op->expr->operand[1].node, tr);
    std::string_view add = rx_text_of(right, buf, op);
    std::size_t need = out.size() + add.size() + 1;
    rx_check_length(need, op);
    if (need > out.capacity()) out.reserve(std::max<std::size_t>(need * 2, 64));
    if (tracing_i()) {
      append_traced(out, add, op);
      continue;
    }
    if (op->expr->op == rx_op::fx_bl) out += ' ';
    out.append(add);
  }
  tmp.kind = RX_STR;
  tmp.text = std::move(out);
  tmp.numchk = 0;
  return tmp;
}

}  // namespace

std::string_view rx_text_of(const rx_value& v, std::string& buf, const rx_node* at) {
  if (v.kind == RX_STR) return v.text;
  std::string_view out;
  if (!rx_text(v, num(), buf, &out)) rx_raise(42, at);
  return out;
}

int rx_logical(const rx_value& v) {
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec)) return -1;
  d = rx_round(d, num().digits);
  return d == 0 ? 0 : d == 1 ? 1 : -1;
}

bool rx_whole(const rx_value& v, int digits, double* out) {
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec)) return false;
  d = rx_round(d, digits);
  if (!rx_is_whole(d) || !std::isfinite(d)) return false;
  *out = d;
  return true;
}

namespace {

// Any node: the leaves that rx_eval does not take itself, and the operators.
const rx_value& eval_node(const rx_node* n, rx_value& tmp) {
  switch (n->type) {
    case SYMBOL: {
      const rx_value& v = symbol_value(n, tmp);
      if (tracing_i()) trace_symbol(n, v);
      return v;
    }
    case STRING:
      return constant(n);
    case RX_EXPR:
      break;
    default:
      tmp.set_text("");
      return tmp;
  }
  check_stack();
  const rx_fx* fx = n->expr;
  switch (fx->arity) {
    case 1: {
      rx_value t0;
      const rx_value& a = rx_eval(fx->operand[0].node, t0);
      op_status st = unary(fx->op, a, tmp, n);
      if (st.status) operator_error(n, st, &a, nullptr);
      if (tracing_i()) {
        if (fx->op == rx_op::fx_backq)
          rx_trace_detail(">U> `" + shown(a, n) + "` --> \"" + shown(tmp, n) + "\"");
        else
          rx_trace_detail(std::string(">P> ") + rx_trace_op(fx->op) + " \"" + shown(a, n) + "\" --> \"" +
                          shown(tmp, n) + "\"");
      }
      return tmp;
    }
    case 2: {
      if ((fx->op == rx_op::fx_conc || fx->op == rx_op::fx_bl) && !tracing_i()) return concatenation(n, tmp);
      rx_value t0, t1;
      const rx_value& a = rx_eval(fx->operand[0].node, t0);
      static const rx_value one = rx_value::number(1, -1);
      const rx_value* b = nullptr;
      if (fx->op == rx_op::fx_or || fx->op == rx_op::fx_and) {
        double d;
        int32_t dec;
        if (rx_as_number(a, &d, &dec) && (fx->op == rx_op::fx_or ? d != 0 : d == 0)) b = &one;
      }
      if (!b) b = &rx_eval(fx->operand[1].node, t1);
      if (tracing_i()) {
        op_status st = binary(fx->op, a, *b, tmp, n);
        if (st.status) operator_error(n, st, &a, b);
        rx_trace_detail(">O> \"" + shown(a, n) + "\" " + rx_trace_op(fx->op) + " \"" + shown(*b, n) + "\" --> \"" +
                        shown(tmp, n) + "\"");
        return tmp;
      }
      if ((fx->op == rx_op::fx_conc || fx->op == rx_op::fx_bl) && &a == &t0 && t0.kind == RX_STR) {
        // A chain of concatenations grows its left temporary instead of copying it at every step.
        std::string buf;
        std::string_view add = rx_text_of(*b, buf, n);
        std::size_t need = t0.text.size() + add.size() + 1;
        rx_check_length(need, n);
        if (need > t0.text.capacity()) t0.text.reserve(std::max<std::size_t>(need * 2, 64));  // one growth, not several
        if (fx->op == rx_op::fx_bl) t0.text += ' ';
        t0.text.append(add);
        t0.numchk = 0;
        tmp = std::move(t0);
        return tmp;
      }
      op_status st = binary(fx->op, a, *b, tmp, n);
      if (st.status) operator_error(n, st, &a, b);
      return tmp;
    }
    case 3:
      return call(n, tmp);
    default:
      return subscript(n, tmp);
  }
}

}  // namespace

const rx_value& rx_eval(const rx_node* n, rx_value& tmp) {
  // The common leaves first, without the frame of an operator's evaluation: a constant already made, and a
  // variable whose slot in this pool the token remembers (not an environment symbol, not under TRACE I).
  if (n->type == STRING && n->cval_ready) return n->cval;
  if (n->type == SYMBOL && n->parts.empty()) {
    const rx_proc& p = *rx_st.run->proc;
    if (n->slot_pool == p.pool->id && n->slot->state == 1 && n->value[0] != '$' && !(p.trace & 0x04))
      return n->slot->value;
  }
  return eval_node(n, tmp);
}

rx_value rx_eval_owned(const rx_node* n) {
  rx_value tmp;
  const rx_value& v = rx_eval(n, tmp);
  if (&v != &tmp) tmp = v;
  return tmp;
}
