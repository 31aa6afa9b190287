// The XEDIT change engine and its commands: Change, CN, SChange, SCN, XEDChange, RChange, SRChange, COUnt.
#include "editor/change.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "editor/find.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/regex.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"

xf_change_keys xf_sckeys;

namespace {


std::string_view rtrim(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}


// The operands as typed, before "$" words were replaced (ARBchar ON $ reads them so).
std::string_view after_name(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  std::size_t e = 0;
  while (e < s.size() && ((s[e] >= 'a' && s[e] <= 'z') || (s[e] >= 'A' && s[e] <= 'Z') || s[e] == '_')) ++e;
  if (e < s.size() && s[e] == ' ') ++e;
  return s.substr(e);
}

std::string_view typed_operands(const xf_cmd_call& c) {
  return xf_search.arb_on && xf_search.arb == '$' ? after_name(c.com) : xf_operands(c.text);
}


int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

// The arbitrary-character form of string 1.
struct arb_spec {
  bool on = false;
  std::vector<std::string> pieces;
  bool lead = false, trail = false;
};

// Leftmost match of the pieces from `col`; the text each gap covered goes to `gaps`.
bool arb_match(std::string_view line, int32_t col, int32_t zfirst, int32_t end, const arb_spec& a, bool fold,
               int32_t& ms, int32_t& me, std::vector<std::string_view>& gaps) {
  gaps.clear();
  int32_t pos = col;
  int32_t prev = -1;
  ms = -1;
  if (a.lead) {
    if (col > zfirst) return false;  // a leading gap matches once per line
    ms = prev = pos = zfirst;
  }
  for (const std::string& p : a.pieces) {
    int32_t at = xf_find_text(line, pos, end, p, fold);
    if (at < 0) return false;
    if (ms < 0)
      ms = at;
    else
      gaps.push_back(line.substr(prev, at - prev));
    prev = pos = at + static_cast<int32_t>(p.size());
  }
  if (a.trail) {
    if (ms < 0) ms = pos;
    gaps.push_back(line.substr(pos, std::max(end - pos, 0)));
    pos = std::max(end, pos);
  }
  me = pos;
  return true;
}

// String 2 with each arbitrary character replaced by the gap of the same rank.
void arb_replacement(std::string_view s2, char arb, const std::vector<std::string_view>& gaps, std::string& out) {
  std::size_t g = 0;
  for (char ch : s2) {
    if (ch == arb) {
      if (g < gaps.size()) out.append(gaps[g]);
      ++g;
    } else {
      out += ch;
    }
  }
}

void write_line(xf_file& f, int32_t l, std::string& out) {
  if (!f.keep_blanks) out.erase(rtrim(out).size());
  if (out.empty()) out.push_back(' ');
  xf_do('r', xf_new_text(out), l, 0, 1, nullptr, "xfchg:1");
}

}  // namespace

int xf_change_engine(const xf_change_request& r, int64_t& count) {
  count = 0;
  xf_file& f = *xf_ring.file;
  std::string s1 = r.s1, s2 = r.s2;
  if (xf_search.hex && !r.regex && (xf_hex_string(s1) < 0 || xf_hex_string(s2) < 0)) {
    xf_msg(150, XF_MSG_ERROR);
    return XF_CH_BAD_HEX;
  }
  const char arbc = xf_search.arb;
  arb_spec arb;
  if (!r.regex && xf_search.arb_on && xf_arb_split(s1, arbc, arb.pieces, arb.lead, arb.trail)) {
    arb.on = true;
    std::size_t gaps = arb.pieces.size() + arb.lead + arb.trail - (arb.pieces.empty() ? 0 : 1);
    if (static_cast<std::size_t>(std::count(s2.begin(), s2.end(), arbc)) > gaps) {
      xf_msg(142, XF_MSG_ERROR);
      return XF_CH_BAD_ARB;
    }
  }
  // CHANGE's own case word stands for the search word during the run.
  const bool fold = f.case_search_c != 0;
  if (r.regex && !xf_re_compile(s1, fold)) {
    xf_msg(69, XF_MSG_INFO);
    xf_msg_text("..... " + xf_re.error, XF_MSG_ERROR);
    return XF_CH_BAD_RE;
  }
  const xf_zone_cols z = xf_zone();
  const int32_t cur = xf_current_line();
  const int32_t first_line = std::max(cur, 0);
  const int64_t last_line = std::min<int64_t>(static_cast<int64_t>(cur) + r.lines - 1, f.size - 1);
  const std::string_view trimmed = rtrim(s1);
  const bool all_blank = !s1.empty() && trimmed.empty();
  const bool ends_blank = !all_blank && trimmed.size() < s1.size();
  const bool use_arb_in_re = r.regex && xf_search.arb_on;
  std::string out;
  std::vector<std::string_view> gaps;
  int32_t last_hit = -1;
  for (int32_t l = first_line; l <= last_line; ++l) {
    if (!xf_target_in_scope(l)) continue;
    const std::string_view line = f.line(l);
    const int32_t len = static_cast<int32_t>(line.size());
    out.clear();
    if (s1.empty() && !r.regex) {  // string 2 goes in at the zone's left edge
      ++count;
      last_hit = l;
      if (r.count_only) continue;
      out.assign(line);
      if (static_cast<int32_t>(out.size()) < z.first) out.resize(z.first, ' ');
      out.insert(static_cast<std::size_t>(z.first), s2);
      write_line(f, l, out);
      continue;
    }
    const int32_t end = std::min(len, z.last + 1);
    int32_t col = z.first, copied = 0, hits = 0, changed = 0;
    // An all-blank string 1 also matches a line that ends before the zone, which is then padded to it.
    if (all_blank && !arb.on && !r.regex && len <= z.first && line != " " &&
        z.first + static_cast<int64_t>(s1.size()) - 1 <= z.last && r.first <= 1) {
      ++count;
      last_hit = l;
      if (r.count_only) continue;
      out.assign(line);
      out.resize(z.first, ' ');
      out += s2;
      write_line(f, l, out);
      continue;
    }
    while (col <= end) {
      int32_t ms = -1, me = -1;
      if (r.regex) {
        int found = xf_regex_in_line(l, col, ms, me);
        if (found < 0) return XF_CH_BAD_RE;
        if (found == 0) break;
      } else if (arb.on) {
        if (!arb_match(line, col, z.first, end, arb, fold, ms, me, gaps)) break;
      } else {
        ms = xf_find_text(line, col, end, s1, fold);
        me = ms + static_cast<int32_t>(s1.size());
        if (ms < 0 && ends_blank && len <= z.last + 1) {
          // Trailing blanks of string 1 may stand for the line's end.
          int32_t c = len - static_cast<int32_t>(trimmed.size());
          if (c >= col && xf_find_text(line, c, len, trimmed, fold) == c) {
            ms = c;
            me = len;
          }
        }
        if (ms < 0) break;
      }
      const int32_t next = me > ms ? me : ms + 1;
      if (r.word && !xf_word_test(line, ms, me - ms, 3)) {
        col = ms + 1;
        continue;
      }
      if (++hits < r.first) {
        col = next;
        continue;
      }
      ++count;
      ++changed;
      last_hit = l;
      if (!r.count_only) {
        out.append(line.substr(copied, ms - copied));
        if (arb.on)
          arb_replacement(s2, arbc, gaps, out);
        else if (use_arb_in_re)
          arb_replacement(s2, arbc, std::vector<std::string_view>(8, xf_re_fetch()), out);
        else
          out += s2;
        copied = me;
        if (me == ms && ms < len) {  // an empty match: keep the byte it stood before and step over it
          out += line[ms];
          copied = ms + 1;
        }
      }
      col = next;
      if (r.per_line >= 0 && changed >= r.per_line) break;
      if (arb.on && arb.pieces.empty()) break;  // only arbitrary characters: once per line
    }
    if (changed && !r.count_only) {
      if (copied < len) out.append(line.substr(copied));
      write_line(f, l, out);
    }
  }
  if (count > 0) {
    if (!r.count_only) {
      f.alt_save++;
      f.alt_auto++;
    }
    if (!xf_search.stay && last_hit >= 0) xf_current_line() = last_hit;
  }
  return count > 0 || r.count_only ? XF_CH_DONE : XF_CH_NOT_FOUND;
}

namespace {

// How the typed name asks: a first "s" asks at each hit; an "n" second (CN) or third behind the "s" (SCN)
// means whole words.
void typed_mode(std::string_view ltext, bool& ask, bool& word) {
  std::string_view w = ltext.substr(0, ltext.find(' '));
  ask = !w.empty() && w[0] == 's';
  word = (w.size() > 1 && w[1] == 'n') || (ask && w.size() > 2 && w[2] == 'n');
}

// /string1/string2/ [target [n [m]]]
int xed_change(const xf_cmd_call& c, bool ask, bool word, bool regex) {
  if (!xf_ring.file) return 1;
  if (ask && xf_run.batch) return fail(205, 1);
  if (ask) return xfcm_unavailable(c);
  std::string_view ops = xf_trim(typed_operands(c));
  if (ops.empty()) return fail(16, 1);
  char delim = ops[0];
  std::size_t p2 = ops.find(delim, 1);
  if (p2 == std::string_view::npos) return fail(16, 1);
  xf_change_request r;
  r.word = word;
  r.regex = regex;
  r.s1.assign(ops.substr(1, p2 - 1));
  std::size_t p3 = ops.find(delim, p2 + 1);
  r.s2.assign(p3 == std::string_view::npos ? ops.substr(p2 + 1) : ops.substr(p2 + 1, p3 - p2 - 1));
  std::string_view rest = p3 == std::string_view::npos ? std::string_view() : xf_trim(ops.substr(p3 + 1));
  xf_search.last_locate.assign(ops.substr(0, p2 + 1));
  r.per_line = xf_set.mode_change_all ? -1 : 1;
  if (!rest.empty()) {
    int32_t tl = xf_target_length(rest);
    std::string target(rest.substr(0, tl));
    rest = xf_trim(rest.substr(tl));
    int32_t status = 0, fell = 0;
    int32_t dist = xf_target_distance(target, status, fell, false);
    if (status == xf_target_invalid) {
      rc = 5;
      return 1;
    }
    if (status == xf_target_not_found) {
      rc = 2;
      return 1;
    }
    if (dist <= 0) return fail(168, 1);
    r.lines = dist;
    std::vector<std::string> w = xf_tokens(rest);
    if (w.size() > 2) return fail(16, 1);
    if (!w.empty() && w[0] != "*" && !xf_parse_count(w[0], r.per_line)) return fail(16, 1);
    if (!w.empty() && w[0] == "*") r.per_line = -1;
    if (w.size() == 2 && (!xf_parse_count(w[1], r.first) || r.first < 1)) return fail(16, 1);
  }
  int64_t n = 0;
  int res = xf_change_engine(r, n);
  if (res != XF_CH_DONE && res != XF_CH_NOT_FOUND) {
    rc = 1;
    return 1;
  }
  if (n == 0) {
    xf_msgf(XF_MSG_ERROR, "..... String \"%s\" not found", r.s1.c_str());
    rc = 1;
  } else if (n == 1) {
    xf_msg(17, XF_MSG_INFO);
  } else {
    xf_msgf(XF_MSG_INFO, "..... %lld occurrences changed", static_cast<long long>(n));
  }
  return 1;
}

}  // namespace

int xfcm_xedchange(const xf_cmd_call& c) {
  return xed_change(c, false, false, false);
}

int xfcm_change(const xf_cmd_call& c) {
  if (xf_set.mode_command_ispf) return xfcm_pdfchange(c);
  bool ask, word;
  typed_mode(c.ltext, ask, word);
  return xed_change(c, ask, word, false);
}

int xfcm_rchange(const xf_cmd_call& c) {
  if (xf_set.mode_command_ispf) return xfcm_pdfrchange(c);
  return xed_change(c, false, false, true);
}

int xfcm_srchange(const xf_cmd_call& c) {
  bool ask = c.ltext.starts_with("s");
  return xed_change(c, ask, false, true);
}

// COUnt /string/ [target]: "\" as delimiter counts whole words.
int xfcm_count(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  std::string_view ops = xf_trim(typed_operands(c));
  if (ops.empty()) return fail(159, 1);
  char delim = ops[0];
  std::size_t p2 = ops.find(delim, 1);
  xf_change_request r;
  r.count_only = true;
  r.word = delim == '\\';
  r.s1.assign(p2 == std::string_view::npos ? rtrim(ops.substr(1)) : ops.substr(1, p2 - 1));
  std::string_view target = p2 == std::string_view::npos ? std::string_view() : xf_trim(ops.substr(p2 + 1));
  if (r.s1.empty()) return fail(169, 5);
  int32_t& cur = xf_current_line();
  const int32_t was = cur;
  if (!target.empty()) {
    int32_t status = 0, fell = 0;
    int32_t dist = xf_target_distance(target, status, fell, false);
    if (status != 0) {
      rc = status == xf_target_invalid ? 5 : 2;
      return 1;
    }
    if (dist < 0) {  // from the line after the target to the current line
      cur = cur + dist + 1;
      r.lines = -dist;
    } else {
      r.lines = std::max(dist, 1);
    }
  }
  int64_t n = 0;
  int res = xf_change_engine(r, n);
  // The engine left the current line at the last line with a hit, unless STAY is ON.
  if (res != XF_CH_DONE || n == 0 || xf_search.stay) cur = was;
  if (res != XF_CH_DONE) {
    rc = 1;
    return 1;
  }
  xf_msgf(XF_MSG_INFO, n < 2 ? "..... %lld occurrence found." : "..... %lld occurrences found.",
          static_cast<long long>(n));
  return 1;
}

// SCKeys [F]q [F]d: the keys of the selective form; without operands it shows them.
int xfcm_sckeys(const xf_cmd_call& c) {
  constexpr int32_t function_keys = 12;
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... KEY_QUIT = F%d   KEY_DO = F%d ", xf_sckeys.quit, xf_sckeys.doit);
    return 1;
  }
  int32_t keys[2] = {0, 0};
  if (w.size() != 2) return fail(16, 1);
  for (int k = 0; k < 2; ++k) {
    std::string_view v = w[k];
    if (!v.empty() && v[0] == 'f') v.remove_prefix(1);
    if (!xf_parse_count(v, keys[k]) || keys[k] < 1 || keys[k] > function_keys) return fail(16, 1);
  }
  xf_sckeys.quit = keys[0];
  xf_sckeys.doit = keys[1];
  char buf[160];
  std::snprintf(buf, sizeof buf, "F%d : Quit    Return : Skipp     F%d : Do     ^F%d : Stop asking", keys[0], keys[1],
                keys[1]);
  xf_sckeys.prompt = buf;
  std::snprintf(buf, sizeof buf, "..... String found; F%d key set for change", keys[1]);
  xf_sckeys.found = buf;
  return 1;
}
