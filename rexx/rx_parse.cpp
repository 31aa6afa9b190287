// The recursive-descent parser of programs: clauses into statement lists, expressions into operator nodes.
#include "rexx/rx_parse.h"

#include <array>

#include "rexx/rx_state.h"

rx_node rx_open_end;

namespace {

constexpr int32_t end_mark = -1;  // kind the parser sees when all tokens have been read

struct parse_fail {
  int number;
  int32_t line, column;
  std::string detail;
};

// Binary operators: kind, binding level (1 loosest .. 10 tightest), routine. Only ** associates to the right.
struct binary_row {
  int32_t kind;
  int level;
  rx_op op;
};
constexpr std::array<binary_row, 27> binary_rows = {{
    {'|', 1, rx_op::fx_or},           {OP_XOR, 1, rx_op::fx_xor},        {'&', 2, rx_op::fx_and},
    {'>', 3, rx_op::fx_sup},          {'<', 3, rx_op::fx_inf},           {OP_SUP_EQ, 3, rx_op::fx_supeq},
    {OP_INF_EQ, 3, rx_op::fx_infeq},  {OP_SSUP, 3, rx_op::fx_ssup},      {OP_IINF, 3, rx_op::fx_iinf},
    {OP_SSUP_EQ, 3, rx_op::fx_ssupeq}, {OP_IINF_EQ, 3, rx_op::fx_iinfeq}, {OP_NEQ, 3, rx_op::fx_neq},
    {OP_NNEQ, 3, rx_op::fx_nneq},     {'=', 4, rx_op::fx_eq},            {OP_EEQ, 4, rx_op::fx_eeq},
    {' ', 5, rx_op::fx_bl},           {OP_CONC, 5, rx_op::fx_conc},      {'+', 6, rx_op::fx_plus},
    {'-', 6, rx_op::fx_min},          {'*', 7, rx_op::fx_mult},          {'/', 7, rx_op::fx_div},
    {'%', 7, rx_op::fx_idiv},         {OP_REMAIN, 7, rx_op::fx_rem},     {OP_EXP, 8, rx_op::fx_exp},
    {OP_RHO, 9, rx_op::fx_conc_rho},  {OP_EQIC, 9, rx_op::fx_eqic},      {OP_NEQIC, 9, rx_op::fx_neqic},
}};
constexpr int exp_level = 8, not_level = 10;

const binary_row* find_binary(int32_t kind) {
  if (kind == OP_NOT) {
    static constexpr binary_row conc_not{OP_NOT, not_level, rx_op::fx_conc_not};
    return &conc_not;
  }
  for (const binary_row& row : binary_rows)
    if (row.kind == kind) return &row;
  return nullptr;
}

bool is_condition(int32_t k, bool syntax_allowed) {
  return k == ERROR || k == FAILURE || k == HALT || k == NOVALUE || k == NOTREADY || (syntax_allowed && k == SYNTAX);
}
bool is_option_word(int32_t k) {
  return k == LOWER || k == UPPER || k == MIXED || k == SETENV || k == UNSETENV || k == LOAD || k == NOLOAD ||
         k == GLOBALV || k == NOGLOBALV;
}

class parser {
 public:
  parser(rx_program& prog, bool outermost) : p_(prog), toks_(prog.tokens), outermost_(outermost) {}

  void run() {
    head_ = tail_ = new_cell();
    p_.head = head_;
    while (peek() != end_mark) {
      parse_clause();
      expect(';');
    }
  }

 private:
  // ---- tokens ----

  // Kind of the current token (reading it if needed); end_mark when all are read. Reading records the position.
  int32_t peek() {
    if (!have_) {
      look_ = pos_;
      while (look_ < toks_.size() && toks_[look_].type == RX_NOLEX) ++look_;
      have_ = true;
      if (look_ < toks_.size()) {
        err_line_ = toks_[look_].line;
        err_col_ = toks_[look_].column;
      }
    }
    return look_ < toks_.size() ? toks_[look_].type : end_mark;
  }
  rx_node& tok() {
    peek();
    return toks_[look_];
  }
  void advance() {
    peek();
    pos_ = look_ + 1;
    have_ = false;
  }
  // Index of the n-th token from the current one, without reading it for error positions.
  std::size_t index_ahead(std::size_t from, int n) const {
    std::size_t j = from;
    for (;;) {
      while (j < toks_.size() && toks_[j].type == RX_NOLEX) ++j;
      if (n-- == 0 || j >= toks_.size()) return j;
      ++j;
    }
  }
  int32_t kind_ahead(int n) {
    peek();
    std::size_t j = index_ahead(look_, n);
    return j < toks_.size() ? toks_[j].type : end_mark;
  }
  void expect(int32_t kind) {
    if (peek() != kind) syntax_error();
    advance();
  }
  bool clause_ends() {
    int32_t k = peek();
    return k == ';' || k == ELSE || k == end_mark;
  }

  // ---- errors ----

  // A syntax error reports the armed number; at the end of the tokens, the innermost open construct instead.
  [[noreturn]] void syntax_error() {
    if (peek() == end_mark) {
      if (!open_select_.empty()) throw parse_fail{65, open_select_.back(), 0, {}};
      if (!open_do_.empty()) throw parse_fail{64, open_do_.back(), 0, {}};
      if (!open_if_.empty()) throw parse_fail{66, open_if_.back(), 0, {}};
    }
    throw parse_fail{armed_, err_line_, err_col_, {}};
  }
  [[noreturn]] void raise(int number, std::string detail = {}) {
    throw parse_fail{number, err_line_, err_col_, std::move(detail)};
  }

  struct depth_guard {
    parser& ps;
    explicit depth_guard(parser& p) : ps(p) {
      if (++ps.depth_ > rx_parse_depth_limit) ps.raise(61);
    }
    ~depth_guard() { --ps.depth_; }
    depth_guard(const depth_guard&) = delete;
    depth_guard& operator=(const depth_guard&) = delete;
  };

  // ---- tree building ----

  rx_cell* new_cell() { return &p_.cells.emplace_back(); }
  rx_node* copy_node(const rx_node& n) {
    rx_node* c = &p_.nodes.emplace_back(n);
    c->next = nullptr;
    return c;
  }

  // Every statement goes to the tail of the current list, enters its line and re-arms the default error.
  rx_stmt* make(int32_t kind, int32_t line) {
    rx_stmt* s = &p_.stmts.emplace_back();
    s->kind = kind;
    s->line = line;
    tail_->stmt = s;
    tail_->next = new_cell();
    tail_ = tail_->next;
    if (outermost_) p_.line_table.push_back(line);
    armed_ = 55;
    return s;
  }

  rx_block* push_block() {
    rx_block* b = &p_.blocks.emplace_back();
    b->tail = tail_;
    b->head = head_;
    b->below = block_;
    block_ = b;
    head_ = tail_ = new_cell();
    return b;
  }
  rx_cell* pop_block(rx_block* b) {
    rx_cell* body = head_;
    head_ = b->head;
    tail_ = b->tail;
    block_ = b->below;
    return body;
  }

  static rx_operand operand_of(rx_node* n) {
    rx_operand o;
    if (!n) return o;
    o.kind = n->type == STRING ? STRING : n->type == SYMBOL ? SYMBOL : RX_EXPR;
    o.node = n;
    if (o.kind == STRING) o.text = n->value;
    return o;
  }
  rx_node* make_op(rx_op op, int32_t arity, rx_node* a, rx_node* b = nullptr, rx_node* c = nullptr) {
    rx_fx* fx = &p_.fxs.emplace_back();
    fx->arity = arity;
    fx->op = op;
    fx->name = rx_op_name(op);
    fx->operand[0] = operand_of(a);
    fx->operand[1] = operand_of(b);
    fx->operand[2] = operand_of(c);
    rx_node* n = &p_.nodes.emplace_back();
    n->type = RX_EXPR;
    n->line = a ? a->line : err_line_;
    n->column = a ? a->column : err_col_;
    n->expr = fx;
    return n;
  }

  // ---- expressions ----

  // Precedence climbing over the binary levels; `min_level` is the loosest operator this call may take.
  rx_node* parse_expr(int min_level = 1) {
    depth_guard guard(*this);
    rx_node* lhs = parse_unary();
    for (;;) {
      const binary_row* row = find_binary(peek());
      if (!row || row->level < min_level) return lhs;
      advance();
      rx_node* rhs = parse_expr(row->level == exp_level ? row->level : row->level + 1);
      lhs = make_op(row->op, 2, lhs, rhs);
    }
  }

  // Prefix +, - and the negation bind tighter than everything; a prefix rho yields only to a binary negation.
  rx_node* parse_unary() {
    int32_t k = peek();
    if (k == '+' || k == '-' || k == OP_NOT) {
      advance();
      depth_guard guard(*this);
      rx_node* operand = parse_unary();
      return make_op(k == '+' ? rx_op::fx_uplus : k == '-' ? rx_op::fx_umin : rx_op::fx_not, 1, operand);
    }
    if (k == OP_RHO) {
      advance();
      return make_op(rx_op::fx_rho, 1, parse_expr(not_level));
    }
    return parse_primary();
  }

  rx_node* parse_primary() {
    int32_t k = peek();
    if (k == STRING || k == SYMBOL) {
      rx_node* leaf = &tok();
      advance();
      return maybe_subscript(leaf);
    }
    if (k == FUNCTION || k == SFUNCTION) {
      rx_node* name = &tok();
      advance();
      expect('(');
      rx_node* args = parse_arglist();
      expect(')');
      return make_call(name, args);
    }
    if (k == '(') {
      advance();
      rx_node* inner = parse_expr();
      expect(')');
      return maybe_subscript(inner);
    }
    if (k == '`') {
      advance();
      rx_node* inner = parse_expr();
      expect('`');
      return make_op(rx_op::fx_backq, 1, inner);
    }
    syntax_error();
  }

  rx_node* make_call(rx_node* name, rx_node* args) {
    name->type = name->type == SFUNCTION ? STRING : SYMBOL;
    rx_fx* fx = &p_.fxs.emplace_back();
    fx->arity = 3;
    fx->op = rx_op::fx_func;
    fx->name = rx_op_name(rx_op::fx_func);
    fx->name_node = name;
    fx->args = args;
    rx_node* n = &p_.nodes.emplace_back();
    n->type = RX_EXPR;
    n->value = name->value;
    n->has_value = true;
    n->line = name->line;
    n->column = name->column;
    n->expr = fx;
    return n;
  }

  // x[i], x[i:j] (fx_br) and x[i:], x[:j] (fx_br2). The lexer writes ';' behind every ':'.
  rx_node* maybe_subscript(rx_node* x) {
    if (peek() != '[') return x;
    advance();
    depth_guard guard(*this);
    if (peek() == ':') {
      advance();
      expect(';');
      rx_node* j = parse_expr();
      expect(']');
      return make_op(rx_op::fx_br2, 4, x, nullptr, j);
    }
    rx_node* i = parse_expr();
    if (peek() == ':') {
      advance();
      expect(';');
      if (peek() == ']') {
        advance();
        return make_op(rx_op::fx_br2, 4, x, i, nullptr);
      }
      rx_node* j = parse_expr();
      expect(']');
      return make_op(rx_op::fx_br, 4, x, i, j);
    }
    expect(']');
    return make_op(rx_op::fx_br, 4, x, i, nullptr);
  }

  // Arguments: expressions or omitted ones (VIDE) separated by commas; each a fresh node chained by `next`.
  rx_node* parse_arglist() {
    if (peek() == ')') return nullptr;
    rx_node* head = nullptr;
    rx_node** link = &head;
    for (;;) {
      rx_node* arg;
      if (peek() == VIDE) {
        arg = copy_node(tok());
        advance();
      } else {
        arg = copy_node(*parse_expr());
      }
      *link = arg;
      link = &arg->next;
      if (peek() != ',') return head;
      advance();
    }
  }

  rx_node* optional_expr() { return clause_ends() ? nullptr : parse_expr(); }

  // ---- clauses ----

  // A clause; its statement (the last one made, since a block's statements are made before it) records the
  // column of the clause's first token, where run-time reports of the statement point.
  void parse_clause() {
    std::size_t before = p_.stmts.size();
    int32_t column = peek() == end_mark ? 0 : tok().column;
    parse_clause_body();
    if (p_.stmts.size() > before) p_.stmts.back().column = column;
  }

  void parse_clause_body() {
    depth_guard guard(*this);
    int32_t k = peek();
    int32_t k1 = kind_ahead(1);
    if (k == ';' || k == ELSE || k == end_mark) return;  // an empty clause
    if ((k == SYMBOL || k == STRING) && k1 == ':') return parse_label();
    if (k == SYMBOL && k1 == '=') return parse_assignment();
    if (k == SYMBOL && k1 == '[' && is_slice_assignment()) return parse_slice_assignment();
    int32_t line = tok().line;
    switch (k) {
      case IF: return parse_if();
      case DO: return parse_do();
      case SELECT: return parse_select();
      case LEAVE: return parse_leave(RX_LEAVE);
      case ITERATE: return parse_leave(RX_ITERATE);
      case SAY: return simple(RX_SAY);
      case SAYN: return simple(RX_SAYN);
      case SAYX: return simple(RX_SAYX);
      case SAYR: return simple(RX_SAYR);
      case EXIT: return simple(RX_EXIT);
      case RETURN: return simple(RX_RETURN);
      case PUSH: return simple(RX_PUSH);
      case QUEUE: return simple(RX_QUEUE);
      case CD: return simple(RX_CD);
      case INTERPRET: {
        advance();
        rx_node* e = parse_expr();
        make(RX_INTERPRET, line)->expr = e;
        return;
      }
      case SIGNAL: return parse_signal();
      case CALL: return parse_call();
      case PROCEDURE: return parse_procedure();
      case NOP:
        advance();
        if (outermost_) p_.line_table.push_back(line);
        return;
      case PARSE: return parse_parse();
      case ARG:
      case PULL: {
        advance();
        rx_node* tmpl = take_template();
        rx_stmt* s = make(RX_PARSE, line);
        s->upper = 1;
        s->form = k == ARG ? RX_SRC_ARG : RX_SRC_PULL;
        s->chain = tmpl;
        return;
      }
      case ADDRESS: return parse_address();
      case DROP: return parse_name_list(RX_DROP);
      case UPPER: return parse_name_list(RX_UPPER);
      case LOWER: return parse_name_list(RX_LOWER);
      case NUMERIC: return parse_numeric();
      case TRACE: return parse_trace();
      case OPTION: return parse_option();
      default: {
        rx_node* e = parse_expr();
        make(RX_COMMAND, line)->expr = e;
        return;
      }
    }
  }

  // EXIT, RETURN, SAY and the like: the keyword and an optional expression.
  void simple(int32_t kind) {
    int32_t line = tok().line;
    advance();
    rx_node* e = optional_expr();
    make(kind, line)->expr = e;
  }

  void parse_label() {
    rx_node& name = tok();
    advance();
    advance();  // ':'
    rx_stmt* s = make(RX_LABEL, name.line);
    s->name = name.value;
    s->has_name = true;
    s->block = block_;
    // The statement sits in the cell before the new tail; the table keeps a copy of that cell.
    rx_cell copy;
    copy.stmt = s;
    copy.next = tail_;
    p_.labels.add(s->name, copy);
  }

  void parse_assignment() {
    rx_node* target = &tok();
    advance();
    advance();  // '='
    rx_node* value = optional_expr();
    rx_stmt* s = make(RX_ASSIGN, target->line);
    s->target = target;
    s->expr = value;
  }

  // SYMBOL '[' ... ']' '=' : scan to the matching ']' and look for the '=' behind it.
  bool is_slice_assignment() {
    std::size_t j = index_ahead(look_, 1);
    int depth = 0;
    for (; j < toks_.size(); j = index_ahead(j + 1, 0)) {
      int32_t k = toks_[j].type;
      if (k == '[') ++depth;
      if (k == ']' && --depth == 0) break;
      if (k == ';' && (j == 0 || toks_[j - 1].type != ':')) return false;
    }
    if (j >= toks_.size()) return false;
    std::size_t e = index_ahead(j + 1, 0);
    return e < toks_.size() && toks_[e].type == '=';
  }

  void parse_slice_assignment() {
    rx_node* target = &tok();
    advance();
    advance();  // '['
    rx_node* first = nullptr;
    rx_node* second = nullptr;
    if (peek() == ':') {
      advance();
      expect(';');
      first = &rx_open_end;
      second = parse_expr();
    } else {
      first = parse_expr();
      if (peek() == ':') {
        advance();
        expect(';');
        second = peek() == ']' ? &rx_open_end : parse_expr();
      }
    }
    expect(']');
    expect('=');
    rx_node* value = optional_expr();
    rx_stmt* s = make(RX_ASSIGN, target->line);
    s->target = target;
    s->expr = value;
    s->index1 = first;
    s->index2 = second;
  }

  // The clause of a THEN, ELSE or WHEN: one clause, which may be empty.
  void branch_clause() {
    if (!clause_ends()) parse_clause();
  }

  void parse_if() {
    int32_t line = tok().line;
    advance();
    open_if_.push_back(line);
    armed_ = 50;
    rx_block* b = push_block();
    rx_node* cond = parse_expr();
    armed_ = 18;
    expect(THEN);
    branch_clause();
    rx_cell* then_list = pop_block(b);
    rx_cell* else_list = nullptr;
    if (peek() == ELSE) {
      advance();
      rx_block* e = push_block();
      branch_clause();
      else_list = pop_block(e);
    }
    open_if_.pop_back();
    rx_stmt* s = make(RX_IF, line);
    s->expr = cond;
    s->body = then_list;
    s->other = else_list;
  }

  // Clauses up to (not including) END, each followed by ';'.
  void clauses_to_end() {
    while (peek() != END) {
      if (peek() == end_mark) syntax_error();
      parse_clause();
      expect(';');
    }
  }

  void parse_do() {
    int32_t line = tok().line;
    advance();
    open_do_.push_back(line);
    armed_ = 27;
    rx_block* b = push_block();
    rx_stmt tmp;
    tmp.form = RX_DO_SIMPLE;
    int32_t k = peek();
    int32_t k1 = kind_ahead(1);
    if (k == FOREVER) {
      advance();
      tmp.form = RX_DO_FOREVER;
    } else if (k == SYMBOL && k1 == '=') {
      tmp.target = &tok();
      advance();
      advance();
      tmp.form = RX_DO_CONTROLLED;
      tmp.expr = parse_expr();
      do_options(tmp);
    } else if (k == SYMBOL && k1 == IN) {
      tmp.target = &tok();
      advance();
      advance();
      tmp.form = RX_DO_IN;
      tmp.expr = parse_expr();
    } else if (k != WHILE && k != UNTIL && k != ';') {
      tmp.form = RX_DO_COUNT;
      tmp.expr = parse_expr();
    }
    if (peek() == WHILE || peek() == UNTIL) {
      tmp.test_form = peek() == WHILE ? RX_TEST_WHILE : RX_TEST_UNTIL;
      advance();
      tmp.test = parse_expr();
      armed_ = 55;
    }
    expect(';');
    clauses_to_end();
    tmp.end_line = tok().line;
    advance();
    if (peek() == SYMBOL) {
      rx_node& name = tok();
      advance();
      if (tmp.form != RX_DO_CONTROLLED && tmp.form != RX_DO_IN)
        raise(27, "A \"END symbol\" clause may only be used with a controlled repetitive loop");
      if (name.value != tmp.target->value)
        raise(27, "Only the controlling variable " + tmp.target->value + " can be specified.");
    }
    tmp.body = pop_block(b);
    open_do_.pop_back();
    rx_stmt* s = make(RX_DO, line);
    tmp.kind = s->kind;
    tmp.line = s->line;
    *s = std::move(tmp);
  }

  // TO, BY and FOR, in any order, each at most once.
  void do_options(rx_stmt& s) {
    static constexpr const char* twice[] = {"", "\"TO\" has been used twice.", "\"BY\" has been used twice.",
                                            "\"FOR\" has been used twice."};
    for (;;) {
      int32_t k = peek();
      int which = k == TO ? 1 : k == BY ? 2 : k == FOR ? 3 : 0;
      if (!which) return;
      advance();
      rx_node* e = parse_expr();
      rx_node*& slot = which == 1 ? s.to : which == 2 ? s.by : s.for_;
      if (slot) raise(27, twice[which]);
      slot = e;
      s.order[static_cast<std::size_t>(s.order_count++)] = which;
    }
  }

  void parse_select() {
    int32_t line = tok().line;
    advance();
    open_select_.push_back(line);
    armed_ = 52;
    expect(';');
    rx_when* first = nullptr;
    rx_when** link = &first;
    rx_cell* otherwise = nullptr;
    for (;;) {
      int32_t k = peek();
      if (k == WHEN) {
        rx_when* w = &p_.whens.emplace_back();
        w->line = tok().line;
        w->column = tok().column;
        advance();
        w->cond = parse_expr();
        rx_block* b = push_block();
        armed_ = 18;
        expect(THEN);
        branch_clause();
        w->body = pop_block(b);
        *link = w;
        link = &w->next;
        armed_ = 7;
        expect(';');
      } else if (k == OTHERWISE) {
        if (!first) raise(53);
        advance();
        rx_block* b = push_block();
        clauses_to_end();
        otherwise = pop_block(b);
        break;
      } else if (k == END) {
        if (!first) raise(7);
        break;
      } else {
        syntax_error();
      }
    }
    int32_t end_line = tok().line;
    advance();
    open_select_.pop_back();
    rx_stmt* s = make(RX_SELECT, line);
    s->whens = first;
    s->other = otherwise;
    s->end_line = end_line;
  }

  void parse_leave(int32_t kind) {
    int32_t line = tok().line;
    advance();
    rx_node* e = optional_expr();
    if (e && e->type != SYMBOL && e->type != STRING) raise(28, "LEAVE or ITERATE may only be followed by a SYMBOL.");
    rx_stmt* s = make(kind, line);
    if (e) {
      s->name = e->value;
      s->has_name = true;
    }
  }

  // ON or OFF, a condition, and an optional NAME symbol (SIGNAL ON, CALL ON).
  void on_off(rx_stmt& s, bool syntax_allowed) {
    s.target = &tok();
    advance();
    if (!is_condition(peek(), syntax_allowed)) syntax_error();
    s.operand2 = &tok();
    advance();
    if (peek() == NAME) {
      advance();
      if (peek() != SYMBOL) syntax_error();
      s.name_node = &tok();
      advance();
    }
  }

  void parse_signal() {
    int32_t line = tok().line;
    advance();
    rx_stmt tmp;
    int32_t k = peek();
    if (k == VALUE) {
      advance();
      tmp.form = RX_SIG_VALUE;
      tmp.target = parse_expr();
    } else if (k == ON || k == OFF) {
      tmp.form = RX_SIG_ONOFF;
      on_off(tmp, true);
    } else if (k == STRING || k == SYMBOL) {
      tmp.form = k == STRING ? RX_SIG_STRING : RX_SIG_SYMBOL;
      tmp.target = &tok();
      advance();
    } else {
      syntax_error();
    }
    rx_stmt* s = make(RX_SIGNAL, line);
    tmp.kind = s->kind;
    tmp.line = s->line;
    *s = std::move(tmp);
  }

  void parse_call() {
    int32_t line = tok().line;
    advance();
    int32_t k = peek();
    if (k == ON || k == OFF) {
      rx_stmt tmp;
      tmp.form = RX_CALL_ONOFF;
      on_off(tmp, false);
      rx_stmt* s = make(RX_SIGNAL, line);
      tmp.kind = s->kind;
      tmp.line = s->line;
      *s = std::move(tmp);
      return;
    }
    if (k != SYMBOL && k != STRING && k != FUNCTION && k != SFUNCTION) syntax_error();
    rx_node* name = &tok();
    name->type = (k == STRING || k == SFUNCTION) ? STRING : SYMBOL;
    advance();
    if (k != FUNCTION && k != SFUNCTION && peek() == ' ') advance();
    rx_node* args = call_args();
    rx_stmt* s = make(RX_CALL, line);
    s->target = name;
    s->chain = args;
  }

  // CALL arguments, with or without enclosing parentheses: "(...)" is the list itself only when the clause ends
  // behind its closing parenthesis.
  rx_node* call_args() {
    if (clause_ends()) return nullptr;
    if (peek() == '(') {
      int depth = 0;
      std::size_t j = look_;
      for (; j < toks_.size(); j = index_ahead(j + 1, 0)) {
        int32_t k = toks_[j].type;
        if (k == '(') ++depth;
        else if (k == ')' && --depth == 0) break;
        else if (k == ';' && toks_[j - 1].type != ':') break;
      }
      std::size_t behind = j < toks_.size() ? index_ahead(j + 1, 0) : j;
      int32_t kb = behind < toks_.size() ? toks_[behind].type : end_mark;
      if (j < toks_.size() && toks_[j].type == ')' && (kb == ';' || kb == ELSE || kb == end_mark)) {
        advance();
        rx_node* args = parse_arglist();
        expect(')');
        return args;
      }
    }
    return parse_arglist();
  }

  // Names of DROP, UPPER, LOWER and EXPOSE: SYMBOL or (SYMBOL), separated by blanks.
  rx_node* name_list() {
    rx_node* head = nullptr;
    rx_node** link = &head;
    for (;;) {
      rx_node* item;
      if (peek() == SYMBOL) {
        item = copy_node(tok());
        advance();
      } else if (peek() == '(') {
        advance();
        if (peek() != SYMBOL) syntax_error();
        item = copy_node(tok());
        item->quoted = 2;
        advance();
        expect(')');
      } else {
        syntax_error();
      }
      *link = item;
      link = &item->next;
      if (peek() == ' ') {
        advance();
      } else if (peek() == OP_CONC && kind_ahead(1) == STRING && kind_ahead(2) == OP_CONC) {
        advance();
        advance();
        advance();
      } else {
        return head;
      }
    }
  }

  void parse_name_list(int32_t kind) {
    int32_t line = tok().line;
    armed_ = 20;
    advance();
    rx_node* names = name_list();
    make(kind, line)->chain = names;
  }

  void parse_procedure() {
    int32_t line = tok().line;
    advance();
    rx_node* names = nullptr;
    if (peek() == EXPOSE) {
      advance();
      names = name_list();
    }
    make(RX_PROCEDURE, line)->chain = names;
  }

  // The template behind PARSE, ARG or PULL: the raw tokens up to the ';' or ELSE, linked through `next`; it is
  // read at run time, not parsed here.
  rx_node* take_template() {
    std::size_t j = index_ahead(pos_, 0);
    have_ = false;
    if (j >= toks_.size() || toks_[j].type == ';' || toks_[j].type == ELSE) {
      pos_ = j;
      return nullptr;
    }
    err_line_ = toks_[j].line;
    err_col_ = toks_[j].column;
    rx_node* head = &toks_[j];
    rx_node* last = head;
    for (j = index_ahead(j + 1, 0); j < toks_.size(); j = index_ahead(j + 1, 0)) {
      if (toks_[j].type == ';' || toks_[j].type == ELSE) break;
      last->next = &toks_[j];
      last = &toks_[j];
    }
    last->next = nullptr;
    pos_ = j;
    return head;
  }

  void parse_parse() {
    int32_t line = tok().line;
    advance();
    rx_stmt tmp;
    if (peek() == UPPER) {
      advance();
      tmp.upper = 1;
    }
    armed_ = 25;
    struct source_row {
      int32_t kind, source;
    };
    static constexpr source_row sources[] = {{ARG, RX_SRC_ARG},       {LINEIN, RX_SRC_LINEIN},
                                             {PULL, RX_SRC_PULL},     {SOURCE, RX_SRC_SOURCE},
                                             {VALUE, RX_SRC_VALUE},   {VAR, RX_SRC_VAR},
                                             {VERSION, RX_SRC_VERSION}, {NUMERIC, RX_SRC_NUMERIC}};
    int32_t k = peek();
    const source_row* row = nullptr;
    for (const source_row& r : sources)
      if (r.kind == k) row = &r;
    if (!row) syntax_error();
    tmp.form = row->source;
    advance();
    if (k == VALUE) {
      tmp.expr = parse_expr();
      expect(WITH);
    } else if (k == VAR) {
      if (peek() != SYMBOL) syntax_error();
      tmp.target = &tok();
      advance();
    }
    tmp.chain = take_template();
    rx_stmt* s = make(RX_PARSE, line);
    tmp.kind = s->kind;
    tmp.line = s->line;
    *s = std::move(tmp);
  }

  void parse_address() {
    int32_t line = tok().line;
    advance();
    rx_stmt tmp;
    int32_t k = peek();
    if (clause_ends()) {
      tmp.form = 0;
    } else if (k == ENVIRON) {
      tmp.form = 1;
      tmp.target = &tok();
      advance();
      tmp.expr = optional_expr();
    } else if (k == VALUE) {
      advance();
      tmp.form = 1;
      tmp.target = parse_expr();
    } else {
      syntax_error();
    }
    rx_stmt* s = make(RX_ADDRESS, line);
    tmp.kind = s->kind;
    tmp.line = s->line;
    *s = std::move(tmp);
  }

  void parse_numeric() {
    int32_t line = tok().line;
    armed_ = 25;
    advance();
    int form = 0;
    rx_node* e = nullptr;
    int32_t k = peek();
    if (k == DIGITS || k == FUZZ) {
      advance();
      form = k == DIGITS ? RX_NUM_DIGITS : RX_NUM_FUZZ;
      e = optional_expr();
    } else if (k == FORM) {
      advance();
      int32_t k2 = peek();
      if (k2 == SCIENTIFIC || k2 == ENGINEERING) {
        advance();
        form = k2 == SCIENTIFIC ? RX_NUM_SCIENTIFIC : RX_NUM_ENGINEERING;
      } else if (k2 == VALUE) {
        advance();
        form = RX_NUM_FORM_VALUE;
        e = parse_expr();
      } else {
        syntax_error();
      }
    } else {
      syntax_error();
    }
    rx_stmt* s = make(RX_NUMERIC, line);
    s->form = form;
    s->expr = e;
  }

  void parse_trace() {
    int32_t line = tok().line;
    advance();
    rx_node* operand = nullptr;
    int is_expr = 0;
    int32_t k = peek();
    if (k == SYMBOL || k == STRING) {
      operand = &tok();
      advance();
    } else if (k == VALUE) {
      advance();
      operand = parse_expr();
      is_expr = 1;
    } else if (!clause_ends()) {
      syntax_error();
    }
    rx_stmt* s = make(RX_TRACE, line);
    s->target = operand;
    s->upper = is_expr;
  }

  // OPTION did its work in the lexer; here only its words are checked. It makes no statement.
  void parse_option() {
    armed_ = 20;
    advance();
    if (!is_option_word(peek())) syntax_error();
    while (is_option_word(peek())) advance();
  }

  rx_program& p_;
  rx_tokens& toks_;
  bool outermost_;
  std::size_t pos_ = 0, look_ = 0;
  bool have_ = false;
  int armed_ = 55;
  int32_t err_line_ = 0, err_col_ = 0;
  int depth_ = 0;
  rx_cell* head_ = nullptr;
  rx_cell* tail_ = nullptr;
  rx_block* block_ = nullptr;
  std::vector<int32_t> open_if_, open_do_, open_select_;
};

}  // namespace

int rx_label_hash(std::string_view name) {
  if (name.empty()) return 0;
  int h = static_cast<signed char>(name[0]);
  for (std::size_t i = 1; i <= name.size(); ++i) {
    int byte = i < name.size() ? static_cast<signed char>(name[i]) : 0;
    h = (h * 31 + byte) & 127;
  }
  return h & 127;
}

const rx_label* rx_label_table::find(std::string_view name) const {
  for (const rx_label& l : buckets[static_cast<std::size_t>(rx_label_hash(name))])
    if (l.name == name) return &l;
  return nullptr;
}

bool rx_label_table::add(const std::string& name, const rx_cell& cell) {
  if (find(name)) return false;
  buckets[static_cast<std::size_t>(rx_label_hash(name))].push_back(rx_label{name, cell});
  return true;
}

rx_parse_result rx_parse(rx_program& prog, bool outermost) {
  rx_parse_result r;
  parser ps(prog, outermost);
  try {
    ps.run();
  } catch (const parse_fail& f) {
    r.error = f.number;
    r.line = f.line;
    r.column = f.column;
    r.detail = f.detail;
    rx_st.error.number = f.number;
    rx_st.error.line = f.line;
    rx_st.error.column = f.column;
    rx_st.error.detail = f.detail;
  }
  return r;
}
