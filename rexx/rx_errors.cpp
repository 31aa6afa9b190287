// The table of error texts and the formatting of error reports.
#include "rexx/rx_errors.h"

#include <array>
#include <cstdio>

namespace {

// Row n is error n; empty rows are numbers that nothing uses.
constexpr std::array<const char*, rx_error_max + 1> error_texts = {
    "",                                                  // 0
    "Unmatched Quote.", "Unmatched Double Quote.", "", "Program interrupted.", "Machine resources exhausted.",
    "Unmatched /*.", "WHEN or OTHERWISE expected.", "Unexpected THEN or ELSE.", "", "",      // 1-10
    "", "", "", "", "Invalid hexadecimal constant.", "Label not found.", "", "THEN expected.", "",
    "Symbol expected.",                                                                       // 11-20
    "", "", "", "Invalid TRACE request.", "Invalid sub-keyword found.", "Invalid whole number.",
    "Invalid DO syntax.", "Invalid LEAVE or ITERATE.", "", "",                                // 21-30
    "Name starts with number or dot.", "", "", "Logical value not 0 or 1.", "", "", "",
    "Invalid template or pattern.", "", "Incorrect call to routine.",                         // 31-40
    "Bad arithmetic conversion.", "Arithmetics overflow/underflow.", "Routine not found.",
    "Function did not return data.", "", "Invalid variable reference.", "", "", "", "Invalid IF syntax.",  // 41-50
    "Zero divide.", "Invalid SELECT syntax.", "WHEN expected before OTHERWISE.", "Invalid CALL label.",
    "Syntax error.", "Environment not found.", "No match: OTHERWISE expected.", "Unable to create a pipe.",
    "Error while reading a pipe.", "Command not found.",                                      // 51-60
    "Parser stack overflow.", "Out of memory.", "Invalid directory.", "Incomplete DO.", "Incomplete SELECT.",
    "Incomplete IF.", "Invalid binary string.", "Unable to display panel.", "No opened panel.",
    "Unable to save panel.",                                                                  // 61-70
    "Uninitialized variable.", "Handle not found.", "Invalid input number.", "Invalid toggle number.",
    "Invalid toggle rank.", "Invalid compiled file.", "", "Index error.", "Index overflow.",
    "Invalid choice number.",                                                                 // 71-80
    "Invalid list number.", "Invalid list rank.", "Item not found.", "Invalid RGB value.",
    "Unable to start thread.", "Program does not start.", "Privileged routine.", "Invalid SOCKET domain.",
    "Invalid SOCKET type.", "Invalid SOCKET protocol.",                                       // 81-90
    "Invalid SOCKET level.", "Invalid socket-level option.", "Invalid socket-level parameter.",
    "Invalid family address.", "Invalid HOST address.", "Invalid SOCKET port number.", "",
    "Invalid SIGNAL name.",                                                                   // 91-98
};
static_assert(error_texts.size() == 99, "one row per error number 0..98");

// Line `line` (0-based) of `text`, without its line feed or a carriage return before it.
std::string_view nth_line(std::string_view text, int32_t line) {
  std::size_t start = 0;
  for (int32_t i = 0; i < line; ++i) {
    std::size_t lf = text.find('\n', start);
    if (lf == std::string_view::npos) return {};
    start = lf + 1;
  }
  std::size_t end = text.find('\n', start);
  std::string_view row = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
  if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
  return row;
}

}  // namespace

const char* rx_error_text(int n) {
  if (n < 1 || n > rx_error_max) return "";
  return error_texts[n];
}

const char* rx_error_report_text(int n) { return n > rx_error_max ? "Unknown error." : rx_error_text(n); }

std::string rx_format_report(const rx_report_place& p) {
  std::string_view row = nth_line(p.source, p.line);
  int32_t column = p.column;
  if (column > static_cast<int32_t>(row.size())) column = static_cast<int32_t>(row.size());
  if (column < 0) column = 0;

  bool in_prefix = !p.interpreted && p.line < p.prefix_lines;
  int32_t shown = in_prefix ? p.line + 1 : p.line + 1 - p.prefix_lines;
  char prefix[64];
  if (p.interpreted)
    std::snprintf(prefix, sizeof prefix, "    *interpreted* ");
  else if (in_prefix)
    std::snprintf(prefix, sizeof prefix, "    %d (.palomrc) +++ ", static_cast<int>(shown));
  else
    std::snprintf(prefix, sizeof prefix, "    %d +++ ", static_cast<int>(shown));

  std::string out = "\n";
  out += prefix;
  out += row;
  out += '\n';
  out.append(std::string_view(prefix).size() + static_cast<std::size_t>(column), ' ');
  out += "^\nError ";
  out += std::to_string(p.number);
  if (!p.interpreted) {
    out += " on line " + std::to_string(shown) + " in file \"";
    out += p.file;
    out += in_prefix ? "\" (while processing \".palomrc\"): " : "\": ";
  } else {
    out += ": ";
  }
  out += rx_error_report_text(p.number);
  out += '\n';
  if (!p.detail.empty()) {
    out += '\n';
    out += p.detail;
    out += "\n\n";
  }
  return out;
}
