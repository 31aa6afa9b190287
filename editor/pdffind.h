// The ISPF personality's FIND, EXCLUDE and CHANGE: their shared operand parser, the last-FIND record that
// RFINd and PDFRChange repeat, and PDFLocate.
#pragma once

#include <cstdint>
#include <string>

// A search string of the ISPF operand grammar.
struct xf_pdf_string {
  std::string text;
  bool fold = true;  // bare and quoted strings ignore case; c'..' respects it
  bool picture = false;
  bool hex = false;
  bool given = false;
};

// The last FIND or CHANGE (one per program).
struct xf_pdf_record {
  bool has_find = false, has_change = false;
  xf_pdf_string s1, s2;
  bool exclude = false;         // stored by PDFEXClude
  int32_t first_line = 0, last_line = -1;  // -1: to the file's end
  bool has_range = false;
  int32_t direction = 0;  // 0 next, 1 all, 2 first, 3 last, 4 prev
  int32_t kind = 0;       // 0 chars, 1 prefix, 2 suffix, 3 word
  int32_t filter = 2;     // 0 excluded lines, 1 displayed lines, 2 all lines
  int32_t col_first = -1, col_last = -1;  // -1: the zone
};
extern xf_pdf_record xf_pdf_last;

// Forgets the last FIND and CHANGE.
void xf_pdf_reset();
