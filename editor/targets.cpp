// Targets. The target language is not built yet: a target says so honestly.
#include "editor/targets.h"

#include "editor/messages.h"
#include "editor/state.h"

void xf_implied_locate(std::string_view) {
  xf_msg(164, XF_MSG_ERROR);
  rc = 1;
}
