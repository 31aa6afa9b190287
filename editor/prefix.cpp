// The prefix area's tables, the reading of a prefix field, the pending lists, and PENDing, PREfix and RESet.
#include "editor/prefix.h"

#include <algorithm>
#include <cctype>
#include <climits>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/state.h"

xf_prefix_state xf_prefix;

namespace {

struct single_entry {
  const char* xedit;
  const char* ispf;
  std::size_t minimum;
};

// Index 0 is unused so that the table index is the row's kind.
const single_entry single_table[17] = {
    {"", "", 0},          {"A", "I", 1},  {"D", "D", 1}, {"PU", "PU", 2}, {"\"", "\"", 1},
    {"'", "'", 1},        {"/", "/", 1},  {"G", "G", 1}, {"E", "E", 1},   {">", ">", 1},
    {"<", "<", 1},        {"", "R", 1},   {"X", "X", 1}, {"S", "S", 1},   {"SCALE", "SCALE", 2},
    {"TABL", "TABL", 1},  {"I", "I", 1},
};

const char* const block_xedit[17] = {"",   "MM", "CC", "DD", "PP", "P",  "F", "M",  "C",
                                     "\"\"", "''", ">>", "<<", "",   "XX", "O", "OO"};
const char* const block_ispf[17] = {"",   "MM", "CC", "DD", "PP", "B",  "A", "M",  "C",
                                    "\"\"", "''", ">>", "<<", "RR", "XX", "O", "OO"};

constexpr std::size_t max_rows = 999;

bool ispf() { return xf_set.mode_prefix_ispf != 0; }

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

// The single-table index of a folded name, abbreviated down to its minimum, or 0.
int32_t single_lookup(const std::string& name) {
  for (int32_t k = 1; k <= 16; ++k) {
    std::string_view full = ispf() ? single_table[k].ispf : single_table[k].xedit;
    if (full.empty()) continue;
    if (name.size() >= single_table[k].minimum && name.size() <= full.size() && full.starts_with(name)) return k;
  }
  return 0;
}

// The block-table index of a name compared in full, or 0.
int32_t block_lookup(const std::string& name) {
  for (int32_t k = 1; k <= 16; ++k) {
    const char* full = ispf() ? block_ispf[k] : block_xedit[k];
    if (*full && name == full) return k;
  }
  return 0;
}

// A macro held in memory under this name, the synonyms first; the name it runs, or "".
std::string macro_named(const std::string& name) {
  std::string target = name;
  for (const auto& [n, m] : xf_prefix.synonyms)
    if (n == name) target = m;
  return xf_macro_find(XF_MACRO_REXX, target) >= 0 ? target : std::string();
}

bool is_letter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// A typed prefix text split into its name and up to 4 operands; a leading number is the first operand.
bool split_text(std::string_view t, std::string& name, std::vector<std::string>& ops) {
  std::size_t i = 0;
  std::string leading;
  if (i < t.size() && (is_digit(t[i]) || t[i] == '-')) {
    std::size_t b = i++;
    while (i < t.size() && is_digit(t[i])) ++i;
    leading = std::string(t.substr(b, i - b));
  }
  while (i < t.size() && t[i] == ' ') ++i;
  std::size_t b = i;
  if (i < t.size() && is_letter(t[i])) {
    while (i < t.size() && is_letter(t[i])) ++i;
  } else {
    while (i < t.size() && !is_letter(t[i]) && !is_digit(t[i]) && t[i] != ' ') ++i;
  }
  name = std::string(t.substr(b, i - b));
  if (name.empty() || name == "-") return false;
  if (!leading.empty()) ops.push_back(leading);
  while (i < t.size()) {
    while (i < t.size() && t[i] == ' ') ++i;
    if (i >= t.size()) break;
    b = i;
    if (is_digit(t[i]) || (t[i] == '-' && i + 1 < t.size() && is_digit(t[i + 1]))) {
      ++i;
      while (i < t.size() && is_digit(t[i])) ++i;
    } else if (is_letter(t[i])) {
      while (i < t.size() && is_letter(t[i])) ++i;
    } else {
      while (i < t.size() && !is_letter(t[i]) && !is_digit(t[i]) && t[i] != ' ') ++i;
    }
    if (ops.size() == 4) return false;
    ops.emplace_back(t.substr(b, i - b));
  }
  return true;
}

// The count operand: a whole number, or "*" for every line to the end of the file.
bool count_of(const std::string& op, int32_t& count) {
  if (op == "*") {
    count = INT32_MAX;
    return true;
  }
  bool negative = !op.empty() && op[0] == '-';
  if (!xf_parse_count(std::string_view(op).substr(negative ? 1 : 0), count)) return false;
  if (negative) count = -count;
  return true;
}

std::vector<xf_prefix_row>::iterator row_of(std::vector<xf_prefix_row>& list, int32_t line) {
  return std::find_if(list.begin(), list.end(), [&](const xf_prefix_row& r) { return r.line == line && r.kind != -2; });
}

void set_error(xf_file& f, int32_t line, std::string text) {
  for (xf_prefix_error& e : f.prefix_errors)
    if (e.line == line) {
      e.text = std::move(text);
      return;
    }
  f.prefix_errors.push_back({line, std::move(text)});
}

void drop_error(xf_file& f, int32_t line) {
  auto& e = f.prefix_errors;
  e.erase(std::remove_if(e.begin(), e.end(), [&](const xf_prefix_error& x) { return x.line == line; }), e.end());
}

// Puts a row in a list, replacing the row of its line; false with the message when the list is full.
bool place_row(std::vector<xf_prefix_row>& list, xf_prefix_row row) {
  auto it = row_of(list, row.line);
  if (it != list.end()) {
    *it = std::move(row);
    return true;
  }
  std::size_t live = std::count_if(list.begin(), list.end(), [](const xf_prefix_row& r) { return r.kind != -2; });
  if (live >= max_rows) {
    xf_msg(4, XF_MSG_ERROR);
    rc = 1;
    return false;
  }
  list.push_back(std::move(row));
  return true;
}

void remove_rows(xf_file& f, int32_t line) {
  for (auto* list : {&f.prefix_pending_a, &f.prefix_pending_b})
    list->erase(std::remove_if(list->begin(), list->end(), [&](const xf_prefix_row& r) { return r.line == line; }),
                list->end());
}

// The words of a macro row joined for show: one blank between two words only when both sides are letters or
// both are not.
std::string joined(const std::vector<std::string>& words) {
  std::string s;
  for (const std::string& w : words) {
    if (w.empty()) continue;
    if (!s.empty() && is_letter(s.back()) == is_letter(w.front())) s += ' ';
    s += w;
  }
  return s;
}

std::string row_text(const xf_prefix_row& r, bool block) {
  if (r.kind == -1) return joined(r.arguments);
  std::string s = xf_prefix_name(block, r.kind);
  if (r.count >= 2 && r.count != INT32_MAX) s += std::to_string(r.count);
  if (r.count == INT32_MAX) s += "*";
  return s;
}

// Names this line with a label, taking the name from any other line.
void label_line(xf_file& f, int32_t line, std::string name) {
  std::size_t sp = name.find(' ');
  if (sp != std::string::npos) name.resize(sp);
  f.points.erase(std::remove_if(f.points.begin(), f.points.end(), [&](const xf_point& p) { return p.name == name; }),
                 f.points.end());
  f.points.push_back({name, line});
}

}  // namespace

void xf_prefix_reset() { xf_prefix = xf_prefix_state{}; }

const char* xf_prefix_name(bool block, int32_t kind) {
  if (kind < 1 || kind > 16) return "";
  if (block) return ispf() ? block_ispf[kind] : block_xedit[kind];
  return ispf() ? single_table[kind].ispf : single_table[kind].xedit;
}

void xf_prefix_read(int32_t view, int32_t line, std::string_view text, int32_t screen_row) {
  if (!xf_ring.file) return;
  xf_file& f = *xf_ring.file;
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  drop_error(f, line);
  if (text.empty()) {
    remove_rows(f, line);
    return;
  }
  if (text.front() == '.') {
    remove_rows(f, line);
    if (line >= 0 && line < f.size && text.size() > 1) label_line(f, line, std::string(text));
    return;
  }
  std::string name;
  std::vector<std::string> ops;
  if (!split_text(text, name, ops)) {
    set_error(f, line, std::string(text));
    return;
  }
  std::string folded = upper(name);
  xf_prefix_row row;
  row.view = view;
  row.line = line;
  row.screen_row = screen_row;
  row.arguments.push_back(name);
  auto macro_row = [&](const std::string& macro) {
    row.kind = -1;
    row.count = 1;
    for (std::size_t k = 0; k < ops.size() && k < 3; ++k) row.arguments.push_back(ops[k]);
    (void)macro;
    place_row(f.prefix_pending_a, std::move(row));
  };
  if (xf_set.macro_on) {
    std::string m = macro_named(name);
    if (!m.empty()) return macro_row(m);
  }
  int32_t single = single_lookup(folded);
  int32_t block = single ? 0 : block_lookup(folded);
  if (single || block) {
    int32_t count = single == XPS_SHOW ? 0 : 1;
    if (!ops.empty() && (ops.size() > 1 || !count_of(ops[0], count))) {
      set_error(f, line, std::string(text));
      return;
    }
    if (single != XPS_SHOW && count < 1) count = 1;
    if (block && line < 0 && (block == XPB_MOVE || block == XPB_COPY)) {
      set_error(f, line, std::string(text));
      return;
    }
    row.kind = single ? single : block;
    row.count = count;
    for (std::size_t k = 0; k < ops.size() && k < 3; ++k) row.arguments.push_back(ops[k]);
    place_row(single ? f.prefix_pending_a : f.prefix_pending_b, std::move(row));
    return;
  }
  if (!xf_set.macro_on) {
    std::string m = macro_named(name);
    if (!m.empty()) return macro_row(m);
  }
  set_error(f, line, std::string(text));
}

bool xf_prefix_display(const xf_file& f, int32_t line, std::string& text, bool& error) {
  for (int list = 0; list < 2; ++list) {
    const auto& rows = list == 0 ? f.prefix_pending_a : f.prefix_pending_b;
    for (const xf_prefix_row& r : rows)
      if (r.line == line && r.kind != -2) {
        text = row_text(r, list == 1);
        error = false;
        return true;
      }
  }
  for (const xf_prefix_error& e : f.prefix_errors)
    if (e.line == line) {
      text = e.text;
      error = true;
      return true;
    }
  return false;
}

std::string xf_prefix_legend(const xf_file& f) {
  std::string s;
  for (int list = 0; list < 2; ++list)
    for (const xf_prefix_row& r : list == 0 ? f.prefix_pending_a : f.prefix_pending_b)
      if (r.kind != -2) s += " " + row_text(r, list == 1) + ":" + std::to_string(r.line + 1);
  return s.empty() ? s : " Pending:" + s;
}

void xf_prefix_clear(xf_file& f) {
  f.prefix_pending_a.clear();
  f.prefix_pending_b.clear();
  f.prefix_errors.clear();
}

// PENDing ON name [operands] | BLOCK name [operands] | ERROR text | OFF
int xfcm_pending(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  std::vector<std::string> w = xf_tokens(ops);
  if (w.empty()) {
    xf_msg(159, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  std::string key = xf_lower(w[0]);
  auto is = [&](std::string_view full, std::size_t min) {
    return key.size() >= min && key.size() <= full.size() && full.starts_with(key);
  };
  auto invalid = [] {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  };
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  int32_t line = xf_current_line();
  if (is("off", 2)) {
    if (w.size() != 1) return invalid();
    remove_rows(f, line);
    return 1;
  }
  bool on = is("on", 2), block = is("block", 1), error = is("error", 1);
  if (!on && !block && !error) return invalid();
  if (w.size() < 2) {
    xf_msg(159, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  if (error) {
    std::string_view rest = xf_trim(ops.substr(ops.find(' ')));
    set_error(f, line, std::string(rest));
    return 1;
  }
  if (w.size() > 5) return invalid();
  xf_prefix_row row;
  row.view = xf_ring.view_no;
  row.line = line;
  row.count = 1;
  row.screen_row = -1;
  row.arguments.assign(w.begin() + 1, w.end());
  const std::string& name = w[1];
  bool macro = xf_set.macro_on && !macro_named(name).empty();
  if (!macro) {
    int32_t k = block ? (xf_set.macro_on ? 0 : block_lookup(name)) : single_lookup(upper(name));
    if (k) {
      row.kind = k;
    } else {
      macro = true;
    }
  }
  if (macro) row.kind = -1;
  place_row(block ? f.prefix_pending_b : f.prefix_pending_a, std::move(row));
  return 1;
}

// PREfix and PREFIX_Screen: ON [LEFT|RIGHT], OFF, NULLS [LEFT|RIGHT]; PREfix SYNONYM [new [old] | *].
int xfcm_prefix(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  bool screen = c.row_name.starts_with("prefix_");
  xf_view& v = *xf_ring.view;
  xf_view_file* vf = screen ? &v.defaults
                            : (xf_ring.file_no >= 0 && xf_ring.file_no < static_cast<int32_t>(v.per_file.size())
                                   ? &v.per_file[xf_ring.file_no]
                                   : &v.defaults);
  if (w.empty()) {
    xf_msg(vf->prefix == 0 ? 10 : vf->prefix_right ? 92 : 91, XF_MSG_INFO);
    return 1;
  }
  std::string k = xf_lower(w[0]);
  auto is = [&](std::string_view full, std::size_t min) {
    return k.size() >= min && k.size() <= full.size() && full.starts_with(k);
  };
  if (!screen && is("synonym", 1)) {
    auto& syn = xf_prefix.synonyms;
    if (w.size() == 1 || (w.size() == 2 && w[1] == "*")) {
      for (const auto& [n, m] : syn) xf_msg_text(n + " " + m, XF_MSG_INFO);
      return 1;
    }
    if (w.size() == 2) {
      std::string target = w[1];
      for (const auto& [n, m] : syn)
        if (n == w[1]) target = m;
      xf_msg_text(w[1] + " " + target, XF_MSG_INFO);
      return 1;
    }
    if (w.size() != 3) return xf_bad_operands();
    for (auto& [n, m] : syn)
      if (n == w[1]) {
        m = w[2];
        return 1;
      }
    syn.emplace_back(w[1], w[2]);
    return 1;
  }
  int32_t on = -1, nulls = 0;
  if (is("on", 2)) on = 1;
  else if (is("nulls", 2)) on = 1, nulls = 1;
  else if (is("off", 3)) on = 0;
  if (on < 0 || (on == 0 && w.size() > 1) || w.size() > 2) return xf_bad_operands();
  int32_t right = vf->prefix_right;
  if (w.size() == 2) {
    std::string side = xf_lower(w[1]);
    if (side == "left") right = 0;
    else if (side == "right") right = 1;
    else return xf_bad_operands();
  }
  vf->prefix = on;
  if (on) {
    vf->prefix_right = right;
    vf->prefix_nulls = nulls;
  }
  return 1;
}

// RESet: the pending prefix commands and error texts of the current file go.
int xfcm_reset(const xf_cmd_call&) {
  if (xf_ring.file) xf_prefix_clear(*xf_ring.file);
  return 1;
}

int xf_prefix_query(std::string_view rest) {
  std::vector<std::string> w = xf_tokens(xf_trim(rest));
  bool block = false, oldname = false;
  std::size_t i = 0;
  for (; i < w.size(); ++i) {
    std::string k = xf_lower(w[i]);
    if (k == "block" && !block) block = true;
    else if (k == "oldname" && !oldname) oldname = true;
    else break;
  }
  if (i + 1 != w.size()) return xf_bad_operands(5);
  if (!xf_ring.file) return 1;
  std::string want = xf_lower(w[i]);
  auto old_of = [](const std::string& name) {
    for (const auto& [n, m] : xf_prefix.synonyms)
      if (xf_lower(n) == xf_lower(name)) return m;
    return name;
  };
  const xf_file& f = *xf_ring.file;
  for (int list = 1; list >= (block ? 1 : 0); --list)
    for (const xf_prefix_row& r : list == 1 ? f.prefix_pending_b : f.prefix_pending_a) {
      if (r.kind == -2 || r.arguments.empty()) continue;
      std::string name = r.arguments[0], old = old_of(name);
      if (want != "*" && xf_lower(oldname ? old : name) != want) continue;
      std::string text = "Line " + std::to_string(r.line + 1) + ": '" + name + "', Oldname='" + old + "'";
      for (std::size_t k = 1; k < r.arguments.size() && k <= 3; ++k)
        text += ", OP" + std::to_string(k) + "='" + r.arguments[k] + "'";
      xf_msg_text(text, XF_MSG_INFO);
    }
  return 1;
}
