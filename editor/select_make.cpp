// Starting and extending the selection at a cell, by characters, words or whole lines.
#include "editor/select_make.h"

#include <algorithm>

#include "editor/find.h"
#include "editor/ring.h"
#include "editor/select.h"

namespace {

bool before(int32_t l1, int32_t c1, int32_t l2, int32_t c2) { return l1 < l2 || (l1 == l2 && c1 < c2); }

}  // namespace

void xf_word_at(int32_t line, int32_t column, int32_t& first, int32_t& last) {
  const xf_file& f = *xf_ring.file;
  std::string_view t = line >= 0 && line < f.size ? f.line(line) : std::string_view();
  const int32_t len = static_cast<int32_t>(t.size());
  if (column >= len || t[static_cast<std::size_t>(column)] == ' ') {
    first = last = len + 1;
    return;
  }
  if (!xf_word_char(static_cast<unsigned char>(t[static_cast<std::size_t>(column)]))) {
    first = last = column + 1;
    return;
  }
  int32_t a = column, b = column;
  while (a > 0 && xf_word_char(static_cast<unsigned char>(t[static_cast<std::size_t>(a - 1)]))) --a;
  while (b + 1 < len && xf_word_char(static_cast<unsigned char>(t[static_cast<std::size_t>(b + 1)]))) ++b;
  first = a + 1;
  last = b + 1;
}

void xf_sel_start(int32_t line, int32_t column, int32_t kind, int32_t unit) {
  line = std::clamp(line, 1, std::max(1, xf_ring.file->size));
  int32_t first = column, last = column;
  if (unit == 2) xf_word_at(line - 1, column - 1, first, last);
  if (unit >= 3) first = 1, last = -1;
  xf_sel_set(xf_ring.file_no, kind, line, first, line, last);
  xf_sel.sel.anchor_column = xf_sel.sel.end_column = column;
}

void xf_sel_moving_end(int32_t& line, int32_t& column) {
  line = xf_sel.sel.end_line;
  column = xf_sel.sel.end_column;
}

void xf_sel_extend(int32_t line, int32_t column, int32_t unit, bool rect) {
  xf_selection& s = xf_sel.sel;
  line = std::clamp(line, 1, std::max(1, xf_ring.file->size));
  column = std::max(1, column);
  const int32_t al = s.anchor_line, ac = s.anchor_column;
  const bool back = before(line, column, al, ac);
  if (unit >= 3) {
    s.first_line = std::min(al, line);
    s.last_line = std::max(al, line);
    s.first_column = 1;
    s.last_column = -1;
  } else if (unit == 2) {
    int32_t a1 = 0, a2 = 0, b1 = 0, b2 = 0;
    xf_word_at(al - 1, ac - 1, a1, a2);
    xf_word_at(line - 1, column - 1, b1, b2);
    if (back) {
      s.first_line = line, s.first_column = b1, s.last_line = al, s.last_column = a2;
    } else {
      s.first_line = al, s.first_column = a1, s.last_line = line, s.last_column = b2;
    }
  } else if (rect) {
    s.first_line = std::min(al, line), s.last_line = std::max(al, line);
    s.first_column = std::min(ac, column), s.last_column = std::max(ac, column);
  } else if (back) {
    s.first_line = line, s.first_column = column, s.last_line = al, s.last_column = ac;
  } else {
    s.first_line = al, s.first_column = ac, s.last_line = line, s.last_column = column;
  }
  s.kind = rect ? XS_RECT_PENDING : XS_LINEAR_PENDING;
  s.end_width = column;
  s.end_line = line;
  s.end_column = column;
  xf_sel_touch();
}
