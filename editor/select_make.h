// Making a selection where the cursor or the mouse is: starting it at a cell and extending it by characters,
// words or whole lines, linear or rectangular.
#pragma once

#include <cstdint>

// Starts a selection of `kind` in the current file at a 1-based line and column; `unit` is 1 characters, 2 the
// word around the cell, 3 the whole line.
void xf_sel_start(int32_t line, int32_t column, int32_t kind, int32_t unit);
// Moves the end that isn't the anchor to a 1-based line and column, by the unit; with `rect` the selection is
// rectangular (pending) from now on, otherwise linear (pending). Lines are limited to the file's last.
void xf_sel_extend(int32_t line, int32_t column, int32_t unit, bool rect);
// The end that moves: 1-based line and column.
void xf_sel_moving_end(int32_t& line, int32_t& column);
// The word around a 0-based column of a line (WORDChars runs, or the one character): 1-based first and last
// column; on a blank, the place behind the line's end.
void xf_word_at(int32_t line, int32_t column, int32_t& first, int32_t& last);
