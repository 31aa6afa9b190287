// COMPIle runs a build in a session and marks the source lines its error lines name; NEXTError steps through
// them; CLEARErrors forgets the marks. The rules file tells, by file extension, which output lines are errors.
#include "editor/compile.h"

#include <algorithm>
#include <cstdio>

#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/regex.h"
#include "editor/ring.h"
#include "editor/session.h"
#include "editor/state.h"
#include "os/os_file.h"

xf_compile_state xf_compile;

namespace {

constexpr const char* rules_name = "tolva_compile.rules";

// Runs `body` with the legacy engine, the one the rules are written for.
template <typename F>
auto with_legacy(F body) {
  int32_t kind = xf_re.kind;
  xf_re.kind = XF_RE_LEGACY;
  auto r = body();
  xf_re.kind = kind;
  return r;
}

bool blank_line(std::string_view s) { return s.find_first_not_of(" \t") == std::string_view::npos; }

// Reads the rules file; false after the message (the rules are then empty).
bool parse_rules(const std::string& path, const std::string& text) {
  std::vector<xf_compile_rules> blocks;
  int line_no = 0;
  std::size_t i = 0;
  auto fault = [&](const char* pattern) {
    xf_msgf(XF_MSG_ERROR, pattern, path.c_str(), line_no);
    rc = 1;
    xf_compile.rules.clear();
    return false;
  };
  while (i < text.size()) {
    std::size_t e = text.find('\n', i);
    std::string line = text.substr(i, e == std::string::npos ? std::string::npos : e - i);
    i = e == std::string::npos ? text.size() : e + 1;
    ++line_no;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#' || line[0] == '*' || blank_line(line)) continue;
    if (line[0] != ' ' && line[0] != '\t') {
      std::size_t colon = line.find(':');
      if (colon == std::string::npos)
        return fault(blocks.empty() ? "file %s: invalid filetype on line %d" : "file %s: invalid rule on line %d");
      xf_compile_rules b;
      b.filetype = line.substr(0, colon);
      std::vector<std::string> w = xf_tokens(std::string_view(line).substr(colon + 1));
      std::size_t k = 0;
      if (k < w.size() && xf_lower(w[k]) != "nosource") {
        if (!xf_parse_count(w[k], b.number_index) || b.number_index < 1)
          return fault("file %s: invalid numerical ofset on line %d");
        ++k;
      }
      if (k < w.size() && xf_lower(w[k]) == "nosource") b.no_source = true;
      blocks.push_back(std::move(b));
      continue;
    }
    if (blocks.empty()) return fault("file %s: invalid filetype on line %d");
    std::size_t b = line.find_first_not_of(" \t");
    std::string rule = line.substr(b);
    if (!with_legacy([&] { return xf_re_compile(rule, false); })) {
      std::fprintf(stderr, "tolva: %s\n..... %s\n", rule.c_str(), xf_re.error.c_str());
      return fault("file %s: syntax error on rule line %d");
    }
    blocks.back().rules.push_back(rule);
  }
  xf_compile.rules = std::move(blocks);
  return true;
}

// Loads the rules file from the working directory, the home directory or the program's home. False when it is
// nowhere (`missing` set) or faulty.
bool load_rules(bool& missing) {
  missing = false;
  xf_compile.loaded = true;
  for (const std::string& dir : {xf_run.work_dir, xf_run.home, xf_run.xhome}) {
    if (dir.empty()) continue;
    std::string path = dir + (dir.back() == '/' ? "" : "/") + rules_name;
    if (os_file_kind(path) == os_kind::none) continue;
    std::string text;
    if (os_read_file(path, text) != 0) {
      xf_msg(104, XF_MSG_ERROR);
      rc = 1;
      return false;
    }
    return parse_rules(path, text);
  }
  missing = true;
  xf_compile.rules.clear();
  return false;
}

// The first rule of the extension's blocks that matches the line: its block, and where the hit starts.
const xf_compile_rules* matching_block(std::string_view line, int32_t& hit) {
  for (const xf_compile_rules& b : xf_compile.rules) {
    if (b.filetype != xf_compile.ext) continue;
    for (const std::string& rule : b.rules) {
      int32_t start = 0, end = 0;
      int r = with_legacy([&] { return xf_re_compile(rule, false) ? xf_re_exec(line, 0, true, start, end) : 0; });
      if (r == 1) {
        hit = start;
        return &b;
      }
    }
  }
  return nullptr;
}

// The `index`-th run of digits from `from`: its place and text; false when there are fewer.
bool nth_number(std::string_view line, std::size_t from, int32_t index, std::size_t& at, std::string& digits) {
  std::size_t i = from;
  for (int32_t n = 0; n < index; ++n) {
    while (i < line.size() && (line[i] < '0' || line[i] > '9')) ++i;
    if (i >= line.size()) return false;
    at = i;
    while (i < line.size() && line[i] >= '0' && line[i] <= '9') ++i;
  }
  digits = std::string(line.substr(at, i - at));
  return true;
}

int32_t ring_index(const std::string& name) {
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[static_cast<std::size_t>(i)]->name == name) return i;
  return -1;
}

// Marks the error lines of the output in the source file.
void mark_errors(const xf_file& out, xf_file& source) {
  for (int32_t l = 0; l < out.size; ++l) {
    std::string_view line = out.line(l);
    int32_t hit = 0;
    const xf_compile_rules* b = matching_block(line, hit);
    if (!b) continue;
    std::size_t at = 0;
    std::string digits;
    int32_t n = 0;
    if (!nth_number(line, static_cast<std::size_t>(hit), b->number_index, at, digits) ||
        !xf_parse_count(digits, n) || n < 1)
      continue;
    auto& pts = source.points;
    pts.erase(std::remove_if(pts.begin(), pts.end(), [&](const xf_point& p) { return p.name == digits; }),
              pts.end());
    pts.push_back({digits, std::min(n - 1, std::max(source.size - 1, 0))});
  }
}

// The source file an error line names, left of its number; empty when it names none.
std::string named_source(std::string_view line, std::size_t number_at) {
  if (number_at == 0) return {};
  std::size_t mark = line.find_last_of(",:(", number_at - 1);
  if (mark == std::string_view::npos || mark < 1) return {};
  if (line.size() > 1 && line[1] == ':') return std::string(line.substr(0, mark));
  std::size_t end = mark;
  if (end > 0 && line[end - 1] == '"') --end;
  std::size_t start = line.rfind(' ', end == 0 ? 0 : end - 1);
  start = start == std::string_view::npos ? 0 : start + 1;
  if (start < end && line[start] == '"') ++start;
  return start < end ? std::string(line.substr(start, end - start)) : std::string();
}

// The view that shows the output, and the other one for the source (made by splitting one view).
void show_source(int32_t out_file, const std::string& source_name, int32_t line) {
  if (xf_ring.views.size() == 1 && xf_ring.views[0]->height >= 12) xfcom2("screen 2", xf_run.work_dir);
  int32_t out_view = 0;
  for (int32_t v = 0; v < static_cast<int32_t>(xf_ring.views.size()); ++v)
    if (xf_ring.views[static_cast<std::size_t>(v)]->current_file == out_file) out_view = v;
  int32_t src_view = xf_ring.views.size() > 1 ? (out_view == 0 ? 1 : 0) : out_view;
  xf_set_view(out_view);
  xf_set_file(out_file);
  xf_current_line() = line;
  xf_set_view(src_view);
  if (xf_open(source_name, xf_run.work_dir, false) != 0) return;
}

int next_error(bool quiet) {
  if (xf_run.batch || !xf_ring.file) return 1;
  int32_t out_no = xf_compile.output.empty() ? -1 : ring_index(xf_compile.output);
  if (out_no < 0) {
    xf_msg(139, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  const xf_file& out = *xf_ring.files[static_cast<std::size_t>(out_no)];
  // The output's place is that of the view that shows it, if one does.
  const xf_view* shows = xf_ring.view;
  for (const auto& v : xf_ring.views)
    if (v->current_file == out_no) shows = v.get();
  int32_t cur = shows->per_file[static_cast<std::size_t>(out_no)].current_line;
  int32_t found = -1, hit = 0;
  const xf_compile_rules* block = nullptr;
  bool wrapped = false;
  for (int32_t l = std::max(cur + 1, 0); l < out.size && found < 0; ++l)
    if ((block = matching_block(out.line(l), hit))) found = l;
  for (int32_t l = 0; found < 0 && l <= std::min(cur, out.size - 1); ++l)
    if ((block = matching_block(out.line(l), hit))) {
      found = l;
      wrapped = true;
    }
  if (found < 0) {
    if (!quiet) xf_msg(106, XF_MSG_INFO);
    return 1;
  }
  if (wrapped) xf_msg(23, XF_MSG_INFO);
  std::string_view line = out.line(found);
  std::size_t at = 0;
  std::string digits;
  if (!nth_number(line, static_cast<std::size_t>(hit), block->number_index, at, digits)) {
    xf_msg(107, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  std::string source = block->no_source ? std::string() : named_source(line, at);
  if (source.empty()) source = xf_compile.source;
  show_source(out_no, source, found);
  if (!xf_ring.file) return 1;
  for (const xf_point& p : xf_ring.file->points)
    if (p.name == digits) {
      xf_current_line() = p.line;
      return 1;
    }
  xf_msg(166, XF_MSG_ERROR);
  rc = 2;
  return 1;
}

}  // namespace

void xf_compile_reset() { xf_compile = xf_compile_state{}; }

// COMPIle command | COMPIle -l | COMPIle command &
int xfcm_compile(const xf_cmd_call& c) {
  std::string text(xf_trim(xf_operands(c.text)));
  if (text.empty()) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (text == "-l") {
    bool missing = false;
    if (!load_rules(missing) && missing) {
      xf_msg(103, XF_MSG_ERROR);
      rc = 1;
    }
    return 1;
  }
  if (xf_run.batch) return 1;
  if (text.back() == '&') return xfcom2("shell " + text, c.work_dir);
  if (!xf_compile.loaded) {
    bool missing = false;
    load_rules(missing);
  }
  // The output file: the source's name with the extension "compile".
  std::string source = xf_ring.file ? xf_ring.file->name : std::string();
  std::string path;
  std::string ext;
  if (source.empty()) {
    path = xf_session_pick("compile");
  } else {
    std::size_t slash = source.rfind('/'), dot = source.rfind('.');
    bool has_ext = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    path = has_ext ? source.substr(0, dot) + ".compile" : source + ".compile";
    if (has_ext) ext = source.substr(dot + 1);
  }
  xf_session_run(text, nullptr, path);
  xf_compile.output = path;
  xf_compile.ext = ext;
  xf_compile.source = source;
  xfcom2("clearerrors", c.work_dir);
  int32_t out_no = ring_index(path), src_no = ring_index(source);
  if (out_no >= 0 && src_no >= 0)
    mark_errors(*xf_ring.files[static_cast<std::size_t>(out_no)], *xf_ring.files[static_cast<std::size_t>(src_no)]);
  rc = 0;
  return next_error(true);
}

int xfcm_nexterror(const xf_cmd_call&) { return next_error(false); }

// CLEARErrors: every line pointer whose name begins with a digit goes, in every file.
int xfcm_clearerrors(const xf_cmd_call&) {
  for (auto& f : xf_ring.files) {
    auto& pts = f->points;
    pts.erase(std::remove_if(pts.begin(), pts.end(),
                             [](const xf_point& p) { return !p.name.empty() && p.name[0] >= '0' && p.name[0] <= '9'; }),
              pts.end());
  }
  return 1;
}
