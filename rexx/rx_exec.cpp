// The statement walker: control flow (IF, SELECT, DO, LEAVE, ITERATE, EXIT, SIGNAL, INTERPRET), SAY, assignment,
// NUMERIC, DROP, UPPER, LOWER, PUSH, QUEUE, PROCEDURE; calls, commands and TRACE are dispatched to their modules.
#include "rexx/rx_exec.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "rexx/rx_lex.h"
#include "rexx/rx_parse.h"
#include "rexx/rx_state.h"

namespace {

void run_list(const rx_cell* c);

rx_run& R() { return *rx_st.run; }
rx_proc& P() { return *rx_st.run->proc; }

std::string text(const rx_value& v, const rx_node* at) {
  std::string buf;
  return std::string(rx_text_of(v, buf, at));
}

std::string eval_text(const rx_node* n) {
  rx_value tmp;
  return text(rx_eval(n, tmp), n);
}

// The number of a single unquoted constant, as an assignment or SAY takes it.
bool constant_number(const rx_node* e, rx_value& out) {
  if (!e || e->type != STRING || e->quoted != 0) return false;
  if (!e->cval_ready) {  // the constant's value, which keeps whether it is a number after the first look
    e->cval.set_text(e->value);
    e->cval_ready = true;
  }
  double d;
  int32_t dec;
  if (!rx_as_number(e->cval, &d, &dec)) return false;
  out.set_number(d, dec);
  return true;
}

// ---- SAY ----

void exec_say(const rx_stmt& s) {
  std::string line;
  if (s.expr) {
    rx_value n;
    if (constant_number(s.expr, n))
      line = text(n, s.expr);
    else
      line = eval_text(s.expr);
  }
  if (rx_tracing(0x04 | 0x20)) rx_trace_detail(">>> \"" + line + "\"");
  if (s.kind == RX_SAY) line += '\n';
  if (s.kind == RX_SAYR) line += '\r';
  rx_output(line);
  if (s.kind == RX_SAYN) rx_output_flush();
}

// ---- assignment ----

// `v = v || x` and `v = v x` append to the variable in place, so that building a string costs no copies.
bool append_in_place(const rx_stmt& s) {
  const rx_node* e = s.expr;
  if (!e || e->type != RX_EXPR || e->expr->arity != 2) return false;
  const rx_fx* fx = e->expr;
  if (fx->op != rx_op::fx_conc && fx->op != rx_op::fx_bl) return false;
  const rx_node* left = fx->operand[0].node;
  if (fx->operand[0].kind != SYMBOL || !left->parts.empty() || !s.target->parts.empty() ||
      left->value != s.target->value || left->value[0] == '$')
    return false;
  rx_var* slot = rx_slot(rx_ctx(), *s.target);
  if (!slot) return false;
  rx_value t;
  const rx_value& right = rx_eval(fx->operand[1].node, t);
  std::string buf;
  std::string_view add = rx_text_of(right, buf, fx->operand[1].node);
  if (&right == &slot->value) {
    buf.assign(add);
    add = buf;
  }
  if (slot->value.kind == RX_NUM) {
    std::string own;
    if (!rx_format_number(slot->value.num, slot->value.decimals, P().numeric, own)) rx_raise(42, left);
    slot->value.set_text(own);
  }
  rx_check_length(slot->value.text.size() + add.size() + 1, e);
  if (fx->op == rx_op::fx_bl) slot->value.text += ' ';
  slot->value.text.append(add);
  slot->value.numchk = 0;
  ++slot->changes;
  return true;
}

void exec_assign(const rx_stmt& s) {
  if (s.index1) return rx_assign_slice(s);
  if (!s.target->value.empty() && s.target->value[0] == '.') rx_raise(31, s.target);
  bool env = s.target->value[0] == '$' && rx_env_symbol(*s.target);
  rx_value v;
  if (!s.expr) {
    v.set_text("");
  } else if (!constant_number(s.expr, v)) {
    if (!env && !(P().trace & 0x24) && append_in_place(s)) return;
    const rx_value& r = rx_eval(s.expr, v);  // into v, or a variable's or constant's value to copy
    if (&r != &v) v = r;
  }
  if ((P().trace & 0x24) && rx_tracing(0x04 | 0x20)) {
    std::string name = rx_default_text(rx_ctx(), *s.target);
    rx_trace_detail(">>> " + name + " <-- \"" + text(v, s.expr) + "\"");
  }
  rx_var* slot = rx_assign(rx_ctx(), *s.target, std::move(v));
  if (env) {
    std::string buf;
    rx_env_store(*s.target, rx_text_of(slot->value, buf, s.target));
  }
}

// ---- IF, SELECT ----

bool condition(const rx_node* e) {
  rx_value t;
  const rx_value& v = rx_eval(e, t);
  int l = rx_logical(v);
  if (l < 0) rx_raise(34, e, "Expression evaluates to " + text(v, e));
  return l == 1;
}

void exec_if(const rx_stmt& s) { run_list(condition(s.expr) ? s.body : s.other); }

void exec_select(const rx_stmt& s) {
  for (const rx_when* w = s.whens; w; w = w->next) {
    rx_st.error.line = w->line;
    rx_st.error.column = w->column;
    if (condition(w->cond)) return run_list(w->body);
  }
  if (!s.other) {
    rx_st.error.line = s.line;
    rx_st.error.column = s.column;
    rx_raise(57);
  }
  run_list(s.other);
}

// ---- DO ----

enum { LOOP_ON = 0, LOOP_NEXT, LOOP_END, LOOP_OUT };

// A pending unwind after the body: none (LOOP_ON), ITERATE of this loop (LOOP_NEXT, cleared), LEAVE of this loop
// (LOOP_END, cleared), or something for an outer level (LOOP_OUT, kept). `var` is the loop's name, if it has one.
int after_body(const std::string* var) {
  rx_run& r = R();
  if (r.pending == RX_PEND_NONE) return LOOP_ON;
  if (r.pending != RX_PEND_LEAVE && r.pending != RX_PEND_ITERATE) return LOOP_OUT;
  if (r.pend_has_name && !(var && r.pend_name == *var)) return LOOP_OUT;
  int k = r.pending;
  r.pending = RX_PEND_NONE;
  return k == RX_PEND_ITERATE ? LOOP_NEXT : LOOP_END;
}

bool loop_test(const rx_node* e, bool controlled, bool is_while) {
  rx_value t;
  const rx_value& v = rx_eval(e, t);
  int l = rx_logical(v);
  if (l < 0) {
    std::string what = is_while ? "WHILE" : "UNTIL";
    rx_raise(34, e,
             controlled ? what + " expression evaluates to \"" + text(v, e) + "\"."
                        : what + " expression evaluates to " + text(v, e));
  }
  return l == 1;
}

// The common frame of the loops: WHILE before the body, the body, pending unwinds, UNTIL after it.
// Returns false when the loop ends.
// The host's poll, before each clause and each pass of a loop: a user who stops the program ends the run at once,
// with -1.
void poll_host() {
  if (!rx_st.poll || !rx_st.poll()) return;
  rx_run& r = R();
  r.pending = RX_PEND_EXIT;
  r.exit_code = -1;
  r.has_result = false;
  throw rx_exit_jump{};
}

bool pass(const rx_stmt& s, bool controlled, const std::string* var) {
  poll_host();
  if (s.test_form == RX_TEST_WHILE && !loop_test(s.test, controlled, true)) return false;
  run_list(s.body);
  int k = after_body(var);
  if (k == LOOP_END || k == LOOP_OUT) return false;
  if (s.test_form == RX_TEST_UNTIL && loop_test(s.test, controlled, false)) return false;
  return true;
}

double number_or_26(const rx_node* e, const std::string& detail_head, bool quoted) {
  rx_value t;
  const rx_value& v = rx_eval(e, t);
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec))
    rx_raise(26, e, quoted ? detail_head + "\"" + text(v, e) + "\"." : detail_head + text(v, e));
  return d;
}

double whole_or_26(const rx_node* e, bool quoted) {
  rx_value t;
  const rx_value& v = rx_eval(e, t);
  double d;
  if (!rx_whole(v, P().numeric.digits, &d) || d < 0)
    rx_raise(26, e, quoted ? "Expression evaluates to \"" + text(v, e) + "\"." : "Expression evaluates to " + text(v, e));
  return d;
}

void do_controlled(const rx_stmt& s) {
  const rx_node* var = s.target;
  if (!var->value.empty() && var->value[0] == '.') rx_raise(31, var);
  rx_value t;
  const rx_value& iv = rx_eval(s.expr, t);
  double init;
  int32_t dec;
  if (!rx_as_number(iv, &init, &dec))
    rx_raise(26, s.expr, "The control variable " + var->value + " evaluates to \"" + text(iv, s.expr) + "\".");
  bool has_to = false, has_for = false;
  double to = 0, by = 1, count = 0;
  int digits = P().numeric.digits;
  for (int i = 0; i < s.order_count; ++i) {
    switch (s.order[static_cast<std::size_t>(i)]) {
      case 1:
        to = number_or_26(s.to, "Expression evaluates to ", true);
        has_to = true;
        break;
      case 2:
        by = rx_round(number_or_26(s.by, "Expression evaluates to ", true), digits);
        break;
      default:
        count = whole_or_26(s.for_, true);
        has_for = true;
        break;
    }
  }
  rx_value first;
  if (rx_is_whole(init) && std::fabs(init) < 1e15) {  // %30.15g shows such a number with all its digits
    first.num = init;
    first.decimals = 0;
  } else {
    std::string init_text = rx_printf_number("%30.15g", init);
    if (!rx_is_number(init_text, &first.num, &first.decimals)) first.decimals = 0;
  }
  first.kind = RX_NUM;
  rx_var_ctx c = rx_ctx();
  rx_var* slot = rx_assign(c, *var, first);
  int32_t expected = slot->changes;
  bool compound = !var->parts.empty();
  double x = rx_round(init, digits);
  double big = std::pow(10.0, digits - 1);
  for (double passes = 0;; ++passes) {
    if (has_to && (by > 0 ? x > to : x < to)) break;
    if (has_for && passes >= count) break;
    if (!pass(s, true, &var->value)) break;
    if (compound || slot->changes != expected) {
      rx_value tv;
      const rx_value& now = rx_eval(var, tv);
      if (!rx_as_number(now, &x, &dec))
        rx_raise(41, var, "The control variable " + var->value + " evaluates to \"" + text(now, var) + "\".");
    }
    x += by;
    if (x != 0 && digits < 15 && (digits == 1 || std::fabs(x) > big)) {
      char buf[64];
      std::snprintf(buf, sizeof buf, "%.*G", digits, x);
      x = std::strtod(buf, nullptr);
    }
    if (compound) {
      slot = rx_assign(c, *var, rx_value::string(rx_printf_number("%g", x)));
    } else {
      slot = rx_slot(c, *var);
      if (!slot) slot = rx_assign(c, *var, rx_value::number(x, 0));
      slot->value.set_number(x, 0);
      ++slot->changes;
      expected = slot->changes;
    }
  }
}

void do_in(const rx_stmt& s) {
  std::string words = eval_text(s.expr);
  rx_var_ctx c = rx_ctx();
  std::size_t i = 0;
  auto blank = [](char ch) { return ch == ' ' || ch == '\t' || ch == '\n'; };
  for (;;) {
    while (i < words.size() && blank(words[i])) ++i;
    if (i >= words.size()) return;
    std::size_t start = i;
    while (i < words.size() && !blank(words[i])) ++i;
    rx_assign_text(c, *s.target, std::string_view(words).substr(start, i - start));
    if (!pass(s, false, &s.target->value)) return;
  }
}

void exec_do(const rx_stmt& s) {
  switch (s.form) {
    case RX_DO_CONTROLLED:
      return do_controlled(s);
    case RX_DO_IN:
      return do_in(s);
    case RX_DO_SIMPLE:
      if (s.test_form == RX_TEST_NONE) return run_list(s.body);  // not a loop: LEAVE and ITERATE pass outward
      while (pass(s, false, nullptr)) {
      }
      return;
    case RX_DO_COUNT: {
      double n = whole_or_26(s.expr, false);
      for (double i = 0; i < n; ++i)
        if (!pass(s, false, nullptr)) return;
      return;
    }
    default:
      while (pass(s, false, nullptr)) {
      }
      return;
  }
}

// ---- EXIT, SIGNAL ----

void exec_signal(const rx_stmt& s) {
  if (s.form == RX_SIG_ONOFF || s.form == RX_CALL_ONOFF) return rx_exec_on_off(s);
  std::string name = s.form == RX_SIG_VALUE ? eval_text(s.target) : s.target->value;
  rx_label_hit hit = rx_find_label(name);
  const rx_label* label = hit.label;
  if (!label) rx_raise(16, s.target, "\"" + name + "\" is missing.");
  R().signal_prog = hit.prog;
  int32_t line = R().interpret_line >= 0 ? R().interpret_line : s.line;  // a program line, also from INTERPRET
  rx_assign_name(rx_ctx(), rx_special("SIGL"), rx_value::number(line + 1, 0));
  R().signal_label = label;
  R().pending = RX_PEND_SIGNAL;
}

// ---- INTERPRET ----

void report_interpreted(int number, int32_t line, int32_t column, std::string_view source, std::string_view detail) {
  if (P().cond[RX_C_SYNTAX] == 1) return;  // the handler takes it, with no report
  rx_report_place place;
  place.number = number;
  place.line = line;
  place.column = column;
  place.source = source;
  place.file = R().cur_prog->name;
  place.interpreted = true;
  place.detail = detail;
  rx_report_out(rx_format_report(place));
}

struct interpret_scope {
  rx_proc& p;
  rx_run& r;
  std::string_view source;
  bool interpreted;
  interpret_scope(rx_proc& proc, rx_run& run, std::string_view text)
      : p(proc), r(run), source(run.cur_source), interpreted(run.cur_interpreted) {
    ++p.interpret_depth;
    r.cur_source = text;
    r.cur_interpreted = true;
  }
  ~interpret_scope() {
    --p.interpret_depth;
    r.cur_source = source;
    r.cur_interpreted = interpreted;
  }
  interpret_scope(const interpret_scope&) = delete;
  interpret_scope& operator=(const interpret_scope&) = delete;
};

void interpret_text(std::string text, int32_t line, int32_t column) {
  rx_check_stack();
  auto prog = std::make_unique<rx_program>();
  prog->name = R().cur_prog->name;
  prog->source = std::move(text);
  auto again = [line, column](int number) {
    rx_st.error.line = line;
    rx_st.error.column = column;
    rx_raise(number);
  };
  interpret_scope scope(P(), R(), prog->source);
  bool outermost = R().interpret_line < 0;
  if (outermost) R().interpret_line = line;
  struct line_reset {
    bool on;
    ~line_reset() {
      if (on) rx_st.run->interpret_line = -1;
    }
  } reset{outermost};
  rx_lex_result lexed = rx_lex(prog->source, 0, true);
  if (!lexed.ok) {
    report_interpreted(lexed.error, lexed.error_line, lexed.error_column, prog->source, {});
    again(lexed.error);
  }
  prog->tokens = std::move(lexed.tokens);
  rx_parse_result parsed = rx_parse(*prog, false);
  if (parsed.error) {
    report_interpreted(parsed.error, parsed.line, parsed.column, prog->source, parsed.detail);
    again(parsed.error);
  }
  try {
    run_list(prog->head);
    if (R().pending == RX_PEND_LEAVE || R().pending == RX_PEND_ITERATE) {
      // The loop it may leave is outside the text: without one, error 28 stands at this clause.
      R().pend_line = line;
      R().pend_column = column;
    }
  } catch (const rx_error_exit& e) {
    report_interpreted(e.number, rx_st.error.line, rx_st.error.column, prog->source, rx_st.error.detail);
    again(e.number);
  }
}

void exec_interpret(const rx_stmt& s) {
  std::string text = eval_text(s.expr);
  if (rx_tracing(0x04 | 0x20)) rx_trace_detail(">>> \"" + text + "\"");
  interpret_text(std::move(text), s.line, s.column);
}

// ---- NUMERIC ----

void exec_numeric(const rx_stmt& s) {
  rx_numeric& n = P().numeric;
  if (s.form == RX_NUM_SCIENTIFIC || s.form == RX_NUM_ENGINEERING) {
    n.form = s.form == RX_NUM_ENGINEERING ? 1 : 0;
    return;
  }
  if (s.form == RX_NUM_FORM_VALUE) {
    rx_value t;
    const rx_value& v = rx_eval(s.expr, t);
    std::string w = text(v, s.expr);
    if (v.kind != RX_STR) rx_raise(25, s.expr, "Expression evaluates to \"" + w + "\".");
    for (char& ch : w)
      if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
    if (w == "SCIENTIFIC") n.form = 0;
    else if (w == "ENGINEERING") n.form = 1;
    else rx_raise(25, s.expr, "Expression evaluates to \"" + text(v, s.expr) + "\".");
    return;
  }
  bool digits = s.form == RX_NUM_DIGITS;
  if (!s.expr) {
    if (digits) n.digits = 9;
    else n.fuzz = 0;
    return;
  }
  rx_value t;
  const rx_value& v = rx_eval(s.expr, t);
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec))
    rx_raise(26, s.expr, "Expression evaluates to \"" + text(v, s.expr) + (digits ? "\"" : "\"."));
  std::string shown = rx_printf_number("%g", d);
  double w = rx_round(d, n.digits);
  bool whole = std::floor(w) == w;
  if (digits) {
    if (!whole || w < 1 || w > 15)
      rx_raise(26, s.expr, "Expression evaluates to \"" + shown + "\"; must be a positive integer <= 15.");
    if (w <= n.fuzz)
      rx_raise(26, s.expr, "Expression evaluates to \"" + shown + "\"; must be a positive integer > to the current \"" +
                               std::to_string(n.fuzz) + "\" NUMERIC DIGITS setting.");
    n.digits = static_cast<int>(w);
  } else {
    if (!whole || w < 0 || w >= n.digits)
      rx_raise(26, s.expr, "Expression evaluates to \"" + shown + "\"; must be a positive integer < " +
                               std::to_string(n.digits) + ".");
    n.fuzz = static_cast<int>(w);
  }
}

// ---- name lists: DROP, UPPER, LOWER, PROCEDURE EXPOSE ----

// Each name of a list, with "(name)" items standing for the names in the variable's value (after the variable
// itself when `with_indirect_self`).
template <typename F>
void each_name(const rx_node* chain, bool with_indirect_self, F f) {
  for (const rx_node* item = chain; item; item = item->next) {
    if (item->quoted != 2) {
      f(*item);
      continue;
    }
    if (with_indirect_self) f(*item);
    std::string list = eval_text(item);
    std::size_t i = 0;
    while (i < list.size()) {
      while (i < list.size() && list[i] == ' ') ++i;
      std::size_t start = i;
      while (i < list.size() && list[i] != ' ') ++i;
      if (i == start) break;
      std::string word = list.substr(start, i - start);
      if (!rx_valid_var_name(word))
        rx_raise(46, item, "paloma: string \"" + word + "\" is not a valid REXX variable.");
      f(rx_symbol_of(word, 1));
    }
  }
}

void exec_names(const rx_stmt& s) {
  rx_var_ctx c = rx_ctx();
  if (s.kind == RX_DROP) return each_name(s.chain, false, [&c](const rx_node& n) { rx_drop(c, n); });
  bool up = s.kind == RX_UPPER;
  each_name(s.chain, false, [&c, up](const rx_node& n) {
    rx_var* v = rx_slot(c, n);
    if (!v || v->value.kind != RX_STR) return;
    for (char& ch : v->value.text) {
      if (up && ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
      if (!up && ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch + 32);
    }
    v->value.numchk = 0;
    ++v->changes;  // compound names that use it as a tail are derived again
  });
}

void exec_procedure(const rx_stmt& s) {
  rx_proc& p = P();
  if (!p.caller || p.procedure_done) return;  // only the first PROCEDURE of a called routine counts
  p.procedure_done = true;
  p.own_pool = std::make_unique<rx_pool>(p.pool);
  p.pool = p.own_pool.get();
  rx_var_ctx c = rx_ctx();
  each_name(s.chain, true, [&c](const rx_node& n) { rx_expose(c, n); });
}

// ---- the walker ----

void exec(const rx_stmt& s) {
  switch (s.kind) {
    case RX_ASSIGN: return exec_assign(s);
    case RX_SAY: case RX_SAYN: case RX_SAYR: return exec_say(s);
    case RX_IF: return exec_if(s);
    case RX_DO: return exec_do(s);
    case RX_SELECT: return exec_select(s);
    case RX_LEAVE:
    case RX_ITERATE:
      R().pending = s.kind == RX_LEAVE ? RX_PEND_LEAVE : RX_PEND_ITERATE;
      R().pend_name = s.name;
      R().pend_has_name = s.has_name;
      R().pend_line = s.line;
      R().pend_column = s.column;
      return;
    case RX_LABEL: case RX_LINK: return;
    case RX_EXIT: return rx_exec_exit(s);
    case RX_RETURN: return rx_exec_return(s);
    case RX_SIGNAL: return exec_signal(s);
    case RX_INTERPRET: return exec_interpret(s);
    case RX_NUMERIC: return exec_numeric(s);
    case RX_PARSE: return rx_exec_parse(s);
    case RX_PUSH:
    case RX_QUEUE: {
      std::string line = s.expr ? eval_text(s.expr) : std::string();
      if (rx_tracing(0x04 | 0x20)) rx_trace_detail(">>> \"" + line + "\"");
      if (s.kind == RX_PUSH) rx_queue_push(std::move(line));
      else rx_queue_add(std::move(line));
      return;
    }
    case RX_DROP: case RX_UPPER: case RX_LOWER: return exec_names(s);
    case RX_PROCEDURE: return exec_procedure(s);
    case RX_TRACE: return rx_exec_trace(s);
    case RX_CALL: return rx_exec_call(s);
    case RX_COMMAND: case RX_SAYX: return rx_exec_command(s);
    case RX_ADDRESS: return rx_exec_address(s);
    case RX_CD: throw rx_unavailable{"CD"};
    default: throw rx_unavailable{"statement kind " + std::to_string(s.kind)};
  }
}

// Under TRACE S the blocks of a clause are listed too.
void scan_nested(const rx_stmt& s) {
  if (s.kind == RX_IF || s.kind == RX_DO) {
    run_list(s.body);
    run_list(s.other);
  } else if (s.kind == RX_SELECT) {
    for (const rx_when* w = s.whens; w; w = w->next) run_list(w->body);
    run_list(s.other);
  }
}

void run_list(const rx_cell* c) {
  rx_check_stack();
  rx_run& r = R();
  while (c && c->stmt) {
    rx_st.error.line = c->stmt->line;
    rx_st.error.column = c->stmt->column;
    if (P().trace & 0xFD) {
      rx_trace_clause(*c->stmt);
      if (P().trace & 0x40) {  // TRACE S lists the clause and runs nothing
        scan_nested(*c->stmt);
        c = c->next;
        continue;
      }
    }
    poll_host();
    exec(*c->stmt);
    if (r.pending) return;
    if (P().trace & 0x100) {
      bool again = rx_trace_pause(c);  // "=" typed: the same clause again
      if (r.pending) return;
      if (again) continue;
    }
    c = c->next;
  }
}

// After SIGNAL to a label: the rest of each block around the label runs, innermost first; the walker of the
// routine then restarts behind the outermost block (or at the label, at top level). Null: an unwind is pending.
const rx_cell* signal_resume(const rx_label* label) {
  const rx_block* b = label->cell.stmt->block;
  if (!b) return &label->cell;
  run_list(&label->cell);
  for (; b->below; b = b->below) {
    if (R().pending) return nullptr;
    run_list(b->tail->next);
  }
  if (R().pending) return nullptr;
  return b->tail->next;
}

// The walker of a routine: SIGNAL restarts it; LEAVE or ITERATE that reach it are error 28.
void run_routine(const rx_cell* start) {
  rx_run& r = R();
  for (const rx_cell* c = start;;) {
    try {
      if (c) run_list(c);
    } catch (const rx_signal_jump&) {
      r.pending = RX_PEND_SIGNAL;  // a condition handler: as by SIGNAL, in this routine
    }
    if (r.pending == RX_PEND_SIGNAL) {
      r.pending = RX_PEND_NONE;
      if (r.signal_prog) {
        r.cur_prog = r.signal_prog;
        r.cur_source = r.signal_prog->source;
      }
      c = nullptr;
      try {
        c = signal_resume(r.signal_label);
      } catch (const rx_signal_jump&) {
        r.pending = RX_PEND_SIGNAL;
      }
      continue;
    }
    if (r.pending == RX_PEND_LEAVE || r.pending == RX_PEND_ITERATE) {
      rx_st.error.line = r.pend_line;
      rx_st.error.column = r.pend_column;
      rx_raise(28);
    }
    return;
  }
}

}  // namespace

void rx_exec_exit(const rx_stmt& s) {
  rx_run& r = R();
  r.exit_code = 0;
  r.has_result = false;
  r.result.clear();
  if (s.expr) {
    rx_value t;
    const rx_value& v = rx_eval(s.expr, t);
    double d;
    int32_t dec;
    r.result = text(v, s.expr);
    r.has_result = true;
    if (rx_as_number(v, &d, &dec)) {
      r.result.clear();
      if (!rx_format_number(d, dec, P().numeric, r.result)) rx_raise(42, s.expr);
      d = std::trunc(d);
      r.exit_code = d > INT32_MAX ? INT32_MAX : d < INT32_MIN ? INT32_MIN : static_cast<int32_t>(d);
    } else {
      unsigned char b[4] = {' ', ' ', ' ', ' '};
      for (std::size_t i = 0; i < 4 && i < r.result.size(); ++i) b[i] = static_cast<unsigned char>(r.result[i]);
      uint32_t code = b[0] | (b[1] << 8) | (b[2] << 16) | (static_cast<uint32_t>(b[3]) << 24);
      std::memcpy(&r.exit_code, &code, sizeof code);
    }
  }
  r.pending = RX_PEND_EXIT;
}

void rx_run_list(const rx_cell* c) { run_list(c); }
void rx_interpret_text(std::string text, int32_t line, int32_t column) { interpret_text(std::move(text), line, column); }
void rx_run_routine(const rx_cell* start) { run_routine(start); }

rx_var_ctx rx_ctx() {
  rx_var_ctx c;
  c.pool = rx_st.run->proc->pool;
  c.numeric = &rx_st.run->proc->numeric;
  c.case_mode = rx_st.sw.case_mode;
  return c;
}

void rx_raise(int number, const rx_node* at, std::string detail) {
  if (at) {
    rx_st.error.line = at->line;
    rx_st.error.column = at->column;
  }
  rx_st.error.number = number;
  rx_st.error.detail = std::move(detail);
  if (rx_st.run) {
    rx_st.run->err_prog = rx_st.run->cur_prog;
    rx_syntax_trap(number);  // does not return when SIGNAL ON SYNTAX takes the error
  }
  throw rx_error_exit{number};
}

void rx_check_length(std::size_t n, const rx_node* at) {
  if (n > rx_max_string)
    rx_raise(5, at, "PALOMA: a string would be longer than " + std::to_string(rx_max_string) + " bytes.");
}

void rx_check_stack() {
  char here = 0;
  if (!rx_st.run || !rx_st.run->stack_base) return;
  auto used = reinterpret_cast<std::uintptr_t>(rx_st.run->stack_base) - reinterpret_cast<std::uintptr_t>(&here);
  if (static_cast<std::ptrdiff_t>(used) <= rx_stack_budget + rx_st.run->stack_extra) return;
  // A SYNTAX handler runs in the routine that nests too deeply: it gets some stack of its own, once.
  if (rx_st.run->proc->cond[RX_C_SYNTAX] == 1 && rx_st.run->stack_extra == 0) rx_st.run->stack_extra = 512 * 1024;
  rx_raise(5, nullptr, "PALOMA: the program nests too deeply (routine calls, INTERPRET, blocks or expressions).");
}

void rx_execute(rx_run& run) {
  char base = 0;
  rx_run* saved = rx_st.run;
  rx_st.run = &run;
  run.stack_base = &base;
  run.cur_source = run.prog->source;
  run.cur_prog = run.prog;
  run.err_prog = run.prog;
  run.proc->env = run.proc->env_prev = rx_st.env_start;
  struct restore {
    rx_run* s;
    ~restore() { rx_st.run = s; }
  } guard{saved};
  try {
    run_routine(run.prog->head);
  } catch (const rx_exit_jump&) {
    // run.pending is EXIT, with its code and text
  }
}
