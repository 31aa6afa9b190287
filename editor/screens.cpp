// Screen splits: SCReen divides the window into views, C_SCRH, C_SCRV and C_SCRJ split and join at the cursor, and
// xf_relayout rebuilds the views after the window changed size.
#include "editor/screens.h"

#include <algorithm>

#include "editor/command.h"
#include "editor/compose.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"

xf_screens_state xf_screens;

namespace {

struct geometry {
  int32_t top, left, height, width;  // 1-based first row and column
};

int32_t usable_rows() { return xf_scr.nb_rows - xf_scr.legend_rows; }

// Checks the views in order, each against the screen and against every later view; false after the message.
bool valid(const std::vector<geometry>& g) {
  auto corner_in = [](const geometry& a, int32_t r, int32_t c) {
    return r >= a.top && r < a.top + a.height && c >= a.left && c < a.left + a.width;
  };
  for (std::size_t i = 0; i < g.size(); ++i) {
    const geometry& v = g[i];
    int n = static_cast<int>(i);
    if (v.height < 6) return xf_msgf(XF_MSG_ERROR, "..... Screen %d: should have at least %d lines", n, 6), false;
    if (v.width < 38) return xf_msgf(XF_MSG_ERROR, "..... Screen %d: should have at least %d columns", n, 38), false;
    if (v.top < 1 || v.left < 1 || v.top + v.height - 1 > usable_rows() || v.left + v.width - 1 > xf_scr.nb_cols)
      return xf_msgf(XF_MSG_ERROR, "..... Screen %d out of bounds", n), false;
    for (std::size_t j = i + 1; j < g.size(); ++j) {
      const geometry& w = g[j];
      if (corner_in(v, w.top, w.left) || corner_in(v, w.top, w.left + w.width - 1) ||
          corner_in(v, w.top + w.height - 1, w.left) || corner_in(v, w.top + w.height - 1, w.left + w.width - 1))
        return xf_msgf(XF_MSG_ERROR, "..... Screen %d overlaps screen %d", n, static_cast<int>(j)), false;
    }
  }
  return true;
}

// A copy of a view's settings on a new shape; the row of the current line stays if the shape has it.
xf_view shaped(const xf_view& src, const geometry& s, bool fresh_messages = true) {
  xf_view v = src;
  v.open_lines.clear();
  if (fresh_messages) {
    v.messages.clear();
    v.message_text.clear();
  }
  v.top = s.top;
  v.left = s.left;
  v.height = s.height;
  v.width = std::min<int32_t>(s.width, 1000);
  v.cmd_width = v.width - 6;
  int32_t fresh = s.height < 20 ? std::max(5, s.height / 3) : std::min(8, s.height - 1);
  if (v.curline > s.height - 1 || v.curline < 3) v.curline = fresh;
  return v;
}

// Puts these views in place of the old ones; `current` becomes the current view. A command's new views get a blank
// command line with the cursor on it; a resize keeps both.
void install(std::vector<xf_view> views, int32_t current, bool by_command = true) {
  xf_ring.views.clear();
  for (xf_view& v : views) xf_ring.views.push_back(std::make_unique<xf_view>(std::move(v)));
  xf_set_view(std::clamp<int32_t>(current, 0, static_cast<int32_t>(xf_ring.views.size()) - 1));
  if (!by_command) return;
  xf_run.command_line.clear();
  xf_cursor_to_cmd(1);
}

// Views of these shapes, each a copy of the current view.
void rebuild(const std::vector<geometry>& g, bool by_command = true) {
  std::vector<xf_view> views;
  for (const geometry& s : g) views.push_back(shaped(*xf_ring.view, s, by_command));
  install(std::move(views), 0, by_command);
}

// The shapes of SCReen's operands; false after message 16.
bool shapes(const std::vector<std::string>& w, std::vector<geometry>& g, int32_t& remembered, bool& vertical) {
  int32_t rows = usable_rows(), cols = xf_scr.nb_cols;
  auto numbers = [&](std::size_t from, std::vector<int32_t>& out) {
    for (std::size_t k = from; k < w.size(); ++k) {
      int32_t n = 0;
      if (!xf_parse_count(w[k], n)) return false;
      out.push_back(n);
    }
    return !out.empty();
  };
  auto is = [&](std::size_t k, std::string_view full) { return k < w.size() && full.starts_with(w[k]); };
  remembered = 0;
  int32_t n = 0;
  if (!w.empty() && xf_parse_count(w[0], n)) {
    if (n < 1 || w.size() > 2) return false;
    vertical = is(1, "vertical");
    if (w.size() == 2 && !vertical && !is(1, "horizontal")) return false;
    remembered = n;
    if (vertical) {
      int32_t each = cols / n;
      // View 0 stands at the right and takes what is left; the last view stands at the left.
      for (int32_t k = 0; k < n; ++k) {
        int32_t left = 1 + (n - 1 - k) * each;
        g.push_back({1, left, rows, k == 0 ? cols - left + 1 : each});
      }
    } else {
      int32_t each = rows / n;
      for (int32_t k = 0; k < n; ++k) g.push_back({1 + k * each, 1, k == n - 1 ? rows - k * each : each, cols});
    }
    return true;
  }
  std::vector<int32_t> nums;
  if (is(0, "size") || is(0, "lines")) {
    if (!numbers(1, nums)) return false;
    int32_t top = 1;
    for (std::size_t k = 0; k + 1 < nums.size(); ++k) {
      g.push_back({top, 1, nums[k], cols});
      top += nums[k];
    }
    g.push_back({top, 1, rows - top + 1, cols});
    return true;
  }
  if (is(0, "width") || is(0, "columns")) {
    if (!numbers(1, nums)) return false;
    int32_t left = 1;
    for (int32_t width : nums) {
      g.push_back({1, left, width, 0});
      left += width;
    }
    for (geometry& s : g) std::swap(s.height, s.width), s.height = rows;
    g.back().width = cols - g.back().left + 1;
    return true;
  }
  if (is(0, "define")) {
    if (!numbers(1, nums) || nums.size() % 4 != 0) return false;
    for (std::size_t k = 0; k < nums.size(); k += 4) g.push_back({nums[k + 2], nums[k + 3], nums[k], nums[k + 1]});
    return true;
  }
  return false;
}

// The view under the cursor and the screen cell the cursor stands on.
bool cursor_cell(int32_t& view, int32_t& row, int32_t& col) {
  const xf_place& p = xf_cursor_place();
  if (p.kind == XP_NONE || p.view < 0 || p.view >= static_cast<int32_t>(xf_ring.views.size())) return false;
  view = p.view;
  row = p.screen_line;
  col = p.screen_col;
  return true;
}

std::vector<geometry> current_shapes() {
  std::vector<geometry> g;
  for (const auto& v : xf_ring.views) g.push_back({v->top, v->left, v->height, v->width});
  return g;
}

// Splits the view under the cursor across (at its row) or down (at its column).
int split(bool across) {
  if (xf_run.batch || !xf_ring.file) return 1;
  int32_t vn = 0, row = 0, col = 0;
  if (!cursor_cell(vn, row, col)) return 1;
  std::vector<geometry> g = current_shapes();
  geometry& a = g[static_cast<std::size_t>(vn)];
  geometry b = a;
  if (across) {
    int32_t first = row - a.top;  // rows kept above the cursor's row
    if (first < 6 || a.height - first < 6) return xf_msg(19, XF_MSG_ERROR), rc = 1, 1;
    b.top = a.top + first;
    b.height = a.height - first;
    a.height = first;
  } else {
    int32_t first = col - a.left;
    if (first < 6 || a.width - first < 6) return xf_msg(19, XF_MSG_ERROR), rc = 1, 1;
    b.left = a.left + first;
    b.width = a.width - first;
    a.width = first;
  }
  std::vector<xf_view> views;
  for (std::size_t k = 0; k < xf_ring.views.size(); ++k) {
    views.push_back(shaped(*xf_ring.views[k], g[k]));
    if (static_cast<int32_t>(k) == vn) views.push_back(shaped(*xf_ring.views[k], b));
  }
  install(std::move(views), vn);
  xf_screens.remembered = 0;
  return 1;
}

}  // namespace

void xf_screens_reset() { xf_screens = xf_screens_state{}; }

int xfcm_screen(const xf_cmd_call& c) {
  if (xf_run.batch || xf_ring.views.empty()) return 1;
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  std::vector<geometry> g;
  int32_t remembered = 0;
  bool vertical = false;
  if (!shapes(w, g, remembered, vertical)) return xf_bad_operands();
  if (!valid(g)) {
    rc = 1;
    return 1;
  }
  rebuild(g);
  xf_screens.remembered = remembered;
  xf_screens.vertical = vertical;
  return 1;
}

int xfcm_c_scrh(const xf_cmd_call&) { return split(true); }

int xfcm_c_scrv(const xf_cmd_call&) { return split(false); }

// C_SCRJ: the view under the cursor gives its place to a neighbour of the same width or height.
int xfcm_c_scrj(const xf_cmd_call&) {
  if (xf_run.batch || xf_ring.views.size() < 2) return 1;
  int32_t vn = 0, row = 0, col = 0;
  if (!cursor_cell(vn, row, col)) vn = xf_ring.view_no;
  std::vector<geometry> g = current_shapes();
  const geometry a = g[static_cast<std::size_t>(vn)];
  for (std::size_t k = 0; k < g.size(); ++k) {
    if (static_cast<int32_t>(k) == vn) continue;
    geometry& b = g[k];
    bool below = b.left == a.left && b.width == a.width && (b.top == a.top + a.height || a.top == b.top + b.height);
    bool beside = b.top == a.top && b.height == a.height && (b.left == a.left + a.width || a.left == b.left + b.width);
    if (!below && !beside) continue;
    if (below) {
      b.top = std::min(a.top, b.top);
      b.height += a.height;
    } else {
      b.left = std::min(a.left, b.left);
      b.width += a.width;
    }
    std::vector<xf_view> views;
    int32_t current = 0;
    for (std::size_t m = 0; m < g.size(); ++m) {
      if (static_cast<int32_t>(m) == vn) continue;
      if (m == k) current = static_cast<int32_t>(views.size());
      views.push_back(shaped(*xf_ring.views[m], g[m]));
    }
    install(std::move(views), current);
    xf_screens.remembered = 0;
    return 1;
  }
  return 1;
}

void xf_relayout() {
  if (xf_ring.views.empty()) return;
  xf_set_view(0);  // the first view's state is kept
  std::vector<geometry> g{{1, 1, usable_rows(), xf_scr.nb_cols}};
  if (xf_screens.remembered > 1) {
    std::vector<std::string> w{std::to_string(xf_screens.remembered)};
    if (xf_screens.vertical) w.emplace_back("vertical");
    std::vector<geometry> again;
    int32_t remembered = 0;
    bool vertical = false;
    if (shapes(w, again, remembered, vertical) && valid(again)) g = again;
  }
  rebuild(g, false);
}
