// Undo and redo: stepping the journal that xf_do writes, and the commands UNDo, REDo, ALT, SAVEClearundo.
#pragma once

#include <cstdint>

// Takes back one step of the current file. Returns false when there was nothing to undo.
bool xf_undo();
// Plays one step of the current file again. Returns false when there was nothing to redo.
bool xf_redo();
// The next journalled change in every file of the ring opens a new step.
void xf_new_step();
