// The program's entry: options, start-up order, the batch run, and the orderly end.
#include "editor/startup.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <algorithm>
#include <string>
#include <vector>

#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/compose.h"
#include "editor/emergency.h"
#include "editor/fileio.h"
#include "editor/filetype.h"
#include "editor/input.h"
#include "editor/keys.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_path.h"
#include "os/os_save.h"
#include "os/os_signal.h"
#include "os/os_time.h"
#include "rexxlib/support.h"
#include "screen/fs.h"
#include "screen/host/term_host.h"
#include "rexx/paloma.h"

namespace {

// The terminal that the interactive editor runs on; given back on every orderly end.
std::unique_ptr<term_host> terminal;

// The options of the command line: name and operand count. The parser knows nothing of their meaning.
enum option_index {
  OPT_WW, OPT_WIDTH, OPT_WH, OPT_HEIGHT, OPT_WP, OPT_POSITION, OPT_WF, OPT_FONT, OPT_DISPLAY, OPT_P, OPT_PP,
  OPT_GEOMETRY, OPT_SYNCHRONOUS, OPT_ICONIC, OPT_ICON_POSITION, OPT_WPP, OPT_C, OPT_XRM, OPT_SCOPE, OPT_DY_FONT,
  OPT_NP, OPT_PDF, OPT_NOAUTO, OPT_KEDIT, OPT_BATCH, OPT_FILEC, OPT_ID, OPT_COUNT
};
const char* const option_names[OPT_COUNT] = {
    "-Ww", "-width", "-Wh", "-height", "-Wp", "-position", "-Wf", "-font", "-display", "-p", "-P", "-geometry",
    "-synchronous", "-iconic", "-icon_position", "-WP", "-c", "-xrm", "-scope", "-dy_font", "-np", "-pdf",
    "-noauto", "-kedit", "-batch", "-filec", "-id"};
const int option_operands[OPT_COUNT] = {1, 1, 1, 1, 2, 2, 3, 1, 1, 1, 1, 1, 0, 0, 2, 2, 1, 1, 1, 1, 0, 0, 0, 0, 0, 1, 1};

struct start_options {
  int profile_choice = 1;  // 0 none, 1 the default profile, 2 the named one
  std::string profile;
  std::vector<std::string> commands;
  std::vector<std::string> files;
  std::string filec;
  bool pdf = false;
};

// Joins the words that a double quote spans into one argument, without the quotes. False when unbalanced.
bool join_quoted(std::vector<std::string>& args) {
  std::vector<std::string> out;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a.empty() || a[0] != '"') {
      out.push_back(a);
      continue;
    }
    if (a.size() >= 2 && a.back() == '"') {
      out.push_back(a.substr(1, a.size() - 2));
      continue;
    }
    std::string joined = a.substr(1);
    bool closed = false;
    while (++i < args.size()) {
      joined += ' ';
      if (!args[i].empty() && args[i].back() == '"') {
        joined += args[i].substr(0, args[i].size() - 1);
        closed = true;
        break;
      }
      joined += args[i];
    }
    if (!closed) return false;
    out.push_back(joined);
  }
  args = std::move(out);
  return true;
}

// TIMELOAD: a timing mark on the trace output with the milliseconds since start.
void timing_mark(const char* stage) {
  if (!xf_run.timeload) return;
  static const int64_t start = os_now_ms();
  std::fprintf(stderr, "TOLVA trace: %s[%d]\n", stage, static_cast<int>(os_now_ms() - start));
}

int refuse(const char* text) {
  std::fprintf(stderr, "%s\n", text);
  return 1;
}

void set_paths(const os_env& env) {
  auto cwd = os_current_dir();
  xf_run.work_dir = cwd ? *cwd : std::string("/");
  xf_run.home = os_home(env);
  auto xcd = env.get("XCDPATH");
  xf_run.cd_dirs.clear();
  if (xcd)
    for (std::string d : os_split_path_list(*xcd)) {
      if (d.back() != '/') d += '/';
      xf_run.cd_dirs.push_back(d);
    }
  if (xf_run.cd_dirs.empty()) xf_run.cd_dirs.push_back(xf_run.home + "/");
  auto xpath = env.get("XPATH");
  auto path = xpath ? xpath : env.get("PATH");
  xf_run.path_dirs = path ? os_split_path_list(*path) : std::vector<std::string>{};
  if (!xpath && !path) xf_run.path_dirs.push_back(xf_run.work_dir);
  auto exe = os_self_exe();
  xf_run.xhome = os_find_xhome(exe ? *exe : std::string(), os_xhome_default_places());
}

// Runs the profile: the first of the working directory, the home, the user's config folder and xhome that
// holds it. Returns false when a named profile is found nowhere.
bool run_profile(const start_options& o, const os_env& env) {
  std::string name = o.profile_choice == 2 ? o.profile : "profile.tolva";
  if (!os_extension(name)) name += ".tolva";
  std::vector<std::string> tries;
  if (name.starts_with("/"))
    tries.push_back(name);
  else {
    tries.push_back(os_absolute(name, xf_run.work_dir, env));
    tries.push_back(xf_run.home + "/" + name);
    tries.push_back(os_xdg_config_home(env) + "/tolva/" + name);
    tries.push_back(xf_run.xhome + name);
  }
  for (const std::string& path : tries) {
    if (os_file_kind(path) != os_kind::regular) continue;
    int kind = xf_macro_kind_of(path);
    xf_macro_add(path, kind < 0 ? XF_MACRO_REXX : kind);
    xf_cmd.one_shot_macro = true;
    std::string_view base = os_base_name(path);
    std::string cmd = "macro " + std::string(base.substr(0, base.rfind('.')));
    for (const std::string& a : xf_run.profile_args) cmd += " " + a;
    xf_run.profile_running = 1;
    xf_msgs.hold = false;
    int32_t r = xfcom2(cmd, xf_run.work_dir);
    xf_run.profile_running = 0;
    if (r != 0) {
      std::fprintf(stderr, "Warning: unable to complete profile \"%s\".\n", path.c_str());
      xf_run.command_line.clear();
    }
    return true;
  }
  if (o.profile_choice == 2) {
    std::fprintf(stderr, "File %s not found.\n", name.c_str());
    return false;
  }
  return true;
}

// Appends text to a file on disk by rewriting it through the safe save, so a failure keeps the old content.
int append_to_file(const std::string& path, const std::string& text, std::string& reason) {
  std::string old;
  int err = os_read_file(path, old);
  if (err != 0 && os_file_kind(path) != os_kind::none) {
    reason = os_strerror(err);
    return err;
  }
  os_save_options opt;
  opt.target = path;
  opt.backup_on = false;
  os_save_result r = os_save(opt, [&](os_save_sink& s) {
    s.append(old);
    s.append(text);
  });
  reason = r.reason;
  return r.ok() ? 0 : (r.err ? r.err : 1);
}

}  // namespace

void xfini(int rows, int columns) {
  xf_cmd_init();
  xf_set.impcmscp = xf_run.batch ? 0 : 2;
  xf_ring.lowest_line = xf_set.mode_topline ? 0 : -1;
  if (rows < 6 || columns < 38) {
    xf_run.too_small = 1;
    return;
  }
  int32_t v = xf_new_view(1, 1, rows - 1, columns, 0, 1, 1);
  xf_ring.views[v]->cmdline_place[0] = xf_ring.views[v]->cmdline_place[1] = xf_set.mode_command_ispf ? 1 : 2;
  xf_set_view(v);
}

void xf_flush_messages() {
  static bool done = false;
  if (done || xf_ring.views.empty()) return;
  done = true;
  xf_view& v = *xf_ring.views[0];
  std::vector<std::pair<std::string, std::string>> outputs;  // name, text
  if (!v.messages.empty()) {
    std::string text;
    for (const std::string& m : v.messages) text += m + "\n";
    std::string dir = xf_run.work_dir == "/" ? "" : xf_run.work_dir;
    outputs.emplace_back(dir + "/tolva.@messages", text);
  }
  for (auto& fp : xf_ring.files) {
    const xf_file& f = *fp;
    if (!f.name.ends_with(".@messages")) continue;
    std::string text;
    for (int32_t i = 0; i < f.size; ++i) text.append(f.line(i)).append("\n");
    bool merged = false;
    for (auto& o : outputs)
      if (o.first == f.name) {
        o.second = text + o.second;
        merged = true;
      }
    if (!merged) outputs.emplace_back(f.name, text);
  }
  os_local t = os_local_time(os_now());
  char header[80];
  std::snprintf(header, sizeof header, "****** TOLVA batch run %2.2d/%2.2d/%4.4d %2.2d:%2.2d:%2.2d\n", t.day, t.month,
                t.year, t.hour, t.minute, t.second);
  for (auto& [name, text] : outputs) {
    std::string reason;
    if (append_to_file(name, header + text, reason) != 0)
      std::fprintf(stderr, "TOLVA: Unable to save \"%s\" (%s).\n", name.c_str(), reason.c_str());
  }
}

void xf_exit() {
  if (xf_run.batch) xf_flush_messages();
  if (terminal) terminal->stop();
  std::fflush(stdout);
  std::fflush(stderr);
  // Nothing is left to write: the process ends without freeing the ring line by line.
  std::_Exit(0);
}

int tolva_main(int argc, char** argv) {
  os_env env = os_env_process();
  xf_state_reset();
  auto timeload = env.get("TIMELOAD");
  xf_run.timeload = timeload && *timeload == "ON";
  timing_mark("start");
  std::vector<std::string> args(argv + 1, argv + argc);
  if (!join_quoted(args)) return refuse("Invalid \" count on invocation.");
  std::string self(os_base_name(argc > 0 ? argv[0] : "tolva"));
  if (self == "xeda") return refuse("xeda: not supported");
  bool flist_start = self == "fli";
  set_paths(env);

  start_options o;
  std::vector<option_row> table;
  for (int k = 0; k < OPT_COUNT; ++k) table.push_back({option_names[k], option_operands[k]});
  args.insert(args.begin(), argc > 0 ? argv[0] : "tolva");
  // Options end at the first word that is not one; further options may follow the file names.
  std::vector<option_found> found;
  std::size_t at = 0;
  while (at < args.size()) {
    std::vector<std::string> rest(args.begin() + at, args.end());
    std::vector<option_found> more;
    int first_file = get_options(rest, table, more);
    if (first_file < 0) return refuse("TOLVA: invalid option");
    found.insert(found.end(), more.begin(), more.end());
    at += static_cast<std::size_t>(first_file);
    if (at < args.size()) o.files.push_back(args[at]);
    // get_options starts after the word at `at`: the next scan begins at the file name just taken.
  }
  for (const option_found& opt : found) {
    const std::vector<std::string>& ops = opt.operands;
    switch (opt.index) {
      case OPT_P: case OPT_PP: o.profile_choice = 2; o.profile = ops[0]; break;
      case OPT_NP: o.profile_choice = 0; break;
      case OPT_C: o.commands.push_back(ops[0]); break;
      case OPT_PDF: o.pdf = true; break;
      case OPT_KEDIT: xf_run.kedit = 1; break;
      case OPT_BATCH: xf_run.batch = 1; if (o.profile_choice == 1) o.profile_choice = 0; break;
      case OPT_FILEC:
        xf_run.batch = 1;
        o.filec = ops[0];
        if (o.profile_choice == 1) o.profile_choice = 0;
        break;
      case OPT_ID: xf_run.program_id = ops[0]; break;
      default: break;  // window options: read by the screen, or accepted with no effect
    }
  }
  xf_run.saved_argv.assign(argv, argv + argc);
  int rows = 24, columns = 80;
  if (!xf_run.batch) {
    // The screen comes up before anything else can show: no terminal, or a dumb one, refuses the start.
    xf_emergency_install(argc, argv);
    term_options to;
    to.wake_fd = os_term_fd();
    terminal = std::make_unique<term_host>(to);
    fs_sethost(terminal.get());
    fsinit(argc, argv);
    if (fsstatus() != 0) {
      fs_sethost(nullptr);
      terminal.reset();
      return refuse("tolva: can't initialize");
    }
    int geo[4] = {0, 0, 0, 0};
    fsqury(0, 0, 4, geo);
    rows = std::min(geo[2], 3000);
    columns = std::min(geo[3], 1000);
    if (rows < 6 || columns < 38) {
      terminal->stop();
      terminal.reset();
      return refuse("tolva: too small window");
    }
  }
  if (o.pdf) {
    xf_set.mode_command_ispf = 1;
    xf_set.mode_prefix_ispf = 1;
  }
  if (xf_run.batch) xf_emergency_install(argc, argv);
  xf_screen_reset();
  xf_input_reset();
  xf_keys_reset();
  xfini(rows, columns);
  timing_mark("xfini");
  xf_run.profile_args = o.files;
  if (o.profile_choice != 0 && !run_profile(o, env)) return 1;
  timing_mark("profile");
  if (!flist_start)
    for (const std::string& f : o.files) paloma_queue_add("xed \"" + f + "\"");
  for (const std::string& c : o.commands) paloma_queue_add(c);
  if (!o.filec.empty()) {
    std::string_view base = os_base_name(o.filec);
    bool has_ext = base.find('.') != std::string_view::npos;
    paloma_queue_add("hash " + o.filec + (has_ext ? "" : ".tolva"));
    paloma_queue_add(o.filec);
  }
  if (!xf_run.batch) xfx(xf_run.work_dir);
  while (true) {
    xf_emergency_poll();
    if (!xfcom(xf_run.work_dir)) break;
  }
  timing_mark("commands");
  xf_flush_messages();
  xf_exit();
}
