// The editor's side of PALOMA: REXX macros run inside the editor, their commands come back through the TOLVA
// environment, and EXTRACT answers them with the editor's state in their variables.
#include "editor/rexx_link.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/input.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/target.h"
#include "os/os_path.h"
#include "rexx/paloma.h"
#include "rexxlib/bu_frame.h"
#include "screen/as_read.h"

xf_rexx_state xf_rexx;

namespace {

// How deep macros may call macros through editor commands before the chain is refused.
constexpr int max_depth = 64;

std::string on_off(bool on) { return on ? "ON" : "OFF"; }

// Items of the settings of the search, the view and the file.
bool view_item(const std::string& item, std::string_view operand, std::vector<std::string>& values,
               std::string& stem) {
  const xf_file* f = xf_ring.file;
  const xf_view& v = *xf_ring.view;
  const xf_view_file* vf =
      f && xf_ring.file_no < static_cast<int32_t>(v.per_file.size()) ? &v.per_file[xf_ring.file_no] : &v.defaults;
  auto is = [&](std::string_view full, std::size_t least) {
    return item.size() >= least && item.size() <= full.size() && full.starts_with(item);
  };
  auto num = [](long long n) { return std::to_string(n); };
  if (is("arbchar", 3)) {
    stem = "ARBCHAR";
    values = {on_off(xf_search.arb_on), std::string(1, xf_search.arb)};
  } else if (is("arch", 4)) {
    stem = "ARCH";
    values = {"linux"};
  } else if (is("binary", 2)) {
    stem = "BINARY";
    values = {on_off(f && f->binary)};
  } else if (is("column", 3)) {
    stem = "COLUMN";
    values = {num(f ? f->column + 1 : 0)};
  } else if (is("display", 4)) {
    stem = "DISPLAY";
    values = {num(v.display[0]), num(v.display[1])};
  } else if (is("environ", 3)) {
    stem = "ENVIRON";
    const char* e = std::getenv(std::string(operand).c_str());
    values = {e ? e : ""};
  } else if (is("format", 6) && f) {
    static const char* const j[] = {"JUSTIFY", "NOJUSTIFY"};
    static const char* const k[] = {"BLANK", "EXTENDED", "DOT", "DOTEXTENDED"};
    static const char* const s[] = {"SINGLE", "DOUBLE", "NONE"};
    stem = "FORMAT";
    values = {j[f->format[4] & 1], k[f->format[5] & 3], s[std::clamp(f->format[6], 0, 2)]};
  } else if (is("hex", 3)) {
    stem = "HEX";
    values = {on_off(xf_search.hex)};
  } else if (is("impcmscp", 3)) {
    stem = "IMPCMSCP";
    values = {xf_set.impcmscp == 2 ? "XON" : on_off(xf_set.impcmscp == 1)};
  } else if (is("keepblanks", 5)) {
    stem = "KEEPBLANKS";
    values = {on_off(f && f->keep_blanks)};
  } else if (is("lrecl", 2)) {
    stem = "LRECL";
    values = {f && f->lrecl ? num(f->lrecl) : "*", ""};
  } else if (is("trunc", 3)) {
    stem = "TRUNC";
    values = {f && f->trunc ? num(f->trunc) : "*", ""};
  } else if (is("macro", 5)) {
    stem = "MACRO";
    values = {on_off(xf_set.macro_on)};
  } else if (is("margins", 3) && f) {
    stem = "MARGINS";
    std::string para = f->format[2] >= 0 ? num(f->format[2] + 1)
                                         : (f->format[3] >= 0 ? "+" : "") + num(f->format[3]);
    values = {num(f->format[0] + 1), num(f->format[1] + 1), para};
  } else if (is("number", 3)) {
    stem = "NUMBER";
    values = {vf->number == 2 ? "ZERO" : on_off(vf->number)};
  } else if (is("point", 1) && f) {
    stem = "POINT";
    std::string names;
    for (const xf_point& p : f->points)
      if (p.line == xf_current_line()) names += (names.empty() ? "" : " ") + p.name;
    values = {names};
  } else if (is("powerinput", 3) && f) {
    stem = "POWERINPUT";
    values = {on_off(f->power[0]), f->power[1] ? "NOPREVIOUS" : "PREVIOUS", f->power[2] ? "NOMOVE" : "MOVE"};
  } else if (is("scope", 5)) {
    stem = "SCOPE";
    values = {v.scope == 1 ? "ALL" : "DISPLAY"};
  } else if (is("select", 3) && f) {
    stem = "SELECT";
    int32_t l = xf_current_line(), high = 0;
    for (int32_t k = 0; k < f->size; ++k) high = std::max(high, f->select[static_cast<std::size_t>(k)]);
    values = {num(l >= 0 && l < f->size ? f->select[static_cast<std::size_t>(l)] : 0), num(high)};
  } else if (is("sep", 3)) {
    stem = "SEP";
    values = {on_off(xf_set.linend_on), std::string(1, xf_set.linend)};
  } else if (is("shadow", 4)) {
    stem = "SHADOW";
    values = {on_off(v.shadow)};
  } else if (is("span", 4)) {
    stem = "SPAN";
    values = {on_off(xf_search.span_on), xf_search.span_blank ? "BLANK" : "NOBLANK",
              xf_search.span_lines ? num(xf_search.span_lines) : "*"};
  } else if (is("stay", 4)) {
    stem = "STAY";
    values = {on_off(xf_search.stay)};
  } else if (is("tabs", 4) && f) {
    stem = "TABS";
    std::string cols;
    for (std::size_t k = 2; k < f->tabs.size(); ++k) cols += (cols.empty() ? "" : " ") + num(f->tabs[k]);
    values = {cols};
  } else if (is("varblank", 8)) {
    stem = "VARBLANK";
    values = {on_off(xf_search.varblank)};
  } else if (is("width", 1) && f) {
    stem = "WIDTH";
    int32_t w = 0;
    for (int32_t k = 0; k < f->size; ++k) w = std::max(w, f->len[static_cast<std::size_t>(k)]);
    values = {num(w)};
  } else if (is("wrap", 2)) {
    stem = "WRAP";
    values = {on_off(xf_search.wrap)};
  } else if (is("screen", 3)) {
    stem = "SCREEN";
    values = {num(static_cast<long long>(xf_ring.views.size())), num(xf_ring.view_no + 1)};
  } else if (is("nbscope", 3) && f) {
    stem = "NBSCOPE";
    int32_t in = 0, at = 0;
    for (int32_t k = 0; k < f->size; ++k)
      if (xf_in_scope(k)) {
        ++in;
        if (k <= xf_current_line()) at = in;
      }
    values = {num(in), num(at)};
  } else if (is("cring", 2)) {
    stem = "CRING";
    values = {num(xf_ring.file_no + 1)};
  } else if (is("lastlorc", 5)) {
    stem = "LASTLORC";
    values = {xf_search.last_locate};
  } else if (is("insert", 3)) {
    stem = "INSERT";
    values = {on_off(!xf_run.batch && asqinsert())};
  } else if (is("cmdline", 3)) {
    stem = "CMDLINE";
    int32_t place = v.cmdline_place[0];
    if (place <= 0)
      values = {"OFF"};
    else
      values = {place == 1 ? "TOP" : "BOTTOM", num(place == 1 ? 2 : v.height)};
    if (!xf_run.command_line.empty()) values.push_back(xf_run.command_line);
  } else if (is("xhome", 1)) {
    stem = "XHOME";
    values = {xf_run.xhome};
  } else if (is("zone", 1)) {
    stem = "ZONE";
    values = {num(vf->zone_first + 1), num(std::min<long long>(vf->zone_last + 1LL, 0x7ffffffe))};
  } else {
    return false;
  }
  return true;
}

// The reply of a table item: its values, or false when the item is not one of the table.
bool table_item(const std::string& item, std::string_view operand, std::vector<std::string>& values,
                std::string& stem) {
  (void)operand;
  const xf_file* f = xf_ring.file;
  auto is = [&](std::string_view full, std::size_t least) {
    return item.size() >= least && item.size() <= full.size() && full.starts_with(item);
  };
  std::string name = f ? f->name : std::string();
  std::size_t slash = name.rfind('/');
  std::string base = slash == std::string::npos ? name : name.substr(slash + 1);
  std::size_t dot = base.rfind('.');
  if (is("alt", 3)) {
    stem = "ALT";
    values = {std::to_string(f ? f->alt_auto : 0), std::to_string(f ? f->alt_save : 0)};
  } else if (is("size", 3)) {
    stem = "SIZE";
    values = {std::to_string(f ? f->size : 0)};
  } else if (is("line", 2)) {
    stem = "LINE";
    values = {std::to_string(f ? xf_current_line() + 1 : 0)};
  } else if (is("length", 3)) {
    stem = "LENGTH";
    int32_t l = f ? xf_current_line() : -1;
    values = {std::to_string(f && l >= 0 && l < f->size ? f->len[static_cast<std::size_t>(l)] : 0)};
  } else if (is("fname", 2)) {
    stem = "FNAME";
    values = {dot == std::string::npos ? base : base.substr(0, dot)};
  } else if (is("ftype", 2)) {
    stem = "FTYPE";
    values = {dot == std::string::npos ? std::string() : base.substr(dot + 1)};
  } else if (is("lfname", 3)) {
    stem = "LFNAME";
    values = {base};
  } else if (is("name", 2)) {
    stem = "NAME";
    values = {name};
  } else if (is("fdirectory", 2)) {
    stem = "FDIRECTORY";
    values = {slash == std::string::npos ? std::string() : name.substr(0, slash)};
  } else if (is("nbfile", 3)) {
    stem = "NBFILE";
    values = {std::to_string(xf_file_count())};
  } else if (is("rw", 2)) {
    stem = "RW";
    values = {on_off(f && f->read_write)};
  } else if (is("pwd", 3)) {
    stem = "PWD";
    values = {xf_run.work_dir};
  } else if (is("rexx", 4)) {
    stem = "REXX";
    values = {"1"};
  } else {
    return view_item(item, operand, values, stem);
  }
  return true;
}

void set_stem(const std::string& stem, const std::vector<std::string>& values) {
  paloma_set_variable(stem + ".0", std::to_string(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) paloma_set_variable(stem + "." + std::to_string(i + 1), values[i]);
}

// The direct items that set their variables themselves.
bool direct_item(const std::string& item) {
  if (item == "file") {
    std::vector<std::string> lines;
    if (xf_ring.file)
      for (int32_t l = 0; l < xf_ring.file->size; ++l) lines.emplace_back(xf_ring.file->line(l));
    set_stem("FILE", lines);
    return true;
  }
  if (item.size() >= 4 && std::string_view("ring").starts_with(item)) {
    std::vector<std::string> v{std::to_string(xf_file_count())};
    for (const auto& f : xf_ring.files) v.push_back(f->name);
    set_stem("RING", v);
    return true;
  }
  if (item.size() >= 3 && std::string_view("reclevel").starts_with(item)) {
    set_stem("RECLEVEL", {std::to_string(xf_rexx.depth)});
    return true;
  }
  return false;
}

// EXTRACT /item/item ...: the separator is the character in front of the first item.
int extract(std::string_view text) {
  text = xf_trim(text);
  if (text.empty()) return 0;
  char sep = text[0];
  text.remove_prefix(1);
  while (!text.empty()) {
    std::size_t end = text.find(sep);
    std::string_view piece = xf_trim(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (piece.empty()) continue;
    std::size_t letters = 0;
    while (letters < piece.size() && std::isalpha(static_cast<unsigned char>(piece[letters]))) ++letters;
    std::string item = xf_lower(piece.substr(0, letters));
    std::string_view operand = xf_trim(piece.substr(letters));
    if (direct_item(item)) continue;
    std::vector<std::string> values;
    std::string stem;
    if (!table_item(item, operand, values, stem)) return -1;
    set_stem(stem, values);
  }
  return 0;
}

// The TOLVA environment: EXTRACT requests, else an editor command whose return code becomes RC.
int tolva_environment(std::string_view command, void*) {
  std::string_view t = xf_trim(command);
  std::size_t w = 0;
  while (w < t.size() && std::isalpha(static_cast<unsigned char>(t[w]))) ++w;
  std::string word = xf_lower(t.substr(0, w));
  if (word.size() >= 3 && std::string_view("extract").starts_with(word)) return extract(t.substr(w));
  if (command.find('\n') != std::string_view::npos) {
    xf_msg(70, XF_MSG_ERROR);
    return 1;
  }
  return xfcom2(std::string(command), xf_run.work_dir);
}

// size.1() and its kin: the part before the last dot is an EXTRACT item, asked for with the first argument; the
// function's value is then the variable of the whole name.
bool dotted_function(std::string_view name, std::string_view arg, std::string& result) {
  std::size_t dot = name.rfind('.');
  std::string item = xf_lower(name.substr(0, dot));
  if (item == "equalsign") item = "=";
  std::string request = "/" + item + (arg.empty() ? "" : " " + std::string(arg));
  if (extract(request) != 0) return false;
  std::string var(name);
  if (item == "=") var = "EQUALSIGN" + std::string(name.substr(dot));
  result = paloma_variable_text(var);
  return true;
}

// The poll of a running macro: Ctrl+C typed on the screen kills it, and every macro around it.
bool poll_interrupt() {
  if (xf_rexx.killed) return true;
  if (xf_run.batch || ++xf_rexx.polls < 20 || (xf_rexx.polls & 1023) != 0) return false;
  if (!asqbreak()) return false;
  xf_rexx.killed = true;
  xf_msgf(XF_MSG_ERROR, "... macro %s killed", xf_rexx.name.c_str());
  return true;
}

// A macro that writes to the terminal on the full screen: the terminal's own screen comes first.
void give_terminal() {
  if (xf_run.batch || xf_rexx.console) return;
  xf_console(true);
  xf_rexx.console = true;
}

}  // namespace

int xf_rexx_run(const std::string& path, std::string_view args, std::string_view called) {
  if (!xf_rexx.ready) {
    bu_install();
    paloma_register_environment("TOLVA", tolva_environment, true, nullptr);
    paloma_set_terminal_hook(give_terminal);
    paloma_set_poll_hook(poll_interrupt);
    paloma_set_dotted_functions(dotted_function);
    xf_rexx.ready = true;
  }
  if (xf_rexx.depth >= max_depth) {
    xf_msg(26, XF_MSG_ERROR);  // a macro that keeps calling macros
    return 1;
  }
  // A macro started by a macro's command: the outer run's state comes back when it ends.
  paloma_nest keep;
  paloma_load loaded = paloma_load_file(path);
  if (loaded.rc != 0) {
    std::string m = loaded.message;
    while (!m.empty() && m.back() == '\n') m.pop_back();
    if (!m.empty()) xf_msg_text(m, XF_MSG_ERROR);
    return 1;
  }
  std::string_view base = os_base_name(path);
  std::size_t dot = base.rfind('.');
  std::string stem(dot == std::string_view::npos ? base : base.substr(0, dot));
  std::string ext(dot == std::string_view::npos ? std::string_view() : base.substr(dot));
  std::string dir = path.substr(0, path.size() - base.size());
  std::string_view cb = os_base_name(called);
  std::string call_name(cb.substr(0, cb.rfind('.')));
  auto item = [](const std::string& s) { return s.empty() ? std::string("\"\"") : s; };
  std::string source = "TOLVA MACRO " + item(stem) + " " + item(ext) + " " + item(dir) + " " + item(call_name);
  std::vector<std::string> argv;
  if (!args.empty()) argv.emplace_back(args);
  if (xf_rexx.depth == 0) {
    xf_rexx.polls = 0;
    xf_rexx.killed = false;
  }
  std::string outer_name = xf_rexx.name;
  xf_rexx.name = stem;
  ++xf_rexx.depth;
  paloma_outcome out = paloma_run(*loaded.program, argv, source);
  --xf_rexx.depth;
  xf_rexx.name = outer_name;
  if (xf_rexx.depth == 0) xf_rexx.killed = false;
  std::fflush(stdout);
  if (xf_rexx.console) {  // what the macro wrote stays until Return
    xf_console(false);
    xf_rexx.console = false;
  }
  return out.rc != 0 ? 1 : 0;
}

// EXTRACT typed as a command, with no macro to answer: the interpreter has no program running.
int xfcm_extract(const xf_cmd_call&) {
  xf_msg(173, XF_MSG_ERROR);
  rc = 1;
  return 1;
}
