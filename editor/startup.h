// The program's entry and its orderly end.
#pragma once

// The whole run of `tolva`: options, start-up, batch or interactive loop. Returns the exit code of a refused
// start; a started run ends through xf_exit.
int tolva_main(int argc, char** argv);
// Sets every program-wide default and the first view (rows x columns).
void xfini(int rows, int columns);
// Writes the batch run's messages into "tolva.@messages" and appends every ".@messages" file of the ring to disk.
void xf_flush_messages();
// The orderly end: exit code 0.
[[noreturn]] void xf_exit();
