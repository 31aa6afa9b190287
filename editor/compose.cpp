// Screen composition: id row, ring bar, message, command line, prefix area, file area and legend from state.
#include "editor/compose.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include "editor/prefix.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/state.h"
#include "screen/fs.h"

xf_screen_state xf_scr;

namespace {

// Field ids of one composition, from 1 in the order of definition.
struct composer {
  int32_t next_id = 1;
  std::vector<uint16_t> cells;  // kept from one line to the next

  int32_t field(int line, int col, int lines, int cols, int type, int intens, int colour, int hlt, int attr) {
    int32_t id = next_id++;
    int rec[14] = {id, line, col, lines, cols, type, intens, colour, 0, hlt, 0, attr, 0, 0};
    asrfmt(1, 14, rec);
    return id;
  }
  static void put(int32_t id, const std::string& text) {
    if (!text.empty()) ascput(id, static_cast<int>(text.size()), text.data());
  }
};

constexpr int32_t kMaxRows = 3000, kMaxCols = 1000;

// The short name of a file in the ring bar: its last path component.
std::string short_name(const std::string& path) {
  std::size_t s = path.rfind('/');
  return s == std::string::npos ? path : path.substr(s + 1);
}

// The prefix text of a line: its point name, its number, or "=" signs.
std::string prefix_text(const xf_file& f, const xf_view_file& s, int32_t line, int32_t width, bool& point) {
  point = false;
  for (const xf_point& p : f.points)
    if (p.line == line) {
      point = true;
      std::string t = p.name.substr(0, static_cast<std::size_t>(width));
      t.resize(static_cast<std::size_t>(width), ' ');
      return t;
    }
  if (s.number == 0) return std::string(static_cast<std::size_t>(width), '=');
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.*d", static_cast<int>(width), s.number == 2 ? line : line + 1);
  return buf;
}

// A row that a scale or tab line stands on is no file row.
bool ruler_row(const xf_view_file& s, int32_t row) {
  return (s.scale_row > 0 && s.scale_row == row) || (s.tabline_row > 0 && s.tabline_row == row);
}

// The scale row over the text area: dots, "+" every fifth column, tens as digits, margins and zone marks.
std::string scale_text(const xf_file& f, const xf_view_file& s, int32_t width, int32_t first_col) {
  std::string t(static_cast<std::size_t>(width), '.');
  for (int32_t i = 0; i < width; ++i) {
    int32_t c = first_col + i, n = c + 1;
    char ch = t[static_cast<std::size_t>(i)];
    if (c == f.column) ch = '|';
    else if (c == s.zone_first) ch = '<';
    else if (c == s.zone_last) ch = '>';
    else if (c == f.format[0]) ch = '^';
    else if (c == f.format[1]) ch = '$';
    else if (n % 10 == 0) {
      std::string d = std::to_string(n / 10);
      for (std::size_t k = 0; k < d.size() && i + static_cast<int32_t>(k) < width; ++k)
        t[static_cast<std::size_t>(i) + k] = d[k];
      i += static_cast<int32_t>(d.size()) - 1;
      continue;
    } else if (n % 5 == 0)
      ch = '+';
    t[static_cast<std::size_t>(i)] = ch;
  }
  return t;
}

std::string tab_text(const xf_file& f, int32_t width, int32_t first_col) {
  std::string t(static_cast<std::size_t>(width), ' ');
  for (std::size_t k = 2; k < f.tabs.size(); ++k) {
    int32_t i = f.tabs[k] - 1 - first_col;
    if (i >= width) break;
    if (i >= 0) t[static_cast<std::size_t>(i)] = 'T';
  }
  return t;
}

// Composition of one view with a file.
struct view_composer {
  composer& c;
  xf_view& v;
  xf_view_fields& vf;
  xf_file& f;
  const xf_view_file& s;
  int32_t first_row = 0, last_row = 0;  // file area, view rows
  int32_t hidden = 0;

  int32_t screen_row(int32_t view_row) const { return v.top + view_row - 1; }

  // Cells a line puts in its field, and how many rows it takes at most.
  int32_t line_cells(int32_t line) const {
    if (line < 0) return 0;
    int32_t len = f.len[line];
    int32_t first = vf.first_col;
    int32_t n = std::max(0, len - first);
    if (s.verify_last != 0x7ffffffe) n = std::min(n, s.verify_last - first + 1);
    if (!f.keep_blanks) {
      const char* p = f.text[line].get() + first;
      while (n > 0 && p[n - 1] == ' ') --n;
    }
    return n;
  }
  int32_t line_rows(int32_t line, int32_t cells) const {
    if (s.verify_last != 0x7ffffffe) return 1;
    int32_t rows = cells <= vf.data_width ? 1 : (cells + vf.data_width - 1) / vf.data_width;
    if (std::find(v.open_lines.begin(), v.open_lines.end(), line) != v.open_lines.end()) ++rows;
    return rows;
  }

  // The prefix field: a pending command or an error text in the field's own colour, else the line's number or
  // point name in its colour, so that what the user types over it can be told from it.
  void prefix_of(xf_row& r, int32_t row, int32_t line, bool current) {
    if (vf.prefix_width == 0) return;
    std::string pending;
    bool error = false;
    bool waiting = xf_prefix_display(f, line, pending, error);
    r.prefix_field = c.field(screen_row(row), v.left, 1, vf.prefix_width, FT_TEXT, current ? 2 : 1,
                             xf_prefix_own_colour(), error ? 2 : 0, FA_PLAIN | FA_LTR);
    if (waiting) {
      pending.resize(static_cast<std::size_t>(vf.prefix_width), ' ');
      composer::put(r.prefix_field, pending);
    } else {
      bool point = false;
      std::string t = prefix_text(f, s, line, vf.prefix_width, point);
      composer::put(r.prefix_field, t);
      std::vector<int> colours(t.size(), point ? xf_scr.colour[XA_POINT] : xf_scr.colour[XA_PREFIX]);
      asccol(r.prefix_field, static_cast<int>(colours.size()), colours.data());
    }
    c.field(screen_row(row), v.left + vf.prefix_width, 1, 1, FT_PROTECTED, 1, 1, 0, FA_HAND);
  }

  void shadow_at(int32_t row, int32_t first_hidden, std::vector<xf_row>& table) {
    xf_row r;
    r.shadow = 1;
    r.line = first_hidden;
    r.view_row = row;
    prefix_of(r, row, first_hidden, false);
    r.data_field = c.field(screen_row(row), vf.text_col, 1, vf.data_width, FT_PROTECTED, 1,
                           xf_scr.colour[XA_SHADOW], 2, 0);
    composer::put(r.data_field, xf_shadow_text(hidden, vf.data_width));
    table.push_back(r);
  }

  // Puts a line on rows [row, row+rows-1]; cells beyond the field are cut.
  void line_at(int32_t row, int32_t rows, int32_t line, bool cut, std::vector<xf_row>& table) {
    bool current = line == xf_current_line_of();
    xf_row r;
    r.line = line;
    r.view_row = row;
    r.cut = cut ? 1 : 0;
    r.rows = rows;
    prefix_of(r, row, line, current);
    int32_t cells = line_cells(line);
    int32_t room = rows * vf.data_width;
    int attr = FA_REPORT_FULL | (cells > room ? FA_REPORT_EDIT : 0);
    int colour = current ? xf_scr.colour[XA_CURLINE] : xf_scr.colour[XA_FILEAREA];
    int rec[14] = {c.next_id++, screen_row(row), vf.text_col, rows, vf.data_width, FT_TEXT, 1, colour, 0, 0, 0,
                   attr, 0, 0};
    asrfmtx(14, rec, f.tabs.empty() ? nullptr : f.tabs.data(), nullptr, nullptr, nullptr, line, f.binary, -1);
    r.data_field = rec[0];
    int32_t shown = std::min(cells, room);
    r.cells = shown;
    if (shown > 0) ascput(r.data_field, shown, f.text[line].get() + vf.first_col);
    int32_t sel_from = 0, sel_to = 0;
    const bool selected = room > 0 && xf_sel_span(xf_ring.file_no, line, sel_from, sel_to);
    if (cells > room || selected) {
      std::vector<int> h(static_cast<std::size_t>(room), 0);
      if (selected) {  // the selected cells in reverse; a line end that is selected shows as one cell more
        int64_t end = sel_to == INT_MAX ? int64_t{f.len[line]} + 1 : int64_t{sel_to};
        for (int64_t k = std::max<int64_t>(0, sel_from - vf.first_col); k < std::min<int64_t>(room, end - vf.first_col); ++k)
          h[static_cast<std::size_t>(k)] = 2;
      }
      if (cells > room) h.back() = 2;  // the mark that the line has more than is seen: its last cell in reverse
      aschlt(r.data_field, room, h.data());
    }
    table.push_back(r);
  }

  int32_t xf_current_line_of() const { return s.current_line; }

  void empty_row(int32_t row, int32_t line, bool above) {
    int32_t id = c.field(screen_row(row), vf.text_col, 1, vf.data_width, FT_TEXT, 1, xf_scr.colour[XA_FILEAREA], 0,
                         FA_REPORT_FULL);
    if (above)
      vf.above.push_back(id);
    else
      vf.below.emplace_back(id, line);
  }

  void ruler(int32_t row) {
    if (s.scale_row > 0 && s.scale_row == row) {
      int32_t id = c.field(screen_row(row), vf.text_col, 1, vf.data_width, FT_PROTECTED, 1,
                           xf_scr.colour[XA_SCALE], 0, FA_CLICK);
      std::string t = scale_text(f, s, vf.data_width, vf.first_col);
      if (s.tabline_row == row) {
        std::string tabs = tab_text(f, vf.data_width, vf.first_col);
        for (std::size_t i = 0; i < t.size(); ++i)
          if (tabs[i] == 'T') t[i] = 'T';
      }
      composer::put(id, t);
    } else if (s.tabline_row > 0 && s.tabline_row == row) {
      int32_t id = c.field(screen_row(row), vf.text_col, 1, vf.data_width, FT_PROTECTED, 1,
                           xf_scr.colour[XA_TABLINE], 0, 0);
      composer::put(id, tab_text(f, vf.data_width, vf.first_col));
    }
  }

  void upward() {
    int32_t row = v.curline - 1;
    int32_t line = s.current_line - 1;
    int32_t lowest = xf_ring.lowest_line;
    while (line >= lowest && row >= first_row) {
      if (ruler_row(s, row)) {
        ruler(row--);
        continue;
      }
      if (line >= 0 && !xf_in_scope(line)) {
        ++hidden;
        --line;
        continue;
      }
      if (hidden > 0) {
        if (v.shadow) shadow_at(row--, line + 1, vf.upper);
        hidden = 0;
        continue;
      }
      int32_t cells = line_cells(line);
      int32_t rows = line_rows(line, cells);
      // The span may not pass the first usable row nor an obstacle above.
      int32_t room = 0;
      while (room < rows && row - room >= first_row && !ruler_row(s, row - room)) ++room;
      bool cut = room < rows;
      line_at(row - room + 1, room, line, cut, vf.upper);
      row -= room;
      --line;
    }
    if (hidden > 0 && row >= first_row) {
      if (v.shadow) shadow_at(row--, lowest + 1, vf.upper);
      hidden = 0;
    }
    for (; row >= first_row; --row) {
      if (ruler_row(s, row))
        ruler(row);
      else
        empty_row(row, 0, true);
    }
  }

  void downward() {
    int32_t row = v.curline;
    int32_t line = s.current_line;
    hidden = 0;
    while (row <= last_row) {
      if (ruler_row(s, row)) {
        ruler(row++);
        continue;
      }
      if (line >= f.size) break;
      if (line >= 0 && !xf_in_scope(line)) {
        int32_t first = line;
        while (line < f.size && !xf_in_scope(line)) ++line, ++hidden;
        if (v.shadow) shadow_at(row++, first, vf.lower);
        hidden = 0;
        continue;
      }
      int32_t cells = line_cells(line);
      int32_t rows = line_rows(line, cells);
      int32_t room = 0;
      while (room < rows && row + room <= last_row && !ruler_row(s, row + room)) ++room;
      line_at(row, room, line, room < rows, vf.lower);
      row += room;
      ++line;
    }
    for (int32_t n = 0; row <= last_row; ++row) {
      if (ruler_row(s, row))
        ruler(row);
      else
        empty_row(row, f.size + n++, false);
    }
  }
};

void compose_id_row(composer& c, xf_view& v, xf_view_fields& vf, const xf_file* f) {
  int row = v.top;
  int mod_col = v.left + v.width - 9;
  int lines = f ? f->size : 0;
  int size_w = lines >= 999999 ? 9 : lines >= 99999 ? 7 : 6;
  int size_col = mod_col - size_w;
  int len_col = size_col - 4;
  int id_w = std::min(1000, len_col - v.left);
  int id_colour = xf_scr.colour[XA_IDLINE];
  vf.id_field = c.field(row, v.left, 1, std::max(1, id_w), FT_PROTECTED, 1, id_colour, 0, 0);
  if (f) {
    std::string id = f->name;
    if (f->eol_unix && id.size() < 997) id += " [U]";
    composer::put(vf.id_field, id.substr(0, static_cast<std::size_t>(std::max(0, id_w))));
  }
  composer::put(c.field(row, len_col, 1, 4, FT_PROTECTED, 1, xf_scr.colour[XA_SIZE], 0, 0), "Len:");
  int32_t size_id = c.field(row, size_col, 1, size_w, FT_PROTECTED, 1, xf_scr.colour[XA_SIZE], 0, 0);
  composer::put(size_id, std::to_string(lines));
  composer::put(c.field(row, mod_col, 1, 5, FT_PROTECTED, 1, id_colour, 0, 0), "mod: ");
  int32_t mod_id = c.field(row, v.left + v.width - 4, 1, 4, FT_PROTECTED, 1, xf_scr.colour[XA_MOD], 0, 0);
  if (f && f->alt_save != 0) composer::put(mod_id, std::to_string(f->alt_save));
}

// The command line: one row, or two when its text passes the first row.
void compose_cmdline(composer& c, xf_view& v, xf_view_fields& vf, int32_t view_no) {
  std::string& t = xf_run.command_line;
  std::size_t last = t.find_last_not_of(std::string(" \0", 2));
  bool blank = last == std::string::npos;
  int place = v.cmdline_place[0];
  bool has_cursor = xf_scr.cursor_on_cmd && xf_scr.cursor_view == view_no;
  if (!blank || has_cursor || xf_ring.files.empty()) place = place < 0 ? -place : place;
  v.cmdline_place[1] = place;
  vf.cmd_field = -1;
  if (place <= 0) return;
  int rows = !blank && static_cast<int32_t>(last) >= v.width - 7 ? 2 : 1;
  vf.cmd_rows = rows;
  v.cmd_rows = rows;
  v.cmd_width = rows == 2 ? 2 * v.width - 12 : v.width - 6;
  int row = place == 1 ? v.top + 1 : v.top + v.height - rows;
  vf.cmd_row = row - v.top + 1;
  int attr = FA_LTR | (rows == 1 ? FA_REPORT_FULL : 0);
  composer::put(c.field(row, v.left, 1, 5, FT_PROTECTED, 1, xf_scr.colour[XA_ARROW], 0, attr), "====>");
  vf.cmd_field = c.field(row, v.left + 6, rows, v.width - 6, FT_TEXT, 1, xf_scr.colour[XA_CMDLINE], 0, attr);
  if (!blank) composer::put(vf.cmd_field, t.substr(0, std::min<std::size_t>(t.size(), v.cmd_width)));
}

void place_cursor(const xf_view& v, const xf_view_fields& vf, int32_t view_no) {
  if (xf_scr.cursor_view != view_no) return;
  if (xf_scr.cursor_cell_line > 0) {
    asfcur(0, std::min(xf_scr.cursor_cell_line, xf_scr.nb_rows), std::min(xf_scr.cursor_cell_col, xf_scr.nb_cols));
    xf_scr.cursor_placed = fsstatus() == 0;
    if (xf_scr.cursor_placed) return;
  }
  if (!xf_scr.cursor_on_cmd) {
    for (const auto* table : {&vf.lower, &vf.upper})
      for (const xf_row& r : *table) {
        if (r.shadow || r.line != xf_scr.cursor_line || r.data_field < 0) continue;
        int32_t cell = xf_scr.cursor_col - vf.first_col;  // 0-based cell in the field
        if (cell < 0) cell = 0;
        int rows = 1;
        while (cell >= rows * vf.data_width) ++rows;
        asfcur(r.data_field, rows, cell - (rows - 1) * vf.data_width + 1);
        if (fsstatus() == 0) {
          xf_scr.cursor_placed = true;
          return;
        }
      }
    // A wished line off the screen, or on an empty row below the end: the row typing would make.
    for (const auto& [id, line] : vf.below)
      if (line == xf_scr.cursor_line) {
        asfcur(id, 1, std::min(xf_scr.cursor_col - vf.first_col + 1, vf.data_width));
        xf_scr.cursor_placed = true;
        return;
      }
  }
  if (vf.cmd_field >= 0) {
    asfcur(vf.cmd_field, 1, std::clamp(xf_scr.cmd_col, 1, std::max(1, v.cmd_width)));
    xf_scr.cursor_placed = xf_scr.cursor_on_cmd;
    return;
  }
  if (!vf.lower.empty() && vf.lower.front().data_field >= 0) asfcur(vf.lower.front().data_field, 1, 1);
}

// Two or more messages of one turn go as lines to the end of the ring's message file, made when missing;
// the last one also stands in the message row.
void file_messages(xf_view& v) {
  if (v.messages.size() < 2) return;
  std::string name = (xf_run.work_dir == "/" ? std::string() : xf_run.work_dir) + "/tolva.@messages";
  int32_t back = xf_ring.file_no, at = -1;
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[static_cast<std::size_t>(i)]->name == name) at = i;
  if (at < 0) {
    at = xf_new_file();
    xf_ring.file->name = xf_ring.file->saved_name = name;
    xf_ring.file->eol_unix = 1;
  } else {
    xf_set_file(at);
  }
  xf_file& f = *xf_ring.file;
  for (const std::string& m : v.messages) xf_do('i', xf_new_text(m), f.size - 1, 1, 0, nullptr, "xf_compose:msg");
  if (back >= 0) xf_set_file(back);
  v.messages.clear();
}

}  // namespace

void xf_screen_reset() { xf_scr = xf_screen_state{}; }

int32_t xf_prefix_width(int32_t current_line) {
  if (current_line < 99940) return 5;
  if (current_line < 999940) return 6;
  if (current_line < 9999940) return 7;
  if (current_line < 99999940) return 8;
  return 9;
}

std::string xf_shadow_text(int32_t n, int32_t w) {
  char text[64];
  if (n == 1)
    std::snprintf(text, sizeof text, "1 line  not displayed ");
  else
    std::snprintf(text, sizeof text, "%d lines not displayed ", static_cast<int>(n));
  std::string t = text;
  if (static_cast<int32_t>(t.size()) >= w) return t;
  int32_t dashes = std::max(0, (w - 22) / 2 - 1);
  std::string out(static_cast<std::size_t>(dashes), '-');
  out += ' ';
  out += t;
  if (static_cast<int32_t>(out.size()) < w) out.resize(static_cast<std::size_t>(w), '-');
  return out.substr(0, static_cast<std::size_t>(w));
}

void xf_file_rows(const xf_view& v, int32_t& first, int32_t& last) {
  bool top_cmd = v.cmdline_place[1] == 1;
  int32_t rows = v.cmdline_place[1] > 0 ? v.cmd_rows : 0;
  first = top_cmd ? 2 + rows + 1 : 3;  // behind the id row, the command line at the top, and the ring bar
  if (v.message_state > 0) ++first;
  last = top_cmd ? v.height : v.height - rows;
}

void xf_cursor_to_cmd(int32_t col) {
  xf_scr.cursor_cell_line = 0;
  xf_scr.cursor_on_cmd = true;
  xf_scr.cmd_col = col;
  xf_scr.cursor_view = std::max(0, xf_ring.view_no);
}

int xf_prefix_own_colour() {
  int pending = xf_scr.colour[XA_PENDING], prefix = xf_scr.colour[XA_PREFIX], point = xf_scr.colour[XA_POINT];
  if (pending != prefix && pending != point) return pending;
  for (int k = 1; k < 64; ++k)
    if (k != 8 && k != prefix && k != point) return k;
  return pending;
}

void xf_cursor_to_line(int32_t line, int32_t col) {
  xf_scr.cursor_cell_line = 0;
  xf_scr.cursor_on_cmd = false;
  xf_scr.cursor_line = line;
  xf_scr.cursor_col = col;
  xf_scr.cursor_view = std::max(0, xf_ring.view_no);
}

void xf_cursor_to_cell(int32_t line, int32_t col) {
  xf_scr.cursor_on_cmd = false;
  xf_scr.cursor_cell_line = std::max(1, line);
  xf_scr.cursor_cell_col = std::max(1, col);
  xf_scr.cursor_view = std::max(0, xf_ring.view_no);
}

void xf_compose() {
  if (xf_run.batch) return;
  composer c;
  int geo[4] = {0, 0, 0, 0};
  fsqury(0, 0, 4, geo);
  xf_scr.nb_rows = std::min(kMaxRows, geo[2] > 0 ? geo[2] : xf_scr.nb_rows);
  xf_scr.nb_cols = std::min(kMaxCols, geo[3] > 0 ? geo[3] : xf_scr.nb_cols);
  asclear();
  xf_scr.cursor_placed = false;
  // Under the smallest screen nothing is shown until the window grows again.
  if (xf_scr.nb_rows < 6 || xf_scr.nb_cols < 38) return;
  if (xf_scr.legend_rows > 0) {
    int32_t row = xf_scr.nb_rows - xf_scr.legend_rows + 1;
    xf_scr.legend_field = c.field(row, 1, 1, xf_scr.nb_cols * xf_scr.legend_rows, FT_PROTECTED, 1,
                                  xf_scr.colour[XA_PFLINE], 0, 0);
    std::string pending = xf_ring.file ? xf_prefix_legend(*xf_ring.file) : std::string();
    composer::put(xf_scr.legend_field, pending.empty() ? xf_scr.legend_text : pending);
  }
  int32_t saved_view = xf_ring.view_no;
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_ring.views.size()); ++vn) {
    xf_set_view(vn);
    file_messages(*xf_ring.views[static_cast<std::size_t>(vn)]);
  }
  xf_scr.views.resize(xf_ring.views.size());
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_ring.views.size()); ++vn) {
    xf_set_view(vn);
    xf_view& v = *xf_ring.views[vn];
    xf_view_fields& vf = xf_scr.views[vn];
    vf = xf_view_fields{};
    vf.composed = true;
    xf_file* f = xf_ring.file;
    v.messages.clear();  // the one message standing in message_text is what is shown
    compose_id_row(c, v, vf, f);
    compose_cmdline(c, v, vf, vn);
    int32_t base = v.cmdline_place[1] == 1 ? 2 + vf.cmd_rows : 2;
    // The ring bar: the short names of the files, in file order.
    vf.ring_field = c.field(v.top + base - 1, v.left, 1, v.width, FT_PROTECTED, 1, xf_scr.colour[XA_MSGLINE], 0,
                            FA_NO_CLICK_MOVE);
    vf.ring_row = v.top + base - 1;
    std::string bar;
    for (const auto& fp : xf_ring.files) {
      std::string n = short_name(fp->name);
      if (static_cast<int32_t>(bar.size() + n.size()) > v.width) break;
      if (!bar.empty()) bar += ' ';
      int32_t first = v.left + static_cast<int32_t>(bar.size());
      vf.ring_spans.emplace_back(first, first + std::max<int32_t>(1, static_cast<int32_t>(n.size())) - 1);
      bar += n;
    }
    composer::put(vf.ring_field, bar);
    if (v.message_state > 0 && !v.message_text.empty()) {
      vf.message_field = c.field(v.top + base, v.left, 1, v.width, FT_PROTECTED, 1, xf_scr.colour[XA_MSGLINE],
                                 0, 0);
      if (v.message_state == 1) fsalrm();
      std::string m = v.message_text.substr(0, static_cast<std::size_t>(v.width));
      composer::put(vf.message_field, m);
    }
    for (; xf_scr.beeps > 0; --xf_scr.beeps) fsalrm();
    if (f) {
      xf_view_file& s = v.per_file[xf_ring.file_no];
      vf.prefix_width = s.prefix ? xf_prefix_width(s.current_line) : 0;
      s.prefix_width = vf.prefix_width;
      vf.data_width = vf.prefix_width ? v.width - vf.prefix_width - 1 : v.width;
      vf.text_col = v.left + (vf.prefix_width ? vf.prefix_width + 1 : 0);
      vf.first_col = std::max(0, s.verify_first - 1);
      view_composer vc{c, v, vf, *f, s};
      xf_file_rows(v, vc.first_row, vc.last_row);
      if (s.current_line >= f->size) s.current_line = std::max(xf_ring.lowest_line, f->size - 1);
      if (v.curline > vc.last_row) v.curline = vc.last_row;
      if (v.curline < vc.first_row) v.curline = vc.first_row;
      vc.upward();
      vc.downward();
    }
    v.message_state = 0;
    // A command's wish for the cursor (a new line, an undo) outranks where the cursor stood.
    if (f && f->cursor.priority > 0 && f->cursor.screen_col == 0) {
      xf_cursor_to_line(f->cursor.line, std::max(0, f->cursor.column - 1));
      xf_scr.cursor_view = vn;
      f->cursor.priority = 0;
    }
    place_cursor(v, vf, vn);
  }
  if (saved_view >= 0) xf_set_view(saved_view);
}
