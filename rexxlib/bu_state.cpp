// Built-ins that give the language's state as text (NUMERIC settings, error texts, the platform) and DATATYPE.
#include <cmath>

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

rx_value bu_arg(bu_call& c) {
  bu_count(c, 0, 2);
  const std::vector<rx_arg>& args = rx_st.run->proc->args;
  if (!c.has(0)) {
    if (c.has(1)) bu_error(c, 0, "ARG(): argument 1 missing.");
    return bu_whole(static_cast<long long>(args.size()));
  }
  long n = bu_int(c, 0, 1, 0);
  if (n == 0) throw rx_unavailable{"ARG(0), the program's command string,"};
  auto i = static_cast<std::size_t>(n - 1);
  bool exists = i < args.size() && !args[i].omitted;
  if (!c.has(1)) return rx_value::string(exists ? args[i].text : std::string());
  std::string_view o = c.str(1, 1);
  char k = o.empty() ? ' ' : static_cast<char>(is_upper(static_cast<unsigned char>(o[0])) ? o[0] + 32 : o[0]);
  if (k == 'e') return bu_whole(exists ? 1 : 0);
  if (k == 'o') return bu_whole(exists ? 0 : 1);
  if (k == 'c' || k == 'x') throw rx_unavailable{"ARG(n,'c') and ARG(n,'x'), the program's command line,"};
  bu_error(c, 1, "ARG(): argument 2 must be \"e\", \"o\" , \"c\" or \"x\"");
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
