// POWerinput: the setting, and the reflow of the paragraph around the cursor as typing reaches a line's end.
#include "editor/power.h"

#include <algorithm>
#include <string_view>

#include "editor/cmdtable.h"
#include "editor/compose.h"
#include "editor/filetype.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"

namespace {

constexpr uint16_t kMark = 0x800;         // beside a byte: the character under the cursor
constexpr int32_t kNoMargin = 0x7ffffffe;  // a right margin that sets no limit

bool ends_sentence(std::string_view t) {
  std::size_t e = t.find_last_not_of(' ');
  return e != std::string_view::npos && std::string_view(".:;?!").find(t[e]) != std::string_view::npos;
}
bool is_blank_line(std::string_view t) { return t.find_first_not_of(" \t") == std::string_view::npos; }

// The setting's words: the word, the letters that must be typed, which of on/noprevious/nomove, and its value.
struct power_word {
  const char* word;
  std::size_t least;
  int slot;
  int32_t value;
};
const power_word kWords[] = {
    {"nomove", 3, 2, 1}, {"noprevious", 1, 1, 1}, {"move", 1, 2, 0}, {"previous", 1, 1, 0},
    {"on", 2, 0, 1},     {"off", 2, 0, 0},
};

}  // namespace

xf_flow_result xf_flow(const std::vector<std::string>& lines, int32_t cline, int32_t ccol, int32_t left,
                       int32_t width, bool move, bool keep_blanks) {
  // One text of all the lines, the cursor's character marked.
  std::vector<uint16_t> text;
  for (int32_t k = 0; k < static_cast<int32_t>(lines.size()); ++k) {
    std::string_view l = lines[static_cast<std::size_t>(k)];
    std::size_t skip = 0;
    while (skip < l.size() && static_cast<int32_t>(skip) < left && l[skip] == ' ') ++skip;
    std::string t(l.substr(skip));
    int32_t col = ccol - static_cast<int32_t>(skip);
    if (k == cline && col >= static_cast<int32_t>(t.size())) t.resize(static_cast<std::size_t>(col) + 1, ' ');
    if (k > 0) text.push_back(' ');
    std::size_t base = text.size();
    for (unsigned char ch : t) text.push_back(ch);
    if (k == cline) text[base + static_cast<std::size_t>(std::max(0, col))] |= kMark;
  }
  width = std::max(2, width);
  std::vector<std::vector<uint16_t>> out(1);
  auto blank = [](uint16_t c) { return (c & 0xff) == ' ' || (c & 0xff) == '\t'; };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const uint16_t c = text[i];
    const bool last = i + 1 == text.size();
    const int32_t limit = move && (last || (text[i + 1] & kMark)) ? width - 1 : width;
    std::vector<uint16_t>& cur = out.back();
    if (static_cast<int32_t>(cur.size()) < limit) {
      cur.push_back(c);
      continue;
    }
    if (move && !blank(c)) {
      auto sp = std::find_if(cur.rbegin(), cur.rend(), blank);
      std::size_t word = static_cast<std::size_t>(sp - cur.rbegin());
      if (sp != cur.rend() && static_cast<int32_t>(word) < width) {
        std::vector<uint16_t> next(cur.end() - static_cast<std::ptrdiff_t>(word), cur.end());
        cur.resize(cur.size() - word);
        next.push_back(c);
        out.push_back(std::move(next));
        continue;
      }
    }
    if (blank(c) && !(c & kMark))
      out.emplace_back();  // the blank at the break is dropped
    else
      out.push_back({c});
  }
  xf_flow_result r;
  for (std::size_t k = 0; k < out.size(); ++k) {
    std::string line(static_cast<std::size_t>(std::max(0, left)), ' ');
    for (uint16_t c : out[k]) {
      if (c & kMark) {
        r.cursor_line = static_cast<int32_t>(k);
        r.cursor_col = static_cast<int32_t>(line.size());
      }
      line.push_back(static_cast<char>(c & 0xff));
    }
    if (!keep_blanks)
      while (!line.empty() && line.back() == ' ') line.pop_back();
    r.lines.push_back(std::move(line));
  }
  return r;
}

void xf_pow(int whole) {
  xf_file* fp = xf_ring.file;
  const xf_place& at = xf_cursor_place();
  if (!fp || !fp->power[0] || at.kind != XP_LINE || at.line < 0 || at.line >= fp->size) return;
  xf_file& f = *fp;
  const int32_t line = at.line;
  int32_t first = line, last = line;
  if (!f.power[1] && line > 0) {
    int32_t k = line - 1;
    while (k >= 0 && !is_blank_line(f.line(k)) && !ends_sentence(f.line(k))) --k;
    first = k + 1;
  }
  if (whole) {
    int32_t k = line;
    while (!ends_sentence(f.line(k)) && k + 1 < f.size && !is_blank_line(f.line(k + 1))) ++k;
    last = std::max(line, std::min(k, f.size - 1));
  }
  const int32_t left = std::max(0, f.format[0]);
  const int32_t width = f.format[1] >= kNoMargin ? kNoMargin : f.format[1] - left + 1;
  std::vector<std::string> old;
  for (int32_t k = first; k <= last; ++k) old.emplace_back(f.line(k));
  xf_flow_result r = xf_flow(old, line - first, at.column, left, width, !f.power[2], f.keep_blanks != 0);
  // The new lines take the places of the old ones; more are inserted behind, fewer leave.
  const int32_t n_old = last - first + 1, n_new = static_cast<int32_t>(r.lines.size());
  for (int32_t k = 0; k < std::min(n_old, n_new); ++k)
    if (f.line(first + k) != r.lines[static_cast<std::size_t>(k)])
      xf_do('r', xf_new_text(r.lines[static_cast<std::size_t>(k)]), first + k, 1, 1, nullptr, "xf_pow:163");
  if (n_new > n_old) {
    std::vector<xf_text> more;
    for (int32_t k = n_old; k < n_new; ++k) more.push_back(xf_new_text(r.lines[static_cast<std::size_t>(k)]));
    xf_do('I', nullptr, first + n_old - 1, n_new - n_old, 1, &more, "xf_pow:163");
    xf_shift_positions(first + n_old - 1, n_new - n_old);
  } else if (n_old > n_new) {
    xfdel(first + n_new, n_old - n_new);
  }
  f.alt_save++;
  const int32_t cursor_line = first + r.cursor_line;
  if (cursor_line > line) xf_current_line() += 1;
  xf_cursor_to_line(cursor_line, r.cursor_col);
  xf_place p = at;
  p.line = cursor_line;
  p.column = r.cursor_col;
  xf_set_cursor_place(p);
}

// POWerinput ON|OFF [PREVIOUS|NOPREVIOUS] [MOVE|NOMOVE] [ft name]; with no operand it reports.
int xfcm_powerinput(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) {
    if (!xf_ring.file) return 1;
    const int32_t* p = xf_ring.file->power;
    xf_msgf(XF_MSG_INFO, "..... Is %s %s %s", p[0] ? "ON" : "OFF", p[1] ? "NOPREVIOUS" : "PREVIOUS",
            p[2] ? "NOMOVE" : "MOVE");
    return 1;
  }
  std::string ft;
  if (w.size() >= 3 && w[w.size() - 2] == "ft") {
    ft = w.back();
    w.resize(w.size() - 2);
  }
  int32_t v[3] = {0, 0, 0};
  if (ft.empty() && xf_ring.file) std::copy(xf_ring.file->power, xf_ring.file->power + 3, v);
  bool seen[3] = {false, false, false};
  for (const std::string& word : w) {
    const power_word* hit = nullptr;
    for (const power_word& pw : kWords)
      if (word.size() >= pw.least && std::string_view(pw.word).substr(0, word.size()) == word) {
        hit = &pw;
        break;
      }
    if (!hit || seen[hit->slot]) return xf_bad_operands();
    seen[hit->slot] = true;
    v[hit->slot] = hit->value;
  }
  if (w.empty()) return xf_bad_operands();
  if (!ft.empty()) {
    xf_ft_set(XF_FT_POWER, ft, {v[0], v[1], v[2]});
    return 1;
  }
  if (xf_ring.file) std::copy(v, v + 3, xf_ring.file->power);
  rc = 0;
  return 1;
}
