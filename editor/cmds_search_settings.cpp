// Handlers of the search settings (ARBchar, SPAN, VARblank, CASE, Zone, WRap, STAY, SCOpe, HEX, LASTLorc),
// of named points (Point) and of Locate.
#include <algorithm>
#include <cstdio>

#include "editor/command.h"
#include "editor/filetype.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"
#include "editor/trace.h"

namespace {




// A plain ON/OFF switch; no operand reports it.
int switch_setting(const xf_cmd_call& c, int32_t& value) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty())
    xf_msg(value ? 9 : 10, XF_MSG_INFO);
  else if (w == "on" || w == "off")
    value = w == "on";
  else
    return xf_bad_operands();
  return 1;
}


// The operands of a command as typed: behind the name's letters and one blank.
std::string_view after_name(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  std::size_t e = 0;
  while (e < s.size() && ((s[e] >= 'a' && s[e] <= 'z') || (s[e] >= 'A' && s[e] <= 'Z') || s[e] == '_')) ++e;
  if (e < s.size() && s[e] == ' ') ++e;
  return s.substr(e);
}

const char* const case_words[4] = {"Mixed Ignore", "Mixed Respect", "Uppercase Ignore", "Uppercase Respect"};

}  // namespace

int xfcm_arbchar(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... is %s %c", xf_search.arb_on ? "ON" : "OFF", xf_search.arb);
    return 1;
  }
  int32_t on = xf_search.arb_on;
  char ch = xf_search.arb;
  std::size_t k = 0;
  std::string w0 = xf_lower(w[0]);
  if (w0 == "on" || w0 == "off") {
    on = w0 == "on";
    k = 1;
  }
  if (k < w.size()) {
    if (w[k].size() != 1) return xf_bad_operands();
    ch = w[k][0];
    ++k;
  }
  if (k != w.size()) return xf_bad_operands();
  xf_search.arb_on = on;
  xf_search.arb = ch;
  return 1;
}

int xfcm_span(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  if (w.empty()) {
    std::string n = xf_search.span_lines == 0 ? "*" : std::to_string(xf_search.span_lines);
    xf_msgf(XF_MSG_INFO, "..... Is %s%s%s", xf_search.span_on ? "ON " : "OFF ", xf_search.span_blank ? "B " : "N ",
            n.c_str());
    return 1;
  }
  int32_t on = xf_search.span_on, blank = xf_search.span_blank, lines = xf_search.span_lines;
  std::size_t k = 0;
  if (w[k] == "on" || w[k] == "off") on = w[k++] == "on";
  if (k < w.size() && !w[k].empty() && std::string_view("blank").starts_with(w[k])) {
    blank = 1;
    ++k;
  } else if (k < w.size() && w[k].size() >= 1 && std::string_view("noblank").starts_with(w[k])) {
    blank = 0;
    ++k;
  }
  if (k < w.size()) {
    if (w[k] == "*")
      lines = 0;
    else if (!xf_parse_count(w[k], lines) || lines < 1)
      return xf_bad_operands();
    ++k;
  }
  if (k != w.size()) return xf_bad_operands();
  xf_search.span_on = on;
  xf_search.span_blank = blank;
  xf_search.span_lines = lines;
  return 1;
}

int xfcm_varblank(const xf_cmd_call& c) {
  return switch_setting(c, xf_search.varblank);
}

int xfcm_wrap(const xf_cmd_call& c) {
  return switch_setting(c, xf_search.wrap);
}

int xfcm_stay(const xf_cmd_call& c) {
  return switch_setting(c, xf_search.stay);
}

int xfcm_hex(const xf_cmd_call& c) {
  return switch_setting(c, xf_search.hex);
}

int xfcm_scope(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  xf_view& v = *xf_ring.view;
  if (w.empty())
    xf_msg(v.scope == 1 ? 53 : 52, XF_MSG_INFO);
  else if (std::string_view("display").starts_with(w))
    v.scope = 0;
  else if (std::string_view("all").starts_with(w))
    v.scope = 1;
  else
    return xf_bad_operands();
  return 1;
}

int xfcm_lastlorc(const xf_cmd_call& c) {
  std::string_view ops = xf_operands(c.text);
  if (xf_trim(ops).empty())
    xf_msgf(XF_MSG_INFO, "..... %s", xf_search.last_locate.c_str());
  else
    xf_search.last_locate.assign(ops);
  return 1;
}

// CASE [Uppercase|Mixed] [Respect|Ignore] [CRespect|CIgnore] [SRespect|SIgnore] [ft name]
int xfcm_case(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  xf_file* f = xf_ring.file;
  if (w.empty()) {
    if (!f) return 1;
    xf_msgf(XF_MSG_INFO, "..... Case %s %s %s", case_words[f->case_mode & 3],
            f->case_search_c ? "CIGNORE" : "CRESPECT", f->case_search_s ? "SIGNORE" : "SRESPECT");
    return 1;
  }
  int32_t mode = f ? f->case_mode : 1;
  bool upper = mode >= 2, ignore = mode == 0 || mode == 2;
  int32_t cs = f ? f->case_search_c : 0, ss = f ? f->case_search_s : 0;
  std::string ft;
  for (std::size_t k = 0; k < w.size(); ++k) {
    const std::string& x = w[k];
    auto is = [&x](std::string_view word, std::size_t min) { return x.size() >= min && word.starts_with(x); };
    if (x == "ft" && k + 2 == w.size()) {
      ft = w[k + 1];
      break;
    }
    if (is("cignore", 2) || is("crespect", 2)) cs = x[1] == 'i';
    else if (is("signore", 2) || is("srespect", 2)) ss = x[1] == 'i';
    else if (is("uppercase", 1)) upper = true;
    else if (is("mixed", 1)) upper = false;
    else if (is("respect", 1)) ignore = false;
    else if (is("ignore", 1)) ignore = true;
    else return xf_bad_operands();
  }
  int32_t value = upper ? (ignore ? 2 : 3) : (ignore ? 0 : 1);
  if (!ft.empty()) {
    xf_ft_set(XF_FT_CASE, ft, {value, cs, ss});
    if (!f || (ft != "*" && xf_ft_extension(f->name) != ft)) return 1;
  }
  if (!f) return 1;
  f->case_mode = value;
  f->case_search_c = cs;
  f->case_search_s = ss;
  return 1;
}

// Zone c1 [c2|*] for the file in this view; ZONE_Screen the same for the view's default.
int xfcm_zone(const xf_cmd_call& c) {
  bool screen = c.row_name.starts_with("zone_");
  xf_view& v = *xf_ring.view;
  if (!screen && !xf_ring.file) return 1;
  xf_view_file& vf = screen ? v.defaults : v.per_file[xf_ring.file_no];
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "...... is %d %d", vf.zone_first + 1, vf.zone_last + 1);
    return 1;
  }
  int32_t a = 0, b = 0x7fffffff;
  if (w.size() > 2 || !xf_parse_count(w[0], a) || a < 1) return xf_bad_operands();
  if (w.size() == 2 && w[1] != "*" && (!xf_parse_count(w[1], b) || b < a)) return xf_bad_operands();
  vf.zone_first = a - 1;
  vf.zone_last = b - 1;
  return 1;
}

// Point .name [OFF] | Point * [OFF] | Point
int xfcm_point(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  int32_t cur = xf_current_line();
  auto invalid = []() {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  };
  bool off = w.size() == 2 && xf_lower(w[1]) == "off";
  if (w.size() > 2 || (w.size() == 2 && !off)) return invalid();
  if (w.empty()) {
    std::string names;
    for (const xf_point& p : f.points)
      if (p.line == cur) names += (names.empty() ? "" : " ") + p.name;
    if (!names.empty()) xf_msg_text(names, XF_MSG_INFO);
    return 1;
  }
  if (w[0] == "*") {
    if (off) {
      f.points.clear();
      return 1;
    }
    std::vector<xf_point> sorted = f.points;
    std::stable_sort(sorted.begin(), sorted.end(), [](const xf_point& a, const xf_point& b) { return a.line < b.line; });
    int width = static_cast<int>(std::to_string(f.size).size());
    for (std::size_t k = 0; k < sorted.size();) {
      int32_t line = sorted[k].line;
      char head[64];
      std::snprintf(head, sizeof head, "Line %*.*d: ", width, width, line + 1);
      std::string text = head;
      bool first = true;
      for (; k < sorted.size() && sorted[k].line == line; ++k) {
        text += (first ? "" : " ") + sorted[k].name;
        first = false;
      }
      xf_msg_text(text, XF_MSG_INFO);
    }
    return 1;
  }
  const std::string& name = w[0];
  if (name.size() < 2 || name[0] != '.') return invalid();
  auto it = std::find_if(f.points.begin(), f.points.end(), [&](const xf_point& p) { return p.name == name; });
  if (off) {
    if (it == f.points.end()) {
      xf_msg(166, XF_MSG_ERROR);
      rc = 2;
      return 1;
    }
    f.points.erase(it);
    return 1;
  }
  if (cur < 0 || cur >= f.size) {
    xf_msg(145, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  if (it != f.points.end()) {
    if (it->line == cur) return 1;
    xf_msgf(XF_MSG_ERROR, "..... Name %s already in use.", name.c_str());
    rc = 1;
    return 1;
  }
  f.points.push_back({name, cur});
  return 1;
}

int xfcm_xedlocate(const xf_cmd_call& c) {
  // With ARBchar ON $ the operand is read as typed, before "$" words were replaced.
  bool raw = xf_search.arb_on && xf_search.arb == '$';
  xf_locate(raw ? after_name(c.com) : xf_operands(c.text), c.work_dir);
  return 1;
}

int xfcm_locate(const xf_cmd_call& c) {
  if (xf_set.mode_command_ispf) return xfcm_pdflocate(c);
  return xfcm_xedlocate(c);
}
