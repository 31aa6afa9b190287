// The execution engine: the state of a run, the statement walker, expression evaluation and the engine's seams.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_tree.h"
#include "rexx/rx_value.h"
#include "rexx/rx_vars.h"

// A run-time error: number in the exception, detail and position in rx_st.error. Unwinds to the run or to the
// INTERPRET around it.
struct rx_error_exit {
  int number;
};
// A feature that is not available yet: ends the run with a message and return code -3.
struct rx_unavailable {
  std::string what;
};

// Pending unwinds, looked at by the walker after every statement.
enum : int32_t { RX_PEND_NONE = 0, RX_PEND_LEAVE, RX_PEND_ITERATE, RX_PEND_SIGNAL, RX_PEND_EXIT, RX_PEND_RETURN };

// One argument of a routine: its text, or omitted.
struct rx_arg {
  std::string text;
  bool omitted = false;
};

// The activation record of a routine. The main program's record has no caller.
struct rx_proc {
  rx_numeric numeric;
  rx_pool* pool = nullptr;
  std::unique_ptr<rx_pool> own_pool;  // set by PROCEDURE in a called routine
  bool procedure_done = false;
  std::vector<rx_arg> args;
  int interpret_depth = 0;
  int trace = 0x02;
  rx_proc* caller = nullptr;
};

// The state of one run.
struct rx_run {
  const rx_program* prog = nullptr;
  rx_proc* proc = nullptr;
  std::unique_ptr<rx_pool> main_pool;
  int32_t pending = RX_PEND_NONE;
  std::string pend_name;  // LEAVE/ITERATE name
  bool pend_has_name = false;
  int32_t pend_line = 0, pend_column = 0;
  const rx_label* signal_label = nullptr;
  int32_t exit_code = 0;
  bool has_result = false;
  std::string result;
  std::string source_desc;  // PARSE SOURCE
  const char* stack_base = nullptr;
  std::string_view cur_source;  // text of the running program or INTERPRET string (for reports)
  bool cur_interpreted = false;
  int32_t interpret_line = -1;  // program line of the outermost INTERPRET running, -1 when none
};

// Native stack the interpreter may use before nesting is refused (INTERPRET, expressions, blocks).
constexpr std::ptrdiff_t rx_stack_budget = 4 * 1024 * 1024;

// Run a parsed program from its first statement, as rx_st.run for its duration; fills run.exit_code/result. Errors escape as rx_error_exit
// or rx_unavailable.
void rx_execute(rx_run& run);

// Variable context of the current routine.
rx_var_ctx rx_ctx();
// Raise error `number` at a node's position (or the current one when null), with an optional detail.
[[noreturn]] void rx_raise(int number, const rx_node* at = nullptr, std::string detail = {});
// Refuse nesting deeper than the native stack budget.
void rx_check_stack();

// Longest string a value may hold (its length is a 32-bit count).
constexpr std::size_t rx_max_string = 0x7FFFFFFF;
// Refuse a string of `n` bytes beyond that limit: error 5 at `at`.
void rx_check_length(std::size_t n, const rx_node* at);

// Evaluate an expression node: the result is either `tmp` or a value owned elsewhere (a variable, a constant),
// valid until the next change of variables.
const rx_value& rx_eval(const rx_node* n, rx_value& tmp);
// Evaluate to an owned value.
rx_value rx_eval_owned(const rx_node* n);
// Text of a value under the current NUMERIC settings; error 42 at `at` for positive infinity.
std::string_view rx_text_of(const rx_value& v, std::string& buf, const rx_node* at);
// A value's logical 0 or 1 (rounded to DIGITS); -1 when it is neither.
int rx_logical(const rx_value& v);
// A whole number after rounding to `digits`; false when the value is no number or has a fraction.
bool rx_whole(const rx_value& v, int digits, double* out);
// Statement kinds of PARSE (the template engine).
void rx_exec_parse(const rx_stmt& s);
// Assign a slice x[i], x[i:j], x[i:], x[:j].
void rx_assign_slice(const rx_stmt& s);

// Seams to the outside: program output, error reports, input lines, and the queue (a small one for now).
void rx_output(std::string_view bytes);
void rx_output_flush();
void rx_report_out(std::string_view report);
// One line of input without its terminator; false at the end of the input.
bool rx_read_line(std::string& line);
void rx_queue_push(std::string line);   // to the head (PUSH)
void rx_queue_add(std::string line);    // to the tail (QUEUE)
bool rx_queue_pull(std::string& line);  // from the head; false when empty
std::size_t rx_queue_size();
void rx_queue_clear();
