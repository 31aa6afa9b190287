// Small commands: TABExp (tab expansion), HEXType (a hexadecimal listing), PREServe and RESTore (a stack of
// settings).
#include <algorithm>
#include <cstdio>

#include "editor/cmds_small.h"
#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/handlers.h"
#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

namespace {

bool abbrev(const std::string& w, std::string_view full) { return !w.empty() && full.starts_with(w); }

// A line with its tabs turned to blanks up to the next multiple of `width`; with `keep_first` the first tab of the
// line stays a tab (it still moves the column as it would show).
std::string expand_tabs(std::string_view s, int32_t width, bool keep_first) {
  std::string out;
  int32_t col = 0;
  bool first = true;
  for (char ch : s) {
    if (ch != '\t') {
      out += ch;
      ++col;
      continue;
    }
    int32_t next = (col / width + 1) * width;
    if (keep_first && first)
      out += '\t';
    else
      out.append(static_cast<std::size_t>(next - col), ' ');
    col = next;
    first = false;
  }
  return out;
}

// The settings PREServe keeps and RESTore gives back.
struct preserved {
  xf_search_state search;
  xf_settings modes;
  int32_t case_mode = 1, case_search_s = 0, case_search_c = 0;
  int32_t format[7] = {};
  int32_t zone_first = 0, zone_last = 0;
  int32_t scope = 0;
  int32_t curline = 0, scale_row = 0, tabline_row = 0;
  bool has_file = false;
};
std::vector<preserved> preserve_stack;

}  // namespace

void xf_small_reset() { preserve_stack.clear(); }

// TABExp [All|Notf] [Sel|File] [width]
int xfcm_tabexp(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  bool keep_first = false, selection = false;
  int32_t width = 8;
  std::size_t k = 0;
  if (k < w.size() && (abbrev(w[k], "all") || abbrev(w[k], "notf"))) keep_first = w[k++][0] == 'n';
  if (k < w.size() && (abbrev(w[k], "sel") || abbrev(w[k], "file"))) selection = w[k++][0] == 's';
  if (k < w.size() && (!xf_parse_count(w[k++], width) || width < 1)) return xf_bad_operands(5);
  if (k < w.size()) return xf_bad_operands(5);
  if (!xf_ring.file || selection) return 1;  // no selection to work on
  xf_file& f = *xf_ring.file;
  if (!f.read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  for (int32_t l = 0; l < f.size; ++l) {
    if (!xf_in_scope(l) || f.line(l).find('\t') == std::string_view::npos) continue;
    std::string s = expand_tabs(f.line(l), width, keep_first);
    if (!f.keep_blanks) {
      while (s.size() > 1 && s.back() == ' ') s.pop_back();
    }
    xf_do('r', xf_new_text(s), l, 1, 1, nullptr, "xfcm_tabexp:1");
    f.alt_save++;
  }
  return 1;
}

// HEXType [target]: the lines' bytes within the zone, two lines each, in a new file named name.hextype.
int xfcm_hextype(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  std::string op(xf_trim(xf_operands(c.text)));
  int32_t status = 0, fell = 0;
  int32_t d = xf_target_distance(op, status, fell, false);
  if (status == xf_target_invalid) {
    rc = 5;
    return 1;
  }
  if (status == xf_target_not_found) {
    rc = fell ? fell : 2;
    return 1;
  }
  xf_file& f = *xf_ring.file;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  int32_t cur = xf_current_line();
  int32_t first = d >= 0 ? cur : cur + d + 1, last = d >= 0 ? cur + d - 1 : cur;
  first = std::max(first, 0);
  last = std::min(last, f.size - 1);
  std::vector<std::string> out;
  static const char digits[] = "0123456789ABCDEF";
  for (int32_t l = first; l <= last; ++l) {
    if (!xf_in_scope(l)) continue;
    std::string_view s = f.line(l);
    if (static_cast<int32_t>(s.size()) <= vf.zone_first) {
      out.emplace_back("20");
      out.emplace_back("");
      continue;
    }
    std::size_t end = std::min<std::size_t>(s.size(), static_cast<std::size_t>(vf.zone_last) + 1);
    std::string hex, chars;
    int n = 0;
    for (std::size_t i = static_cast<std::size_t>(vf.zone_first); i < end; ++i, ++n) {
      if (n > 0 && n % 4 == 0) {
        hex += ' ';
        chars += ' ';
      }
      unsigned char b = s[i] == '\n' ? 0 : static_cast<unsigned char>(s[i]);
      hex += digits[b >> 4];
      hex += digits[b & 15];
      chars += ' ';
      chars += b < 32 ? ' ' : static_cast<char>(b);
    }
    out.push_back(hex);
    out.push_back(chars);
  }
  std::string name = f.name + ".hextype";
  if (xf_open(name, xf_run.work_dir, true) != 0) return 1;
  xf_file& h = *xf_ring.file;
  if (h.size > 0) xfdel(0, h.size);
  xf_insert_read_lines(-1, out);
  xf_current_line() = xf_ring.lowest_line;
  return 1;
}

// PREServe: the search settings, the MODE words, MACRO, and the current file's and view's case, format, zone,
// scope and screen rows go on a stack.
int xfcm_preserve(const xf_cmd_call&) {
  preserved p;
  p.search = xf_search;
  p.modes = xf_set;
  if (xf_ring.file) {
    const xf_file& f = *xf_ring.file;
    const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
    p.has_file = true;
    p.case_mode = f.case_mode;
    p.case_search_s = f.case_search_s;
    p.case_search_c = f.case_search_c;
    std::copy(std::begin(f.format), std::end(f.format), p.format);
    p.zone_first = vf.zone_first;
    p.zone_last = vf.zone_last;
    p.scale_row = vf.scale_row;
    p.tabline_row = vf.tabline_row;
  }
  p.scope = xf_ring.view->scope;
  p.curline = xf_ring.view->curline;
  preserve_stack.push_back(std::move(p));
  return 1;
}

// RESTore: the newest PREServe record comes back; with none, nothing happens.
int xfcm_restore(const xf_cmd_call&) {
  if (preserve_stack.empty()) return 1;
  preserved p = std::move(preserve_stack.back());
  preserve_stack.pop_back();
  // Only the preserved kinds come back: the search strings remembered since stay.
  std::string last_locate = xf_search.last_locate, memorised = xf_search.memorised;
  bool has_memorised = xf_search.has_memorised;
  xf_search = p.search;
  xf_search.last_locate = last_locate;
  xf_search.memorised = memorised;
  xf_search.has_memorised = has_memorised;
  xf_settings& s = xf_set;
  s.mode_command_ispf = p.modes.mode_command_ispf;
  s.mode_prefix_ispf = p.modes.mode_prefix_ispf;
  s.mode_locate_stay = p.modes.mode_locate_stay;
  s.mode_enter_stay = p.modes.mode_enter_stay;
  s.mode_autoexit = p.modes.mode_autoexit;
  s.mode_number_goto = p.modes.mode_number_goto;
  s.mode_change_all = p.modes.mode_change_all;
  s.mode_redisplay = p.modes.mode_redisplay;
  s.mode_topline = p.modes.mode_topline;
  s.mode_get_stay = p.modes.mode_get_stay;
  s.mode_icursor = p.modes.mode_icursor;
  s.mode_reserved_skip = p.modes.mode_reserved_skip;
  s.mode_notimp = p.modes.mode_notimp;
  s.mode_scroll_wrap = p.modes.mode_scroll_wrap;
  s.mode_expand_on = p.modes.mode_expand_on;
  s.mode_expand_env = p.modes.mode_expand_env;
  s.macro_on = p.modes.macro_on;
  if (p.has_file && xf_ring.file) {
    xf_file& f = *xf_ring.file;
    xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
    f.case_mode = p.case_mode;
    f.case_search_s = p.case_search_s;
    f.case_search_c = p.case_search_c;
    std::copy(std::begin(p.format), std::end(p.format), f.format);
    vf.zone_first = p.zone_first;
    vf.zone_last = p.zone_last;
    vf.scale_row = p.scale_row;
    vf.tabline_row = p.tabline_row;
  }
  xf_ring.view->scope = p.scope;
  xf_ring.view->curline = p.curline;
  return 1;
}
