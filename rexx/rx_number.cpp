// Numbers: the test for a number, rounding through the %.*g form, and the text forms with decimals and FORM.
#include "rexx/rx_value.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

constexpr double pos_inf = std::numeric_limits<double>::infinity();
constexpr double powers_of_ten[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool rx_is_number(std::string_view s, double* out, int32_t* decimals) {
  std::size_t n = s.size();
  while (n > 0 && s[n - 1] == ' ') --n;  // trailing blanks are ignored
  char buf[128];
  std::string big;
  char* dst = buf;
  if (n >= sizeof buf) {
    big.resize(n + 1);
    dst = big.data();
  }
  std::size_t len = 0;
  bool digit_seen = false, exp_seen = false, point_seen = false;
  int plus = 0, minus = 0;
  char prev = 0;  // previous non-blank character
  for (std::size_t i = 0; i < n; ++i) {
    char c = s[i];
    if (c == ' ') {
      if (digit_seen && prev != '-') return false;
      continue;
    }
    if (is_digit(c)) {
      digit_seen = true;
    } else if (c == '+' || c == '-') {
      int& count = c == '+' ? plus : minus;
      if (++count > 1) return false;
      if (digit_seen && !exp_seen) return false;
    } else if (c == '.') {
      if (point_seen || exp_seen) return false;
      point_seen = true;
    } else if (c == 'e' || c == 'E') {
      if (exp_seen) return false;
      exp_seen = true;
    } else {
      return false;
    }
    dst[len++] = c;
    prev = c;
  }
  if (len == 0 || dst[len - 1] == '+' || dst[len - 1] == '-') return false;
  dst[len] = '\0';
  char* end = nullptr;
  double d = std::strtod(dst, &end);
  if (end == dst || d == pos_inf) return false;
  if (out) *out = d;
  if (decimals) {
    int32_t k = 0;
    bool has_exp = false;
    for (std::size_t i = 0; i < len; ++i)
      if (dst[i] == 'e' || dst[i] == 'E') has_exp = true;
    if (!has_exp) {
      std::size_t i = 0;
      while (i < len && dst[i] != '.') ++i;
      if (i < len)
        for (++i; i < len && is_digit(dst[i]); ++i) ++k;
    }
    *decimals = k > 15 ? 15 : k;
  }
  return true;
}

bool rx_as_number(const rx_value& v, double* out, int32_t* decimals) {
  if (v.kind == RX_NUM) {
    *out = v.num;
    *decimals = v.decimals;
    return true;
  }
  if (v.numchk == 0) {
    // The cache lives in the string's unused number fields.
    rx_value& m = const_cast<rx_value&>(v);
    m.numchk = rx_is_number(v.text, &m.num, &m.decimals) ? 1 : 2;
  }
  if (v.numchk != 1) return false;
  *out = v.num;
  *decimals = v.decimals;
  return true;
}

bool rx_to_number(rx_value& v) {
  double d;
  int32_t dec;
  if (!rx_as_number(v, &d, &dec)) return false;
  v.set_number(d, dec);
  return true;
}

double rx_round(double x, int d) {
  if (d >= 15 || rx_is_whole(x) || !std::isfinite(x)) return x;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*g", d, x);
  return std::strtod(buf, nullptr);
}

bool rx_format_number(double x, int32_t decimals, const rx_numeric& n, std::string& out) {
  if (x == pos_inf) return false;
  char buf[96];
  int len;
  if (decimals < 1 && std::fabs(x) < powers_of_ten[n.digits] && rx_is_whole(x)) {
    // A whole number within DIGITS prints as its digits, which is what %G gives, without the cost of %G.
    auto r = std::to_chars(buf, buf + sizeof buf, static_cast<long long>(x));
    out.append(buf, r.ptr);
    return true;
  }
  len = std::snprintf(buf, sizeof buf, "%.*G", n.digits, x);
  std::string t(buf, static_cast<std::size_t>(len));
  std::size_t e = t.find('E');
  if (e != std::string::npos && e + 3 < t.size() && t[e + 2] == '0') t.erase(e + 2, 1);  // 1E+09 -> 1E+9
  if (e == std::string::npos) {
    if (decimals >= 1) {
      std::size_t point = t.find('.');
      int p = static_cast<int>(point == std::string::npos ? t.size() : point);
      int k = point == std::string::npos ? 0 : static_cast<int>(t.size() - point - 1);
      if (k < decimals) {
        int zeros = std::min(n.digits - (p + k), decimals - (p + k)) + (point == std::string::npos ? 1 : 0);
        if (zeros > 0) {
          if (point == std::string::npos) t += '.';
          t.append(static_cast<std::size_t>(zeros), '0');
        }
      }
    }
  } else if (n.form == 1) {
    int ex = std::atoi(t.c_str() + e + 1);
    int r = ex % 3;
    if (r != 0) {
      double m = std::strtod(t.substr(0, e).c_str(), nullptr);
      int target;
      if (ex > 0) {
        for (int i = 0; i < r; ++i) m *= 10;
        target = ex - r;
      } else {
        int times = 3 - (-ex) % 3;
        for (int i = 0; i < times; ++i) m *= 10;
        target = ex - times;
      }
      len = std::snprintf(buf, sizeof buf, "%.*G", n.digits, m);
      t.assign(buf, static_cast<std::size_t>(len));
      t += target < 0 ? "E-" : "E+";
      t += std::to_string(target < 0 ? -target : target);
    }
  }
  out += t;
  return true;
}

bool rx_text(const rx_value& v, const rx_numeric& n, std::string& buf, std::string_view* out) {
  if (v.kind == RX_STR) {
    *out = v.text;
    return true;
  }
  buf.clear();
  if (!rx_format_number(v.num, v.decimals, n, buf)) return false;
  *out = buf;
  return true;
}

std::string rx_printf_number(const char* fmt, double x) {
  char buf[96];
  int len = std::snprintf(buf, sizeof buf, fmt, x);
  std::string_view s(buf, static_cast<std::size_t>(len));
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  return std::string(s);
}
