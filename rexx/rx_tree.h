// The program tree: statement lists of rx_stmt, expression nodes, the label table and the line table.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "rexx/rx_lex.h"

struct rx_stmt;

// A cell of a statement list. The last cell of every list is empty (both null): the next statement goes there.
struct rx_cell {
  rx_stmt* stmt = nullptr;
  rx_cell* next = nullptr;
};

// An open block (body of DO, THEN, ELSE, WHEN, OTHERWISE): the enclosing list's tail cell, which will hold the
// block's own statement, and its head; `below` is the block around it.
struct rx_block {
  rx_cell* tail = nullptr;
  rx_cell* head = nullptr;
  rx_block* below = nullptr;
};

// Statement kinds.
enum rx_stmt_kind : int32_t {
  RX_COMMAND = 0, RX_ASSIGN = 1, RX_IF = 2, RX_SAY = 3, RX_DO = 4, RX_LEAVE = 5, RX_ITERATE = 6, RX_SELECT = 7,
  RX_LABEL = 8, RX_EXIT = 9, RX_RETURN = 10, RX_SIGNAL = 11, RX_CALL = 12, RX_PUSH = 13, RX_QUEUE = 14,
  RX_PROCEDURE = 15, RX_PARSE = 16, RX_ADDRESS = 17, RX_DROP = 18, RX_INTERPRET = 19, RX_NUMERIC = 20,
  RX_SAYN = 21, RX_UPPER = 22, RX_LOWER = 23, RX_LINK = 24, RX_TRACE = 25, RX_CD = 26, RX_SAYX = 27,
  RX_SAYR = 29,
};

// DO loop forms and test forms.
enum : int32_t { RX_DO_COUNT = 7, RX_DO_FOREVER = 8, RX_DO_CONTROLLED = 9, RX_DO_SIMPLE = 10, RX_DO_IN = 11 };
enum : int32_t { RX_TEST_WHILE = 4, RX_TEST_UNTIL = 5, RX_TEST_NONE = 6 };
// SIGNAL forms.
enum : int32_t { RX_SIG_STRING = 0, RX_SIG_SYMBOL = 1, RX_SIG_ONOFF = 2, RX_SIG_VALUE = 3, RX_CALL_ONOFF = 4 };
// PARSE sources.
enum : int32_t {
  RX_SRC_ARG = 0, RX_SRC_LINEIN, RX_SRC_PULL, RX_SRC_SOURCE, RX_SRC_VALUE, RX_SRC_VAR, RX_SRC_VERSION, RX_SRC_NUMERIC
};
// NUMERIC forms.
enum : int32_t { RX_NUM_DIGITS = 0, RX_NUM_SCIENTIFIC, RX_NUM_ENGINEERING, RX_NUM_FORM_VALUE, RX_NUM_FUZZ };

// A WHEN of a SELECT.
struct rx_when {
  int32_t line = 0, column = 0;
  rx_node* cond = nullptr;
  rx_cell* body = nullptr;
  rx_when* next = nullptr;
};

// The mark of an open slice end (`x[i:]`, `x[:j]`) in an assignment's index fields.
extern rx_node rx_open_end;

/* A statement: the common head (kind, 0-based line of its first token) and the fields its kind uses.
     COMMAND, SAY*, EXIT, RETURN, PUSH, QUEUE, CD, INTERPRET: expr (may be null where optional).
     ASSIGN: target, expr (null: empty), index1, index2 (null, expression, or &rx_open_end).
     IF: expr (condition), body (THEN list), other (ELSE list or null).
     DO: form, expr (count or initial value), to, by, for_, test_form, test, target (control symbol), body,
         order[] (1 TO, 2 BY, 3 FOR as written) with order_count, end_line.
     LEAVE, ITERATE: name (has_name false: none).
     SELECT: whens, other (OTHERWISE list or null), end_line.
     LABEL: name, block (the open block it stands in, null at top level).
     SIGNAL (and CALL ON/OFF): form, target (first operand), operand2, name_node (NAME symbol).
     CALL: target (name token, SYMBOL or STRING), chain (arguments).
     PROCEDURE, DROP, UPPER, LOWER: chain (names; quoted 2 marks an indirect "(name)").
     PARSE: upper, form (source), target (VAR symbol) or expr (VALUE), chain (template tokens, null if none).
     ADDRESS: form (0 bare, 1 with environment), target (ENVIRON token or expression), expr (command or null).
     NUMERIC: form, expr.  TRACE: target (operand or null), upper (1: operand is an expression). */
struct rx_stmt {
  int32_t kind = 0;
  int32_t line = 0;
  int32_t column = 0;  // of the clause's first token
  int32_t form = 0;
  int32_t upper = 0;
  rx_node* expr = nullptr;
  rx_node* target = nullptr;
  rx_node* operand2 = nullptr;
  rx_node* name_node = nullptr;
  rx_node* index1 = nullptr;
  rx_node* index2 = nullptr;
  rx_node* to = nullptr;
  rx_node* by = nullptr;
  rx_node* for_ = nullptr;
  int32_t test_form = RX_TEST_NONE;
  rx_node* test = nullptr;
  rx_node* chain = nullptr;
  rx_cell* body = nullptr;
  rx_cell* other = nullptr;
  rx_when* whens = nullptr;
  rx_block* block = nullptr;
  std::array<int32_t, 3> order{};
  int32_t order_count = 0;
  int32_t end_line = 0;
  std::string name;
  bool has_name = false;
  // What the engine prepares once for a statement (a PARSE template's elements), owned with the tree.
  mutable std::shared_ptr<const void> prepared;
};

// The label table: 128 buckets, each a chain of entries in the order labels were entered.
struct rx_label {
  std::string name;
  rx_cell cell;  // a copy of the label's list cell: control continues there
};
struct rx_label_table {
  std::array<std::vector<rx_label>, 128> buckets;
  // The entry of `name`, or null.
  const rx_label* find(std::string_view name) const;
  // Enter a label; false (and nothing changes) when the name is there already.
  bool add(const std::string& name, const rx_cell& cell);
};
int rx_label_hash(std::string_view name);

// A parsed program. It owns its tokens and every node, record and cell of the tree; pointers stay valid for its
// whole life.
struct rx_program {
  rx_program() = default;
  rx_program(const rx_program&) = delete;  // the tree points into the tokens and pools
  rx_program& operator=(const rx_program&) = delete;

  std::string name;
  std::string source;
  rx_tokens tokens;
  int32_t last_line = 0;
  rx_cell* head = nullptr;
  rx_label_table labels;
  std::vector<int32_t> line_table;

  std::deque<rx_node> nodes;
  std::deque<rx_fx> fxs;
  std::deque<rx_stmt> stmts;
  std::deque<rx_cell> cells;
  std::deque<rx_when> whens;
  std::deque<rx_block> blocks;
};

// The compact printed form of a program: one statement a line, blocks indented, then the labels and line table.
std::string rx_dump_tree(const rx_program& prog);
// One expression in the same notation.
std::string rx_dump_expr(const rx_node* node);
