// The selection record, the shelf, copying, deleting and pasting the selected text, and the clipboard's exchange.
#include "editor/select.h"

#include <algorithm>
#include <climits>

#include "editor/compose.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/paste.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_clipboard.h"

xf_select_state xf_sel;

namespace {

// The file number of the file with this id, or -1 when it has left the ring.
int32_t file_of_id(int32_t id) {
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[static_cast<std::size_t>(i)]->file_id == id) return i;
  return -1;
}

// Does the linear selection take its last line's line end (its last column is -1 or past the text)?
bool takes_line_end(const xf_selection& s, const xf_file& f) {
  if (s.last_column == -1) return true;
  return s.last_line - 1 < f.size && s.last_column > f.len[static_cast<std::size_t>(s.last_line - 1)];
}

std::string piece(std::string_view line, int32_t from, int32_t to) {
  int32_t len = static_cast<int32_t>(line.size());
  from = std::clamp(from, 0, len);
  to = std::clamp(to, from, len);
  return std::string(line.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
}

void replace(int32_t line, const std::string& s, const char* tag) {
  if (xf_ring.file->line(line) == s) return;
  xf_do('r', xf_new_text(s), line, 1, 1, nullptr, tag);
}

void delete_run(int32_t start, int32_t count) {
  if (count <= 0) return;
  xf_do(count == 1 ? 'd' : 'D', nullptr, start, count, 1, nullptr, "xf_sel_delete");
  xf_drop_positions(start, count, start);
}

// Deletes the in-scope lines among first..last (all of them under SCOpe ALL), back to front.
void delete_between(int32_t first, int32_t last) {
  std::vector<int32_t> lines;
  for (int32_t l = first; l <= last; ++l)
    if (xf_ring.view->scope != 0 || xf_in_scope(l)) lines.push_back(l);
  for (std::size_t e = lines.size(); e > 0;) {
    std::size_t b = e - 1;
    while (b > 0 && lines[b - 1] == lines[b] - 1) --b;
    delete_run(lines[b], static_cast<int32_t>(e - b));
    e = b;
  }
}

// Pastes a block: each piece in the same columns of successive lines, blanks up to the column, lines added at
// the file's end.
void paste_block(int32_t line, int32_t column, bool overlay) {
  xf_file& f = *xf_ring.file;
  const std::size_t col = static_cast<std::size_t>(std::max(0, column));
  for (std::size_t k = 0; k < xf_sel.shelf.lines.size(); ++k) {
    const std::string& p = xf_sel.shelf.lines[k];
    int32_t target = line + static_cast<int32_t>(k);
    if (target >= f.size) xf_do('i', xf_new_text(""), f.size - 1, 1, 1, nullptr, "xf_paste:block");
    std::string t(f.line(target));
    if (t.size() < col) t.resize(col, ' ');
    if (overlay)
      t.replace(col, std::min(p.size(), t.size() - col), p);
    else
      t.insert(col, p);
    replace(target, t, "xf_paste:block");
  }
  f.alt_save = std::max(f.alt_save, 0) + 1;
}

}  // namespace

xf_file_for_now::xf_file_for_now(int32_t file) : old_(xf_ring.file_no) {
  if (file != old_) xf_set_file(file);
}

xf_file_for_now::~xf_file_for_now() {
  if (old_ >= 0 && old_ < xf_file_count() && old_ != xf_ring.file_no) xf_set_file(old_);
}

void xf_select_reset() { xf_sel = xf_select_state{}; }

bool xf_sel_active() {
  xf_selection& s = xf_sel.sel;
  if (s.file < 0) return false;
  int32_t n = file_of_id(s.file_id);
  if (n < 0) {
    xf_sel_end();
    return false;
  }
  s.file = n;
  const xf_file& f = *xf_ring.files[static_cast<std::size_t>(n)];
  // Every journalled change adds an undo record and undo moves one to redo; a save that frees the undo records
  // (SAVEClearundo) empties the undo stack alone, and changes no line.
  if (f.journal.undo.empty() && f.journal.redo.size() == s.redo_records && f.size == s.lines) s.undo_records = 0;
  if (f.journal.undo.size() != s.undo_records || f.journal.redo.size() != s.redo_records || f.size != s.lines) {
    xf_sel_end();
    return false;
  }
  return true;
}

bool xf_sel_in_view() { return xf_sel_active() && xf_sel.sel.file == xf_ring.file_no; }

void xf_sel_touch() {
  xf_selection& s = xf_sel.sel;
  if (s.file < 0 || s.file >= xf_file_count()) return;
  const xf_file& f = *xf_ring.files[static_cast<std::size_t>(s.file)];
  s.file_id = f.file_id;
  s.undo_records = f.journal.undo.size();
  s.redo_records = f.journal.redo.size();
  s.lines = f.size;
}

void xf_sel_set(int32_t file, int32_t kind, int32_t l1, int32_t c1, int32_t l2, int32_t c2) {
  xf_selection& s = xf_sel.sel;
  s = xf_selection{};
  s.file = s.anchor_file = file;
  s.kind = kind;
  s.first_line = s.anchor_line = l1;
  s.first_column = s.anchor_column = c1;
  s.last_line = l2;
  s.last_column = c2;
  s.end_line = l2;
  s.end_column = c2;
  xf_sel_touch();
}

void xf_sel_end() { xf_sel.sel = xf_selection{}; }

bool xf_sel_span(int32_t file, int32_t line, int32_t& from, int32_t& to) {
  if (!xf_sel_active()) return false;
  const xf_selection& s = xf_sel.sel;
  const int32_t l = line + 1;
  if (file != s.file || l < s.first_line || l > s.last_line) return false;
  const bool rect = s.kind >= XS_RECT;
  from = rect || l == s.first_line ? std::max(0, s.first_column - 1) : 0;
  to = (rect || l == s.last_line) && s.last_column != -1 ? s.last_column : INT_MAX;
  return to > from;
}

bool xf_sel_covers(int32_t file, int32_t line, int32_t column) {
  int32_t from = 0, to = 0;
  return xf_sel_span(file, line, from, to) && column >= from && column < to;
}

std::string xf_sel_text() {
  if (!xf_sel_active() || xf_sel.sel.first_line != xf_sel.sel.last_line) return {};
  const xf_file& f = *xf_ring.files[static_cast<std::size_t>(xf_sel.sel.file)];
  int32_t line = xf_sel.sel.first_line - 1, from = 0, to = 0;
  if (line < 0 || line >= f.size || !xf_sel_span(xf_sel.sel.file, line, from, to)) return {};
  return piece(f.line(line), from, to == INT_MAX ? f.len[static_cast<std::size_t>(line)] : to);
}

std::string xf_shelf_text() {
  std::string out;
  const auto& lines = xf_sel.shelf.lines;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i) out += '\n';
    out += lines[i];
  }
  if (xf_sel.shelf.line_end && !lines.empty()) out += '\n';
  return out;
}

void xf_shelf_from_text(std::string_view text, bool rectangular) {
  xf_shelf_state& sh = xf_sel.shelf;
  sh.lines.assign(1, std::string());
  sh.line_end = false;
  sh.rectangular = rectangular;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == 0x1a) break;
    if (c == 0) continue;
    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (c == '\n') {
      sh.lines.emplace_back();
      continue;
    }
    sh.lines.back() += c;
  }
  if (sh.lines.size() > 1 && sh.lines.back().empty()) {
    sh.lines.pop_back();
    sh.line_end = true;
  }
  sh.lines.shrink_to_fit();
}

bool xf_sel_copy(bool offer) {
  if (!xf_sel_active()) return false;
  const xf_selection& s = xf_sel.sel;
  const xf_file& f = *xf_ring.files[static_cast<std::size_t>(s.file)];
  xf_shelf_state& sh = xf_sel.shelf;
  sh.lines.clear();
  sh.rectangular = s.kind >= XS_RECT;
  sh.line_end = false;
  const int32_t fl = std::max(0, s.first_line - 1), ll = std::min(f.size - 1, s.last_line - 1);
  const bool ends = !sh.rectangular && takes_line_end(s, f);
  for (int32_t l = fl; l <= ll; ++l) {
    std::string_view t = f.line(l);
    int32_t len = static_cast<int32_t>(t.size());
    int32_t a = sh.rectangular || l == fl ? std::max(0, s.first_column - 1) : 0;
    int32_t b = (sh.rectangular || l == ll) && s.last_column != -1 ? s.last_column : len;
    if (!sh.rectangular && l == ll && ends) b = len;
    sh.lines.push_back(piece(t, a, b));
  }
  sh.line_end = ends;
  if (offer) xf_shelf_offer();
  return true;
}

void xf_shelf_offer(bool primary) {
  xf_shelf_state& sh = xf_sel.shelf;
  std::string text = xf_shelf_text();
  if (primary) {
    os_clip_put(text, true);
    return;
  }
  sh.offered = text;
  sh.owner = true;
  sh.clip_first.clear();
  int32_t backend = os_clip_backend();
  if (backend != OS_CLIP_NONE) {
    os_clip_mark(text, sh.rectangular);
    os_clip_put(text, false);
  }
  // Where the clipboard can't be read back, the last text known to be on it is what we offered.
  if (!os_clip_readable(backend)) {
    xf_paste.clip = text;
    xf_paste.have_clip = true;
  }
}

int xf_shelf_take_clipboard(bool quiet) {
  xf_shelf_state& sh = xf_sel.shelf;
  std::string text;
  int got = 0;
  if (os_clip_readable(os_clip_backend())) {
    got = os_clip_get(text);
  } else if (xf_paste.have_clip) {
    text = xf_paste.clip;
    got = text.empty() ? 0 : 1;
  } else if (sh.owner) {
    return 1;  // no clipboard but the shelf
  }
  if (got < 0) {
    if (!quiet) xf_msg(200, XF_MSG_ERROR);
    rc = 1;
    return -1;
  }
  if (got == 0) {
    if (!quiet) xf_msg(199, XF_MSG_INFO);
    rc = 1;
    return 0;
  }
  if (sh.owner && text == sh.offered) return 1;  // our own offer: the shelf, with its flags, is the truth
  sh.owner = false;
  if (text != sh.taken) {  // the clipboard changed hands: S_Find may take its first line once again
    sh.taken = text;
    sh.clip_first.clear();
  }
  xf_shelf_from_text(text, os_clip_is_rect(text));
  return 1;
}

void xf_sel_delete() {
  if (!xf_sel_active()) return;
  const xf_selection s = xf_sel.sel;
  xf_file_for_now here(s.file);
  xf_file& f = *xf_ring.file;
  const int32_t before = std::max(f.alt_save, 0);
  const std::size_t records = f.journal.undo.size();
  const int32_t fl = std::max(0, s.first_line - 1), ll = std::min(f.size - 1, s.last_line - 1);
  const int32_t fc = std::max(0, s.first_column - 1);
  if (s.kind >= XS_RECT) {
    for (int32_t l = fl; l <= ll; ++l) {
      std::string t(f.line(l));
      int32_t len = static_cast<int32_t>(t.size());
      int32_t b = s.last_column == -1 ? len : std::min(len, s.last_column);
      if (fc < b) replace(l, t.erase(static_cast<std::size_t>(fc), static_cast<std::size_t>(b - fc)), "xf_sel_cut");
    }
  } else {
    const bool ends = takes_line_end(s, f);
    const int32_t end_col = ends ? f.len[static_cast<std::size_t>(ll)] : s.last_column;
    if (fl == ll && !ends && s.first_column > 0) {
      std::string t(f.line(fl));
      int32_t b = std::min<int32_t>(static_cast<int32_t>(t.size()), end_col);
      if (fc < b) replace(fl, t.erase(static_cast<std::size_t>(fc), static_cast<std::size_t>(b - fc)), "xf_sel_cut");
    } else if (s.first_column == 0 || (fc == 0 && ends && ll + 1 >= f.size)) {
      // Whole first line: the last line keeps what lies behind the last column, unless it goes whole too.
      if (ends) {
        delete_between(fl, ll);
      } else {
        replace(ll, piece(f.line(ll), end_col, INT_MAX), "xf_sel_cut");
        delete_between(fl, ll - 1);
      }
    } else {
      std::string joined = piece(f.line(fl), 0, fc);
      int32_t last_gone = ll;
      if (!ends) {
        joined += piece(f.line(ll), end_col, INT_MAX);
      } else if (ll + 1 < f.size) {
        joined += f.line(ll + 1);
        last_gone = ll + 1;
      }
      replace(fl, joined, "xf_sel_cut");
      delete_between(fl + 1, last_gone);
    }
  }
  if (f.journal.undo.size() != records) f.alt_save = before + 1;
  xf_sel_end();
  xf_cursor_to_line(std::min(fl, std::max(0, f.size - 1)), fc);
  xf_place p = xf_cursor_place();
  p.kind = XP_LINE;
  p.view = std::max(0, xf_ring.view_no);
  p.line = fl;
  p.column = fc;
  xf_set_cursor_place(p);
  f.cursor.view = std::max(0, xf_ring.view_no);
  f.cursor.screen_col = 0;
  f.cursor.line = std::min(fl, std::max(0, f.size - 1));
  f.cursor.column = fc + 1;
  f.cursor.priority = 80;
}

void xf_shelf_paste(int32_t line, int32_t column, bool overlay) {
  xf_file& f = *xf_ring.file;
  const int32_t case_mode = f.case_mode;
  f.case_mode = 0;  // MIXED IGNORE: the text goes in as it is
  if (xf_sel.shelf.rectangular)
    paste_block(line, column, overlay);
  else
    xf_paste_linear(line, column, xf_shelf_text(), overlay);
  f.case_mode = case_mode;
}
