// The commands on the selection: S_Set, S_COpy, S_CUt, S_Lower, S_Upper, S_LShift, S_RShift, S_Xed, S_PRsh,
// SELECTAll, and the keyboard's C_STARTS, C_ENDS, C_ENDSAll and C_ENDSR.
#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/select_make.h"
#include "editor/state.h"

namespace {

int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

int invalid(int code) {
  xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
  rc = code;
  return 1;
}

// A whole number of at most nine digits, with an optional sign.
bool number(const std::string& w, int32_t& out) {
  std::size_t i = w.size() > 1 && (w[0] == '-' || w[0] == '+') ? 1 : 0;
  if (i == w.size() || w.size() - i > 9) return false;
  for (std::size_t k = i; k < w.size(); ++k)
    if (w[k] < '0' || w[k] > '9') return false;
  out = std::stoi(w.substr(i)) * (w[0] == '-' ? -1 : 1);
  return true;
}

bool starts(const std::string& word, std::string_view name, std::size_t least) {
  return word.size() >= least && word.size() <= name.size() && name.substr(0, word.size()) == word;
}

// The selection must exist and its file must take changes; false after the message.
bool selection_to_change() {
  if (!xf_sel_active()) {
    fail(58, 1);
    return false;
  }
  const xf_file& f = *xf_ring.files[static_cast<std::size_t>(xf_sel.sel.file)];
  if (!f.read_write) {
    fail(118, 1);
    return false;
  }
  return true;
}

// The selected part of each selected line, 0-based [from, to) clamped to the line, for an edit of it.
template <typename Edit>
bool edit_selected(Edit edit, const char* tag) {
  const xf_selection s = xf_sel.sel;
  xf_file_for_now here(s.file);
  xf_file& f = *xf_ring.file;
  bool changed = false;
  // The spans first: the first change cancels the selection record.
  std::vector<std::pair<int32_t, int32_t>> spans;
  for (int32_t l = std::max(0, s.first_line - 1); l <= std::min(f.size - 1, s.last_line - 1); ++l) {
    int32_t from = 0, to = 0;
    if (!xf_sel_span(s.file, l, from, to)) from = to = -1;
    spans.emplace_back(from, to);
  }
  for (int32_t l = std::max(0, s.first_line - 1); l <= std::min(f.size - 1, s.last_line - 1); ++l) {
    if (xf_ring.view->scope == 0 && !xf_in_scope(l)) continue;
    auto [from, to] = spans[static_cast<std::size_t>(l - std::max(0, s.first_line - 1))];
    if (from < 0) continue;
    std::string t(f.line(l));
    int32_t len = static_cast<int32_t>(t.size());
    if (to == INT_MAX && s.kind < XS_RECT) to = len;
    edit(t, std::min(from, len), std::min(to, len), from);
    if (t == f.line(l)) continue;
    xf_do('r', xf_new_text(t), l, 1, 1, nullptr, tag);
    changed = true;
  }
  if (changed) f.alt_save = std::max(f.alt_save, 0) + 1;
  return changed;
}

int fold(bool upper) {
  if (!selection_to_change()) return 1;
  edit_selected(
      [upper](std::string& t, int32_t a, int32_t b, int32_t) {
        for (int32_t i = a; i < b; ++i) {
          char& c = t[static_cast<std::size_t>(i)];
          if (upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
          if (!upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        }
      },
      upper ? "xfcm_s_upper" : "xfcm_s_lower");
  xf_sel_end();
  rc = 0;
  return 1;
}

// The selected lines shift at the selection's first column, which stands for both zone edges.
int shift(const xf_cmd_call& c, bool right) {
  std::vector<std::string> w = xf_tokens(c.text);
  int32_t n = 1;
  if (w.size() > 2 || (w.size() == 2 && (!number(w[1], n) || n < 0))) return invalid(1);
  if (!selection_to_change()) return 1;
  const xf_selection s = xf_sel.sel;
  const int32_t col = std::max(0, s.first_column - 1);
  {
    xf_file_for_now here(s.file);
    xf_file& f = *xf_ring.file;
    bool changed = false;
    for (int32_t l = std::max(0, s.first_line - 1); l <= std::min(f.size - 1, s.last_line - 1); ++l) {
      if (xf_ring.view->scope == 0 && !xf_in_scope(l)) continue;
      std::string t(f.line(l));
      int32_t len = static_cast<int32_t>(t.size());
      if (len < col) continue;
      if (right)
        t.insert(static_cast<std::size_t>(col), static_cast<std::size_t>(n), ' ');
      else
        t.erase(static_cast<std::size_t>(col), static_cast<std::size_t>(std::min(n, len - col)));
      if (t == f.line(l)) continue;
      xf_do('r', xf_new_text(t), l, 1, 1, nullptr, right ? "xfcm_s_rshift" : "xfcm_s_lshift");
      changed = true;
    }
    if (changed) f.alt_save = std::max(f.alt_save, 0) + 1;
  }
  xf_sel_touch();  // the selection stays
  rc = 0;
  return 1;
}

// The 1-based line and column of the cursor on a file row of the current view; false after the message.
bool cursor_cell(int32_t& line, int32_t& column) {
  const xf_place& p = xf_cursor_place();
  if (!xf_ring.file || p.kind != XP_LINE || p.view != xf_ring.view_no || p.line < 0 ||
      p.line >= xf_ring.file->size) {
    fail(6, 1);
    return false;
  }
  line = p.line + 1;
  column = p.column + 1;
  return true;
}

// C_ENDS and C_ENDSR: start, finish (when the moving end is at the cursor) or extend by characters.
int end_at_cursor(bool rect) {
  int32_t line = 0, column = 0;
  if (!cursor_cell(line, column)) return 1;
  const int32_t pending = rect ? XS_RECT_PENDING : XS_LINEAR_PENDING;
  if (!xf_sel_in_view()) {
    xf_sel_start(line, column, pending, 1);
  } else {
    int32_t end_line = 0, end_column = 0;
    xf_sel_moving_end(end_line, end_column);
    if (end_line == line && end_column == column && (rect ? xf_sel.sel.kind >= XS_RECT : xf_sel.sel.kind < XS_RECT))
      xf_sel.sel.kind = rect ? XS_RECT : XS_LINEAR;
    else
      xf_sel_extend(line, column, 1, rect);
  }
  rc = 0;
  return 1;
}

}  // namespace

// S_Set ALL | OFF | LINEAR|RECTANGULAR PENDING|NOPENDING l1 c1 l2 c2|*
int xfcm_s_set(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  for (std::string& x : w) x = xf_lower(x);
  if (w.size() == 2 && starts(w[1], "off", 1)) {
    xf_sel_end();
    rc = 0;
    return 1;
  }
  if (!xf_ring.file) return invalid(1);
  const xf_file& f = *xf_ring.file;
  if (w.size() == 2 && starts(w[1], "all", 1)) {
    if (f.size == 0) return invalid(1);
    xf_sel_set(xf_ring.file_no, XS_LINEAR, 1, 0, f.size, -1);
    rc = 0;
    return 1;
  }
  if (w.size() != 7) return invalid(1);
  int32_t kind = 0;
  if (starts(w[1], "linear", 1)) kind = XS_LINEAR;
  else if (starts(w[1], "rectangular", 1)) kind = XS_RECT;
  else return invalid(1);
  if (starts(w[2], "pending", 1)) kind += 1;
  else if (!starts(w[2], "nopending", 1)) return invalid(1);
  int32_t l1 = 0, c1 = 0, l2 = 0, c2 = -1;
  if (!number(w[3], l1) || !number(w[4], c1) || !number(w[5], l2) || (w[6] != "*" && !number(w[6], c2)))
    return invalid(1);
  if (l1 < 1 || l1 > f.size || l2 < 1 || l2 > f.size || c1 < 0 || (w[6] != "*" && c2 < 1)) return invalid(1);
  if (l2 < l1 || (l2 == l1 && c2 != -1 && c2 < c1)) return invalid(1);
  xf_sel_set(xf_ring.file_no, kind, l1, c1, l2, c2);
  rc = 0;
  return 1;
}

// S_COpy: the selection to the shelf and the clipboard; S_COpy r|a word text: the text as the shelf's only or
// last line.
int xfcm_s_copy(const xf_cmd_call& c) {
  std::string_view ops = xf_operands(c.text);
  std::size_t b = ops.find_first_not_of(' ');
  rc = 0;
  if (b == std::string_view::npos) {
    xf_sel_copy();  // with no selection nothing happens, and the clipboard stays as it was
    return 1;
  }
  ops.remove_prefix(b);
  std::size_t e = ops.find(' ');
  std::string word = xf_lower(ops.substr(0, e));
  std::string text = e == std::string_view::npos ? std::string() : std::string(ops.substr(e + 1));
  xf_shelf_state& sh = xf_sel.shelf;
  if (word[0] == 'r') {
    sh.lines.assign(1, text);
  } else if (word[0] == 'a') {
    if (sh.rectangular) sh.lines.clear();
    sh.lines.push_back(text);
  } else {
    return invalid(1);
  }
  sh.rectangular = false;
  sh.line_end = false;
  xf_shelf_offer();
  return 1;
}

// S_CUt: copies the selection, then deletes it.
int xfcm_s_cut(const xf_cmd_call&) {
  if (!selection_to_change()) return 1;
  xf_sel_copy();
  xf_sel_delete();
  rc = 0;
  return 1;
}

int xfcm_s_lower(const xf_cmd_call&) { return fold(false); }
int xfcm_s_upper(const xf_cmd_call&) { return fold(true); }
int xfcm_s_lshift(const xf_cmd_call& c) { return shift(c, false); }
int xfcm_s_rshift(const xf_cmd_call& c) { return shift(c, true); }

// S_Xed: edits the file that the selected text names.
int xfcm_s_xed(const xf_cmd_call& c) {
  if (!xf_sel_active()) return fail(58, 1);
  std::string name = xf_sel_text();
  if (xf_sel.sel.first_line != xf_sel.sel.last_line) return fail(28, 1);
  std::size_t a = name.find_first_not_of(" \t"), z = name.find_last_not_of(" \t");
  if (a == std::string::npos) return fail(46, 1);
  xf_sel_end();
  xfcom2("command xedit " + name.substr(a, z - a + 1), c.work_dir);
  return 1;
}

// S_PRsh: the selection offered as the primary selection, for a later paste by the mouse.
int xfcm_s_prsh(const xf_cmd_call&) {
  if (!xf_sel_active()) return fail(58, 1);
  xf_shelf_state saved = xf_sel.shelf;
  xf_sel_copy();
  xf_shelf_offer(true);
  xf_sel.shelf = saved;
  rc = 0;
  return 1;
}

// SELECTAll n1 n2 ...: the selection levels of all lines, from the list again and again.
int xfcm_selectall(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  std::vector<int32_t> levels;
  for (std::size_t i = 1; i < w.size(); ++i) {
    int32_t n = 0;
    if (!number(w[i], n)) return invalid(5);
    levels.push_back(n);
  }
  if (levels.empty()) return invalid(5);
  if (xf_ring.file) {
    xf_file& f = *xf_ring.file;
    for (int32_t l = 0; l < f.size; ++l) f.select[static_cast<std::size_t>(l)] = levels[static_cast<std::size_t>(l) % levels.size()];
  }
  rc = 0;
  return 1;
}

// C_STARTS: a linear selection begins at the cursor.
int xfcm_c_starts(const xf_cmd_call&) {
  int32_t line = 0, column = 0;
  if (!cursor_cell(line, column)) return 1;
  xf_sel_start(line, column, XS_LINEAR_PENDING, 1);
  rc = 0;
  return 1;
}

int xfcm_c_ends(const xf_cmd_call&) { return end_at_cursor(false); }
int xfcm_c_endsr(const xf_cmd_call&) { return end_at_cursor(true); }

// C_ENDSAll: starts a selection, or extends it to the cursor by whole lines; it never ends one.
int xfcm_c_endsall(const xf_cmd_call&) {
  int32_t line = 0, column = 0;
  if (!cursor_cell(line, column)) return 1;
  if (!xf_sel_in_view())
    xf_sel_start(line, column, XS_LINEAR_PENDING, 1);
  else
    xf_sel_extend(line, column, 3, false);
  rc = 0;
  return 1;
}
