// The field screen model: pages of numbered fields on a grid of cells, their attributes, content and settings.
// Every operation leaves a status word (fsstatus) and, on failure, the last error text (fserror).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class fs_host;

// A field record: fourteen integers in this fixed order. Callers pass records as flat int arrays of 5 to 14 members.
struct fs_field {
  int32_t id, line, col, lines, cols, type, intensity, color, reserved9, highlight, menu_group, attr, reserved13,
      fold_upper;
};
static_assert(sizeof(fs_field) == 14 * sizeof(int32_t));

// Field types and the bits of fs_field::attr.
enum { FT_TEXT = 0, FT_NUMERIC = 1, FT_PROTECTED = 2 };
enum : int {
  FA_PLAIN = 1, FA_REPORT_FULL = 2, FA_CLICK = 4, FA_KEYED = 8, FA_REPORT_EDIT = 16, FA_UP_EXIT = 32,
  FA_DOWN_EXIT = 64, FA_OUI_NON = 128, FA_YES_NO = 256, FA_NO_CLICK_MOVE = 512, FA_HAND = 1024, FA_LTR = 4096,
  FA_DRAG_SELECT = 8192
};
inline constexpr uint16_t FS_NULL_CELL = 32767;  // a cell nobody wrote into: shows and reads as a blank

// Segments: one content shown in several renderings side by side (kind 0 text, 1 hexadecimal, 2 read-only text).
// map has one entry per field cell: +col text cell, -col hexadecimal digit cell, 0 separator (columns from 1).
struct fs_segment {
  int start, end, kind;
};
struct fs_segments {
  int count;
  const fs_segment* seg;
  const int* map;
};
// Called after an edit: bytes before and after, cell count, user data, first segment's start, operation, place.
using fs_on_edit = int (*)(const uint16_t* before, const uint16_t* after, int ncells, void* user, int seg_start,
                           int op, int place);

// --- Library and pages ---
void fs_sethost(fs_host* host);  // the display used from the next fsinit; null: a host that shows nothing
void fs_reset();                 // drops every page and setting: the state of a fresh process (tests)
int fsstatus();                  // status word of the last operation
std::string_view fserror();      // last error text, "..... No error" at start
void fsinit(int argc, char** argv);
void fsterm();                  // destroys all pages and makes a fresh page 0
void fspcrt(int page, int lines, int cols, int flags);
void fspdel(int page);
void fspsel(int page);
int fscurpage();  // id of the current page
void fsqury(int code, int unused, int count, int* out);
void fsalrm();
void asfview(int on);
void asfquiet(int flag);
void asrefresh();  // brings the display up to date
void asredraw();   // forgets the shadow and repaints everything
void fssuspend(int on);  // leaves the display to others (1) or takes it back (0), repainting it whole at the next refresh

// --- Defining fields ---
// Defines, replaces or removes fields; returns the 0-based table index of the last new field, or -1.
int asrfmt(int n, int count, const int* records);
// asrfmt of one record, then fills its edit record.
int asrfmtx(int count, const int* record, const int* tab_list, const fs_segments* segments, fs_on_edit on_edit,
            void* user_data, int file_line, int binary, int limit);
void asclear();
// Replaces the field's popup menu; count 0 only removes it. texts may be null.
void asfmenu(int id, int button, int count, const char* const* labels, const char* const* texts, int ends_read);

// --- Attributes of a whole field ---
void asfcol(int id, int color);
void asfhlt(int id, int highlight);
void asfint(int id, int intensity);
void asftyp(int id, int type);
void asfmgd(int id, int value);
void asscol(int id);
void asshlt(int id);
void asftypall(int type);

// --- Attributes cell by cell (stop at the shorter of array and field) ---
void asccol(int id, int n, const int* colors);
void asccolb(int id, int n, const signed char* colors);
void aschlt(int id, int n, const int* highlights);
void asqcol(int id, int n, int* out);

// --- Content ---
void ascget(int id, int len, char* buf);                // blanks behind, no terminator
void ascget_short(int id, int len, uint16_t* buf);      // cells as they are, 32767 behind
std::optional<std::string> ascget_char(int id, int mode);  // 0 all, 1 no trailing blanks, 2 nor leading
int ascget_int(int id, int& out);                        // 0 parsed, 1 not a number, -1 no field
int ascput(int id, int len, const char* bytes);          // returns the table index or -1
int ascput_short(int id, int len, const uint16_t* cells);
int ascputd(int id, int len, const char* bytes);
void asdrawfld(int index, int first_cell);

// --- Modified fields and queries ---
void asfmod(int id, int flag);
// Hands over up to count modified fields (id, cells, used cells) and clears their flags; returns how many.
int asqmod(int count, int* ids, int* sizes, int* used);
void asfcur(int id, int line, int col);
void asfcurq(int id, int line, int col);
void asqcur(int code, int& id, int& line, int& col);
void asqmou(int code, int& id, int& line, int& col);
void asqfld(int code, int id, int count, int* out);
int asq_ff(int id);

// --- Settings ---
void asfacol(int on);
void asfmap(int logical, int red, int green, int blue);
void asfrem(int mode);
void asfup(int on);
void asfupm(int on);
void asfskip(int on);
void asfint2(int on);
void asfblk(int on);
void asfapl(int on);
void asfrepeat(int on);
void asfdelay(int key_first, int key_next, int mouse_first, int mouse_next);
void asqdelay(int out[4]);
void asfkeep();
void asflclk(int on);
void asfrclk(int on);
void asfrdonly(int on);
void asftrack(int on);
void asfveto(int mode);
void asflinecol(int on);  // line-and-column display on the status row
