// The selection and the shelf: the one stretch of marked text, what was copied, and the exchange with the system
// clipboard.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Kinds of a selection.
enum xf_sel_kind : int32_t { XS_LINEAR, XS_LINEAR_PENDING, XS_RECT, XS_RECT_PENDING };

// The selection record. Lines are 1-based; a first column of 0 means the whole line, a last column of -1 the
// line's end; columns are 1-based and both ends belong to the selection.
struct xf_selection {
  int32_t file = -1;  // file number, -1 for none
  int32_t anchor_file = -1, anchor_line = 0, anchor_column = 0;
  int32_t first_line = 0, first_column = 0;
  int32_t last_line = 0, last_column = 0;
  int32_t kind = XS_LINEAR;
  int32_t end_width = 0;
  int32_t end_line = 0, end_column = 0;  // the cell the moving end was last taken to
  // What the file looked like when the selection was made: a change of its lines cancels the selection.
  int32_t file_id = -1;
  std::size_t undo_records = 0, redo_records = 0;
  int32_t lines = 0;
};

// What was copied, and the clipboard's state as this program knows it.
struct xf_shelf_state {
  std::vector<std::string> lines;
  bool line_end = false;     // the last line ended with its line end
  bool rectangular = false;  // the shelf is a block of columns
  std::string offered;       // the text this program put on the clipboard last
  bool owner = false;        // the clipboard still holds `offered`
  std::string find_memory;   // S_Find's last string, with its leading delimiter and a trailing "/"
  std::string clip_first;    // the clipboard's first line as S_Find last took it
  std::string taken;         // the other program's text last brought into the shelf
};

struct xf_select_state {
  xf_selection sel;
  xf_shelf_state shelf;
};
extern xf_select_state xf_sel;

// Makes a file current in the current view for a while (the selection's file, for a command on it), and puts the
// old one back.
class xf_file_for_now {
 public:
  explicit xf_file_for_now(int32_t file);
  ~xf_file_for_now();
  xf_file_for_now(const xf_file_for_now&) = delete;
  xf_file_for_now& operator=(const xf_file_for_now&) = delete;

 private:
  int32_t old_;
};

// Back to the start-up state.
void xf_select_reset();
// Is there a selection? A selection whose file has closed or whose lines have changed since is cancelled here.
bool xf_sel_active();
// Is there a selection in the file that the current view shows?
bool xf_sel_in_view();
// Sets the selection in file `file` (a file number), lines and columns as in the record; anchored at its first end.
void xf_sel_set(int32_t file, int32_t kind, int32_t l1, int32_t c1, int32_t l2, int32_t c2);
// Takes the file as it is now as the selection's unchanged state (after a change that keeps the selection).
void xf_sel_touch();
// No selection.
void xf_sel_end();
// Is cell (0-based line and column) of file `file` selected?
bool xf_sel_covers(int32_t file, int32_t line, int32_t column);
// The selected 0-based columns of a line [from, to) of file `file`; false when the line has none.
bool xf_sel_span(int32_t file, int32_t line, int32_t& from, int32_t& to);

// The shelf as clipboard text: lines joined by LF, with a LF behind the last when the line-end flag is set.
std::string xf_shelf_text();
// Fills the shelf from a clipboard's text: NULs dropped, CR LF made LF, cut at byte 0x1A; a lone CR stays.
void xf_shelf_from_text(std::string_view text, bool rectangular);
// Copies the selection to the shelf and offers it (unless not `offer`); false (doing nothing) without a
// selection in an open file.
bool xf_sel_copy(bool offer = true);
// Deletes the selected text in one step; the cursor goes where it began and the selection ends.
void xf_sel_delete();
// Puts the shelf's text on the clipboard, and notes this program as its owner.
void xf_shelf_offer(bool primary = false);
// Brings the clipboard into the shelf unless this program owns it. 1 ready, 0 the clipboard is empty (message
// given unless `quiet`), -1 it could not be read (the same).
int xf_shelf_take_clipboard(bool quiet = false);
// Pastes the shelf at 0-based line and column of the current file, inserted or overlaid, rectangular by the
// shelf's flag. The line must exist.
void xf_shelf_paste(int32_t line, int32_t column, bool overlay);
// The selected text of a one-line selection, "" otherwise.
std::string xf_sel_text();
