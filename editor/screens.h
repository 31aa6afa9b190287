// Screen splits: the views' geometry set by SCReen, C_SCRH, C_SCRV and C_SCRJ, and rebuilt after a resize.
#pragma once

#include <cstdint>

// The SCReen form that a resize does again: n views, across or side by side (0: none).
struct xf_screens_state {
  int32_t remembered = 0;
  bool vertical = false;
};
extern xf_screens_state xf_screens;

void xf_screens_reset();
// Rebuilds the views for the screen's present size: one view with the first view's settings, then a remembered
// `SCReen n` again.
void xf_relayout();
