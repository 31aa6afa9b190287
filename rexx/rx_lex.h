// The lexer: `rx_lex` scans a program's bytes into tokens, then lex2 rewrites them in three passes (keywords decided
// by context, abuttal made explicit, blanks removed with names folded and split).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_token.h"

using rx_tokens = std::vector<rx_node>;

struct rx_lex_result {
  bool ok = false;
  bool compiled = false;   // the text is a compiled program file (its reader is not available yet)
  rx_tokens tokens;        // the finished array, ending with ';'
  int32_t last_line = 0;   // line counter at the end of the text
  int error = 0;           // on failure: error number and where it stands
  int32_t error_line = 0, error_column = 0;
};

// Lex a whole text; lines are counted from first_line. Sets rx_st.error on failure. Unless forbid_compiled, a
// text in compiled form is recognised and refused as not yet supported (result.compiled).
rx_lex_result rx_lex(std::string_view text, int32_t first_line, bool forbid_compiled);

// The stages, one by one (rx_lex runs them in order). rx_lex_scan returns false and fills the error on failure.
bool rx_lex_scan(std::string_view text, int32_t first_line, rx_lex_result& out);
rx_tokens rx_lex2_keywords(const rx_tokens& raw);
rx_tokens rx_lex2_abuttal(const rx_tokens& in);
void rx_lex2_names(rx_tokens& toks);

// Whether a text is a compiled program file: a `#!` line ending in "palom" within the first two line feeds,
// followed by a line starting "@ccpl".
bool rx_is_compiled_text(std::string_view text);

// Hexadecimal and binary string conversion; false on an invalid string. `pad` fills a lone left digit.
bool rx_hex_to_bytes(std::string_view s, std::string& out, char pad = '0');
bool rx_bin_to_bytes(std::string_view s, std::string& out);

// Fold ASCII letters of a name by case mode (0 leave, 2 lower, 1 and 3 upper).
void rx_fold_case(std::string& s, int case_mode);

// The token trace of an array, one "lex: type = ..." line per token, lines and columns shown from 1.
std::string rx_token_trace(const rx_tokens& toks);
