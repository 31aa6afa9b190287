// In-field editing at the cursor: typing, insert, delete, backspace, erase, tabbing and cursor movement.
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "screen/fs_state.h"

namespace {

fs_page& page() { return *g_fs.cur; }
int cur_flat() { return fs_flat(page().cur_line, page().cur_col); }
int field_at(int flat) { return page().cellmap[static_cast<size_t>(flat)] - 1; }
const std::vector<int>& cells_of(int i) { return page().cells[static_cast<size_t>(i)]; }
fs_field& field(int i) { return page().fields[static_cast<size_t>(i)]; }
const fs_edit& edit_of(int i) { return page().edits[static_cast<size_t>(i)]; }
bool is_wrapping(const fs_field& f) { return f.lines == 1 && f.col + f.cols - 1 > g_fs.nb_cols; }

void set_cursor_flat(int flat) {
  page().cur_line = flat / g_fs.nb_cols + 1;
  page().cur_col = flat % g_fs.nb_cols + 1;
}

// Place of a cell in its field's cell list.
int place_of(int i, int flat) {
  const fs_field& f = field(i);
  if (is_wrapping(f)) return flat - cells_of(i).front();
  int line = flat / g_fs.nb_cols + 1, col = flat % g_fs.nb_cols + 1;
  return (line - f.line) * f.cols + (col - f.col);
}

uint16_t& ch_at(int i, int k) { return page().chars[static_cast<size_t>(cells_of(i)[static_cast<size_t>(k)])]; }

void pending(int kind, int value) {
  g_as.pending_kind = kind;
  g_as.pending_value = value;
}

void flash() { g_fs.host->flash(); }

void touch(int i) {
  fs_page& p = page();
  size_t s = static_cast<size_t>(i);
  if (!p.modified[s]) {
    p.modified[s] = 1;
    ++g_as.nmod;
  }
  p.changed[s] = 1;
  g_fs.repaint = true;
}

using seg_span = as_seg;
seg_span segment_at(int i, int k) { return as_segment_at(i, k); }

// After an edit at place k, the other rendering of a segmented field follows the one edited.
void mirror_after(int i, int k) {
  if (edit_of(i).segments) as_mirror(i, segment_at(i, k).kind == 1);
}

bool one_text_segment(int i) {
  const fs_segments* sd = edit_of(i).segments;
  return sd && sd->count == 1 && sd->seg[0].kind != 1;
}

// The places an edit at place k may touch: the cursor's segment, or the whole field.
void edit_range(int i, int k, bool whole_field, int& lo, int& hi) {
  lo = 0;
  hi = static_cast<int>(cells_of(i).size()) - 1;
  if (whole_field) return;
  seg_span s = segment_at(i, k);
  if (s.kind >= 0) {
    lo = s.lo;
    hi = s.hi;
  }
}

bool is_free(int i, uint16_t c) {
  if (c == FS_NULL_CELL) return true;
  if (edit_of(i).binary) return false;
  return c == 32 || c == 9 || c == 12 || c == 10 || c == 0;
}

// Attributes of a cell that an edit moved or wrote: its own (keep), or the field's.
void field_attrs(int i, int k) {
  size_t s = static_cast<size_t>(cells_of(i)[static_cast<size_t>(k)]);
  page().hlt[s] = field(i).highlight;
  page().color[s] = g_fs.map[static_cast<size_t>(((field(i).color % 64) + 64) % 64)];
}

// Moves the cell at place `from` to place `to` of field i, with colour, and highlight when asfrem is 2.
void move_cell(int i, int from, int to) {
  fs_page& p = page();
  size_t a = static_cast<size_t>(cells_of(i)[static_cast<size_t>(from)]);
  size_t b = static_cast<size_t>(cells_of(i)[static_cast<size_t>(to)]);
  p.chars[b] = p.chars[a];
  if (g_fs.rem == 0 || (field(i).attr & FA_PLAIN)) {
    field_attrs(i, to);
    return;
  }
  p.color[b] = p.color[a];
  if (g_fs.rem == 2) p.hlt[b] = p.hlt[a];
}

std::vector<uint16_t> field_bytes(int i) {
  std::vector<uint16_t> v;
  for (int c : cells_of(i)) v.push_back(page().chars[static_cast<size_t>(c)]);
  return v;
}

bool wants_on_edit(int i) { return edit_of(i).on_edit && one_text_segment(i); }

// Calls the field's on_edit hook; a non-zero answer asks the caller to recolour.
bool call_on_edit(int i, const std::vector<uint16_t>& before, int op, int k) {
  const fs_edit& e = edit_of(i);
  std::vector<uint16_t> after = field_bytes(i);
  int r = e.on_edit(before.data(), after.data(), static_cast<int>(after.size()), e.user_data,
                    e.segments->seg[0].start, op, k);
  if (r != 0) pending(ASR_RECOLOUR, 0);
  return r != 0;
}

// Characters through the keyboard rows: emitted plain and Shift, then what the key types in each state.
int translate(int ch) {
  if (ch == 32 || ch == 9 || ch == 12) return ch;
  const auto& rows = g_as.rows;
  bool shift = g_as.shift2;
  auto find = [&](int row) {
    for (int k = 0; k < g_as.row_len; ++k)
      if (rows[static_cast<size_t>(row)][static_cast<size_t>(k)] == ch) return k;
    return -1;
  };
  int k = shift ? find(1) : find(0);
  if (k < 0 && !shift) {
    k = find(1);
    shift = k >= 0;
  }
  if (k < 0) return ch;
  int base = g_fs.apl ? 5 : 2;
  int row = g_as.alt ? base + 2 : shift ? base + 1 : base;
  return rows[static_cast<size_t>(row)][static_cast<size_t>(k)];
}

bool accepts(const fs_field& f, int ch) {
  if (f.type != FT_NUMERIC) return true;
  return (ch >= '0' && ch <= '9') || ch == '.' || ch == ' ';
}

// Writes the positive or negative word of a yes/no field.
void yes_no(int i, bool positive) {
  const fs_field& f = field(i);
  const char* word = (f.attr & FA_YES_NO) ? (positive ? "YES" : "NO") : (positive ? "OUI" : "NON");
  ascput(f.id, static_cast<int>(std::char_traits<char>::length(word)), word);
  touch(i);
}

// Makes room at place k by pushing cells toward the end; false when it refused (a result may be pending).
bool insert_at(int i, int k, int ch) {
  const fs_field& f = field(i);
  const fs_edit& e = edit_of(i);
  const seg_span seg = segment_at(i, k);
  if (seg.kind == 1) {
    if (!as_hex_insert(i, k, ch, seg, e.binary != 0)) {
      flash();
      return false;
    }
    mirror_after(i, k);
    return true;
  }
  int lo, hi;
  edit_range(i, k, false, lo, hi);
  if (one_text_segment(i) && e.limit >= 0) {
    const int* map = e.segments->map;
    for (int q = lo; q <= hi; ++q)
      if (map[q] == e.limit) {
        hi = std::min(hi, q + 1);
        break;
      }
  }
  const bool multi = e.segments && e.segments->count > 1;
  if (!is_free(i, ch_at(i, hi))) {
    if ((f.attr & FA_REPORT_FULL) && !multi)
      pending(ASR_FULL, ch);
    else
      flash();
    return false;
  }
  if (f.attr & FA_REPORT_EDIT) {
    pending(ASR_FULL, ch);
    return false;
  }
  for (int q = hi; q > k; --q) move_cell(i, q - 1, q);
  ch_at(i, k) = static_cast<uint16_t>(ch);
  if (g_fs.rem == 0 || (f.attr & FA_PLAIN)) field_attrs(i, k);
  mirror_after(i, k);
  return true;
}

// The cursor is at place k of input field i: delete it, pulling the rest of the field or segment back.
void delete_at(int i, int k) {
  const seg_span seg = segment_at(i, k);
  if (seg.kind == 1) {
    as_hex_delete(i, k, seg);
    mirror_after(i, k);
    touch(i);
    return;
  }
  int lo, hi;
  edit_range(i, k, false, lo, hi);
  const bool nul_end = !edit_of(i).binary && ch_at(i, static_cast<int>(cells_of(i).size()) - 1) == 0;
  for (int q = k; q < hi; ++q) move_cell(i, q + 1, q);
  ch_at(i, hi) = nul_end ? 0 : FS_NULL_CELL;
  mirror_after(i, k);
  touch(i);
}

// Row starts of the input fields: the first cell of each line of a field, or the first cell of a run.
template <typename F>
void each_row_start(F&& visit) {
  const fs_page& p = page();
  for (size_t i = 0; i < p.fields.size(); ++i) {
    const fs_field& f = p.fields[i];
    if (f.type == FT_PROTECTED || p.cells[i].empty()) continue;
    if (is_wrapping(f)) {
      visit(static_cast<int>(i), p.cells[i].front());
      continue;
    }
    for (int l = 0; l < f.lines; ++l) visit(static_cast<int>(i), fs_flat(f.line + l, f.col));
  }
}

// Start of the cursor's own row in field i.
int own_row_start(int i, int flat) {
  const fs_field& f = field(i);
  if (is_wrapping(f)) return cells_of(i).front();
  return fs_flat(flat / g_fs.nb_cols + 1, f.col);
}

// Next cell of the tab list inside a segmented field, or -1.
int tab_in_field(int i, int k) {
  const fs_edit& e = edit_of(i);
  if (!e.tab_list || !e.segments) return -1;
  const int* map = e.segments->map;
  const int n = static_cast<int>(cells_of(i).size());
  for (int q = k + 1; q < n; ++q) {
    if (map[q] == 0 || (q > 0 && map[q - 1] == map[q])) continue;
    for (int t = 0; t < e.tab_list[0]; ++t)
      if (e.tab_list[2 + t] == std::abs(map[q])) return cells_of(i)[static_cast<size_t>(q)];
  }
  return -1;
}

}  // namespace

bool as_ins(int typed) {
  int ch = translate(typed);
  if (ch == 0) return false;
  const int flat = cur_flat();
  const int i = field_at(flat);
  if (i < 0 || field(i).type == FT_PROTECTED || !accepts(field(i), ch)) {
    flash();
    return false;
  }
  const fs_field& f = field(i);
  const int k = place_of(i, flat);
  const seg_span seg = segment_at(i, k);
  if (seg.kind == 2 || (seg.kind == 1 && !as_hex_accepts(i, k, ch))) {
    flash();
    return false;
  }
  if (f.attr & (FA_YES_NO | FA_OUI_NON)) {
    if (ch == 'N' || ch == 'n')
      yes_no(i, false);
    else if (ch == 'O' || ch == 'o' || ch == 'Y' || ch == 'y')
      yes_no(i, true);
    else
      g_fs.host->beep();
    return false;
  }
  const size_t s = static_cast<size_t>(flat);
  if ((f.attr & FA_REPORT_FULL) && (page().hlt[s] == 2 || page().hlt[s] == 3)) {
    pending(ASR_REVERSE, ch);
    return true;
  }
  std::vector<uint16_t> before;
  if (wants_on_edit(i)) before = field_bytes(i);
  const bool inserting = g_as.insert && !(f.attr & FA_PLAIN);
  if (inserting) {
    if (!insert_at(i, k, ch)) return g_as.pending_kind >= 0;
  } else {
    page().chars[s] = static_cast<uint16_t>(ch);
    if (!(g_fs.rem != 0 && !(f.attr & FA_PLAIN))) field_attrs(i, k);
    mirror_after(i, k);
  }
  touch(i);
  const int last = static_cast<int>(cells_of(i).size()) - 1;
  bool at_end = k == last;
  const fs_edit& e = edit_of(i);
  if (e.limit >= 0 && one_text_segment(i) && e.segments->map[k] >= e.limit) at_end = true;
  if (at_end) {
    if (f.attr & FA_REPORT_FULL) {
      pending(ASR_FIELD_END, ch);
      return true;
    }
    as_tab(true);
  } else {
    set_cursor_flat(cells_of(i)[static_cast<size_t>(k + 1)]);
  }
  if (!before.empty() && call_on_edit(i, before, inserting ? 3 : 0, k)) return true;
  if (f.attr & FA_KEYED) {
    for (int q = k + 1; q <= last; ++q) ch_at(i, q) = 32;
    pending(ASR_KEYED, f.id);
    return true;
  }
  return false;
}

bool as_delete() {
  const int flat = cur_flat();
  const int i = field_at(flat);
  if (i < 0 || field(i).type == FT_PROTECTED || segment_at(i, place_of(i, flat)).kind == 2) {
    flash();
    return false;
  }
  const int k = place_of(i, flat);
  std::vector<uint16_t> before;
  if (wants_on_edit(i)) before = field_bytes(i);
  delete_at(i, k);
  if (!before.empty() && call_on_edit(i, before, 6, k)) return true;
  if (field(i).attr & FA_REPORT_EDIT) {
    pending(ASR_DEL, 0);
    return true;
  }
  return false;
}

bool as_backspace() {
  const int flat = cur_flat();
  const int i = field_at(flat);
  if (i < 0 || field(i).type == FT_PROTECTED) {
    flash();
    return false;
  }
  const int k = place_of(i, flat);
  const seg_span seg = segment_at(i, k);
  if (k == 0 || (seg.kind >= 0 && k == seg.lo)) return false;
  if (seg.kind == 2) {
    flash();
    return false;
  }
  set_cursor_flat(cells_of(i)[static_cast<size_t>(k - 1)]);
  std::vector<uint16_t> before;
  if (wants_on_edit(i)) before = field_bytes(i);
  const bool hex = seg.kind == 1, second = hex && as_hex_second_digit(i, k - 1);
  const bool deleting = g_as.insert && !(field(i).attr & FA_PLAIN) && !second;
  if (deleting) {
    delete_at(i, k - 1);
  } else {
    // a blank hexadecimal column reads 20: "2" on its first digit, "0" on its second
    ch_at(i, k - 1) = hex ? (second ? '0' : '2') : FS_NULL_CELL;
    mirror_after(i, k - 1);
    touch(i);
  }
  if (!before.empty() && call_on_edit(i, before, deleting ? 5 : 4, k - 1)) return true;
  if (deleting && (field(i).attr & FA_REPORT_EDIT)) {
    pending(ASR_DEL, 0);
    return true;
  }
  return false;
}

bool as_erase(bool to_end, bool whole_field, const char* name) {
  const int flat = cur_flat();
  const int i = field_at(flat);
  if (i < 0) {
    fs_fail(1, "%s : position curseur invalide", name);
    return false;
  }
  if (field(i).type == FT_PROTECTED) {
    flash();
    return false;
  }
  const int k = place_of(i, flat);
  int lo, hi;
  edit_range(i, k, whole_field, lo, hi);
  const int n = static_cast<int>(cells_of(i).size());
  const uint16_t fill = (!edit_of(i).binary && ch_at(i, n - 1) == 0) ? 0 : FS_NULL_CELL;
  const bool keep = g_fs.rem == 1 && !(field(i).attr & FA_PLAIN);
  std::vector<uint16_t> before;
  if (wants_on_edit(i)) before = field_bytes(i);
  for (int q = to_end ? k : lo; q <= hi; ++q) {
    ch_at(i, q) = fill;
    if (!keep) field_attrs(i, q);
  }
  mirror_after(i, k);
  if (!to_end) set_cursor_flat(cells_of(i)[static_cast<size_t>(lo)]);
  touch(i);
  fs_ok();
  return !before.empty() && call_on_edit(i, before, 1, k);
}

bool as_tab(bool forward) {
  const int n = g_fs.nb_cells;
  const int c = cur_flat();
  const int own = field_at(c);
  const bool own_input = own >= 0 && field(own).type != FT_PROTECTED;
  if (forward && own_input) {
    int t = tab_in_field(own, place_of(own, c));
    if (t >= 0) {
      set_cursor_flat(t);
      return false;
    }
  }
  if (!forward && own_input && own_row_start(own, c) != c) {
    set_cursor_flat(own_row_start(own, c));
    return false;
  }
  const int own_start = own_input ? own_row_start(own, c) : -1;
  long best_dist = LONG_MAX;
  int best = -1;
  each_row_start([&](int i, int s) {
    if (i == own && s == own_start) return;
    long d = forward ? (static_cast<long>(s) - c - 1 + n) % n : (static_cast<long>(c) - s - 1 + n) % n;
    if (d < best_dist) {
      best_dist = d;
      best = s;
    }
  });
  if (best < 0) best = own_input ? own_start : 0;
  set_cursor_flat(best);
  return false;
}

void as_home(bool last_field) {
  const fs_page& p = page();
  int best = -1;
  for (size_t i = 0; i < p.fields.size(); ++i) {
    if (p.fields[i].type == FT_PROTECTED || p.cells[i].empty()) continue;
    int s = p.cells[i].front();
    if (best < 0 || (last_field ? s > best : s < best)) best = s;
  }
  if (best >= 0) set_cursor_flat(best);
}

void as_newline(bool previous) {
  const int nl = g_fs.nb_lines, nc = g_fs.nb_cols;
  int line = page().cur_line;
  for (int step = 0; step < nl; ++step) {
    line = previous ? (line == 1 ? nl : line - 1) : (line == nl ? 1 : line + 1);
    int base = fs_flat(line, 1);
    for (int col = 0; col < nc; ++col)
      if (fs_takes_input(base + col)) {
        set_cursor_flat(base + col);
        return;
      }
  }
}

void as_move(int dline, int dcol) {
  fs_page& p = page();
  const int nl = g_fs.nb_lines, nc = g_fs.nb_cols;
  if (dline != 0) {
    p.cur_line = ((p.cur_line - 1 + dline) % nl + nl) % nl + 1;
    return;
  }
  const int c = cur_flat();
  int to = ((c + dcol) % g_fs.nb_cells + g_fs.nb_cells) % g_fs.nb_cells;
  if (g_fs.skip) {
    const int line_base = (to / nc) * nc;
    for (int q = to; q >= line_base && q < line_base + nc; q += dcol)
      if (fs_takes_input(q)) {
        to = q;
        break;
      }
  }
  set_cursor_flat(to);
}

void as_shift_right() {
  const int flat = cur_flat();
  const int i = field_at(flat);
  const fs_edit& e = i >= 0 ? edit_of(i) : fs_edit{};
  if (i < 0 || field(i).type == FT_PROTECTED || (e.segments && !one_text_segment(i))) {
    as_move(0, 1);
    return;
  }
  const int k = place_of(i, flat);
  for (int q = static_cast<int>(cells_of(i).size()) - 1; q > k; --q) ch_at(i, q) = ch_at(i, q - 1);
  ch_at(i, k) = 32;
  mirror_after(i, k);
  touch(i);
}

// --- the public in-field operations: nmod is the caller's count of modified fields ---

namespace {

template <typename F>
void with_count(const char* name, int& nmod, F&& op) {
  if (!fs_need_init(name)) return;
  g_as.nmod = nmod;
  op();
  nmod = g_as.nmod;
  g_as.pending_kind = -1;
}

}  // namespace

void del_all_f(int& nmod) { with_count("del_all_f", nmod, [] { as_erase(false, g_as.ctrl, "del_all_f"); }); }
void del_end_f(int& nmod) { with_count("del_end_f", nmod, [] { as_erase(true, g_as.ctrl, "del_end_f"); }); }
void asback(int& nmod) { with_count("asback", nmod, [] { as_backspace(); }); }
void asdel(int& nmod) { with_count("asdel", nmod, [] { as_delete(); }); }
void astabf(int& nmod) { with_count("astabf", nmod, [] { as_tab(true); }); }
void astabb(int& nmod) { with_count("astabb", nmod, [] { as_tab(false); }); }
