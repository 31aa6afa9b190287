// The terminal as the interpreter's console sees it: its width and the input waiting on it.
#pragma once

// Columns of the terminal on standard output (TIOCGWINSZ), else the COLUMNS variable when it is a positive
// number, else 80.
int os_tty_columns();

// Bytes typed and not yet read on standard input when it is a terminal; 0 otherwise.
int os_tty_pending();
