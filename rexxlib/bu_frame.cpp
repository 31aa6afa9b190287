// The built-in function frame: the table of all built-ins, its hash search per case mode, and the argument helpers.
#include "rexxlib/bu_frame.h"

#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <utility>

#include "rexx/rx_state.h"

namespace {

// The table, in its order. A null handler is a function that is not available yet.
const bu_row table[] = {
    {"ActivateKeyboardLayout", nullptr},
    {"GetAdaptersInfo", nullptr},
    {"SHGetKnownFolderPath", nullptr},
    {"SetPriority", nullptr},
    {"dy_clip", nullptr},
    {"dy_folder", nullptr},
    {"service_create", nullptr},
    {"service_delete", nullptr},
    {"service_stop", nullptr},
    {"service_start", nullptr},
    {"service_status", nullptr},
    {"registry_get", nullptr},
    {"registry_del", nullptr},
    {"registry_keys", nullptr},
    {"registry_values", nullptr},
    {"registry_set", nullptr},
    {"abbrev", bu_abbrev},
    {"abs", bu_abs},
    {"acos", bu_acos},
    {"address", bu_address},
    {"arch", bu_arch},
    {"arg", bu_arg},
    {"asin", bu_asin},
    {"askcons", nullptr},
    {"atan", bu_atan},
    {"b2x", bu_b2x},
    {"bitand", bu_bitand},
    {"bitor", bu_bitor},
    {"bitxor", bu_bitxor},
    {"c2d", bu_c2d},
    {"c2o", bu_c2o},
    {"c2x", bu_c2x},
    {"center", bu_center},
    {"centre", bu_center},
    {"change", bu_change},
    {"charin", nullptr},
    {"charout", nullptr},
    {"chars", nullptr},
    {"chdir", nullptr},
    {"close_cons", nullptr},
    {"cls", nullptr},
    {"clear", nullptr},
    {"compare", bu_compare},
    {"concat", nullptr},
    {"condition", bu_condition},
    {"copies", bu_copies},
    {"copy", nullptr},
    {"cos", bu_cos},
    {"cp", nullptr},
    {"iousage", nullptr},
    {"cpuusage", nullptr},
    {"netusage", nullptr},
    {"csh", nullptr},
    {"cuserid", nullptr},
    {"cvtails", nullptr},
    {"cwd", nullptr},
    {"d2c", bu_d2c},
    {"d2x", bu_d2x},
    {"datatype", bu_datatype},
    {"date", bu_date},
    {"del", nullptr},
    {"delstr", bu_delstr},
    {"delword", bu_delword},
    {"digits", bu_digits},
    {"dir", nullptr},
    {"deobf", nullptr},
    {"dofollow", nullptr},
    {"dup2", nullptr},
    {"errortext", bu_errortext},
    {"externals", bu_externals},
    {"exec", nullptr},
    {"fd", nullptr},
    {"fileconv", nullptr},
    {"find", bu_find},
    {"fn", nullptr},
    {"follow", nullptr},
    {"fork", nullptr},
    {"form", bu_form},
    {"format", bu_format},
    {"comma", bu_comma},
    {"fileislocked", nullptr},
    {"ft", nullptr},
    {"fuzz", bu_fuzz},
    {"fwc", bu_fwc},
    {"getcwd", nullptr},
    {"getdiskspace", nullptr},
    {"getenv", nullptr},
    {"getpid", nullptr},
    {"getwd", nullptr},
    {"hostname", nullptr},
    {"index", bu_index},
    {"insert", bu_insert},
    {"justify", bu_justify},
    {"kill", nullptr},
    {"ksh", nullptr},
    {"lastpos", bu_lastpos},
    {"left", bu_left},
    {"length", bu_length},
    {"linein", nullptr},
    {"lineout", nullptr},
    {"linelast", nullptr},
    {"lines", nullptr},
    {"linesize", bu_linesize},
    {"lower", bu_lower},
    {"ls", nullptr},
    {"ln", nullptr},
    {"max", bu_max},
    {"min", bu_min},
    {"mklistfiles", nullptr},
    {"mkdir", nullptr},
    {"mv", nullptr},
    {"obf", nullptr},
    {"open_cons", nullptr},
    {"overlay", bu_overlay},
    {"parg", bu_parg},
    {"pi", bu_pi},
    {"popen", nullptr},
    {"pos", bu_pos},
    {"rpos", bu_rpos},
    {"putenv", nullptr},
    {"qpid", nullptr},
    {"queued", bu_queued},
    {"random", bu_random},
    {"readjunc", nullptr},
    {"readlink", nullptr},
    {"recycle", nullptr},
    {"regcomp", nullptr},
    {"regexec", nullptr},
    {"ReleaseTOLVA", nullptr},
    {"ReleasePALOM", nullptr},
    {"rename", nullptr},
    {"reverse", bu_reverse},
    {"right", bu_right},
    {"rm", nullptr},
    {"rmdir", nullptr},
    {"script", nullptr},
    {"setenv", nullptr},
    {"sh", nullptr},
    {"setarg", nullptr},
    {"sign", bu_sign},
    {"sin", bu_sin},
    {"sleep", nullptr},
    {"SockLoadFuncs", nullptr},
    {"SockDropFuncs", nullptr},
    {"SockVersion", nullptr},
    {"SockAccept", nullptr},
    {"SockBind", nullptr},
    {"SockClose", nullptr},
    {"SockConnect", nullptr},
    {"SockGetHostByAddr", nullptr},
    {"SockGetHostByName", nullptr},
    {"SockGetHostId", nullptr},
    {"SockGetPeerName", nullptr},
    {"SockGetSockName", nullptr},
    {"SockGetSockOpt", nullptr},
    {"SockInit", nullptr},
    {"SockIoctl", nullptr},
    {"SockListen", nullptr},
    {"SockPSock_Errno", nullptr},
    {"SockRecv", nullptr},
    {"SockRecvFrom", nullptr},
    {"SockSelect", nullptr},
    {"SockSend", nullptr},
    {"SockSendTo", nullptr},
    {"SockSetSockOpt", nullptr},
    {"SockShutDown", nullptr},
    {"SockSock_Errno", nullptr},
    {"SockSocket", nullptr},
    {"SockSoClose", nullptr},
    {"accept", nullptr},
    {"bind", nullptr},
    {"closesocket", nullptr},
    {"connect", nullptr},
    {"gethostbyaddr", nullptr},
    {"gethostbyname", nullptr},
    {"gethostid", nullptr},
    {"getpeername", nullptr},
    {"getsockname", nullptr},
    {"getsockopt", nullptr},
    {"ioctl", nullptr},
    {"ismain", nullptr},
    {"listen", nullptr},
    {"rchange", bu_rchange},
    {"recv", nullptr},
    {"recvfrom", nullptr},
    {"select", nullptr},
    {"send", nullptr},
    {"sendto", nullptr},
    {"setsockopt", nullptr},
    {"shutdown", nullptr},
    {"socket", nullptr},
    {"sort", bu_sort},
    {"sourceline", bu_sourceline},
    {"space", bu_space},
    {"state", nullptr},
    {"statew", nullptr},
    {"still_active", nullptr},
    {"lstate", nullptr},
    {"stderr", nullptr},
    {"stdin", nullptr},
    {"stdout", nullptr},
    {"stime", nullptr},
    {"stream", nullptr},
    {"strip", bu_strip},
    {"subdirs", nullptr},
    {"substr", bu_substr},
    {"subword", bu_subword},
    {"symbol", bu_symbol},
    {"SysCls", nullptr},
    {"SysFileDelete", nullptr},
    {"SysFileSearch", nullptr},
    {"SysFileTree", nullptr},
    {"SysGetKey", nullptr},
    {"SysMkDir", nullptr},
    {"SysRmDir", nullptr},
    {"SysSearchPath", nullptr},
    {"SysSetPriority", nullptr},
    {"SysSleep", nullptr},
    {"SysTempFileName", nullptr},
    {"SysVersion", nullptr},
    {"tan", bu_tan},
    {"tbadd", nullptr},
    {"tbclose", nullptr},
    {"tbdel", nullptr},
    {"tbdispl", nullptr},
    {"tbget", nullptr},
    {"tbopen", nullptr},
    {"tbput", nullptr},
    {"tbsave", nullptr},
    {"tcsh", nullptr},
    {"tee", nullptr},
    {"teec", nullptr},
    {"teek", nullptr},
    {"time", bu_time},
    {"trace", bu_trace},
    {"translate", bu_translate},
    {"trunc", bu_trunc},
    {"unix", nullptr},
    {"unsetenv", nullptr},
    {"upper", bu_upper},
    {"upperw", bu_upperw},
    {"userid", nullptr},
    {"ShellExecute", nullptr},
    {"usleep", nullptr},
    {"utime", nullptr},
    {"value", bu_value},
    {"verify", bu_verify},
    {"version", bu_version},
    {"waitpid", nullptr},
    {"windows", nullptr},
    {"windows_ne", nullptr},
    {"wipe", nullptr},
    {"word", bu_word},
    {"wordindex", bu_wordindex},
    {"wordlength", bu_wordlength},
    {"wordpos", bu_wordpos},
    {"words", bu_words},
    {"x2b", bu_x2b},
    {"x2c", bu_x2c},
    {"x2d", bu_x2d},
    {"xhome", nullptr},
    {"xrange", bu_xrange},
    {"IsFileOpened", nullptr},
    {"getfile", nullptr},
    {"flfiles", nullptr},
    {"dy_ascl", nullptr},
    {"dy_beep", nullptr},
    {"dy_button", nullptr},
    {"dy_button_col", nullptr},
    {"dy_button_color", nullptr},
    {"dy_ch", nullptr},
    {"dy_ch_col", nullptr},
    {"dy_ch_color", nullptr},
    {"dy_destroy", nullptr},
    {"dy_dispatch", nullptr},
    {"dy_dscl", nullptr},
    {"dy_end", nullptr},
    {"dy_focus", nullptr},
    {"dy_font", nullptr},
    {"dy_input", nullptr},
    {"dy_input_col", nullptr},
    {"dy_input_color", nullptr},
    {"dy_label", nullptr},
    {"dy_label_col", nullptr},
    {"dy_label_color", nullptr},
    {"dy_map", nullptr},
    {"dy_open", nullptr},
    {"dy_printer", nullptr},
    {"dy_pscl", nullptr},
    {"dy_rscl", nullptr},
    {"dy_save", nullptr},
    {"dy_scl", nullptr},
    {"dy_scl_col", nullptr},
    {"dy_scl_color", nullptr},
    {"dy_sinput", nullptr},
    {"dy_slabel", nullptr},
    {"dy_sscl", nullptr},
    {"dy_start", nullptr},
    {"dy_sch", nullptr},
    {"dy_stg", nullptr},
    {"dy_tg", nullptr},
    {"dy_tg_color", nullptr},
    {"dy_tg_col", nullptr},
    {"dy_unmap", nullptr},
    {"dy_vch", nullptr},
    {"dy_vinput", nullptr},
    {"dy_vscl", nullptr},
    {"dy_vtg", nullptr},
    {"dy_warp", nullptr},
    {"dy_header", nullptr},
    {"dy_refresh", nullptr},
};
static_assert(sizeof(table) / sizeof(table[0]) == bu_table_size, "the built-in table holds every function");

constexpr unsigned chains = 2048;

// One copy of the table folded for a case mode, entered in a hash table of 2048 chains.
struct folded_copy {
  std::vector<std::string> names;             // folded names, by row
  std::array<std::vector<unsigned>, chains> chain;  // row numbers, in order of entry
};

// The frame's state: the three copies (as spelled, lower case, upper case), made at their first use.
struct bu_frame_state {
  std::array<std::unique_ptr<folded_copy>, 3> copies;
  std::array<int8_t, bu_table_size> reads_only{};  // per row: 0 not known yet, 1 yes, 2 no
  // The last string split into words, and its words: WORD(line, i) in a loop splits the same line again.
  std::string words_of;
  std::vector<std::pair<std::size_t, std::size_t>> words;
  bool words_valid = false;
};
bu_frame_state bu_fs;

unsigned name_hash(std::string_view s) {
  if (s.empty()) return 0;
  unsigned h = static_cast<unsigned char>(s[0]);
  for (unsigned char b : s) h = (h * 31 + b) & 0x7ff;
  return h;
}

const folded_copy& copy_for(int case_mode) {
  int which = case_mode == 0 ? 0 : case_mode == 2 ? 1 : 2;
  auto& slot = bu_fs.copies[static_cast<std::size_t>(which)];
  if (!slot) {
    slot = std::make_unique<folded_copy>();
    for (unsigned r = 0; r < bu_table_size; ++r) {
      std::string n = table[r].name;
      for (char& ch : n) {
        if (which == 1 && ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch + 32);
        if (which == 2 && ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
      }
      slot->chain[name_hash(n)].push_back(r);
      slot->names.push_back(std::move(n));
    }
  }
  return *slot;
}

int find_row(std::string_view name) {
  const folded_copy& c = copy_for(rx_st.sw.case_mode);
  for (unsigned r : c.chain[name_hash(name)])
    if (c.names[r].size() == name.size() && c.names[r] == name) return static_cast<int>(r);
  return -1;
}

// The row of a call site's name, found once per case mode and kept in the name node.
int cached_row(const rx_node* name) {
  int mode = rx_st.sw.case_mode;
  if (name->call_row == -2 || name->call_mode != mode) {
    name->call_row = find_row(name->value);
    name->call_mode = mode;
  }
  return name->call_row;
}

// The names of the table in upper case, for messages, made once.
const char* upper_name(int row) {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> out;
    for (const bu_row& r : table) {
      std::string n = r.name;
      for (char& ch : n)
        if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
      out.push_back(std::move(n));
    }
    return out;
  }();
  return names[static_cast<std::size_t>(row)].c_str();
}

// Whether an argument expression can run no routine and no command: then evaluating it changes no variable.
bool pure_expr(const rx_node* n) {
  if (!n || n->type != RX_EXPR) return true;
  const rx_fx* fx = n->expr;
  if (fx->arity == 3 || fx->op == rx_op::fx_backq) return false;
  for (const rx_operand& o : fx->operand)
    if (!pure_expr(o.node)) return false;
  return true;
}

bool pure_args(const rx_node* name, const rx_node* args) {
  if (name->call_args_pure == 0) {
    bool pure = true;
    for (const rx_node* a = args; a && pure; a = a->next) pure = pure_expr(a);
    name->call_args_pure = pure ? 1 : 2;
  }
  return name->call_args_pure == 1;
}

// Handlers that only read their arguments and write no variable: their arguments that are variables may be read
// in place. Any other handler gets copies of variables (constants are read in place by all).
bool handler_reads_only(bu_handler fn) {
  static const bu_handler list[] = {
      bu_abbrev,  bu_center,   bu_compare,   bu_copies,    bu_delstr,  bu_insert,  bu_lastpos, bu_left,
      bu_length,  bu_lower,    bu_overlay,   bu_pos,       bu_index,   bu_reverse, bu_right,   bu_strip,
      bu_substr,  bu_translate, bu_upper,    bu_xrange,    bu_verify,  bu_words,   bu_word,    bu_subword,
      bu_delword, bu_wordindex, bu_wordlength, bu_wordpos, bu_space,   bu_find,    bu_bitand,  bu_bitor,
      bu_bitxor,  bu_datatype, bu_change,    bu_comma,     bu_fwc,     bu_justify, bu_b2x,     bu_x2b,
      bu_c2d,     bu_c2o,      bu_c2x,       bu_d2c,       bu_d2x,     bu_x2c,     bu_x2d,     bu_abs,
      bu_sign,    bu_max,      bu_min,       bu_trunc,     bu_symbol,
  };
  for (bu_handler h : list)
    if (h == fn) return true;
  return false;
}

bool reads_only(int row) {
  int8_t& known = bu_fs.reads_only[static_cast<std::size_t>(row)];
  if (known == 0) known = handler_reads_only(table[row].fn) ? 1 : 2;
  return known == 1;
}

const rx_node* node_at(const bu_call& c, std::size_t index) {
  const rx_node* n = c.first;
  for (std::size_t i = 0; i < index && n && n->next; ++i) n = n->next;
  return n;
}

std::string range_text(std::size_t min, std::size_t max) {
  if (min == max) return "must receive " + std::to_string(min) + (min <= 1 ? " argument." : " arguments.");
  if (max == min + 1) return "must receive " + std::to_string(min) + " or " + std::to_string(max) + " arguments.";
  return "must receive " + std::to_string(min) + " to " + std::to_string(max) + " arguments.";
}

}  // namespace

bu_values::~bu_values() {
  for (std::size_t i = 0; i < count_ && i < inline_count; ++i) at(i).~entry();
}

void bu_values::reset(std::size_t n) {
  count_ = n;
  for (std::size_t i = 0; i < n && i < inline_count; ++i) new (inline_ + i * sizeof(entry)) entry();
  if (n > inline_count) more_.resize(n - inline_count);  // sized once: slots do not move while arguments fill them
}

rx_value& bu_values::own(std::size_t i) {
  entry& e = at(i);
  if (e.borrowed) {
    double d;
    int32_t dec;
    rx_as_number(*e.borrowed, &d, &dec);  // the source keeps the outcome, so the next call skips the scan
    e.own = *e.borrowed;
    e.borrowed = nullptr;
  }
  return e.own;
}

std::string_view bu_call::str(std::size_t i, int slot) {
  if (!has(i)) return {};
  const rx_value& x = std::as_const(v)[i];
  if (x.kind == RX_STR) return x.text;
  return rx_text_of(x, buf[slot & 3], node_at(*this, i));  // the node only places an error
}

void bu_install() { rx_set_builtins(bu_search); }

namespace {
// A program that links the built-ins has them in its routine search from its start.
const bool installed_at_start = (bu_install(), true);
}  // namespace

bool bu_search(const rx_node* name, const rx_node* args, rx_value& out) {
  int row = cached_row(name);
  if (row < 0) return false;
  bu_handler fn = table[row].fn;
  if (!fn) throw rx_unavailable{std::string(upper_name(row)) + "()"};
  bu_call c;
  c.name = upper_name(row);
  c.first = args;
  std::size_t n = 0;
  for (const rx_node* a = args; a; a = a->next) ++n;
  c.v.reset(n ? n : 1);  // empty parentheses: one absent argument
  // Variables are read in place only when no later argument can run code that changes them and the handler
  // writes no variable itself; constants never change.
  bool lend_vars = rx_st.run->proc->cond[RX_C_NOVALUE] != 2 && pure_args(name, args) && reads_only(row);
  // SORT and PARG name a stem: a plain symbol there is its name and is not evaluated, so that an unset stem
  // raises no NOVALUE.
  std::string_view called = upper_name(row);
  std::size_t stem_arg = called == "SORT" ? 0 : called == "PARG" ? 2 : static_cast<std::size_t>(-1);
  std::size_t i = 0;
  for (const rx_node* a = args; a; a = a->next, ++i) {
    if (a->type == VIDE) continue;
    bu_values::entry& e = c.v.slot(i);
    e.present = true;
    if (i == stem_arg && a->type == SYMBOL && a->has_value) {
      e.own = rx_value::string(a->value);
      continue;
    }
    const rx_value& got = rx_eval(a, e.own);
    if (&got == &e.own) continue;
    if (a->type == STRING || lend_vars)
      e.borrowed = &got;
    else
      e.own = got;
  }
  out = fn(c);
  return true;
}

void bu_error(const bu_call& c, std::size_t index, const std::string& text, int number) {
  rx_output("\npalom: " + text + "\n");
  rx_raise(number, node_at(c, index));
}

namespace {

bool count_ok(const bu_call& c, std::size_t min, std::size_t max) {
  if (max == 0) return c.count() == 1 && !c.has(0);  // no arguments: only empty parentheses
  bool ok = c.count() >= min && c.count() <= max;
  for (std::size_t i = 0; ok && i < min; ++i) ok = c.has(i);
  return ok;
}

}  // namespace

void bu_count_msg(const bu_call& c, std::size_t min, std::size_t max, const char* text) {
  if (!count_ok(c, min, max)) bu_error(c, 0, std::string(c.name) + "(): " + text);
}

void bu_count(const bu_call& c, std::size_t min, std::size_t max) {
  if (!count_ok(c, min, max)) bu_error(c, 0, std::string(c.name) + "(): " + range_text(min, max));
}

double bu_round(double x, int d) { return rx_round(x, d); }

long bu_int(bu_call& c, std::size_t i, int kind, long dflt) {
  if (!c.has(i)) return dflt;
  double x = 0;
  int32_t dec;
  bool num = rx_as_number(std::as_const(c.v)[i], &x, &dec);
  if (num) x = bu_round(x, 9);
  bool whole = num && std::isfinite(x) && x == std::floor(x);
  bool in_range = !((kind == 1 && x < 0) || (kind == 2 && x <= 0) || x > 2147483647.0 || x < -2147483647.0);
  if (whole && in_range) return static_cast<long>(x);
  std::string head = std::string(c.name) + "(): argument " + std::to_string(i + 1) + " must be a ";
  const char* sign_text = kind == 2 ? "strictly positive integer." : "positive integer.";
  if (!whole) bu_error(c, i, head + (kind == 2 ? sign_text : "whole number."));
  bu_error(c, i, head + (kind == 0 ? "whole number." : sign_text));
}

char bu_pad(bu_call& c, std::size_t i) {
  if (!c.has(i)) return ' ';
  std::string_view s = c.str(i, 3);
  if (s.size() != 1) bu_error(c, i, std::string(c.name) + "(): the padding expression must be one character wide.");
  return s[0];
}

double bu_num(bu_call& c, std::size_t i, int number) {
  double x;
  int32_t dec;
  if (c.has(i) && rx_as_number(std::as_const(c.v)[i], &x, &dec)) return x;
  bu_error(c, i, std::string(c.name) + "(): argument " + std::to_string(i + 1) + " must be a number.", number);
}

std::vector<std::pair<std::size_t, std::size_t>> bu_word_list(std::string_view s) {
  if (bu_fs.words_valid && s == bu_fs.words_of) return bu_fs.words;
  std::vector<std::pair<std::size_t, std::size_t>> out;
  out.reserve(16);  // one allocation for a usual line
  std::size_t i = 0;
  while (i < s.size()) {
    while (i < s.size() && s[i] == ' ') ++i;
    if (i == s.size()) break;
    std::size_t j = i;
    while (j < s.size() && s[j] != ' ') ++j;
    out.emplace_back(i, j - i);
    i = j;
  }
  bu_fs.words_of.assign(s.data(), s.size());
  bu_fs.words = out;
  bu_fs.words_valid = true;
  return out;
}
