// Colours of the terminal host: the 64 RGB entries of the colour table put onto what the terminal can show, and
// the look (colours and attributes) of one painted cell.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "screen/host/host.h"

// What the terminal offers: nothing (attributes only), 8, 16 or 256 indexed colours, or direct RGB.
enum class term_colour_mode { none, c8, c16, c256, direct };

// The mode for a terminal with `colours` colours and terminfo's RGB flag; NO_COLOR (no_color) forces none.
term_colour_mode term_colour_mode_for(int colours, bool rgb_flag, bool no_color);

// The terminal colour nearest to rgb (0xRRGGBB) by perceived distance; in direct mode the value itself.
int term_nearest(uint32_t rgb, term_colour_mode mode);

// Terminal colours of the 64 entries. Entries 0 (background) and 63 (text) holding their start values give -1:
// the terminal's own default colours, so that the user's theme shows.
std::array<int, 64> term_map_palette(std::span<const uint32_t, 64> rgb, term_colour_mode mode);

// The look of a cell: foreground and background (-1 the terminal's default), and attributes.
struct term_look {
  int fg = -1, bg = -1;
  bool reverse = false, underline = false, bold = false;
  bool operator==(const term_look&) const = default;
};
term_look term_cell_look(const fs_hcell& cell, const std::array<int, 64>& map, term_colour_mode mode);
