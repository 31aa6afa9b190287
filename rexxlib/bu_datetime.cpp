// DATE and TIME: the day in every form (today or a given day), and the time of day and the elapsed-time timer.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>

#include "os/os_time.h"
#include "rexxlib/bu_frame.h"

namespace {

const char* const month_names[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};
const char* const day_names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

struct civil {
  long long year;
  int month, day;
};

// Days since 1 January of the year 1 (proleptic Gregorian calendar), and back.
long long day_count(const civil& c) {
  long long y = c.year - (c.month <= 2 ? 1 : 0);
  long long era = (y >= 0 ? y : y - 399) / 400;
  long long yoe = y - era * 400;
  long long mp = (c.month + 9) % 12;
  long long doy = (153 * mp + 2) / 5 + c.day - 1;
  long long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 306;  // 306: from 1 March of the year 0 to 1 January of the year 1
}

civil from_day_count(long long n) {
  n += 306;
  long long era = (n >= 0 ? n : n - 146096) / 146097;
  long long doe = n - era * 146097;
  long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long long mp = (5 * doy + 2) / 153;
  int d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  int m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  return civil{yoe + era * 400 + (m <= 2 ? 1 : 0), m, d};
}

// printf of whole numbers (each given as long long to the %lld conversions).
template <typename... A>
std::string format(const char* fmt, A... a) {
  char buf[96];
  std::snprintf(buf, sizeof buf, fmt, static_cast<long long>(a)...);
  return buf;
}

// The day a second argument names ("day/month/year"), or none when it is no real day.
std::optional<civil> read_day(std::string_view s) {
  std::string t(s);
  long long d = 0, m = 0, y = 0;
  char extra = 0;
  if (std::sscanf(t.c_str(), "%lld/%lld/%lld%c", &d, &m, &y, &extra) != 3) return std::nullopt;
  if (d < 1 || d > 31 || m < 1 || m > 12 || y == 0) return std::nullopt;
  civil c{y, static_cast<int>(m), static_cast<int>(d)};
  civil back = from_day_count(day_count(c));
  if (back.year != c.year || back.month != c.month || back.day != c.day) return std::nullopt;
  return c;
}

// The elapsed-time timer of TIME('E') and TIME('R'): unset until the first call.
struct bu_time_state {
  bool started = false;
  std::chrono::steady_clock::time_point start;
};
bu_time_state bu_ts;

}  // namespace

rx_value bu_date(bu_call& c) {
  bu_count(c, 0, 2);
  std::string_view opt = c.has(0) ? c.str(0, 0) : std::string_view("N");
  civil day{};
  if (c.has(1)) {
    std::optional<civil> given = read_day(c.str(1, 1));
    if (!given) bu_error(c, 1, "DATE(): Invalid \"" + std::string(c.str(1, 1)) + "\" date.");
    day = *given;
  } else {
    os_local now = os_local_time(os_now());
    day = civil{now.year, now.month, now.day};
  }
  double whole = 0;
  int32_t dec = 0;
  if (!opt.empty() && rx_is_number(opt, &whole, &dec) && rx_is_whole(whole) && std::fabs(whole) < 1e12) {
    civil d = from_day_count(static_cast<long long>(whole));
    return rx_value::string(format("%lld/%.2lld/%.2lld", d.year, d.month, d.day));
  }
  char k = opt.empty() ? ' ' : opt[0];
  if (k >= 'a' && k <= 'z') k = static_cast<char>(k - 32);
  long long b = day_count(day);
  long long doy = b - day_count(civil{day.year, 1, 1}) + 1;
  long long yy = ((day.year % 100) + 100) % 100;
  switch (k) {
    case 'B': return bu_whole(b);
    case 'C': return bu_whole(b - day_count(civil{day.year - yy, 1, 1}));
    case 'D': return bu_whole(doy);
    case 'E':
      return rx_value::string(format("%.2lld/%.2lld/%.2lld", day.day, day.month, opt.substr(1) == "4" ? day.year : yy));
    case 'J': return rx_value::string(format("%.2lld%.3lld", yy, doy));
    case 'L':
    case 'N': {
      std::string mon(month_names[day.month - 1], 3);
      return rx_value::string(std::to_string(day.day) + " " + mon + " " + std::to_string(day.year));
    }
    case 'M': return rx_value::string(month_names[day.month - 1]);
    case 'O': return rx_value::string(format("%.2lld/%.2lld/%.2lld", yy, day.month, day.day));
    case 'S': return rx_value::string(format("%.2lld%.2lld%.2lld", day.year, day.month, day.day));
    case 'U': return rx_value::string(format("%.2lld/%.2lld/%.2lld", day.month, day.day, yy));
    case 'W': return rx_value::string(day_names[((b + 1) % 7 + 7) % 7]);
    default: bu_error(c, 0, "DATE(): argument 1 must start with B|C|D|E|J|L|M|O|S|U|W.");
  }
}

rx_value bu_time(bu_call& c) {
  bu_count(c, 0, 1);
  std::string_view opt = c.has(0) ? c.str(0, 0) : std::string_view("N");
  double whole = 0;
  int32_t dec = 0;
  if (!opt.empty() && rx_is_number(opt, &whole, &dec) && rx_is_whole(whole)) {
    // A count of seconds since midnight, laid out as option N lays out the time of day.
    if (whole < 0 || whole > 2147483647.0)
      bu_error(c, 0, "TIME(): argument 1 must start with C|E|H|L|M|N|R|S, or be a whole number.");
    auto secs = static_cast<long long>(whole);
    return rx_value::string(format("%2.2lld:%2.2lld:%2.2lld", secs / 3600, secs / 60 % 60, secs % 60));
  }
  char k = opt.empty() ? ' ' : opt[0];
  if (k >= 'a' && k <= 'z') k = static_cast<char>(k - 32);
  if (k == 'E' || k == 'R') {
    auto now = std::chrono::steady_clock::now();
    double secs = bu_ts.started ? std::chrono::duration<double>(now - bu_ts.start).count() : 0;
    if (!bu_ts.started || k == 'R') {
      bu_ts.started = true;
      bu_ts.start = now;
    }
    return bu_ts.started && secs > 0 ? rx_value::number(secs, 6) : bu_whole(0);
  }
  auto wall = std::chrono::system_clock::now().time_since_epoch();
  long long micros = std::chrono::duration_cast<std::chrono::microseconds>(wall).count();
  os_local t = os_local_time(micros / 1000000);
  long long us = micros % 1000000;
  switch (k) {
    case 'C': {
      int h12 = t.hour % 12 == 0 ? 12 : t.hour % 12;
      return rx_value::string(format(t.hour < 12 ? "%lld:%2.2lldam" : "%lld:%2.2lldpm", h12, t.minute));
    }
    case 'H': return bu_whole(t.hour);
    case 'L': {
      std::string out = format("%2.2lld:%2.2lld:%2.2lld", t.hour, t.minute, t.second);
      if (us) {
        std::string frac = format("%.6lld", us);
        while (!frac.empty() && frac.back() == '0') frac.pop_back();
        out += "." + frac;
      }
      return rx_value::string(out);
    }
    case 'M': return bu_whole(t.hour * 60 + t.minute);
    case 'N': return rx_value::string(format("%2.2lld:%2.2lld:%2.2lld", t.hour, t.minute, t.second));
    case 'S': return bu_whole(t.hour * 3600 + t.minute * 60 + t.second);
    default:
      bu_error(c, 0, "TIME(): argument 1 must start with C|E|H|L|M|N|R|S, or be a whole number.");
  }
}
