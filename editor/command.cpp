// The command processor: xfcom1, xfcom2 and what they go through.
#include "editor/command.h"

#include <cstdio>
#include <cstdlib>
#include <csignal>

#include "editor/autosave.h"
#include "editor/cmdtable.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/journal.h"
#include "editor/linecmds.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"
#include "editor/trace.h"
#include "rexx/paloma.h"

xf_cmd_state xf_cmd;

namespace {

bool is_letter(unsigned char ch) { return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z'); }
bool is_digit(char ch) { return ch >= '0' && ch <= '9'; }

// The parts of the current file's name that substitution offers.
struct name_parts {
  std::string name, lfn, fn, fd, ft;
};

name_parts split_name(const std::string& name) {
  name_parts p;
  p.name = name;
  std::size_t slash = name.rfind('/');
  std::string base = slash == std::string::npos ? name : name.substr(slash + 1);
  std::size_t dot = base.rfind('.');
  p.ft = dot == std::string::npos ? "" : base.substr(dot + 1);
  p.fn = dot == std::string::npos ? base : base.substr(0, dot);
  std::size_t ndot = name.rfind('.');
  p.lfn = (ndot == std::string::npos || (slash != std::string::npos && ndot < slash)) ? name : name.substr(0, ndot);
  if (slash == std::string::npos)
    p.fd = "";
  else
    p.fd = slash == 0 ? "/" : name.substr(0, slash);
  return p;
}

bool starts_with(std::string_view s, std::size_t at, std::string_view w) {
  return s.size() >= at + w.size() && s.compare(at, w.size(), w) == 0;
}

void run_synonym(const xf_synonym& syn, std::string_view rest, std::string_view work_dir) {
  for (std::size_t i = 0; i < syn.defs.size(); ++i) {
    std::string def = syn.defs[i];
    if (i + 1 == syn.defs.size()) def += rest;
    bool saved = xf_cmd.from_synonym;
    xf_cmd.from_synonym = true;
    int32_t r = xfcom2(def, work_dir);
    xf_cmd.from_synonym = saved;
    if (r != 0) break;
  }
}

// `5 top`: go to the line, then run what follows the number.
void goto_number(std::string_view text, std::string_view work_dir) {
  std::size_t i = 0;
  int64_t n = 0;
  while (i < text.size() && is_digit(text[i])) {
    if (n < 0x7fffffff) n = n * 10 + (text[i] - '0');
    ++i;
  }
  if (xf_ring.file) {
    xf_file& f = *xf_ring.file;
    int64_t line = xf_ring.view->per_file[xf_ring.file_no].number == 2 ? n : n - 1;
    if (line > f.size) line = f.size;
    if (line < xf_ring.lowest_line) line = xf_ring.lowest_line;
    if (line == f.size && f.size > 0) line = f.size - 1;
    if (!xf_in_scope_or_all(static_cast<int32_t>(line))) {
      xf_msg(55, XF_MSG_ERROR);
      rc = 1;
      return;
    }
    xf_current_line() = static_cast<int32_t>(line);
  }
  while (i < text.size() && text[i] == ' ') ++i;
  if (i < text.size()) xfcom2(text.substr(i), work_dir);
}

#ifdef TOLVA_TEST_HOOKS
// Test builds only: `xtestfault SEGV|BUS|FPE|ILL|HUP|TERM` raises that signal, to test the emergency road.
bool test_fault(std::string_view ltext) {
  if (!starts_with(ltext, 0, "xtestfault ")) return false;
  std::string_view what = ltext.substr(11);
  int sig = what == "bus" ? SIGBUS : what == "fpe" ? SIGFPE : what == "ill" ? SIGILL : what == "hup" ? SIGHUP
          : what == "term" ? SIGTERM : SIGSEGV;
  std::raise(sig);
  return true;
}
#endif

}  // namespace

std::string xf_substitute(std::string_view text) {
  if (!xf_set.mode_expand_on) return std::string(text);
  name_parts np;
  bool have_file = xf_ring.file != nullptr;
  if (have_file) np = split_name(xf_ring.file->name);
  const xf_macro_frame* frame = xf_macro_current_frame();
  std::string xhome = xf_run.xhome;
  if (!xhome.empty() && xhome.back() == '/') xhome.pop_back();

  struct word {
    std::string_view key;
    const std::string* value;
    bool needs_file;
  };
  const std::string arch = "linux";
  const word words[] = {{"$xhome", &xhome, false}, {"$arch", &arch, false},  {"$name", &np.name, true},
                        {"$lfn", &np.lfn, true},   {"$fn", &np.fn, true},    {"$fd", &np.fd, true},
                        {"$ft", &np.ft, true}};
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == '\\' || text[i] == '$') {
      std::size_t bs = 0;
      while (i + bs < text.size() && text[i + bs] == '\\') ++bs;
      std::size_t at = i + bs;
      // What is at `at`: a known word, a macro argument, or (with ENV) an environment variable.
      std::size_t klen = 0;
      std::string value;
      bool found = false;
      if (at < text.size() && text[at] == '$') {
        for (const word& w : words) {
          if ((w.needs_file && !have_file) || !starts_with(text, at, w.key)) continue;
          klen = w.key.size();
          value = *w.value;
          found = true;
          break;
        }
        if (!found && frame) {
          if (at + 1 < text.size() && is_digit(text[at + 1])) {
            int k = text[at + 1] - '0';
            klen = 2;
            value = k < static_cast<int>(frame->argv.size()) ? frame->argv[k] : "";
            found = true;
          } else if (starts_with(text, at, "$argv")) {
            klen = 5;
            value = frame->args;
            found = true;
          }
        }
        if (!found && xf_set.mode_expand_env && bs == 0) {
          std::size_t e = at + 1;
          while (e < text.size() && text[e] != ' ') ++e;
          if (e > at + 1) {
            const char* v = std::getenv(std::string(text.substr(at + 1, e - at - 1)).c_str());
            klen = e - at;
            value = v ? v : "";
            found = true;
          }
        }
      }
      if (!found) {
        out.append(text.substr(i, at - i + (at < text.size() ? 1 : 0)));
        i = at + 1;
        continue;
      }
      if (bs == 1) {  // protected: the backslash goes, the word stays
        out.append(text.substr(at, klen));
      } else {
        out.append(bs / 2, '\\');
        out += value;
      }
      i = at + klen;
      continue;
    }
    out += text[i++];
  }
  // Inside a command macro, any "$" and digits left become nothing.
  if (frame) {
    std::string cleaned;
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (out[i] == '$' && i + 1 < out.size() && is_digit(out[i + 1])) {
        ++i;
        while (i + 1 < out.size() && is_digit(out[i + 1])) ++i;
        continue;
      }
      cleaned += out[i];
    }
    out = std::move(cleaned);
  }
  return out;
}

void xf_history_add(std::string_view text) {
  if (xf_set.history_max <= 0) return;
  std::size_t b = text.find_first_not_of(' ');
  if (b == std::string_view::npos || text[b] == '=') return;
  if (!xf_cmd.history.empty() && xf_cmd.history.back() == text) {
    xf_cmd.history_pos = static_cast<int32_t>(xf_cmd.history.size()) - 1;
    return;
  }
  xf_cmd.history.emplace_back(text);
  while (static_cast<int32_t>(xf_cmd.history.size()) > xf_set.history_max) xf_cmd.history.erase(xf_cmd.history.begin());
  xf_cmd.history_pos = static_cast<int32_t>(xf_cmd.history.size()) - 1;
}

void xf_stack(std::string_view text) { xf_run.stacked.emplace_back(text); }
void xf_stack_front(std::string_view text) { xf_run.stacked.emplace_front(text); }

void xfcom1(std::string_view text, std::string_view work_dir) {
  std::string s(text);
  for (char& ch : s)
    if (ch == 0) ch = '\n';
  if (s.find('\n') != std::string::npos) {
    xf_msg(70, XF_MSG_ERROR);
    rc = 1;
    return;
  }
  std::size_t i = 0;
  while (true) {
    while (i < s.size() && s[i] == ' ') ++i;
    std::string_view rest = std::string_view(s).substr(i);
    std::string lword = xf_lower(rest.substr(0, rest.find(' ')));
    bool whole = !xf_set.linend_on || xf_abbrev(lword, "set", 2) || xf_abbrev(lword, "button", 2) ||
                 lword == "delay" || (!rest.empty() && (rest[0] == '*' || rest[0] == '#'));
    std::size_t end = whole ? std::string::npos : rest.find(xf_set.linend);
    if (end == std::string::npos) {
      int32_t r = xfcom2(rest, work_dir);
      if (r != 0) xf_run.stacked.clear();
      return;
    }
    xfcom2(rest.substr(0, end), work_dir);
    i += end + 1;
  }
}

int32_t xfcom2(std::string_view com_in, std::string_view work_dir) {
  xf_cmd.nesting++;
  std::string com(com_in);
  if (xf_run.trace) std::fprintf(stderr, "xfcom2: com = %s\n", com.c_str());
  if (xf_run.timeload) std::fprintf(stderr, "xfcom2: com = \"%s\"\n", com.c_str());
  std::string lcom = xf_lower(com);

  std::string sub = xf_substitute(com);
  std::size_t lead = sub.find_first_not_of(' ');
  std::string typed = lead == std::string::npos ? std::string() : sub.substr(lead);
  // The name ends at the first byte that is not a letter or "_"; a blank is forced there for the handler.
  std::string text = typed;
  if (!text.empty()) {
    std::size_t e = 1;
    while (e < text.size() && (is_letter(text[e]) || text[e] == '_') &&
           static_cast<unsigned char>(text[e - 1]) != 189 && static_cast<unsigned char>(text[e - 1]) != 238)
      ++e;
    if (e < text.size() && text[e] != ' ') text.insert(e, 1, ' ');
  }
  std::string ltext = xf_lower(text);
  rc = 0;
  // The prefix flags and the synonym mark were set for this call alone: nested calls start without them.
  bool from_synonym = xf_cmd.from_synonym;
  bool prefix_command = xf_cmd.prefix_command;
  bool prefix_macro = xf_cmd.prefix_macro;
  xf_cmd.from_synonym = xf_cmd.prefix_command = xf_cmd.prefix_macro = false;

  auto finish = [&]() {
    xf_cmd.nesting--;
    if (rc != 0 && xf_set.mode_redisplay) xf_run.command_line = typed;
    return rc;
  };

  if (typed.empty()) return finish();

  // Synonyms.
  if (xf_set.synonym_on && !prefix_command && !prefix_macro && !from_synonym) {
    for (const xf_synonym& syn : xf_cmd.synonyms) {
      int32_t m = xf_synonym_match(typed, syn.name, syn.min_len);
      if (m > 0) {
        xf_synonym copy = syn;  // a definition may change the table
        run_synonym(copy, std::string_view(typed).substr(m), work_dir);
        return finish();
      }
    }
  }
  std::string first_word = typed.substr(0, typed.find(' '));
  // Macros first, when MACRO ON or for the profile.
  bool one_shot = xf_cmd.one_shot_macro;
  xf_cmd.one_shot_macro = false;
  if ((xf_set.macro_on || one_shot) && !prefix_command) {
    if (xf_macro_step(typed, first_word, work_dir)) return finish();
  }
  if (!prefix_macro) {
    if (typed[0] == '#') return finish();
#ifdef TOLVA_TEST_HOOKS
    if (test_fault(ltext)) return finish();
#endif
    if (is_digit(typed[0]) && xf_set.mode_number_goto) {
      goto_number(typed, work_dir);
      return finish();
    }
    if (xf_is_implied_target(typed)) {
      // With ARBchar ON $ the target is read as entered, before "$" words were replaced.
      std::string raw = com.substr(std::min(com.find_first_not_of(' '), com.size()));
      if (xf_ring.file) xf_implied_locate(xf_search.arb_on && xf_search.arb == '$' ? raw : typed, work_dir);
      return finish();
    }
    const auto& entries = xf_cmd_entries();
    for (int i = 0; i < xf_cmd_special; ++i) {
      xf_cmd_call call{com, lcom, typed, xf_lower(typed), work_dir, entries[i].name, entries[i].min_len};
      if (entries[i].handler(call)) {
        xf_trace(entries[i].trace_tag);
        return finish();
      }
    }
    std::string lname = ltext.substr(0, ltext.find(' '));
    int32_t row = xf_cmd_lookup(lname);
    if (row >= 0) {
      const xf_cmd_entry& e = entries[row];
      xf_cmd_call call{com, lcom, text, ltext, work_dir, std::string_view(e.name).substr(0, lname.size()),
                       e.min_len};
      xf_trace(e.trace_tag);
      // A shell command writes to the terminal: it runs on the console, off the editor's screen.
      bool console = !xf_run.batch && e.handler == xfcm_shell;
      if (console) xf_console(true);
      e.handler(call);
      if (console) xf_console(false);
      return finish();
    }
    if (xf_set.mode_notimp && xf_notimp_name(ltext)) return finish();
  }
  if (!xf_set.macro_on && !prefix_command) {
    if (xf_macro_step(typed, first_word, work_dir)) return finish();
  }
  if (xf_set.impcmscp == 0 || prefix_macro) {
    xf_msgf(XF_MSG_ERROR, "..... Invalid command \"%s\"", typed.c_str());
    xf_run.command_line = typed;
    rc = -1;
    return finish();
  }
  std::string shell = "shell " + typed;
  xfcom2(shell, work_dir);
  if (xf_set.impcmscp == 2 && xf_ring.file && !xf_run.batch) xf_current_line() = 0;
  rc = 0;
  return finish();
}

bool xfcom(std::string_view work_dir) {
  // Each command taken here is one unit of work: its changes make one undo step.
  xf_new_step();
  if (!xf_run.stacked.empty()) {
    std::string cmd = std::move(xf_run.stacked.front());
    xf_run.stacked.pop_front();
    xfcom1(cmd, work_dir);
    xf_autosave_round();
    return true;
  }
  if (std::string cmd; paloma_queue_pull(cmd)) {
    xf_history_add(cmd);
    xfcom1(cmd, work_dir);
    xf_autosave_round();
    return true;
  }
  return false;
}

void xf_cmd_reset() {
  xf_cmd = xf_cmd_state{};
  // The command families built on the processor start clean with it.
  xf_synonym quit;
  quit.name = "quit";
  quit.min_len = 4;
  quit.defs.push_back("command aquit");
  xf_cmd.synonyms.push_back(quit);
}
