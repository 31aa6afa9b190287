// FILTer: the selection (or the cursor's line) goes through a command, whose output takes its place.
#include <algorithm>
#include <thread>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/select.h"
#include "editor/state.h"
#include "os/os_process.h"

namespace {

int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

// The output of `command` given `input`: its lines, trailing blanks removed; false when it could not start.
bool run_filter(const std::string& command, const std::string& input, std::vector<std::string>& lines) {
  os_child child;
  if (child.start(command, true) != 0) return false;
  // The input is written beside the reading, so that a command that answers as it reads cannot block on a full
  // pipe.
  std::thread writer([&] {
    child.write_input(input);
    child.close_input();
  });
  std::string out;
  while (child.read_some(out, 1000) != 0) {
  }
  writer.join();
  child.wait();
  std::size_t i = 0;
  while (i < out.size()) {
    std::size_t e = out.find('\n', i);
    std::string line = out.substr(i, e == std::string::npos ? std::string::npos : e - i);
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    lines.push_back(std::move(line));
    if (e == std::string::npos) break;
    i = e + 1;
  }
  return true;
}

}  // namespace

// FILTer [time-out n] command
int xfcm_filter(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (ops.starts_with("time-out")) {
    std::string_view rest = xf_trim(ops.substr(8));
    std::size_t sp = rest.find(' ');
    int32_t n = 0;
    if (!xf_parse_count(rest.substr(0, sp), n) || n < 1) return fail(62, 1);
    ops = sp == std::string_view::npos ? std::string_view() : xf_trim(rest.substr(sp));
  }
  std::string command(ops);
  if (command.empty()) return fail(16, 1);
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  if (!xf_sel_in_view()) {
    const xf_place& at = xf_cursor_place();
    if (xf_run.batch || at.kind != XP_LINE || at.line < 0 || at.line >= f.size || !xf_in_scope(at.line))
      return fail(6, 1);
    xf_sel_set(xf_ring.file_no, XS_LINEAR, at.line + 1, 0, at.line + 1, -1);
  }
  if (!f.read_write) return fail(118, 1);
  const xf_selection s = xf_sel.sel;
  bool rectangular = s.kind == XS_RECT || s.kind == XS_RECT_PENDING;
  int32_t last = s.last_line - 1;
  bool ends_inside = s.last_column != -1 && last < f.size &&
                     s.last_column < static_cast<int32_t>(f.line(last).size());
  int32_t saved = xf_current_line();
  xf_sel_copy(false);
  std::string input;
  for (const std::string& l : xf_sel.shelf.lines) input += l + "\n";
  std::vector<std::string> out;
  if (!run_filter(command, input, out)) {
    xf_msgf(XF_MSG_ERROR, "Unable to process filter %s", command.c_str());
    rc = 1;
    return 1;
  }
  xf_sel_delete();
  int32_t line = s.first_line - 1, column = std::max(s.first_column - 1, 0);
  if (rectangular) column = std::max(s.first_column - 1, 0);
  xf_sel.shelf.lines = out;
  xf_sel.shelf.rectangular = rectangular;
  xf_sel.shelf.line_end = !(out.size() < 2 && ends_inside);
  if (line >= f.size) {
    // The cut took the file's last lines: the output follows what is left.
    if (!out.empty()) xf_insert_read_lines(f.size - 1, out);
  } else if (!out.empty()) {
    xf_shelf_paste(line, column, false);
  }
  xf_sel_end();
  if (saved < f.size) xf_current_line() = saved;
  return 1;
}
