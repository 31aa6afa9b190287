// Numbered and free messages: the message table, the view's queue, and the last message.
#pragma once

#include <string>
#include <string_view>

// Modes of a message.
enum xf_msg_mode { XF_MSG_INFO = 0, XF_MSG_ERROR = 1, XF_MSG_NOW = 2, XF_MSG_NOW_BEEP = 3 };

constexpr int xf_msg_count = 211;

struct xf_msg_state {
  std::string last;   // the last message issued (EXTRACT LASTMSG)
  bool hold = false;  // a macro holds messages back
};
extern xf_msg_state xf_msgs;

// Text of message n ("....... Unknown error" for a number out of the table; "" for an unused row).
std::string_view xf_msg_table_text(int n);
// Issue message n, or a free text.
void xf_msg(int n, int mode);
void xf_msg_text(std::string_view text, int mode);
// Issue a message built with printf-style formatting.
void xf_msgf(int mode, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
