// Numbered and free messages.
#include "editor/messages.h"

#include <cstdarg>
#include <cstdio>

#include "editor/ring.h"

xf_msg_state xf_msgs;

namespace {

const char* const table[xf_msg_count] = {
#include "editor/message_table.inc"
};

}  // namespace

std::string_view xf_msg_table_text(int n) {
  if (n < 0 || n >= xf_msg_count) return "....... Unknown error";
  return table[n] ? table[n] : "";
}

void xf_msg(int n, int mode) { xf_msg_text(xf_msg_table_text(n), mode); }

void xf_msg_text(std::string_view text, int mode) {
  xf_view* v = xf_ring.view;
  if (!v) {
    std::fprintf(stderr, "tolva: %.*s\n", static_cast<int>(text.size()), text.data());
    return;
  }
  std::string shown(text.substr(0, static_cast<std::size_t>(v->width)));
  shown.resize(static_cast<std::size_t>(v->width), ' ');
  v->message_text = std::move(shown);
  xf_msgs.last = std::string(text);
  v->message_state = mode == XF_MSG_ERROR ? 1 : 2;
  // Messages shown at once need a screen; without one they join the queue so that nothing is lost.
  if (!xf_msgs.hold) v->messages.emplace_back(text);
}

void xf_msgf(int mode, const char* fmt, ...) {
  char buf[4096];
  va_list ap;
  va_start(ap, fmt);
  std::vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  xf_msg_text(buf, mode);
}
