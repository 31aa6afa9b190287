// FORMAT: a number laid out by its digit string, in simple or exponential form, with fixed integer, decimal and
// exponent places.

#include "rexx/rx_state.h"
#include "rexxlib/bu_frame.h"

namespace {

// A number as sign, digit string and exponent: value = digits x 10^exp. Zero has no digits.
struct decimal {
  bool negative = false;
  std::string digits;
  long long exp = 0;
};

// Reads the text of a number (blanks around it and after its sign allowed); false when it is none.
bool read_decimal(std::string_view s, decimal& out) {
  std::size_t i = 0, n = s.size();
  auto skip_blanks = [&] {
    while (i < n && s[i] == ' ') ++i;
  };
  skip_blanks();
  if (i < n && (s[i] == '-' || s[i] == '+')) {
    out.negative = s[i] == '-';
    ++i;
    skip_blanks();
  }
  bool any = false, point = false;
  std::string raw;
  long long frac = 0;
  for (; i < n; ++i) {
    char ch = s[i];
    if (ch >= '0' && ch <= '9') {
      raw += ch;
      any = true;
      if (point) ++frac;
    } else if (ch == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (!any) return false;
  long long ex = 0;
  if (i < n && (s[i] == 'e' || s[i] == 'E')) {
    ++i;
    bool neg = false;
    if (i < n && (s[i] == '+' || s[i] == '-')) neg = s[i++] == '-';
    if (i >= n || s[i] < '0' || s[i] > '9') return false;
    for (; i < n && s[i] >= '0' && s[i] <= '9'; ++i)
      if (ex < 100000000) ex = ex * 10 + (s[i] - '0');
    if (neg) ex = -ex;
  }
  skip_blanks();
  if (i != n) return false;
  std::size_t lead = raw.find_first_not_of('0');
  out.digits = lead == std::string::npos ? std::string() : raw.substr(lead);
  out.exp = ex - frac;
  return true;
}

// Rounds half up so that no digit stands below 10^keep.
void round_at(decimal& d, long long keep) {
  if (d.digits.empty() || d.exp >= keep) return;
  long long drop = keep - d.exp;
  long long len = static_cast<long long>(d.digits.size());
  if (drop > len) {
    d.digits.clear();
    return;
  }
  bool up = drop <= len && d.digits[static_cast<std::size_t>(len - drop)] >= '5';
  d.digits.resize(static_cast<std::size_t>(len - drop));
  d.exp = keep;
  if (up) {
    std::size_t k = d.digits.size();
    while (k > 0 && d.digits[k - 1] == '9') d.digits[--k] = '0';
    if (k == 0)
      d.digits.insert(d.digits.begin(), '1');
    else
      ++d.digits[k - 1];
  }
  std::size_t lead = d.digits.find_first_not_of('0');
  if (lead == std::string::npos) d.digits.clear();
}

// Rounds to `n` significant digits.
void round_digits(decimal& d, int n) {
  long long len = static_cast<long long>(d.digits.size());
  if (len > n) round_at(d, d.exp + len - n);
  len = static_cast<long long>(d.digits.size());
  if (len > n) {  // a carry made one digit more: its last is a 0
    d.digits.pop_back();
    ++d.exp;
  }
}

// Digits of d from place 10^hi down to 10^lo (inclusive), zeros where d has none.
std::string places(const decimal& d, long long hi, long long lo) {
  std::string out;
  long long top = d.exp + static_cast<long long>(d.digits.size()) - 1;
  for (long long p = hi; p >= lo; --p)
    out += p > top || p < d.exp ? '0' : d.digits[static_cast<std::size_t>(top - p)];
  return out;
}

struct format_args {
  long before = -1, after = -1, expp = -1, expt = -1;
};

[[noreturn]] void too_small(bu_call& c, int arg) {
  bu_error(c, static_cast<std::size_t>(arg - 1), "FORMAT(): argument " + std::to_string(arg) + " too small.");
}

// The integer part with its sign, padded to `before`.
std::string integer_part(bu_call& c, const decimal& d, const std::string& whole, long before) {
  std::string s = (d.negative && !d.digits.empty() ? "-" : "") + whole;
  if (before >= 0) {
    if (static_cast<long>(s.size()) > before) too_small(c, 2);
    s.insert(0, static_cast<std::size_t>(before) - s.size(), ' ');
  }
  return s;
}

std::string simple_form(bu_call& c, decimal d, const format_args& a) {
  if (a.after >= 0) round_at(d, -a.after);
  long long top = d.exp + static_cast<long long>(d.digits.size()) - 1;
  std::string whole = d.digits.empty() || top < 0 ? "0" : places(d, top, 0);
  long long decimals = a.after >= 0 ? a.after : (d.exp < 0 ? -d.exp : 0);
  std::string out = integer_part(c, d, whole, a.before);
  if (decimals > 0) out += "." + places(d, -1, -decimals);
  return out;
}

std::string exponential_form(bu_call& c, decimal d, const format_args& a, int form) {
  for (;;) {
    long long adjusted = d.exp + static_cast<long long>(d.digits.size()) - 1;
    long long shift = form == 1 ? ((adjusted % 3) + 3) % 3 : 0;  // ENGINEERING: exponent a multiple of 3
    long long ex = adjusted - shift;
    if (a.after >= 0) {
      decimal r = d;
      round_at(r, ex - a.after);
      if (r.exp + static_cast<long long>(r.digits.size()) - 1 != adjusted) {  // a carry: lay out again
        d = r;
        continue;
      }
      d = r;
    }
    // Mantissa: digits of place ex+shift down to ex form the integer part.
    std::string whole = places(d, ex + shift, ex);
    long long decimals = a.after >= 0 ? a.after : (d.exp < ex ? ex - d.exp : 0);
    std::string out = integer_part(c, d, whole, a.before);
    if (decimals > 0) out += "." + places(d, ex - 1, ex - decimals);
    if (ex == 0) {
      if (a.expp > 0) out.append(static_cast<std::size_t>(a.expp) + 2, ' ');
      return out;
    }
    std::string digits = std::to_string(ex < 0 ? -ex : ex);
    if (a.expp > 0) {
      if (static_cast<long>(digits.size()) > a.expp) too_small(c, 4);
      digits.insert(0, static_cast<std::size_t>(a.expp) - digits.size(), '0');
    }
    return out + (ex < 0 ? "E-" : "E+") + digits;
  }
}

}  // namespace

rx_value bu_format(bu_call& c) {
  if (c.count() > 5) bu_error(c, 0, "FORMAT(): up to 5 arguments allowed.");
  if (!c.has(0)) bu_error(c, 0, "FORMAT(): argument 1 missing.");
  bu_num(c, 0);
  format_args a;
  long* slots[] = {&a.before, &a.after, &a.expp, &a.expt};
  for (std::size_t i = 1; i < c.count(); ++i) {
    if (c.has(i)) bu_num(c, i);
    *slots[i - 1] = bu_int(c, i, 1, -1);
  }
  decimal d;
  if (!read_decimal(c.str(0), d)) bu_error(c, 0, "FORMAT(): argument 1 must be a number.");
  const rx_numeric& num = rx_st.run->proc->numeric;
  round_digits(d, num.digits);
  if (d.digits.empty()) d.exp = 0;
  long expt = a.expt >= 0 ? a.expt : num.digits;
  long long adjusted = d.exp + static_cast<long long>(d.digits.size()) - 1;
  bool exponential = false;
  if (a.expp != 0 && !d.digits.empty()) {
    if (expt == 0)
      exponential = adjusted != 0;
    else
      exponential = adjusted >= expt || (d.exp < 0 && -d.exp > 2LL * expt);
  }
  return rx_value::string(exponential ? exponential_form(c, d, a, num.form) : simple_form(c, d, a));
}
