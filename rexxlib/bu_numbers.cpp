// Number built-ins: ABS, SIGN, MAX, MIN.
#include <algorithm>
#include <chrono>
#include <cmath>

#include "rexxlib/bu_frame.h"

namespace {

double must_be_number(bu_call& c, std::size_t i) {
  if (c.has(i) && (c.v[i].kind == RX_NUM || rx_to_number(c.v[i]))) return c.v[i].num;
  bu_error(c, i, std::string(c.name) + "(): the argument must be a number.", 41);
}

// MAX and MIN: the extreme of all arguments, kept with the decimals it was read with.
rx_value extreme(bu_call& c, bool want_max) {
  bool any = false;
  std::size_t best = 0;
  for (std::size_t i = 0; i < c.count(); ++i) {
    if (!c.has(i)) continue;
    if (!(c.v[i].kind == RX_NUM || rx_to_number(c.v[i])))
      bu_error(c, i, std::string(c.name) + "(): argument " + std::to_string(i + 1) + " should be a whole number.");
    if (!any || (want_max ? c.v[i].num > c.v[best].num : c.v[i].num < c.v[best].num)) best = i;
    any = true;
  }
  if (!any) bu_error(c, 0, std::string(c.name) + "(): must receive at least 1 argument.");
  return rx_value::number(c.v[best].num, c.v[best].decimals);
}

}  // namespace

rx_value bu_abs(bu_call& c) {
  bu_count(c, 1, 1);
  double x = must_be_number(c, 0);
  return rx_value::number(std::fabs(x), c.v[0].decimals);
}

rx_value bu_sign(bu_call& c) {
  bu_count(c, 1, 1);
  double x = must_be_number(c, 0);
  return bu_whole(x > 0 ? 1 : x < 0 ? -1 : 0);
}

rx_value bu_max(bu_call& c) { return extreme(c, true); }
rx_value bu_min(bu_call& c) { return extreme(c, false); }

rx_value bu_queued(bu_call& c) {
  bu_count(c, 0, 0);
  return bu_whole(static_cast<long long>(rx_queue_size()));
}

namespace {

// The family's state: the seed of RANDOM, -1 until the first call takes one from the clock or an argument.
struct bu_number_state {
  double seed = -1;
};
bu_number_state bu_ns;

}  // namespace

rx_value bu_random(bu_call& c) {
  bu_count(c, 0, 3);
  long lo = 0, hi = 999;
  if (c.count() == 1 && c.has(0)) {
    hi = bu_int(c, 0, 1, 999);
  } else {
    lo = bu_int(c, 0, 1, 0);
    hi = bu_int(c, 1, 1, 999);
  }
  if (lo > hi) bu_error(c, 0, "RANDOM(): argument 1 must be lower than argument 2.");
  if (c.has(2)) {
    double s = static_cast<double>(bu_int(c, 2, 1, 0));
    bu_ns.seed = s < 10000 ? s * 13120 : s;
  } else if (bu_ns.seed == -1) {
    bu_ns.seed = static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(
                                         std::chrono::system_clock::now().time_since_epoch())
                                         .count() %
                                     1000000);
  }
  double& seed = bu_ns.seed;
  seed = seed * 16807;
  seed = seed - std::floor(seed / 2147483647.0) * 2147483647.0;
  double r = std::floor(1 + (hi + 1) * (seed / 2147483648.0)) - 1;
  if (lo != 0 && hi != 0) r = lo + static_cast<double>(hi - lo) / hi * r;
  return bu_whole(static_cast<long long>(std::llround(r)));
}

rx_value bu_trunc(bu_call& c) {
  bu_count(c, 1, 2);
  double x = bu_num(c, 0);
  long d = bu_int(c, 1, 1, 0);
  double scale = std::pow(10.0, static_cast<double>(d));
  double y = x * scale;
  double near = std::round(y);
  if (std::fabs(y - near) < 1e-9 * std::max(1.0, std::fabs(y))) y = near;  // 0.29 * 100 is 28.999...
  double t = std::trunc(y) / scale;
  return rx_value::number(t, static_cast<int32_t>(d));
}

namespace {

rx_value math1(bu_call& c, double (*fn)(double)) {
  bu_count(c, 1, 1);
  return rx_value::number(fn(bu_num(c, 0)));
}

}  // namespace

rx_value bu_sin(bu_call& c) { return math1(c, [](double x) { return std::sin(x); }); }
rx_value bu_cos(bu_call& c) { return math1(c, [](double x) { return std::cos(x); }); }
rx_value bu_tan(bu_call& c) { return math1(c, [](double x) { return std::tan(x); }); }
rx_value bu_asin(bu_call& c) { return math1(c, [](double x) { return std::asin(x); }); }
rx_value bu_acos(bu_call& c) { return math1(c, [](double x) { return std::acos(x); }); }
rx_value bu_atan(bu_call& c) { return math1(c, [](double x) { return std::atan(x); }); }

rx_value bu_pi(bu_call& c) {
  bu_count(c, 0, 0);
  return rx_value::number(std::acos(-1.0));
}
