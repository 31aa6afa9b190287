// The small helpers that command handlers share to read their operands.
#pragma once

#include <cstdint>
#include <string_view>

// The text behind the command word and one blank ("" when there is none).
std::string_view xf_operands(std::string_view text);
// The text without leading and trailing blanks.
std::string_view xf_trim(std::string_view s);
// Message 16 "..... Invalid parameters" with `rc` = code; returns 1 (the handler has taken the command).
int xf_bad_operands(int code = 1);
// A decimal number of at most `max_digits` digits and nothing else.
bool xf_parse_digits(std::string_view s, int max_digits, int64_t& out);
// A count of at most 9 digits.
bool xf_parse_count(std::string_view s, int32_t& out);
