// The prefix run: the pending prefix commands of each view's file carried out in their fixed order.
#include <algorithm>
#include <climits>
#include <set>

#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/pdfcopy.h"
#include "editor/prefix.h"
#include "editor/state.h"

namespace {

using rows = std::vector<xf_prefix_row>;

xf_file& file() { return *xf_ring.file; }
bool live(const xf_prefix_row& r) { return r.kind != -2; }

// A cursor request for the line of a prefix command; of one input's requests the highest priority stands.
void request_cursor(int32_t line, int32_t priority) {
  xf_cursor& c = file().cursor;
  if (priority < c.priority) return;
  c.view = xf_ring.view_no;
  c.screen_col = 0;
  c.line = std::clamp(line, 0, std::max(file().size - 1, 0));
  c.column = 1;
  c.priority = priority;
}

bool in_scope(int32_t line) { return xf_in_scope(line); }

// The last line of `count` in-scope lines from `line` (the top-of-file row counts as one); -1 when none.
int32_t range_end(int32_t line, int32_t count) {
  int32_t last = -1, taken = 0;
  if (line < 0) {
    ++taken;
    line = 0;
  }
  for (int32_t l = line; l < file().size && taken < count; ++l)
    if (in_scope(l)) {
      last = l;
      ++taken;
    }
  return last;
}

std::vector<std::string> texts_of(int32_t first, int32_t last) {
  std::vector<std::string> v;
  for (int32_t l = std::max(first, 0); l <= last && l < file().size; ++l)
    if (in_scope(l)) v.emplace_back(file().line(l));
  return v;
}

void out_of_scope(xf_prefix_row& r) {
  xf_msg(55, XF_MSG_ERROR);
  r.kind = -2;
}

// Hides the in-scope lines first..last; the current line, if hidden, moves to the next line in scope.
void exclude(int32_t first, int32_t last) {
  xf_file& f = file();
  int32_t hidden = xf_ring.view->display[1] == INT32_MAX ? INT32_MAX : xf_ring.view->display[1] + 1;
  for (int32_t l = std::max(first, 0); l <= last && l < f.size; ++l)
    if (in_scope(l)) f.select[l] = hidden;
  int32_t& cur = xf_current_line();
  if (cur >= 0 && cur < f.size && !in_scope(cur)) {
    int32_t l = cur;
    while (l < f.size && !in_scope(l)) ++l;
    if (l < f.size) cur = l;
  }
}

// S: shows hidden lines from here (0: the whole run and this line; n: at most n; -n: the last n of the run).
void show(int32_t line, int32_t count) {
  xf_file& f = file();
  int32_t high = xf_ring.view->display[1];
  int32_t start = line < 0 ? 0 : line;
  if (start < f.size && in_scope(start)) ++start;
  int32_t end = start;
  while (end < f.size && !in_scope(end)) ++end;
  int32_t first = start, last = end - 1;
  if (count > 0) last = std::min(last, start + count - 1);
  if (count < 0) first = std::max(start, end + count);
  for (int32_t l = first; l <= last; ++l) f.select[l] = high;
  if (count == 0 && line >= 0 && line < f.size) f.select[line] = high;
}

// Lays the source lines over the destination lines first..last (past the end of the file: new lines).
void overlay(const std::vector<std::string>& src, int32_t first, int32_t count) {
  if (src.empty()) return;
  xf_file& f = file();
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  std::size_t k = 0;
  std::vector<std::string> appended;
  if (first < 0) {
    xf_insert_read_lines(-1, {src[0]});
    return;
  }
  for (int32_t l = first, done = 0; done < count; ++l) {
    const std::string& s = src[k++ % src.size()];
    if (l >= f.size) {
      appended.push_back(s);
      ++done;
      continue;
    }
    if (!in_scope(l)) {
      --k;
      continue;
    }
    std::string d(f.line(l));
    for (std::size_t col = 0; col < s.size(); ++col) {
      if (static_cast<int32_t>(col) < vf.zone_first || static_cast<int32_t>(col) > vf.zone_last) continue;
      if (col >= d.size()) d.resize(col + 1, ' ');
      if (d[col] == ' ') d[col] = s[col];
    }
    if (d != f.line(l)) xf_do('r', xf_new_text(d), l, 1, 1, nullptr, "prefix:overlay");
    ++done;
  }
  if (!appended.empty()) xf_insert_read_lines(f.size - 1, appended);
}

// Where a P/B, F/A or O row puts lines: the line after which they go.
int32_t insert_point(const xf_prefix_row& d) {
  if (d.line < 0) return -1;
  return d.kind == XPB_BEFORE ? d.line - 1 : d.line;
}

// A copy or move of the in-scope lines first..last to a destination (an O count or an OO pair for overlays).
bool copy_or_move(int32_t first, int32_t last, xf_prefix_row& d, xf_prefix_row* d2, bool move) {
  xf_file& f = file();
  bool over = d.kind == XPB_OVERLAY || d.kind == XPB_OVERLAY_BLOCK;
  if (move) {
    int32_t a = d.line, b = d2 ? d2->line : d.line;
    if (over && !d2) b = d.line + std::max(d.count, 1) - 1;
    if (std::max(a, b) >= first && std::min(a, b) <= last) {
      xf_msg(5, XF_MSG_ERROR);
      return false;
    }
  }
  int32_t& cur = xf_current_line();
  int32_t saved = cur;
  int32_t before = f.size;
  if (over) {
    std::vector<std::string> src = texts_of(first, last);
    int32_t a = d.line, count = d2 ? std::abs(d2->line - d.line) + 1 : std::max(d.count, 1);
    if (d2) a = std::min(d.line, d2->line);
    overlay(src, a, count);
    if (move) xfdel(first, last - first + 1);
    f.alt_save++;
  } else {
    xf_copy_lines(first, last, insert_point(d), move);
    f.alt_save++;
  }
  int32_t dest = insert_point(d);
  if (move && !over && dest < first) saved += f.size - before;  // lines moved up keep the current line's text
  cur = std::clamp(saved, xf_ring.lowest_line, std::max(f.size - 1, xf_ring.lowest_line));
  request_cursor(dest + 1, 30);
  return true;
}

// Runs one row of the single list (not D, G or a macro).
void run_single(xf_prefix_row& r) {
  xf_file& f = file();
  int32_t n = r.count;
  switch (r.kind) {
    case XPS_ADD:
    case XPS_INSERT:
      xfadd(r.line, std::min(n, 100000), true);
      break;
    case XPS_PUT:
      if (!in_scope(r.line)) return out_of_scope(r);
      xf_lcmd.prefix_buffer = texts_of(r.line, range_end(r.line, n));
      break;
    case XPS_DUP:
    case XPS_DUP2:
    case XPS_REPEAT:
      if (!in_scope(r.line)) return out_of_scope(r);
      xfdup(r.line, std::min(n, 100000));
      request_cursor(r.line, 40);
      break;
    case XPS_CURRENT:
      if (!in_scope(r.line)) return out_of_scope(r);
      if (r.view >= 0 && r.view < static_cast<int32_t>(xf_ring.views.size()) &&
          xf_ring.file_no < static_cast<int32_t>(xf_ring.views[r.view]->per_file.size()))
        xf_ring.views[r.view]->per_file[xf_ring.file_no].current_line = r.line;
      request_cursor(r.line, 50);
      break;
    case XPS_OPEN: {
      auto& ol = xf_ring.view->open_lines;
      if (ol.size() < 19) ol.push_back(r.line);
      request_cursor(r.line, 60);
      break;
    }
    case XPS_RIGHT:
    case XPS_LEFT:
      if (!in_scope(r.line)) return out_of_scope(r);
      if (xf_shift_lines(r.line, range_end(r.line, n), n == INT32_MAX ? 1 : n, r.kind == XPS_RIGHT)) f.alt_save++;
      request_cursor(r.line, 30);
      break;
    case XPS_EXCLUDE:
      exclude(r.line, range_end(r.line, n));
      request_cursor(r.line, 30);
      break;
    case XPS_SHOW:
      show(r.line, n);
      request_cursor(r.line, 30);
      break;
    case XPS_SCALE:
    case XPS_TABL: {
      if (r.screen_row < 0) break;
      if (r.screen_row == xf_ring.view->curline) {
        xf_msg(57, XF_MSG_ERROR);
        break;
      }
      xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
      (r.kind == XPS_SCALE ? vf.scale_row : vf.tabline_row) = r.screen_row;
      (r.kind == XPS_SCALE ? vf.scale : vf.tabline) = 1;
      break;
    }
    default:
      return;
  }
  r.kind = -2;
}

// The first live row of the block list from `from` with one of the kinds, or -1.
int find_kind(const rows& b, std::size_t from, std::initializer_list<int32_t> kinds) {
  for (std::size_t i = from; i < b.size(); ++i)
    if (live(b[i]) && std::find(kinds.begin(), kinds.end(), b[i].kind) != kinds.end()) return static_cast<int>(i);
  return -1;
}

// One rule of the block list that can fire, fired; false when none can.
bool fire_block_rule(rows& b) {
  int dest = find_kind(b, 0, {XPB_BEFORE, XPB_AFTER, XPB_OVERLAY, XPB_OVERLAY_BLOCK});
  int dest2 = -1;
  if (dest >= 0 && b[dest].kind == XPB_OVERLAY_BLOCK) {
    dest2 = find_kind(b, dest + 1, {XPB_OVERLAY_BLOCK});
    if (dest2 < 0) dest = -1;
  }
  for (std::size_t i = 0; i < b.size(); ++i) {
    if (!live(b[i])) continue;
    int32_t k = b[i].kind;
    auto pair = [&](std::initializer_list<int32_t> kinds) { return find_kind(b, i + 1, kinds); };
    auto block_of = [&](int j, int32_t& first, int32_t& last) {
      first = std::min(b[i].line, b[j].line);
      last = std::max(b[i].line, b[j].line);
      if (first < 0) first = 0;
    };
    auto finish = [&](std::initializer_list<int> done) {
      for (int j : done)
        if (j >= 0) b[j].kind = -2;
    };
    int j = -1;
    int32_t first = 0, last = 0;
    int32_t count = 1;
    if (k == XPB_COPY_BLOCK && dest >= 0 && (j = pair({XPB_COPY_BLOCK})) >= 0) {
      block_of(j, first, last);
      copy_or_move(first, last, b[dest], dest2 >= 0 ? &b[dest2] : nullptr, false);
      finish({static_cast<int>(i), j, dest, dest2});
      return true;
    }
    if (k == XPB_PUT_BLOCK && (j = pair({XPB_PUT_BLOCK})) >= 0) {
      block_of(j, first, last);
      xf_lcmd.prefix_buffer = texts_of(first, last);
      finish({static_cast<int>(i), j});
      return true;
    }
    if (k == XPB_DELETE_BLOCK && (j = pair({XPB_DELETE_BLOCK})) >= 0) {
      block_of(j, first, last);
      finish({static_cast<int>(i), j});
      xfdel(first, last - first + 1);
      request_cursor(first, 10);
      return true;
    }
    bool dup = k == XPB_DUP_BLOCK || k == XPB_DUP_BLOCK2 || k == XPB_REPEAT_BLOCK;
    if (dup && (j = pair({XPB_DUP_BLOCK, XPB_DUP_BLOCK2, XPB_REPEAT_BLOCK})) >= 0) {
      block_of(j, first, last);
      count = std::min(std::max(b[i].count, b[j].count), 100000);
      finish({static_cast<int>(i), j});
      int32_t& cur = xf_current_line();
      int32_t saved = cur;
      for (int32_t n = 0; n < count; ++n) xf_copy_lines(first, last, last, false);
      cur = saved;
      file().alt_save++;
      request_cursor(last + 1, 40);
      return true;
    }
    if ((k == XPB_RIGHT_BLOCK || k == XPB_LEFT_BLOCK) && (j = pair({k})) >= 0) {
      block_of(j, first, last);
      count = std::max(b[i].count, b[j].count);
      finish({static_cast<int>(i), j});
      if (xf_shift_lines(first, last, count == INT32_MAX ? 1 : count, k == XPB_RIGHT_BLOCK)) file().alt_save++;
      request_cursor(first, 30);
      return true;
    }
    if (k == XPB_MOVE_BLOCK && dest >= 0 && (j = pair({XPB_MOVE_BLOCK})) >= 0) {
      block_of(j, first, last);
      copy_or_move(first, last, b[dest], dest2 >= 0 ? &b[dest2] : nullptr, true);
      finish({static_cast<int>(i), j, dest, dest2});
      return true;
    }
    if (k == XPB_EXCLUDE_BLOCK && (j = pair({XPB_EXCLUDE_BLOCK})) >= 0) {
      block_of(j, first, last);
      finish({static_cast<int>(i), j});
      exclude(first, last);
      request_cursor(first, 30);
      return true;
    }
    if ((k == XPB_MOVE || k == XPB_COPY) && dest >= 0) {
      if (!in_scope(b[i].line)) {
        out_of_scope(b[i]);
        return true;
      }
      first = b[i].line;
      last = range_end(first, b[i].count);
      copy_or_move(first, last, b[dest], dest2 >= 0 ? &b[dest2] : nullptr, k == XPB_MOVE);
      finish({static_cast<int>(i), dest, dest2});
      return true;
    }
  }
  return false;
}

void run_macro_row(xf_prefix_row& r) {
  std::string name = r.arguments.empty() ? std::string() : r.arguments[0];
  xf_msgf(XF_MSG_ERROR, "..... Unable to execute macro \"%s\".", name.c_str());
  std::string text;
  for (const std::string& w : r.arguments) text += (text.empty() ? "" : " ") + w;
  file().prefix_errors.push_back({r.line, text});
  r.kind = -2;
}

// Step 1: a parked ISPF COPY takes the first destination row; a parked CREATE the first block that names lines.
void run_parked(rows& b) {
  xf_file& f = file();
  if (f.pdf_copy.active) {
    int d = find_kind(b, 0, {XPB_BEFORE, XPB_AFTER});
    if (d >= 0) {
      xf_pdf_copy_complete(b[d].line, b[d].kind == XPB_BEFORE);
      b[d].kind = -2;
    }
  }
  if (f.pdf_create.active) {
    int i = find_kind(b, 0, {XPB_COPY_BLOCK, XPB_MOVE_BLOCK, XPB_COPY, XPB_MOVE});
    if (i < 0) return;
    int32_t k = b[i].kind;
    if (k == XPB_COPY || k == XPB_MOVE) {
      xf_pdf_create_complete(b[i].line, range_end(b[i].line, b[i].count), k == XPB_MOVE);
      b[i].kind = -2;
      return;
    }
    int j = find_kind(b, i + 1, {k});
    if (j < 0) return;
    int32_t first = std::min(b[i].line, b[j].line), last = std::max(b[i].line, b[j].line);
    xf_pdf_create_complete(first, last, k == XPB_MOVE_BLOCK);
    b[i].kind = b[j].kind = -2;
  }
}

// Does a row of this list change the file's lines?
bool changes_lines(bool block, int32_t kind) {
  if (kind < 1) return false;
  if (block) return kind != XPB_PUT_BLOCK && kind != XPB_EXCLUDE_BLOCK;
  return kind != XPS_PUT && kind != XPS_CURRENT && kind != XPS_OPEN && kind != XPS_EXCLUDE && kind != XPS_SHOW &&
         kind != XPS_SCALE && kind != XPS_TABL;
}

void run_file() {
  xf_file& f = file();
  rows& a = f.prefix_pending_a;
  rows& b = f.prefix_pending_b;
  if (!f.read_write) {
    bool refused = false;
    for (rows* list : {&a, &b})
      for (xf_prefix_row& r : *list)
        if (changes_lines(list == &b, r.kind)) {
          r.kind = -2;
          refused = true;
        }
    if (refused) xf_msg(118, XF_MSG_ERROR);
  }
  run_parked(b);
  for (int pass = 0; pass < 2; ++pass) {
    bool macro_ran = false;
    for (std::size_t i = 0; i < a.size(); ++i)
      if (a[i].kind == XPS_OPEN) run_single(a[i]);
    for (std::size_t i = 0; i < a.size(); ++i)
      if (live(a[i]) && a[i].kind > 0 && a[i].kind != XPS_DELETE && a[i].kind != XPS_GET) run_single(a[i]);
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i].kind != XPS_DELETE) continue;
      xf_prefix_row& r = a[i];
      if (!in_scope(r.line)) {
        out_of_scope(r);
        continue;
      }
      int32_t last = range_end(r.line, r.count);
      int32_t first = std::max(r.line, 0);
      r.kind = -2;
      if (last >= first) xfdel(first, last - first + 1);
      request_cursor(first, 10);
    }
    while (fire_block_rule(b)) {
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i].kind != XPS_GET) continue;
      int32_t line = std::min(a[i].line, f.size - 1);
      for (int32_t n = 0; n < std::min(a[i].count, 1000); ++n) xf_insert_read_lines(line, xf_lcmd.prefix_buffer);
      request_cursor(line + 1, 30);
      a[i].kind = -2;
    }
    for (rows* list : {&a, &b})
      for (std::size_t i = 0; i < list->size(); ++i)
        if ((*list)[i].kind == -1) {
          run_macro_row((*list)[i]);
          macro_ran = true;
        }
    if (!macro_ran) break;
  }
  for (rows* list : {&a, &b}) list->erase(std::remove_if(list->begin(), list->end(), [](const xf_prefix_row& r) {
                                return !live(r);
                              }), list->end());
}

}  // namespace

void xf_prefix_run() {
  if (xf_prefix.running || xf_ring.views.empty()) return;
  xf_prefix.running = true;
  int32_t view = xf_ring.view_no;
  std::set<const xf_file*> done;
  for (int32_t v = 0; v < static_cast<int32_t>(xf_ring.views.size()); ++v) {
    if (xf_ring.views[v]->current_file < 0) continue;
    xf_set_view(v);
    xf_file& f = file();
    if (!done.insert(&f).second) continue;
    if (f.prefix_pending_a.empty() && f.prefix_pending_b.empty() && !f.pdf_copy.active && !f.pdf_create.active)
      continue;
    int32_t case_mode = f.case_mode;
    f.case_mode = 0;
    run_file();
    f.case_mode = case_mode;
  }
  if (view >= 0) xf_set_view(view);
  xf_prefix.running = false;
}
