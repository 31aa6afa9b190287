// Per-filetype defaults: values given with the `ft` operand of TABSet, CASE, LRecl, TRUnc, KEEPBlanks,
// BInary and POWerinput, applied to each file as it is created.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct xf_file;

enum xf_ft_kind { XF_FT_TABS, XF_FT_CASE, XF_FT_LRECL, XF_FT_TRUNC, XF_FT_KEEPBLANKS, XF_FT_BINARY, XF_FT_POWER,
                  XF_FT_KINDS };

struct xf_ft_row {
  std::string ext;  // "*" for any
  std::vector<int32_t> value;
};

struct xf_ft_state {
  std::vector<xf_ft_row> tables[XF_FT_KINDS];
  int32_t force_keep_blanks = 0;  // KEEPBlanks ON without ft: every new file
  int32_t force_binary = 0;       // BInary ON without ft: every new file
};
extern xf_ft_state xf_ft;

void xf_ft_reset();
// Sets the value for an extension ("*" for any), replacing an earlier row.
void xf_ft_set(int kind, std::string_view ext, std::vector<int32_t> value);
// The extension of a name: the text after the last "." of its last component, "" if none.
std::string xf_ft_extension(std::string_view name);
// Applies the tables to a new file, by its name.
void xf_ft_apply(xf_file& f);
