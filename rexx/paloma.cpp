// The public face of the interpreter: loading programs from files or memory, and their error reports.
#include "rexx/paloma.h"

#include <fstream>
#include <iterator>
#include <new>

#include "rexx/rx_exec.h"
#include "rexx/rx_parse.h"
#include "rexx/rx_state.h"

struct paloma_program {
  rx_program prog;
};

void paloma_program_free::operator()(paloma_program* p) const { delete p; }

namespace {

std::string report(int number, int32_t line, int32_t column, const rx_program& prog, std::string_view detail) {
  rx_report_place place;
  place.number = number;
  place.line = line;
  place.column = column;
  place.source = prog.source;
  place.file = prog.name;
  place.detail = detail;
  return rx_format_report(place);
}

}  // namespace

void paloma_init() { rx_init(); }

paloma_load paloma_load_string(std::string_view text, std::string_view name) {
  paloma_load out;
  paloma_program_ptr holder(new paloma_program);
  rx_program& prog = holder->prog;
  prog.name = name;
  prog.source = text;

  // A run starts with every OPTION switch unset; the program's own OPTION clauses set them while it is lexed.
  rx_st.sw = rx_switches{};
  rx_lex_result lexed = rx_lex(prog.source, 0, false);
  if (!lexed.ok) {
    out.rc = -2;
    out.error = lexed.error;
    if (lexed.compiled)
      out.message = "palom: " + prog.name + ": compiled program files are not supported yet.\n";
    else
      out.message = report(lexed.error, lexed.error_line, lexed.error_column, prog, {});
    return out;
  }
  rx_settle_switches();
  prog.tokens = std::move(lexed.tokens);
  prog.last_line = lexed.last_line;

  rx_parse_result parsed = rx_parse(prog, true);
  if (parsed.error) {
    out.rc = parsed.error;
    out.error = parsed.error;
    out.message = report(parsed.error, parsed.line, parsed.column, prog, parsed.detail);
    return out;
  }
  out.program = std::move(holder);
  return out;
}

paloma_load paloma_load_file(const std::string& path) {
  paloma_load out;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    out.rc = -1;
    out.message = "palom: unable to open file \"" + path + "\"\n";
    return out;
  }
  std::string text;
  bool read_ok = true;
  try {
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());  // throws for a directory
  } catch (const std::ios_base::failure&) {
    read_ok = false;
  }
  if (!read_ok || in.bad()) {
    out.rc = -1;
    out.message = "palom: unable to read file \"" + path + "\"\n";
    return out;
  }
  return paloma_load_string(text, path);
}

std::string paloma_dump_tree(const paloma_program& p) { return rx_dump_tree(p.prog); }

std::string paloma_dump_tokens(const paloma_program& p) {
  rx_switches saved = rx_st.sw;
  rx_st.sw = rx_switches{};
  rx_lex_result lexed = rx_lex(p.prog.source, 0, false);
  rx_st.sw = saved;
  return rx_token_trace(lexed.tokens);
}

const char* paloma_error_text(int n) { return rx_error_text(n); }

paloma_outcome paloma_run(const paloma_program& p, const std::vector<std::string>& args, std::string_view source) {
  paloma_outcome out;
  rx_run run;
  run.prog = &p.prog;
  run.source_desc = source;
  run.main_pool = std::make_unique<rx_pool>();
  rx_proc main;
  main.pool = run.main_pool.get();
  for (const std::string& a : args) main.args.push_back(rx_arg{a, false});
  // The command string: the program's name and its argument string; a list of several arguments is joined.
  run.command = p.prog.name;
  for (const std::string& a : args) run.command.append(" ").append(a);
  run.command_words = args.size() <= 1;
  run.proc = &main;
  try {
    rx_execute(run);
    out.rc = run.pending == RX_PEND_EXIT ? run.exit_code : 0;
    out.has_result = run.has_result;
    out.result = run.result;
  } catch (const rx_error_exit& e) {
    const rx_program& where = run.err_prog ? *run.err_prog : p.prog;
    rx_report_out(report(e.number, rx_st.error.line, rx_st.error.column, where, rx_st.error.detail));
    out.rc = e.number;
  } catch (const rx_unavailable& u) {
    rx_report_out("palom: " + u.what + " not available yet.\n");
    out.rc = -3;
  } catch (const std::bad_alloc&) {
    rx_report_out("palom: out of memory; the run is ended.\n");
    out.rc = -4;
  } catch (const std::length_error&) {
    rx_report_out("palom: out of memory; the run is ended.\n");
    out.rc = -4;
  }
  rx_output_flush();
  return out;
}

std::string paloma_source_text(std::string_view path) {
  std::size_t slash = path.rfind('/');
  std::string_view dir = slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
  std::string_view file = slash == std::string_view::npos ? path : path.substr(slash + 1);
  std::size_t dot = file.rfind('.');
  std::string_view base = dot == std::string_view::npos || dot == 0 ? file : file.substr(0, dot);
  std::string_view ext = dot == std::string_view::npos || dot == 0 ? std::string_view() : file.substr(dot);
  auto item = [](std::string_view s) { return s.empty() ? std::string("\"\"") : std::string(s); };
  return "LINUX COMMAND " + item(base) + " " + item(ext) + " " + item(dir) + " " + item(base);
}

void paloma_queue_add(std::string line) { rx_queue_add(std::move(line)); }
void paloma_queue_push(std::string line) { rx_queue_push(std::move(line)); }
bool paloma_queue_pull(std::string& line) { return rx_queue_pull(line); }
std::size_t paloma_queue_count() { return rx_queue_size(); }
void paloma_queue_clear() { rx_queue_clear(); }

void paloma_set_variable(std::string_view name, std::string_view value) {
  if (!rx_st.run) return;
  rx_assign_name(rx_ctx(), name, rx_value::string(value));
}

void paloma_set_terminal_hook(void (*hook)()) { rx_set_terminal_hook(hook); }

struct paloma_nest::saved {
  rx_switches sw;
  rx_error_state error;
};

paloma_nest::paloma_nest() : saved_(std::make_unique<saved>(saved{rx_st.sw, rx_st.error})) {}

paloma_nest::~paloma_nest() {
  rx_st.sw = saved_->sw;
  rx_st.error = saved_->error;
}

void paloma_set_poll_hook(bool (*hook)()) { rx_st.poll = hook; }

void paloma_set_dotted_functions(paloma_dotted_fn fn) { rx_st.dotted = fn; }

std::string paloma_variable_text(std::string_view name) {
  if (!rx_st.run) return std::string(name);
  rx_var_ctx c = rx_ctx();
  rx_node sym = rx_symbol_of(name, c.case_mode);
  if (const rx_value* v = rx_get(c, sym)) {
    std::string buf;
    return std::string(rx_text_of(*v, buf, nullptr));
  }
  return rx_default_text(c, sym);
}
