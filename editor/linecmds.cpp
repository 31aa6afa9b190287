// Handlers of the line commands: add, input, replace, delete, copy, move, duplicate, merge, shift, case,
// split and join, the column-pointer commands, STAck, PUT, PUTD, Get and REPEat.
#include "editor/linecmds.h"

#include <algorithm>
#include <cstdio>

#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"
#include "editor/trace.h"
#include "os/os_file.h"
#include "os/os_save.h"
#include "rexx/paloma.h"

xf_linecmd_state xf_lcmd;

namespace {

constexpr int32_t big_column = 100000;




// Splits off the first blank-delimited word.
std::string_view next_word(std::string_view& s) {
  s = xf_trim(s);
  std::size_t sp = s.find(' ');
  std::string_view w = s.substr(0, sp);
  s = sp == std::string_view::npos ? std::string_view() : xf_trim(s.substr(sp));
  return w;
}

// Splits off the target at the front.
std::string_view next_target(std::string_view& s) {
  s = xf_trim(s);
  std::size_t n = static_cast<std::size_t>(xf_target_length(s));
  std::string_view t = s.substr(0, n);
  s = xf_trim(s.substr(n));
  return t;
}

// A request that would take the file past the largest number of lines is refused before anything is made.
bool beyond_line_limit(int64_t adding) {
  if (adding <= 0x7fffffffLL - 1 - xf_ring.file->size) return false;
  xf_msgf(XF_MSG_ERROR, "..... More than %d lines in file.", 0x7ffffffe);
  rc = 5;
  return true;
}

int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

int invalid_operand(std::string_view text) {
  xf_msgf(XF_MSG_ERROR, "..... Invalid Operand: \"%.*s\"", static_cast<int>(text.size()), text.data());
  rc = 5;
  return 1;
}

// A current file that may be changed; otherwise false, with the read-only message where that is the reason.
bool writable() {
  if (!xf_ring.file) return false;
  if (!xf_ring.file->read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return false;
  }
  return true;
}

xf_file& file() { return *xf_ring.file; }
int32_t& current() { return xf_current_line(); }
bool in_scope(int32_t l) { return xf_target_in_scope(l); }
bool real_line(int32_t l) { return l >= 0 && l < file().size; }

// The text rule of every new or changed line: with KEEPBlanks OFF trailing blanks go and an empty line
// holds one blank.
xf_text make_line(std::string_view s) {
  if (!file().keep_blanks) {
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    if (s.empty()) s = " ";
  }
  return xf_new_text(s);
}

// One user-level change: the counter rises by one however many records it took.
struct one_change {
  int32_t before;
  one_change() : before(std::max(file().alt_save, 0)) {}
  void done() { file().alt_save = before + 1; }
};

// The lines that a range operand names: from the current line down for a positive distance, ending at it
// for a negative one. A top-of-file position counts and the range starts at line 0.
struct line_range {
  int32_t first = 0, last = -1;
  int32_t distance = 0;
  int32_t fell = 0;
  bool empty() const { return last < first; }
};

bool range_of(std::string_view op, line_range& r, bool forward_only = false) {
  int32_t status, fell;
  int32_t d = xf_target_distance(op, status, fell, forward_only);
  if (status == xf_target_invalid) {
    rc = 5;
    return false;
  }
  if (status == xf_target_not_found) {
    rc = fell ? fell : 2;
    return false;
  }
  int32_t cur = current();
  r.distance = d;
  r.fell = fell;
  if (d > 0) {
    r.first = cur;
    r.last = cur + d - 1;
  } else if (d < 0) {
    r.first = cur + d + 1;
    r.last = cur;
  } else {
    r.first = cur;
    r.last = cur - 1;
  }
  r.first = std::max(r.first, 0);
  r.last = std::min(r.last, file().size - 1);
  return true;
}

std::vector<int32_t> scoped_lines(int32_t first, int32_t last) {
  std::vector<int32_t> v;
  for (int32_t l = first; l <= last; ++l)
    if (in_scope(l)) v.push_back(l);
  return v;
}

// Deletes the given lines (ascending), each contiguous run as one operation, from the last run back.
void delete_lines(const std::vector<int32_t>& lines) {
  for (std::size_t e = lines.size(); e > 0;) {
    std::size_t b = e - 1;
    while (b > 0 && lines[b - 1] == lines[b] - 1) --b;
    int32_t start = lines[b], count = static_cast<int32_t>(e - b);
    if (count > 1) xf_do('D', nullptr, start + 1, count - 1, 1, nullptr, "linecmds:del1");
    xf_do('d', nullptr, start, 1, 1, nullptr, "linecmds:del2");
    xf_drop_positions(start, count, start);
    e = b;
  }
}

void insert_after(int32_t dest, std::vector<xf_text>& texts) {
  int32_t n = static_cast<int32_t>(texts.size());
  if (n == 0) return;
  xf_do('I', nullptr, dest, n, 1, &texts, "linecmds:ins");
  xf_shift_positions(dest, n);
}

void replace_line(int32_t l, std::string_view s, const char* tag) {
  if (file().line(l) == s) return;
  xf_do('r', make_line(s), l, 1, 1, nullptr, tag);
}

// The first in-scope line at or after `l` under SCOpe DISPLAY.
void settle_forward() {
  int32_t& cur = current();
  while (cur >= 0 && cur < file().size - 1 && !in_scope(cur)) ++cur;
}

// Where the cursor stands in the text of this file, for the commands that act on it (never in batch).
bool cursor_line(int32_t& line, int32_t& column) {
  const xf_cursor& c = file().cursor;
  if (c.screen_col != 0 || c.view != xf_ring.view_no || !real_line(c.line) || !in_scope(c.line)) return false;
  line = c.line;
  column = c.column - 1;
  return column >= 0;
}

// The name of a PUT or Get file: `name`, `name ext` or `name ext dir`; "=" keeps the current file's part and
// "." means no extension.
bool file_operand(std::string_view ops, std::string& path) {
  std::vector<std::string> w = xf_tokens(ops);
  if (w.empty() || w.size() > 3) return false;
  std::string cur = xf_ring.file ? xf_ring.file->name : std::string();
  std::size_t slash = cur.rfind('/');
  std::string cur_dir = slash == std::string::npos ? xf_run.work_dir : cur.substr(0, slash);
  std::string cur_base = slash == std::string::npos ? cur : cur.substr(slash + 1);
  std::size_t dot = cur_base.rfind('.');
  std::string cur_fn = dot == std::string::npos ? cur_base : cur_base.substr(0, dot);
  std::string cur_ft = dot == std::string::npos ? "" : cur_base.substr(dot + 1);
  if (w.size() == 1) {
    path = w[0] == "=" ? cur : w[0];
  } else {
    std::string fn = w[0] == "=" ? cur_fn : w[0];
    std::string ft = w[1] == "=" ? cur_ft : w[1] == "." ? "" : w[1];
    std::string name = ft.empty() ? fn : fn + "." + ft;
    if (w.size() == 3)
      path = (w[2] == "=" ? cur_dir : w[2]) + "/" + name;
    else
      path = name;
  }
  if (path.empty()) return false;
  if (path[0] != '/') path = (xf_run.work_dir == "/" ? "" : xf_run.work_dir) + "/" + path;
  return true;
}

// A file's bytes as lines, by the reader's rules: LF ends a line, CR before it goes, byte 0 reads as 10,
// trailing blanks go with KEEPBlanks OFF.
std::vector<std::string> split_file(const std::string& data, bool keep_blanks) {
  std::vector<std::string> out;
  std::size_t i = 0;
  while (i < data.size()) {
    std::size_t e = data.find('\n', i);
    bool last = e == std::string::npos;
    std::string line = data.substr(i, last ? std::string::npos : e - i);
    while (!line.empty() && line.back() == '\r') line.pop_back();
    for (char& ch : line)
      if (ch == 0) ch = '\n';
    if (!keep_blanks) {
      std::size_t keep = last ? 2 : 1;
      while (line.size() > keep && line.back() == ' ') line.pop_back();
    }
    out.push_back(std::move(line));
    if (last) break;
    i = e + 1;
  }
  return out;
}

int xed_replace(const xf_cmd_call& c) {
  if (!writable()) return 1;
  std::string_view text = xf_operands(c.text);
  one_change ch;
  int32_t cur = current();
  if (!real_line(cur)) {
    xf_do('i', make_line(text), -1, 1, 1, nullptr, "xfcm_replace:1");
    xf_shift_positions(-1, 1);
  } else {
    xf_do('r', make_line(text), cur, 1, 1, nullptr, "xfcm_replace:2");
  }
  ch.done();
  return 1;
}

int xed_delete(const xf_cmd_call& c) {
  if (!writable()) return 1;
  line_range r;
  if (!range_of(xf_trim(xf_operands(c.text)), r)) return 1;
  rc = r.fell;
  int32_t cur = current();
  std::vector<int32_t> lines = scoped_lines(r.first, r.last);
  if (lines.empty()) return 1;
  one_change ch;
  delete_lines(lines);
  ch.done();
  if (r.distance > 0)
    current() = cur < 0 ? cur : r.first;
  else
    current() = r.first - 1;
  current() = std::max(std::min(current(), file().size - 1), xf_ring.lowest_line);
  settle_forward();
  return 1;
}

// DELETE all | x | nx | .a .b, in the ISPF personality.
int pdf_delete(const xf_cmd_call& c) {
  if (!writable()) return 1;
  xf_file& f = file();
  bool all = false, x = false, nx = false;
  std::vector<int32_t> labels;
  for (const std::string& w : xf_tokens(xf_trim(xf_operands(c.text)))) {
    std::string lw = xf_lower(w);
    if (lw == "all") all = true;
    else if (lw == "x") x = true;
    else if (lw == "nx") nx = true;
    else if (lw.size() > 1 && lw[0] == '.') {
      int32_t line = xf_label_line(lw);
      if (line < 0) return fail(178, 1);
      labels.push_back(line);
    } else {
      return fail(16, 1);
    }
  }
  if ((!all && labels.size() != 2) || (all && !labels.empty())) return fail(179, 1);
  int32_t first = all ? 0 : std::min(labels[0], labels[1]);
  int32_t last = all ? f.size - 1 : std::max(labels[0], labels[1]);
  std::vector<int32_t> lines;
  for (int32_t l = first; l <= last; ++l) {
    bool shown = f.select[l] >= xf_ring.view->display[0] && f.select[l] <= xf_ring.view->display[1];
    if ((x && !nx && shown) || (nx && !x && !shown)) continue;
    lines.push_back(l);
  }
  if (lines.empty()) return 1;
  one_change ch;
  delete_lines(lines);
  ch.done();
  return 1;
}

// COPY and MOVE: target 1 gives the lines, target 2 the line they go behind.
int xed_copy_move(const xf_cmd_call& c, bool move) {
  if (!writable()) return 1;
  std::string_view ops = xf_operands(c.text);
  std::string t1(next_target(ops));
  std::string t2(next_target(ops));
  if (t1.empty() || t2.empty()) return fail(159, 5);
  if (!ops.empty()) return fail(16, 5);
  line_range r;
  if (!range_of(t1, r)) return 1;
  xf_target_result d = xf_target_resolve(t2, false, true);
  if (d.line == xf_target_invalid) {
    rc = 5;
    return 1;
  }
  if (d.line == xf_target_not_found) {
    rc = d.rc ? d.rc : 2;
    return 1;
  }
  int32_t dest = std::max(std::min(d.line, file().size - 1), xf_ring.lowest_line);
  one_change ch;
  int32_t n = xf_copy_lines(r.first, r.last, dest, move);
  if (n > 0) ch.done();
  const char* what = move ? "moved" : "copied";
  if (n == 1)
    xf_msgf(XF_MSG_INFO, " ..... 1 line %s", what);
  else
    xf_msgf(XF_MSG_INFO, " ..... %d lines %s", n, what);
  return 1;
}

int xed_duplicate(const xf_cmd_call& c) {
  if (!writable()) return 1;
  std::string_view ops = xf_operands(c.text);
  std::string_view nw = next_word(ops);
  int32_t times = 1;
  if (!nw.empty() && !xf_parse_count(nw, times)) return invalid_operand(nw);
  if (times == 0) return 1;
  int32_t cur = current();
  if (cur < 0 && xf_trim(ops).empty()) {  // from the top of file: blank lines
    if (beyond_line_limit(times)) return 1;
    one_change ch;
    std::vector<xf_text> texts;
    for (int32_t k = 0; k < times; ++k) texts.push_back(make_line(""));
    insert_after(-1, texts);
    ch.done();
    current() = times - 1;
    return 1;
  }
  line_range r;
  if (!range_of(ops, r, true)) return 1;
  std::vector<int32_t> lines = scoped_lines(r.first, r.last);
  if (lines.empty() || beyond_line_limit(static_cast<int64_t>(lines.size()) * times)) return 1;
  std::vector<xf_text> texts;
  texts.reserve(lines.size() * times);
  for (int32_t k = 0; k < times; ++k)
    for (int32_t l : lines) texts.push_back(xf_new_text(file().line(l)));
  int32_t n = static_cast<int32_t>(texts.size());
  one_change ch;
  insert_after(r.last, texts);
  ch.done();
  current() = r.last + n;
  return 1;
}

// The source laid over the destination: where the source has a blank the destination's byte stands.
std::string overlay(std::string_view dst, std::string_view src) {
  std::string out(dst);
  for (std::size_t i = 0; i < src.size(); ++i) {
    if (i < out.size()) {
      if (src[i] != ' ') out[i] = src[i];
    } else {
      out += src[i];
    }
  }
  return out;
}

int merge(const xf_cmd_call& c) {
  if (!writable()) return 1;
  std::string_view ops = xf_operands(c.text);
  std::string t1(next_target(ops));
  std::string t2(next_target(ops));
  if (t1.empty() || t2.empty()) return fail(159, 5);
  int32_t col = 1;
  std::string_view cw = next_word(ops);
  if (!cw.empty() && (!xf_parse_count(cw, col) || col < 1)) return invalid_operand(cw);
  if (!ops.empty()) return fail(16, 5);
  line_range r;
  if (!range_of(t1, r)) return 1;
  xf_target_result d = xf_target_resolve(t2, false, true);
  if (d.line == xf_target_invalid) {
    rc = 5;
    return 1;
  }
  if (d.line == xf_target_not_found) {
    rc = d.rc ? d.rc : 2;
    return 1;
  }
  int32_t n = r.last - r.first + 1;
  if (n <= 0) {
    xf_msg(171, XF_MSG_INFO);
    return 1;
  }
  int32_t dfirst = std::max(d.line, 0), dlast = dfirst + n - 1;
  if (dfirst <= r.last && r.first <= dlast) {
    xf_msgf(XF_MSG_ERROR, "..... Overlapping [%d-%d] [%d-%d] areas.", r.first + 1, r.last + 1, dfirst + 1, dlast + 1);
    rc = 5;
    return 1;
  }
  one_change ch;
  std::string pad(static_cast<std::size_t>(col - 1), ' ');
  for (int32_t k = 0; k < n; ++k) {
    std::string src = pad + std::string(file().line(r.first + k));
    int32_t dl = dfirst + k;
    if (dl < file().size) {
      replace_line(dl, overlay(file().line(dl), src), "xfcm_merge:1");
    } else {
      int32_t at = file().size - 1;
      xf_do('i', make_line(src), at, 1, 1, nullptr, "xfcm_merge:2");
      xf_shift_positions(at, 1);
    }
  }
  std::vector<int32_t> source;
  for (int32_t l = r.first; l <= r.last; ++l) source.push_back(l);
  delete_lines(source);
  ch.done();
  if (r.first < dfirst) dlast -= n;
  current() = std::max(std::min(dlast, file().size - 1), xf_ring.lowest_line);
  return 1;
}

int shift(const xf_cmd_call& c) {
  std::string_view ops = xf_trim(xf_operands(c.text));
  if (!xf_ring.file) return 1;
  if (ops.empty()) return fail(159, 5);
  std::string_view dw = next_word(ops);
  std::string ld = xf_lower(dw);
  bool right;
  if (std::string_view("right").starts_with(ld))
    right = true;
  else if (std::string_view("left").starts_with(ld))
    right = false;
  else
    return invalid_operand(dw);
  int32_t n = 1;
  std::string_view nw = next_word(ops);
  if (!nw.empty() && !xf_parse_count(nw, n)) return invalid_operand(nw);
  if (!writable()) return 1;
  line_range r;
  if (!range_of(ops, r)) return 1;
  rc = r.fell;
  if (r.distance == 0) return 1;
  if (!xf_search.stay) current() = r.distance > 0 ? std::max(r.last, r.first) : r.first;
  one_change ch;
  if (xf_shift_lines(r.first, r.last, n, right)) ch.done();
  return 1;
}

int change_case(const xf_cmd_call& c, bool upper) {
  if (!writable()) return 1;
  line_range r;
  if (!range_of(xf_trim(xf_operands(c.text)), r)) return 1;
  rc = r.fell;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  one_change ch;
  bool changed = false;
  for (int32_t l : scoped_lines(r.first, r.last)) {
    std::string s(file().line(l));
    int32_t end = std::min<int32_t>(static_cast<int32_t>(s.size()), vf.zone_last + 1);
    for (int32_t i = vf.zone_first; i < end; ++i) {
      char& ch_ = s[i];
      if (upper && ch_ >= 'a' && ch_ <= 'z') ch_ = static_cast<char>(ch_ - 'a' + 'A');
      if (!upper && ch_ >= 'A' && ch_ <= 'Z') ch_ = static_cast<char>(ch_ - 'A' + 'a');
    }
    if (s != file().line(l)) {
      replace_line(l, s, "xfcm_case:1");
      changed = true;
    }
  }
  if (changed) ch.done();
  if (!xf_search.stay && !r.empty()) current() = r.last;
  return 1;
}

// SPLTJOIN and C_SPlit: split the cursor's line at the cursor, or join the next line on beyond its end.
int split_join(bool cursor_stays) {
  if (xf_run.batch || !xf_ring.file) return 1;
  int32_t line, col;
  if (!cursor_line(line, col)) return fail(6, 1);
  if (!writable()) return 1;
  xf_file& f = file();
  std::string s(f.line(line));
  one_change ch;
  if (col < static_cast<int32_t>(s.size())) {
    std::string left = s.substr(0, col), right = s.substr(col);
    int32_t indent = 0;
    while (indent < static_cast<int32_t>(s.size()) && s[indent] == ' ') ++indent;
    replace_line(line, left, "xfcm_spltjoin:1");
    xf_do('i', make_line(std::string(indent < col ? indent : 0, ' ') + right), line, 1, 1, nullptr,
          "xfcm_spltjoin:2");
    xf_shift_positions(line, 1);
    if (!cursor_stays) {
      f.cursor.line = line + 1;
      f.cursor.column = (indent < col ? indent : 0) + 1;
      f.cursor.priority = 80;
    }
  } else {
    int32_t next = line + 1;
    while (next < f.size && !in_scope(next)) ++next;
    if (next >= f.size) return 1;
    std::string joined = s;
    joined.resize(col, ' ');
    joined += f.line(next);
    replace_line(line, joined, "xfcm_spltjoin:3");
    xf_do('d', nullptr, next, 1, 1, nullptr, "xfcm_spltjoin:4");
    xf_drop_positions(next, 1, next);
  }
  ch.done();
  return 1;
}

// Refuses a line that would reach the warning column: in batch there is no one to ask.
bool column_too_far(int64_t col) {
  if (col < big_column) return false;
  xf_msgf(XF_MSG_ERROR, "Warning: you are creating a line %lld long; you might run out of memory.",
          static_cast<long long>(col));
  rc = 1;
  return true;
}

bool pointer_in_zone() {
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  return file().column >= vf.zone_first && file().column <= vf.zone_last;
}

// The text operand of the column commands: everything one blank behind the command word.
std::string_view column_text(const xf_cmd_call& c) { return xf_operands(c.text); }

int cinsert(const xf_cmd_call& c) {
  if (!writable()) return 1;
  std::string_view text = column_text(c);
  if (text.empty()) return fail(159, 1);
  if (!pointer_in_zone()) return 1;
  xf_file& f = file();
  int32_t col = f.column;
  if (column_too_far(col)) return 1;
  int32_t cur = current();
  one_change ch;
  if (!real_line(cur)) {
    if (cur >= 0) return fail(145, 1);
    xf_do('i', make_line(std::string(col, ' ') + std::string(text)), -1, 1, 1, nullptr, "xfcm_cinsert:1");
    xf_shift_positions(-1, 1);
    current() = 0;
  } else {
    std::string s(f.line(cur));
    if (static_cast<int32_t>(s.size()) < col) s.resize(col, ' ');
    s.insert(col, text);
    replace_line(cur, s, "xfcm_cinsert:2");
  }
  ch.done();
  return 1;
}

int coverlay_creplace(const xf_cmd_call& c, bool replace) {
  if (!writable()) return 1;
  std::string_view text = column_text(c);
  if (text.empty()) return fail(159, 1);
  int32_t cur = current();
  if (!real_line(cur)) return fail(145, 1);
  if (!pointer_in_zone()) return 1;
  xf_file& f = file();
  int32_t col = f.column;
  if (column_too_far(static_cast<int64_t>(col) + static_cast<int64_t>(text.size()))) return 1;
  std::string s(f.line(cur));
  if (s.size() < col + text.size()) s.resize(col + text.size(), ' ');
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (replace)
      s[col + i] = text[i];
    else if (text[i] == '_')
      s[col + i] = ' ';
    else if (text[i] != ' ')
      s[col + i] = text[i];
  }
  one_change ch;
  if (s != f.line(cur)) {
    replace_line(cur, s, "xfcm_coverlay:1");
    ch.done();
  }
  return 1;
}

int cappend(const xf_cmd_call& c) {
  if (!writable()) return 1;
  int32_t cur = current();
  if (!real_line(cur)) return fail(145, 1);
  xf_file& f = file();
  std::string_view text = column_text(c);
  std::string s(f.line(cur));
  one_change ch;
  if (s == " ") {
    f.column = 0;
    s.assign(text);
  } else {
    f.column = static_cast<int32_t>(s.size());
    s.append(text);
  }
  if (text.empty()) return 1;
  replace_line(cur, s, "xfcm_cappend:1");
  ch.done();
  return 1;
}

// STAck [target [col [n|*]]]: lines onto the REXX stack.
int stack(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  std::string_view ops = xf_operands(c.text);
  std::string whole(xf_trim(ops));
  std::string t(next_target(ops));
  int32_t col = 1, n = -1;
  std::string_view cw = next_word(ops);
  if (!cw.empty() && (!xf_parse_count(cw, col) || col < 1)) return invalid_operand(whole);
  std::string_view nw = next_word(ops);
  if (!nw.empty() && nw != "*" && !xf_parse_count(nw, n)) return invalid_operand(whole);
  if (!ops.empty()) return invalid_operand(whole);
  line_range r;
  if (!range_of(t, r)) return 1;
  xf_file& f = file();
  if (r.distance == 0) {
    paloma_queue_add("");
    return 1;
  }
  for (int32_t l : scoped_lines(r.first, r.last)) {
    std::string_view s = f.line(l);
    if (s == " ") s = {};
    if (f.trunc > 0 && static_cast<int32_t>(s.size()) > f.trunc) s = s.substr(0, f.trunc);
    std::string_view part = static_cast<int32_t>(s.size()) >= col ? s.substr(col - 1) : std::string_view();
    if (n >= 0 && static_cast<int32_t>(part.size()) > n) part = part.substr(0, n);
    paloma_queue_add(std::string(part));
  }
  return 1;
}

// PUT and PUTD: the range to a file or to the prefix buffer.
int put(const xf_cmd_call& c, bool and_delete) {
  if (!xf_ring.file) return 1;
  if (and_delete && !writable()) return 1;
  std::string_view ops = xf_operands(c.text);
  std::string t(next_target(ops));
  std::string path;
  if (!ops.empty() && !file_operand(ops, path)) return fail(16, 5);
  line_range r;
  if (!range_of(t, r)) return 1;
  xf_file& f = file();
  std::vector<int32_t> lines = scoped_lines(r.first, r.last);
  if (path.empty()) {
    xf_lcmd.prefix_buffer.clear();
    for (int32_t l : lines) xf_lcmd.prefix_buffer.emplace_back(f.line(l));
  } else if (!xf_write_lines(path, lines)) {
    return 1;
  }
  if (and_delete && !lines.empty()) {
    int32_t cur = current();
    one_change ch;
    delete_lines(lines);
    ch.done();
    current() = r.distance > 0 ? (cur < 0 ? cur : r.first) : r.first - 1;
    current() = std::max(std::min(current(), f.size - 1), xf_ring.lowest_line);
  }
  return 1;
}

// Get [file [first [count]]]: lines of a file, or the prefix buffer, behind the current line.
int get(const xf_cmd_call& c) {
  if (!writable()) return 1;
  std::string_view ops = xf_operands(c.text);
  std::vector<std::string> lines;
  xf_file& f = file();
  if (xf_trim(ops).empty()) {
    lines = xf_lcmd.prefix_buffer;
  } else {
    std::vector<std::string> w = xf_tokens(xf_trim(ops));
    // Trailing numbers are the first record and the count.
    int32_t first = 1, count = -1;
    std::size_t names = w.size();
    auto number_at = [&](std::size_t k, int32_t& v) { return k < w.size() && xf_parse_count(w[k], v); };
    if (names >= 2 && (number_at(names - 1, first) || w[names - 1] == "*")) {
      if (names >= 3 && number_at(names - 2, first)) {
        if (w[names - 1] == "*")
          count = -1;
        else
          xf_parse_count(w[names - 1], count);
        names -= 2;
      } else {
        if (w[names - 1] == "*") return fail(16, 5);
        names -= 1;
      }
    }
    if (first < 1 || count == 0) return fail(16, 5);
    std::string joined;
    for (std::size_t k = 0; k < names; ++k) joined += (k ? " " : "") + w[k];
    std::string path;
    if (!file_operand(joined, path)) return fail(16, 5);
    std::vector<std::string> all;
    std::string found;
    if (!xf_read_lines(path, all, &found)) return 1;
    if (static_cast<int32_t>(all.size()) < first) {
      xf_msgf(XF_MSG_ERROR, "..... File %s has only %d records", found.c_str(), static_cast<int>(all.size()));
      rc = 1;
      return 1;
    }
    auto b = all.begin() + (first - 1);
    auto e = count < 0 || count > static_cast<int32_t>(all.end() - b) ? all.end() : b + count;
    lines.assign(std::make_move_iterator(b), std::make_move_iterator(e));
  }
  if (lines.empty()) return 1;
  int32_t at = std::min(current(), f.size - 1);
  int32_t n = xf_insert_read_lines(at, lines);
  if (!xf_set.mode_get_stay) current() = at + n;
  return 1;
}

// REPEat [target]: down (or up) one line and the command before REPEat again, for each line of the range.
int repeat(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  std::string op(xf_trim(xf_operands(c.text)));
  int32_t status, fell;
  int32_t n = xf_target_distance(op, status, fell, false);
  if (status == xf_target_invalid) {
    rc = 5;
    return 1;
  }
  if (status == xf_target_not_found) {
    rc = fell ? fell : 2;
    return 1;
  }
  const auto& h = xf_cmd.history;
  int32_t idx = static_cast<int32_t>(h.size()) - 2 - xf_lcmd.repeat_depth;
  if (idx < 0 || n == 0) return 1;
  std::string cmd = h[idx];
  if (!cmd.empty() && cmd[0] == '&') cmd.erase(0, 1);
  int32_t step = n > 0 ? 1 : -1;
  xf_lcmd.repeat_depth++;
  int32_t result = 0;
  for (int32_t k = 0; k < std::abs(n); ++k) {
    int32_t next = current() + step;
    if (next < xf_ring.lowest_line || next >= file().size) break;
    current() = next;
    result = xfcom2(cmd, c.work_dir);
    if (result != 0 || !xf_ring.file) break;
  }
  xf_lcmd.repeat_depth--;
  rc = result;
  return 1;
}

// C_LINEAdd, C_LINEDel, C_Dup: the cursor's line, from keys only.
int cursor_line_command(char what) {
  if (xf_run.batch || !xf_ring.file) return 1;
  int32_t line, col;
  if (!cursor_line(line, col)) return fail(6, 1);
  if (!writable()) return 1;
  if (what == 'a') xfadd(line, 1, true);
  if (what == 'd') xfdel(line, 1);
  if (what == 'u') xfdup(line, 1);
  return 1;
}

}  // namespace

int32_t xf_insert_read_lines(int32_t at, const std::vector<std::string>& lines) {
  if (lines.empty()) return 0;
  xf_file& f = file();
  std::vector<xf_text> texts;
  texts.reserve(lines.size());
  for (const std::string& s : lines) texts.push_back(make_line(s));
  // The file's upper-case rule does not apply to what is read in.
  int32_t saved_case = f.case_mode;
  f.case_mode = 0;
  one_change ch;
  insert_after(at, texts);
  f.case_mode = saved_case;
  ch.done();
  return static_cast<int32_t>(lines.size());
}

int32_t xf_label_line(std::string_view name) {
  if (!xf_ring.file || name.size() < 2 || name[0] != '.') return -1;
  std::string want = xf_lower(name);
  for (const xf_point& p : file().points)
    if (xf_lower(p.name) == want) return p.line;
  return -1;
}

bool xf_target_range(std::string_view op, int32_t& first, int32_t& last) {
  line_range r;
  if (!range_of(op, r)) return false;
  first = r.first;
  last = r.last;
  return true;
}

bool xf_file_operand(std::string_view ops, std::string& path) {
  return file_operand(ops, path);
}

bool xf_read_lines(const std::string& path, std::vector<std::string>& lines, std::string* found_name) {
  std::string found;
  int st = xf_find(path, xf_run.work_dir, false, found);
  if (st == XF_FIND_TOO_LONG) return fail(2, 1) == 0;
  if (st == XF_FIND_NOT_EDITABLE) return fail(1, 1) == 0;
  if (st != XF_FIND_OK) return fail(22, 1) == 0;
  os_kind kind = os_file_kind(found);
  if (kind == os_kind::none) return fail(22, 1) == 0;
  if (kind != os_kind::regular) return fail(1, 1) == 0;
  std::string data;
  if (os_read_file(found, data) != 0) return fail(0, 1) == 0;
  lines = split_file(data, xf_ring.file ? xf_ring.file->keep_blanks : false);
  if (found_name) *found_name = found;
  return true;
}

bool xf_write_lines(const std::string& path, const std::vector<int32_t>& lines) {
  xf_file& f = file();
  std::size_t slash = path.rfind('/');
  std::string dir = slash == 0 ? "/" : path.substr(0, slash);
  if (os_file_kind(dir) != os_kind::directory) return fail(8, 1) == 0;
  if (os_file_kind(path) == os_kind::directory) {
    xf_msgf(XF_MSG_ERROR, "..... Unable to open file \"%s\"", path.c_str());
    rc = 1;
    return false;
  }
  const char* eol = f.eol_unix ? "\n" : "\r\n";
  os_save_options opt;
  opt.target = path;
  opt.backup_on = false;
  os_save_result res = os_save(opt, [&](os_save_sink& s) {
    for (int32_t l : lines) {
      std::string text(f.line(l));
      for (char& ch : text)
        if (ch == '\n') ch = 0;
      s.append(text);
      s.append(eol);
    }
  });
  if (!res.ok()) {
    bool open_failed = res.status == os_save_status::create_failed || res.status == os_save_status::linked_to_itself;
    xf_msgf(XF_MSG_ERROR, open_failed ? "..... Unable to open file \"%s\"" : "..... Unable to write in file \"%s\"",
            path.c_str());
    rc = 1;
    return false;
  }
  return true;
}

void xf_linecmd_reset() { xf_lcmd = xf_linecmd_state{}; }

bool xf_shift_lines(int32_t first, int32_t last, int32_t n, bool right) {
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  int32_t cut = vf.zone_first;
  bool changed = false;
  for (int32_t l : scoped_lines(first, last)) {
    std::string s(file().line(l));
    int32_t len = static_cast<int32_t>(s.size());
    if (right) {
      if (s == " " || len < cut) continue;
      s.insert(static_cast<std::size_t>(cut), static_cast<std::size_t>(n), ' ');
    } else {
      if (len < cut) continue;
      s.erase(static_cast<std::size_t>(cut), static_cast<std::size_t>(std::min(n, len - cut)));
    }
    std::string_view before = file().line(l);
    xf_text t = make_line(s);
    if (std::string_view(t.get()) == before) continue;
    xf_do('r', std::move(t), l, 1, 1, nullptr, "xf_shift_lines:1");
    changed = true;
  }
  return changed;
}

int32_t xf_copy_lines(int32_t first, int32_t last, int32_t dest, bool move) {
  std::vector<int32_t> lines = scoped_lines(first, last);
  if (lines.empty()) return 0;
  std::vector<xf_text> texts;
  texts.reserve(lines.size());
  for (int32_t l : lines) texts.push_back(xf_new_text(file().line(l)));
  int32_t n = static_cast<int32_t>(lines.size());
  if (move) {
    int32_t before = static_cast<int32_t>(std::upper_bound(lines.begin(), lines.end(), dest) - lines.begin());
    delete_lines(lines);
    dest -= before;
  }
  if (xf_ring.view->scope != 1)
    while (dest + 1 < file().size && !xf_in_scope(dest + 1)) ++dest;
  insert_after(dest, texts);
  current() = dest + n;
  return n;
}

int xfcm_add(const xf_cmd_call& c) {
  std::string_view op = xf_trim(xf_operands(c.text));
  int32_t n = 1;
  if (!op.empty() && !xf_parse_count(op, n)) return fail(16, 5);
  if (!writable() || n == 0 || beyond_line_limit(n)) return 1;
  int32_t cur = current();
  if (cur >= file().size) cur = file().size - 1;
  xfadd(cur, n, true);
  return 1;
}

int xfcm_input(const xf_cmd_call& c) {
  if (!writable()) return 1;
  // The text begins one blank after the command word, so its leading blanks stay.
  std::string_view text = xf_operands(c.text);
  int32_t at = std::min(current(), file().size - 1);
  one_change ch;
  xf_do('i', make_line(text), at, 1, 1, nullptr, "xfcm_input:1");
  xf_shift_positions(at, 1);
  ch.done();
  current() = at + 1;
  return 1;
}

int xfcm_xedreplace(const xf_cmd_call& c) {
  return xed_replace(c);
}

int xfcm_replace(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? xfcm_pdfreplace(c) : xed_replace(c);
}

int xfcm_xeddelete(const xf_cmd_call& c) {
  return xed_delete(c);
}

int xfcm_pdfdelete(const xf_cmd_call& c) {
  return pdf_delete(c);
}

int xfcm_delete(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? pdf_delete(c) : xed_delete(c);
}

int xfcm_xedcopy(const xf_cmd_call& c) {
  return xed_copy_move(c, false);
}

int xfcm_copy(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? xfcm_pdfcopy(c) : xed_copy_move(c, false);
}

int xfcm_move(const xf_cmd_call& c) {
  return xed_copy_move(c, true);
}

int xfcm_duplicat(const xf_cmd_call& c) {
  return xed_duplicate(c);
}

int xfcm_merge(const xf_cmd_call& c) {
  return merge(c);
}

int xfcm_shift(const xf_cmd_call& c) {
  return shift(c);
}

int xfcm_uppercas(const xf_cmd_call& c) {
  return change_case(c, true);
}

int xfcm_lowercas(const xf_cmd_call& c) {
  return change_case(c, false);
}

int xfcm_spltjoin(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  return split_join(!w.empty() && w[0] == 's');
}

int xfcm_c_split(const xf_cmd_call&) {
  return split_join(true);
}

int xfcm_cappend(const xf_cmd_call& c) {
  return cappend(c);
}

int xfcm_cinsert(const xf_cmd_call& c) {
  return cinsert(c);
}

int xfcm_coverlay(const xf_cmd_call& c) {
  return coverlay_creplace(c, c.row_name.starts_with("cr"));
}

int xfcm_cfirst(const xf_cmd_call&) {
  if (xf_ring.file) file().column = xf_ring.view->per_file[xf_ring.file_no].zone_first;
  return 1;
}

int xfcm_clast(const xf_cmd_call&) {
  if (xf_ring.file) file().column = xf_ring.view->per_file[xf_ring.file_no].zone_last;
  return 1;
}

int xfcm_stack(const xf_cmd_call& c) {
  return stack(c);
}

int xfcm_put(const xf_cmd_call& c) {
  return put(c, c.row_name == "putd");
}

int xfcm_get(const xf_cmd_call& c) {
  return get(c);
}

int xfcm_repeat(const xf_cmd_call& c) {
  return repeat(c);
}

int xfcm_c_lineadd(const xf_cmd_call&) {
  return cursor_line_command('a');
}

int xfcm_c_linedel(const xf_cmd_call&) {
  return cursor_line_command('d');
}

int xfcm_c_dup(const xf_cmd_call&) {
  return cursor_line_command('u');
}
