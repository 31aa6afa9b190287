// The REXX value (a double with decimals to show, or a string of bytes) and the number rules: test, rounding, text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum : int32_t { RX_NUM = 0, RX_STR = 1 };

// A value. A number keeps `num` and `decimals` (digits to show behind the point; <= 0 no such rule). A string keeps
// `text`; for a string, `numchk` caches whether the text is a number (0 unknown, 1 yes with num/decimals, 2 no), and
// whoever changes `text` calls set_text or clears numchk.
struct rx_value {
  int32_t kind = RX_STR;
  int32_t decimals = -1;
  double num = 0;
  std::string text;
  mutable int8_t numchk = 0;

  static rx_value number(double d, int32_t dec = -1) {
    rx_value v;
    v.kind = RX_NUM;
    v.num = d;
    v.decimals = dec;
    return v;
  }
  static rx_value string(std::string_view s) {
    rx_value v;
    v.text.assign(s.data(), s.size());
    return v;
  }
  void set_number(double d, int32_t dec) {
    kind = RX_NUM;
    num = d;
    decimals = dec;
    text.clear();
  }
  void set_text(std::string_view s) {
    kind = RX_STR;
    // Clearing and appending is the cheapest copy into the buffer already held, unless `s` lies in that buffer.
    if (s.data() >= text.data() && s.data() <= text.data() + text.size()) {
      text.assign(s.data(), s.size());
    } else {
      text.clear();
      text.append(s.data(), s.size());
    }
    numchk = 0;
  }
};

// NUMERIC settings of the running routine.
struct rx_numeric {
  int digits = 9;
  int fuzz = 0;
  int form = 0;  // 0 SCIENTIFIC, 1 ENGINEERING
};

// Whether a double is whole, as floor(x) == x says, but with a cheap conversion in the common range (beyond it
// every double is whole; infinities count as whole, NaN does not).
inline bool rx_is_whole(double x) {
  if (x > -9e18 && x < 9e18) return x == static_cast<double>(static_cast<long long>(x));
  return x == x;
}

// Whether `s` is a number by the language's rules; its double and count of decimals when it is.
bool rx_is_number(std::string_view s, double* out, int32_t* decimals);
// The value as a number: true with its double and decimals, false when it is a string that is no number.
bool rx_as_number(const rx_value& v, double* out, int32_t* decimals);
// Turn a string value that is a number into a number in place; false (unchanged) otherwise.
bool rx_to_number(rx_value& v);
// Round x to d significant digits through the %.*g text form; whole numbers and d >= 15 stand.
double rx_round(double x, int d);
// The text form of a number under the NUMERIC settings, appended to `out`. False for positive infinity.
bool rx_format_number(double x, int32_t decimals, const rx_numeric& n, std::string& out);
// The value's text: a string's own bytes, or a number formatted into `buf`. False for positive infinity.
bool rx_text(const rx_value& v, const rx_numeric& n, std::string& buf, std::string_view* out);
// A number printed with a printf format (%g, %30.15g ...) and leading blanks removed.
std::string rx_printf_number(const char* fmt, double x);
