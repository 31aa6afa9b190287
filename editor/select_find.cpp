// S_Find and C_Find: searching the current file for the selected text, the shelf or the clipboard's lines; a hit
// becomes the selection.
#include <algorithm>
#include <string>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/state.h"
#include "editor/target.h"

namespace {

struct find_options {
  bool up = false;
  bool word = false;
};

// Operands up (1 letter suffices), down, word, noword; false on another word.
bool options_of(const xf_cmd_call& c, find_options& o) {
  std::vector<std::string> w = xf_tokens(c.text);
  for (std::size_t i = 1; i < w.size(); ++i) {
    std::string x = xf_lower(w[i]);
    auto is = [&](std::string_view name, std::size_t least) {
      return x.size() >= least && x.size() <= name.size() && name.substr(0, x.size()) == x;
    };
    if (is("up", 1)) o.up = true;
    else if (is("down", 1)) o.up = false;
    else if (is("word", 1)) o.word = true;
    else if (is("noword", 1)) o.word = false;
    else return false;
  }
  return true;
}

// Compare a stretch of a line with a pattern by the file's case rule.
bool same(std::string_view a, std::string_view b, bool fold) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    unsigned char x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[i]);
    if (fold && x >= 'A' && x <= 'Z') x = static_cast<unsigned char>(x - 'A' + 'a');
    if (fold && y >= 'A' && y <= 'Z') y = static_cast<unsigned char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

// The single string search: from the selection's start (or the cursor's line), with wrap. A hit becomes the
// selection, linear, and the current line.
int find_string(const std::string& pat, const find_options& o) {
  xf_file& f = *xf_ring.file;
  const bool fold = xf_search_folds();
  const int32_t n = static_cast<int32_t>(pat.size());
  if (f.size == 0 || n == 0) {
    rc = 1;
    return 1;
  }
  int32_t line = std::max(0, xf_current_line()), col = o.up ? INT32_MAX : 0;
  if (xf_sel_in_view()) {
    line = xf_sel.sel.first_line - 1;
    col = std::max(0, xf_sel.sel.first_column - 1) + (o.up ? -1 : 1);
  } else if (!o.up && xf_current_line() >= 0) {
    col = 0;
  }
  auto hit_in = [&](int32_t l, int32_t from, int32_t to) -> int32_t {
    std::string_view t = f.line(l);
    int32_t len = static_cast<int32_t>(t.size());
    if (o.up) {
      for (int32_t c = std::min(to, len - n); c >= from; --c)
        if (same(t.substr(static_cast<std::size_t>(c), static_cast<std::size_t>(n)), pat, fold) &&
            (!o.word || xf_word_test(t, c, n, 3)))
          return c;
      return -1;
    }
    for (int32_t c = std::max(0, from); c + n <= std::min(len, to + n); ++c)
      if (same(t.substr(static_cast<std::size_t>(c), static_cast<std::size_t>(n)), pat, fold) &&
          (!o.word || xf_word_test(t, c, n, 3)))
        return c;
    return -1;
  };
  for (int32_t k = 0; k <= f.size; ++k) {
    int32_t l = o.up ? ((line - k) % f.size + f.size) % f.size : (line + k) % f.size;
    int32_t from = 0, to = INT32_MAX / 2;
    if (k == 0) (o.up ? to : from) = col;
    if (k == f.size) (o.up ? from : to) = col;  // back on the first line, what the first pass skipped
    if (xf_ring.view->scope == 0 && !xf_in_scope(l)) continue;
    int32_t c = hit_in(l, from, to);
    if (c < 0) continue;
    xf_sel_set(xf_ring.file_no, XS_LINEAR, l + 1, c + 1, l + 1, c + n);
    xf_goto_hit(l, c, c + n - 1);
    rc = 0;
    return 1;
  }
  xf_msg(165, XF_MSG_ERROR);
  rc = 2;
  return 1;
}

// A block of lines: linear (the first matches a line's end, the middle ones whole lines, the last a line's
// start), or rectangular (the padded lines at the same columns of successive lines). A hit becomes the selection;
// none gives rc 1 and no message.
int find_lines(std::vector<std::string> lines, bool rect, bool line_end, const find_options& o) {
  xf_file& f = *xf_ring.file;
  const bool fold = xf_search_folds();
  const int32_t n = static_cast<int32_t>(lines.size());
  if (f.size == 0 || n == 0) {
    rc = 1;
    return 1;
  }
  if (rect) {
    std::size_t w = 0;
    for (const std::string& s : lines) w = std::max(w, s.size());
    for (std::string& s : lines) s.resize(w, ' ');
    const int32_t width = static_cast<int32_t>(w);
    auto block_at = [&](int32_t l, int32_t c) {
      if (l + n > f.size) return false;
      for (int32_t k = 0; k < n; ++k) {
        std::string t(f.line(l + k));
        if (static_cast<int32_t>(t.size()) < c + width) t.resize(static_cast<std::size_t>(c + width), ' ');
        if (!same(std::string_view(t).substr(static_cast<std::size_t>(c), w), lines[static_cast<std::size_t>(k)], fold))
          return false;
      }
      return true;
    };
    // Start behind the present selection when it is this very block.
    int32_t sl = 0, sc = -1;
    const xf_selection& s = xf_sel.sel;
    if (xf_sel_in_view() && s.kind >= XS_RECT && s.last_line - s.first_line + 1 == n &&
        block_at(s.first_line - 1, std::max(0, s.first_column - 1))) {
      sl = s.first_line - 1;
      sc = std::max(0, s.first_column - 1);
    } else {
      sl = std::max(0, xf_current_line());
    }
    const int32_t total = f.size;
    for (int32_t k = 0; k <= total; ++k) {
      int32_t l = o.up ? ((sl - k) % total + total) % total : (sl + k) % total;
      int32_t longest = 0;
      for (int32_t j = 0; j < n && l + j < f.size; ++j) longest = std::max(longest, f.len[static_cast<std::size_t>(l + j)]);
      for (int32_t i = 0; i <= longest; ++i) {
        int32_t c = o.up ? longest - i : i;
        if (k == 0 && sc >= 0 && (o.up ? c >= sc : c <= sc)) continue;
        if (!block_at(l, c)) continue;
        xf_sel_set(xf_ring.file_no, XS_RECT, l + 1, c + 1, l + n, c + width);
        xf_goto_hit(l, c, c + width - 1);
        rc = 0;
        return 1;
      }
    }
    rc = 1;
    return 1;
  }
  auto match_at = [&](int32_t l) {
    if (l + n > f.size) return false;
    std::string_view first = f.line(l);
    const std::string& p0 = lines[0];
    if (first.size() < p0.size() || !same(first.substr(first.size() - p0.size()), p0, fold)) return false;
    for (int32_t k = 1; k < n; ++k) {
      std::string_view t = f.line(l + k);
      const std::string& p = lines[static_cast<std::size_t>(k)];
      bool whole = k < n - 1 || line_end;
      if (whole ? !same(t, p, fold) : (t.size() < p.size() || !same(t.substr(0, p.size()), p, fold))) return false;
    }
    return true;
  };
  const int32_t start = xf_current_line() + (o.up ? -1 : 1);
  for (int32_t k = 0; k < f.size; ++k) {
    int32_t l = o.up ? ((start - k) % f.size + f.size) % f.size : ((start + k) % f.size + f.size) % f.size;
    if (!match_at(l)) continue;
    int32_t first_col = f.len[static_cast<std::size_t>(l)] - static_cast<int32_t>(lines[0].size()) + 1;
    int32_t last_col = line_end ? -1 : static_cast<int32_t>(lines.back().size());
    xf_sel_set(xf_ring.file_no, XS_LINEAR, l + 1, first_col, l + n, last_col);
    xf_goto_hit(l, first_col - 1, -1);
    rc = 0;
    return 1;
  }
  rc = 1;
  return 1;
}

// The clipboard's lines, into the shelf; false when there is no text.
bool clipboard_lines() { return xf_shelf_take_clipboard(true) == 1 && !xf_sel.shelf.lines.empty(); }

int search(const std::vector<std::string>& lines, bool rect, bool line_end, const find_options& o) {
  if (lines.size() == 1 && !rect) {
    std::string pat = lines[0];
    xf_sel.shelf.find_memory = std::string(o.word ? "\\" : "/") + pat + "/";
    return find_string(pat, o);
  }
  return find_lines(lines, rect, line_end, o);
}

}  // namespace

// S_Find [up|down] [word|noword]: the selected text, the clipboard's first line, or the last string.
int xfcm_s_find(const xf_cmd_call& c) {
  find_options o;
  if (!options_of(c, o)) {
    xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (!xf_ring.file || xf_ring.file->size == 0) {
    rc = 1;
    return 1;
  }
  // VARblank and SPAN take no part in this search.
  const int32_t varblank = xf_search.varblank, span = xf_search.span_on;
  xf_search.varblank = xf_search.span_on = 0;
  std::string pat;
  if (xf_sel_active()) {
    const xf_selection& s = xf_sel.sel;
    const xf_file& sf = *xf_ring.files[static_cast<std::size_t>(s.file)];
    if (s.first_line != s.last_line) {
      // Several lines: the selected lines as a block of text.
      xf_shelf_state saved = xf_sel.shelf;
      xf_sel_copy();
      std::vector<std::string> lines = xf_sel.shelf.lines;
      bool rect = xf_sel.shelf.rectangular, end = xf_sel.shelf.line_end;
      xf_sel.shelf = saved;
      search(lines, rect, end, o);
    } else {
      pat = xf_sel_text();
      const int32_t len = sf.len[static_cast<std::size_t>(std::max(0, s.first_line - 1))];
      if (pat.empty() && s.last_column > len) pat.assign(static_cast<std::size_t>(s.last_column - std::max(1, s.first_column) + 1), ' ');
      if (pat.empty())
        rc = 1;
      else
        search({pat}, false, false, o);
    }
  } else {
    std::string clip;
    if (xf_shelf_take_clipboard(true) == 1 && !xf_sel.shelf.lines.empty() && xf_sel.shelf.lines[0] != xf_sel.shelf.clip_first) {
      xf_sel.shelf.clip_first = xf_sel.shelf.lines[0];
      clip = xf_sel.shelf.lines[0];
    }
    if (!clip.empty()) {
      search({clip}, false, false, o);
    } else if (xf_sel.shelf.find_memory.size() >= 2) {
      const std::string& m = xf_sel.shelf.find_memory;
      search({m.substr(1, m.size() - 2)}, false, false, o);
    } else if (!xf_sel.shelf.lines.empty()) {
      search(xf_sel.shelf.lines, xf_sel.shelf.rectangular, xf_sel.shelf.line_end, o);
    } else {
      rc = 1;
    }
  }
  xf_search.varblank = varblank;
  xf_search.span_on = span;
  return 1;
}

// C_Find [up|down]: the clipboard's text, one line or a block.
int xfcm_c_find(const xf_cmd_call& c) {
  find_options o;
  if (!options_of(c, o)) {
    xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (!xf_ring.file) {
    rc = 1;
    return 1;
  }
  if (!clipboard_lines()) {
    xf_msg_text("no data in clipboard", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  const int32_t varblank = xf_search.varblank, span = xf_search.span_on;
  xf_search.varblank = xf_search.span_on = 0;
  search(xf_sel.shelf.lines, xf_sel.shelf.rectangular, xf_sel.shelf.line_end, o);
  xf_search.varblank = varblank;
  xf_search.span_on = span;
  return 1;
}
