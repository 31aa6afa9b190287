// Internal state of the screen library: the library record, pages, the read cycle's record, and shared helpers.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/host.h"

// The caller's edit record of a field slot (asrfmtx); limit -1 means none.
struct fs_edit {
  const int* tab_list = nullptr;
  const fs_segments* segments = nullptr;
  fs_on_edit on_edit = nullptr;
  void* user_data = nullptr;
  int file_line = 0;
  int binary = 0;
  int limit = -1;
};

struct fs_popup {
  int button = 0;
  int count = 0;
  std::vector<std::string> labels, texts;
  bool has_texts = false;
  int ends_read = 0;
  int base = 0;
};

// One page: its fields and every per-cell and per-field array. Cell arrays are indexed by flat cell index.
struct fs_page {
  int id = -1;
  int cur_col = 1, cur_line = 1;
  int mou_col = 1, mou_line = 1;
  std::vector<fs_field> fields;
  std::vector<char> modified, changed;
  std::vector<fs_popup> popups;
  std::vector<fs_edit> edits;
  std::vector<std::vector<int>> cells;  // per field: flat cell indexes in reading order
  std::vector<int> cellmap;             // 1-based field index or 0
  std::vector<uint16_t> chars;
  std::vector<int> hlt, color, intens;
  int alarms = 0;
};

// The cell as last painted on the display.
struct fs_shadow_cell {
  uint16_t ch = 32;
  uint8_t hlt = 0, color = 63, intens = 1;
};

inline constexpr int64_t FS_MAX_CELLS = 16 * 1024 * 1024;  // the largest grid the library takes on

// The library state: one per process.
struct fs_lib {
  fs_host* host = nullptr;
  bool inited = false;
  int nb_lines = 0, nb_cols = 0, nb_cells = 0;
  std::vector<std::unique_ptr<fs_page>> pages;
  fs_page* cur = nullptr;
  int window_page = -1;  // the page shown on the display at the last refresh
  int status = 0;
  std::string error = "..... No error";
  bool quiet = false, view = true;
  bool repaint = false, full_repaint = true, colours_pending = true;
  bool compare_all = true;  // cells outside the changed fields may differ: compare every line
  std::vector<fs_shadow_cell> shadow;
  std::array<int, 64> map{}, rev{};  // logical colour -> table index, and back
  std::array<uint32_t, 64> rgb{};
  int acol = 1, rem = 0, up = 1, upm = 1, skip = 0, int2 = 0, blk = 1, apl = 0, repeat = 0;
  int delays[4] = {100000, 50000, 60000, 60000};
  int linecol = 0;  // the status row shows line, column and value in segmented fields
  int keep = 0, lclk = 0, rclk = 0, rdonly = 0, track = 0, veto = 0;
  int next_popup_item = 20000;
  std::string status_row;  // what the status row shows, so that unchanged indicators are not sent again
};

// The read cycle's state.
struct as_state {
  bool loaded = false;  // the key tables below are set up
  std::deque<fs_event> queue;
  bool insert = false;
  bool quit = false, resize = false, timer_fired = false;
  int timer_ms = 0;
  bool ctrl = false, shift = false, shift2 = false, alt = false;
  bool ignore_release = false, no_refresh = false, focus_reports = false, shift_right = false;
  int last_kind = -1;
  fs_page* last_page = nullptr;
  int nmod = 0;
  fs_event last_event{};
  bool have_last_event = false;
  int repeat_code = 65535;
  uint32_t key_sec = 0, key_usec = 0;
  uint64_t last_press_us = 0;
  bool have_press = false;
  int armed = 0;         // 1-based field index of an armed push button or yes/no field
  int last_button = 0;
  bool drop_drags = false;
  int drag_x = 0, drag_y = 0;
  bool selecting = false, sel_started = false, sel_moved = false;
  int sel[6] = {};
  int mark = -1;  // flat index of the cell showing the drag mark
  int track_line = 0, track_col = 0;
  std::string menu_text;
  struct role { int code, shift, ctrl, alt; };
  std::array<role, AR_COUNT> roles{};
  std::array<uint8_t, 256> alt_table{};
  std::array<std::array<uint8_t, 48>, 8> rows{};  // emitted plain, emitted Shift, plain, Shift, Alt, APL x3
  int row_len = 48;  // entries in use in each row
  int keyfile_kind = 0;
  bool keyfile_loaded = false;
  int pending_kind = -1, pending_value = 0;  // a result decided inside an editing step
  bool paste_reason = false;  // asfpaste: a paste ends the read
  std::string paste_text;     // the text of the last ASR_PASTE
};

extern fs_lib g_fs;
extern as_state g_as;

// --- shared helpers, defined in the file named ---
// fs_lib.cpp
bool fs_fail(int status, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
bool fs_need_init(const char* name);  // true when fsinit ran; else reports "<name> : call fsinit() first"
void fs_ok();
void as_reset_state();  // as_read.cpp
// fs_field.cpp
int fs_find(int id);  // 0-based table index or -1
void fs_apply_resize(int lines, int cols);
// fs_paint.cpp
void fs_forget_shadow();
void fs_draw_indicators();
void fs_place_cursor();
void fs_mark_cell(int flat, bool on);  // the drag mark: a cell shown inverted, or put back
// as_edit.cpp: in-field editing; each returns true when it decided a read result in g_as.pending_kind.
bool as_ins(int ch);
bool as_tab(bool forward);
void as_home(bool last_field);
void as_newline(bool previous);
bool as_erase(bool to_end, bool whole_field, const char* name);
bool as_delete();
bool as_backspace();
void as_shift_right();
void as_move(int dline, int dcol);
bool fs_takes_input(int flat);
// as_hex.cpp: segmented fields. A segment span is a run of cells of one rendering; kind -1 outside segments.
struct as_seg {
  int kind = -1, lo = 0, hi = 0, start = 0;
};
as_seg as_segment_at(int i, int k);
void as_mirror(int i, bool from_hex);  // copies one rendering of every content column into the other
bool as_hex_accepts(int i, int k, int ch);
bool as_hex_insert(int i, int k, int ch, const as_seg& seg, bool binary);
void as_hex_delete(int i, int k, const as_seg& seg);
bool as_hex_second_digit(int i, int k);
std::string as_status_text(int i, int k);  // the status row's "Line=..." text for a cell of a segmented field  // the cell lies in a field that is not protected
inline int fs_flat(int line, int col) { return col + (line - 1) * g_fs.nb_cols - 1; }
