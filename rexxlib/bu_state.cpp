// Built-ins that give the language's state as text (NUMERIC settings, error texts, the platform) and DATATYPE.
#include <cmath>

#include "os/os_term.h"
#include "rexx/rx_errors.h"
#include "rexx/rx_state.h"
#include "rexxlib/bu_frame.h"

namespace {

const rx_numeric& numeric() {
  static const rx_numeric defaults;
  return rx_st.run ? rx_st.run->proc->numeric : defaults;
}

bool all_of(std::string_view s, bool (*test)(unsigned char)) {
  if (s.empty()) return false;
  for (unsigned char ch : s)
    if (!test(ch)) return false;
  return true;
}

bool is_lower(unsigned char ch) { return ch >= 'a' && ch <= 'z'; }
bool is_upper(unsigned char ch) { return ch >= 'A' && ch <= 'Z'; }
bool is_letter(unsigned char ch) { return is_lower(ch) || is_upper(ch); }
bool is_alnum(unsigned char ch) { return is_letter(ch) || (ch >= '0' && ch <= '9'); }
bool is_bit(unsigned char ch) { return ch == '0' || ch == '1'; }
bool is_symbol_char(unsigned char ch) {
  return is_alnum(ch) || ch == '@' || ch == '#' || ch == '$' || ch == '.' || ch == '!' || ch == '?' || ch == '_' ||
         ch == 0xA8;
}

// A hexadecimal string as X2C takes it: digits in groups with single blanks between, none at either end.
bool is_hex(std::string_view s) {
  if (s.empty()) return true;
  if (s.front() == ' ' || s.back() == ' ') return false;
  for (unsigned char ch : s)
    if (!(ch == ' ' || (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F'))) return false;
  return true;
}

bool is_whole_at_digits(std::string_view s) {
  double x = 0;
  int32_t dec = 0;
  if (!rx_is_number(s, &x, &dec)) return false;
  int digits = numeric().digits;
  double r = rx_round(x, digits);
  return rx_is_whole(r) && std::fabs(r) < std::pow(10.0, digits);
}

}  // namespace

rx_value bu_datatype(bu_call& c) {
  bu_count(c, 1, 2);
  std::string_view s = c.str(0, 0);
  double x = 0;
  int32_t dec = 0;
  if (!c.has(1)) return rx_value::string(!s.empty() && rx_is_number(s, &x, &dec) ? "NUM" : "CHAR");
  std::string_view t = c.str(1, 1);
  char k = t.empty() ? ' ' : static_cast<char>(is_lower(static_cast<unsigned char>(t[0])) ? t[0] - 32 : t[0]);
  bool yes = false;
  switch (k) {
    case 'A': yes = all_of(s, is_alnum); break;
    case 'B': yes = all_of(s, is_bit); break;
    case 'L': yes = all_of(s, is_lower); break;
    case 'M': yes = all_of(s, is_letter); break;
    case 'N': yes = !s.empty() && rx_is_number(s, &x, &dec); break;
    case 'S': yes = all_of(s, is_symbol_char); break;
    case 'U': yes = all_of(s, is_upper); break;
    case 'W': yes = !s.empty() && is_whole_at_digits(s); break;
    case 'X': yes = is_hex(s); break;
    default: bu_error(c, 1, "DATATYPE(): argument 2 must start with A|B|L|N|S|U|W|X.");
  }
  return bu_whole(yes ? 1 : 0);
}

rx_value bu_digits(bu_call& c) {
  bu_count(c, 0, 0);
  return bu_whole(numeric().digits);
}

rx_value bu_fuzz(bu_call& c) {
  bu_count(c, 0, 0);
  return bu_whole(numeric().fuzz);
}

rx_value bu_form(bu_call& c) {
  bu_count(c, 0, 0);
  return rx_value::string(numeric().form ? "ENGINEERING" : "SCIENTIFIC");
}

rx_value bu_errortext(bu_call& c) {
  bu_count(c, 1, 1);
  bool num = c.v[0].kind == RX_NUM || rx_to_number(c.v[0]);
  double n = num ? bu_round(c.v[0].num, 9) : 0;
  if (!num || n < 1 || n > 99 || n != std::floor(n))
    bu_error(c, 0, "ERRORTEXT(): argument 1 must be a strictly positive integer lower than 100.");
  return rx_value::string(rx_error_text(static_cast<int>(n)));
}

rx_value bu_arch(bu_call& c) {
  bu_count(c, 0, 0);
  return rx_value::string("wnt");
}

rx_value bu_version(bu_call& c) {
  bu_count(c, 0, 0);
  return rx_value::string("windows");
}

rx_value bu_address(bu_call& c) {
  bu_count_msg(c, 0, 0, "no argument allowed.");
  if (!rx_st.run) return rx_value::string("");
  return rx_value::string(rx_st.envs[static_cast<std::size_t>(rx_st.run->proc->env)].name);
}

namespace {

// Word n of the program's command string: 0 is the program's name, 1 the first word behind it; blanks and tabs
// separate words.
std::string command_word(std::string_view cmd, long n) {
  std::size_t i = 0;
  for (long w = 0;; ++w) {
    while (i < cmd.size() && (cmd[i] == ' ' || cmd[i] == '\t')) ++i;
    if (i == cmd.size()) return {};
    std::size_t j = i;
    while (j < cmd.size() && cmd[j] != ' ' && cmd[j] != '\t') ++j;
    if (w == n) return std::string(cmd.substr(i, j - i));
    i = j;
  }
}

}  // namespace

rx_value bu_arg(bu_call& c) {
  bu_count(c, 0, 2);
  const rx_run& run = *rx_st.run;
  const std::vector<rx_arg>& args = run.proc->args;
  if (!c.has(0)) {
    if (c.has(1)) bu_error(c, 0, "ARG(): argument 1 missing.");
    return bu_whole(static_cast<long long>(args.size()));
  }
  long n = bu_int(c, 0, 1, 0);
  auto i = static_cast<std::size_t>(n > 0 ? n - 1 : 0);
  bool exists = n == 0 || (i < args.size() && !args[i].omitted);
  if (!c.has(1)) {
    if (n == 0) return rx_value::string(run.command);
    return rx_value::string(exists ? args[i].text : std::string());
  }
  std::string_view o = c.str(1, 1);
  char k = o.empty() ? ' ' : static_cast<char>(is_upper(static_cast<unsigned char>(o[0])) ? o[0] + 32 : o[0]);
  if (k == 'e') return bu_whole(exists ? 1 : 0);
  if (k == 'o') return bu_whole(exists ? 0 : 1);
  if (k != 'c' && k != 'x') bu_error(c, 1, "ARG(): argument 2 must be \"e\", \"o\" , \"c\" or \"x\"");
  // The command line belongs to the program: a routine has only its arguments.
  if (run.proc->caller) bu_error(c, 1, "ARG(): argument 2 must be \"e\" or \"o\"");
  if (k == 'c' || run.command_words) return rx_value::string(command_word(run.command, n));
  return rx_value::string(n == 0 ? run.command : exists ? args[i].text : std::string());
}

namespace {

const char* const condition_names[] = {"ERROR", "FAILURE", "HALT", "NOVALUE", "SYNTAX", "NOTREADY"};

// The lines of a program's text: line n (from 1), or the count when n is 0.
std::size_t line_count(std::string_view src) {
  if (src.empty()) return 0;
  std::size_t n = 0;
  for (char ch : src)
    if (ch == '\n') ++n;
  return src.back() == '\n' ? n : n + 1;
}

std::string_view nth_line(std::string_view src, std::size_t n) {
  std::size_t at = 0;
  for (std::size_t k = 1; k < n; ++k) at = src.find('\n', at) + 1;
  std::size_t end = src.find('\n', at);
  std::string_view line = src.substr(at, end == std::string_view::npos ? std::string_view::npos : end - at);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

}  // namespace

rx_value bu_condition(bu_call& c) {
  bu_count_msg(c, 0, 1, "up to 1 argument.");
  char k = 'I';
  if (c.has(0)) {
    std::string_view o = c.str(0);
    k = o.empty() ? ' ' : static_cast<char>(is_lower(static_cast<unsigned char>(o[0])) ? o[0] - 32 : o[0]);
    if (k != 'C' && k != 'I' && k != 'D' && k != 'S') bu_error(c, 0, "CONDITION(): argument must be C|I|D|S.");
  }
  const rx_proc& p = *rx_st.run->proc;
  if (p.pending_cond < 0 || p.pending_cond >= RX_C_NONE) return rx_value::string("");
  switch (k) {
    case 'C': return rx_value::string(condition_names[p.pending_cond]);
    case 'D': return rx_value::string(p.cond_desc);
    case 'S': {
      int state = p.cond[static_cast<std::size_t>(p.pending_cond)];
      return rx_value::string(state == -2 ? "DELAY" : state == 0 ? "OFF" : "ON");
    }
    default: return rx_value::string(p.cond_how == 2 ? "CALL" : "SIGNAL");
  }
}

rx_value bu_sourceline(bu_call& c) {
  bu_count_msg(c, 0, 1, "up to 1 argument.");
  const rx_run& run = *rx_st.run;
  std::string_view src = run.cur_prog ? run.cur_prog->source : run.prog->source;
  std::size_t count = line_count(src);
  if (!c.has(0)) return bu_whole(static_cast<long long>(count));
  auto n = static_cast<std::size_t>(bu_int(c, 0, 2, 1));
  if (n > count)
    bu_error(c, 0, "SOURCELINE(): argument 1 must not exceed the program's " + std::to_string(count) + " lines.");
  return rx_value::string(nth_line(src, n));
}

rx_value bu_trace(bu_call& c) {
  bu_count_msg(c, 0, 1, "up to 1 argument.");
  rx_value old = rx_value::string(rx_trace_letters());
  if (c.has(0)) {
    std::string setting(c.str(0));
    if (!rx_trace_set(setting)) bu_error(c, 0, "TRACE(): Invalid \"" + setting + "\" trace setting.");
  }
  return old;
}

namespace {

bool symbol_chars(std::string_view s) {
  if (s.empty()) return false;
  for (unsigned char ch : s)
    if (!(is_alnum(ch) || ch == '@' || ch == '#' || ch == '$' || ch == '.' || ch == '!' || ch == '?' || ch == '_'))
      return false;
  return true;
}

}  // namespace

bool bu_valid_symbol(std::string_view s) { return symbol_chars(s) && s[0] != '.' && !(s[0] >= '0' && s[0] <= '9'); }

rx_value bu_symbol(bu_call& c) {
  bu_count(c, 1, 1);
  std::string name(c.str(0));
  if (!symbol_chars(name)) return rx_value::string("BAD");
  if (!bu_valid_symbol(name)) return rx_value::string("LIT");
  rx_var_ctx ctx = rx_ctx();
  rx_node sym = rx_symbol_of(name, ctx.case_mode);
  return rx_value::string(rx_get(ctx, sym) ? "VAR" : "LIT");
}

rx_value bu_value(bu_call& c) {
  bu_count(c, 1, 2);
  std::string name(c.str(0));
  if (!bu_valid_symbol(name)) bu_error(c, 0, "VALUE(): \"" + name + "\" is not a valid REXX symbol.");
  rx_var_ctx ctx = rx_ctx();
  rx_node sym = rx_symbol_of(name, ctx.case_mode);
  const rx_value* now = rx_get(ctx, sym);
  rx_value old = now ? *now : rx_value::string(rx_default_text(ctx, sym));
  if (c.has(1)) rx_assign(ctx, sym, std::move(c.v[1]));
  return old;
}

rx_value bu_linesize(bu_call& c) {
  bu_count(c, 0, 0);
  return bu_whole(os_tty_columns());
}

rx_value bu_externals(bu_call& c) {
  bu_count(c, 0, 0);
  return bu_whole(os_tty_pending());
}
