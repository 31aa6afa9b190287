// The scrolling commands that keys and the input cycle use: FORward, BAckward, PGUp, PGDown, Up, Down, Next,
// HOme.
#include <algorithm>
#include <string>

#include "editor/cmdtable.h"
#include "editor/compose.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

// The count operand: none gives `dflt`, "*" the whole file; anything else that is not a number is refused.
bool count_operand(const xf_cmd_call& c, int32_t dflt, int32_t& n) {
  std::vector<std::string> w = xf_tokens(c.text);
  if (w.size() < 2) {
    n = dflt;
    return true;
  }
  if (w.size() > 2) return false;
  if (w[1] == "*") {
    n = 0x7ffffff;
    return true;
  }
  n = 0;
  for (char ch : w[1]) {
    if (ch < '0' || ch > '9') return false;
    if (n < 0x7ffffff) n = n * 10 + (ch - '0');
  }
  return true;
}

// Moves the current line by n lines in scope (negative: up), stopping at the top and the last line.
void move_lines(int32_t n) {
  int32_t& cur = xf_current_line();
  const xf_file& f = *xf_ring.file;
  int32_t line = cur;
  while (n > 0 && line < f.size - 1) {
    int32_t next = line + 1;
    while (next < f.size && !xf_in_scope(next)) ++next;
    if (next >= f.size) break;
    line = next;
    --n;
  }
  while (n < 0 && line > xf_ring.lowest_line) {
    int32_t prev = line - 1;
    while (prev >= 0 && !xf_in_scope(prev)) --prev;
    line = std::max(prev, xf_ring.lowest_line);
    ++n;
  }
  cur = line;
}

// The lines a page moves: the rows of the file area less two.
int32_t page_lines() {
  int32_t first = 0, last = 0;
  xf_file_rows(*xf_ring.view, first, last);
  return std::max(1, last - first + 1 - 2);
}

int scroll(const xf_cmd_call& c, int32_t dflt, int32_t unit, int32_t sign) {
  if (!xf_ring.file) return 1;
  int32_t n = 0;
  if (!count_operand(c, dflt, n)) {
    xf_msg_text("..... Invalid parameters", XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  int64_t lines = static_cast<int64_t>(n) * unit;
  move_lines(static_cast<int32_t>(std::min<int64_t>(lines, 0x7ffffff)) * sign);
  return 1;
}

}  // namespace

int xfcm_forward(const xf_cmd_call& c) { return scroll(c, 1, page_lines(), 1); }
int xfcm_backward(const xf_cmd_call& c) { return scroll(c, 1, page_lines(), -1); }
int xfcm_pgdown(const xf_cmd_call& c) { return scroll(c, 1, page_lines(), 1); }
int xfcm_pgup(const xf_cmd_call& c) { return scroll(c, 1, page_lines(), -1); }
int xfcm_down(const xf_cmd_call& c) { return scroll(c, 1, 1, 1); }
int xfcm_up(const xf_cmd_call& c) { return scroll(c, 1, 1, -1); }

// HOme: the cursor goes from the file area to the command line, and from there back to the current line.
int xfcm_home(const xf_cmd_call&) {
  if (xf_run.batch) return 1;
  if (xf_scr.cursor_on_cmd && xf_ring.file)
    xf_cursor_to_line(std::max(0, xf_current_line()), 0);
  else
    xf_cursor_to_cmd(1);
  return 1;
}
