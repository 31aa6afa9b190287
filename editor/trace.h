// The ring of the last 500 trace tags, written to "xed.trace" when the program faults.
#pragma once

#include <cstdint>

constexpr int xf_trace_size = 500;

struct xf_trace_state {
  const char* tags[xf_trace_size] = {};
  int32_t newest = -1;
  int32_t count = 0;
};
extern xf_trace_state xf_traces;

// Adds a tag; the pointer must stay valid for the whole run (a string literal).
inline void xf_trace(const char* tag) {
  xf_traces.newest = (xf_traces.newest + 1) % xf_trace_size;
  xf_traces.tags[xf_traces.newest] = tag;
  if (xf_traces.count < xf_trace_size) ++xf_traces.count;
}
