// Token kinds and the token record rx_node, which is also the leaf and operator node of the program tree.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_value.h"

// Token kinds. A single-character token has its byte as kind; named kinds start at 258. These numbers are also
// stored in compiled program files, so they never change.
enum rx_kind : int32_t {
  RX_NOLEX = -2,  // a token that later stages skip
  RX_EXPR = -3,   // an operator node of the tree (kind of rx_node, and operand kind in rx_fx)
  SYMBOL = 258, STRING, VIDE,
  ADDRESS = 261, ARG, BY, CALL, DIGITS, DO, DROP, ELSE, END, ENGINEERING, EXIT, EXPOSE, FOR, FOREVER, FORM, FUZZ, IF,
  INTERPRET, ITERATE, LEAVE, LINEIN, NOP, NUMERIC, OFF, ON, OTHERWISE, PARSE, PROCEDURE, PULL, PUSH, QUEUE, RETURN,
  SAY, SAYN, SAYX, SAYR, SCIENTIFIC, SELECT, SIGNAL, SOURCE, THEN, TO, TRACE, UNTIL, UPPER, VALUE, VAR, VERSION, WHILE,
  WITH, WHEN, ERROR, FAILURE, HALT, NOVALUE, SYNTAX, TEMPLATE, ENVIRON, LOWER, CD, FUNCTION, NAME, NOTREADY,
  SFUNCTION, IN, OPTION, MIXED, SETENV, UNSETENV, LOAD, NOLOAD,
  OP_XOR = 332, OP_IINF_EQ, OP_INF_EQ, OP_SSUP_EQ, OP_SUP_EQ, OP_IINF, OP_SSUP, OP_NNEQ, OP_NEQ, OP_EEQ, OP_CONC,
  OP_REMAIN, OP_EXP, OP_RHO, OP_NEQIC, OP_EQIC, OP_NOT,
  GLOBALV = 349, NOGLOBALV = 350,
};
static_assert(SELECT == 298 && THEN == 301 && WHEN == 311 && TEMPLATE == 317 && LOWER == 319 && IN == 325 &&
              NOLOAD == 331 && OP_CONC == 342 && OP_NOT == 348);

constexpr bool rx_is_keyword_kind(int32_t k) { return (k >= ADDRESS && k <= NOLOAD) || k == GLOBALV || k == NOGLOBALV; }
constexpr bool rx_is_operator_kind(int32_t k) { return k >= OP_XOR && k <= OP_NOT; }

// The name of a kind as the token trace prints it ("SYMBOL", "OP_CONC", "';'").
std::string rx_kind_name(int32_t kind);

struct rx_node;
struct rx_fx;
struct rx_var;

// A token, or a node of an expression. `value` is the text (has_value false for punctuation); for a symbol with a
// dot, `stem_key` is the text before the first dot plus "+", and `parts` its pieces between dots.
struct rx_node {
  int32_t type = 0;
  std::string value;
  bool has_value = false;
  std::vector<std::string> parts;
  std::string stem_key;
  int32_t line = 0, column = 0;  // 0-based
  int32_t quoted = 0;            // 1 quoted string, 2 indirect name in a name list, else 0
  rx_fx* expr = nullptr;         // operator record of an expression node
  rx_node* next = nullptr;       // link of argument lists, name lists and templates
  // Run-time caches, filled on first use: the hash of a simple symbol's name; the value of a string constant.
  mutable uint64_t hash = 0;
  mutable uint64_t slot_pool = 0;  // a simple symbol's slot in the pool of that id (slots live as long as pools)
  mutable rx_var* slot = nullptr;  // a compound symbol keeps its stem key's slot here instead
  mutable uint64_t key_hash = 0;   // hash of `stem_key`
  // Per part of a compound symbol: the hash of its name (for the first part, the running hash of the name's
  // start, `parts[0]` and its dot) and, for a tail, its slot in the pool of that id.
  struct tail_cache {
    uint64_t hash = 0;
    uint64_t pool = 0;
    rx_var* slot = nullptr;
  };
  mutable std::vector<tail_cache> tails;
  mutable rx_value cval;
  mutable bool cval_ready = false;
  // Caches of a routine's name node at a call site: the built-in table row found for it (-2 not looked up yet,
  // -1 none) under case mode `call_mode`; the label generation of the run in which no label answered it; whether
  // its arguments can be read in place (0 not known yet, 1 yes: no calls or commands among them, 2 no).
  mutable int32_t call_row = -2;
  mutable int32_t call_mode = -1;
  mutable uint64_t call_nolabel_gen = 0;
  mutable int8_t call_args_pure = 0;

  std::size_t len() const { return value.size(); }
};

// Routines of operator nodes; the engine binds each to its evaluation routine. Keep parallel to the name table
// in rx_token.cpp (checked there by a static_assert).
enum class rx_op : int32_t {
  fx_or, fx_xor, fx_and, fx_sup, fx_inf, fx_supeq, fx_infeq, fx_ssup, fx_iinf, fx_ssupeq, fx_iinfeq, fx_neq,
  fx_nneq, fx_eq, fx_eeq, fx_bl, fx_conc, fx_plus, fx_min, fx_mult, fx_div, fx_idiv, fx_rem, fx_exp, fx_conc_rho,
  fx_eqic, fx_neqic, fx_conc_not, fx_uplus, fx_umin, fx_not, fx_rho, fx_backq, fx_br, fx_br2, fx_func,
  count_
};
const char* rx_op_name(rx_op op);

// One operand of an operator record. kind RX_EXPR or SYMBOL: `node`; STRING: `text` is a ready view of the token's
// bytes (not copied per evaluation); RX_NOLEX: absent.
struct rx_operand {
  int32_t kind = RX_NOLEX;
  rx_node* node = nullptr;
  std::string_view text;
};

// Evaluation routine, bound by the engine; null until then.
using rx_eval_fn = int (*)(rx_fx*, void*);

// Operator record: arity 1 unary, 2 binary, 3 function call (name in `name_node`, arguments from `args`),
// 4 subscript (value, first and second index in operands 0..2).
struct rx_fx {
  int32_t arity = 0;
  rx_op op = rx_op::fx_plus;
  rx_eval_fn eval = nullptr;
  const char* name = nullptr;
  rx_operand operand[3];
  rx_node* name_node = nullptr;
  rx_node* args = nullptr;
};
