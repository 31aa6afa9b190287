// The mouse in the editor: presses, drags and the wheel on the parts of a view, and MOUSEMode and WHeel.
#include "editor/mouse.h"

#include <algorithm>
#include <string>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/compose.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/select_make.h"
#include "editor/state.h"
#include "screen/as_read.h"
#include "screen/fs.h"

xf_mouse_state xf_mouse;

namespace {

constexpr uint64_t kDoubleClickUs = 390000;

// The mode words: the word, the letters that must be typed, the mode and its report.
struct mode_row {
  const char* word;
  std::size_t least;
  int32_t mode;
};
const mode_row kModeWords[] = {
    {"motif", 1, XM_MOTIF},       {"openlook", 1, XM_OPENLOOK}, {"openlookw", 9, XM_OPENLOOK_WHEEL},
    {"fullmotif", 1, XM_WINDOWS}, {"windows", 1, XM_WINDOWS},
};
const char* const kModeReports[] = {"..... Is MOTIF", "..... Is OPENLOOK", "..... Is OPENLOOK WHEEL",
                                    "..... Is WINDOWS"};

// Commands of the prefix area by button (1, 2) and modifier: Shift, Ctrl, Meta, none.
const char* const kPrefixCommands[2][4] = {
    {"command pgup", "command top", "command forward", "command backward"},
    {"command pgdown", "command bottom", "command backward", "command forward"},
};

struct modifiers {
  bool shift = false, ctrl = false, meta = false;
  bool none() const { return !shift && !ctrl && !meta; }
};

// The view whose rows and columns hold a screen cell, or -1.
int32_t view_at(int32_t line, int32_t col) {
  for (int32_t vn = 0; vn < static_cast<int32_t>(xf_ring.views.size()); ++vn) {
    const xf_view& v = *xf_ring.views[static_cast<std::size_t>(vn)];
    if (line >= v.top && line < v.top + v.height && col >= v.left && col < v.left + v.width) return vn;
  }
  return -1;
}

// The row of the file area that covers a screen row, or null.
const xf_row* row_at(const xf_view& v, const xf_view_fields& vf, int32_t line) {
  for (const auto* table : {&vf.upper, &vf.lower})
    for (const xf_row& r : *table) {
      int32_t first = v.top + r.view_row - 1;
      if (line >= first && line < first + r.rows) return &r;
    }
  return nullptr;
}

// Stores what was typed, runs the commands, and ends the read.
bool run(std::initializer_list<std::string> commands, std::string_view work_dir) {
  xf_store_changes();
  for (const std::string& c : commands) xfcom1(c, work_dir);
  return true;
}

// The cursor goes to the cell; what was typed stays in the fields for the read that goes on.
bool cursor_to(int32_t line, int32_t col) {
  asfkeep();
  asfcur(0, line, col);
  return false;
}

bool wheel(bool up, const modifiers& m, std::string_view work_dir) {
  if (m.ctrl) return run({m.shift ? (up ? "command top" : "command bottom")
                                  : (up ? "command backward" : "command forward")},
                         work_dir);
  int32_t n = xf_mouse.wheel[m.shift ? 1 : 0];
  return run({std::string(up ? "command up " : "command down ") + std::to_string(n)}, work_dir);
}

// Button 3 with Shift: the line of the row becomes the current line.
bool make_current(const xf_view& v, const xf_view_fields& vf, int32_t line) {
  const xf_row* r = row_at(v, vf, line);
  if (!r || r->shadow || r->line < 0 || r->line >= xf_ring.file->size ||
      (v.scope == 0 && !xf_in_scope(r->line))) {
    xf_store_changes();
    xf_msg_text("..... Invalid field", XF_MSG_ERROR);
    rc = 1;
    return true;
  }
  int32_t target = r->line;
  int32_t before = xf_current_line();
  xf_store_changes();
  // A take-in of rows typed above the top moves every line down; the row's line moves with it.
  target += xf_current_line() - before;
  xf_current_line() = target;
  return true;
}

// The screen again, the fields as typed taken in first; the read goes on.
bool redraw() {
  xf_compose();
  return false;
}

// The selection changed at a cell of a line: the cursor goes there and the screen shows it; the read goes on.
bool show_at(const xf_place& at) {
  xf_place p = at;
  p.kind = XP_LINE;
  xf_set_cursor_place(p);
  xf_cursor_to_line(at.line, at.column);
  return redraw();
}

// Button 1 and 2 on a text row (a file line, or an empty row below the end, which stands for the last line).
bool text_press(const xf_place& at, int button, bool press, const modifiers& m) {
  const int32_t mode = xf_mouse_mode();
  const bool openlook = mode == XM_OPENLOOK || mode == XM_OPENLOOK_WHEEL;
  xf_place cell = at;
  if (cell.kind == XP_BELOW) {
    cell.kind = XP_LINE;
    cell.line = xf_ring.file->size - 1;
  }
  cell.line = std::clamp(cell.line, 0, xf_ring.file->size - 1);
  const int32_t l1 = cell.line + 1, c1 = std::max(0, cell.column) + 1;
  if (press && button == 1) xf_mouse.rect_press = m.meta || m.ctrl;
  // Meta (or Ctrl, which terminals pass more often) makes a block; a drag goes on as its press began.
  const bool rect = m.meta || m.ctrl || (!press && xf_mouse.rect_press);
  const int32_t unit = std::clamp(xf_mouse.count, 1, 3);
  // These extending presses begin a selection that has none yet by whole lines.
  const bool lines_first = press && m.shift &&
                           ((button == 2 && mode == XM_OPENLOOK) || (button == 1 && mode == XM_OPENLOOK_WHEEL));
  auto extend = [&](int32_t by) {
    xf_store_changes();
    if (!xf_sel_in_view()) {
      if (lines_first) {
        xf_sel_start(l1, c1, rect ? XS_RECT_PENDING : XS_LINEAR_PENDING, 3);
        return show_at(cell);
      }
      // No selection yet: it grows from where the button came down, or from the cursor.
      if (xf_mouse.anchor_line >= 0) {
        xf_sel_start(xf_mouse.anchor_line + 1, xf_mouse.anchor_col + 1, rect ? XS_RECT_PENDING : XS_LINEAR_PENDING, by);
      } else {
        const xf_place& c = xf_cursor_place();
        if (c.kind != XP_LINE || c.line < 0 || c.line >= xf_ring.file->size) {
          xf_sel_start(l1, c1, rect ? XS_RECT_PENDING : XS_LINEAR_PENDING, by);
          return show_at(cell);
        }
        xf_sel_start(c.line + 1, c.column + 1, rect ? XS_RECT_PENDING : XS_LINEAR_PENDING, by);
      }
    }
    xf_sel_extend(l1, c1, by, rect);
    return show_at(cell);
  };
  if (button == 1) {
    if (press && !m.shift) {
      xf_store_changes();
      xf_mouse.anchor_line = cell.line;
      xf_mouse.anchor_col = cell.column;
      if (unit == 1) {
        // A single press anchors here; the selection is made when the mouse moves with the button down.
        xf_sel_end();
        return show_at(cell);
      }
      xf_sel_start(l1, c1, rect ? XS_RECT_PENDING : XS_LINEAR_PENDING, unit);
      return show_at(cell);
    }
    if (!press && openlook && !m.shift) return false;
    if (m.shift && ((mode == XM_OPENLOOK && press) || (mode == XM_OPENLOOK_WHEEL && m.ctrl))) {
      xf_mouse_release();
      return redraw();
    }
    return extend(press ? 1 : unit);
  }
  if (button != 2 || !press) return false;
  if (openlook || !m.none()) return extend(1);
  // Button 2 pastes the selection's text at the cell, as a block for a block.
  if (!xf_sel_active()) return false;
  xf_store_changes();
  if (!xf_ring.file->read_write) {
    xf_msg(118, XF_MSG_ERROR);
    return true;
  }
  xf_shelf_state saved = xf_sel.shelf;
  if (xf_sel_copy(false)) xf_shelf_paste(cell.line, cell.column, !asqinsert());
  xf_sel.shelf = saved;
  return true;
}

}  // namespace

void xf_mouse_reset() { xf_mouse = xf_mouse_state{}; }

int32_t xf_mouse_mode() { return xf_mouse.mode >= 0 ? xf_mouse.mode : xf_run.batch ? XM_MOTIF : XM_WINDOWS; }

int32_t xf_click_count(int32_t line, int32_t col, uint64_t us) {
  bool again = xf_mouse.count > 0 && line == xf_mouse.last_line && col == xf_mouse.last_col &&
               us >= xf_mouse.last_us && us - xf_mouse.last_us < kDoubleClickUs;
  xf_mouse.count = again && xf_mouse.count < 3 ? xf_mouse.count + 1 : 1;
  xf_mouse.last_us = us;
  xf_mouse.last_line = line;
  xf_mouse.last_col = col;
  return xf_mouse.count;
}

bool xf_mouse_event(int kind, int button, std::string_view work_dir) {
  int none = 0, line = 0, col = 0;
  asqmou(0, none, line, col);
  int32_t vn = view_at(line, col);
  if (vn < 0 || vn >= static_cast<int32_t>(xf_scr.views.size())) return false;
  xf_set_view(vn);
  if (!xf_ring.file) return false;
  const modifiers m{asqshift() != 0, asqctrl() != 0, asqalt() != 0};
  if (kind == ASR_WHEEL_UP || kind == ASR_WHEEL_DOWN) return wheel(kind == ASR_WHEEL_UP, m, work_dir);
  const bool press = kind == ASR_BUTTON;
  if (press) {
    uint32_t sec = 0, usec = 0;
    asqkeytime(sec, usec);
    xf_click_count(line, col, uint64_t{sec} * 1'000'000 + usec);
  }
  const xf_view& v = *xf_ring.views[static_cast<std::size_t>(vn)];
  const xf_view_fields& vf = xf_scr.views[static_cast<std::size_t>(vn)];
  int id = 0, rline = 0, cell = 0;
  asqmou(2, id, rline, cell);
  const xf_place at = xf_place_at(id, cell, line, col);
  const int32_t view_row = line - v.top + 1;
  const bool prefix_press = press && button == 1 && m.none() && at.kind == XP_PREFIX;
  if (press) {
    xf_mouse.prefix_drag = prefix_press;
    xf_mouse.anchor_line = prefix_press ? at.line : -1;
  }

  if (button == 3) {
    if (press && m.ctrl) {
      xf_sel_end();
      return redraw();
    }
    if (!press) return false;
    if (m.shift) return make_current(v, vf, line);
    return false;  // the page's popup: the editor sets none
  }
  // The first row of the view scrolls by four lines, eight with Shift; Meta turns the direction round.
  if (view_row == 1) {
    if (!press) return false;
    bool down = (button == 2) != m.meta;
    return run({std::string(down ? "command down " : "command up ") + (m.shift ? "8" : "4")}, work_dir);
  }
  // The ring bar: the file under the mouse comes to the front.
  if (line == vf.ring_row && at.kind == XP_NONE) {
    if (!press) return false;
    for (std::size_t i = 0; i < vf.ring_spans.size() && i < static_cast<std::size_t>(xf_file_count()); ++i)
      if (col >= vf.ring_spans[i].first && col <= vf.ring_spans[i].second) {
        xf_store_changes();
        xf_set_file(static_cast<int32_t>(i));
        return true;
      }
    return false;
  }
  if (at.kind == XP_CMD) return button == 1 ? cursor_to(line, col) : false;
  // The prefix columns of the file area: button 1 on a prefix field places the cursor for a prefix command;
  // other presses there page through the file.
  int32_t area_first = 0, area_last = 0;  // the rows of the file area: not the id, ring, message or command rows
  xf_file_rows(v, area_first, area_last);
  const bool in_prefix = vf.prefix_width > 0 && view_row >= std::max(3, area_first) && view_row <= area_last &&
                         col >= v.left && col < v.left + vf.prefix_width && (id <= 0 || id != vf.message_field);
  if (in_prefix || at.kind == XP_PREFIX) {
    if (prefix_press) return cursor_to(line, col);
    if (!press && button == 1 && xf_mouse.prefix_drag && at.kind == XP_PREFIX && xf_mouse.anchor_line >= 0 &&
        at.line >= 0 && at.line < xf_ring.file->size) {
      // A drag down the prefix area takes whole lines, from the line of the press to this one.
      xf_store_changes();
      if (!xf_sel_in_view()) xf_sel_start(xf_mouse.anchor_line + 1, 1, XS_LINEAR_PENDING, 3);
      xf_sel_extend(at.line + 1, 1, 3, false);
      return redraw();
    }
    if (!press) return false;
    if (button != 1 && button != 2) return false;
    int k = m.shift ? 0 : m.ctrl ? 1 : m.meta ? 2 : 3;
    return run({kPrefixCommands[button - 1][k]}, work_dir);
  }
  const bool text_row = at.kind == XP_LINE || at.kind == XP_BELOW || at.kind == XP_ABOVE || at.kind == XP_TOF;
  if (!text_row) return false;
  if (at.kind == XP_ABOVE || at.kind == XP_TOF || xf_ring.file->size == 0 ||
      (at.kind == XP_BELOW && press && button == 1 && m.none() && xf_mouse.count == 1))
    return button == 1 ? cursor_to(line, col) : false;
  return text_press(at, button, press, m);
}

void xf_mouse_release() {
  if (xf_sel_active() && (xf_sel.sel.kind == XS_LINEAR_PENDING || xf_sel.sel.kind == XS_RECT_PENDING))
    xf_sel.sel.kind -= 1;
}

// MOUSEMode motif|openlook|openlookw|fullmotif|windows; with no operand it reports.
int xfcm_mousemode(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  if (w.size() == 1) {
    xf_msg_text(kModeReports[xf_mouse_mode()], XF_MSG_INFO);
    return 1;
  }
  if (w.size() == 2) {
    std::string word = xf_lower(w[1]);
    for (const mode_row& r : kModeWords)
      if (word.size() >= r.least && std::string_view(r.word).substr(0, word.size()) == word) {
        xf_mouse.mode = r.mode;
        rc = 0;
        return 1;
      }
  }
  xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
  rc = 1;
  return 1;
}

// WHeel n1 n2: lines one turn of the wheel scrolls, plain and with Shift; with no operand it reports.
int xfcm_wheel(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(c.text);
  if (w.size() == 1) {
    xf_msg_text(" ..... Is " + std::to_string(xf_mouse.wheel[0]) + " " + std::to_string(xf_mouse.wheel[1]),
                XF_MSG_INFO);
    return 1;
  }
  int32_t n[2] = {0, 0};
  bool ok = w.size() == 3;
  for (std::size_t i = 1; ok && i < 3; ++i) {
    ok = !w[i].empty() && w[i].size() <= 6;
    for (char ch : w[i]) ok = ok && ch >= '0' && ch <= '9';
    if (ok) n[i - 1] = std::stoi(w[i]);
  }
  if (!ok) {
    xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  xf_mouse.wheel[0] = n[0];
  xf_mouse.wheel[1] = n[1];
  rc = 0;
  return 1;
}
