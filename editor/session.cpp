// Shell sessions: the XSHell family runs a command with its output growing in an edit file of the ring, with
// XSHELLMax (how many session files), MESsagesdir (where they go) and SHEllEXT (extensions opened outside).
#include "editor/session.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "editor/command.h"
#include "editor/compose.h"
#include "editor/fileio.h"
#include "editor/handlers.h"
#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_process.h"
#include "screen/as_read.h"
#include "screen/fs.h"

xf_session_state xf_session;

namespace {

int invalid(int code) {
  xf_msg(16, XF_MSG_ERROR);
  rc = code;
  return 1;
}

int32_t ring_index_of(const std::string& path) {
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[static_cast<std::size_t>(i)]->name == path) return i;
  return -1;
}

std::string session_dir() {
  std::string dir = xf_session.messages_dir;
  if (!dir.empty() && dir[0] != '/') dir = xf_run.work_dir + (dir == "." ? "" : "/" + dir);
  return os_file_kind(dir) == os_kind::directory ? dir : xf_run.work_dir;
}

// Appends output to the session's lines: the first piece extends the last line, CR before LF goes, a zero byte
// becomes the line-feed code that stands for it.
void append_output(xf_file& f, std::string_view bytes, std::string& partial) {
  for (char ch : bytes) {
    if (ch == '\n') {
      if (!partial.empty() && partial.back() == '\r') partial.pop_back();
      xf_do('r', xf_new_text(partial), f.size - 1, 1, 0, nullptr, "xshell:line");
      xf_do('i', xf_new_text(""), f.size - 1, 1, 0, nullptr, "xshell:next");
      partial.clear();
      continue;
    }
    partial += ch == 0 ? '\n' : ch;
  }
  xf_do('r', xf_new_text(partial), f.size - 1, 1, 0, nullptr, "xshell:tail");
}

// Shows the session as it grows: its last line in sight.
void show_growth(xf_file& f) {
  if (xf_run.batch) return;
  int32_t& cur = xf_current_line();
  int32_t rows = std::max(1, xf_ring.view->height - xf_ring.view->curline - 2);
  if (f.size - 1 - cur > rows) cur = f.size - 1 - rows;
  xf_compose();
  asrefresh();
}

int run_session(const xf_cmd_call& c, const char* shell_var) {
  std::string text(xf_trim(xf_operands(c.text)));
  if (text.empty()) return invalid(1);
  if (xf_run.batch || xf_ring.views.empty()) return 1;
  xf_session_run(text, shell_var, xf_session_pick("xshell"));
  return 1;
}

}  // namespace

std::string xf_session_pick(std::string_view word) {
  std::string dir = session_dir();
  for (int32_t i = 1; i <= xf_session.max_files; ++i) {
    std::string candidate = dir + "/" + std::to_string(i) + "." + std::string(word);
    if (os_file_kind(candidate) == os_kind::none && ring_index_of(candidate) < 0) return candidate;
  }
  xf_session.counter = xf_session.counter % xf_session.max_files + 1;
  return dir + "/" + std::to_string(xf_session.counter) + "." + std::string(word);
}

bool xf_session_run(const std::string& text, const char* shell_var, const std::string& path) {
  int32_t back_view = xf_ring.view_no;
  int32_t back_file = xf_ring.file_no;
  std::string back_name = xf_ring.file ? xf_ring.file->name : std::string();
  if (int32_t old = ring_index_of(path); old >= 0) {
    xf_set_file(old);
    xf_close_file();
  }
  // The session shows in the other view when there are two.
  int32_t shown_in = back_view;
  for (int32_t v = 0; v < static_cast<int32_t>(xf_ring.views.size()); ++v)
    if (v != back_view && xf_ring.views.size() > 1) {
      shown_in = v;
      break;
    }
  xf_set_view(shown_in);
  if (xf_open(path, xf_run.work_dir, true) != 0 || !xf_ring.file) return false;
  xf_file& f = *xf_ring.file;
  if (f.size > 0) xfdel(0, f.size);
  xf_insert_read_lines(-1, {text, ""});
  xf_session.last_name = path;
  xf_msg(105, XF_MSG_INFO);
  std::string line = text;
  if (shell_var)
    if (const char* sh = std::getenv(shell_var)) line = std::string(sh) + " " + text;
  os_child child;
  int err = child.start(line);
  std::string partial;
  bool killed = false;
  int status = 28;
  if (err != 0) {
    std::fprintf(stderr, "Unable to create process; Error is: \"%s\"\n", std::strerror(err));
    append_output(f, "", partial);
  } else {
    show_growth(f);
    std::string chunk;
    for (;;) {
      chunk.clear();
      long n = child.read_some(chunk, 10);
      if (n == 0) break;
      if (n > 0) {
        append_output(f, chunk, partial);
        show_growth(f);
        continue;
      }
      if (asqbreak()) {
        child.kill();
        killed = true;
        xf_msg(101, XF_MSG_ERROR);
        break;
      }
    }
    status = child.wait();
  }
  if (!killed) {
    char end[64];
    std::snprintf(end, sizeof end, "\" exiting with return status = %d", status);
    std::string last = "Shell \"" + text + end + (err != 0 ? "  (Not found)" : "");
    if (partial.empty())
      xf_do('r', xf_new_text(last), f.size - 1, 1, 0, nullptr, "xshell:end");
    else
      xf_do('i', xf_new_text(last), f.size - 1, 1, 0, nullptr, "xshell:end");
  }
  f.alt_save = 0;
  xf_current_line() = 0;
  // The view and the file from before the run come back.
  xf_set_view(back_view);
  int32_t again = back_name.empty() ? -1 : ring_index_of(back_name);
  if (again >= 0) xf_set_file(again);
  else if (back_file < 0) xf_set_file(ring_index_of(path));
  return !killed;
}

void xf_session_reset() { xf_session = xf_session_state{}; }

int xfcm_xshell(const xf_cmd_call& c) {
  std::string_view n = c.row_name;
  const char* var = n == "xshell" ? "SH" : n == "xcshell" ? "CSH" : n == "xkshell" ? "KSH" : n == "xtcshell" ? "TCSH"
                                                                                                              : nullptr;
  return run_session(c, var);
}

// XSHELLMax [n]: how many session files there are before they are reused.
int xfcm_xshellmax(const xf_cmd_call& c) {
  std::string_view op = xf_trim(xf_operands(c.text));
  if (op.empty()) {
    xf_msgf(XF_MSG_INFO, "..... Is %d", xf_session.max_files);
    return 1;
  }
  int32_t n = 0;
  if (!xf_parse_count(op, n) || n < 1) return invalid(5);
  xf_session.max_files = n;
  if (xf_session.counter > n) xf_session.counter = 0;
  return 1;
}

// SHEllEXT [words]: the extensions the file list opens through the system's association.
int xfcm_shellext(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    std::string s = "... Is";
    for (const std::string& e : xf_session.shell_ext) s += " \"" + e + "\"";
    xf_msg_text(s, XF_MSG_INFO);
    return 1;
  }
  xf_session.shell_ext = w;
  return 1;
}

// MESsagesdir [dir]: where session and compile files go.
int xfcm_messagesdir(const xf_cmd_call& c) {
  std::string_view op = xf_trim(xf_operands(c.text));
  if (op.empty()) {
    xf_msgf(XF_MSG_INFO, "..... is \"%s\"", xf_session.messages_dir.c_str());
    return 1;
  }
  xf_session.messages_dir = std::string(op);
  return 1;
}
