// Terminal input decoding: tty bytes, ncurses function keys and extended names, escape sequences, the glyph table.
#include "screen/host/term_keys.h"

#include <array>
#include <vector>

#include "screen/as_read.h"
#include "screen/host/host.h"

namespace {

constexpr int kBackspaceCode = 8, kDeleteCode = 127;

// Modifier bits of the xterm parameter less one: 1 Shift, 2 Alt, 4 Ctrl (higher bits, Super and so on, dropped).
uint16_t mods_from_bits(int bits) {
  uint16_t m = 0;
  if (bits & 1) m |= FSM_SHIFT;
  if (bits & 2) m |= FSM_ALT;
  if (bits & 4) m |= FSM_CTRL;
  return m;
}

// Keys of the extended terminfo names, by base name.
struct named_key {
  std::string_view name;
  int code;
};
constexpr named_key kExtendedBases[] = {
    {"UP", FSK_UP},    {"DN", FSK_DOWN},  {"LFT", FSK_LEFT}, {"RIT", FSK_RIGHT}, {"HOM", FSK_HOME},
    {"END", FSK_END},  {"NXT", FSK_PGDN}, {"PRV", FSK_PGUP}, {"IC", FSK_INSERT}, {"DC", kDeleteCode},
};

// The legacy xterm forms "CSI 1;m X" (cursor keys, Home, End, F1-F4) by final byte.
struct final_key {
  char final;
  int code;
};
constexpr final_key kFinalKeys[] = {
    {'A', FSK_UP},   {'B', FSK_DOWN}, {'C', FSK_RIGHT}, {'D', FSK_LEFT},     {'H', FSK_HOME},     {'F', FSK_END},
    {'P', FSK_F1},   {'Q', FSK_F1 + 1}, {'R', FSK_F1 + 2}, {'S', FSK_F1 + 3},
};

// The forms "CSI n;m ~" by their number n.
struct tilde_key {
  int n;
  int code;
};
constexpr tilde_key kTildeKeys[] = {
    {1, FSK_HOME},      {2, FSK_INSERT},     {3, kDeleteCode},    {4, FSK_END},        {5, FSK_PGUP},
    {6, FSK_PGDN},      {7, FSK_HOME},       {8, FSK_END},        {11, FSK_F1},        {12, FSK_F1 + 1},
    {13, FSK_F1 + 2},   {14, FSK_F1 + 3},    {15, FSK_F1 + 4},    {17, FSK_F1 + 5},    {18, FSK_F1 + 6},
    {19, FSK_F1 + 7},   {20, FSK_F1 + 8},    {21, FSK_F1 + 9},    {23, FSK_F1 + 10},   {24, FSK_F1 + 11},
};

// Shifted symbols of the keyboard and their plain keys, position for position (the start rows of the key table).
constexpr std::string_view kShifted = "!@#$%^&*()_+|~{}:\"<>?";
constexpr std::string_view kUnshifted = "1234567890-=\\`[];',./";
static_assert(kShifted.size() == kUnshifted.size());

// CP1252 glyphs of bytes 0x80-0x9F; 0 where the code page has none.
constexpr char32_t kCp1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017D, 0,
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0, 0x017E,
    0x0178};
constexpr char32_t kSubstitute = 0x25AF;  // a byte with no glyph of its own

// A control sequence split into its private marker, numeric parameters (with sub-parameters) and final byte.
struct csi_parts {
  char marker = 0;
  std::vector<std::vector<int>> params;
  char final = 0;
};

std::optional<csi_parts> split_csi(std::string_view body) {
  if (body.empty()) return std::nullopt;
  csi_parts p;
  p.final = body.back();
  body.remove_suffix(1);
  if (!body.empty() && (body.front() == '?' || body.front() == '>' || body.front() == '<' || body.front() == '=')) {
    p.marker = body.front();
    body.remove_prefix(1);
  }
  if (body.empty()) return p;
  p.params.emplace_back();
  int v = 0;
  for (char c : body) {
    if (c >= '0' && c <= '9') {
      v = v * 10 + (c - '0');
      if (v > 0x10ffff) return std::nullopt;
      continue;
    }
    if (c != ';' && c != ':') return std::nullopt;
    p.params.back().push_back(v);
    v = 0;
    if (c == ';') p.params.emplace_back();
  }
  p.params.back().push_back(v);
  return p;
}

int param(const csi_parts& p, size_t i, int fallback) {
  if (i >= p.params.size() || p.params[i].empty()) return fallback;
  return p.params[i][0];
}

// A key given by its Unicode code point with modifiers (CSI-u and modifyOtherKeys).
term_csi codepoint_key(int cp, uint16_t mods) {
  term_csi r;
  int byte;
  switch (cp) {
    case 13: case 9: case 27: byte = cp; break;
    case 8: case 127: byte = kBackspaceCode; break;
    default: byte = cp >= 32 ? term_byte_of(static_cast<char32_t>(cp)) : -1; break;
  }
  if (byte < 0) return r;
  r.kind = term_csi::key;
  r.k = (mods & (FSM_CTRL | FSM_ALT)) ? term_plain_key(byte, mods) : term_key{byte, mods};
  return r;
}

}  // namespace

uint16_t term_mods_from_param(int m) { return m > 1 ? mods_from_bits(m - 1) : 0; }

term_key term_tty_byte(int byte) {
  switch (byte) {
    case 0: return {' ', FSM_CTRL};
    case 8: case 127: return {kBackspaceCode, 0};
    case 9: case 10: case 13: case 27: return {byte, 0};
    case 28: return {'\\', FSM_CTRL};
    case 29: return {']', FSM_CTRL};
    case 30: return {'6', FSM_CTRL | FSM_SHIFT};
    case 31: return {'-', FSM_CTRL | FSM_SHIFT};
    default: break;
  }
  if (byte >= 1 && byte <= 26) return {'a' + byte - 1, FSM_CTRL};
  return {byte, 0};
}

term_key term_plain_key(int byte, uint16_t mods) {
  if (byte >= 'A' && byte <= 'Z') return {byte - 'A' + 'a', static_cast<uint16_t>(mods | FSM_SHIFT)};
  size_t at = kShifted.find(static_cast<char>(byte));
  if (byte < 128 && at != std::string_view::npos)
    return {static_cast<unsigned char>(kUnshifted[at]), static_cast<uint16_t>(mods | FSM_SHIFT)};
  return {byte, mods};
}

std::optional<term_key> term_fkey(int n) {
  // Twelve keys per modifier group, in the order none, Shift, Ctrl, Ctrl+Shift, Alt, Alt+Shift.
  static constexpr uint16_t kGroups[] = {0, FSM_SHIFT, FSM_CTRL, FSM_CTRL | FSM_SHIFT, FSM_ALT, FSM_ALT | FSM_SHIFT};
  if (n < 1 || n > 63) return std::nullopt;
  return term_key{FSK_F1 + (n - 1) % 12, kGroups[(n - 1) / 12]};
}

std::optional<term_key> term_extended_name(std::string_view name) {
  if (name.size() < 3 || name.front() != 'k') return std::nullopt;
  char digit = name.back();
  if (digit < '2' || digit > '8') return std::nullopt;
  std::string_view base = name.substr(1, name.size() - 2);
  for (const auto& b : kExtendedBases)
    if (b.name == base) return term_key{b.code, term_mods_from_param(digit - '0')};
  return std::nullopt;
}

term_csi term_parse_csi(std::string_view body) {
  term_csi r;
  auto parts = split_csi(body);
  if (!parts) return r;
  const csi_parts& p = *parts;
  if (p.final == 'u') {
    if (p.marker == '?') {
      r.kind = term_csi::kitty_answer;
      return r;
    }
    if (p.marker || p.params.empty()) return r;
    int event = p.params.size() > 1 && p.params[1].size() > 1 ? p.params[1][1] : 1;
    if (event == 3) return r;  // a release: the host makes its own
    return codepoint_key(param(p, 0, 0), term_mods_from_param(param(p, 1, 1)));
  }
  if (p.marker == '<' && (p.final == 'M' || p.final == 'm') && p.params.size() == 3) {
    r.kind = term_csi::mouse;
    r.button = param(p, 0, 0);
    r.x = param(p, 1, 1);
    r.y = param(p, 2, 1);
    r.release = p.final == 'm';
    return r;
  }
  if (p.marker) return r;
  if (p.final == '~') {
    int n = param(p, 0, 0);
    if (n == 27 && p.params.size() >= 3) return codepoint_key(param(p, 2, 0), term_mods_from_param(param(p, 1, 1)));
    if (n == 200 || n == 201) {
      r.kind = n == 200 ? term_csi::paste_begin : term_csi::paste_end;
      return r;
    }
    for (const auto& t : kTildeKeys)
      if (t.n == n) {
        r.kind = term_csi::key;
        r.k = {t.code, term_mods_from_param(param(p, 1, 1))};
        return r;
      }
    return r;
  }
  if (p.params.empty() && (p.final == 'I' || p.final == 'O')) {
    r.kind = p.final == 'I' ? term_csi::focus_in : term_csi::focus_out;
    return r;
  }
  for (const auto& f : kFinalKeys)
    if (f.final == p.final && param(p, 0, 1) == 1) {
      r.kind = term_csi::key;
      r.k = {f.code, term_mods_from_param(param(p, 1, 1))};
      return r;
    }
  return r;
}

char32_t term_glyph(uint8_t byte) {
  if (byte >= 0x20 && byte < 0x7f) return byte;
  if (byte >= 0xa0) return byte;
  if (byte >= 0x80) return kCp1252[byte - 0x80] ? kCp1252[byte - 0x80] : kSubstitute;
  return kSubstitute;
}

int term_byte_of(char32_t ch) {
  if (ch < 0x80 || (ch >= 0xa0 && ch <= 0xff)) return static_cast<int>(ch);
  for (int i = 0; i < 32; ++i)
    if (kCp1252[i] == ch) return 0x80 + i;
  return -1;
}
