// The read cycle: asread waits for the user, edits fields by itself, and returns one reason with a value.
#pragma once

#include <cstdint>
#include <string>

// Event codes beside the characters 0-255.
enum : int {
  FSK_MOVE = 32512, FSK_DRAG = 32515, FSK_PAINT = 32516, FSK_FOCUS_IN = 32520, FSK_FOCUS_OUT = 32521,
  FSK_BUTTON1 = 32544, FSK_BUTTON2 = 32545, FSK_BUTTON3 = 32546, FSK_PRINT = 32570, FSK_SCROLL_LOCK = 32571,
  FSK_PAUSE = 32572, FSK_INSERT = 32573, FSK_HOME = 32574, FSK_PGUP = 32575, FSK_END = 32576, FSK_UP = 32577,
  FSK_PGDN = 32578, FSK_LEFT = 32579, FSK_RIGHT = 32581, FSK_DOWN = 32583, FSK_F1 = 32586, FSK_F24 = 32609,
  FSK_VSCROLL = 32808, FSK_MENUBAR = 32831, FSK_TOOLBAR = 32832, FSK_WHEEL_UP = 670, FSK_WHEEL_DOWN = 671,
  FSK_CLOSE = 672
};

// Reasons that end a read.
enum : int {
  ASR_ENTER = 0, ASR_PFK = 1, ASR_ESC = 5, ASR_L_KEY = 8, ASR_KEY = 9, ASR_PFK_UP = 11, ASR_L_KEY_UP = 18,
  ASR_KEY_UP = 19, ASR_BUTTON = 20, ASR_BUTTON_UP = 21, ASR_CTRL = 22, ASR_QUIT = 23, ASR_DRAG = 24,
  ASR_RESIZE = 25, ASR_FULL = 26, ASR_TIMEOUT = 27, ASR_ACCEL = 28, ASR_FIELD_MENU = 30, ASR_MENU = 31,
  ASR_FIELD_END = 32, ASR_REVERSE = 36, ASR_CLICK = 38, ASR_KEYED = 39, ASR_VSCROLL = 40, ASR_FOCUS_IN = 42,
  ASR_MENU_ITEM = 43, ASR_DEL = 44, ASR_ERASE = 45, ASR_UP_EXIT = 47, ASR_DOWN_EXIT = 48, ASR_DY_CLOSE = 49,
  ASR_DY_BUTTON = 59, ASR_RECOLOUR = 60, ASR_DY_SELECT = 62, ASR_MENUBAR = 63, ASR_TOOLBAR = 64, ASR_ALT = 65,
  ASR_FOCUS_OUT = 67, ASR_SELECTED = 68, ASR_PASTE = 69, ASR_WHEEL_UP = 670, ASR_WHEEL_DOWN = 671, ASR_CLOSE = 672,
  ASR_MOVED = 673
};

// Key roles, rebindable with asfrole.
enum as_role : int { AR_HOME, AR_IHOME, AR_PREV_FIELD, AR_INS, AR_CAPS, AR_APL, AR_DOWN_FIELD, AR_UP_FIELD, AR_EOF,
                     AR_COUNT };

// Waits for the user; returns the reason, its value, and the number of fields changed.
void asread(int& kind, int& value, int& nmod);
void asqdrag(int out[6]);  // field, line, column of the selection's start, then of its end
// Texts of the last chosen page-popup and menu-bar items. Page popups and the menu bar are not built yet:
// both give the empty text.
std::string asqmenu();
std::string asqmenubar();
int asqctrl();
int asqshift();
int asqshift2();
int asqalt();
void asqkeytime(uint32_t& seconds, uint32_t& microseconds);  // time of the last event that ended a read
void aspush(int ch);     // a character as if typed (origin 31743)
// While the editor is busy (a running process, a macro): whether Ctrl+C was typed; it is taken out of the input,
// other typing stays for the next read.
bool asqbreak();
void aspushkey(int code);

// In-field operations, also for the editor and macros; nmod is the count of modified fields, in and out.
void del_all_f(int& nmod);
void del_end_f(int& nmod);
void asback(int& nmod);
void asdel(int& nmod);
void astabf(int& nmod);
void astabb(int& nmod);

// Read settings.
void asftimer(int milliseconds);  // read time-out for the following reads; 0 none
void asfinsert(int on);           // insert mode, library-wide
int asqinsert();
void asfignrel();                 // the next key release does nothing
void asfnoref();                  // the next read skips its first refresh
void asffocus(int on);            // report focus gained as ASR_FOCUS_IN
void asfshright(int on);          // Shift+Right inserts a blank
void asfrole(int role, int code, int shift, int ctrl, int alt);  // binds a key role; code -1 unbinds
void asfmodel(int model);         // key roles of a keyboard model (14 at start)
void asfalttab(int ch, int on);   // marks a character that Alt reports as ASR_ALT
// Loads a keyboard file into the keyboard rows; kind 1 or 2 is stored, 0 keeps it. A null file only sets the kind.
void asfkeyb(const char* file, int kind);
// Pastes of the display (a terminal's bracketed paste): with on, each ends the read as ASR_PASTE and its text is
// asqpaste's; off (the start), a paste without line ends is typed into the field and one with line ends refused.
void asfpaste(int on);
std::string asqpaste();  // the text of the last ASR_PASTE, lines ended by LF
