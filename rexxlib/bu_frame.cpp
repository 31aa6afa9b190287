// The built-in function frame: the table of all built-ins, its hash search per case mode, and the argument helpers.
#include "rexxlib/bu_frame.h"

#include <array>
#include <cmath>
#include <memory>

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
    {"condition", nullptr},
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
    {"externals", nullptr},
    {"exec", nullptr},
    {"fd", nullptr},
    {"fileconv", nullptr},
    {"find", bu_find},
    {"fn", nullptr},
    {"follow", nullptr},
    {"fork", nullptr},
    {"form", bu_form},
    {"format", nullptr},
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
    {"linesize", nullptr},
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
    {"parg", nullptr},
    {"pi", bu_pi},
    {"popen", nullptr},
    {"pos", bu_pos},
    {"rpos", nullptr},
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
    {"rchange", nullptr},
    {"recv", nullptr},
    {"recvfrom", nullptr},
    {"select", nullptr},
    {"send", nullptr},
    {"sendto", nullptr},
    {"setsockopt", nullptr},
    {"shutdown", nullptr},
    {"socket", nullptr},
    {"sort", nullptr},
    {"sourceline", nullptr},
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
    {"trace", nullptr},
    {"translate", bu_translate},
    {"trunc", bu_trunc},
    {"unix", nullptr},
    {"unsetenv", nullptr},
    {"upper", bu_upper},
    {"upperw", nullptr},
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

std::string_view bu_call::str(std::size_t i, int slot) {
  if (!has(i)) return {};
  return rx_text_of(v[i], buf[slot & 3], node_at(*this, i));
}

void bu_install() { rx_set_builtins(bu_search); }

namespace {
// A program that links the built-ins has them in its routine search from its start.
const bool installed_at_start = (bu_install(), true);
}  // namespace

bool bu_search(const rx_node* name, const rx_node* args, rx_value& out) {
  int row = find_row(name->value);
  if (row < 0) return false;
  std::string upper = table[row].name;
  for (char& ch : upper)
    if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 32);
  if (!table[row].fn) throw rx_unavailable{upper + "()"};
  bu_call c;
  c.name = upper.c_str();
  c.first = args;
  for (const rx_node* a = args; a; a = a->next) {
    if (a->type == VIDE) {
      c.v.emplace_back();
      c.present.push_back(false);
    } else {
      c.v.push_back(rx_eval_owned(a));
      c.present.push_back(true);
    }
  }
  if (c.v.empty()) {  // empty parentheses: one absent argument
    c.v.emplace_back();
    c.present.push_back(false);
  }
  out = table[row].fn(c);
  return true;
}

void bu_error(const bu_call& c, std::size_t index, const std::string& text, int number) {
  rx_output("\npalom: " + text + "\n");
  rx_raise(number, node_at(c, index));
}

void bu_count_msg(const bu_call& c, std::size_t min, std::size_t max, const char* text) {
  bool ok = c.count() >= min && c.count() <= max;
  for (std::size_t i = 0; ok && i < min; ++i) ok = c.has(i);
  if (max == 0) ok = c.count() == 1 && !c.has(0);  // no arguments: only empty parentheses
  if (!ok) bu_error(c, 0, std::string(c.name) + "(): " + text);
}

void bu_count(const bu_call& c, std::size_t min, std::size_t max) {
  bu_count_msg(c, min, max, range_text(min, max).c_str());
}

double bu_round(double x, int d) { return rx_round(x, d); }

long bu_int(bu_call& c, std::size_t i, int kind, long dflt) {
  if (!c.has(i)) return dflt;
  std::string head = std::string(c.name) + "(): argument " + std::to_string(i + 1) + " must be a ";
  const char* sign_text = kind == 2 ? "strictly positive integer." : "positive integer.";
  bool num = rx_to_number(c.v[i]) || c.v[i].kind == RX_NUM;
  double x = num ? bu_round(c.v[i].num, 9) : 0;
  if (!num || !std::isfinite(x) || x != std::floor(x))
    bu_error(c, i, head + (kind == 2 ? sign_text : "whole number."));
  if ((kind == 1 && x < 0) || (kind == 2 && x <= 0) || x > 2147483647.0 || x < -2147483647.0)
    bu_error(c, i, head + (kind == 0 ? "whole number." : sign_text));
  return static_cast<long>(x);
}

char bu_pad(bu_call& c, std::size_t i) {
  if (!c.has(i)) return ' ';
  std::string_view s = c.str(i, 3);
  if (s.size() != 1) bu_error(c, i, std::string(c.name) + "(): the padding expression must be one character wide.");
  return s[0];
}

double bu_num(bu_call& c, std::size_t i, int number) {
  if (c.has(i) && (c.v[i].kind == RX_NUM || rx_to_number(c.v[i]))) return c.v[i].num;
  bu_error(c, i, std::string(c.name) + "(): argument " + std::to_string(i + 1) + " must be a number.", number);
}

std::vector<std::pair<std::size_t, std::size_t>> bu_word_list(std::string_view s) {
  std::vector<std::pair<std::size_t, std::size_t>> out;
  std::size_t i = 0;
  while (i < s.size()) {
    while (i < s.size() && s[i] == ' ') ++i;
    if (i == s.size()) break;
    std::size_t j = i;
    while (j < s.size() && s[j] != ' ') ++j;
    out.emplace_back(i, j - i);
    i = j;
  }
  return out;
}
