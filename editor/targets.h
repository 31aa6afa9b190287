// Targets: a line or a string to go to, typed alone or as a command's operand.
#pragma once

#include <string_view>

// A target typed alone: the current line moves to it, as with Locate.
void xf_implied_locate(std::string_view text);
