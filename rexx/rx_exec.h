// The execution engine: the state of a run, the statement walker, expression evaluation and the engine's seams.
#pragma once

#include <array>
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
// A jump to a condition handler (SIGNAL ON, or a SYNTAX error under SIGNAL ON SYNTAX): rx_run.signal_label is set;
// the walker of the current routine catches it and restarts there.
struct rx_signal_jump {};
// EXIT inside a function called from an expression: the rest of the expression is not evaluated; the run ends
// with the code and result already recorded in rx_run.
struct rx_exit_jump {};
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

// Conditions, in the order of the condition table.
enum : int { RX_C_ERROR = 0, RX_C_FAILURE, RX_C_HALT, RX_C_NOVALUE, RX_C_SYNTAX, RX_C_NOTREADY, RX_C_NONE };

// The activation record of a routine. The main program's record has no caller.
struct rx_proc {
  std::array<int, 6> cond{};              // 0 off, 1 SIGNAL ON, 2 CALL ON, -2 a CALL ON handler is running
  std::array<std::string, 6> cond_name;   // handler names, empty for the default
  int env = 0, env_prev = 0;              // current and previous ADDRESS environment (rows of rx_st.envs)
  int pending_cond = RX_C_NONE;           // the condition that fired last, for CONDITION()
  std::string cond_desc;                  // its description (the command, the variable name)
  int cond_how = 0;                       // how it was handled: 1 SIGNAL, 2 CALL
  std::string last_command;
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
  const rx_program* signal_prog = nullptr;  // the program (main or added file) the label belongs to
  rx_value ret;                             // RETURN's value, when ret_has
  bool ret_has = false;
  const rx_program* cur_prog = nullptr;     // the program (main or added file) of the running routine
  const rx_program* err_prog = nullptr;     // the program where the last error was raised
  std::vector<std::unique_ptr<rx_program>> added;           // external routine files added to the run
  uint64_t label_gen = 0;  // names the run's set of labels (0: not yet given); new for each run and added file
  bool interactive = false;                 // a line typed in interactive trace is running
  int trace_skip = 0, trace_count = 0;      // interactive trace: clauses to run without pausing, and run since
  int trace_quiet = 0;                      // clauses whose trace output is suppressed (TRACE -n)
  int trace_indent = 4;                     // blanks in front of detail lines, set by the last clause line
  bool pause_end = false;                   // a TRACE typed in a pause ends it
  int32_t exit_code = 0;
  bool has_result = false;
  std::string result;
  std::string source_desc;  // PARSE SOURCE
  std::string command;        // the program's command string: its name, then the argument string, if any
  bool command_words = true;  // the arguments came as that string (not as a list of their own)
  const char* stack_base = nullptr;
  std::ptrdiff_t stack_extra = 0;  // stack granted beyond the budget to a SYNTAX handler of a too-deep nesting
  std::string_view cur_source;  // text of the running program or INTERPRET string (for reports)
  bool cur_interpreted = false;
  int32_t interpret_line = -1;  // program line of the outermost INTERPRET running, -1 when none
};

// Native stack the interpreter may use before nesting is refused (INTERPRET, expressions, blocks).
constexpr std::ptrdiff_t rx_stack_budget = 4 * 1024 * 1024;

// Run a parsed program from its first statement, as rx_st.run for its duration; fills run.exit_code/result. Errors escape as rx_error_exit
// or rx_unavailable.
void rx_execute(rx_run& run);

// The walker of a routine from `start`: SIGNAL restarts it; LEAVE or ITERATE that reach it are error 28; a RETURN
// stays pending for the caller.
void rx_run_routine(const rx_cell* start);
// Run a text as INTERPRET does, for the clause at line/column (its errors are reported, then raised there).
void rx_interpret_text(std::string text, int32_t line, int32_t column);
// Run one statement list (a block) to its end or a pending unwind.
void rx_run_list(const rx_cell* c);

// A label of the run (main program or an added file) and the program it belongs to; label null when missing.
struct rx_label_hit {
  const rx_label* label = nullptr;
  const rx_program* prog = nullptr;
};
rx_label_hit rx_find_label(std::string_view name);

// Call the routine `name` (a SYMBOL or STRING node) with an argument chain, by the routine search. Returns whether
// it gave a value (in `out`). Error 43 when it is not found.
bool rx_call_routine(const rx_node* name, const rx_node* args, rx_value& out);
// The built-in function library, offered by whoever links it: called with the routine's name node and its
// argument chain for a name no label answers; returns false when it has no such function, else gives `out`.
using rx_builtin_fn = bool (*)(const rx_node* name, const rx_node* args, rx_value& out);
void rx_set_builtins(rx_builtin_fn fn);
// Call a routine by name with no arguments (CALL ON handlers); its result is ignored.
void rx_call_by_name(const std::string& name, int32_t line);
// CALL: the call, then RESULT set or dropped.
void rx_exec_call(const rx_stmt& s);
// EXIT: the run's code and result text, and the unwind to the end of the run.
void rx_exec_exit(const rx_stmt& s);
// RETURN: its value pending for the caller, or EXIT with no caller.
void rx_exec_return(const rx_stmt& s);
// Host commands (and SAYX), ADDRESS and backquote expressions.
void rx_exec_command(const rx_stmt& s);
void rx_exec_address(const rx_stmt& s);
std::string rx_backquote(std::string_view command, const rx_node* at);
// RC, RESULT, SIGL and the default handler names spelled by the case mode.
std::string rx_special(const char* upper);
// SIGNAL ON / CALL ON / their OFF forms.
void rx_exec_on_off(const rx_stmt& s);
// A host command's result against ERROR and FAILURE.
void rx_command_conditions(int32_t result, const std::string& command);
// An unset variable under NOVALUE: fires the condition (may not return); `name` is the derived name.
void rx_novalue(const std::string& name);
// Raise error `number` through SIGNAL ON SYNTAX when it is on (does not return then); false when it is off.
bool rx_syntax_trap(int number);

// TRACE: the instruction, the clause line before a statement, detail lines, and the pause of interactive trace.
void rx_exec_trace(const rx_stmt& s);
void rx_trace_clause(const rx_stmt& s);
bool rx_tracing(int bits);
void rx_trace_detail(std::string_view prefix_and_text);
void rx_trace_after_command(const rx_stmt& s, const std::string& command, int32_t result, bool shown_before);
bool rx_trace_pause(const rx_cell* c);
// The TRACE setting of the running routine as letters ("E", "?R", "O"), as the TRACE function gives it.
std::string rx_trace_letters();
// Change the setting as TRACE VALUE does, for the TRACE function; false (nothing changed) when the value holds a
// character that is no setting.
bool rx_trace_set(std::string_view value);
// An operator's spelling in detail lines ("" for one that has none).
const char* rx_trace_op(rx_op op);

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

// Seams to the outside: program output, error reports, input lines, and the queue with its buffers.
void rx_output(std::string_view bytes);
// A host hook called before the program writes to the terminal or reads from it (null: none).
void rx_set_terminal_hook(void (*hook)());
void rx_output_flush();
void rx_report_out(std::string_view report);
// One line of input without its terminator; false at the end of the input.
bool rx_read_line(std::string& line);
void rx_queue_push(std::string line);   // to the head (PUSH)
void rx_queue_add(std::string line);    // to the tail (QUEUE)
bool rx_queue_pull(std::string& line);  // from the head; false when empty
std::size_t rx_queue_size();  // lines of the current buffer (QUEUED(), SENTRIES)
void rx_queue_clear();
// The queue commands MAKEBUF, DROPBUF [n], DESBUF and SENTRIES: true with their RC when `word` (lower case) is
// one of them; `rest` is the text behind the word.
bool rx_queue_command(std::string_view word, std::string_view rest, int32_t* rc);
// GLOBALV, offered by the function library when it is linked: called as rx_queue_command is, for a command to
// the default environment, before the system runs it.
using rx_command_hook = bool (*)(std::string_view word, std::string_view rest, int32_t* rc);
inline rx_command_hook rx_globalv_hook = nullptr;
