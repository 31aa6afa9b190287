// Handlers of the command processor's own rows: prefixes, synonyms, macros, history, SET, Query, MODE,
// and the small commands that carry no state of their own.
#include <cstdio>
#include <cstdlib>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/keys.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/prefix.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/fileio.h"
#include "os/os_file.h"
#include "os/os_process.h"
#include "rexxlib/support.h"

namespace {



bool all_digits(std::string_view s) {
  if (s.empty()) return false;
  for (char ch : s)
    if (ch < '0' || ch > '9') return false;
  return true;
}


// ON / OFF operand into `value`; no operand reports "..... Is ON" or "..... Is OFF".
int on_off(std::string_view ops, int32_t& value) {
  std::string w = xf_lower(xf_trim(ops));
  if (w.empty()) {
    xf_msg(value ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w == "on")
    value = 1;
  else if (w == "off")
    value = 0;
  else
    return xf_bad_operands();
  return 1;
}

std::string synonym_text(const xf_synonym& s) {
  std::string t = s.linend == ' ' ? "SYNONYM " : std::string("SYNONYM LINEND ") + s.linend + " ";
  t += s.name;
  t += " " + std::to_string(s.min_len);
  t += " ";
  for (std::size_t i = 0; i < s.defs.size(); ++i) {
    if (i) t += s.linend;
    t += s.defs[i];
  }
  if (s.linend != ' ' && s.defs.size() > 0) t += s.linend;
  return t;
}

}  // namespace

int xfcm_unavailable(const xf_cmd_call&) {
  // Rows whose commands are not built yet.
  xf_msg(164, XF_MSG_ERROR);
  rc = 1;
  return 1;
}

int xfcm_special_none(const xf_cmd_call&) { return 0; }

int xfcm_noop(const xf_cmd_call&) {
  rc = 0;
  return 1;
}

int xfcm_command(const xf_cmd_call& c) {
  std::string rest(xf_trim(xf_operands(c.text)));
  xf_cmd.prefix_command = true;
  xfcom2(rest, c.work_dir);
  return 1;
}

int xfcm_macro(const xf_cmd_call& c) {
  std::string rest(xf_trim(xf_operands(c.text)));
  if (rest.empty()) {
    xf_msg(xf_set.macro_on ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  xf_cmd.prefix_macro = true;
  xfcom2(rest, c.work_dir);
  return 1;
}

int xfcm_synonym(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  std::vector<std::string> w = xf_tokens(ops);
  if (w.empty()) {
    xf_msg(xf_set.synonym_on ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  std::string w0 = xf_lower(w[0]);
  if (w.size() == 1 && (w0 == "on" || w0 == "off")) {
    xf_set.synonym_on = w0 == "on";
    return 1;
  }
  if (w0 == "clear") {
    if (w.size() != 2) return xf_bad_operands();
    auto& t = xf_cmd.synonyms;
    for (auto it = t.begin(); it != t.end(); ++it)
      if (it->name == w[1]) {
        t.erase(it);
        break;
      }
    return 1;
  }
  xf_synonym s;
  std::string_view rest = ops;
  auto next_word = [&rest]() {
    rest = xf_trim(rest);
    std::size_t sp = rest.find(' ');
    std::string_view word = rest.substr(0, sp);
    rest = sp == std::string_view::npos ? std::string_view() : rest.substr(sp + 1);
    return std::string(word);
  };
  if (w0 == "linend") {
    next_word();
    std::string ch = next_word();
    if (ch.size() != 1) return xf_bad_operands();
    s.linend = ch[0];
  }
  s.name = next_word();
  if (s.name.empty()) return xf_bad_operands();
  s.min_len = static_cast<int32_t>(s.name.size());
  std::string_view save = rest;
  std::string maybe = next_word();
  if (all_digits(maybe)) {
    s.min_len = std::atoi(maybe.c_str());
    if (s.min_len < 1 || s.min_len > static_cast<int32_t>(s.name.size())) return xf_bad_operands();
  } else {
    rest = save;
  }
  std::string_view def = xf_trim(rest);
  if (def.empty()) return xf_bad_operands();
  if (s.linend == ' ') {
    s.defs.emplace_back(def);
  } else {
    std::size_t i = 0;
    while (i <= def.size()) {
      std::size_t e = def.find(s.linend, i);
      std::string_view piece = def.substr(i, e == std::string_view::npos ? std::string_view::npos : e - i);
      if (!xf_trim(piece).empty()) s.defs.emplace_back(xf_trim(piece));
      if (e == std::string_view::npos) break;
      i = e + 1;
    }
    if (s.defs.empty()) return xf_bad_operands();
  }
  for (auto& old : xf_cmd.synonyms)
    if (old.name == s.name) {
      old = s;
      return 1;
    }
  xf_cmd.synonyms.push_back(std::move(s));
  return 1;
}

int xfcm_hash(const xf_cmd_call& c) {
  std::vector<std::string> w = split_quoted(xf_operands(c.text), false);
  if (w.empty()) {
    for (auto& t : xf_macros.tables) t.clear();
    for (const std::string& d : xf_run.path_dirs) xf_macro_scan_dir(d);
    return 1;
  }
  for (const std::string& name : w) {
    std::string path;
    int st = xf_find(name, xf_run.work_dir, false, path);
    if (st == XF_FIND_NOT_EDITABLE) {  // a directory
      xf_macro_scan_dir(path);
      continue;
    }
    if (st != XF_FIND_OK) {
      xf_msgf(XF_MSG_ERROR, "..... File \"%s\" not found", name.c_str());
      rc = 1;
      continue;
    }
    int kind = xf_macro_kind_of(path);
    // A file named on its own with no macro extension is taken as a REXX program.
    xf_macro_add(path, kind < 0 ? XF_MACRO_REXX : kind);
  }
  return 1;
}

int xfcm_purge(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (ops.empty() || ops == "*") {
    for (auto& t : xf_macros.tables) t.clear();
    return 1;
  }
  for (const std::string& name : xf_tokens(ops))
    for (auto& t : xf_macros.tables)
      for (auto it = t.begin(); it != t.end(); ++it)
        if (it->name == name) {
          t.erase(it);
          break;
        }
  return 1;
}

int xfcm_equal(const xf_cmd_call& c) {
  // "=" is a command of its own only as the first byte of the string.
  if (c.text.empty() || c.text[0] != '=') return 0;
  std::string_view ops = xf_trim(c.text.substr(1));
  if (!ops.empty()) {
    xfcom2(ops, c.work_dir);
    if (rc != 0) return 1;
  }
  if (xf_cmd.history.empty()) return 1;
  std::string last = xf_cmd.history.back();
  if (!last.empty() && last[0] == '&') last.erase(0, 1);
  xfcom1(last, c.work_dir);
  return 1;
}

int xfcm_qmark(const xf_cmd_call& c) {
  if (c.text.empty() || c.text[0] != '?') return 0;
  std::string_view rest = xf_trim(c.text.substr(1));
  if (!rest.empty() && rest != "i" && rest != "I") return 0;
  auto& h = xf_cmd.history;
  if (h.empty()) return 1;
  int32_t n = static_cast<int32_t>(h.size());
  int32_t& pos = xf_cmd.history_pos;
  if (rest.empty())
    pos = pos <= 0 ? n - 1 : pos - 1;
  else
    pos = pos >= n - 1 ? 0 : pos + 1;
  xf_run.command_line = h[pos];
  return 1;
}

int xfcm_linend(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_operands(c.text));
  if (w.empty()) {
    char buf[64];
    if (static_cast<unsigned char>(xf_set.linend) < 32)
      std::snprintf(buf, sizeof buf, "..... Is %s 0x%2.2X", xf_set.linend_on ? "ON" : "OFF",
                    static_cast<unsigned char>(xf_set.linend));
    else
      std::snprintf(buf, sizeof buf, "..... Is %s %c", xf_set.linend_on ? "ON" : "OFF", xf_set.linend);
    xf_msg_text(buf, XF_MSG_INFO);
    return 1;
  }
  std::string w0 = xf_lower(w[0]);
  if (w0 != "on" && w0 != "off") return xf_bad_operands();
  if (w.size() > 2) return xf_bad_operands();
  if (w.size() == 2) {
    if (w[1].size() != 1) return xf_bad_operands();
    xf_set.linend = w[1][0];
  }
  xf_set.linend_on = w0 == "on";
  return 1;
}

int xfcm_impcmscp(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msg(xf_set.impcmscp == 2 ? 162 : xf_set.impcmscp ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w == "on")
    xf_set.impcmscp = 1;
  else if (w == "off")
    xf_set.impcmscp = 0;
  else if (w == "xon")
    xf_set.impcmscp = 2;
  else
    return xf_bad_operands();
  return 1;
}

int xfcm_history(const xf_cmd_call& c) {
  std::string w(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... Is %d", xf_set.history_max);
    return 1;
  }
  if (!all_digits(w) || w.size() > 7 || std::atoi(w.c_str()) > 1000000) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  xf_set.history_max = std::atoi(w.c_str());
  auto& h = xf_cmd.history;
  while (static_cast<int32_t>(h.size()) > xf_set.history_max) h.erase(h.begin());
  xf_cmd.history_pos = static_cast<int32_t>(h.size()) - 1;
  return 1;
}

int xfcm_set(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (ops.empty() || ops == "?") {  // the settings screen: nothing in batch
    if (xf_run.batch) return 1;
    xf_msg(164, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (ops[0] == '=') {  // SET = text: into the history without running it
    xf_history_add(xf_trim(ops.substr(1)));
    return 1;
  }
  int32_t matched = 0;
  int32_t row = xf_set_lookup(ops, &matched);
  if (row < 0) return xf_key_set(ops);  // a key name: SET F1 ..., SET ^x ..., SET HOME F5 ...
  std::string name = xf_lower(ops.substr(0, matched));
  // SET MACRO switches the macro search; the names without a handler are accepted and do nothing.
  if (name == "macro" || xf_abbrev_word(name, "macro", 5)) {
    int32_t v = xf_set.macro_on;
    on_off(ops.substr(matched), v);
    xf_set.macro_on = v;
    return 1;
  }
  int32_t cmd = xf_cmd_lookup(name);
  if (cmd < 0 || !xf_cmd_entries()[cmd].is_setting) {
    // The names kept for other editors' macros: accepted under MODE NOTIMP ON, else taken as a key name.
    if (!xf_set.mode_notimp) return xf_key_set(ops);
    return 1;
  }
  xfcom2(std::string(ops), c.work_dir);
  return 1;
}

int xfcm_query(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  std::string word = xf_lower(ops.substr(0, ops.find(' ')));
  if (word.empty()) return xf_bad_operands();
  if (xf_abbrev(word, "synonym", 3)) {
    for (const xf_synonym& s : xf_cmd.synonyms) xf_msg_text(synonym_text(s), XF_MSG_INFO);
    return 1;
  }
  if (xf_abbrev(word, "pending", 4)) return xf_prefix_query(ops.substr(std::min(ops.size(), word.size())));
  int32_t row = xf_cmd_lookup(word);
  if (row < 0 || !xf_cmd_entries()[row].is_query) {
    xf_msgf(XF_MSG_ERROR, "..... Invalid command \"%s\"", std::string(ops).c_str());
    rc = -1;
    return 1;
  }
  xfcom2(word, c.work_dir);
  return 1;
}

namespace {

struct mode_word {
  const char* name;
  int32_t xf_settings::*field;
  const char* on_word;  // the word for 1
  const char* off_word; // the word for 0
  int on_msg, off_msg;
};

// MODE words with two values and the messages that report them.
const mode_word mode_words[] = {
    {"locate", &xf_settings::mode_locate_stay, "stay", "nostay", 76, 75},
    {"prefix", &xf_settings::mode_prefix_ispf, "ispf", "xedit", 94, 93},
    {"command", &xf_settings::mode_command_ispf, "ispf", "xedit", 94, 93},
    {"enter", &xf_settings::mode_enter_stay, "stay", "nostay", 97, 98},
    {"autoexit", &xf_settings::mode_autoexit, "on", "off", 9, 10},
    {"number", &xf_settings::mode_number_goto, "goto", "scroll", 125, 126},
    {"change", &xf_settings::mode_change_all, "all", "one", 127, 128},
    {"redisplay", &xf_settings::mode_redisplay, "on", "off", 9, 10},
    {"topline", &xf_settings::mode_topline, "1", "0", 144, 143},
    {"get", &xf_settings::mode_get_stay, "stay", "nostay", 151, 152},
    {"icursor", &xf_settings::mode_icursor, "on", "off", 9, 10},
    {"reserved", &xf_settings::mode_reserved_skip, "skip", "noskip", 160, 161},
    {"notimp", &xf_settings::mode_notimp, "on", "off", 9, 10},
    {"scroll", &xf_settings::mode_scroll_wrap, "wrap", "nowrap", 147, 175},
};

void set_topline(int32_t v) {
  xf_set.mode_topline = v;
  xf_ring.lowest_line = v ? 0 : -1;
  if (!v) return;
  for (auto& view : xf_ring.views)
    for (auto& pf : view->per_file)
      if (pf.current_line < 0) pf.current_line = 0;
}

}  // namespace

int xfcm_mode(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) return xf_bad_operands();
  if (w[0] == "expand") {
    if (w.size() == 1) {
      int m = xf_set.mode_expand_on ? (xf_set.mode_expand_env ? 192 : 191) : (xf_set.mode_expand_env ? 194 : 193);
      xf_msg(m, XF_MSG_INFO);
      return 1;
    }
    int32_t on = xf_set.mode_expand_on, env = xf_set.mode_expand_env;
    for (std::size_t i = 1; i < w.size(); ++i) {
      if (w[i] == "on") on = 1;
      else if (w[i] == "off") on = 0;
      else if (w[i] == "env") env = 1;
      else if (w[i] == "noenv") env = 0;
      else return xf_bad_operands();
    }
    xf_set.mode_expand_on = on;
    xf_set.mode_expand_env = env;
    return 1;
  }
  for (const mode_word& m : mode_words) {
    if (w[0] != m.name) continue;
    int32_t& field = xf_set.*(m.field);
    if (w.size() == 1) {
      xf_msg(field ? m.on_msg : m.off_msg, XF_MSG_INFO);
      return 1;
    }
    if (w.size() != 2) return xf_bad_operands();
    int32_t v;
    if (w[1] == m.on_word)
      v = 1;
    else if (w[1] == m.off_word)
      v = 0;
    else
      return xf_bad_operands();
    if (m.field == &xf_settings::mode_topline)
      set_topline(v);
    else
      field = v;
    return 1;
  }
  return xf_bad_operands();
}

int xfcm_msg(const xf_cmd_call& c) {
  std::string_view text = xf_operands(c.text);
  bool error = c.row_name.starts_with("e");
  if (text.empty()) {
    if (xf_ring.view) xf_ring.view->messages.clear();
    return 1;
  }
  xf_msg_text(text, error ? XF_MSG_ERROR : XF_MSG_INFO);
  return 1;
}

int xfcm_cmsg(const xf_cmd_call& c) {
  xf_run.command_line = std::string(xf_operands(c.text));
  return 1;
}

int xfcm_qid(const xf_cmd_call&) {
  xf_msg_text("TOLVA 0.1 (" __DATE__ ")", XF_MSG_INFO);
  return 1;
}

int xfcm_shell(const xf_cmd_call& c) {
  std::string text(xf_trim(xf_operands(c.text)));
  if (text.empty()) return xf_bad_operands();
  bool detach = !text.empty() && text.back() == '&';
  if (detach) text = std::string(xf_trim(std::string_view(text).substr(0, text.size() - 1)));
  int status = os_run_shell(detach ? text + " </dev/null >/dev/null 2>&1 &" : text);
  if (status < 0) {
    xf_msg(44, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (!detach && status != 0) {
    std::string first = text.substr(0, text.find(' '));
    xf_msgf(XF_MSG_INFO, "Warning: command \"%s\" exited with return code %d", first.c_str(), status);
    rc = status;
    return 1;
  }
  if (!xf_run.batch) xf_msg(43, XF_MSG_INFO);
  return 1;
}

int xfcm_top(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  xf_current_line() = xf_ring.lowest_line;
  return 1;
}

int xfcm_bottom(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  xf_current_line() = std::max(xf_ring.file->size - 1, xf_ring.lowest_line);
  return 1;
}
