// Program-wide editor state and its reset.
#include "editor/state.h"

#include "editor/autosave.h"
#include "editor/cmds_small.h"
#include "editor/command.h"
#include "editor/compile.h"
#include "editor/filetype.h"
#include "editor/find.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/pdffind.h"
#include "editor/prefix.h"
#include "editor/regex.h"
#include "editor/screens.h"
#include "editor/session.h"
#include "editor/select.h"
#include "editor/linecmds.h"
#include "editor/ring.h"
#include "editor/target.h"
#include "rexx/paloma.h"

xf_run_state xf_run;
xf_settings xf_set;
int32_t rc = 0;

void xf_state_reset() {
  xf_run = xf_run_state{};
  xf_set = xf_settings{};
  rc = 0;
  xf_ring_reset();
  xf_ft_reset();
  xf_macro_reset();
  xf_cmd_reset();
  xf_target_reset();
  xf_linecmd_reset();
  xf_re_reset();
  xf_pdf_reset();
  xf_prefix_reset();
  xf_wordchars_reset();
  xf_small_reset();
  xf_screens_reset();
  xf_session_reset();
  xf_autosave_reset();
  xf_compile_reset();
  xf_select_reset();
  xf_msgs = xf_msg_state{};
  paloma_queue_clear();
}
