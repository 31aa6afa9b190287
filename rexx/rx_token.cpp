// Names of token kinds and operator routines, and the interpreter family's state.
#include "rexx/rx_token.h"

#include <array>

#include "rexx/rx_state.h"

namespace {

// Names of the kinds 258..350, in kind order.
constexpr std::array<const char*, 93> kind_names = {
    "SYMBOL", "STRING", "VIDE", "ADDRESS", "ARG", "BY", "CALL", "DIGITS", "DO", "DROP", "ELSE", "END",
    "ENGINEERING", "EXIT", "EXPOSE", "FOR", "FOREVER", "FORM", "FUZZ", "IF", "INTERPRET", "ITERATE", "LEAVE",
    "LINEIN", "NOP", "NUMERIC", "OFF", "ON", "OTHERWISE", "PARSE", "PROCEDURE", "PULL", "PUSH", "QUEUE", "RETURN",
    "SAY", "SAYN", "SAYX", "SAYR", "SCIENTIFIC", "SELECT", "SIGNAL", "SOURCE", "THEN", "TO", "TRACE", "UNTIL",
    "UPPER", "VALUE", "VAR", "VERSION", "WHILE", "WITH", "WHEN", "ERROR", "FAILURE", "HALT", "NOVALUE", "SYNTAX",
    "TEMPLATE", "ENVIRON", "LOWER", "CD", "FUNCTION", "NAME", "NOTREADY", "SFUNCTION", "IN", "OPTION", "MIXED",
    "SETENV", "UNSETENV", "LOAD", "NOLOAD", "OP_XOR", "OP_IINF_EQ", "OP_INF_EQ", "OP_SSUP_EQ", "OP_SUP_EQ",
    "OP_IINF", "OP_SSUP", "OP_NNEQ", "OP_NEQ", "OP_EEQ", "OP_CONC", "OP_REMAIN", "OP_EXP", "OP_RHO", "OP_NEQIC",
    "OP_EQIC", "OP_NOT", "GLOBALV", "NOGLOBALV"};
static_assert(kind_names.size() == NOGLOBALV - SYMBOL + 1, "one name per named kind");

// Parallel to enum rx_op.
constexpr std::array<const char*, static_cast<std::size_t>(rx_op::count_)> op_names = {
    "fx_or", "fx_xor", "fx_and", "fx_sup", "fx_inf", "fx_supeq", "fx_infeq", "fx_ssup", "fx_iinf", "fx_ssupeq",
    "fx_iinfeq", "fx_neq", "fx_nneq", "fx_eq", "fx_eeq", "fx_bl", "fx_conc", "fx_plus", "fx_min", "fx_mult",
    "fx_div", "fx_idiv", "fx_rem", "fx_exp", "fx_conc_rho", "fx_eqic", "fx_neqic", "fx_conc_not", "fx_uplus",
    "fx_umin", "fx_not", "fx_rho", "fx_backq", "fx_br", "fx_br2", "fx_func"};
static_assert(op_names.size() == 36, "one name per operator routine");

}  // namespace

std::string rx_kind_name(int32_t kind) {
  if (kind >= SYMBOL && kind <= NOGLOBALV) return kind_names[static_cast<std::size_t>(kind - SYMBOL)];
  if (kind == RX_NOLEX) return "NOLEX";
  if (kind == RX_EXPR) return "EXPR";
  if (kind == ' ') return "BLANK";
  if (kind >= 33 && kind < 127) return std::string("'") + static_cast<char>(kind) + "'";
  return "BYTE_" + std::to_string(kind);
}

const char* rx_op_name(rx_op op) { return op_names[static_cast<std::size_t>(op)]; }

rx_state rx_st;

void rx_init() { rx_st = rx_state{}; }

void rx_settle_switches() {
  if (rx_st.sw.case_mode == 3) rx_st.sw.case_mode = 1;
  if (rx_st.sw.setenv == 2) rx_st.sw.setenv = 1;
  if (rx_st.sw.load == 2) rx_st.sw.load = 0;
}
