// Bringing the display up to date: the shadow of what it shows, compare-and-paint by runs, cursor and indicators.
#include <algorithm>
#include <cstring>

#include "screen/fs_state.h"

namespace {

constexpr uint8_t kCursorColour = 63;

uint16_t shown_char(uint16_t c) { return c == FS_NULL_CELL ? 32 : c; }

fs_shadow_cell model_cell(const fs_page& p, size_t s) {
  fs_shadow_cell m;
  m.ch = shown_char(p.chars[s]);
  m.hlt = static_cast<uint8_t>(p.hlt[s]);
  m.color = static_cast<uint8_t>(((p.color[s] % 64) + 64) % 64);
  m.intens = static_cast<uint8_t>(p.intens[s]);
  return m;
}

bool same(const fs_shadow_cell& a, const fs_shadow_cell& b) {
  return a.ch == b.ch && a.hlt == b.hlt && a.color == b.color && a.intens == b.intens;
}

bool same_attr(const fs_shadow_cell& a, const fs_shadow_cell& b) {
  return a.hlt == b.hlt && a.color == b.color && a.intens == b.intens;
}

// What the display is told for one cell: a byte to show and its attributes.
fs_hcell resolve(const fs_shadow_cell& m) {
  fs_hcell h{32, m.hlt, g_fs.acol ? m.color : uint8_t{63}, m.intens};
  if (m.intens == 0 || h.color == 0) return h;
  uint16_t c = m.ch;
  if (c == 0 || c == FS_NULL_CELL)
    h.ch = 32;
  else if (c == 9 || c == 10 || c == 12)
    h.ch = '.';
  else
    h.ch = static_cast<uint8_t>(c & 0xff);
  return h;
}

std::vector<fs_hcell> g_run;  // reused between paints so that painting does not allocate in the usual case

// Sends cells [from, to) of a line as runs of equal attributes and records them in the shadow.
void paint_span(const fs_page& p, int line, int from, int to) {
  int col = from;
  while (col < to) {
    size_t s = static_cast<size_t>(fs_flat(line, col + 1));
    fs_shadow_cell first = model_cell(p, s);
    g_run.clear();
    int c = col;
    for (; c < to; ++c) {
      size_t k = s + static_cast<size_t>(c - col);
      fs_shadow_cell m = model_cell(p, k);
      if (!same_attr(m, first)) break;
      g_fs.shadow[k] = m;
      g_run.push_back(resolve(m));
    }
    g_fs.host->paint(line, col + 1, g_run);
    col = c;
  }
}

std::vector<char> g_dirty;  // per line: a changed field lies on it

// Marks the lines of the changed fields; false when every line must be compared.
bool mark_dirty_lines(const fs_page& p) {
  if (g_fs.compare_all) return false;
  g_dirty.assign(static_cast<size_t>(g_fs.nb_lines) + 1, 0);
  for (size_t i = 0; i < p.fields.size(); ++i) {
    if (!p.changed[i] || p.cells[i].empty()) continue;
    int first = p.cells[i].front() / g_fs.nb_cols + 1, last = p.cells[i].back() / g_fs.nb_cols + 1;
    std::fill(g_dirty.begin() + first, g_dirty.begin() + last + 1, 1);
  }
  return true;
}

void paint_page(const fs_page& p, bool everything) {
  const int nc = g_fs.nb_cols;
  const bool only_dirty = !everything && mark_dirty_lines(p);
  g_fs.compare_all = false;
  for (int line = 1; line <= g_fs.nb_lines; ++line) {
    if (only_dirty && !g_dirty[static_cast<size_t>(line)]) continue;
    size_t base = static_cast<size_t>(fs_flat(line, 1));
    int first = everything ? 0 : nc;
    if (!everything)
      for (int c = 0; c < nc; ++c)
        if (!same(model_cell(p, base + static_cast<size_t>(c)), g_fs.shadow[base + static_cast<size_t>(c)])) {
          first = c;
          break;
        }
    if (first < nc) paint_span(p, line, first, nc);
  }
}

void paint_status_text(int col, std::string_view text) {
  if (col < 1 || col > g_fs.nb_cols) return;
  std::string& shown = g_fs.status_row;
  if (shown.size() != static_cast<size_t>(g_fs.nb_cols)) shown.assign(static_cast<size_t>(g_fs.nb_cols), ' ');
  text = text.substr(0, std::min(text.size(), static_cast<size_t>(g_fs.nb_cols - col + 1)));
  if (shown.compare(static_cast<size_t>(col - 1), text.size(), text) == 0) return;
  shown.replace(static_cast<size_t>(col - 1), text.size(), text);
  std::vector<fs_hcell> run;
  for (char c : text) run.push_back(fs_hcell{static_cast<uint8_t>(c), 0, kCursorColour, 1});
  g_fs.host->paint(g_fs.nb_lines + 1, col, run);
}

}  // namespace

void fs_forget_shadow() {
  std::fill(g_fs.shadow.begin(), g_fs.shadow.end(), fs_shadow_cell{});
  g_fs.status_row.assign(static_cast<size_t>(g_fs.nb_cols), ' ');
}

void fs_draw_indicators() {
  const int nc = g_fs.nb_cols;
  const int ins_col = std::max(1, nc / 2 - 4);
  if (g_as.insert)
    paint_status_text(ins_col, "< INS > ");
  else
    paint_status_text(std::max(1, ins_col - 1), "          ");
  const bool wide = nc >= 57;
  const int ro_col = wide ? nc - 15 : nc - 4;
  if (ro_col > ins_col + 9)
    paint_status_text(ro_col, g_fs.rdonly ? (wide ? "READ ONLY FILE" : "R/O") : (wide ? "              " : "   "));
  paint_status_text(std::max(1, nc / 4 * 3 - 4), g_fs.apl ? "APL" : "   ");
}

void fs_draw_linecol();

void fs_place_cursor() {
  g_fs.host->cursor(g_fs.cur->cur_line, g_fs.cur->cur_col);
  fs_draw_linecol();
}

// The status row's line-and-column text, from the second column, for a cursor in a segmented field.
void fs_draw_linecol() {
  if (!g_fs.linecol) return;
  const fs_page& p = *g_fs.cur;
  const int width = std::min(std::max(1, g_fs.nb_cols / 2 - 4) - 2, 999);
  if (width < 1) return;
  std::string text;
  const int flat = fs_flat(p.cur_line, p.cur_col);
  const int k = p.cellmap[static_cast<size_t>(flat)];
  if (k > 0 && p.edits[static_cast<size_t>(k - 1)].segments) {
    const std::vector<int>& cl = p.cells[static_cast<size_t>(k - 1)];
    int place = static_cast<int>(std::find(cl.begin(), cl.end(), flat) - cl.begin());
    text = as_status_text(k - 1, place);
    if (static_cast<int>(text.size()) > width) return;
  }
  text.resize(static_cast<size_t>(width), ' ');
  paint_status_text(2, text);
}

void asrefresh() {
  if (!fs_need_init("asrefresh")) return;
  fs_host& h = *g_fs.host;
  if (g_fs.view) h.show(true);
  if (g_fs.colours_pending) {
    h.palette(g_fs.rgb);
    g_fs.colours_pending = false;
    g_fs.full_repaint = true;
  }
  fs_page& p = *g_fs.cur;
  for (; p.alarms > 0; --p.alarms) h.beep();
  if (g_fs.window_page != p.id) g_fs.full_repaint = true;
  if (g_fs.full_repaint) {
    fs_forget_shadow();
    h.clear();
    paint_page(p, true);
    g_fs.full_repaint = false;
    g_fs.repaint = false;
    std::fill(p.changed.begin(), p.changed.end(), 0);
  } else if (g_fs.repaint) {
    paint_page(p, false);
    g_fs.repaint = false;
    std::fill(p.changed.begin(), p.changed.end(), 0);
  }
  g_fs.window_page = p.id;
  fs_draw_indicators();
  fs_place_cursor();
  fs_ok();
}

void asredraw() {
  if (!fs_need_init("asredraw")) return;
  g_fs.full_repaint = true;
  g_fs.repaint = true;
  asrefresh();
}

void asdrawfld(int index, int first_cell) {
  if (!fs_need_init("asdrawfld")) return;
  fs_page& p = *g_fs.cur;
  if (index < 0 || static_cast<size_t>(index) >= p.fields.size()) {
    fs_fail(28, "asdrawfld: field index %d does not exist.", index);
    return;
  }
  if (g_fs.window_page != p.id) {  // not on the display: the next refresh paints it whole
    fs_ok();
    return;
  }
  const std::vector<int>& cl = p.cells[static_cast<size_t>(index)];
  size_t k = static_cast<size_t>(std::max(first_cell, 0));
  while (k < cl.size()) {
    // a stretch of cells that follow each other on one line
    int start = cl[k];
    size_t j = k + 1;
    while (j < cl.size() && cl[j] == cl[j - 1] + 1 && cl[j] % g_fs.nb_cols != 0) ++j;
    int line = start / g_fs.nb_cols + 1, col = start % g_fs.nb_cols;
    paint_span(p, line, col, col + static_cast<int>(j - k));
    k = j;
  }
  fs_ok();
}

void fs_mark_cell(int flat, bool on) {
  if (flat < 0 || flat >= g_fs.nb_cells || g_fs.window_page != g_fs.cur->id) return;
  const int line = flat / g_fs.nb_cols + 1, col = flat % g_fs.nb_cols;
  if (!on) {
    paint_span(*g_fs.cur, line, col, col + 1);
    return;
  }
  fs_hcell h = resolve(model_cell(*g_fs.cur, static_cast<size_t>(flat)));
  h.hlt = (h.hlt == 2 || h.hlt == 3) ? 0 : 2;  // the mark inverts the cell
  g_fs.shadow[static_cast<size_t>(flat)].hlt = h.hlt;  // so that a refresh puts the cell back
  g_fs.host->paint(line, col + 1, std::span<const fs_hcell>(&h, 1));
}
