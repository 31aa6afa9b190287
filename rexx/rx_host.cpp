// Host commands: the ADDRESS environments and their table, commands with RC, SAYX, and backquote expressions.
#include <cstdlib>
#include <cstring>

#include "os/os_file.h"
#include "os/os_process.h"
#include "rexx/paloma.h"
#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {

rx_run& R() { return *rx_st.run; }
rx_proc& P() { return *rx_st.run->proc; }

// Commands that the function library answers before a process is started and that are not available yet (the
// queue commands are answered by the queue).
const char* const library_commands[] = {"execio", "globalv"};

std::string first_word_lower(std::string_view cmd) {
  std::size_t i = 0;
  while (i < cmd.size() && cmd[i] == ' ') ++i;
  std::string w;
  for (; i < cmd.size() && cmd[i] != ' '; ++i) w += static_cast<char>(cmd[i] >= 'A' && cmd[i] <= 'Z' ? cmd[i] + 32 : cmd[i]);
  return w;
}

// The process environments: the command runs through the system shell, /bin/sh -c, with this process's
// environment; `user` names a variable whose value is put in front for the named shells.
int32_t process_env(std::string_view command, void* user) {
  std::string word = first_word_lower(command);
  int32_t queue_rc = 0;
  std::size_t at = command.find_first_not_of(' ');
  std::string_view rest = at == std::string_view::npos ? std::string_view() : command.substr(at + word.size());
  if (rx_queue_command(word, rest, &queue_rc)) return queue_rc;
  if (rx_globalv_hook && rx_globalv_hook(word, rest, &queue_rc)) return queue_rc;
  for (const char* name : library_commands)
    if (word == name && !(word == "globalv" && rx_st.sw.globalv == 1))
      throw rx_unavailable{"the " + word + " command"};
  std::string cmd(command);
  if (user)
    if (const char* shell = std::getenv(static_cast<const char*>(user))) cmd = std::string(shell) + " " + cmd;
  while (!cmd.empty() && cmd.back() == ' ') cmd.pop_back();
  bool background = !cmd.empty() && cmd.back() == '&';
  rx_output_flush();
  int rc = os_run_shell(cmd);  // sh itself puts a trailing "&" in the background and ends at once
  if (rc < 0) {
    rx_output("Unable to create process; Error is: \"" + os_strerror(-rc) + "\"\n");
    return 28;
  }
  return background ? 0 : rc;
}

rx_env env_row(const char* name, const char* shell_var) {
  return rx_env{name, process_env, const_cast<char*>(shell_var)};
}

int find_env(std::string_view name) {
  for (std::size_t i = 0; i < rx_st.envs.size(); ++i)
    if (rx_st.envs[i].name == name) return static_cast<int>(i);
  return -1;
}

int32_t run_in(int env, const std::string& command) {
  const rx_env& e = rx_st.envs[static_cast<std::size_t>(env)];
  return e.fn(command, e.user);
}

// One host command in environment `env`: trace, run, RC and the conditions.
void host_command(const rx_stmt& s, const std::string& command, int env) {
  rx_proc& p = P();
  bool shown = (p.trace & (0x01 | 0x04 | 0x20 | 0x40 | 0x80 | 0x200)) != 0;
  if (shown) rx_trace_detail(">>> \"" + command + "\"");
  int32_t result = 0;
  if (!(p.trace & 0x200)) result = run_in(env, command);
  rx_trace_after_command(s, command, result, shown);
  p.last_command = command;
  rx_var_ctx c = rx_ctx();
  if (R().interactive) {
    rx_assign_name(c, rx_special("RC") + "_D", rx_value::number(result, 0));
    return;
  }
  rx_assign_name(c, rx_special("RC"), rx_value::number(result, 0));
  rx_command_conditions(result, command);
}

std::string upper_ascii(std::string s) {
  for (char& c : s)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return s;
}

std::string eval_text(const rx_node* n) {
  rx_value t;
  std::string buf;
  return std::string(rx_text_of(rx_eval(n, t), buf, n));
}

}  // namespace

std::vector<rx_env> rx_default_envs() {
  return {env_row("WINDOWS", nullptr), env_row("UNIX", nullptr), env_row("EXEC", nullptr), env_row("SH", "SH"),
          env_row("KSH", "KSH"),       env_row("CSH", "CSH"),     env_row("TCSH", "TCSH")};
}

void paloma_register_environment(std::string_view name, paloma_env_handler handler, bool make_current, void* user) {
  int at = find_env(name);
  if (!handler) {
    if (at >= 0) rx_st.envs.erase(rx_st.envs.begin() + at);
    int n = static_cast<int>(rx_st.envs.size());
    if (rx_st.env_start >= n) rx_st.env_start = 0;
    for (rx_proc* p = rx_st.run ? rx_st.run->proc : nullptr; p; p = p->caller) {
      if (p->env >= n) p->env = 0;
      if (p->env_prev >= n) p->env_prev = 0;
    }
    return;
  }
  rx_env row{std::string(name), handler, user};
  if (at >= 0) {
    rx_st.envs[static_cast<std::size_t>(at)] = row;
  } else {
    rx_st.envs.push_back(row);
    at = static_cast<int>(rx_st.envs.size()) - 1;
  }
  if (make_current) rx_st.env_start = at;
}

void rx_exec_command(const rx_stmt& s) {
  if (s.kind == RX_SAYX && !s.expr) {
    rx_output("\n");
    return;
  }
  std::string command = eval_text(s.expr);
  if (s.kind == RX_SAYX && !(P().trace & (0x01 | 0x04 | 0x20 | 0x40 | 0x80 | 0x200))) rx_output(command + "\n");
  host_command(s, command, P().env);
}

void rx_exec_address(const rx_stmt& s) {
  rx_proc& p = P();
  if (s.form == 0) {
    std::swap(p.env, p.env_prev);
    return;
  }
  int env;
  if (s.target->type == ENVIRON) {
    env = find_env(s.target->value);
    if (env < 0) rx_raise(56, s.target);
  } else {
    std::string value = eval_text(s.target);
    env = find_env(upper_ascii(value));
    if (env < 0) rx_raise(56, s.target, "Expression evaluates to \"" + value + "\".");
  }
  if (s.expr) return host_command(s, eval_text(s.expr), env);
  p.env_prev = p.env;
  p.env = env;
}

std::string rx_backquote(std::string_view command, const rx_node* at) {
  rx_output_flush();
  std::string raw;
  bool truncated = false;
  int rc = os_run_capture(command, raw, rx_max_string, &truncated);
  if (truncated) rx_check_length(rx_max_string + 1, at);
  if (rc < 0) {
    if (rc == -EMFILE || rc == -ENFILE) rx_raise(58, at);
    return "\nShell \"" + std::string(command) + "\" exiting with return status = 28  (Not found)";
  }
  // Lines at line feeds, a carriage return at a line's end dropped, a last line of a single 0x1A dropped, joined
  // by single line feeds with none at the end.
  std::string out;
  out.reserve(raw.size());
  std::size_t i = 0;
  bool first = true;
  while (i < raw.size()) {
    std::size_t j = raw.find('\n', i);
    bool last = j == std::string::npos;
    std::string_view line(raw.data() + i, (last ? raw.size() : j) - i);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    bool final_line = last || j + 1 == raw.size();
    if (!(final_line && line == "\x1a")) {
      if (!first) out += '\n';
      out.append(line);
      first = false;
    }
    if (last) break;
    i = j + 1;
  }
  return out;
}
