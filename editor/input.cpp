// The input cycle: xfread, the take-in of typed fields (xfack), the key step and the main loop xfx.
#include "editor/input.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "editor/autosave.h"
#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/compose.h"
#include "editor/emergency.h"
#include "editor/handlers.h"
#include "editor/journal.h"
#include "editor/keys.h"
#include "editor/messages.h"
#include "editor/mouse.h"
#include "editor/paste.h"
#include "editor/power.h"
#include "editor/prefix.h"
#include "editor/ring.h"
#include "editor/screens.h"
#include "editor/startup.h"
#include "editor/state.h"
#include "screen/as_read.h"
#include "screen/fs.h"

xf_input_state xf_in;

namespace {

// Where the cursor stood when the input was taken.
xf_place note;

std::vector<bool> modified_ids() {
  std::vector<int> ids(8192), sizes(8192), used(8192);
  int n = asqmod(static_cast<int>(ids.size()), ids.data(), sizes.data(), used.data());
  std::vector<bool> mod;
  for (int i = 0; i < n; ++i) {
    if (ids[static_cast<std::size_t>(i)] >= static_cast<int>(mod.size()))
      mod.resize(static_cast<std::size_t>(ids[static_cast<std::size_t>(i)]) + 1, false);
    mod[static_cast<std::size_t>(ids[static_cast<std::size_t>(i)])] = true;
  }
  return mod;
}

bool is_mod(const std::vector<bool>& mod, int32_t id) {
  return id > 0 && id < static_cast<int32_t>(mod.size()) && mod[static_cast<std::size_t>(id)];
}

// The text a field makes of a line: the line's own bytes, the field's cells over columns first.. , nulls before
// the end as blanks, trailing blanks gone unless KEEPBlanks.
std::string field_text(int32_t id, int32_t ncells, int32_t first, std::string_view old, bool keep_blanks) {
  std::vector<uint16_t> cells(static_cast<std::size_t>(ncells), FS_NULL_CELL);
  ascget_short(id, ncells, cells.data());
  std::vector<uint16_t> build(std::max<std::size_t>(old.size(), static_cast<std::size_t>(first + ncells)),
                              FS_NULL_CELL);
  for (std::size_t i = 0; i < old.size(); ++i) build[i] = static_cast<unsigned char>(old[i]);
  for (int32_t i = 0; i < ncells; ++i) build[static_cast<std::size_t>(first + i)] = cells[static_cast<std::size_t>(i)];
  std::size_t end = build.size();
  while (end > 0 && build[end - 1] == FS_NULL_CELL) --end;
  std::string t;
  t.reserve(end);
  for (std::size_t i = 0; i < end; ++i) t += build[i] == FS_NULL_CELL ? ' ' : static_cast<char>(build[i] & 0xff);
  if (!keep_blanks)
    while (!t.empty() && t.back() == ' ') t.pop_back();
  return t;
}

// The typed part of a prefix field: the cells in the field's own colour (asqcol gives 0 for those). The number
// the editor wrote there has a colour of its own, so typing over two digits of 00012 gives just what was typed.
std::string prefix_typed(int id, const xf_view_fields& vf) {
  int width = std::max(vf.prefix_width, 1);
  std::vector<uint16_t> cells(static_cast<std::size_t>(width), FS_NULL_CELL);
  std::vector<int> colours(static_cast<std::size_t>(width), 0);
  ascget_short(id, width, cells.data());
  asqcol(id, width, colours.data());
  std::string t;
  for (int i = 0; i < width; ++i)
    if (colours[static_cast<std::size_t>(i)] == 0 && cells[static_cast<std::size_t>(i)] != FS_NULL_CELL)
      t += static_cast<char>(cells[static_cast<std::size_t>(i)] & 0xff);
  return t;
}

// Takes the typed rows of the current view into its file.
void take_view(const xf_view_fields& vf, const std::vector<bool>& mod) {
  xf_file& f = *xf_ring.file;
  bool tof_typed = false;
  std::string tof_text;
  struct typed_prefix {
    int32_t line, row;
    std::string text;
  };
  std::vector<typed_prefix> prefixes;
  auto take_row = [&](const xf_row& r) {
    if (is_mod(mod, r.prefix_field)) prefixes.push_back({r.line, r.view_row, prefix_typed(r.prefix_field, vf)});
    if (r.shadow || !is_mod(mod, r.data_field)) return;
    if (r.line < 0) {
      tof_typed = true;
      tof_text = field_text(r.data_field, r.rows * vf.data_width, 0, {}, f.keep_blanks);
      return;
    }
    std::string t = field_text(r.data_field, r.rows * vf.data_width, vf.first_col, f.line(r.line), f.keep_blanks);
    xf_do('r', xf_new_text(t), r.line, 1, 1, nullptr, "xfack1:76");
    f.alt_save++;
  };
  for (auto it = vf.upper.rbegin(); it != vf.upper.rend(); ++it) take_row(*it);
  for (const xf_row& r : vf.lower) take_row(r);
  // Prefix fields are read in screen order once the text of every line is in; the prefix run acts on them.
  if (xf_ring.view->per_file[xf_ring.file_no].prefix)
    for (const typed_prefix& p : prefixes) xf_prefix_read(xf_ring.view_no, p.line, p.text, p.row);
  // Rows below the end: the lines between the end and the typed row are made empty.
  for (const auto& [id, target] : vf.below) {
    if (!is_mod(mod, id)) continue;
    std::string t = field_text(id, vf.data_width, vf.first_col, {}, f.keep_blanks);
    f.alt_save++;
    if (target < f.size) {
      xf_do('r', xf_new_text(t), target, 1, 1, nullptr, "xfack3:replace");
      continue;
    }
    while (f.size < target) xf_do('i', xf_new_text(""), f.size - 1, 1, 1, nullptr, "xfack3:83");
    xf_do('i', xf_new_text(t), f.size - 1, 1, 1, nullptr, "xfack3:87");
  }
  // Rows above the top and the TOF row: the typed lines become the first lines, unchanged rows between them
  // blank lines, so that the file's text stays on the rows it stood on.
  int32_t far = -1;
  for (int32_t k = 0; k < static_cast<int32_t>(vf.above.size()); ++k)
    if (is_mod(mod, vf.above[static_cast<std::size_t>(k)])) far = k;
  std::vector<xf_text> lines;
  for (int32_t k = far; k >= 0; --k) {
    int32_t id = vf.above[static_cast<std::size_t>(k)];
    lines.push_back(xf_new_text(is_mod(mod, id) ? field_text(id, vf.data_width, vf.first_col, {}, f.keep_blanks)
                                                : std::string()));
    if (is_mod(mod, id)) f.alt_save++;
  }
  if (tof_typed) {
    lines.push_back(xf_new_text(tof_text));
    f.alt_save++;
  } else if (far >= 0 && xf_ring.lowest_line < 0) {
    lines.push_back(xf_new_text(""));
  }
  int32_t shift = static_cast<int32_t>(lines.size());
  if (shift == 0) return;
  xf_do('I', nullptr, -1, shift, 1, &lines, "xfack4:79");
  xf_shift_positions(-1, shift);
  xf_current_line() += shift;
  if (note.view == xf_ring.view_no) {
    if (note.kind == XP_LINE && note.line >= 0) note.line += shift;
    if (note.kind == XP_ABOVE && note.index <= far) {
      note.kind = XP_LINE;
      note.line = far - note.index;
    }
    if (note.kind == XP_TOF) {
      note.kind = XP_LINE;
      note.line = far + 1;
    }
  }
}

void apply_note() {
  switch (note.kind) {
    case XP_CMD: xf_cursor_to_cmd(note.column); break;
    case XP_LINE:
    case XP_BELOW: xf_cursor_to_line(note.line, note.column); break;
    case XP_TOF: xf_cursor_to_line(-1, note.column); break;
    case XP_PREFIX:
    case XP_ABOVE: xf_cursor_to_cell(note.screen_line, note.screen_col); break;
    default: break;
  }
  if (note.kind != XP_NONE) xf_scr.cursor_view = note.view;
}

xf_file* xf_file_of_view(int32_t vn) {
  int32_t i = xf_ring.views[static_cast<std::size_t>(vn)]->current_file;
  return i >= 0 && i < xf_file_count() ? xf_ring.files[static_cast<std::size_t>(i)].get() : nullptr;
}

// The line under the cursor and its 0-based column, when it stands on a line.
bool cursor_line(int32_t& line, int32_t& column) {
  if (note.kind != XP_LINE && note.kind != XP_BELOW) return false;
  if (!xf_ring.file || note.line < 0 || note.line >= xf_ring.file->size) return false;
  line = note.line;
  column = note.column;
  return true;
}

// A character that found no room in its field goes into the line (or the command line) at the cursor.
void insert_char(int ch) {
  if (note.kind == XP_CMD) {
    xfack(0);
    std::string& t = xf_run.command_line;
    std::size_t at = static_cast<std::size_t>(std::max(0, note.column - 1));
    if (t.size() < at) t.resize(at, ' ');
    const xf_view& v = *xf_ring.views[static_cast<std::size_t>(note.view)];
    if (static_cast<int32_t>(t.size()) < 2 * v.width - 13) t.insert(at, 1, static_cast<char>(ch));
    xf_cursor_to_cmd(note.column + 1);
    return;
  }
  xfack(0);
  int32_t line = 0, col = 0;
  if (!cursor_line(line, col)) {
    fsalrm();
    return;
  }
  std::string t(xf_ring.file->line(line));
  if (static_cast<int32_t>(t.size()) < col) t.resize(static_cast<std::size_t>(col), ' ');
  t.insert(static_cast<std::size_t>(col), 1, static_cast<char>(ch));
  xf_do('r', xf_new_text(t), line, 1, 1, nullptr, "xf_ins");
  xf_ring.file->alt_save++;
  xf_cursor_to_line(line, col + 1);
  if (xf_ring.file->power[0]) {  // POWerinput: the paragraph flows on around the cursor
    note.column = col + 1;
    xf_pow(1);
  }
}

// Delete and erase on a line that is cut on the screen, where the library cannot see the whole line.
void edit_cut_line(bool erase) {
  xfack(0);
  int32_t line = 0, col = 0;
  if (!cursor_line(line, col)) return;
  std::string t(xf_ring.file->line(line));
  if (col >= static_cast<int32_t>(t.size())) return;
  if (erase)
    t.resize(static_cast<std::size_t>(col));
  else
    t.erase(static_cast<std::size_t>(col), 1);
  xf_do('r', t.empty() ? xf_new_text(" ", 1) : xf_new_text(t), line, 1, 1, nullptr, erase ? "xf_erase_end" : "xfdel_cc:28");
  xf_ring.file->alt_save++;
  xf_cursor_to_line(line, col);
}

// The terminal went away or the window closed: an orderly end when nothing is changed, else the emergency
// road, which keeps every changed file beside itself.
[[noreturn]] void quit_read() {
  xfack(0);  // what was typed and not yet taken in goes into the lines first
  for (const auto& f : xf_ring.files)
    if (f->alt_save != 0) xf_internal_error(SIGHUP);
  xf_exit();
  std::_Exit(0);
}

void relayout() {
  int geo[4] = {0, 0, 0, 0};
  fsqury(0, 0, 4, geo);
  int rows = std::min(3000, geo[2]), cols = std::min(1000, geo[3]);
  xf_run.too_small = rows < 6 || cols < 38 ? 1 : 0;
  if (xf_run.too_small || xf_ring.views.empty()) return;
  xf_scr.nb_rows = rows;
  xf_scr.nb_cols = cols;
  xf_relayout();
}

}  // namespace

void xf_input_reset() {
  xf_in = xf_input_state{};
  note = xf_place{};
  xf_mouse_reset();
  xf_paste_reset();
}

const xf_place& xf_cursor_place() { return note; }
void xf_set_cursor_place(const xf_place& p) { note = p; }

void xf_store_changes() {
  xfack(1);
  apply_note();
}

xf_place xf_place_at(int id, int cell, int screen_line, int screen_col) {
  xf_place p;
  p.screen_line = screen_line;
  p.screen_col = screen_col;
  if (id <= 0) return p;
  auto at = [&](xf_place_kind kind, int32_t vn, int32_t line, int32_t column, int32_t index = 0) {
    p.kind = kind;
    p.view = vn;
    p.line = line;
    p.column = column;
    p.index = index;
    return p;
  };
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_scr.views.size()); ++vn) {
    const xf_view_fields& vf = xf_scr.views[static_cast<std::size_t>(vn)];
    int32_t col = vf.first_col + cell - 1;
    if (id == vf.cmd_field) return at(XP_CMD, vn, 0, cell);
    for (const auto* table : {&vf.upper, &vf.lower})
      for (const xf_row& r : *table) {
        if (r.data_field == id) return at(r.line < 0 ? XP_TOF : XP_LINE, vn, r.line, col);
        if (r.prefix_field == id) return at(XP_PREFIX, vn, r.line, cell - 1);
      }
    for (const auto& [fid, line] : vf.below)
      if (fid == id) return at(XP_BELOW, vn, line, col);
    for (int32_t k = 0; k < static_cast<int32_t>(vf.above.size()); ++k)
      if (vf.above[static_cast<std::size_t>(k)] == id) return at(XP_ABOVE, vn, 0, col, k);
  }
  return p;
}

void xf_note_cursor() {
  note = xf_place{};
  xf_ring.read_view = -1;
  // Off a text cell, the file's cursor holds a screen place, which no line command takes for a line.
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_ring.views.size()); ++vn)
    if (xf_file* f = xf_file_of_view(vn)) f->cursor.screen_col = 1;
  int id = 0, cell = 0, sline = 0, scol = 0, none = 0, rline = 0;
  asqcur(0, none, sline, scol);
  asqcur(2, id, rline, cell);
  note = xf_place_at(id, cell, sline, scol);
  if (note.kind == XP_LINE && note.line >= 0) {  // the commands that work at the cursor start from here
    xf_ring.read_view = note.view;
    xf_ring.read_line = note.line;
    xf_ring.read_column = note.column;
    if (xf_file* f = xf_file_of_view(note.view)) {
      f->cursor.view = note.view;
      f->cursor.screen_col = 0;
      f->cursor.line = note.line;
      f->cursor.column = note.column + 1;
    }
  }
}

void xfack(int step) {
  if (xf_scr.views.empty() || !xf_scr.views[0].composed) return;
  std::vector<bool> mod = modified_ids();
  int32_t saved = xf_ring.view_no;
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_scr.views.size()) && vn < xf_file_count() + 1000; ++vn) {
    if (vn >= static_cast<int32_t>(xf_ring.views.size())) break;
    xf_set_view(vn);
    const xf_view_fields& vf = xf_scr.views[static_cast<std::size_t>(vn)];
    if (xf_ring.file) take_view(vf, mod);
    if (vf.cmd_field >= 0 && is_mod(mod, vf.cmd_field)) {
      const xf_view& v = *xf_ring.views[static_cast<std::size_t>(vn)];
      std::string t(static_cast<std::size_t>(std::max(1, v.cmd_width)), ' ');
      ascget(vf.cmd_field, static_cast<int>(t.size()), t.data());
      while (!t.empty() && (t.back() == ' ' || t.back() == 0)) t.pop_back();
      for (char& ch : t)
        if (ch == 0) ch = ' ';
      xf_run.command_line = t;
    }
  }
  if (saved >= 0) xf_set_view(saved);
  if (step == 1)
    for (auto& f : xf_ring.files) f->step_start = 1;
}

void xfread(std::string_view work_dir) {
  if (!xf_in.shown) {
    asfview(1);
    xf_in.shown = true;
  }
  while (true) {
    int kind = ASR_QUIT, value = 0, nmod = 0;
    asfpaste(1);  // a paste comes whole, as ASR_PASTE, to this read only; other readers have it typed
    asread(kind, value, nmod);
    asfpaste(0);
    xf_in.ev = xf_event{kind, value, nmod, 0};
    switch (kind) {
      case ASR_QUIT: quit_read();
      case ASR_FOCUS_IN: case ASR_FOCUS_OUT: case ASR_MOVED: case ASR_TIMEOUT: case ASR_PFK_UP: case ASR_KEY_UP:
      case ASR_L_KEY_UP: case ASR_BUTTON_UP:
        if (kind == ASR_BUTTON_UP) xf_mouse_release();
        // Coming back to the window, files that something else changed on disk are read again.
        if (kind == ASR_FOCUS_IN && xf_reload_sweep()) xf_compose();
        // The library hands changed fields over once: what this read reports is taken in now, and the screen
        // composed again, since a typed empty row may have made lines.
        if (nmod > 0) {
          xf_note_cursor();
          xfack(1);
          apply_note();
          xf_compose();
        }
        continue;
      default: break;
    }
    xf_new_step();
    xf_note_cursor();
    switch (kind) {
      case ASR_RESIZE:
        xfack(1);
        apply_note();
        relayout();
        xf_compose();
        continue;
      case ASR_FULL:
        insert_char(value);
        xf_compose();
        continue;
      case ASR_FIELD_END:
        xfack(1);
        if (note.kind == XP_LINE && note.line >= 0 && xf_ring.file && xf_ring.file->power[0]) {
          note.column += 1;  // behind the character typed on the last cell
          int32_t before = note.line;
          xf_pow(0);
          // A margin wider than the field breaks nothing: the line gets a row more, as without POWerinput.
          if (note.line == before) xf_ring.view->open_lines.push_back(note.line);
        } else if (note.kind == XP_LINE && note.line >= 0) {
          xf_ring.view->open_lines.push_back(note.line);
          xf_cursor_to_line(note.line, note.column + 1);
        } else {
          apply_note();
        }
        xf_compose();
        continue;
      case ASR_DEL:
      case ASR_ERASE:
        edit_cut_line(kind == ASR_ERASE);
        xf_compose();
        continue;
      case ASR_BUTTON:
      case ASR_DRAG:
      case ASR_WHEEL_UP:
      case ASR_WHEEL_DOWN:
        // Served here: no mouse event runs the Enter definition.
        if (xf_mouse_event(kind, value, work_dir)) {
          xf_in.ev.no_key = 1;
          return;
        }
        continue;
      case ASR_PASTE:
        xf_store_changes();
        xf_paste_event(asqpaste());
        xf_compose();
        continue;
      default:
        xfack(1);
        xf_prefix_run();
        apply_note();
        return;
    }
  }
}

void xf_key_step(std::string_view work_dir) {
  const xf_event ev = xf_in.ev;
  if (ev.no_key) return;
  xf_key_def* def = xf_key_for(ev.kind, ev.value);
  if (!def) return;
  bool plain_enter = ev.kind == ASR_ENTER && ev.value == 0;
  std::string typed = xf_run.command_line;
  bool keep = false;
  std::vector<std::string> cmds = xf_key_commands(def, plain_enter, typed, keep);
  std::size_t b = typed.find_first_not_of(' ');
  bool typed_blank = b == std::string::npos;
  if (cmds.empty() && !plain_enter) return;
  if (!keep) {
    xf_run.command_line.clear();
    xf_scr.cmd_col = 1;
  }
  bool on_cmd = note.kind == XP_CMD;
  for (const std::string& c : cmds) {
    if (!typed_blank && (c == typed.substr(b) || "&" + c == typed.substr(b))) {
      xf_history_add(c);
      // "?" then brings back this command first.
      xf_cmd.history_pos = static_cast<int32_t>(xf_cmd.history.size());
    }
    xfcom1(c, work_dir);
  }
  if (plain_enter && cmds.empty()) {
    xfautoi();
  } else if (on_cmd || !cmds.empty()) {
    if (xf_scr.cursor_on_cmd || on_cmd) xf_cursor_to_cmd(keep ? static_cast<int32_t>(typed.size()) + 1 : 1);
  }
}

std::string xf_indent(int32_t line) {
  const xf_file& f = *xf_ring.file;
  int32_t l = std::min(line, f.size - 1);
  while (l >= 0 && f.line(l).find_first_not_of(" \t") == std::string_view::npos) --l;
  if (l < 0) return {};
  std::string_view model = f.line(l);
  if (model.size() == 1) return model[0] == '\t' ? "\t" : "";
  std::size_t k = model.find_first_not_of(" \t");
  std::string indent(model.substr(0, std::min<std::size_t>(k, 120)));
  if (k < model.size() && model[k] == '{') {  // after a line that begins with a brace, start under its word
    std::size_t w = model.find_first_not_of(" \t", k + 1);
    if (w != std::string_view::npos && w < 120) indent = std::string(model.substr(0, k)) + std::string(w - k, ' ');
  }
  return indent;
}

void xfautoi() {
  if (!xf_ring.file) return;
  if (xf_in.autoindent && note.kind == XP_LINE && note.line >= 0 && note.line < xf_ring.file->size) {
    xf_file& f = *xf_ring.file;
    std::string_view t = f.line(note.line);
    if (note.column >= static_cast<int32_t>(t.size()) || t == " ") {
      std::string indent = xf_indent(note.line);
      xf_do('i', xf_new_text(indent.empty() ? std::string() : indent), note.line, 1, 1, nullptr, "xfautoi");
      xf_shift_positions(note.line, 1);
      f.alt_save++;
      xf_ring.view->open_lines.push_back(note.line + 1);
      xf_cursor_to_line(note.line + 1, static_cast<int32_t>(indent.size()));
      // The new line keeps room on the screen: past the last row the view moves down one line.
      const xf_view_fields& vf = xf_scr.views[static_cast<std::size_t>(xf_ring.view_no)];
      if (vf.below.empty() && !vf.lower.empty() && vf.lower.back().line <= note.line) xf_current_line() += 1;
      return;
    }
  }
  if (xf_set.mode_enter_stay && xf_in.autoindent_stay) return;
  if (note.kind == XP_CMD) return;
  xf_cursor_to_cmd(static_cast<int32_t>(xf_run.command_line.size()) + 1);
}

// The cursor keys' commands act on where the cursor stood at the last read.
int xfcm_c_startline(const xf_cmd_call&) {
  if (xf_run.batch) return 1;
  if (note.kind == XP_CMD) xf_cursor_to_cmd(1);
  if (note.kind == XP_LINE && note.line >= 0 && xf_in_scope(note.line)) xf_cursor_to_line(note.line, 0);
  return 1;
}

int xfcm_c_endline(const xf_cmd_call&) {
  if (xf_run.batch) return 1;
  if (note.kind == XP_CMD) {
    std::size_t e = xf_run.command_line.find_last_not_of(' ');
    xf_cursor_to_cmd(e == std::string::npos ? 1 : static_cast<int32_t>(e) + 2);
  } else if (note.kind == XP_LINE && xf_ring.file && note.line >= 0 && note.line < xf_ring.file->size &&
             xf_in_scope(note.line)) {
    xf_cursor_to_line(note.line, xf_ring.file->len[note.line]);
  }
  return 1;
}

int xfcm_c_endcurl(const xf_cmd_call&) {
  if (xf_run.batch || !xf_ring.file) return 1;
  int32_t line = xf_current_line();
  xf_cursor_to_line(line, line < 0 ? 0 : xf_ring.file->len[line]);
  return 1;
}

int xfcm_c_ext(const xf_cmd_call&) {
  if (xf_run.batch) return 1;
  if (note.kind != XP_LINE || !xf_ring.file || note.line < 0 || note.line >= xf_ring.file->size) {
    xf_msg_text("..... Invalid cursor position", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  std::vector<int32_t>& ol = xf_ring.view->open_lines;
  if (ol.size() < 19 && std::find(ol.begin(), ol.end(), note.line) == ol.end()) ol.push_back(note.line);
  return 1;
}

// AUTOIndent ON|OFF [STAY|NOSTAY]; with no operand it reports.
int xfcm_autoindent(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  if (w.size() == 1) {
    xf_msg_text(xf_in.autoindent ? "..... Is ON" : "..... Is OFF", XF_MSG_INFO);
    return 1;
  }
  std::string on = xf_lower(w[1]);
  std::string stay = w.size() > 2 ? xf_lower(w[2]) : "stay";
  if ((on != "on" && on != "off") || (stay != "stay" && stay != "nostay") || w.size() > 3) {
    xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  xf_in.autoindent = on == "on";
  xf_in.autoindent_stay = stay == "stay";
  return 1;
}

void xf_console(bool on) {
  if (xf_run.batch) return;
  if (on) {
    fssuspend(1);
    return;
  }
  std::fputs("Press the Return key to continue", stdout);
  std::fflush(stdout);
  int ch;
  while ((ch = std::getchar()) != '\n' && ch != EOF) {
  }
  fssuspend(0);
}

void xfx(std::string_view work_dir) {
  while (true) {
    xf_emergency_poll();
    if (xfcom(work_dir)) continue;
    if (xf_run.too_small) {
      relayout();
      if (xf_run.too_small) {
        // Under the smallest screen nothing is drawn; the read waits for the window to grow.
        asclear();
        int kind = 0, value = 0, nmod = 0;
        asread(kind, value, nmod);
        if (kind == ASR_QUIT) quit_read();
        continue;
      }
    }
    xf_compose();
    xfread(work_dir);
    xf_key_step(work_dir);
    xf_autosave_round();
  }
}
