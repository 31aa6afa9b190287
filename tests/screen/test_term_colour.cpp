// The terminal host's colours as pure functions: the mode, nearest colours, the palette and a cell's look.
#include <gtest/gtest.h>

#include <array>

#include "screen/host/term_colour.h"

namespace {

using mode = term_colour_mode;

std::array<uint32_t, 64> start_palette() {
  std::array<uint32_t, 64> rgb{};
  rgb.fill(0x808080);
  rgb[0] = 0xffffff;
  rgb[1] = 0x0000ff;
  rgb[2] = 0xff0000;
  rgb[63] = 0x000000;
  return rgb;
}

TEST(screen_term_colour, mode_from_the_terminal) {
  EXPECT_EQ(term_colour_mode_for(256, false, false), mode::c256);
  EXPECT_EQ(term_colour_mode_for(16, false, false), mode::c16);
  EXPECT_EQ(term_colour_mode_for(8, false, false), mode::c8);
  EXPECT_EQ(term_colour_mode_for(2, false, false), mode::none);
  EXPECT_EQ(term_colour_mode_for(0x1000000, true, false), mode::direct);
  EXPECT_EQ(term_colour_mode_for(256, true, false), mode::c256);  // RGB without the colours to match
  EXPECT_EQ(term_colour_mode_for(0x1000000, true, true), mode::none);
  EXPECT_EQ(term_colour_mode_for(256, false, true), mode::none);
}

TEST(screen_term_colour, nearest_colour_per_mode) {
  EXPECT_EQ(term_nearest(0x0000ff, mode::c256), 21);
  EXPECT_EQ(term_nearest(0xff0000, mode::c256), 196);
  EXPECT_EQ(term_nearest(0x000000, mode::c256), 16);   // the cube's black, not the theme's colour 0
  EXPECT_EQ(term_nearest(0xffffff, mode::c256), 231);
  EXPECT_EQ(term_nearest(0x808080, mode::c256), 244);  // a grey of the ramp
  EXPECT_EQ(term_nearest(0xd2691e, mode::c256), 166);
  EXPECT_EQ(term_nearest(0xff0000, mode::c16), 9);
  EXPECT_EQ(term_nearest(0x0000ff, mode::c16), 4);
  EXPECT_EQ(term_nearest(0x5c5cf0, mode::c16), 12);
  EXPECT_EQ(term_nearest(0xff0000, mode::c8), 1);
  EXPECT_EQ(term_nearest(0x0000ff, mode::c8), 4);
  EXPECT_EQ(term_nearest(0xffffff, mode::c8), 7);
  EXPECT_EQ(term_nearest(0x123456, mode::direct), 0x123456);
  EXPECT_EQ(term_nearest(0x000003, mode::direct), 8);  // kept clear of the ANSI colours
  EXPECT_EQ(term_nearest(0x0000ff, mode::none), -1);
}

TEST(screen_term_colour, default_entries_use_the_terminals_colours_until_changed) {
  auto rgb = start_palette();
  auto map = term_map_palette(rgb, mode::c256);
  EXPECT_EQ(map[0], -1);
  EXPECT_EQ(map[63], -1);
  EXPECT_EQ(map[1], 21);
  EXPECT_EQ(map[2], 196);
  rgb[0] = 0x000000;
  rgb[63] = 0xffffff;
  map = term_map_palette(rgb, mode::c256);
  EXPECT_EQ(map[0], 16);
  EXPECT_EQ(map[63], 231);
}

}  // namespace
