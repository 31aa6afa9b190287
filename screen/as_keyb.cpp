// Keyboard files (asfkeyb): lines of rank and characters that rewrite the emitted and displayed keyboard rows.
#include <cstdio>
#include <fstream>
#include <sstream>

#include "screen/fs_state.h"

namespace {

// Names of terminal keys: lines that start with one of these (and have more fields) belong to other readers.
constexpr std::string_view kTerminalKeys[] = {"cu", "cr", "cd", "cl", "ins", "del", "enter", "+", "-"};

std::string lower(std::string_view s) {
  std::string r(s);
  for (char& c : r)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return r;
}

bool numbered_key(std::string_view name, char prefix, int last) {
  if (name.size() < 2 || name[0] != prefix) return false;
  int n = 0;
  for (char c : name.substr(1)) {
    if (c < '0' || c > '9') return false;
    n = n * 10 + (c - '0');
    if (n > last) return false;
  }
  return n >= 1;
}

bool terminal_key(std::string_view field) {
  std::string f = lower(field);
  for (std::string_view k : kTerminalKeys)
    if (f == k) return true;
  return numbered_key(f, 'l', 12) || numbered_key(f, 'f', 24) || numbered_key(f, 'r', 15);
}

std::string_view trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

// Cuts a line at each ":" that is not inside a quoted character ('c' or '\c').
std::vector<std::string_view> split_fields(std::string_view line) {
  std::vector<std::string_view> out;
  size_t from = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\'') {
      if (i + 3 < line.size() && line[i + 1] == '\\' && line[i + 3] == '\'')
        i += 3;
      else if (i + 2 < line.size() && line[i + 2] == '\'')
        i += 2;
      continue;
    }
    if (line[i] == ':') {
      out.push_back(trim(line.substr(from, i - from)));
      from = i + 1;
    }
  }
  out.push_back(trim(line.substr(from)));
  return out;
}

// A character written "0x" and hexadecimal digits, or one character between single quotes; -1 bad, -2 bad escape.
int parse_char(std::string_view s) {
  if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
    int v = 0;
    for (char c : s.substr(2)) {
      int d = (c >= '0' && c <= '9') ? c - '0' : (c >= 'a' && c <= 'f') ? c - 'a' + 10 : (c >= 'A' && c <= 'F') ? c - 'A' + 10 : -1;
      if (d < 0) return -1;
      v = v * 16 + d;
      if (v > 255) return -1;
    }
    return v;
  }
  if (s.size() == 3 && s[0] == '\'' && s[2] == '\'') return static_cast<unsigned char>(s[1]);
  if (s.size() == 4 && s[0] == '\'' && s[1] == '\\' && s[3] == '\'') {
    switch (s[2]) {
      case 'n': return '\n';
      case 't': return '\t';
      case '\\': return '\\';
      case '\'': return '\'';
      default: return -2;
    }
  }
  return -1;
}

struct line_error {
  int line;
  const char* text;
};

}  // namespace

void asfkeyb(const char* file, int kind) {
  if (kind < 0 || kind > 2) {
    fs_fail(28, "asfkeyb: invalid type");
    return;
  }
  if (kind != 0) g_as.keyfile_kind = kind;
  if (!file) {
    fs_ok();
    return;
  }
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    fs_fail(28, "asfkeyb: File %s not found", file);
    return;
  }
  std::ostringstream all;
  all << in.rdbuf();
  if (in.bad()) {
    fs_fail(28, "Error while reading file %s", file);
    return;
  }
  std::vector<std::string> lines;
  std::istringstream text(all.str());
  for (std::string l; std::getline(text, l);) lines.push_back(l);

  auto rows = g_as.rows;
  int row_len = g_as.row_len;
  auto fail = [&](line_error e) { fs_fail(28, "asfkeyb: file %s, line %d: %s", file, e.line, e.text); };
  // Each usable line: its number, rank and the two character fields.
  struct entry {
    int line, rank;
    std::string_view a, b;
  };
  std::vector<entry> entries;
  for (size_t n = 0; n < lines.size(); ++n) {
    std::string_view l = trim(lines[n]);
    if (l.empty() || l[0] == '*' || l[0] == '#' || l[0] == '+') continue;
    std::vector<std::string_view> f = split_fields(l);
    if (f.size() >= 2 && terminal_key(f[0])) continue;
    const int ln = static_cast<int>(n) + 1;
    if (f.size() != 3) return fail({ln, "invalid format"});
    if (f[0].size() != 1 || f[0][0] < '0' || f[0][0] > '6') return fail({ln, "invalid rank"});
    entries.push_back({ln, f[0][0] - '0', f[1], f[2]});
  }
  // First pass: the pairs of lower-case and upper-case characters become the two emitted rows.
  int pairs = 0;
  for (const entry& e : entries) {
    if (e.rank != 6) continue;
    int lo = parse_char(e.a), up = parse_char(e.b);
    if (lo == -2 || up == -2) return fail({e.line, "invalid escape format"});
    if (lo < 0) return fail({e.line, "invalid lowercase character format"});
    if (up < 0) return fail({e.line, "invalid uppercase character format"});
    if (pairs >= static_cast<int>(rows[0].size())) return fail({e.line, "invalid format"});
    rows[0][static_cast<size_t>(pairs)] = static_cast<uint8_t>(lo);
    rows[1][static_cast<size_t>(pairs)] = static_cast<uint8_t>(up);
    ++pairs;
  }
  if (pairs > 0) row_len = pairs;
  // Second pass: what each emitted character displays in the row that the rank names.
  for (const entry& e : entries) {
    if (e.rank == 6) continue;
    int emitted = parse_char(e.a);
    if (emitted == -2) return fail({e.line, "invalid escape format"});
    if (emitted < 0) return fail({e.line, "invalid emitted character format"});
    int shown = parse_char(e.b);
    if (shown == -2) return fail({e.line, "invalid escape format"});
    if (shown < 0) return fail({e.line, "invalid displayed character format"});
    int at = -1;
    for (int k = 0; k < row_len && at < 0; ++k)
      if (rows[0][static_cast<size_t>(k)] == emitted) at = k;
    if (at < 0) return fail({e.line, "emitted character not found"});
    rows[static_cast<size_t>(2 + e.rank)][static_cast<size_t>(at)] = static_cast<uint8_t>(shown);
  }
  g_as.rows = rows;
  g_as.row_len = row_len;
  g_as.keyfile_loaded = true;
  fs_ok();
}
