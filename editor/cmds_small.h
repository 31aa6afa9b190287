// Small commands' own state: the PREServe stack.
#pragma once

// Empties the PREServe stack.
void xf_small_reset();
