// Text formatting: MARgins and FORMAT (the file's format block), FLOW (refilling paragraphs), and CEnter,
// LEFTAdjust and RIGHTAdjust (placing lines in a band).
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/compose.h"
#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

// The format block's fields, 0-based columns.
enum { F_LEFT, F_RIGHT, F_PARA, F_OFFSET, F_NOJUSTIFY, F_KIND, F_SPACE };
enum { K_BLANK, K_EXTENDED, K_DOT, K_DOTEXTENDED };
enum { S_SINGLE, S_DOUBLE, S_NONE };

// The character that stands for a sentence's second blank while a justified line is spread.
constexpr char held_blank = '\n';

xf_file& file() { return *xf_ring.file; }
int32_t fmt(int k) { return file().format[k]; }

bool is_blank_line(std::string_view s) { return s.find_first_not_of(' ') == std::string_view::npos; }
bool ends_sentence(std::string_view s) {
  std::size_t e = s.find_last_not_of(' ');
  return e != std::string_view::npos && (s[e] == '.' || s[e] == '!' || s[e] == '?');
}
bool starts_block(std::string_view s) {
  return !s.empty() && (s[0] == '\t' || s[0] == ' ' || s[0] == ':' || s[0] == '.');
}

// The paragraph around line `at`: false when only blank lines follow it.
bool find_paragraph(int32_t at, int32_t& first, int32_t& last) {
  const xf_file& f = file();
  while (at < f.size && is_blank_line(f.line(at))) ++at;
  if (at < 0 || at >= f.size) return false;
  int32_t kind = fmt(F_KIND);
  bool dots = kind == K_DOT || kind == K_DOTEXTENDED;
  bool extended = (kind == K_EXTENDED || kind == K_DOTEXTENDED) && fmt(F_LEFT) == 0;
  first = 0;
  for (int32_t l = at; l >= 0; --l) {
    std::string_view s = f.line(l);
    if (l != at && is_blank_line(s)) {
      first = l + 1;
      break;
    }
    if (dots && l != at && ends_sentence(s)) {
      first = l + 1;
      break;
    }
    if (extended && starts_block(s)) {
      first = l;
      break;
    }
  }
  last = f.size - 1;
  for (int32_t l = at; l < f.size; ++l) {
    std::string_view s = f.line(l);
    if (dots && !is_blank_line(s) && ends_sentence(s)) {
      last = l;
      break;
    }
    if (l > at && is_blank_line(s)) {
      last = l - 1;
      break;
    }
    if (extended && l > at && starts_block(s)) {
      last = l - 1;
      break;
    }
  }
  return true;
}

// The paragraph's words in one buffer, blanks single, with the sentence ends made as FORMAT says.
std::string joined_text(int32_t first, int32_t last, int32_t c, std::string& kept) {
  const xf_file& f = file();
  std::string buf;
  for (int32_t l = first; l <= last; ++l) {
    std::string_view s = f.line(l);
    if (l == first && c > 0) {
      kept = std::string(s.substr(0, std::min<std::size_t>(s.size(), static_cast<std::size_t>(c))));
      kept.resize(static_cast<std::size_t>(c), ' ');
      s = s.size() > static_cast<std::size_t>(c) ? s.substr(static_cast<std::size_t>(c)) : std::string_view();
    }
    for (char ch : s) {
      if (ch != ' ' || (!buf.empty() && buf.back() != ' ')) buf += ch;
    }
    if (l < last && !buf.empty() && buf.back() != ' ') buf += ' ';
  }
  while (!buf.empty() && buf.front() == ' ') buf.erase(0, 1);
  // Sentence ends: a stop followed by an upper-case letter, not a "." between two digits.
  int32_t space = fmt(F_SPACE);
  if (space == S_DOUBLE) {
    std::string out;
    for (std::size_t i = 0; i < buf.size(); ++i) {
      out += buf[i];
      char ch = buf[i];
      if (ch != '.' && ch != '!' && ch != '?') continue;
      std::size_t n = buf.find_first_not_of(' ', i + 1);
      if (n == std::string::npos || buf[n] < 'A' || buf[n] > 'Z') continue;
      bool digits = ch == '.' && i > 0 && i + 1 < buf.size() && std::isdigit(static_cast<unsigned char>(buf[i - 1])) &&
                    std::isdigit(static_cast<unsigned char>(buf[i + 1]));
      if (digits) continue;
      out += fmt(F_NOJUSTIFY) ? ' ' : held_blank;
      out += ' ';
      i = n - 1;
    }
    buf = out;
  }
  while (!buf.empty() && buf.back() == ' ') buf.pop_back();
  return buf;
}

// Spreads a line's gaps so that it fills `width`.
std::string justified(const std::string& line, int32_t width) {
  std::vector<std::string> words;
  std::size_t i = 0;
  while (i < line.size()) {
    std::size_t b = line.find_first_not_of(' ', i);
    if (b == std::string::npos) break;
    std::size_t e = line.find(' ', b);
    words.push_back(line.substr(b, e == std::string::npos ? std::string::npos : e - b));
    i = e == std::string::npos ? line.size() : e;
  }
  std::string out;
  if (words.size() <= 1) {
    out = words.empty() ? std::string() : words[0];
    out.resize(static_cast<std::size_t>(std::max<int32_t>(width, static_cast<int32_t>(out.size()))), ' ');
  } else {
    int32_t letters = 0;
    for (const std::string& w : words) letters += static_cast<int32_t>(w.size());
    int32_t gaps = static_cast<int32_t>(words.size()) - 1;
    int32_t shortage = std::max(0, width - letters - gaps);
    for (std::size_t k = 0; k < words.size(); ++k) {
      out += words[k];
      if (k + 1 == words.size()) break;
      int32_t n = shortage / gaps + 1 + (static_cast<int32_t>(k) < shortage % gaps ? 1 : 0);
      out.append(static_cast<std::size_t>(n), ' ');
    }
  }
  for (char& ch : out)
    if (ch == held_blank) ch = ' ';
  return out;
}

// Fills the paragraph first..last between the margins (from column c of the first line when c > 0). Returns the
// line behind the new text, which is the file's size when the text ends the file.
int32_t fill(int32_t first, int32_t last, int32_t c) {
  std::string kept;
  std::string buf = joined_text(first, last, c, kept);
  int32_t left = fmt(F_LEFT), right = fmt(F_RIGHT);
  int32_t p = fmt(F_PARA) >= 0 ? fmt(F_PARA) : std::max(0, left + fmt(F_OFFSET));
  std::vector<std::string> out;
  bool first_line = true;
  while (!buf.empty()) {
    int32_t width = c > 0 ? right - c + 1 : (first_line ? right - p + 1 : right - left + 1);
    width = std::max(width, 1);
    std::string line, rest;
    if (static_cast<int32_t>(buf.size()) <= width) {
      line = buf;
    } else {
      std::size_t i = static_cast<std::size_t>(width);
      while (i > 0 && buf[i] != ' ') --i;
      std::size_t j = i;
      while (j > 0 && buf[j - 1] == ' ') --j;
      if (i > 0) {
        std::size_t next = buf.find_first_not_of(' ', i);
        if (next != std::string::npos && std::string_view(",;:.!?").find(buf[next]) != std::string_view::npos) {
          std::size_t k = j;
          while (k > 0 && buf[k - 1] != ' ') --k;
          if (k > 0) {
            i = k - 1;
            j = i;
            while (j > 0 && buf[j - 1] == ' ') --j;
          }
        }
      }
      if (i == 0 || j == 0) {
        std::size_t b = buf.find(' ');
        i = b == std::string::npos ? buf.size() : b;
        j = i;
      }
      line = buf.substr(0, j);
      rest = buf.substr(i);
    }
    bool last_line = rest.find_first_not_of(' ') == std::string::npos;
    if (!fmt(F_NOJUSTIFY) && !last_line && static_cast<int32_t>(line.size()) <= width)
      line = justified(line, width);
    for (char& ch : line)
      if (ch == held_blank) ch = ' ';
    std::string lead = c > 0 ? (first_line ? kept : std::string(static_cast<std::size_t>(c), ' '))
                             : std::string(static_cast<std::size_t>(first_line ? p : left), ' ');
    std::string whole = lead + line;
    if (!file().keep_blanks)
      while (!whole.empty() && whole.back() == ' ') whole.pop_back();
    out.push_back(whole);
    std::size_t b = rest.find_first_not_of(' ');
    buf = b == std::string::npos ? std::string() : rest.substr(b);
    first_line = false;
  }
  xf_file& f = file();
  int32_t& cur = xf_current_line();
  int32_t saved = cur;
  int32_t old_count = last - first + 1;
  if (old_count > 1) xf_do('D', nullptr, first + 1, old_count - 1, 1, nullptr, "xfcm_flow:del");
  xf_do('d', nullptr, first, 1, 1, nullptr, "xfcm_flow:del");
  xf_drop_positions(first, old_count, first);
  std::vector<xf_text> texts;
  for (const std::string& s : out) texts.push_back(xf_new_text(s.empty() ? " " : s));
  int32_t n = static_cast<int32_t>(texts.size());
  if (n > 0) {
    xf_do('I', nullptr, first - 1, n, 1, &texts, "xfcm_flow:ins");
    xf_shift_positions(first - 1, n);
  }
  f.alt_save++;
  if (saved > last) saved += n - old_count;
  cur = std::clamp(saved, xf_ring.lowest_line, std::max(f.size - 1, xf_ring.lowest_line));
  return first + n;
}

// The line and column of the cursor when it stands on a file row (never in batch).
bool cursor_on_line(int32_t& line, int32_t& column) {
  if (xf_run.batch) return false;
  const xf_place& p = xf_cursor_place();
  if (p.kind != XP_LINE || p.line < 0 || p.line >= file().size) return false;
  line = p.line;
  column = p.column;
  return true;
}

bool word_is(const std::string& w, std::string_view full, std::size_t least) {
  return w.size() >= least && w.size() <= full.size() && full.starts_with(w);
}

// The lines an adjusting command works on: the cursor's or the current line, all, or a target; false to stop.
bool adjust_lines(const xf_cmd_call& c, int32_t& first, int32_t& last) {
  std::string op(xf_trim(xf_operands(c.text)));
  std::string w = xf_lower(op);
  xf_file& f = file();
  int32_t col = 0;
  if (w.empty()) {
    if (!cursor_on_line(first, col)) first = xf_current_line();
    last = first;
    return first >= 0 && first < f.size;
  }
  if (word_is(w, "all", 1)) {
    first = 0;
    last = f.size - 1;
    return true;
  }
  if (word_is(w, "sel", 1)) {
    xf_msg(58, XF_MSG_ERROR);
    rc = 1;
    return false;
  }
  return xf_target_range(op, first, last);
}

int adjust(const xf_cmd_call& c, int how) {
  if (!xf_ring.file) return 1;
  int32_t first = 0, last = -1;
  if (!adjust_lines(c, first, last)) return 1;
  xf_file& f = file();
  if (!f.read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  int32_t l = fmt(F_LEFT), r = fmt(F_RIGHT), w = r - l + 1;
  bool changed = false;
  for (int32_t line = std::max(first, 0); line <= last && line < f.size; ++line) {
    if (!xf_in_scope(line)) continue;
    std::string_view s = f.line(line);
    std::size_t b = s.find_first_not_of(' ');
    std::string text;
    if (b != std::string_view::npos) {
      std::size_t e = s.find_last_not_of(' ');
      std::string_view core = s.substr(b, e - b + 1);
      int32_t n = static_cast<int32_t>(core.size());
      int32_t start = l;
      if (how == 0) start = n > w ? std::max(0, l - (n - w) / 2) : l + (w - n) / 2;
      if (how == 2) start = n > r + 1 ? 0 : r - n + 1;
      text = std::string(static_cast<std::size_t>(start), ' ') + std::string(core);
    }
    if (text == s) continue;
    xf_do('r', xf_new_text(text.empty() && !f.keep_blanks ? " " : text), line, 1, 1, nullptr, "xfcm_adjust");
    changed = true;
  }
  if (changed) f.alt_save++;
  return 1;
}

}  // namespace

// MARgins left right [para | +n | -n]; no operand reports.
int xfcm_margins(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = file();
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    if (f.format[F_PARA] >= 0)
      xf_msgf(XF_MSG_INFO, "%d %d %d", f.format[F_LEFT] + 1, f.format[F_RIGHT] + 1, f.format[F_PARA] + 1);
    else if (f.format[F_OFFSET] >= 0)
      xf_msgf(XF_MSG_INFO, "%d %d +%d", f.format[F_LEFT] + 1, f.format[F_RIGHT] + 1, f.format[F_OFFSET]);
    else
      xf_msgf(XF_MSG_INFO, "%d %d %d", f.format[F_LEFT] + 1, f.format[F_RIGHT] + 1, f.format[F_OFFSET]);
    return 1;
  }
  auto bad = [] {
    xf_msg(16, XF_MSG_ERROR);
    rc = 1;
    return 1;
  };
  if (w.size() < 2 || w.size() > 3) return bad();
  int32_t left = 0, right = 0;
  if (!xf_parse_count(w[0], left) || left < 1) return bad();
  if (w[1] == "*") {
    if (f.trunc <= 0) {
      xf_msg(189, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
    right = f.trunc;
  } else if (!xf_parse_count(w[1], right)) {
    return bad();
  }
  if (left > right) return bad();
  int32_t para = -1, offset = 0;
  if (w.size() == 3) {
    const std::string& p = w[2];
    if (p[0] == '+' || p[0] == '-') {
      if (!xf_parse_count(std::string_view(p).substr(1), offset)) return bad();
      if (p[0] == '-') offset = -offset;
    } else if (!xf_parse_count(p, para) || para < 1) {
      return bad();
    } else {
      --para;
    }
  }
  f.format[F_LEFT] = left - 1;
  f.format[F_RIGHT] = right - 1;
  f.format[F_PARA] = para;
  f.format[F_OFFSET] = offset;
  return 1;
}

// FORMAT [JUSTIFY|NOJUSTIFY] [BLANK|EXTENDED|DOT|DOTEXTENDED] [SINGLE|DOUBLE|NONE]; no operand reports.
int xfcm_format(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = file();
  static const char* const justify_words[] = {"JUSTIFY", "NOJUSTIFY"};
  static const char* const kind_words[] = {"BLANK", "EXTENDED", "DOT", "DOTEXTENDED"};
  static const char* const space_words[] = {"SINGLE", "DOUBLE", "NONE"};
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  if (w.empty()) {
    xf_msg_text(std::string(justify_words[f.format[F_NOJUSTIFY]]) + " " + kind_words[f.format[F_KIND]] + " " +
                    space_words[f.format[F_SPACE]],
                XF_MSG_INFO);
    return 1;
  }
  int32_t nojustify = f.format[F_NOJUSTIFY], kind = f.format[F_KIND], space = f.format[F_SPACE];
  for (const std::string& x : w) {
    if (word_is(x, "justify", 1)) nojustify = 0;
    else if (word_is(x, "nojustify", 1)) nojustify = 1;
    else if (word_is(x, "blank", 1)) kind = K_BLANK;
    else if (word_is(x, "extended", 1)) kind = K_EXTENDED;
    else if (word_is(x, "dotextended", 4)) kind = K_DOTEXTENDED;
    else if (word_is(x, "dot", 3)) kind = K_DOT;
    else if (word_is(x, "single", 1)) space = S_SINGLE;
    else if (word_is(x, "double", 3)) space = S_DOUBLE;
    else if (word_is(x, "none", 4)) space = S_NONE;
    else {
      xf_msg(16, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
  }
  f.format[F_NOJUSTIFY] = nojustify;
  f.format[F_KIND] = kind;
  f.format[F_SPACE] = space;
  return 1;
}

// FLOW [cursor | cursor_strict | all | target]
int xfcm_flow(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  xf_file& f = file();
  if (!f.read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  std::string op(xf_trim(xf_operands(c.text)));
  std::string w = xf_lower(op);
  int32_t first = 0, last = 0, line = 0, col = 0;
  if (w.empty()) {
    bool on_line = cursor_on_line(line, col);
    if (!on_line) line = xf_current_line();
    if (!find_paragraph(std::max(line, 0), first, last)) return 1;
    int32_t next = std::min(fill(first, last, 0), f.size - 1);
    if (on_line) xf_cursor_to_line(next, col);
    return 1;
  }
  bool strict = word_is(w, "cursor_strict", 8);
  if (strict || word_is(w, "cursor", 1)) {
    if (!cursor_on_line(line, col) || col >= fmt(F_RIGHT)) {
      xf_msg(6, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
    if (!find_paragraph(line, first, last)) return 1;
    if (strict) first = line;
    fill(first, last, col);
    return 1;
  }
  if (word_is(w, "all", 1)) {
    int32_t at = 0;
    while (at < f.size && find_paragraph(at, first, last)) at = fill(first, last, 0);
    xf_current_line() = std::max(f.size - 1, xf_ring.lowest_line);
    return 1;
  }
  int32_t from = 0, to = -1;
  if (!xf_target_range(op, from, to)) return 1;
  int32_t at = from;
  while (at <= to && at < f.size && find_paragraph(at, first, last)) {
    if (first > to) break;
    int32_t before = f.size;
    at = fill(first, last, 0);
    to += f.size - before;  // the range follows the text as it grows or shrinks
  }
  return 1;
}

int xfcm_center(const xf_cmd_call& c) { return adjust(c, 0); }

int xfcm_leftadjust(const xf_cmd_call& c) { return adjust(c, 1); }

int xfcm_rightadjust(const xf_cmd_call& c) { return adjust(c, 2); }
