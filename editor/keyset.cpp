// SET for keys: key definitions by the key name grammar, the key roles, BACKSPACE, NBKEYS and SERVER, and the
// key lines of the settings dump.
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "editor/cmdtable.h"
#include "editor/command.h"
#include "editor/keys.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/state.h"
#include "screen/as_read.h"

namespace {

// A key as the grammar names it: class F, L, R, '^' (Ctrl+character), 'M' (Meta+character) or 'E' (Enter).
struct key_name {
  char cls = 0;
  int32_t number = 0;  // F, L, R: from 1; '^' and 'M': the character
  int32_t mods = 0;    // 0 .. 7 as the tables order them
};

const char* const role_words[] = {"home", "ihome", "prev_field", "ins", "caps", "apl", "down_field", "up_field", "eof"};
const char* const servers[] = {"sun",     "sgi",     "ibm",      "dec",      "hp",    "hppc",   "linux",
                               "i86pc",   "sco",     "siemens",  "sequent",  "unixware", "alpha", "alphapc"};
const char* const mod_prefix[] = {"", "S-", "C-", "M-", "S+C-", "S+M-", "C+M-", "S+C+M-"};

int invalid() {
  xf_msg(16, XF_MSG_ERROR);
  rc = 1;
  return 1;
}

// The modifier prefix at the front of a lower-case name: its table index, and the name behind it.
int32_t take_prefix(std::string_view& s) {
  std::size_t dash = s.find('-');
  if (dash == std::string_view::npos || dash == 0 || s.size() == dash + 1) return 0;
  std::string_view p = s.substr(0, dash);
  bool shift = false, ctrl = false, meta = false;
  for (std::size_t i = 0; i < p.size(); ++i) {
    char c = p[i];
    if (i % 2 == 1) {
      if (c != '+') return 0;
      continue;
    }
    bool& flag = c == 's' ? shift : c == 'c' ? ctrl : (c == 'm' || c == 'l' || c == 'r') ? meta : shift;
    if (c != 's' && c != 'c' && c != 'm' && c != 'l' && c != 'r') return 0;
    if (flag) return 0;
    flag = true;
  }
  if (p.size() % 2 == 0) return 0;
  s.remove_prefix(dash + 1);
  static const int32_t table[2][2][2] = {{{0, 3}, {2, 6}}, {{1, 5}, {4, 7}}};  // [shift][ctrl][meta]
  return table[shift][ctrl][meta];
}

int32_t count_of(char cls) {
  return cls == 'F' ? xf_keys.count_f : cls == 'L' ? xf_keys.count_l : xf_keys.count_r;
}

// R keys by name: four of them move with the keyboard model.
int32_t named_r_key(std::string_view s) {
  if (s == "leftarrow") return 10;
  if (s == "rightarrow") return 12;
  if (s == "uparrow") return 8;
  if (s == "downarrow") return 14;
  if (s == "printscreen") return 1;
  if (s == "scrolllock") return 2;
  if (s == "pause") return 3;
  int model = xf_keys.model;
  if (s == "end") return model == 0 || model == 4 ? 13 : (model == 3 || model == 12 ? -1 : 7);
  if (s == "home") return model == 0 || model == 4 ? 7 : (model == 3 || model == 12 ? 4 : 5);
  if (s == "pageup") return model == 0 || model == 4 ? 9 : (model == 3 || model == 12 ? 7 : 6);
  if (s == "pagedown") return model == 0 ? 15 : model == 4 ? 11 : 9;
  return -1;
}

bool parse_key(std::string name, key_name& k) {
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::string_view s = name;
  if (s.size() == 2 && s[0] == '^') {
    k = {'^', static_cast<unsigned char>(s[1]), 0};
    return true;
  }
  bool bare_meta = s.size() == 3 && s.starts_with("m-");
  std::string_view rest = s;
  k.mods = take_prefix(rest);
  if (bare_meta) {
    k = {'M', static_cast<unsigned char>(name[2]), 0};
    return true;
  }
  if (rest == "enter") {
    k.cls = 'E';
    return true;
  }
  int32_t r = named_r_key(rest);
  if (r > 0) {
    k.cls = 'R';
    k.number = r;
    return k.number <= count_of('R');
  }
  std::string_view digits;
  if (rest.starts_with("pf")) {
    k.cls = 'F';
    digits = rest.substr(2);
  } else if (!rest.empty() && (rest[0] == 'f' || rest[0] == 'l' || rest[0] == 'r')) {
    k.cls = static_cast<char>(std::toupper(static_cast<unsigned char>(rest[0])));
    digits = rest.substr(1);
  } else {
    return false;
  }
  return xf_parse_count(digits, k.number) && k.number >= 1 && k.number <= count_of(k.cls);
}

xf_key_def& row_of(const key_name& k) {
  switch (k.cls) {
    case '^': return xf_keys.ctrl[k.number];
    case 'M': return xf_keys.meta[k.number];
    case 'E': return xf_keys.enter[k.mods];
    case 'F': return xf_keys.f[static_cast<std::size_t>(k.number + xf_keys.count_f * k.mods)];
    case 'L': return xf_keys.l[static_cast<std::size_t>(k.number + xf_keys.count_l * k.mods)];
    default: return xf_keys.r[static_cast<std::size_t>(k.number + xf_keys.count_r * k.mods)];
  }
}

// The key code a role holds, and the modifier states, for a key of the grammar.
int32_t role_code(const key_name& k) {
  switch (k.cls) {
    case 'F': return 32585 + k.number;
    case 'L': return 32553 + k.number;
    case 'R': return 32569 + k.number;
    case '^': return k.number;
    default: return -1;
  }
}

void role_mods(int32_t mods, int& shift, int& ctrl, int& meta) {
  shift = mods == 1 || mods == 4 || mods == 5 || mods == 7;
  ctrl = mods == 2 || mods == 4 || mods == 6 || mods == 7;
  meta = mods == 3 || mods == 5 || mods == 6 || mods == 7;
}

// A key that gets a definition or a role leaves any role it held.
void free_from_roles(int32_t code, int32_t mods, int except = -1) {
  int shift, ctrl, meta;
  role_mods(mods, shift, ctrl, meta);
  for (int r = 0; r < AR_COUNT; ++r) {
    xf_key_role& role = xf_keys.roles[r];
    if (r == except || role.code != code || role.shift != shift || role.ctrl != ctrl || role.meta != meta) continue;
    role.code = -1;
    asfrole(r, -1, 0, 0, 0);
  }
}

// Does the operand name a key a role can take (a prefix, then F/L/R n, alt, lf, escape or ^x)?
bool names_role_key(std::string_view operand) {
  std::string name(xf_trim(operand));
  if (name.empty() || name.find(' ') != std::string::npos) return false;
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::string_view rest = name;
  take_prefix(rest);
  if (rest == "alt" || rest == "lf" || rest == "escape") return true;
  if (rest.size() == 2 && rest[0] == '^') return true;
  key_name k;
  return parse_key(std::string(rest), k) && (k.cls == 'F' || k.cls == 'L' || k.cls == 'R');
}

int set_role(int role, std::string_view operand) {
  std::string name(xf_trim(operand));
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::string_view rest = name;
  int32_t mods = take_prefix(rest);
  key_name k;
  int32_t code = -1;
  if (rest == "alt") code = 6;
  else if (rest == "lf") code = 10;
  else if (rest == "escape") code = 27;
  else if (rest.size() == 2 && rest[0] == '^' && std::islower(static_cast<unsigned char>(rest[1])) && mods == 0)
    code = rest[1];
  else {
    std::string plain(rest);
    if (!parse_key(plain, k) || k.cls == '^' || k.cls == 'M' || k.cls == 'E') return invalid();
    k.mods = mods;
    code = role_code(k);
    row_of(k) = xf_key_def{};  // the key's definition goes
  }
  if (role == AR_EOF) mods = 0;
  free_from_roles(code, mods, role);
  int shift, ctrl, meta;
  role_mods(mods, shift, ctrl, meta);
  xf_keys.roles[role] = {code, shift, ctrl, meta};
  asfrole(role, code, shift, ctrl, meta);
  return 1;
}

// NBKEYS l f r: the tables are rebuilt with every key and modifier in its place.
int set_counts(const std::vector<std::string>& w) {
  int32_t l = 0, f = 0, r = 0;
  if (w.size() != 4 || !xf_parse_count(w[1], l) || !xf_parse_count(w[2], f) || !xf_parse_count(w[3], r) || l < 1 ||
      f < 1 || r < 1 || l > 15 || f > 24 || r > 15) {
    xf_msg(120, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  auto rebuild = [](std::vector<xf_key_def>& t, int32_t old_count, int32_t count) {
    std::vector<xf_key_def> n(static_cast<std::size_t>(count * 8 + 1));
    for (int32_t m = 0; m < 8; ++m)
      for (int32_t k = 1; k <= std::min(old_count, count); ++k)
        n[static_cast<std::size_t>(k + count * m)] = std::move(t[static_cast<std::size_t>(k + old_count * m)]);
    t = std::move(n);
  };
  rebuild(xf_keys.l, xf_keys.count_l, l);
  rebuild(xf_keys.f, xf_keys.count_f, f);
  rebuild(xf_keys.r, xf_keys.count_r, r);
  xf_keys.count_l = l;
  xf_keys.count_f = f;
  xf_keys.count_r = r;
  return 1;
}

std::string key_text(int32_t code, int32_t shift, int32_t ctrl, int32_t meta) {
  if (code < 0) return "";
  std::string p;
  if (shift) p += "S-";
  if (ctrl) p += "C-";
  if (meta) p += "M-";
  if (code == 6) return p + "Alt";
  if (code == 10) return p + "LF";
  if (code == 27) return p + "Escape";
  if (code < 256) return "^" + std::string(1, static_cast<char>(code));
  if (code > 32585) return p + "F" + std::to_string(code - 32585);
  if (code > 32569) return p + "R" + std::to_string(code - 32569);
  return p + "L" + std::to_string(code - 32553);
}

const char* mode_word(int32_t mode) {
  static const char* const words[] = {"ONLY", "AFTER", "BEFORE", "IGNORE"};
  return words[std::clamp(mode, 0, 3)];
}

}  // namespace

int xf_key_set(std::string_view text) {
  text = xf_trim(text);
  std::size_t sp = text.find(' ');
  std::string name(text.substr(0, sp));
  std::string_view rest = sp == std::string_view::npos ? std::string_view() : text.substr(sp + 1);
  std::string lname = xf_lower(name);
  std::string_view trimmed = xf_trim(rest);
  for (int r = 0; r < AR_COUNT; ++r) {
    if (lname != role_words[r]) continue;
    // HOME is the role when a key follows it, and otherwise the key of that name.
    if (r == AR_HOME && !names_role_key(trimmed)) break;
    return set_role(r, rest);
  }
  std::vector<std::string> w = xf_tokens(xf_lower(text));
  if (lname == "backspace") {
    if (w.size() != 2 || (w[1] != "^h" && w[1] != "^?")) {
      rc = 1;
      return 1;
    }
    xf_keys.backspace_is_h = w[1] == "^h";
    return 1;
  }
  if (lname == "nbkeys") return set_counts(w);
  if (lname == "server") {
    for (int m = 0; m < 14; ++m)
      if (w.size() == 2 && w[1] == servers[m]) {
        xf_keys.model = m;
        asfmodel(m);
        return 1;
      }
    xf_msg(188, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  key_name k;
  if (!parse_key(name, k)) return invalid();
  if (k.cls == '^' && lname.size() != 2) return invalid();
  xf_key_def def;
  std::string_view t = rest;
  std::string first = xf_lower(t.substr(0, t.find(' ')));
  if (first == "only" || first == "before" || first == "after" || first == "ignore") {
    def.mode = first == "only" ? XK_ONLY : first == "before" ? XK_BEFORE : first == "after" ? XK_AFTER : XK_IGNORE;
    std::size_t b = t.find(' ');
    t = b == std::string_view::npos ? std::string_view() : t.substr(b + 1);
  } else {
    bool complete = first.size() >= 5 && std::string_view("complete").starts_with(first);
    def.mode = !t.empty() && (t[0] == '?' || t[0] == '=' || complete) ? XK_ONLY : XK_BEFORE;
  }
  def.text = std::string(t);
  if (def.text.find_first_not_of(' ') == std::string::npos) def = xf_key_def{};
  // The copy, paste and cut keys act on press and release: note which keys carry those duties.
  std::string word = xf_lower(std::string_view(def.text).substr(0, def.text.find(' ')));
  if (word.starts_with("command ")) word = word.substr(8);
  auto abbrev = [&](std::string_view full, std::size_t least) {
    return word.size() >= least && word.size() <= full.size() && full.starts_with(word);
  };
  if (k.cls == 'F' || k.cls == 'L' || k.cls == 'R') {
    xf_key_duty duty{k.cls, k.number + count_of(k.cls) * k.mods};
    if (abbrev("s_copy", 4)) xf_keys.copy_key = duty;
    if (abbrev("s_paste", 3)) xf_keys.paste_key = duty;
    if (abbrev("s_cut", 4)) xf_keys.cut_key = duty;
    free_from_roles(role_code(k), k.mods);
  }
  row_of(k) = def;
  if (k.cls == 'M') asfalttab(k.number, def.text.empty() ? 0 : 1);
  return 1;
}

std::vector<std::string> xf_key_dump() {
  std::vector<std::string> out;
  char buf[64];
  auto line = [&](const std::string& head, const xf_key_def& d) {
    if (!d.text.empty()) out.push_back(head + mode_word(d.mode) + " " + d.text);
  };
  for (char cls : {'F', 'R', 'L'}) {
    int32_t count = count_of(cls);
    const std::vector<xf_key_def>& t = cls == 'F' ? xf_keys.f : cls == 'L' ? xf_keys.l : xf_keys.r;
    static const char* const patterns[] = {"SET %s%-9d  ", "SET S-%s%-9d", "SET C-%s%-9d", "SET M-%s%-9d",
                                           "SET S+C-%s%-7d", "SET S+M-%s%-7d", "SET C+M-%s%-7d", "SET S+C+M-%s%-5d"};
    const char name[2] = {cls, 0};
    for (int32_t m = 0; m < 8; ++m)
      for (int32_t k = 1; k <= count; ++k) {
        std::snprintf(buf, sizeof buf, patterns[m], name, k);
        line(buf, t[static_cast<std::size_t>(k + count * m)]);
      }
  }
  for (int c = 0; c < 256; ++c) {
    std::snprintf(buf, sizeof buf, "SET ^%c", c);
    std::string head = buf;
    head.resize(16, ' ');
    line(head, xf_keys.ctrl[c]);
  }
  for (int c = 0; c < 256; ++c) {
    std::snprintf(buf, sizeof buf, "SET M-%c", c);
    std::string head = buf;
    head.resize(16, ' ');
    line(head, xf_keys.meta[c]);
  }
  for (int m = 0; m < 8; ++m) {
    std::string head = std::string("SET ") + mod_prefix[m] + "ENTER";
    head.resize(16, ' ');
    line(head, xf_keys.enter[m]);
  }
  for (int r = 0; r < AR_COUNT; ++r) {
    const xf_key_role& role = xf_keys.roles[r];
    std::string text = key_text(role.code, role.shift, role.ctrl, role.meta);
    if (text.empty()) continue;
    std::string head = "SET " + xf_upper(role_words[r]);
    head.resize(16, ' ');
    out.push_back(head + text);
  }
  out.push_back(xf_keys.backspace_is_h ? "SET BACKSPACE   ^h" : "SET BACKSPACE   ^?");
  std::snprintf(buf, sizeof buf, "SET NBKEYS      %d %d %d", xf_keys.count_l, xf_keys.count_f, xf_keys.count_r);
  out.push_back(buf);
  if (xf_keys.model < 14) out.push_back(std::string("SET SERVER      ") + servers[xf_keys.model]);
  return out;
}
