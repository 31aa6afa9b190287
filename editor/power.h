// POWerinput: typing that flows on between the margins, reflowing the paragraph around the cursor.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What a reflow makes of lines: the new lines, and the cursor's line (index among them) and column.
struct xf_flow_result {
  std::vector<std::string> lines;
  int32_t cursor_line = 0, cursor_col = 0;
};

// Joins the lines (each without the blanks of its first `left` columns, one blank between lines) and breaks
// them again into lines of at most `width` characters, each led by `left` blanks. The cursor stands on line
// `cline`, column `ccol` (0-based, in `lines`); its character keeps it through the reflow. With `move` (the
// MOVE setting) a word that would cross the limit goes whole to the next line, and a cell is kept free for the
// cursor behind the last character. Trailing blanks go unless keep_blanks.
xf_flow_result xf_flow(const std::vector<std::string>& lines, int32_t cline, int32_t ccol, int32_t left,
                       int32_t width, bool move, bool keep_blanks);
// Reflows around the cursor's line of the current file when POWerinput is on: the paragraph above it (unless
// NOPREVIOUS), and with `whole` the rest of the paragraph below. The cursor follows its character.
void xf_pow(int whole);
