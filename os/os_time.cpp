// Time: now, and local broken-down time.
#include "os/os_time.h"

#include <ctime>

int64_t os_now() { return static_cast<int64_t>(::time(nullptr)); }

os_local os_local_time(int64_t t) {
  time_t tt = static_cast<time_t>(t);
  struct tm tm;
  os_local out;
  if (::localtime_r(&tt, &tm) == nullptr) return out;
  out.year = tm.tm_year + 1900;
  out.month = tm.tm_mon + 1;
  out.day = tm.tm_mday;
  out.hour = tm.tm_hour;
  out.minute = tm.tm_min;
  out.second = tm.tm_sec;
  out.weekday = tm.tm_wday;
  return out;
}

int64_t os_now_ms() {
  struct timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}
