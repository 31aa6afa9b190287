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
  int32_t first = 0, last = -1;
  if (!xf_target_range(xf_trim(xf_operands(c.text)), first, last)) return 1;
  xf_file& f = *xf_ring.file;
  const xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
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

namespace {

// Copies the kept settings into the record (save) or back out of it.
void transfer(preserved& p, bool save) {
  auto sync = [save](auto& kept, auto& live) {
    if (save)
      kept = live;
    else
      live = kept;
  };
  xf_settings& s = xf_set;
  sync(p.search.arb_on, xf_search.arb_on);
  sync(p.search.arb, xf_search.arb);
  sync(p.search.span_on, xf_search.span_on);
  sync(p.search.span_blank, xf_search.span_blank);
  sync(p.search.span_lines, xf_search.span_lines);
  sync(p.search.varblank, xf_search.varblank);
  sync(p.search.wrap, xf_search.wrap);
  sync(p.search.stay, xf_search.stay);
  sync(p.search.hex, xf_search.hex);
  for (int32_t xf_settings::*m :
       {&xf_settings::mode_command_ispf, &xf_settings::mode_prefix_ispf, &xf_settings::mode_locate_stay,
        &xf_settings::mode_enter_stay, &xf_settings::mode_autoexit, &xf_settings::mode_number_goto,
        &xf_settings::mode_change_all, &xf_settings::mode_redisplay, &xf_settings::mode_topline,
        &xf_settings::mode_get_stay, &xf_settings::mode_icursor, &xf_settings::mode_reserved_skip,
        &xf_settings::mode_notimp, &xf_settings::mode_scroll_wrap, &xf_settings::mode_expand_on,
        &xf_settings::mode_expand_env, &xf_settings::macro_on})
    sync(p.modes.*m, s.*m);
  sync(p.scope, xf_ring.view->scope);
  sync(p.curline, xf_ring.view->curline);
  if (!xf_ring.file || (!save && !p.has_file)) return;
  p.has_file = true;
  xf_file& f = *xf_ring.file;
  xf_view_file& vf = xf_ring.view->per_file[xf_ring.file_no];
  sync(p.case_mode, f.case_mode);
  sync(p.case_search_s, f.case_search_s);
  sync(p.case_search_c, f.case_search_c);
  for (int k = 0; k < 7; ++k) sync(p.format[k], f.format[k]);
  sync(p.zone_first, vf.zone_first);
  sync(p.zone_last, vf.zone_last);
  sync(p.scale_row, vf.scale_row);
  sync(p.tabline_row, vf.tabline_row);
}

}  // namespace

// PREServe: the search settings, the MODE words, MACRO, and the current file's and view's case, format, zone,
// scope and screen rows go on a stack.
int xfcm_preserve(const xf_cmd_call&) {
  preserved p;
  transfer(p, true);
  preserve_stack.push_back(std::move(p));
  return 1;
}

// RESTore: the newest PREServe record comes back; with none, nothing happens.
int xfcm_restore(const xf_cmd_call&) {
  if (preserve_stack.empty()) return 1;
  transfer(preserve_stack.back(), false);
  preserve_stack.pop_back();
  return 1;
}
