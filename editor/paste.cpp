// Pasting: the display's paste event (a terminal's bracketed paste) and S_Paste of linear text.
#include "editor/paste.h"

#include <algorithm>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/compose.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/state.h"
#include "screen/as_read.h"
#include "screen/fs.h"

xf_paste_state xf_paste;

namespace {

// The text cut at its line ends; a text that ends with a line end has an empty last piece.
std::vector<std::string_view> pieces_of(std::string_view text) {
  std::vector<std::string_view> out;
  std::size_t from = 0;
  for (std::size_t nl; (nl = text.find('\n', from)) != std::string_view::npos; from = nl + 1)
    out.push_back(text.substr(from, nl - from));
  out.push_back(text.substr(from));
  return out;
}

// Into the command line at the cursor; it holds one command, so line ends become blanks.
void into_command_line(const xf_place& at, std::string_view text, bool overlay) {
  std::string add(text);
  if (!add.empty() && add.back() == '\n') add.pop_back();
  std::replace(add.begin(), add.end(), '\n', ' ');
  std::string& t = xf_run.command_line;
  std::size_t col = static_cast<std::size_t>(std::max(0, at.column - 1));
  if (t.size() < col) t.resize(col, ' ');
  if (overlay)
    t.replace(col, std::min(add.size(), t.size() - col), add);
  else
    t.insert(col, add);
  const xf_view& v = *xf_ring.views[static_cast<std::size_t>(std::max(0, at.view))];
  std::size_t limit = static_cast<std::size_t>(std::max(1, 2 * v.width - 13));
  if (t.size() > limit) {  // no more fits on the command line's two rows
    t.resize(limit);
    fsalrm();
  }
  xf_cursor_to_cmd(static_cast<int32_t>(std::min(col + add.size(), limit)) + 1);
}

// The cursor goes behind the text, and the view follows it when the text ran past the rows shown.
void cursor_behind(int32_t line, int32_t column) {
  xf_cursor_to_line(line, column);
  xf_place p = xf_cursor_place();
  p.kind = XP_LINE;
  p.view = std::max(0, xf_ring.view_no);
  p.line = line;
  p.column = column;
  xf_set_cursor_place(p);
  if (xf_ring.view_no < 0 || xf_ring.view_no >= static_cast<int32_t>(xf_scr.views.size())) return;
  const xf_view_fields& vf = xf_scr.views[static_cast<std::size_t>(xf_ring.view_no)];
  bool shown = false;
  for (const auto* table : {&vf.upper, &vf.lower})
    for (const xf_row& r : *table) shown = shown || (!r.shadow && r.line == line);
  if (!shown) xf_current_line() = line;
}

// Empty lines behind the last one until `line` exists.
void fill_to(int32_t line) {
  xf_file& f = *xf_ring.file;
  if (line < f.size) return;
  std::vector<xf_text> empty;
  for (int32_t k = f.size; k <= line; ++k) empty.push_back(xf_new_text(""));
  xf_do('I', nullptr, f.size - 1, static_cast<int32_t>(empty.size()), 1, &empty, "xf_paste:fill");
}

// A new first line, for a paste on the top-of-file row.
void new_first_line() {
  std::vector<xf_text> one;
  one.push_back(xf_new_text(""));
  xf_do('I', nullptr, -1, 1, 1, &one, "xf_paste:top");
  xf_shift_positions(-1, 1);
  xf_current_line() += 1;
}

// Pastes at a place of the screen: `text`, or the shelf with its flags when `shelf`; false (with the message)
// when the place takes no paste.
bool paste_at(const xf_place& at, std::string_view text, bool overlay, bool shelf = false) {
  auto put = [&](int32_t line, int32_t column) {
    if (shelf)
      xf_shelf_paste(line, column, overlay);
    else
      xf_paste_linear(line, column, text, overlay);
  };
  if (at.kind == XP_CMD) {
    into_command_line(at, text, overlay);
    return true;
  }
  if (!xf_ring.file) return false;
  xf_file& f = *xf_ring.file;
  switch (at.kind) {
    case XP_LINE:
      if (at.line < 0 || at.line >= f.size || (xf_ring.view->scope == 0 && !xf_in_scope(at.line))) break;
      put(at.line, at.column);
      return true;
    case XP_BELOW:
      fill_to(at.line);
      put(at.line, at.column);
      return true;
    case XP_TOF:
      new_first_line();
      put(0, std::max(0, at.column));
      return true;
    default: break;
  }
  xf_msg(6, XF_MSG_ERROR);
  rc = 1;
  return false;
}

}  // namespace

void xf_paste_reset() { xf_paste = xf_paste_state{}; }

void xf_paste_linear(int32_t line, int32_t column, std::string_view text, bool overlay) {
  xf_file& f = *xf_ring.file;
  const std::vector<std::string_view> pieces = pieces_of(text);
  const std::size_t col = static_cast<std::size_t>(std::max(0, column));
  const int32_t n = static_cast<int32_t>(pieces.size());
  std::string first(f.line(line));
  if (first.size() < col) first.resize(col, ' ');
  if (overlay) {
    // Each piece over the characters of its line, from the column on the first line and from the start on the
    // others; lines past the end are added.
    int32_t end_line = line, end_col = static_cast<int32_t>(col);
    for (int32_t k = 0; k < n; ++k) {
      if (k == n - 1 && k > 0 && pieces[k].empty()) break;  // the text's own last line end
      int32_t target = line + k;
      std::size_t c0 = k == 0 ? col : 0;
      std::string t = k == 0 ? first : target < f.size ? std::string(f.line(target)) : std::string();
      if (t.size() < c0) t.resize(c0, ' ');
      t.replace(c0, std::min(pieces[k].size(), t.size() - c0), pieces[k]);
      if (target < f.size)
        xf_do('r', xf_new_text(t), target, 1, 1, nullptr, "xf_paste:o");
      else
        xf_do('i', xf_new_text(t), f.size - 1, 1, 1, nullptr, "xf_paste:o");
      end_line = target;
      end_col = static_cast<int32_t>(c0 + pieces[k].size());
    }
    f.alt_save++;
    cursor_behind(end_line, end_col);
    return;
  }
  const std::string rest = first.substr(col);
  first.resize(col);
  first += pieces[0];
  if (n == 1) {
    xf_do('r', xf_new_text(first + rest), line, 1, 1, nullptr, "xf_paste");
    f.alt_save++;
    cursor_behind(line, static_cast<int32_t>(col + pieces[0].size()));
    return;
  }
  xf_do('r', xf_new_text(first), line, 1, 1, nullptr, "xf_paste");
  std::vector<xf_text> lines;
  lines.reserve(static_cast<std::size_t>(n - 1));
  for (int32_t k = 1; k < n - 1; ++k) lines.push_back(xf_new_text(pieces[static_cast<std::size_t>(k)]));
  lines.push_back(xf_new_text(std::string(pieces.back()) + rest));
  xf_do('I', nullptr, line, n - 1, 1, &lines, "xf_paste");
  xf_shift_positions(line, n - 1);
  f.alt_save++;
  cursor_behind(line + n - 1, static_cast<int32_t>(pieces.back().size()));
}

void xf_paste_event(std::string_view text) {
  if (text.empty()) return;
  xf_paste.clip.assign(text);
  xf_paste.have_clip = true;
  const xf_place& at = xf_cursor_place();
  const bool lines = text.find('\n') != std::string_view::npos;
  const bool overlay = !lines && !asqinsert();
  if (!lines && at.kind != XP_CMD && at.kind != XP_LINE && at.kind != XP_BELOW && at.kind != XP_TOF) {
    // A prefix field, a row above the top: the text is typed there, as the keys would type it.
    for (unsigned char c : text)
      if (c >= 32 && c != 127) aspush(c);
    return;
  }
  if (!paste_at(at, text, overlay)) fsalrm();
}

// S_Paste [i|o] [p|c|s] [line column]: the shelf at the position, inserted or overlaid; the clipboard comes into
// the shelf first unless this program owns it; with p the selection is copied first.
int xfcm_s_paste(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  int overlay = -1;  // the keyboard's insert state decides
  bool primary = false;
  std::vector<int32_t> numbers;
  bool bad_number = false;
  for (std::size_t i = 1; i < w.size(); ++i) {
    const std::string word = xf_lower(w[i]);
    if (std::all_of(word.begin(), word.end(), [](char ch) { return ch >= '0' && ch <= '9'; })) {
      int64_t v = 0;
      for (char ch : word) v = std::min<int64_t>(v * 10 + (ch - '0'), 0x7fffffff);
      bad_number = bad_number || v < 1;
      numbers.push_back(static_cast<int32_t>(v));
      continue;
    }
    switch (word[0]) {
      case 'i': overlay = 0; break;
      case 'o': overlay = 1; break;
      case 'p': primary = true; break;
      case 'c': case 's': primary = false; break;
      default:
        xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
        rc = 1;
        return 1;
    }
  }
  if (numbers.size() == 1 || numbers.size() > 2 || bad_number ||
      (numbers.size() == 2 && (!xf_ring.file || numbers[0] > xf_ring.file->size))) {
    xf_msg(206, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  if (!(primary && xf_sel_copy()) && xf_shelf_take_clipboard() != 1) return 1;
  if (overlay < 0) overlay = asqinsert() ? 0 : 1;
  xf_place at;
  if (numbers.size() == 2) {
    at.kind = XP_LINE;
    at.view = std::max(0, xf_ring.view_no);
    at.line = numbers[0] - 1;
    at.column = numbers[1] - 1;
  } else if (!xf_run.batch || xf_cursor_place().kind != XP_NONE) {
    at = xf_cursor_place();
  }
  if (at.kind != XP_CMD && xf_ring.file && !xf_ring.file->read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (paste_at(at, xf_shelf_text(), overlay == 1, true)) rc = 0;
  return 1;
}
