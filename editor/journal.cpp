// The undo journal: undo and redo run the inverse of each record through xf_do, handing text buffers back
// and forth between the file and the journal without copying them.
#include "editor/journal.h"

#include <algorithm>
#include <cstdlib>

#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/state.h"
#include "editor/trace.h"

namespace {



void restore_levels(xf_file& f, int32_t first, const std::vector<int32_t>& levels) {
  for (std::size_t k = 0; k < levels.size() && first + static_cast<int32_t>(k) < f.size; ++k)
    f.select[first + k] = levels[k];
}

void limit_all_views(const xf_file& f) {
  int32_t fno = xf_ring.file_no;
  for (auto& v : xf_ring.views) {
    if (fno >= static_cast<int32_t>(v->per_file.size())) continue;
    int32_t& cl = v->per_file[fno].current_line;
    cl = std::max(std::min(cl, f.size - 1), xf_ring.lowest_line);
  }
}

// Runs the inverse of `r` with no journal, leaving in `r` what redo needs.
void run_inverse(xf_file& f, xf_jrecord& r) {
  switch (r.cd) {
    case 'r': {
      xf_text now = std::move(f.text[r.line]);
      xf_do('r', std::move(r.text), r.line, 1, 0, nullptr, "xf_undo:r");
      r.text = std::move(now);
      break;
    }
    case 'i':
      r.text = std::move(f.text[r.line + 1]);
      r.levels.assign(1, f.select[r.line + 1]);
      xf_do('d', nullptr, r.line + 1, 1, 0, nullptr, "xf_undo:i");
      break;
    case 'I':
      r.texts.clear();
      r.texts.reserve(r.count);
      for (int32_t k = 0; k < r.count; ++k) r.texts.push_back(std::move(f.text[r.line + 1 + k]));
      r.levels.assign(f.select.begin() + r.line + 1, f.select.begin() + r.line + 1 + r.count);
      xf_do('D', nullptr, r.line + 1, r.count, 0, nullptr, "xf_undo:I");
      break;
    case 'd':
      xf_do('i', std::move(r.text), r.line - 1, 1, 0, nullptr, "xf_undo:d");
      restore_levels(f, r.line, r.levels);
      break;
    case 'D':
      xf_do('I', nullptr, r.line - 1, r.count, 0, &r.texts, "xf_undo:D");
      r.texts.clear();
      restore_levels(f, r.line, r.levels);
      break;
  }
}

// Plays `r` again through xf_do with mode 2, which journals it on the undo stack.
void run_again(xf_file& f, xf_jrecord& r) {
  switch (r.cd) {
    case 'r':
      xf_do('r', std::move(r.text), r.line, 1, 2, nullptr, "xf_redo:r");
      break;
    case 'i':
      xf_do('i', std::move(r.text), r.line, 1, 2, nullptr, "xf_redo:i");
      restore_levels(f, r.line + 1, r.levels);
      break;
    case 'I':
      xf_do('I', nullptr, r.line, r.count, 2, &r.texts, "xf_redo:I");
      restore_levels(f, r.line + 1, r.levels);
      break;
    case 'd':
      xf_do('d', nullptr, r.line, 1, 2, nullptr, "xf_redo:d");
      break;
    case 'D':
      xf_do('D', nullptr, r.line, r.count, 2, nullptr, "xf_redo:D");
      break;
  }
}



// Undo and redo act in the view under the cursor, when that view shows a file; what waits in its prefix area
// goes, and the selection with it.
void take_cursor_view() {
  int32_t v = xf_ring.read_view;
  if (v >= 0 && v != xf_ring.view_no && v < static_cast<int32_t>(xf_ring.views.size()) &&
      xf_ring.views[v]->current_file >= 0)
    xf_set_view(v);
  if (xf_ring.file) {
    xf_ring.file->prefix_pending_a.clear();
    xf_ring.file->prefix_pending_b.clear();
  }
  xf_sel_end();
}

}  // namespace

bool xf_undo() {
  take_cursor_view();
  if (!xf_ring.file) return false;
  xf_file& f = *xf_ring.file;
  xf_journal& j = f.journal;
  if (j.undo.empty()) return false;
  while (!j.undo.empty()) {
    xf_jrecord r = std::move(j.undo.back());
    j.undo.pop_back();
    run_inverse(f, r);
    if (r.place[0] >= 0) {
      f.cursor.view = r.place[0];
      f.cursor.screen_col = 0;
      f.cursor.line = std::max(r.place[1] - 1, 0);
      f.cursor.column = r.place[2];
      f.cursor.priority = 257;
    }
    bool opened = r.step == 1;
    j.redo.push_back(std::move(r));
    if (opened) break;
  }
  if (!j.undo.empty()) {
    f.alt_save = std::max(f.alt_save - 1, 1);
    f.alt_auto = std::max(f.alt_auto - 1, 0);
  } else {
    f.alt_auto = 0;
    if (f.alt_save > 0) f.alt_save = 0;
  }
  limit_all_views(f);
  return true;
}

bool xf_redo() {
  take_cursor_view();
  if (!xf_ring.file) return false;
  xf_file& f = *xf_ring.file;
  xf_journal& j = f.journal;
  if (j.redo.empty()) return false;
  bool first = true;
  while (!j.redo.empty()) {
    if (j.redo.back().step == 1 && !first) break;
    first = false;
    xf_jrecord r = std::move(j.redo.back());
    j.redo.pop_back();
    f.step_start = r.step;
    run_again(f, r);
    f.alt_save++;
    f.alt_auto++;
  }
  if (j.redo.empty()) xf_redo_clear(f);
  limit_all_views(f);
  return true;
}

void xf_new_step() {
  for (auto& f : xf_ring.files) f->step_start = 1;
}

int xfcm_undo(const xf_cmd_call& c) {
  std::string op = xf_lower(xf_trim(xf_operands(c.text)));
  int32_t n = 1;
  bool all = false;
  if (!op.empty()) {
    if (op[0] == 'a')
      all = true;
    else if (!xf_parse_count(op, n))
      return xf_bad_operands();
  }
  if (!xf_ring.file) return 1;
  for (int32_t k = 0; all || k < n; ++k)
    if (!xf_undo()) break;
  return 1;
}

int xfcm_redo(const xf_cmd_call&) {
  xf_redo();
  return 1;
}

int xfcm_alt(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... %d %d", f.alt_auto, f.alt_save);
    return 1;
  }
  int32_t a = 0, s = 0;
  if (w.size() > 2 || !xf_parse_count(w[0], a) || (w.size() == 2 && !xf_parse_count(w[1], s))) return xf_bad_operands();
  f.alt_auto = a;
  if (w.size() == 2) {
    // Bringing the change count to 0 is a save as far as the journal is concerned.
    if (s == 0 && f.alt_save != 0 && xf_set.save_clear_undo) xf_undo_clear(f);
    f.alt_save = s;
  }
  return 1;
}

int xfcm_saveclearundo(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty())
    xf_msg(xf_set.save_clear_undo ? 9 : 10, XF_MSG_INFO);
  else if (w == "on" || w == "off")
    xf_set.save_clear_undo = w == "on";
  else
    return xf_bad_operands();
  return 1;
}
