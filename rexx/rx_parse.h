// The parser: the finished token array of a program into its tree, label table and line table.
#pragma once

#include <cstdint>
#include <string>

#include "rexx/rx_tree.h"

// Nesting limit of expressions and blocks; deeper input is error 61.
constexpr int rx_parse_depth_limit = 1000;

struct rx_parse_result {
  int error = 0;                 // 0: parsed; else the error number
  int32_t line = 0, column = 0;  // where the error stands (0-based)
  std::string detail;            // detail text of the error, or empty
};

// Parse prog.tokens into prog (head, labels, and, when outermost, the line table). The tokens must not be
// resized afterwards: the tree points into them. Sets rx_st.error on failure.
rx_parse_result rx_parse(rx_program& prog, bool outermost = true);
