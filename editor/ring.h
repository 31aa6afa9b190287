// The ring of files, their line store, the views, and xf_do: the one primitive that changes lines.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A line's bytes with a terminating NUL; each row owns its own buffer.
using xf_text = std::unique_ptr<char[]>;

// A heap copy of n bytes with a NUL behind them.
xf_text xf_new_text(const char* p, std::size_t n);
inline xf_text xf_new_text(std::string_view s) { return xf_new_text(s.data(), s.size()); }

// Where the cursor stands in a file, or is to go (nine values; 1-based columns).
struct xf_cursor {
  int32_t view = 0, screen_col = 0, line = 0, column = 0, saved_col = 0, saved_line = 0, flag = 0, saved_valid = -1,
          priority = 0;
};

struct xf_point {
  std::string name;
  int32_t line;
};

// One record of the undo journal: an xf_do operation and what its inverse needs. The texts are the very
// buffers that left the file; they go back to it on undo, so no text is ever copied for the journal.
struct xf_jrecord {
  int32_t step = 0;  // 1: the record opens a step
  int32_t line = 0;
  char cd = 0;  // r i I d D
  int32_t mark = 0;
  int32_t count = 0;
  xf_text text;                   // r, d: the text that left the file
  std::vector<xf_text> texts;     // D: the texts that left the file
  std::vector<int32_t> levels;    // selection levels of the lines that left, so that they come back with them
  int32_t place[3] = {-1, 0, 0};  // the cursor when the change was made: view (-1 none), line + 1, column
};

// The per-file undo and redo stacks, newest record last.
struct xf_journal {
  std::vector<xf_jrecord> undo, redo;
};

// A prefix command waiting on a line: typed in the line's prefix field, or set by PENDing.
struct xf_prefix_row {
  int32_t view = 0;
  int32_t line = 0;         // -1: the top-of-file row
  int32_t kind = 0;         // table index 1..16, -1 a macro, -2 done
  int32_t count = 1;
  int32_t screen_row = -1;  // -1 when set by PENDing
  std::vector<std::string> arguments;  // the name as typed, then up to 3 operands
};

// A prefix text that made no sense; it stays on show, highlighted, until overtyped.
struct xf_prefix_error {
  int32_t line = 0;
  std::string text;
};

// An ISPF COPY, CREATE or REPLACE parked until the prefix area names its destination or its lines.
struct xf_pdf_request {
  bool active = false;
  std::string file;         // full path of the file to read from or write to
  int32_t first = 1;        // COPY: the first line of that file to take (1-based)
  int32_t last = -1;        // COPY: the last one, -1 for the end
  bool replace = false;     // CREATE parked by REPLACE: an existing file may be overwritten
};

// One file of the ring. The line store is parallel arrays indexed by 0-based line number: text, len, select,
// each `capacity` long; rows from `size` up are empty.
struct xf_file {
  int32_t size = 0;
  int32_t capacity = 0;
  int32_t alt_save = 0;
  int32_t object_kind = 0;
  std::vector<xf_text> text;
  std::vector<int32_t> len;
  std::vector<int32_t> select;
  int32_t step_start = 1;
  xf_journal journal;
  xf_cursor cursor;
  std::string name;        // full path
  std::string saved_name;  // the name it was last written under
  std::string id_text;
  std::vector<int32_t> tabs;
  int32_t column = 0;
  int32_t alt_auto = 0;
  int32_t alt_at_round = 0;  // alt_save when the autosave round last looked
  int32_t case_mode = 1;  // 0 mixed ignore, 1 mixed respect, 2 upper ignore, 3 upper respect
  int32_t read_write = 1;
  int64_t mtime = 0x7fffffff;
  int64_t mtime_ns = 0;
  int32_t lrecl = 0;
  int32_t trunc = 0;
  int32_t reload = 1;
  int32_t file_id = 0;
  std::vector<xf_point> points;
  xf_pdf_request pdf_copy, pdf_create;
  std::vector<xf_prefix_row> prefix_pending_a;  // commands that complete by themselves
  std::vector<xf_prefix_row> prefix_pending_b;  // block halves, destinations and the commands needing one
  std::vector<xf_prefix_error> prefix_errors;
  int32_t syntax_state = -1;
  int32_t format[7] = {0, 71, -1, 0, 1, 0, 1};
  int32_t eol_unix = 0;
  int32_t case_search_s = 0, case_search_c = 0;
  int32_t keep_blanks = 0;
  int32_t binary = 0;
  int32_t power[3] = {0, 0, 0};

  std::string_view line(int32_t i) const { return {text[i].get(), static_cast<std::size_t>(len[i])}; }
};

// A view's settings that it keeps for each file of the ring.
struct xf_view_file {
  int32_t current_line = 0;
  int32_t verify_first = 1, verify_last = 0x7ffffffe, verify_hex = 0;
  int32_t prefix = 1, prefix_width = 5;
  int32_t prefix_right = 0, prefix_nulls = 0;  // PREfix ON RIGHT, PREfix NULLS
  int32_t zone_first = 0, zone_last = 0x7ffffffe;
  int32_t scale = 0, scale_row = -3;
  int32_t tabline = 0, tabline_row = -4;
  int32_t number = 1;
};

// One screen split.
struct xf_view {
  int32_t left = 0, top = 0, width = 0, height = 0;
  std::vector<int32_t> open_lines;
  int32_t message_state = 0;
  int32_t cmd_width = 0;
  int32_t curline = 0;
  int32_t current_file = -1;
  std::vector<xf_view_file> per_file;  // one entry per file of the ring
  xf_view_file defaults;
  std::string message_text;
  std::string command_text;
  int32_t display[2] = {0, 0};
  int32_t scope = 0;  // 0 DISPLAY, 1 ALL, 2 inverted (internal sweeps only)
  int32_t shadow = 1;
  int32_t cmdline_place[2] = {2, 2};
  std::vector<std::string> messages;  // the message queue
  int32_t cmd_rows = 1;
};

// The ring and the working set: `file` and `view` are the current ones, reached without lookup.
struct xf_ring_state {
  std::vector<std::unique_ptr<xf_file>> files;
  std::vector<int32_t> ring_order;
  std::vector<std::unique_ptr<xf_view>> views;
  int32_t view_no = -1;
  int32_t file_no = -1;
  xf_view* view = nullptr;
  xf_file* file = nullptr;
  int32_t lowest_line = -1;  // -1 with the top-of-file line, 0 under MODE TOPLINE 1
  int32_t next_file_id = 0;
  int32_t initial_capacity = 1000;
  // The cursor as last read from the screen, when it stood in a file's text: view (-1: nowhere), 0-based
  // line and 0-based column. Searches start from it and the journal notes it.
  int32_t read_view = -1, read_line = 0, read_column = 0;
};
extern xf_ring_state xf_ring;

void xf_ring_reset();
int32_t xf_file_count();
int32_t& xf_current_line();  // of the current file in the current view

// Working set.
void xf_set_view(int32_t v);
void xf_set_file(int32_t i);

// Lines.
void xf_do(char cd, xf_text text, int32_t line, int32_t count, int mode, std::vector<xf_text>* lines,
           const char* tag);
void xf_grow(int32_t n);
// Makes the line arrays of `f` at least `rows` long (rows past `size` are empty).
void xf_reserve_rows(xf_file& f, int32_t rows);
void xf_shift_positions(int32_t line, int32_t n);
void xf_drop_positions(int32_t line, int32_t n, int32_t keep);
void xfdel(int32_t line, int32_t n);
void xfdup(int32_t line, int32_t n);
void xfadd(int32_t line, int32_t n, bool cursor);
void xfddel1(int32_t line, int32_t column, int32_t end_column);
void xf_strip_trailing(xf_text& t, int32_t& len, int32_t keep);

// The journal: free a file's undo stack (as a save does under SAVEClearundo ON), or its redo stack.
void xf_undo_clear(xf_file& f);
void xf_redo_clear(xf_file& f);

// Scope.
bool xf_in_scope(int32_t line);
bool xf_in_scope_or_all(int32_t line);
int32_t xf_count_in_scope(int32_t first, int32_t last);
int32_t xf_nth_in_scope(int32_t from, int32_t n);

// Ring membership and movement.
int32_t xf_new_file();
void xf_close_file();
void xf_goto_file(int32_t i);
int32_t xf_next_file();
int32_t xf_prev_file();
int32_t xf_new_view(int32_t top, int32_t left, int32_t height, int32_t width, int32_t file, int32_t prefix,
                    int32_t number);
