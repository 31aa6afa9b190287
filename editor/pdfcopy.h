// The ISPF personality's COPY, CREATE and REPLACE: lines come in from a file, or go out to one, at a label or at the
// place the prefix area names. A request that still waits for that place is parked on the file (pdf_copy,
// pdf_create) and completed by the prefix area.
#pragma once

#include <cstdint>

// Completes the parked COPY of the current file: the lines go after `line`, or before it with `before` (a line of
// -1 is the top of the file). False when no COPY waits, or after the failure's message and rc.
bool xf_pdf_copy_complete(int32_t line, bool before);
// Completes the parked CREATE or REPLACE of the current file with its lines first..last (0-based); `move` deletes
// them once written. False when none waits, or after the failure's message and rc.
bool xf_pdf_create_complete(int32_t first, int32_t last, bool move);
