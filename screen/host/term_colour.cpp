// Colours of the terminal host: nearest terminal colours by RGB distance and the look of a painted cell.
#include "screen/host/term_colour.h"

#include <limits>
#include <utility>

namespace {

// Start values of the two entries that stand for the terminal's own colours (the library's start table).
constexpr uint32_t kStartBackground = 0xffffff;  // entry 0
constexpr uint32_t kStartText = 0x000000;        // entry 63

// The sixteen ANSI colours as xterm shows them by default; a 16- or 8-colour terminal is matched against these.
constexpr uint32_t kAnsi[16] = {0x000000, 0xcd0000, 0x00cd00, 0xcdcd00, 0x0000ee, 0xcd00cd, 0x00cdcd, 0xe5e5e5,
                                0x7f7f7f, 0xff0000, 0x00ff00, 0xffff00, 0x5c5cff, 0xff00ff, 0x00ffff, 0xffffff};

// The RGB of a colour of the 256-colour set: the 6x6x6 cube from 16, then 24 greys from 232.
uint32_t rgb_of_256(int n) {
  if (n < 16) return kAnsi[n];
  if (n >= 232) {
    uint32_t g = static_cast<uint32_t>(8 + 10 * (n - 232));
    return g << 16 | g << 8 | g;
  }
  static constexpr uint32_t kLevel[6] = {0, 95, 135, 175, 215, 255};
  int i = n - 16;
  return kLevel[i / 36] << 16 | kLevel[i / 6 % 6] << 8 | kLevel[i % 6];
}

// Squared distance weighted by how the eye sees red, green and blue ("redmean").
long distance(uint32_t a, uint32_t b) {
  long r1 = a >> 16 & 0xff, g1 = a >> 8 & 0xff, b1 = a & 0xff;
  long r2 = b >> 16 & 0xff, g2 = b >> 8 & 0xff, b2 = b & 0xff;
  long rmean = (r1 + r2) / 2, dr = r1 - r2, dg = g1 - g2, db = b1 - b2;
  return (((512 + rmean) * dr * dr) >> 8) + 4 * dg * dg + (((767 - rmean) * db * db) >> 8);
}

int nearest_in(uint32_t rgb, int first, int last) {
  int best = first;
  long best_d = std::numeric_limits<long>::max();
  for (int n = first; n <= last; ++n) {
    long d = distance(rgb, rgb_of_256(n));
    if (d < best_d) {
      best_d = d;
      best = n;
    }
  }
  return best;
}

}  // namespace

term_colour_mode term_colour_mode_for(int colours, bool rgb_flag, bool no_color) {
  if (no_color || colours < 8) return term_colour_mode::none;
  if (rgb_flag && colours >= 0x1000000) return term_colour_mode::direct;
  if (colours >= 256) return term_colour_mode::c256;
  if (colours >= 16) return term_colour_mode::c16;
  return term_colour_mode::c8;
}

int term_nearest(uint32_t rgb, term_colour_mode mode) {
  rgb &= 0xffffff;
  switch (mode) {
    case term_colour_mode::none: return -1;
    case term_colour_mode::c8: return nearest_in(rgb, 0, 7);
    case term_colour_mode::c16: return nearest_in(rgb, 0, 15);
    // The first sixteen are left out: themes redefine them, the cube and the greys are fixed.
    case term_colour_mode::c256: return nearest_in(rgb, 16, 255);
    // Direct values below 8 would be taken for the ANSI colours: the darkest blues stand in for them.
    case term_colour_mode::direct: return rgb < 8 ? 8 : static_cast<int>(rgb);
  }
  return -1;
}

std::array<int, 64> term_map_palette(std::span<const uint32_t, 64> rgb, term_colour_mode mode) {
  std::array<int, 64> map;
  for (size_t i = 0; i < 64; ++i) map[i] = term_nearest(rgb[i], mode);
  if ((rgb[0] & 0xffffff) == kStartBackground) map[0] = -1;
  if ((rgb[63] & 0xffffff) == kStartText) map[63] = -1;
  return map;
}

term_look term_cell_look(const fs_hcell& cell, const std::array<int, 64>& map, term_colour_mode mode) {
  term_look l;
  const bool reverse = cell.hlt == 2 || cell.hlt == 3;
  l.underline = cell.hlt == 3 || cell.hlt == 4;
  l.bold = cell.intens == 2;
  if (mode == term_colour_mode::none) {
    l.reverse = reverse;
    return l;
  }
  l.fg = map[cell.color % 64];
  l.bg = map[0];
  if (reverse) {
    // An explicit reversed pair where both colours are known; the terminal's defaults can only be swapped by it.
    if (l.fg >= 0 && l.bg >= 0)
      std::swap(l.fg, l.bg);
    else
      l.reverse = true;
  }
  return l;
}
