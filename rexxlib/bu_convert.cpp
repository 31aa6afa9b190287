// Conversion built-ins between characters, hexadecimal, binary, octal and decimal.
#include <cmath>
#include <cstdio>

#include "rexx/rx_state.h"
#include "rexxlib/bu_frame.h"

namespace {

std::string msg(const bu_call& c, const char* text) { return std::string(c.name) + "(): " + text; }

int hex_digit(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
  if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
  return -1;
}

// The hex digits of argument i with the blanks between groups taken out; error when a digit is bad or a blank
// stands at either end.
std::string hex_digits(bu_call& c, std::size_t i) {
  std::string_view s = c.str(i);
  std::string out;
  if (!s.empty() && (s.front() == ' ' || s.back() == ' ')) bu_error(c, i, msg(c, "invalid hexadecimal string."));
  for (char ch : s) {
    if (ch == ' ') continue;
    if (hex_digit(ch) < 0) bu_error(c, i, msg(c, "invalid hexadecimal string."));
    out += ch;
  }
  return out;
}

// Bytes of hex digits, a leading 0 added to an odd count.
std::string bytes_of_hex(std::string h) {
  if (h.size() % 2) h.insert(h.begin(), '0');
  std::string out;
  for (std::size_t i = 0; i < h.size(); i += 2)
    out += static_cast<char>(hex_digit(h[i]) * 16 + hex_digit(h[i + 1]));
  return out;
}

// A whole number argument as a long long, for D2C and D2X (it may be negative).
long long whole_arg(bu_call& c, std::size_t i) {
  bool num = c.has(i) && (c.v[i].kind == RX_NUM || rx_to_number(c.v[i]));
  double x = num ? bu_round(c.v[i].num, 9) : 0.5;
  if (!num || x != std::floor(x) || std::fabs(x) > 9.2e18)
    bu_error(c, i, msg(c, "argument 1 must be a whole number."));
  return static_cast<long long>(x);
}

// Hex digits (capitals) of n as a two's complement of `len` digits; len < 0: as many as the value needs.
std::string hex_of(long long n, long len) {
  static const char digits[] = "0123456789ABCDEF";
  auto u = static_cast<unsigned long long>(n);
  std::string out;
  if (len < 0) {
    do {
      out.insert(out.begin(), digits[u & 15]);
      u >>= 4;
    } while (u);
    return out;
  }
  for (long k = 0; k < len; ++k) {
    out.insert(out.begin(), k < 16 ? digits[u & 15] : (n < 0 ? 'F' : '0'));
    u = k < 16 ? u >> 4 : u;
  }
  return out;
}

// How hex digits are read: unsigned, as a two's complement (first digit 8 or more is negative), or with only a
// first digit F negative.
enum hex_read { unsigned_read, twos_complement, f_negative };

// The value of hex digits read the given way.
rx_value value_of_hex(bu_call& c, const std::string& h, hex_read how, int digits) {
  if (h.size() > 16) bu_error(c, 0, msg(c, "first argument overflow."));
  unsigned long long u = 0;
  for (char ch : h) u = u * 16 + static_cast<unsigned>(hex_digit(ch));
  double v = static_cast<double>(u);
  int first = h.empty() ? 0 : hex_digit(h[0]);
  if ((how == twos_complement && first >= 8) || (how == f_negative && first == 15)) v -= std::pow(16.0, static_cast<double>(h.size()));
  if (std::fabs(v) >= std::pow(10.0, digits)) bu_error(c, 0, msg(c, "value too big according to the current NUMERIC DIGITS setting."));
  return rx_value::number(v, 0);
}

int current_digits() { return rx_st.run ? rx_st.run->proc->numeric.digits : 9; }

}  // namespace

rx_value bu_c2x(bu_call& c) {
  bu_count(c, 1, 1);
  std::string_view s = c.str(0);
  rx_check_length(s.size() * 2, c.first);
  static const char digits[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char b : s) {
    out += digits[b >> 4];
    out += digits[b & 15];
  }
  return rx_value::string(out);
}

rx_value bu_c2o(bu_call& c) {
  bu_count(c, 1, 1);
  std::string out;
  char buf[8];
  for (unsigned char b : c.str(0)) {
    std::snprintf(buf, sizeof buf, "%3.3o", b);
    out += buf;
  }
  return rx_value::string(out);
}

rx_value bu_x2c(bu_call& c) {
  bu_count(c, 1, 1);
  return rx_value::string(bytes_of_hex(hex_digits(c, 0)));
}

rx_value bu_b2x(bu_call& c) {
  bu_count(c, 1, 1);
  std::string_view s = c.str(0);
  std::string bits;
  if (!s.empty() && (s.front() == ' ' || s.back() == ' ')) bu_error(c, 0, "B2X(): invalid binary string.");
  for (char ch : s) {
    if (ch == ' ') continue;
    if (ch != '0' && ch != '1') bu_error(c, 0, "B2X(): invalid binary string.");
    bits += ch;
  }
  while (bits.size() % 4) bits.insert(bits.begin(), '0');
  static const char digits[] = "0123456789ABCDEF";
  std::string out;
  for (std::size_t i = 0; i < bits.size(); i += 4)
    out += digits[(bits[i] - '0') * 8 + (bits[i + 1] - '0') * 4 + (bits[i + 2] - '0') * 2 + (bits[i + 3] - '0')];
  return rx_value::string(out);
}

rx_value bu_x2b(bu_call& c) {
  bu_count(c, 1, 1);
  std::string h = hex_digits(c, 0);
  std::string out;
  for (char ch : h) {
    int d = hex_digit(ch);
    for (int b = 3; b >= 0; --b) out += static_cast<char>('0' + ((d >> b) & 1));
  }
  return rx_value::string(out);
}

rx_value bu_c2d(bu_call& c) {
  bu_count(c, 1, 2);
  std::string_view s = c.str(0);
  if (s.size() > 4) bu_error(c, 0, "C2D(): first argument maximum value is \"FFFFFFFF\".");
  std::string hex;
  static const char digits[] = "0123456789ABCDEF";
  for (unsigned char b : s) {
    hex += digits[b >> 4];
    hex += digits[b & 15];
  }
  if (!c.has(1)) return value_of_hex(c, hex, unsigned_read, current_digits());
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  if (n == 0) return bu_whole(0);
  if (n * 2 < hex.size()) hex = hex.substr(hex.size() - n * 2);
  else hex.insert(0, n * 2 - hex.size(), '0');
  return value_of_hex(c, hex, twos_complement, current_digits());
}

rx_value bu_x2d(bu_call& c) {
  bu_count(c, 1, 2);
  std::string hex = hex_digits(c, 0);
  if (!c.has(1)) return value_of_hex(c, hex, unsigned_read, current_digits());
  auto n = static_cast<std::size_t>(bu_int(c, 1, 1, 0));
  if (n == 0) return bu_whole(0);
  if (n < hex.size()) hex = hex.substr(hex.size() - n);
  else hex.insert(0, n - hex.size(), '0');
  return value_of_hex(c, hex, f_negative, current_digits());
}

rx_value bu_d2x(bu_call& c) {
  bu_count(c, 1, 2);
  long long n = whole_arg(c, 0);
  long len = bu_int(c, 1, 1, -1);
  if (n < 0 && len < 0) bu_error(c, 0, msg(c, "argument 2 must be supplied when argument 1 is negative."));
  return rx_value::string(hex_of(n, len));
}

rx_value bu_d2c(bu_call& c) {
  bu_count(c, 1, 2);
  long long n = whole_arg(c, 0);
  long len = bu_int(c, 1, 1, -1);
  if (n < 0 && len < 0) bu_error(c, 0, msg(c, "argument 2 must be supplied when argument 1 is negative."));
  std::string bytes = bytes_of_hex(hex_of(n, len < 0 ? -1 : len * 2));
  return rx_value::string(bytes);
}

namespace {

// BITAND, BITOR, BITXOR: byte by byte; the shorter string is padded with `pad` when one is given, else the rest of
// the longer string stands as it is.
rx_value bitwise(bu_call& c, unsigned char (*op)(unsigned char, unsigned char)) {
  bu_count(c, 1, 3);
  std::string a(c.str(0, 0)), b(c.str(1, 1));
  bool padded = c.has(2);
  char pad = bu_pad(c, 2);
  if (a.size() < b.size()) a.swap(b);
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (i >= b.size() && !padded) break;
    auto y = static_cast<unsigned char>(i < b.size() ? b[i] : pad);
    a[i] = static_cast<char>(op(static_cast<unsigned char>(a[i]), y));
  }
  return rx_value::string(a);
}

}  // namespace

rx_value bu_bitand(bu_call& c) {
  return bitwise(c, [](unsigned char x, unsigned char y) { return static_cast<unsigned char>(x & y); });
}
rx_value bu_bitor(bu_call& c) {
  return bitwise(c, [](unsigned char x, unsigned char y) { return static_cast<unsigned char>(x | y); });
}
rx_value bu_bitxor(bu_call& c) {
  return bitwise(c, [](unsigned char x, unsigned char y) { return static_cast<unsigned char>(x ^ y); });
}
