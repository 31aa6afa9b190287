// The handlers of the command table rows built so far, one declaration each.
#pragma once

#include "editor/cmdtable.h"

int xfcm_autobin(const xf_cmd_call& c);
int xfcm_backup(const xf_cmd_call& c);
int xfcm_binary(const xf_cmd_call& c);
int xfcm_bottom(const xf_cmd_call& c);
int xfcm_cmsg(const xf_cmd_call& c);
int xfcm_command(const xf_cmd_call& c);
int xfcm_equal(const xf_cmd_call& c);
int xfcm_exit(const xf_cmd_call& c);
int xfcm_file(const xf_cmd_call& c);
int xfcm_fileconv(const xf_cmd_call& c);
int xfcm_hash(const xf_cmd_call& c);
int xfcm_history(const xf_cmd_call& c);
int xfcm_impcmscp(const xf_cmd_call& c);
int xfcm_input(const xf_cmd_call& c);
int xfcm_keepblanks(const xf_cmd_call& c);
int xfcm_lastfiles(const xf_cmd_call& c);
int xfcm_limit(const xf_cmd_call& c);
int xfcm_linend(const xf_cmd_call& c);
int xfcm_lrecl(const xf_cmd_call& c);
int xfcm_macro(const xf_cmd_call& c);
int xfcm_mode(const xf_cmd_call& c);
int xfcm_msg(const xf_cmd_call& c);
int xfcm_noop(const xf_cmd_call& c);
int xfcm_preservlinks(const xf_cmd_call& c);
int xfcm_purge(const xf_cmd_call& c);
int xfcm_qid(const xf_cmd_call& c);
int xfcm_qmark(const xf_cmd_call& c);
int xfcm_query(const xf_cmd_call& c);
int xfcm_quit(const xf_cmd_call& c);
int xfcm_rw(const xf_cmd_call& c);
int xfcm_save(const xf_cmd_call& c);
int xfcm_set(const xf_cmd_call& c);
int xfcm_shell(const xf_cmd_call& c);
int xfcm_special_none(const xf_cmd_call& c);
int xfcm_synonym(const xf_cmd_call& c);
int xfcm_top(const xf_cmd_call& c);
int xfcm_trunc(const xf_cmd_call& c);
int xfcm_unavailable(const xf_cmd_call& c);
int xfcm_xedit(const xf_cmd_call& c);
int xfcm_xext(const xf_cmd_call& c);
