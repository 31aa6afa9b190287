// Fields of the current page: definition and placement, removal, attributes, content, the cursor and queries.
#include <algorithm>
#include <cstdint>

#include "screen/fs_state.h"

namespace {

constexpr int kMembers = 14;
constexpr size_t kFieldGrowth = 100;

int mod64(int c) { return ((c % 64) + 64) % 64; }
int cell_colour(int logical) { return g_fs.map[mod64(logical)]; }
bool is_null_or_blank(uint16_t c) { return c == FS_NULL_CELL || (c & 0xff) == 32; }

int fold(int c, const fs_field& f) { return (f.fold_upper == 1 && c >= 'a' && c <= 'z') ? c - 32 : c; }

// The field of an id in the current page, or null with the not-found report in the operation's words.
fs_field* lookup(int id, const char* fmt, int& index) {
  index = fs_find(id);
  if (index < 0) {
    fs_fail(28, fmt, id);
    return nullptr;
  }
  return &g_fs.cur->fields[static_cast<size_t>(index)];
}

void mark_changed(int index) {
  g_fs.cur->changed[static_cast<size_t>(index)] = 1;
  g_fs.repaint = true;
}

// Fills the cell list of field i and covers its cells; false (and, when reporting, a message) if it cannot be placed.
bool place(fs_page& p, size_t i, bool report) {
  const fs_field& f = p.fields[i];
  std::vector<int>& cl = p.cells[i];
  cl.clear();
  const int64_t nl = g_fs.nb_lines, nc = g_fs.nb_cols;
  auto refuse = [&](const char* fmt, int64_t a, int64_t b) {
    cl.clear();
    if (report) fs_fail(1, fmt, f.id, static_cast<int>(a), static_cast<int>(b));
    return false;
  };
  if (f.col < 1 || f.col > nc) return refuse("as(x)fmt: Field %d: x1 = %d  nb_cols = %d.", f.col, nc);
  if (f.line < 1 || f.line > nl) return refuse("as(x)fmt: Field %d: y1 = %d  nb_lines = %d.", f.line, nl);
  if (f.lines < 1) return refuse("as(x)fmt: Field %d: y2 = %d  nb_lines = %d.", int64_t{f.line} + f.lines - 1, nl);
  if (f.cols < 1) return refuse("as(x)fmt: Field %d: x2 = %d  nb_cols = %d.", int64_t{f.col} + f.cols - 1, nc);
  const int64_t first = f.col + (f.line - 1) * nc - 1;
  if (f.lines == 1 && f.col + int64_t{f.cols} - 1 > nc) {
    // A wrapping run: cols cells in reading order, continuing at column 1 of the next lines.
    int64_t last = first + f.cols - 1;
    if (last >= nl * nc) return refuse("as(x)fmt: Field %d: py = %d  nb_lines = %d.", last / nc + 1, nl);
    cl.reserve(static_cast<size_t>(f.cols));
    for (int64_t c = first; c <= last; ++c) cl.push_back(static_cast<int>(c));
  } else {
    if (f.line + int64_t{f.lines} - 1 > nl)
      return refuse("as(x)fmt: Field %d: y2 = %d  nb_lines = %d.", f.line + int64_t{f.lines} - 1, nl);
    if (f.col + int64_t{f.cols} - 1 > nc)
      return refuse("as(x)fmt: Field %d: x2 = %d  nb_cols = %d.", f.col + int64_t{f.cols} - 1, nc);
    cl.reserve(static_cast<size_t>(f.lines) * static_cast<size_t>(f.cols));
    for (int l = 0; l < f.lines; ++l)
      for (int c = 0; c < f.cols; ++c) cl.push_back(static_cast<int>(first + l * nc + c));
  }
  for (int c : cl) {
    int other = p.cellmap[static_cast<size_t>(c)];
    if (other != 0) {
      int other_id = p.fields[static_cast<size_t>(other - 1)].id;
      cl.clear();
      if (report) fs_fail(1, "as(x)fmt: field %d overlaps field %d", f.id, other_id);
      return false;
    }
  }
  const int k = static_cast<int>(i) + 1, colour = cell_colour(f.color);
  for (int c : cl) {
    size_t s = static_cast<size_t>(c);
    p.cellmap[s] = k;
    p.hlt[s] = f.highlight;
    p.color[s] = colour;
    p.intens[s] = f.intensity;
  }
  return true;
}

void grow_slots(fs_page& p, size_t n) {
  if (p.fields.capacity() < n) {
    size_t cap = std::max(n, p.fields.capacity() + kFieldGrowth);
    p.fields.reserve(cap);
    p.modified.reserve(cap);
    p.changed.reserve(cap);
    p.popups.reserve(cap);
    p.edits.reserve(cap);
    p.cells.reserve(cap);
  }
  p.fields.resize(n);
  p.modified.resize(n, 0);
  p.changed.resize(n, 0);
  p.popups.resize(n);
  p.edits.resize(n);
  p.cells.resize(n);
}

// Removes the field at a table index; every later per-field entry moves down one place.
void remove_field(fs_page& p, size_t i) {
  for (int c : p.cells[i]) {
    size_t s = static_cast<size_t>(c);
    p.cellmap[s] = 0;
    p.chars[s] = 32;
    p.hlt[s] = 0;
    p.color[s] = 63;
    p.intens[s] = 1;
  }
  for (size_t j = i + 1; j < p.fields.size(); ++j)
    for (int c : p.cells[j]) --p.cellmap[static_cast<size_t>(c)];
  auto at = [i](auto& v) { v.erase(v.begin() + static_cast<std::ptrdiff_t>(i)); };
  at(p.fields);
  at(p.modified);
  at(p.changed);
  at(p.popups);
  at(p.edits);
  at(p.cells);
  if (&p == g_fs.cur) g_as.armed = 0;
  g_fs.repaint = true;
  g_fs.compare_all = true;
}

void put_cells(int index, int len, const uint16_t* src, const char* bytes, uint16_t fill) {
  fs_page& p = *g_fs.cur;
  size_t i = static_cast<size_t>(index);
  const fs_field& f = p.fields[i];
  const std::vector<int>& cl = p.cells[i];
  const int colour = cell_colour(f.color);
  size_t n = std::min(static_cast<size_t>(std::max(len, 0)), cl.size());
  for (size_t k = 0; k < cl.size(); ++k) {
    size_t s = static_cast<size_t>(cl[k]);
    if (k < n)
      p.chars[s] = src ? src[k] : static_cast<uint16_t>(static_cast<unsigned char>(bytes[k]));
    else
      p.chars[s] = fill;
    p.hlt[s] = f.highlight;
    p.color[s] = colour;
  }
  mark_changed(index);
}

// The position of the cell under (line, col) relative to field i: line and column, or 1 and the place in a run.
void relative(const fs_page& p, size_t i, int line, int col, int& rl, int& rc) {
  const fs_field& f = p.fields[i];
  if (f.lines == 1 && f.col + f.cols - 1 > g_fs.nb_cols) {
    rl = 1;
    rc = fs_flat(line, col) - p.cells[i].front() + 1;
  } else {
    rl = line - f.line + 1;
    rc = col - f.col + 1;
  }
}

void query_position(const char* bad_code, int code, int line, int col, int& id, int& rline, int& rcol) {
  if (code < 0 || code > 2) {
    fs_fail(2, "%s", bad_code);
    return;
  }
  const fs_page& p = *g_fs.cur;
  int k = p.cellmap[static_cast<size_t>(fs_flat(line, col))];
  if (code == 0 || k == 0) {
    id = 0;
    rline = line;
    rcol = col;
  } else {
    size_t i = static_cast<size_t>(k - 1);
    id = p.fields[i].id;
    relative(p, i, line, col, rline, rcol);
    if (code == 2) rcol = (rline - 1) * p.fields[i].cols + rcol;
  }
  fs_ok();
}

bool set_cursor(int id, int line, int col, bool report) {
  if (!fs_need_init(report ? "asfcur" : "asfcurq")) return false;
  fs_page& p = *g_fs.cur;
  auto bad = [&] {
    if (report) return fs_fail(1, "asfcur : invalid specification");
    g_fs.status = 1;
    return false;
  };
  if (id == 0) {
    if (line < 1 || line > g_fs.nb_lines || col < 1 || col > g_fs.nb_cols) return bad();
    p.cur_line = line;
    p.cur_col = col;
    fs_ok();
    return true;
  }
  int index;
  const fs_field* f = lookup(id, "asfcur: field %d not found.", index);
  if (!f) return false;
  const std::vector<int>& cl = p.cells[static_cast<size_t>(index)];
  int flat;
  if (f->lines == 1 && f->col + f->cols - 1 > g_fs.nb_cols) {
    if (line != 1 || col < 1 || col > static_cast<int>(cl.size())) return bad();
    flat = cl[static_cast<size_t>(col - 1)];
  } else {
    if (line < 1 || line > f->lines || col < 1 || col > f->cols) return bad();
    flat = fs_flat(f->line + line - 1, f->col + col - 1);
  }
  p.cur_line = flat / g_fs.nb_cols + 1;
  p.cur_col = flat % g_fs.nb_cols + 1;
  fs_ok();
  return true;
}

}  // namespace

int fs_find(int id) {
  const auto& v = g_fs.cur->fields;
  for (size_t i = 0; i < v.size(); ++i)
    if (v[i].id == id) return static_cast<int>(i);
  return -1;
}

bool fs_takes_input(int flat) {
  const fs_page& p = *g_fs.cur;
  int k = p.cellmap[static_cast<size_t>(flat)];
  return k != 0 && p.fields[static_cast<size_t>(k - 1)].type != FT_PROTECTED;
}

int asrfmt(int n, int count, const int* records) {
  if (!fs_need_init("asrfmt")) return -1;
  if (count < 5 || count > kMembers) return fs_fail(1, "asrfmt : invalid count number"), -1;
  if (n < 0 || (n > 0 && !records)) return fs_fail(2, "asrfmt : invalid n_fields number"), -1;
  fs_ok();
  if (n == 0) return -1;
  auto rec = [&](int r, int m) { return records[static_cast<size_t>(r) * static_cast<size_t>(count) + m]; };
  for (int r = 0; r < n; ++r)
    if (rec(r, 0) < 1) return fs_fail(4, "asrfmt: field %d invalid", r + 1), -1;
  for (int r = 0; r < n; ++r)
    for (int s = r + 1; s < n; ++s)
      if (rec(r, 0) == rec(s, 0)) return fs_fail(3, "asrfmt: duplicate field %d", rec(r, 0)), -1;

  fs_page& p = *g_fs.cur;
  std::vector<int> defining;
  for (int r = 0; r < n; ++r) {
    int old = fs_find(rec(r, 0));
    if (old >= 0) remove_field(p, static_cast<size_t>(old));
    if (rec(r, 1) != 0 && rec(r, 2) != 0 && rec(r, 3) != 0 && rec(r, 4) != 0) defining.push_back(r);
  }
  if (defining.empty()) return -1;

  const size_t base = p.fields.size();
  grow_slots(p, base + defining.size());
  for (size_t d = 0; d < defining.size(); ++d) {
    int32_t m[kMembers] = {};
    for (int k = 0; k < count; ++k) m[k] = rec(defining[d], k);
    fs_field& f = p.fields[base + d];
    f = fs_field{m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13]};
    if (f.color > 63) f.color = 63;
    p.modified[base + d] = p.changed[base + d] = 0;
    p.popups[base + d] = fs_popup{};
    p.edits[base + d] = fs_edit{};
    p.cells[base + d].clear();
  }
  for (size_t d = 0; d < defining.size(); ++d) {
    if (!place(p, base + d, true)) {
      grow_slots(p, base + d);
      return -1;
    }
  }
  g_fs.repaint = true;
  const size_t last = p.fields.size() - 1;
  for (int c : p.cells[last]) p.chars[static_cast<size_t>(c)] = FS_NULL_CELL;
  for (size_t d = base; d <= last; ++d) p.changed[d] = 1;
  return static_cast<int>(last);
}

int asrfmtx(int count, const int* record, const int* tab_list, const fs_segments* segments, fs_on_edit on_edit,
            void* user_data, int file_line, int binary, int limit) {
  int index = asrfmt(1, count, record);
  if (index < 0) return index;
  if (segments && (segments->count < 1 || !segments->seg || !segments->map)) {
    fs_fail(1, "asrfmtx : invalid segment descriptor");
    return index;
  }

  g_fs.cur->edits[static_cast<size_t>(index)] =
      fs_edit{tab_list, segments, on_edit, user_data, file_line, binary, limit < 0 ? -1 : limit};
  return index;
}

void asclear() {
  if (!fs_need_init("asclear")) return;
  fs_page& p = *g_fs.cur;
  p.fields.clear();
  p.modified.clear();
  p.changed.clear();
  p.popups.clear();
  p.edits.clear();
  p.cells.clear();
  std::fill(p.cellmap.begin(), p.cellmap.end(), 0);
  std::fill(p.chars.begin(), p.chars.end(), uint16_t{32});
  std::fill(p.hlt.begin(), p.hlt.end(), 0);
  std::fill(p.color.begin(), p.color.end(), 63);
  std::fill(p.intens.begin(), p.intens.end(), 1);
  g_as.armed = 0;
  if (g_fs.window_page == p.id) g_fs.full_repaint = true;
  g_fs.repaint = true;
  g_fs.compare_all = true;
  fs_ok();
}

void asfmenu(int id, int button, int count, const char* const* labels, const char* const* texts, int ends_read) {
  if (!fs_need_init("asfmenu")) return;
  int index = fs_find(id);
  if (index < 0) {
    fs_fail(28, "asfmenu : field %06d does not exist", id);
    return;
  }
  if (count < 0 || (count > 0 && !labels)) {
    fs_fail(2, "asfmenu : invalid count");
    return;
  }
  fs_popup m;
  if (count > 0) {
    m.button = button;
    m.count = count;
    m.has_texts = texts != nullptr;
    m.ends_read = ends_read;
    m.base = g_fs.next_popup_item;
    g_fs.next_popup_item += count;
    for (int i = 0; i < count; ++i) {
      m.labels.emplace_back(labels[i] ? labels[i] : "");
      m.texts.emplace_back(texts && texts[i] ? texts[i] : "");
    }
  }
  g_fs.cur->popups[static_cast<size_t>(index)] = std::move(m);
  fs_ok();
}

// --- attributes of a whole field ---

namespace {

// Runs a setter on a found field; the not-found text names the operation.
template <typename F>
void with_field(const char* name, int id, const char* missing, bool changes, F&& set) {
  if (!fs_need_init(name)) return;
  int index;
  fs_field* f = lookup(id, missing, index);
  if (!f) return;
  set(*f, g_fs.cur->cells[static_cast<size_t>(index)]);
  if (changes) mark_changed(index);
  fs_ok();
}

}  // namespace

void asfcol(int id, int color) {
  with_field("asfcol", id, "asfcol: field %d does not exist.", true, [&](fs_field& f, const std::vector<int>& cl) {
    f.color = mod64(color);
    for (int c : cl) g_fs.cur->color[static_cast<size_t>(c)] = cell_colour(f.color);
  });
}

void asfhlt(int id, int highlight) {
  with_field("asfhlt", id, "asfhlt: field %d does not exist", true, [&](fs_field& f, const std::vector<int>& cl) {
    f.highlight = highlight;
    for (int c : cl) g_fs.cur->hlt[static_cast<size_t>(c)] = highlight;
  });
}

void asfint(int id, int intensity) {
  with_field("asfint", id, "asfint: field %d does not exist", true, [&](fs_field& f, const std::vector<int>& cl) {
    f.intensity = intensity;
    for (int c : cl) g_fs.cur->intens[static_cast<size_t>(c)] = intensity;
  });
}

void asftyp(int id, int type) {
  with_field("asftyp", id, "asftyp: field %d does not exist.", true,
             [&](fs_field& f, const std::vector<int>&) { f.type = type; });
}

void asfmgd(int id, int value) {
  with_field("asfmgd", id, "asfmgd: field %d does not exist", false,
             [&](fs_field& f, const std::vector<int>&) { f.menu_group = value; });
}

void asscol(int id) {
  with_field("asscol", id, "asscol: field %d does not exist.", true, [&](fs_field& f, const std::vector<int>& cl) {
    for (int c : cl) g_fs.cur->color[static_cast<size_t>(c)] = cell_colour(f.color);
  });
}

void asshlt(int id) {
  with_field("asshlt", id, "asshlt: field %d does not exist.", true, [&](fs_field& f, const std::vector<int>& cl) {
    for (int c : cl) g_fs.cur->hlt[static_cast<size_t>(c)] = f.highlight;
  });
}

void asftypall(int type) {
  if (!fs_need_init("asftypall")) return;
  for (auto& f : g_fs.cur->fields) f.type = type;
  fs_ok();
}

// --- attributes cell by cell ---

namespace {

template <typename T>
void colour_cells(const char* name, int id, int n, const T* v) {
  with_field(name, id, "asccol: field %d does not exist.", true, [&](fs_field& f, const std::vector<int>& cl) {
    size_t k = v ? std::min(static_cast<size_t>(std::max(n, 0)), cl.size()) : 0;
    for (size_t i = 0; i < k; ++i)
      g_fs.cur->color[static_cast<size_t>(cl[i])] = cell_colour(v[i] < 0 ? f.color : static_cast<int>(v[i]));
  });
}

}  // namespace

void asccol(int id, int n, const int* colors) { colour_cells("asccol", id, n, colors); }
void asccolb(int id, int n, const signed char* colors) { colour_cells("asccolb", id, n, colors); }

void aschlt(int id, int n, const int* highlights) {
  with_field("aschlt", id, "aschlt: field %d does not exist.", true, [&](fs_field& f, const std::vector<int>& cl) {
    size_t k = highlights ? std::min(static_cast<size_t>(std::max(n, 0)), cl.size()) : 0;
    for (size_t i = 0; i < k; ++i)
      g_fs.cur->hlt[static_cast<size_t>(cl[i])] = highlights[i] < 0 ? f.highlight : highlights[i];
  });
}

void asqcol(int id, int n, int* out) {
  with_field("asqcol", id, "asqcol: field %d does not exist.", false, [&](fs_field& f, const std::vector<int>& cl) {
    if (!out) return;
    for (int i = 0; i < n; ++i) {
      int v = 0;
      if (static_cast<size_t>(i) < cl.size()) {
        v = g_fs.rev[static_cast<size_t>(mod64(g_fs.cur->color[static_cast<size_t>(cl[static_cast<size_t>(i)])]))];
        if (v == mod64(f.color)) v = 0;
      }
      out[i] = v;
    }
  });
}

// --- content ---

void ascget(int id, int len, char* buf) {
  with_field("ascget", id, "ascget: field %d does not exist", false, [&](fs_field& f, const std::vector<int>& cl) {
    if (!buf) return;
    for (int i = 0; i < len; ++i) {
      int c = 32;
      if (static_cast<size_t>(i) < cl.size()) {
        uint16_t v = g_fs.cur->chars[static_cast<size_t>(cl[static_cast<size_t>(i)])];
        c = v == FS_NULL_CELL ? 32 : fold(v & 0xff, f);
      }
      buf[i] = static_cast<char>(c);
    }
  });
}

void ascget_short(int id, int len, uint16_t* buf) {
  with_field("ascget_short", id, "ascget_short: field %d does not exist", false,
             [&](fs_field& f, const std::vector<int>& cl) {
               if (!buf) return;
               for (int i = 0; i < len; ++i) {
                 uint16_t v = FS_NULL_CELL;
                 if (static_cast<size_t>(i) < cl.size()) {
                   v = g_fs.cur->chars[static_cast<size_t>(cl[static_cast<size_t>(i)])];
                   if (v != FS_NULL_CELL) v = static_cast<uint16_t>(fold(v, f));
                 }
                 buf[i] = v;
               }
             });
}

std::optional<std::string> ascget_char(int id, int mode) {
  std::optional<std::string> out;
  with_field("ascget_char", id, "ascget_char: field %d does not exist.", false,
             [&](fs_field&, const std::vector<int>& cl) {
               std::string s;
               s.reserve(cl.size());
               for (int c : cl) {
                 uint16_t v = g_fs.cur->chars[static_cast<size_t>(c)];
                 s.push_back(static_cast<char>(v == FS_NULL_CELL ? 32 : v & 0xff));
               }
               if (mode >= 1)
                 while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
               if (mode >= 2) s.erase(0, std::min(s.find_first_not_of(' '), s.size()));
               out = std::move(s);
             });
  return out;
}

int ascget_int(int id, int& out) {
  int result = -1;
  with_field("ascget_int", id, "ascget_int: field %d does not exist.", false,
             [&](fs_field&, const std::vector<int>& cl) {
               std::string s;
               for (int c : cl) {
                 uint16_t v = g_fs.cur->chars[static_cast<size_t>(c)];
                 s.push_back(static_cast<char>(v == FS_NULL_CELL ? 32 : v & 0xff));
               }
               while (!s.empty() && s.back() == ' ') s.pop_back();
               s.erase(0, std::min(s.find_first_not_of(' '), s.size()));
               size_t i = 0;
               bool neg = false;
               if (i < s.size() && (s[i] == '-' || s[i] == '+')) neg = s[i++] == '-';
               if (i == s.size()) {
                 result = 1;
                 return;
               }
               int64_t v = 0;
               for (; i < s.size(); ++i) {
                 if (s[i] < '0' || s[i] > '9' || v > INT32_MAX) {
                   result = 1;
                   return;
                 }
                 v = v * 10 + (s[i] - '0');
               }
               if (v > INT32_MAX) {
                 result = 1;
                 return;
               }
               out = static_cast<int>(neg ? -v : v);
               result = 0;
             });
  return result;
}

int ascput(int id, int len, const char* bytes) {
  if (!fs_need_init("ascput")) return -1;
  int index;
  if (!lookup(id, "ascput_short: field %d does not exist", index)) return -1;
  put_cells(index, bytes ? len : 0, nullptr, bytes, 32);
  fs_ok();
  return index;
}

int ascput_short(int id, int len, const uint16_t* cells) {
  if (!fs_need_init("ascput_short")) return -1;
  int index;
  if (!lookup(id, "ascput_short: field %d does not exist", index)) return -1;
  put_cells(index, cells ? len : 0, cells, nullptr, FS_NULL_CELL);
  fs_ok();
  return index;
}

int ascputd(int id, int len, const char* bytes) {
  int index = ascput(id, len, bytes);
  if (index >= 0) asdrawfld(index, 0);
  return index;
}

// --- modified fields and queries ---

void asfmod(int id, int flag) {
  if (!fs_need_init("asfmod")) return;
  if (flag != 0 && flag != 1) {
    fs_fail(1, "asfmod: Invalid parameter.");
    return;
  }
  int index;
  if (!lookup(id, "asfmod: field %d does not exist.", index)) return;
  g_fs.cur->modified[static_cast<size_t>(index)] = static_cast<char>(flag);
  fs_ok();
}

int asqmod(int count, int* ids, int* sizes, int* used) {
  if (!fs_need_init("asqmod")) return 0;
  if (count < 0) return fs_fail(1, "asqmod : count is negative"), 0;
  fs_page& p = *g_fs.cur;
  int k = 0;
  for (size_t i = 0; i < p.fields.size() && k < count; ++i) {
    if (!p.modified[i]) continue;
    p.modified[i] = 0;
    const std::vector<int>& cl = p.cells[i];
    int u = 0;
    for (size_t c = cl.size(); c > 0; --c)
      if (!is_null_or_blank(p.chars[static_cast<size_t>(cl[c - 1])])) {
        u = static_cast<int>(c);
        break;
      }
    if (ids) ids[k] = p.fields[i].id;
    if (sizes) sizes[k] = static_cast<int>(cl.size());
    if (used) used[k] = u;
    ++k;
  }
  for (int j = k; j < count; ++j) {
    if (ids) ids[j] = 0;
    if (sizes) sizes[j] = 0;
    if (used) used[j] = 0;
  }
  fs_ok();
  return k;
}

void asfcur(int id, int line, int col) { set_cursor(id, line, col, true); }
void asfcurq(int id, int line, int col) { set_cursor(id, line, col, false); }

void asqcur(int code, int& id, int& line, int& col) {
  if (!fs_need_init("asqcur")) return;
  query_position("asqcur : Invalid code", code, g_fs.cur->cur_line, g_fs.cur->cur_col, id, line, col);
}

void asqmou(int code, int& id, int& line, int& col) {
  if (!fs_need_init("asqmou")) return;
  query_position("asqmou : Invalid code", code, g_fs.cur->mou_line, g_fs.cur->mou_col, id, line, col);
}

void asqfld(int code, int id, int count, int* out) {
  if (!fs_need_init("asqfld")) return;
  if (code != 0) return (void)fs_fail(1, "asqfld : Invalid code");
  if (count < 1 || count > kMembers || !out) return (void)fs_fail(2, "asqfld : Invalid count");
  int index;
  const fs_field* f = lookup(id, "asqfld: field %d does not exist.", index);
  if (!f) return;
  const int32_t* m = &f->id;
  for (int i = 0; i < count; ++i) out[i] = m[i];
  fs_ok();
}

int asq_ff(int id) {
  if (!fs_need_init("asq_ff")) return 1;
  int index = fs_find(id);
  if (index < 0) return fs_fail(28, "asq_ff: invalid field"), 1;
  fs_ok();
  return index + 1;
}

// A new grid size: every page keeps the fields that still fit, with their content; the others are dropped.
void fs_apply_resize(int lines, int cols) {
  const int old_cells = g_fs.nb_cells;
  g_fs.nb_cols = std::clamp(cols, 1, static_cast<int>(FS_MAX_CELLS));
  g_fs.nb_lines = std::clamp(lines, 1, static_cast<int>(FS_MAX_CELLS / g_fs.nb_cols));
  g_fs.nb_cells = g_fs.nb_lines * g_fs.nb_cols;
  const size_t n = static_cast<size_t>(g_fs.nb_cells);
  for (auto& pp : g_fs.pages) {
    fs_page& p = *pp;
    std::vector<uint16_t> chars = std::move(p.chars);
    std::vector<int> hlt = std::move(p.hlt), color = std::move(p.color), intens = std::move(p.intens);
    std::vector<std::vector<int>> cells = std::move(p.cells);
    p.cells.assign(cells.size(), {});
    p.cellmap.assign(n, 0);
    p.chars.assign(n, 32);
    p.hlt.assign(n, 0);
    p.color.assign(n, 63);
    p.intens.assign(n, 1);
    for (size_t i = 0; i < p.fields.size();) {
      if (!place(p, i, false)) {  // no longer fits: dropped with its old cell list
        cells.erase(cells.begin() + static_cast<std::ptrdiff_t>(i));
        remove_field(p, i);
        continue;
      }
      for (size_t k = 0; k < cells[i].size(); ++k) {
        size_t from = static_cast<size_t>(cells[i][k]), to = static_cast<size_t>(p.cells[i][k]);
        if (static_cast<int>(from) >= old_cells) continue;
        p.chars[to] = chars[from];
        p.hlt[to] = hlt[from];
        p.color[to] = color[from];
        p.intens[to] = intens[from];
      }
      ++i;
    }
    p.cur_line = std::min(p.cur_line, g_fs.nb_lines);
    p.cur_col = std::min(p.cur_col, g_fs.nb_cols);
    p.mou_line = p.mou_col = 1;
  }
  g_fs.shadow.assign(n, fs_shadow_cell{});
  g_fs.full_repaint = true;
  g_fs.repaint = true;
}
