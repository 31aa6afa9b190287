// PALOMA, the REXX interpreter: the one header through which the editor, palom and the built-ins reach it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A program read and parsed, ready to run; owns its source, tokens and tree.
struct paloma_program;
struct paloma_program_free {
  void operator()(paloma_program* p) const;
};
using paloma_program_ptr = std::unique_ptr<paloma_program, paloma_program_free>;

// Outcome of loading a program. rc: 0 parsed; -1 the file cannot be opened or read; -2 a lexical error (or a
// compiled program file, whose reader is not available yet); otherwise the number of the syntax error.
struct paloma_load {
  int rc = 0;
  int error = 0;                // the language's error number, 0 if none
  std::string message;          // what the user is shown: the error report or the "palom: ..." line
  paloma_program_ptr program;   // set when rc is 0
};

// Reset the interpreter's program-wide state (switches, current error).
void paloma_init();

// Read, lex and parse a program file; `name` in reports is the path as given.
paloma_load paloma_load_file(const std::string& path);
// Lex and parse a program held in memory; `name` is what reports call the file. The OPTION switches start
// unset, as at the start of a run, and are settled once the text is lexed.
paloma_load paloma_load_string(std::string_view text, std::string_view name);

// Outcome of a run. rc: EXIT's code, 0 at the end of the program, the error number of a run-time error, -3 when
// the program used something not available yet, -4 when memory ran out.
struct paloma_outcome {
  int rc = 0;
  bool has_result = false;  // EXIT gave a value
  std::string result;       // its text
};

// Run a loaded program with its arguments. SAY writes to standard output, reports go to standard error; the queue
// and standard input feed PULL. `source` is what PARSE SOURCE gives.
paloma_outcome paloma_run(const paloma_program& prog, const std::vector<std::string>& args, std::string_view source);
// The PARSE SOURCE text of a program run from the command line: "LINUX COMMAND name .ext dir/ called".
std::string paloma_source_text(std::string_view path);

// The compact printed form of a loaded program's tree (statements, labels, line table).
std::string paloma_dump_tree(const paloma_program& prog);
// The token trace of a loaded program: its source lexed again, one "lex: type = ..." line per finished token.
std::string paloma_dump_tokens(const paloma_program& prog);

// An ADDRESS environment of a host: the handler runs one command and returns its result, which becomes RC.
// A row of the same name is replaced; a null handler removes the row. make_current makes it the environment
// that runs start in.
using paloma_env_handler = int (*)(std::string_view command, void* user);
void paloma_register_environment(std::string_view name, paloma_env_handler handler, bool make_current, void* user);

// While alive, keeps the process-wide state of a running program (its OPTION switches and error state) so that
// a program started from inside it (a host command that runs another program) leaves the outer run as it was.
class paloma_nest {
 public:
  paloma_nest();
  ~paloma_nest();
  paloma_nest(const paloma_nest&) = delete;
  paloma_nest& operator=(const paloma_nest&) = delete;

 private:
  struct saved;
  std::unique_ptr<saved> saved_;
};

// The host's poll, asked before each clause of a program; when it answers true the run ends at once, with -1 as
// its return code (a user interrupting a macro). Null removes it.
void paloma_set_poll_hook(bool (*hook)());

// The host's answer to a function whose name holds a dot, such as size.1(), that no label or built-in answers:
// given the name as called and the first argument, true with the function's value; false lets the search go on.
using paloma_dotted_fn = bool (*)(std::string_view name, std::string_view arg, std::string& result);
void paloma_set_dotted_functions(paloma_dotted_fn fn);
// The text of a variable of the running program's current pool (its name folded by the case mode); an unset
// variable gives its own name, as in an expression.
std::string paloma_variable_text(std::string_view name);

// A hook that runs before a program writes to standard output or standard error, or reads standard input, so that a
// host holding a full screen can first give the terminal back. Null removes it.
void paloma_set_terminal_hook(void (*hook)());

// Sets a variable of the running program's current pool (the name folded by its case mode, as an assignment
// would); for a host answering its program, as EXTRACT does.
void paloma_set_variable(std::string_view name, std::string_view value);

// The program stack that PUSH, QUEUE and PULL work on, shared by every run and by the host (the editor runs its
// lines as commands): add puts a line at the tail, push at the head, pull takes the head of the current buffer.
void paloma_queue_add(std::string line);
void paloma_queue_push(std::string line);
bool paloma_queue_pull(std::string& line);
std::size_t paloma_queue_count();
// Empties the stack and drops its buffers.
void paloma_queue_clear();

// The fixed text of error n (1 to 98), "" for unused numbers.
const char* paloma_error_text(int n);
