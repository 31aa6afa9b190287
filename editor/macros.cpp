// Macro tables and the macro step.
#include "editor/macros.h"

#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/messages.h"
#include "editor/rexx_link.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_path.h"
#include "rexxlib/support.h"

xf_macro_state xf_macros;

namespace {

// Command macro lines: trailing blanks cut keeping two bytes, a blank line is one blank, no lines is one blank.
bool read_lines(xf_macro& m) {
  std::string data;
  if (os_read_file(m.path, data) != 0) return false;
  m.lines.clear();
  std::size_t i = 0;
  while (i < data.size()) {
    std::size_t e = data.find('\n', i);
    std::string line = data.substr(i, e == std::string::npos ? std::string::npos : e - i);
    i = e == std::string::npos ? data.size() : e + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::size_t len = line.size();
    while (len > 2 && line[len - 1] == ' ') --len;
    line.resize(len);
    if (line.find_first_not_of(' ') == std::string::npos) line.assign(1, ' ');
    m.lines.push_back(std::move(line));
  }
  if (m.lines.empty()) m.lines.push_back(" ");
  m.lines_read = true;
  return true;
}

void run_command_macro(xf_macro& m, std::string_view args, std::string_view work_dir) {
  if (!m.lines_read && !read_lines(m)) {
    std::string text = ".... Unable to open file " + m.path;
    xf_msg_text(text, XF_MSG_NOW);
    xf_msg_text(text, XF_MSG_ERROR);
    rc = 1;
    return;
  }
  xf_macro_frame frame;
  frame.name = m.name;
  frame.args = std::string(args);
  frame.argv.push_back(m.name);
  for (auto& w : split_blanks(args)) frame.argv.push_back(w);
  xf_macros.frames.push_back(std::move(frame));
  std::vector<std::string> lines = m.lines;  // the macro may rehash its own table
  for (const std::string& line : lines) {
    xfcom1(line, work_dir);
    if (rc != 0) break;
  }
  xf_macros.frames.pop_back();
}

}  // namespace

void xf_macro_reset() { xf_macros = xf_macro_state{}; }

const xf_macro_frame* xf_macro_current_frame() {
  return xf_macros.frames.empty() ? nullptr : &xf_macros.frames.back();
}

int xf_macro_kind_of(std::string_view path) {
  auto ext = os_extension(path);
  if (!ext) return -1;
  if (*ext == "x") return XF_MACRO_COMMAND;
  if (*ext == "tolva" || *ext == "ex" || *ext == "ux") return XF_MACRO_REXX;
  if (*ext == "flist") return XF_MACRO_FLIST;
  return -1;
}

int xf_macro_find(int kind, std::string_view name) {
  auto& t = xf_macros.tables[kind];
  for (std::size_t i = 0; i < t.size(); ++i)
    if (t[i].name == name) return static_cast<int>(i);
  return -1;
}

bool xf_macro_add(const std::string& path, int kind) {
  if (kind < 0) return false;
  std::string_view base = os_base_name(path);
  std::string name(base.substr(0, base.rfind('.')));
  int at = xf_macro_find(kind, name);
  xf_macro m;
  m.name = name;
  m.path = path;
  if (at >= 0)
    xf_macros.tables[kind][at] = std::move(m);
  else
    xf_macros.tables[kind].push_back(std::move(m));
  return true;
}

void xf_macro_scan_dir(const std::string& dir) {
  std::vector<std::string> names;
  if (os_list_dir(dir, names) != 0) return;
  std::string prefix = dir.empty() || dir.back() == '/' ? dir : dir + "/";
  for (const std::string& n : names) {
    int kind = xf_macro_kind_of(n);
    if (kind < 0) continue;
    std::string path = prefix + n;
    if (os_file_kind(path) == os_kind::regular) xf_macro_add(path, kind);
  }
}

bool xf_macro_step(std::string_view text, std::string_view first_word, std::string_view work_dir) {
  std::string name(first_word);
  for (const std::string& r : xf_macros.running)
    if (r == name) {
      xf_msgf(XF_MSG_ERROR, "..... Recursive call for \"%s\"", name.c_str());
      xf_run.stacked.clear();
      rc = 1;
      return true;
    }
  int kind = -1, at = -1;
  for (int k : {XF_MACRO_REXX, XF_MACRO_COMMAND}) {
    at = xf_macro_find(k, name);
    if (at >= 0) {
      kind = k;
      break;
    }
  }
  // A macro named by its file (`job.x`, `dir/job.tolva`) is found by its base name.
  if (kind < 0 && (name.find('.') != std::string::npos || name.find('/') != std::string::npos)) {
    std::string_view base = os_base_name(name);
    std::string stem(base.substr(0, base.rfind('.')));
    for (int k : {XF_MACRO_REXX, XF_MACRO_COMMAND}) {
      at = xf_macro_find(k, stem);
      if (at >= 0) {
        kind = k;
        break;
      }
    }
  }
  if (kind < 0) return false;
  xf_macros.running.push_back(name);
  std::string_view args = text.substr(first_word.size());
  if (!args.empty() && args[0] == ' ') args.remove_prefix(1);
  if (kind == XF_MACRO_REXX) {
    rc = xf_rexx_run(xf_macros.tables[kind][at].path, args, name);
  } else {
    run_command_macro(xf_macros.tables[kind][at], args, work_dir);
  }
  xf_macros.running.pop_back();
  return true;
}
