// Time: now, and a time broken down in local time.
#pragma once

#include <cstdint>

// Seconds since the epoch.
int64_t os_now();
// Milliseconds of a monotonic clock, for measuring intervals.
int64_t os_now_ms();

// A local time; month 1-12, day 1-31, weekday 0 (Sunday) to 6.
struct os_local {
  int year = 1970, month = 1, day = 1, hour = 0, minute = 0, second = 0, weekday = 4;
};
// `t` (seconds since the epoch) in the local time zone.
os_local os_local_time(int64_t t);
