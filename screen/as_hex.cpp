// Segmented fields: where a cell lies among the segments, and editing of hexadecimal digit cells with mirroring.
#include <algorithm>
#include <cstdio>

#include "screen/fs_state.h"

namespace {

fs_page& page() { return *g_fs.cur; }
const std::vector<int>& cells_of(int i) { return page().cells[static_cast<size_t>(i)]; }
uint16_t& ch_at(int i, int k) { return page().chars[static_cast<size_t>(cells_of(i)[static_cast<size_t>(k)])]; }
const int* map_of(int i) { return page().edits[static_cast<size_t>(i)].segments->map; }
int ncells(int i) { return static_cast<int>(cells_of(i).size()); }

int sign(int v) { return (v > 0) - (v < 0); }

int digit_value(uint16_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 0;  // a blank or null digit counts as 0 beside a real one
}

// The character that a digit pair stands for: "  " is 32, "00" is 10 (10 shows as 00), two nulls a null cell.
uint16_t pair_value(uint16_t a, uint16_t b) {
  if (a == FS_NULL_CELL && b == FS_NULL_CELL) return FS_NULL_CELL;
  if ((a & 0xff) == ' ' && (b & 0xff) == ' ') return 32;
  int v = digit_value(a) * 16 + digit_value(b);
  return static_cast<uint16_t>(v == 0 ? 10 : v);
}

void value_pair(uint16_t c, uint16_t& a, uint16_t& b) {
  if (c == FS_NULL_CELL) {
    a = b = FS_NULL_CELL;
    return;
  }
  char d[3];
  int v = (c & 0xff) == 10 ? 0 : c & 0xff;
  snprintf(d, sizeof d, "%2.2X", v);
  a = static_cast<uint16_t>(d[0]);
  b = static_cast<uint16_t>(d[1]);
}

// Places of the text cell and of the first hexadecimal digit of each content column.
struct column_index {
  std::vector<int> text, hex;
};

column_index index_columns(int i) {
  column_index ix;
  const int* map = map_of(i);
  int top = 0;
  for (int k = 0; k < ncells(i); ++k) top = std::max(top, std::abs(map[k]));
  ix.text.assign(static_cast<size_t>(top) + 1, -1);
  ix.hex.assign(static_cast<size_t>(top) + 1, -1);
  for (int k = 0; k < ncells(i); ++k) {
    int v = map[k];
    if (v > 0 && ix.text[static_cast<size_t>(v)] < 0) ix.text[static_cast<size_t>(v)] = k;
    if (v < 0 && ix.hex[static_cast<size_t>(-v)] < 0) ix.hex[static_cast<size_t>(-v)] = k;
  }
  return ix;
}

// First digit of the column of place k, and whether k is that digit.
int first_digit(int i, int k) {
  const int* map = map_of(i);
  return (k > 0 && map[k - 1] == map[k]) ? k - 1 : k;
}

}  // namespace

as_seg as_segment_at(int i, int k) {
  as_seg r;
  const fs_segments* sd = page().edits[static_cast<size_t>(i)].segments;
  if (!sd) return r;
  const int* map = sd->map;
  const int v = map[k];
  if (v == 0) return {2, k, k, 0};  // a separator cell takes no input
  const int col = std::abs(v) - 1;
  r.kind = v < 0 ? 1 : 0;
  for (int s = 0; s < sd->count; ++s) {
    const fs_segment& g = sd->seg[s];
    if (col >= g.start && col <= g.end && (g.kind == 1) == (v < 0)) {
      r.kind = g.kind;
      r.start = g.start;
      break;
    }
  }
  r.lo = r.hi = k;
  while (r.lo > 0 && sign(map[r.lo - 1]) == sign(v)) --r.lo;
  while (r.hi + 1 < ncells(i) && sign(map[r.hi + 1]) == sign(v)) ++r.hi;
  return r;
}

void as_mirror(int i, bool from_hex) {
  if (!page().edits[static_cast<size_t>(i)].segments) return;
  column_index ix = index_columns(i);
  for (size_t col = 1; col < ix.text.size(); ++col) {
    int t = ix.text[col], h = ix.hex[col];
    if (t < 0 || h < 0 || h + 1 >= ncells(i)) continue;
    if (from_hex) {
      ch_at(i, t) = pair_value(ch_at(i, h), ch_at(i, h + 1));
    } else {
      value_pair(ch_at(i, t), ch_at(i, h), ch_at(i, h + 1));
    }
  }
}

bool as_hex_accepts(int i, int k, int ch) {
  static constexpr std::string_view kDigits = "0123456789abcdefABCDEF ";
  if (ch > 255 || kDigits.find(static_cast<char>(ch)) == std::string_view::npos) return false;
  const int f = first_digit(i, k);
  if (f + 1 >= ncells(i)) return true;
  uint16_t a = f == k ? static_cast<uint16_t>(ch) : ch_at(i, f);
  uint16_t b = f == k ? ch_at(i, f + 1) : static_cast<uint16_t>(ch);
  return !(a == '0' && (b == 'a' || b == 'A'));  // 0A would be a line end inside the content
}

bool as_hex_insert(int i, int k, int ch, const as_seg& seg, bool binary) {
  const int f = first_digit(i, k);
  if (f != k) {  // the second digit is only overwritten
    ch_at(i, k) = static_cast<uint16_t>(ch);
    return true;
  }
  const int last = seg.hi - 1;  // first digit of the segment's last column
  const uint16_t v = pair_value(ch_at(i, last), ch_at(i, last + 1));
  const bool free = v == FS_NULL_CELL || (!binary && (v == 32 || v == 9 || v == 10 || v == 12 || v == 0));
  if (!free) return false;
  for (int q = last; q > k; q -= 2) {
    ch_at(i, q) = ch_at(i, q - 2);
    ch_at(i, q + 1) = ch_at(i, q - 1);
  }
  ch_at(i, k) = static_cast<uint16_t>(ch);
  ch_at(i, k + 1) = '0';
  return true;
}

void as_hex_delete(int i, int k, const as_seg& seg) {
  if (first_digit(i, k) != k) return;  // on the second digit the key does nothing
  for (int q = k; q + 3 <= seg.hi; q += 2) {
    ch_at(i, q) = ch_at(i, q + 2);
    ch_at(i, q + 1) = ch_at(i, q + 3);
  }
  ch_at(i, seg.hi - 1) = ch_at(i, seg.hi) = FS_NULL_CELL;
}

bool as_hex_second_digit(int i, int k) { return first_digit(i, k) != k; }

std::string as_status_text(int i, int k) {
  const fs_edit& e = page().edits[static_cast<size_t>(i)];
  const int v = map_of(i)[k];
  char buf[96];
  uint16_t c = ch_at(i, k);
  if (v < 0) {
    int f = first_digit(i, k);
    c = f + 1 < ncells(i) ? pair_value(ch_at(i, f), ch_at(i, f + 1)) : FS_NULL_CELL;
  }
  const int line = e.file_line + 1;
  const bool null = c == FS_NULL_CELL;
  const int byte = (c & 0xff) == 10 ? 0 : c & 0xff;
  if (v == 0)
    null ? snprintf(buf, sizeof buf, "Line=%d  Hex=--", line) : snprintf(buf, sizeof buf, "Line=%d  Hex=%2.2X", line, byte);
  else if (null)
    snprintf(buf, sizeof buf, "Line=%d  Col=%d  Hex=--", line, std::abs(v));
  else
    snprintf(buf, sizeof buf, "Line=%d  Col=%d  Hex=%2.2X", line, std::abs(v), byte);
  return buf;
}
