// Cursor and ring moves that keys are bound to: NEXTWord, PREVWord and ISWitch.
#include <algorithm>

#include "editor/command.h"
#include "editor/compose.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

bool blank(char c) { return c == ' ' || c == '\t'; }

// The start of the next word after column `col` of `line` (0-based), passing to later lines; false at the end.
bool next_word(int32_t line, int32_t col, int32_t& out_line, int32_t& out_col) {
  const xf_file& f = *xf_ring.file;
  for (int32_t l = std::max(line, 0); l < f.size; ++l) {
    if (!xf_in_scope(l)) continue;
    std::string_view s = f.line(l);
    int32_t i = 0;
    if (l == line) {
      i = std::min<int32_t>(col, static_cast<int32_t>(s.size()));
      while (i < static_cast<int32_t>(s.size()) && !blank(s[i])) ++i;
    }
    while (i < static_cast<int32_t>(s.size()) && blank(s[i])) ++i;
    if (i < static_cast<int32_t>(s.size())) {
      out_line = l;
      out_col = i;
      return true;
    }
  }
  return false;
}

// The start of the word before column `col` of `line`, passing to earlier lines; false at the start.
bool prev_word(int32_t line, int32_t col, int32_t& out_line, int32_t& out_col) {
  const xf_file& f = *xf_ring.file;
  for (int32_t l = std::min(line, f.size - 1); l >= 0; --l) {
    if (!xf_in_scope(l)) continue;
    std::string_view s = f.line(l);
    int32_t i = l == line ? std::min<int32_t>(col, static_cast<int32_t>(s.size())) : static_cast<int32_t>(s.size());
    while (i > 0 && blank(s[i - 1])) --i;
    if (i == 0) continue;
    while (i > 0 && !blank(s[i - 1])) --i;
    out_line = l;
    out_col = i;
    return true;
  }
  return false;
}

int word_move(bool forward) {
  if (xf_run.batch || !xf_ring.file) return 1;
  const xf_place& at = xf_cursor_place();
  if (at.kind != XP_LINE) return 1;
  int32_t line = 0, col = 0;
  bool found = forward ? next_word(at.line, at.column, line, col) : prev_word(at.line, at.column, line, col);
  if (found) xf_cursor_to_line(line, col);
  return 1;
}

}  // namespace

int xfcm_nextword(const xf_cmd_call&) { return word_move(true); }

int xfcm_prevword(const xf_cmd_call&) { return word_move(false); }

// ISWitch: the file with the next higher place in the order of use, from the highest round to the lowest.
int xfcm_iswitch(const xf_cmd_call&) {
  if (!xf_ring.file || xf_file_count() < 2) return 1;
  const std::vector<int32_t>& order = xf_ring.ring_order;
  int32_t here = order[static_cast<std::size_t>(xf_ring.file_no)];
  int32_t next = -1, lowest = 0;
  for (int32_t i = 0; i < xf_file_count(); ++i) {
    int32_t o = order[static_cast<std::size_t>(i)];
    if (o > here && (next < 0 || o < order[static_cast<std::size_t>(next)])) next = i;
    if (o < order[static_cast<std::size_t>(lowest)]) lowest = i;
  }
  xf_set_file(next >= 0 ? next : lowest);
  xf_run.command_line.clear();
  return 1;
}
