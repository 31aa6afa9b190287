// Compile and error stepping: the rules that tell error lines by file extension, and the last compile.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A block of the rules file: a source extension, which number of an error line is its line number, whether the
// error line names no file, and the legacy regular expressions that find error lines.
struct xf_compile_rules {
  std::string filetype;
  int32_t number_index = 1;
  bool no_source = false;
  std::vector<std::string> rules;
};

struct xf_compile_state {
  std::vector<xf_compile_rules> rules;
  bool loaded = false;  // the rules file has been read (or found missing) once
  std::string output;   // the last compile's output file
  std::string ext;      // the compiled source's extension
  std::string source;   // the compiled source's name
};
extern xf_compile_state xf_compile;

void xf_compile_reset();
