// The ring of files, the line store and xf_do.
#include "editor/ring.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "editor/emergency.h"
#include "editor/state.h"
#include "editor/trace.h"

xf_ring_state xf_ring;

namespace {

constexpr int32_t max_rows = 0x7fffffff;

xf_file& cur() { return *xf_ring.file; }

// The current line of file `f` in every view stays within lowest_line .. size-1.
void limit_current_lines(int32_t f) {
  const xf_file& file = *xf_ring.files[f];
  for (auto& v : xf_ring.views) {
    if (f >= static_cast<int32_t>(v->per_file.size())) continue;
    int32_t& cl = v->per_file[f].current_line;
    if (cl > file.size - 1) cl = file.size - 1;
    if (cl < xf_ring.lowest_line) cl = xf_ring.lowest_line;
  }
}

// The rules a file applies to text stored with mode 1: upper case, then LRECL/TRUNC with blank stripping.
void apply_file_rules(const xf_file& f, xf_text& t, int32_t& len) {
  if (f.case_mode == 2 || f.case_mode == 3) {
    for (int32_t i = 0; i < len; ++i)
      if (t[i] >= 'a' && t[i] <= 'z') t[i] = static_cast<char>(t[i] - 'a' + 'A');
  }
  int32_t limit = 0;
  if (f.lrecl > 0) limit = f.lrecl;
  if (f.trunc > 0 && (limit == 0 || f.trunc < limit)) limit = f.trunc;
  if (limit > 0 && len > limit) {
    len = limit;
    t[len] = 0;
    if (!f.keep_blanks) xf_strip_trailing(t, len, 1);
  }
}

int32_t current_view_display_low() { return xf_ring.view ? xf_ring.view->display[0] : 0; }

void insert_rows(xf_file& f, int32_t at, int32_t n) {
  // xf_do works on the current file, which is the one xf_grow enlarges.
  if (f.size + static_cast<int64_t>(n) > f.capacity) xf_grow(n == 1 ? 1000 : n + 1000);
  xf_reserve_rows(f, f.size + n);
  std::move_backward(f.text.begin() + at, f.text.begin() + f.size, f.text.begin() + f.size + n);
  std::move_backward(f.len.begin() + at, f.len.begin() + f.size, f.len.begin() + f.size + n);
  std::move_backward(f.select.begin() + at, f.select.begin() + f.size, f.select.begin() + f.size + n);
  f.size += n;
}

void erase_rows(xf_file& f, int32_t at, int32_t n) {
  std::move(f.text.begin() + at + n, f.text.begin() + f.size, f.text.begin() + at);
  std::move(f.len.begin() + at + n, f.len.begin() + f.size, f.len.begin() + at);
  std::move(f.select.begin() + at + n, f.select.begin() + f.size, f.select.begin() + at);
  for (int32_t i = f.size - n; i < f.size; ++i) {
    f.text[i].reset();
    f.len[i] = 0;
    f.select[i] = 0;
  }
  f.size -= n;
}

void points_after_insert(xf_file& f, int32_t line, int32_t n) {
  for (auto& p : f.points)
    if (p.line > line) p.line += n;
}

void points_after_delete(xf_file& f, int32_t line, int32_t n) {
  for (auto it = f.points.end(); it != f.points.begin();) {
    --it;
    if (it->line >= line && it->line < line + n)
      it = f.points.erase(it);
    else if (it->line >= line + n)
      it->line -= n;
  }
}

// Opens the journal record of an xf_do with mode 1 (a user change) or 2 (a redo). The record belongs to the
// step that `step_start` says; a user change that opens a step ends what could be redone.
xf_jrecord& journal_open(xf_file& f, char cd, int32_t line, int32_t count, int mode) {
  xf_journal& j = f.journal;
  if (mode == 1 && f.step_start == 1 && !j.redo.empty()) std::vector<xf_jrecord>().swap(j.redo);
  xf_jrecord& r = j.undo.emplace_back();
  r.step = f.step_start;
  r.line = line;
  r.cd = cd;
  r.count = count;
  if (mode == 1) {
    if (xf_ring.read_view >= 0) {
      r.place[0] = xf_ring.read_view;
      r.place[1] = xf_ring.read_line + 1;
      r.place[2] = xf_ring.read_column;
    }
    f.step_start = 0;
  }
  return r;
}

}  // namespace

xf_text xf_new_text(const char* p, std::size_t n) {
  auto t = std::make_unique_for_overwrite<char[]>(n + 1);
  if (n) std::memcpy(t.get(), p, n);
  t[n] = 0;
  return t;
}

void xf_strip_trailing(xf_text& t, int32_t& len, int32_t keep) {
  while (len > keep && t[len - 1] == ' ') --len;
  t[len] = 0;
}

void xf_ring_reset() { xf_ring = xf_ring_state{}; }

int32_t xf_file_count() { return static_cast<int32_t>(xf_ring.files.size()); }

int32_t& xf_current_line() { return xf_ring.view->per_file[xf_ring.file_no].current_line; }

void xf_set_view(int32_t v) {
  xf_ring.view_no = v;
  xf_ring.view = xf_ring.views[v].get();
  int32_t f = xf_ring.view->current_file;
  xf_ring.file_no = f;
  xf_ring.file = f >= 0 ? xf_ring.files[f].get() : nullptr;
}

void xf_set_file(int32_t i) {
  xf_ring.view->current_file = i;
  xf_ring.file_no = i;
  xf_ring.file = i >= 0 ? xf_ring.files[i].get() : nullptr;
}

void xf_grow(int32_t n) {
  // `capacity` is the number of rows the file may hold before it must grow again; the arrays themselves follow
  // the rows actually used (xf_reserve_rows), so a generous capacity costs no memory.
  xf_file& f = cur();
  int64_t room = static_cast<int64_t>(max_rows) - f.capacity;
  if (n > room) n = static_cast<int32_t>(room);
  if (n <= 0) {
    xf_out_of_memory(0, 1);
    return;
  }
  f.capacity += n;
}

void xf_reserve_rows(xf_file& f, int32_t rows) {
  if (static_cast<int64_t>(f.text.size()) >= rows) return;
  f.text.resize(rows);
  f.len.resize(rows, 0);
  f.select.resize(rows, 0);
}

void xf_do(char cd, xf_text text, int32_t line, int32_t count, int mode, std::vector<xf_text>* lines,
           const char* tag) {
  xf_trace(tag);
  xf_file& f = cur();
  if (cd != 'r' && cd != 'i' && cd != 'I' && cd != 'd' && cd != 'D') {
    std::fprintf(stderr, "tolva: xf_do: internal error, wrong argument: cd = %c\n", cd);
    return;
  }
  if (mode == 1 && (cd == 'I' || cd == 'D') && count == 0) return;
  if (mode == 1 && f.alt_save < 0) f.alt_save = 0;
  xf_jrecord* rec = mode == 1 || mode == 2 ? &journal_open(f, cd, line, count, mode) : nullptr;
  if (f.syntax_state != 0) f.syntax_state = -1;
  switch (cd) {
    case 'r': {
      int32_t len = static_cast<int32_t>(std::strlen(text.get()));
      if (mode == 1) apply_file_rules(f, text, len);
      if (rec) rec->text = std::move(f.text[line]);
      f.text[line] = std::move(text);
      f.len[line] = len;
      break;
    }
    case 'i': {
      int32_t len = static_cast<int32_t>(std::strlen(text.get()));
      if (mode == 1) apply_file_rules(f, text, len);
      insert_rows(f, line + 1, 1);
      f.text[line + 1] = std::move(text);
      f.len[line + 1] = len;
      f.select[line + 1] = current_view_display_low();
      points_after_insert(f, line, 1);
      break;
    }
    case 'I': {
      insert_rows(f, line + 1, count);
      int32_t low = current_view_display_low();
      for (int32_t k = 0; k < count; ++k) {
        xf_text& t = (*lines)[k];
        int32_t len = static_cast<int32_t>(std::strlen(t.get()));
        if (mode == 1) apply_file_rules(f, t, len);
        f.text[line + 1 + k] = std::move(t);
        f.len[line + 1 + k] = len;
        f.select[line + 1 + k] = low;
      }
      if (mode == 1) lines->clear();
      points_after_insert(f, line, count);
      break;
    }
    case 'd':
      if (rec) {
        rec->text = std::move(f.text[line]);
        rec->levels.assign(1, f.select[line]);
      }
      erase_rows(f, line, 1);
      points_after_delete(f, line, 1);
      break;
    case 'D':
      if (rec) {
        rec->texts.reserve(count);
        for (int32_t k = 0; k < count; ++k) rec->texts.push_back(std::move(f.text[line + k]));
        rec->levels.assign(f.select.begin() + line, f.select.begin() + line + count);
      }
      erase_rows(f, line, count);
      points_after_delete(f, line, count);
      break;
  }
  limit_current_lines(xf_ring.file_no);
}

void xf_undo_clear(xf_file& f) { std::vector<xf_jrecord>().swap(f.journal.undo); }
void xf_redo_clear(xf_file& f) { std::vector<xf_jrecord>().swap(f.journal.redo); }

void xf_shift_positions(int32_t line, int32_t n) {
  xf_view& v = *xf_ring.view;
  for (int32_t& l : v.open_lines)
    if (l > line) l += n;
  xf_file& f = cur();
  for (auto* list : {&f.prefix_pending_a, &f.prefix_pending_b})
    for (xf_prefix_row& r : *list)
      if (r.line > line) r.line += n;
  for (xf_prefix_error& e : f.prefix_errors)
    if (e.line > line) e.line += n;
  xf_cursor& c = cur().cursor;
  if (c.screen_col == 0 && c.line > line) c.line += n;
}

void xf_drop_positions(int32_t line, int32_t n, int32_t keep) {
  xf_view& v = *xf_ring.view;
  auto& ol = v.open_lines;
  ol.erase(std::remove_if(ol.begin(), ol.end(), [&](int32_t l) { return l >= line && l < line + n; }), ol.end());
  for (int32_t& l : ol)
    if (l >= line + n) l -= n;
  // Prefix commands waiting on deleted lines are cancelled (marked done, so that a prefix run in progress keeps
  // its places in the lists); those behind the range move with their lines.
  xf_file& f = cur();
  for (auto* list : {&f.prefix_pending_a, &f.prefix_pending_b})
    for (xf_prefix_row& r : *list) {
      if (r.line >= line && r.line < line + n) r.kind = -2;
      else if (r.line >= keep + n) r.line -= n;
    }
  auto& errs = f.prefix_errors;
  errs.erase(std::remove_if(errs.begin(), errs.end(), [&](const xf_prefix_error& e) {
               return e.line >= line && e.line < line + n;
             }), errs.end());
  for (xf_prefix_error& e : errs)
    if (e.line >= line + n) e.line -= n;
  int32_t fno = xf_ring.file_no;
  for (auto& view : xf_ring.views) {
    if (fno >= static_cast<int32_t>(view->per_file.size())) continue;
    int32_t& cl = view->per_file[fno].current_line;
    if (cl >= line + n)
      cl -= n;
    else if (cl >= line && cl > keep)
      cl = keep - 1;
  }
  limit_current_lines(fno);
  xf_cursor& c = cur().cursor;
  if (c.screen_col == 0 && c.line > line + n) c.line -= n;
}

bool xf_in_scope(int32_t line) {
  const xf_file& f = cur();
  const xf_view& v = *xf_ring.view;
  bool in;
  if (line == -1 || line == f.size)
    in = true;
  else if (line >= 0 && line < f.size)
    in = f.select[line] >= v.display[0] && f.select[line] <= v.display[1];
  else
    in = false;
  return v.scope == 2 ? !in : in;
}

bool xf_in_scope_or_all(int32_t line) { return xf_ring.view->scope == 1 || xf_in_scope(line); }

int32_t xf_count_in_scope(int32_t first, int32_t last) {
  if (xf_ring.view->scope == 1) return last - first + 1;
  int32_t n = 0;
  for (int32_t l = first; l <= last; ++l)
    if (xf_in_scope(l)) ++n;
  return n;
}

int32_t xf_nth_in_scope(int32_t from, int32_t n) {
  const xf_file& f = cur();
  int32_t l = from;
  while (n > 0 && l < f.size - 1) {
    ++l;
    if (xf_in_scope_or_all(l)) --n;
  }
  return l;
}

void xfdel(int32_t line, int32_t n) {
  xf_file& f = cur();
  if (line < 0) {
    line = 0;
    --n;
  }
  if (line >= f.size || n <= 0) return;
  if (n > f.size - line) n = f.size - line;
  if (f.size == 1 && xf_ring.lowest_line == 0) {
    xf_do('r', xf_new_text(" ", 1), 0, 1, 1, nullptr, "xfdel:1");
    f.alt_save++;
    return;
  }
  // Delete each visible run of the range; hidden lines between runs stay. Runs are taken from the last,
  // so that the line numbers of those still to go do not move.
  std::vector<std::pair<int32_t, int32_t>> runs;
  for (int32_t l = line; l < line + n;) {
    if (!xf_in_scope_or_all(l)) {
      ++l;
      continue;
    }
    int32_t start = l;
    while (l < line + n && xf_in_scope_or_all(l)) ++l;
    runs.emplace_back(start, l - start);
  }
  if (runs.empty()) return;
  for (auto it = runs.rbegin(); it != runs.rend(); ++it) {
    auto [start, count] = *it;
    if (count > 1) xf_do('D', nullptr, start + 1, count - 1, 1, nullptr, "xfdel:2");
    xf_do('d', nullptr, start, 1, 1, nullptr, "xfdel:3");
    xf_drop_positions(start, count, start);
  }
  f.alt_save++;
}

void xfdup(int32_t line, int32_t n) {
  xf_file& f = cur();
  if (n <= 0) return;
  std::vector<xf_text> lines;
  lines.reserve(n);
  for (int32_t k = 0; k < n; ++k)
    lines.push_back(line < 0 || line >= f.size ? xf_new_text(" ", 1) : xf_new_text(f.line(line)));
  xf_do('I', nullptr, line, n, 1, &lines, "xfdup:1");
  xf_shift_positions(line, n);
  f.alt_save++;
}

void xfadd(int32_t line, int32_t n, bool cursor) {
  xf_file& f = cur();
  if (n <= 0) return;
  while (line >= 0 && line < f.size && !xf_in_scope_or_all(line)) ++line;
  if (line >= f.size) line = f.size - 1;
  // New lines take the indentation of the line they follow.
  int32_t indent = 0;
  if (line >= 0 && line < f.size) {
    std::string_view s = f.line(line);
    while (indent < static_cast<int32_t>(s.size()) && indent < 120 && s[indent] == ' ') ++indent;
    if (indent == static_cast<int32_t>(s.size())) indent = 0;
  }
  std::vector<xf_text> lines;
  for (int32_t k = 0; k < n; ++k) {
    std::string s(indent, ' ');
    int32_t len = indent;
    xf_text t = xf_new_text(s);
    if (!f.keep_blanks) xf_strip_trailing(t, len, 0);
    lines.push_back(std::move(t));
  }
  xf_do('I', nullptr, line, n, 1, &lines, "xfadd:1");
  xf_shift_positions(line, n);
  f.alt_save++;
  if (cursor) {
    f.cursor.screen_col = 0;
    f.cursor.line = line + 1;
    f.cursor.column = indent + 1;
    f.cursor.priority = 60;
  }
}

void xfddel1(int32_t line, int32_t column, int32_t end_column) {
  xf_file& f = cur();
  if (line < 0 || line >= f.size || !xf_in_scope_or_all(line)) return;
  if (column == 1 && end_column == -1) {
    xfdel(line, 1);
    return;
  }
  std::string s(f.line(line));
  int32_t next = line + 1;
  while (next < f.size && !xf_in_scope_or_all(next)) ++next;
  bool has_next = next < f.size;
  int32_t c0 = column - 1;
  if (c0 >= static_cast<int32_t>(s.size())) {
    if (end_column != -1 || !has_next) return;
    s.resize(c0, ' ');
    s += f.line(next);
  } else if (end_column != -1) {
    int32_t e = std::min<int32_t>(end_column, static_cast<int32_t>(s.size()));
    s.erase(c0, e - c0 > 0 ? e - c0 : 0);
    if (s.empty()) s.assign(1, ' ');
  } else {
    s.resize(c0);
    if (has_next) s += f.line(next);
  }
  xf_text t = xf_new_text(s);
  int32_t len = static_cast<int32_t>(s.size());
  if (!f.keep_blanks) xf_strip_trailing(t, len, 1);
  xf_do('r', std::move(t), line, 1, 1, nullptr, "xfddel1:1");
  if (has_next && end_column == -1) {
    xf_do('d', nullptr, next, 1, 1, nullptr, "xfddel1:2");
    xf_drop_positions(next, 1, next);
  }
  f.alt_save++;
}

int32_t xf_new_view(int32_t top, int32_t left, int32_t height, int32_t width, int32_t file, int32_t prefix,
                    int32_t number) {
  auto v = std::make_unique<xf_view>();
  v->top = top;
  v->left = left;
  v->height = height;
  v->width = std::min<int32_t>(width, 1000);
  v->cmd_width = v->width - 6;
  v->curline = height < 20 ? std::max(5, height / 3) : std::min(8, height - 1);
  v->defaults.prefix = prefix;
  v->defaults.number = number;
  v->current_file = xf_file_count() > 0 ? file : -1;
  v->per_file.assign(xf_ring.files.size(), v->defaults);
  xf_ring.views.push_back(std::move(v));
  return static_cast<int32_t>(xf_ring.views.size()) - 1;
}

int32_t xf_new_file() {
  auto f = std::make_unique<xf_file>();
  f->reload = xf_set.reload_default;
  f->file_id = xf_ring.next_file_id;
  xf_ring.next_file_id = xf_ring.next_file_id == 0x7fffffff ? 0 : xf_ring.next_file_id + 1;
  f->cursor.view = xf_ring.view_no;
  int32_t order = 1;
  if (xf_ring.file) {
    int32_t here = xf_ring.ring_order[xf_ring.file_no];
    for (int32_t& o : xf_ring.ring_order)
      if (o > here) ++o;
    order = here + 1;
  }
  xf_ring.files.push_back(std::move(f));
  xf_ring.ring_order.push_back(order);
  int32_t idx = xf_file_count() - 1;
  for (auto& v : xf_ring.views) {
    xf_view_file vf = v->defaults;
    vf.current_line = v.get() == xf_ring.view ? xf_ring.lowest_line : 0;
    v->per_file.push_back(vf);
  }
  xf_file& nf = *xf_ring.files[idx];
  int32_t cap = std::max<int32_t>(xf_ring.initial_capacity, 1);
  nf.capacity = cap;
  if (xf_ring.view) xf_set_file(idx);
  return idx;
}

void xf_goto_file(int32_t i) {
  if (i == xf_ring.file_no || i < 0 || i >= xf_file_count()) {
    if (i >= 0 && i < xf_file_count()) xf_set_file(i);
    return;
  }
  if (xf_ring.file) {
    int32_t here = xf_ring.ring_order[xf_ring.file_no];
    for (int32_t& o : xf_ring.ring_order)
      if (o > here) ++o;
    xf_ring.ring_order[i] = here + 1;
  }
  xf_set_file(i);
}

int32_t xf_prev_file() {
  int32_t here = xf_ring.ring_order[xf_ring.file_no];
  int32_t best = -1, highest = -1;
  for (int32_t i = 0; i < xf_file_count(); ++i) {
    int32_t o = xf_ring.ring_order[i];
    if (o < here && (best < 0 || o > xf_ring.ring_order[best])) best = i;
    if (highest < 0 || o > xf_ring.ring_order[highest]) highest = i;
  }
  return best >= 0 ? best : highest;
}

int32_t xf_next_file() {
  int32_t here = xf_ring.ring_order[xf_ring.file_no];
  int32_t best = -1, lowest = -1;
  for (int32_t i = 0; i < xf_file_count(); ++i) {
    int32_t o = xf_ring.ring_order[i];
    if (o > here && (best < 0 || o < xf_ring.ring_order[best])) best = i;
    if (lowest < 0 || o < xf_ring.ring_order[lowest]) lowest = i;
  }
  return best >= 0 ? best : lowest;
}

void xf_close_file() {
  int32_t gone = xf_ring.file_no;
  if (gone < 0) return;
  int32_t pred = xf_prev_file();
  if (pred == gone) pred = -1;
  int32_t pred_after = pred < 0 ? -1 : (pred > gone ? pred - 1 : pred);
  for (auto& v : xf_ring.views) {
    v->per_file.erase(v->per_file.begin() + gone);
    if (v->current_file == gone)
      v->current_file = pred_after;
    else if (v->current_file > gone)
      --v->current_file;
  }
  xf_ring.ring_order.erase(xf_ring.ring_order.begin() + gone);
  xf_ring.files.erase(xf_ring.files.begin() + gone);
  xf_set_view(xf_ring.view_no);
}
