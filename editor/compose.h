// Screen composition: after every turn the fields of the page are thrown away and defined again from the views.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct xf_view;

// What composition put on one row of a view's file area (for the take-in and the cursor).
struct xf_row {
  int32_t shadow = 0;         // 1: a shadow line standing for hidden lines
  int32_t prefix_field = -1;  // field id, -1 none
  int32_t data_field = -1;
  int32_t line = 0;   // 0-based line (-1 the top-of-file line); for a shadow line the first hidden line
  int32_t cells = 0;  // cells of the line put in the field
  int32_t view_row = 0;
  int32_t cut = 0;  // 1: the line did not fit
  int32_t rows = 1;  // rows of its field
};

// The fields of one view as the last composition left them.
struct xf_view_fields {
  std::vector<xf_row> upper;  // from the line above the current one upward
  std::vector<xf_row> lower;  // the current line and below
  std::vector<int32_t> above;                          // empty rows above the top of the file, nearest first
  std::vector<std::pair<int32_t, int32_t>> below;      // empty rows below the end: field id, line typing gives
  int32_t cmd_field = -1, cmd_row = 0, cmd_rows = 1;   // the command line (-1 when hidden)
  int32_t message_field = -1, ring_field = -1, id_field = -1;
  int32_t ring_row = 0;                                // screen row of the ring bar
  std::vector<std::pair<int32_t, int32_t>> ring_spans;  // per file shown in the bar: first and last screen column
  int32_t prefix_width = 5, data_width = 0, text_col = 0, first_col = 0;  // first_col: 0-based column of cell 1
  bool composed = false;
};

// Logical colours of the screen areas, in the order COLor names them.
enum xf_area {
  XA_FILEAREA, XA_CURLINE, XA_ARROW, XA_MSGLINE, XA_CURRENT, XA_NOCURRENT, XA_EDITED, XA_PENDING, XA_PREFIX,
  XA_IDLINE, XA_CMDLINE, XA_PFLINE, XA_SIZE, XA_MOD, XA_SHADOW, XA_SCALE, XA_TABLINE, XA_POINT, XA_COUNT
};

struct xf_screen_state {
  int32_t nb_rows = 24, nb_cols = 80;
  int32_t legend_rows = 1;
  std::string legend_text = "1:Q  2:E  3:Save  4:Sp  5:x  6:cu  7:U  8:D  9:?  10:h  12:=  S-11:top  S-12:bot";
  int32_t colour[XA_COUNT] = {7, 2, 14, 2, 12, 1, 2, 1, 13, 12, 7, 12, 12, 1, 1, 4, 1, 2};
  int32_t legend_field = -1;
  std::vector<xf_view_fields> views;
  int32_t beeps = 0;  // bells that commands asked for since the last composition
  // Where the cursor is to go at the next composition: the command line (at cmd_col), or a 0-based line and
  // column of the view's current file.
  int32_t cursor_view = 0;
  bool cursor_on_cmd = true;
  int32_t cmd_col = 1;
  int32_t cursor_line = 0, cursor_col = 0;
  int32_t cursor_cell_line = 0, cursor_cell_col = 0;  // above 0: the cursor goes to this screen cell
  bool cursor_placed = false;  // the last composition found the wished place on the screen
};
extern xf_screen_state xf_scr;

// Back to the start-up state (tests start clean with it).
void xf_screen_reset();
// Defines all fields of all views from the state of the ring; returns at once in batch mode.
void xf_compose();
// The width of the line numbers for a current line.
int32_t xf_prefix_width(int32_t current_line);
// The rows of the file area of a view: first and last view row (1-based).
void xf_file_rows(const xf_view& v, int32_t& first, int32_t& last);
// The text of a shadow line for n hidden lines in a text area of width w.
std::string xf_shadow_text(int32_t n, int32_t w);
// Asks for the cursor on the command line, or on a line and 0-based column of the current file.
void xf_cursor_to_cmd(int32_t col = 1);
void xf_cursor_to_line(int32_t line, int32_t col);
// The colour of what is typed into a prefix field: PEnding, or another when that equals PRefix or POint.
int xf_prefix_own_colour();
// Asks for the cursor at a screen cell (1-based), for places that are no line: a prefix field, a row above the top.
void xf_cursor_to_cell(int32_t line, int32_t col);
