// Settings that shape what a view shows: CMDline, CURLine, SCALe, TABLine, NUMber, SHAdow and DISPlay, with
// their _Screen twins, and WORDChars, the word characters by file type.
#include <algorithm>
#include <climits>

#include "editor/command.h"
#include "editor/filetype.h"
#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

std::vector<std::string> words_of(const xf_cmd_call& c) { return xf_tokens(xf_lower(xf_trim(xf_operands(c.text)))); }

// The settings of a view for its current file, or its defaults for the _Screen forms and an empty ring.
xf_view_file& view_file(const xf_cmd_call& c) {
  xf_view& v = *xf_ring.view;
  bool screen = c.row_name.find("_screen") != std::string::npos;
  if (screen || xf_ring.file_no < 0 || xf_ring.file_no >= static_cast<int32_t>(v.per_file.size())) return v.defaults;
  return v.per_file[xf_ring.file_no];
}

bool cmdline_at_bottom(const xf_view& v) { return std::abs(v.cmdline_place[0]) != 1; }

// A screen row as CURLine, SCALe and TABLine take it: n, +n, -n (counted from the bottom), m, m+n, m-n.
bool parse_row(const std::string& w, int32_t height, int32_t& row) {
  if (w.empty()) return false;
  int32_t n = 0;
  if (w[0] == 'm') {
    row = height / 2;
    if (w.size() == 1) return true;
    if ((w[1] != '+' && w[1] != '-') || !xf_parse_count(std::string_view(w).substr(2), n)) return false;
    row += w[1] == '+' ? n : -n;
    return true;
  }
  if (w[0] == '+') {
    if (!xf_parse_count(std::string_view(w).substr(1), n)) return false;
    row = n;
    return true;
  }
  if (w[0] == '-') {
    if (!xf_parse_count(std::string_view(w).substr(1), n)) return false;
    row = height - n + 2;
    return true;
  }
  if (!xf_parse_count(w, n)) return false;
  row = n;
  return true;
}

// The rows a view's file area may use for the current line, a scale or a tab line.
void row_limits(const xf_view& v, int32_t& low, int32_t& high) {
  bool bottom = cmdline_at_bottom(v);
  low = bottom ? 3 : 4;
  high = bottom ? v.height - 1 : v.height;
}

// SCALe and TABLine: [ON|OFF] [row]; the row is kept positive when on, negative when off.
int scale_or_tab(const xf_cmd_call& c, int32_t xf_view_file::*field) {
  std::vector<std::string> w = words_of(c);
  xf_view_file& vf = view_file(c);
  int32_t& row = vf.*field;
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... Is %s %d", row > 0 ? "ON" : "OFF", std::abs(row));
    return 1;
  }
  if (w.size() > 2) return xf_bad_operands();
  int32_t on = row > 0, at = std::abs(row);
  std::size_t k = 0;
  if (w[0] == "on" || w[0] == "off") on = w[k++] == "on";
  if (k < w.size()) {
    const xf_view& v = *xf_ring.view;
    int32_t low, high;
    if (!parse_row(w[k], v.height, at)) return xf_bad_operands();
    row_limits(v, low, high);
    if (at < low || at > high) return xf_bad_operands();
    if (on && at == v.curline) {
      xf_msg(57, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
  }
  row = on ? at : -at;
  return 1;
}

int on_off_zero(const xf_cmd_call& c, int32_t& value, bool zero_allowed) {
  std::vector<std::string> w = words_of(c);
  if (w.empty()) {
    xf_msg(value == 2 ? 170 : value ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w.size() != 1) return xf_bad_operands();
  if (w[0] == "on") value = 1;
  else if (w[0] == "off") value = 0;
  else if (zero_allowed && w[0] == "zero") value = 2;
  else return xf_bad_operands();
  return 1;
}

// WORDChars: the word characters of each file type, "*" for any type.
struct word_table {
  std::vector<std::pair<std::string, std::string>> rows;
  std::string cached_ext = "\x01";
  bool table[256] = {};
};
word_table words;

}  // namespace

// The word characters for the current file: its type's row, else the row for "*", else letters, digits and "_".
bool xf_word_char(unsigned char c) {
  std::string ext = xf_ring.file ? xf_ft_extension(xf_ring.file->name) : std::string();
  if (ext != words.cached_ext) {
    const std::string* chars = nullptr;
    for (const auto& [ft, s] : words.rows)
      if (ft == ext) chars = &s;
    if (!chars)
      for (const auto& [ft, s] : words.rows)
        if (ft == "*") chars = &s;
    for (int k = 0; k < 256; ++k)
      words.table[k] = chars ? false : (k >= 'a' && k <= 'z') || (k >= 'A' && k <= 'Z') || (k >= '0' && k <= '9') ||
                                           k == '_';
    if (chars)
      for (unsigned char ch : *chars) words.table[ch] = true;
    words.cached_ext = ext;
  }
  return words.table[c];
}

void xf_wordchars_reset() { words = word_table{}; }

// WORDChars [ft] chars; no operand shows the current file's word characters.
int xfcm_wordchars(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (ops.empty()) {
    std::string s;
    for (int k = 1; k < 256; ++k)
      if (xf_word_char(static_cast<unsigned char>(k))) s += static_cast<char>(k);
    xf_msg_text("..... Is " + s, XF_MSG_INFO);
    return 1;
  }
  std::string ft = "*", chars(ops);
  std::size_t sp = ops.find(' ');
  if (sp != std::string_view::npos) {
    ft = std::string(ops.substr(0, sp));
    chars = std::string(xf_trim(ops.substr(sp)));
  }
  for (auto& [t, s] : words.rows)
    if (t == ft) {
      s = chars;
      words.cached_ext = "\x01";
      return 1;
    }
  words.rows.emplace_back(ft, chars);
  words.cached_ext = "\x01";
  return 1;
}

// CMDline [ON|OFF] [TOP|BOTtom]: whether the command line is always shown, and where.
int xfcm_cmdline(const xf_cmd_call& c) {
  std::vector<std::string> w = words_of(c);
  xf_view& v = *xf_ring.view;
  int32_t& place = v.cmdline_place[0];
  bool on = place > 0, bottom = cmdline_at_bottom(v);
  if (w.empty()) {
    xf_msg(on ? (bottom ? 122 : 121) : (bottom ? 124 : 123), XF_MSG_INFO);
    return 1;
  }
  if (w.size() > 2) return xf_bad_operands();
  for (const std::string& x : w) {
    if (x == "on") on = true;
    else if (x == "off") on = false;
    else if (x == "top") bottom = false;
    else if (x.size() >= 3 && std::string_view("bottom").starts_with(x)) bottom = true;
    else return xf_bad_operands();
  }
  bool was_bottom = cmdline_at_bottom(v);
  place = (bottom ? 2 : 1) * (on ? 1 : -1);
  if (bottom == was_bottom) return 1;
  // Rows move out of the command line's way.
  auto moved = [&](int32_t& row) {
    if (row <= 0) return;
    if (bottom && row == v.height) row = v.curline == v.height - 1 ? v.height - 2 : v.height - 1;
    if (!bottom && row == 3) row = v.curline == 4 ? 5 : 4;
  };
  if (bottom && v.curline == v.height) --v.curline;
  if (!bottom && v.curline == 3) v.curline = 4;
  for (xf_view_file& f : v.per_file) {
    moved(f.scale_row);
    moved(f.tabline_row);
  }
  moved(v.defaults.scale_row);
  moved(v.defaults.tabline_row);
  return 1;
}

// CURLine [ON] row: the screen row of the current line.
int xfcm_curline(const xf_cmd_call& c) {
  std::vector<std::string> w = words_of(c);
  xf_view& v = *xf_ring.view;
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, " ..... Is ON %d", v.curline);
    return 1;
  }
  if (w[0] == "on") w.erase(w.begin());
  int32_t row = 0;
  if (w.size() != 1 || !parse_row(w[0], v.height, row)) return xf_bad_operands();
  int32_t low, high;
  row_limits(v, low, high);
  row = std::clamp(row, low, std::max(low, high));
  for (const xf_view_file& f : v.per_file)
    if ((f.scale_row > 0 && f.scale_row == row) || (f.tabline_row > 0 && f.tabline_row == row)) {
      xf_msg(56, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
  v.curline = row;
  return 1;
}

int xfcm_scale(const xf_cmd_call& c) { return scale_or_tab(c, &xf_view_file::scale_row); }

int xfcm_tabline(const xf_cmd_call& c) { return scale_or_tab(c, &xf_view_file::tabline_row); }

int xfcm_number(const xf_cmd_call& c) { return on_off_zero(c, view_file(c).number, true); }

int xfcm_shadow(const xf_cmd_call& c) { return on_off_zero(c, xf_ring.view->shadow, false); }

// DISPlay low [high|*]: the selection levels that are shown.
int xfcm_display(const xf_cmd_call& c) {
  std::vector<std::string> w = words_of(c);
  xf_view& v = *xf_ring.view;
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "...... is %d %d", v.display[0], v.display[1]);
    return 1;
  }
  auto level = [](const std::string& s, int32_t& out) {
    if (s == "*") {
      out = INT32_MAX;
      return true;
    }
    bool neg = s[0] == '-';
    if (!xf_parse_count(std::string_view(s).substr(neg ? 1 : 0), out)) return false;
    if (neg) out = -out;
    return true;
  };
  int32_t low = 0, high = 0;
  if (w.size() > 2 || !level(w[0], low)) return xf_bad_operands(5);
  high = low;
  if (w.size() == 2 && !level(w[1], high)) return xf_bad_operands(5);
  if (low > high) return xf_bad_operands(5);
  v.display[0] = low;
  v.display[1] = high;
  return 1;
}

// TABSet col... [FT ext] | OFF: the tab stops of the file (or of a file type), in rising order, kept as the screen
// library takes them: the count, a reserved word, then the columns.
int xfcm_tabset(const xf_cmd_call& c) {
  std::vector<std::string> w = words_of(c);
  if (w.empty()) {
    if (!xf_ring.file) return 1;
    std::string s;
    const std::vector<int32_t>& tabs = xf_ring.file->tabs;
    for (std::size_t k = 2; k < tabs.size(); ++k) s += " " + std::to_string(tabs[k]);
    xf_msg_text(s.empty() ? "..... Is OFF" : "..... Is" + s, XF_MSG_INFO);
    return 1;
  }
  std::string ext;
  bool typed = w.size() >= 2 && w[w.size() - 2] == "ft";
  if (typed) {
    ext = w.back();
    w.resize(w.size() - 2);
  }
  std::vector<int32_t> cols;
  if (!(w.size() == 1 && w[0] == "off"))
    for (const std::string& x : w) {
      int32_t n = 0;
      if (!xf_parse_count(x, n) || n < 1) return xf_bad_operands(5);
      cols.push_back(n);
    }
  if (cols.empty() && !(w.size() == 1 && w[0] == "off")) return xf_bad_operands(5);
  std::sort(cols.begin(), cols.end());
  cols.erase(std::unique(cols.begin(), cols.end()), cols.end());
  // The screen library's form: the count, a reserved word, then the columns.
  if (!cols.empty()) {
    cols.insert(cols.begin(), {static_cast<int32_t>(cols.size()), 0});
  }
  if (typed)
    xf_ft_set(XF_FT_TABS, ext, cols);
  else if (xf_ring.file)
    xf_ring.file->tabs = cols;
  return 1;
}
