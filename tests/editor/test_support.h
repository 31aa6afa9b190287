// Shared set-up for the editor's unit tests: a clean batch editor with one 24x80 view.
#pragma once

#include <string>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/journal.h"
#include "editor/ring.h"
#include "editor/startup.h"
#include "editor/state.h"

inline void fresh_editor() {
  xf_state_reset();
  xf_run.batch = 1;
  xf_run.work_dir = "/tmp";
  xfini(24, 80);
}

// A new file in the ring holding these lines.
inline void file_with(const std::vector<std::string>& lines, const std::string& name = "/tmp/t.txt") {
  xf_new_file();
  xf_file& f = *xf_ring.file;
  f.name = f.saved_name = name;
  std::vector<xf_text> texts;
  for (const auto& l : lines) texts.push_back(xf_new_text(l));
  if (!texts.empty()) xf_do('I', nullptr, -1, static_cast<int32_t>(texts.size()), 0, &texts, "test");
}

inline std::vector<std::string> lines_of(const xf_file& f) {
  std::vector<std::string> r;
  for (int32_t i = 0; i < f.size; ++i) r.emplace_back(f.line(i));
  return r;
}

inline std::vector<std::string>& queued_messages() { return xf_ring.views[0]->messages; }

// The newest queued message, "" when none.
inline std::string last_msg() { return queued_messages().empty() ? "" : queued_messages().back(); }

inline int32_t cur() { return xf_current_line(); }

// A clean editor holding one file of these lines, its first line current.
inline void fresh_file(const std::vector<std::string>& lines) {
  fresh_editor();
  file_with(lines);
  xf_current_line() = 0;
}

// One user-level command in /tmp: a new undo step, then the command; its rc.
inline int32_t cmd(const std::string& text) {
  xf_new_step();
  return xfcom2(text, "/tmp");
}
