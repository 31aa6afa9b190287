// Conditions: SIGNAL ON and CALL ON with their handler names, and the firing of ERROR, FAILURE, NOVALUE and SYNTAX.
#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {

rx_run& R() { return *rx_st.run; }
rx_proc& P() { return *rx_st.run->proc; }

const char* const cond_names[] = {"ERROR", "FAILURE", "HALT", "NOVALUE", "SYNTAX", "NOTREADY"};

int cond_of_token(int32_t kind) {
  switch (kind) {
    case ERROR: return RX_C_ERROR;
    case FAILURE: return RX_C_FAILURE;
    case HALT: return RX_C_HALT;
    case NOVALUE: return RX_C_NOVALUE;
    case SYNTAX: return RX_C_SYNTAX;
    default: return RX_C_NOTREADY;
  }
}

// The handler's label name: the NAME given, or the condition's name spelled by the case mode.
std::string handler_name(int cond) {
  const std::string& n = P().cond_name[static_cast<std::size_t>(cond)];
  return n.empty() ? rx_special(cond_names[cond]) : n;
}

int32_t sigl_line() { return R().interpret_line >= 0 ? R().interpret_line : rx_st.error.line; }

void set_sigl(int32_t line) { rx_assign_name(rx_ctx(), rx_special("SIGL"), rx_value::number(line + 1, 0)); }

// SIGNAL ON: the state goes off and control jumps to the handler label (error 16 when it is missing, or `missing`
// when that is not 0).
[[noreturn]] void signal_to_handler(int cond, int missing = 16, const std::string& missing_detail = {}) {
  rx_proc& p = P();
  std::string name = handler_name(cond);
  p.cond[static_cast<std::size_t>(cond)] = 0;
  p.pending_cond = cond;
  p.cond_how = 1;
  rx_label_hit hit = rx_find_label(name);
  if (!hit.label) rx_raise(missing, nullptr, missing == 16 ? "\"" + name + "\" is missing." : missing_detail);
  R().signal_label = hit.label;
  R().signal_prog = hit.prog;
  throw rx_signal_jump{};
}

// CALL ON: the handler runs through the routine search with no arguments; the condition does not fire again
// while it runs.
// The condition information of the handler's call: the routine's own comes back when the handler returns.
void call_handler(int cond, int32_t line, const std::string& description) {
  rx_proc& p = P();
  p.cond[static_cast<std::size_t>(cond)] = -2;
  struct back_on {
    rx_proc& p;
    int cond;
    int pending, how;
    std::string desc;
    ~back_on() {
      if (p.cond[static_cast<std::size_t>(cond)] == -2) p.cond[static_cast<std::size_t>(cond)] = 2;
      p.pending_cond = pending;
      p.cond_how = how;
      p.cond_desc = std::move(desc);
    }
  } restore{p, cond, p.pending_cond, p.cond_how, p.cond_desc};
  p.pending_cond = cond;
  p.cond_how = 2;
  p.cond_desc = description;
  rx_call_by_name(handler_name(cond), line);
}

void fire(int cond, const std::string& description) {
  rx_proc& p = P();
  int32_t line = sigl_line();
  set_sigl(line);
  if (p.cond[static_cast<std::size_t>(cond)] == 1) {
    p.cond_desc = description;
    signal_to_handler(cond);
  }
  call_handler(cond, line, description);
}

}  // namespace

void rx_exec_on_off(const rx_stmt& s) {
  rx_proc& p = P();
  int cond = cond_of_token(s.operand2->type);
  std::size_t i = static_cast<std::size_t>(cond);
  if (s.target->type == OFF) {
    p.cond[i] = 0;
    p.cond_name[i].clear();
    return;
  }
  p.cond[i] = s.form == RX_CALL_ONOFF ? 2 : 1;
  p.cond_name[i] = s.name_node ? s.name_node->value : std::string();
}

void rx_command_conditions(int32_t result, const std::string& command) {
  rx_proc& p = P();
  int failure = p.cond[RX_C_FAILURE];
  if (result < 0 && failure != 0) {  // FAILURE takes it, unless its CALL ON handler is running (-2)
    if (failure > 0) fire(RX_C_FAILURE, command);
    return;
  }
  if (p.cond[RX_C_ERROR] > 0 && result != 0) fire(RX_C_ERROR, command);
}

void rx_novalue(const std::string& name) {
  rx_proc& p = P();
  int state = p.cond[RX_C_NOVALUE];
  if ((state != 1 && state != 2) || R().interactive) return;
  bool digits = !name.empty();
  for (char c : name) digits = digits && c >= '0' && c <= '9';
  if (digits) return;
  int32_t line = sigl_line();
  std::string message = "\npalom: variable \"" + name + "\" (line " + std::to_string(line + 1) + ") is uninitialized.\n\n";
  set_sigl(line);
  if (state == 1) {
    p.cond_desc = name;
    if (!rx_find_label(handler_name(RX_C_NOVALUE)).label) {
      p.cond[RX_C_NOVALUE] = 0;
      rx_raise(71, nullptr, message);
    }
    rx_output(message);
    signal_to_handler(RX_C_NOVALUE);
  }
  rx_output(message);
  call_handler(RX_C_NOVALUE, line, name);
}

bool rx_syntax_trap(int number) {
  rx_proc& p = P();
  if (p.cond[RX_C_SYNTAX] != 1 || R().interactive) return false;
  p.cond[RX_C_SYNTAX] = 0;
  p.cond_desc = rx_st.error.detail;
  set_sigl(sigl_line());
  rx_assign_name(rx_ctx(), rx_special("RC"), rx_value::number(number, 0));
  if (!rx_st.error.detail.empty()) rx_output("\npalom: " + rx_st.error.detail + "\n");
  signal_to_handler(RX_C_SYNTAX);
}
