// The key tables and their default definitions, and the order in which a key and the typed text run.
#include "editor/keys.h"

#include "screen/as_read.h"

xf_key_state xf_keys;

namespace {

struct default_row {
  char cls;      // 'F', 'L', 'R'
  int32_t n;     // key number
  int32_t mods;  // 0 none, 1 S, 2 C, 3 M, 4 S+C, 5 S+M, 6 C+M, 7 S+C+M
  const char* text;
};

const default_row defaults[] = {
    {'F', 1, 0, "quit"}, {'F', 2, 0, "command c_ext"}, {'F', 3, 0, "command save"}, {'F', 4, 0, "command c_split"},
    {'F', 5, 0, "command switch"}, {'F', 6, 0, "command c_endline"}, {'F', 7, 0, "command backward"},
    {'F', 8, 0, "command forward"}, {'F', 9, 0, "command ?"}, {'F', 10, 0, "command home"},
    {'F', 11, 0, "command compress"}, {'F', 12, 0, "command ="},
    {'F', 1, 1, "command c_lineadd"}, {'F', 2, 1, "command c_ext"}, {'F', 3, 1, "command file"},
    {'F', 5, 1, "command iswitch"}, {'F', 6, 1, "command c_endcurl"}, {'F', 7, 1, "command pgup"},
    {'F', 8, 1, "command pgdown"}, {'F', 9, 1, "command ?i"}, {'F', 10, 1, "command home"},
    {'F', 11, 1, "command top"}, {'F', 12, 1, "command bot"},
    {'F', 1, 2, "command flquit"}, {'F', 3, 2, "command flfile"}, {'F', 7, 2, "command left40"},
    {'F', 8, 2, "command right40"}, {'F', 9, 2, "command xshowhistory"},
    {'F', 7, 3, "command s_lshift"}, {'F', 8, 3, "command s_rshift"}, {'F', 9, 3, "command showhistory"},
    {'L', 2, 0, "command match"}, {'L', 4, 0, "command undo"}, {'L', 6, 0, "command s_copy"},
    {'L', 8, 0, "command s_paste"}, {'L', 9, 0, "command s_find"}, {'L', 10, 0, "command s_cut"},
    {'L', 1, 1, "command help"}, {'L', 5, 1, "command redo"}, {'L', 10, 1, "command s_find"},
    {'L', 9, 2, "command s_find"}, {'L', 3, 5, "s_find"},
    {'R', 5, 1, "macro extsel_start"}, {'R', 6, 1, "macro extsel_wback"}, {'R', 7, 1, "macro extsel_end"},
    {'R', 8, 1, "macro extsel_up"}, {'R', 9, 1, "macro extsel_wfor"}, {'R', 10, 1, "macro extsel_left"},
    {'R', 12, 1, "macro extsel_right"}, {'R', 14, 1, "macro extsel_down"},
    {'R', 8, 2, "macro mvlineup"}, {'R', 10, 2, "command prevword"}, {'R', 12, 2, "command nextword"},
    {'R', 14, 2, "macro mvlinedown"},
};

struct char_row {
  unsigned char ch;
  const char* text;
};

const char_row ctrl_defaults[] = {
    {'0', "macro goto_bookmark 5"}, {'1', "macro set_bookmark 1"}, {'2', "macro set_bookmark 2"},
    {'3', "macro set_bookmark 3"}, {'4', "macro set_bookmark 4"}, {'5', "macro set_bookmark 5"},
    {'6', "macro goto_bookmark 1"}, {'7', "macro goto_bookmark 2"}, {'8', "macro goto_bookmark 3"},
    {'9', "macro goto_bookmark 4"}, {'=', "command c_dup"}, {'A', "macro adjust_cursor"},
    {'C', "command center"}, {'F', "command flow"}, {'H', "command s_help"},
    {'O', "command s_paste overlay shelf"}, {'P', "macro new_para"}, {'U', "command s_upper word"},
    {'W', "macro del_word"}, {'X', "command s_man"}, {'a', "command c_lineadd"}, {'d', "command c_linedel"},
    {'e', "command c_apltrace"}, {'f', "command flist"}, {'h', "command c_scrh"}, {'l', "command s_lower"},
    {'r', "macro dy_folder_tree"}, {'t', "macro dy_folder_tree"}, {'s', "command c_aplstop"},
    {'u', "command s_upper"}, {'v', "command c_scrv"}, {'w', "command c_scrj"}, {'x', "command s_xed"},
    {'z', "command left0"},
};

const char_row meta_defaults[] = {
    {'+', "macro toggle_display"}, {'0', "macro rm_bookmarks"}, {'=', "macro dup_line"},
    {'u', "command s_set off"}, {'x', "command s_xed"},
};

std::vector<xf_key_def>& table_of(char cls) {
  return cls == 'F' ? xf_keys.f : cls == 'L' ? xf_keys.l : xf_keys.r;
}
int32_t count_of(char cls) {
  return cls == 'F' ? xf_keys.count_f : cls == 'L' ? xf_keys.count_l : xf_keys.count_r;
}

xf_key_def* row_of(std::vector<xf_key_def>& t, int value) {
  return value > 0 && value < static_cast<int>(t.size()) ? &t[static_cast<std::size_t>(value)] : nullptr;
}

}  // namespace

void xf_keys_reset() {
  xf_keys = xf_key_state{};
  for (char cls : {'F', 'L', 'R'}) table_of(cls).assign(static_cast<std::size_t>(count_of(cls) * 8 + 1), {});
  for (const default_row& d : defaults)
    table_of(d.cls)[static_cast<std::size_t>(d.n + count_of(d.cls) * d.mods)] = {d.text, XK_ONLY};
  for (const char_row& d : ctrl_defaults) xf_keys.ctrl[d.ch] = {d.text, XK_ONLY};
  for (const char_row& d : meta_defaults) xf_keys.meta[d.ch] = {d.text, XK_ONLY};
  for (xf_key_def& e : xf_keys.enter) e.mode = XK_BEFORE;
}

xf_key_def* xf_key_for(int kind, int value) {
  switch (kind) {
    case ASR_ENTER: return &xf_keys.enter[0];
    case ASR_PFK: return row_of(xf_keys.f, value);
    case ASR_KEY: return row_of(xf_keys.r, value);
    case ASR_L_KEY: return row_of(xf_keys.l, value);
    case ASR_CTRL: return value >= 0 && value < 256 ? &xf_keys.ctrl[value] : nullptr;
    case ASR_ALT: return value >= 0 && value < 256 ? &xf_keys.meta[value] : nullptr;
    default: return nullptr;
  }
}

std::vector<std::string> xf_key_commands(const xf_key_def* def, bool plain_enter, std::string_view typed_in,
                                         bool& keep_typed) {
  std::vector<std::string> out;
  keep_typed = false;
  std::string typed(typed_in);
  std::size_t b = typed.find_first_not_of(' ');
  typed = b == std::string::npos ? std::string() : typed.substr(b);
  while (!typed.empty() && typed.back() == ' ') typed.pop_back();
  if (!typed.empty() && typed[0] == '&') {
    typed.erase(0, 1);
    keep_typed = true;
  }
  std::string text = def ? def->text : std::string();
  int32_t mode = def ? def->mode : XK_ONLY;
  auto add = [&](const std::string& s) {
    if (!s.empty()) out.push_back(s);
  };
  switch (mode) {
    case XK_ONLY:
      if (!text.empty())
        add(text);
      else if (plain_enter)
        add(typed);
      break;
    case XK_AFTER: add(typed); add(text); break;
    case XK_BEFORE: add(text); add(typed); break;
    case XK_IGNORE: add(typed.empty() ? text : typed); break;
  }
  return out;
}
