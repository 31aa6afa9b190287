// Routine calls: the routine search (labels, external files), internal calls with their activation records,
// CALL and RETURN, external program files added to the run or run as a separate palom process.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "os/os_file.h"
#include "os/os_path.h"
#include "os/os_process.h"
#include "rexx/rx_exec.h"
#include "rexx/rx_lex.h"
#include "rexx/rx_parse.h"
#include "rexx/rx_state.h"

namespace {

rx_run& R() { return *rx_st.run; }

// The function library, set once by the program that links it (none: built-in names go on to the external search).
rx_builtin_fn builtins = nullptr;
rx_proc& P() { return *rx_st.run->proc; }

// Whether a name is looked for among the labels: a word, or a string that looks like a path.
bool label_search(const rx_node* name) {
  const std::string& s = name->value;
  return name->type == SYMBOL || (!s.empty() && (s[0] == '.' || s[0] == '/' || s[0] == '~')) ||
         (s.size() >= 2 && s[1] == ':');
}

// The arguments as text, in order, with the caller's state; an omitted one is empty and marked; a single omitted
// argument counts as none.
std::vector<rx_arg> eval_args(const rx_node* chain) {
  std::vector<rx_arg> out;
  for (const rx_node* a = chain; a; a = a->next) {
    if (a->type == VIDE) {
      out.push_back(rx_arg{{}, true});
      continue;
    }
    rx_value t;
    std::string buf;
    out.push_back(rx_arg{std::string(rx_text_of(rx_eval(a, t), buf, a)), false});
  }
  if (out.size() == 1 && out[0].omitted) out.clear();
  return out;
}

// The line a SIGL names for the clause running now: a program line, also from inside INTERPRET.
int32_t clause_line() { return R().interpret_line >= 0 ? R().interpret_line : rx_st.error.line; }

// The activation record of a call, pushed for its life; the caller's record and the run's position come back
// when it ends, however it ends.
class call_frame {
 public:
  call_frame(std::vector<rx_arg> args, const rx_program* prog) : r_(R()), caller_(P()) {
    rx_check_stack();
    self_.cond = caller_.cond;
    self_.cond_name = caller_.cond_name;
    self_.env = caller_.env;
    self_.env_prev = caller_.env_prev;
    self_.numeric = caller_.numeric;
    self_.pool = caller_.pool;
    self_.args = std::move(args);
    self_.trace = caller_.trace;
    // The condition that the caller is handling stays visible (CONDITION()) in what it calls; the callee's own
    // changes end with it.
    self_.pending_cond = caller_.pending_cond;
    self_.cond_desc = caller_.cond_desc;
    self_.cond_how = caller_.cond_how;
    self_.caller = &caller_;
    saved_prog_ = r_.cur_prog;
    saved_source_ = r_.cur_source;
    saved_interpreted_ = r_.cur_interpreted;
    saved_interpret_line_ = r_.interpret_line;
    r_.proc = &self_;
    r_.cur_prog = prog;
    r_.cur_source = prog->source;
    r_.cur_interpreted = false;
    r_.interpret_line = -1;
  }
  ~call_frame() {
    caller_.trace = (caller_.trace & ~0x400) | (self_.trace & 0x400);  // the debugger's bit survives a routine
    r_.proc = &caller_;
    r_.cur_prog = saved_prog_;
    r_.cur_source = saved_source_;
    r_.cur_interpreted = saved_interpreted_;
    r_.interpret_line = saved_interpret_line_;
  }
  call_frame(const call_frame&) = delete;
  call_frame& operator=(const call_frame&) = delete;

 private:
  rx_run& r_;
  rx_proc& caller_;
  rx_proc self_;
  const rx_program* saved_prog_;
  std::string_view saved_source_;
  bool saved_interpreted_;
  int32_t saved_interpret_line_;
};

// Run the routine behind a label with its arguments; true with `out` when it returned a value.
bool run_internal(const rx_label_hit& hit, std::vector<rx_arg> args, rx_value& out) {
  rx_run& r = R();
  {
    call_frame frame(std::move(args), hit.prog);
    rx_run_routine(&hit.label->cell);
  }
  if (r.pending != RX_PEND_RETURN) return false;  // fell off the end (or EXIT, which passes on)
  r.pending = RX_PEND_NONE;
  if (!r.ret_has) return false;
  r.ret_has = false;
  out = std::move(r.ret);
  return true;
}

// ---- external routine files ----

std::string lower(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return s;
}

bool syntax_trapped() { return P().cond[RX_C_SYNTAX] == 1; }

void warn(const std::string& text) {
  if (!syntax_trapped()) rx_output(text);
}

// A program file as a routine: an extension .plm, or a first line "#!..." naming palom further on.
bool valid_program(const std::string& path, const std::string& text) {
  if (path.size() >= 4 && path.compare(path.size() - 4, 4, ".plm") == 0) return true;
  if (text.compare(0, 2, "#!") != 0) return false;
  std::size_t eol = text.find('\n');
  return text.substr(2, eol == std::string::npos ? std::string::npos : eol - 2).find("palom") != std::string::npos;
}

// Try one candidate: true when it is taken (its text in `text`). `any` accepts a file with no checks of content.
bool try_file(const std::string& path, bool any, std::string& text) {
  if (os_file_kind(path) != os_kind::regular) return false;
  text.clear();
  if (os_read_file(path, text) != 0) {
    warn("palom: warning: unable to open file \"" + path + "\"\n");
    return false;
  }
  return any || valid_program(path, text);
}

// The file of an external routine, or "" when there is none. `text` receives its content.
std::string find_external(const rx_node* name_node, std::string& text) {
  std::string name = name_node->type == SYMBOL ? lower(name_node->value) : name_node->value;
  for (char& c : name)
    if (c == '\\') c = '/';
  if (name.empty()) return {};
  bool path_form = name[0] == '/' || name[0] == '~' || name[0] == '.' || (name.size() >= 3 && name[1] == ':');
  if (path_form) {
    std::string path = name;
    if (path[0] == '~') {
      const char* home = std::getenv("HOME");
      path = std::string(home ? home : "") + path.substr(1);
    }
    if (os_file_kind(path) != os_kind::regular) return {};
    text.clear();
    if (os_read_file(path, text) != 0) {
      warn("palom: warning: unable to open file \"" + path + "\"\n");
      return {};
    }
    if (!valid_program(path, text)) {
      warn("palom: warning: file " + path + " is not a valid \"palom\" file\n");
      return {};
    }
    return path;
  }
  std::vector<std::string> dirs{"."};
  if (const char* p = std::getenv("PATH")) {
    std::string all = p;
    for (std::size_t i = 0; i <= all.size();) {
      std::size_t j = all.find(':', i);
      if (j == std::string::npos) j = all.size();
      if (j > i && all[i] == '/') dirs.push_back(all.substr(i, j - i));
      i = j + 1;
    }
  }
  bool has_ext = name.size() >= 4 && name.compare(name.size() - 4, 4, ".plm") == 0;
  for (const std::string& d : dirs) {
    std::string path = d + "/" + name;
    if (try_file(path, false, text)) return path;
    if (!has_ext && try_file(path + ".plm", true, text)) return path + ".plm";
  }
  return {};
}

// Report a lexical or syntax error of an added file the way the run reports its own.
[[noreturn]] void added_file_error(const rx_program& prog, int number, int32_t line, int32_t column,
                                   const std::string& detail, const rx_node* call) {
  if (!syntax_trapped()) {
    rx_report_place place;
    place.number = number;
    place.line = line;
    place.column = column;
    place.source = prog.source;
    place.file = prog.name;
    place.detail = detail;
    rx_report_out(rx_format_report(place));
  }
  rx_raise(number, call);
}

// Add a file to the run: its own tokens and tree, with a label spelled as the call names it at its top.
rx_label_hit add_file(const std::string& path, std::string text, const rx_node* name_node) {
  auto prog = std::make_unique<rx_program>();
  prog->name = path;
  if (text.compare(0, 2, "#!") == 0) {  // the interpreter line is no REXX; its line number stays
    std::size_t eol = text.find('\n');
    text.erase(0, eol == std::string::npos ? text.size() : eol);
  }
  prog->source = std::move(text);
  rx_switches saved = rx_st.sw;
  rx_lex_result lexed = rx_lex(prog->source, 0, false);
  rx_st.sw = saved;  // the run's OPTION switches are the main program's
  if (!lexed.ok) added_file_error(*prog, lexed.error, lexed.error_line, lexed.error_column, {}, name_node);
  prog->tokens = std::move(lexed.tokens);
  prog->last_line = lexed.last_line;
  rx_stmt& entry = prog->stmts.emplace_back();
  entry.kind = RX_LABEL;
  entry.name = name_node->value;
  entry.has_name = true;
  rx_cell& first = prog->cells.emplace_back();
  first.stmt = &entry;
  prog->labels.add(name_node->value, first);
  rx_parse_result parsed = rx_parse(*prog, true);
  if (parsed.error) added_file_error(*prog, parsed.error, parsed.line, parsed.column, parsed.detail, name_node);
  // The entry label was entered first; the file's statements follow it.
  const rx_label* label = prog->labels.find(name_node->value);
  const_cast<rx_label*>(label)->cell.next = prog->head;
  R().added.push_back(std::move(prog));
  R().label_gen = 0;  // new labels: call sites look again
  return rx_label_hit{label, R().added.back().get()};
}

std::string hex_of(std::string_view s) {
  static const char digits[] = "0123456789abcdef";
  std::string out;
  out.reserve(s.size() * 2);
  for (unsigned char c : s) {
    out += digits[c >> 4];
    out += digits[c & 15];
  }
  return out;
}

std::string shell_quoted(std::string_view s) {
  std::string out = "'";
  for (char c : s) {
    if (c == '\'') out += "'\\''";
    else out += c;
  }
  return out + "'";
}

// Under NOLOAD: run the file in a palom process of its own through the current environment.
int32_t run_noload(const std::string& path, const std::vector<rx_arg>& args) {
  for (std::size_t i = 0; i < args.size(); ++i) os_set_env("palom_ARG" + std::to_string(i), hex_of(args[i].text));
  os_set_env("palom_NB_ARGS", std::to_string(args.size()));
  std::string exe = "palom";
  if (auto self = os_self_exe()) {
    std::size_t slash = self->rfind('/');
    exe = (slash == std::string::npos ? std::string() : self->substr(0, slash + 1)) + "palom";
  }
  std::string cmd = "\"" + exe + "\" \"" + path + "\"";
  // The texts behind the path are for the eye (the child reads palom_ARG0...); quoted, so that the shell that
  // runs the command takes none of their bytes as its own syntax.
  for (std::size_t i = 0; i < args.size(); ++i) cmd += (i == 0 ? " " : ",") + shell_quoted(args[i].text);
  const rx_env& env = rx_st.envs[static_cast<std::size_t>(P().env)];
  int32_t rc = env.fn(cmd, env.user);
  os_unset_env("palom_NB_ARGS");
  return rc;
}

struct call_result {
  bool found = false;
  bool has_value = false;
};

call_result call_external(const rx_node* name_node, const rx_node* args, rx_value& out) {
  std::string text;
  std::string path = find_external(name_node, text);
  if (path.empty()) return {};
  if (rx_st.sw.load == 1) {
    int32_t rc = run_noload(path, eval_args(args));
    out = rx_value::number(rc, 0);
    return call_result{true, true};
  }
  rx_label_hit hit;
  for (const auto& done : R().added)  // a file added before, called by a name the labels do not answer
    if (done->name == path && (hit.label = done->labels.find(name_node->value))) hit.prog = done.get();
  if (!hit.label) hit = add_file(path, std::move(text), name_node);
  rx_assign_name(rx_ctx(), rx_special("SIGL"), rx_value::number(clause_line() + 1, 0));
  return call_result{true, run_internal(hit, eval_args(args), out)};
}

// The run's label generation: names the set of labels that a call site saw none answer its name.
uint64_t label_generation() {
  static uint64_t last = 0;
  rx_run& r = R();
  if (r.label_gen == 0) r.label_gen = ++last;
  return r.label_gen;
}

call_result search_and_call(const rx_node* name, const rx_node* args, rx_value& out) {
  // A built-in's call site remembers that no label answered it, so that the label table is searched once.
  if (label_search(name) && name->call_nolabel_gen != label_generation()) {
    rx_label_hit hit = rx_find_label(name->value);
    if (!hit.label) name->call_nolabel_gen = label_generation();
    if (hit.label) {
      if (hit.label->cell.stmt->block)
        rx_raise(54, name, "The label \"" + name->value + "\" is nested within a control structure.");
      rx_assign_name(rx_ctx(), rx_special("SIGL"), rx_value::number(clause_line() + 1, 0));
      std::vector<rx_arg> a = eval_args(args);
      return call_result{true, run_internal(hit, std::move(a), out)};
    }
  }
  if (builtins && builtins(name, args, out)) return call_result{true, true};
  if (rx_st.dotted && name->value.find('.') != std::string::npos) {
    std::vector<rx_arg> a = eval_args(args);
    std::string result;
    if (rx_st.dotted(name->value, a.empty() ? std::string_view() : std::string_view(a[0].text), result)) {
      out = rx_value::string(result);
      return call_result{true, true};
    }
  }
  return call_external(name, args, out);
}

}  // namespace

void rx_set_builtins(rx_builtin_fn fn) { builtins = fn; }

rx_label_hit rx_find_label(std::string_view name) {
  rx_run& r = R();
  if (const rx_label* l = r.prog->labels.find(name)) return rx_label_hit{l, r.prog};
  for (const auto& p : r.added)
    if (const rx_label* l = p->labels.find(name)) return rx_label_hit{l, p.get()};
  return {};
}

std::string rx_special(const char* upper) {
  std::string s = upper;
  if (rx_st.sw.case_mode == 0 || rx_st.sw.case_mode == 2)
    for (char& c : s)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return s;
}

bool rx_call_routine(const rx_node* name, const rx_node* args, rx_value& out) {
  call_result got = search_and_call(name, args, out);
  if (!got.found) {
    rx_output("\npalom: \"" + name->value + "\" routine not found.\n");
    rx_raise(43, name);
  }
  return got.has_value;
}

void rx_call_by_name(const std::string& name, int32_t line) {
  rx_node n;
  n.type = SYMBOL;
  n.value = name;
  n.has_value = true;
  n.line = line;
  rx_value ignored;
  rx_call_routine(&n, nullptr, ignored);
}

void rx_exec_call(const rx_stmt& s) {
  rx_value v;
  bool has = rx_call_routine(s.target, s.chain, v);
  if (R().pending) return;  // EXIT (or an unwind) from inside the routine
  rx_var_ctx c = rx_ctx();
  if (has) {
    rx_assign_name(c, rx_special("RESULT"), std::move(v));
  } else {
    rx_node sym = rx_symbol_of(rx_special("RESULT"), 1);
    rx_drop(c, sym);
  }
}

void rx_exec_return(const rx_stmt& s) {
  rx_run& r = R();
  if (!P().caller) {
    // RETURN with no caller acts as EXIT.
    rx_stmt exit = s;
    exit.kind = RX_EXIT;
    return rx_exec_exit(exit);
  }
  r.ret_has = false;
  if (s.expr) {
    r.ret = rx_eval_owned(s.expr);
    r.ret_has = true;
  }
  r.pending = RX_PEND_RETURN;
}
