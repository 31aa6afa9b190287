// The language's numbered errors (1 to 98, fixed texts), the process-wide error state, and the error report.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

constexpr int rx_error_max = 98;

// The fixed text of error n; "" for an unused row or n outside 1..98 (what ERRORTEXT gives).
const char* rx_error_text(int n);
// The text a report shows: the row, or "Unknown error." from 99 on.
const char* rx_error_report_text(int n);

// Where a report points, and what it shows.
struct rx_report_place {
  int number = 0;                // error number
  int32_t line = 0, column = 0;  // 0-based, counted in the whole source (prefix file lines included)
  std::string_view source;       // the text the line is taken from
  std::string_view file;         // the program's name as given
  bool interpreted = false;      // the source is an INTERPRET string
  int32_t prefix_lines = 0;      // lines of the prefix file in front of the program
  std::string_view detail;       // optional second message
};

// The report lines, exactly as the user sees them, detail included ("\n    3 +++ ...\nError 55 on line ...").
std::string rx_format_report(const rx_report_place& place);

// Process-wide error state of the interpreter: the current error and where it stands.
struct rx_error_state {
  int number = 0;
  int32_t line = 0, column = 0;
  std::string detail;
};
