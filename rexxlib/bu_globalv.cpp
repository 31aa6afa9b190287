// GLOBALV: named values in groups on disk, in a working copy per session and in "session" and "lasting" stores,
// shared between processes under a per-file lock.
#include <algorithm>
#include <cstdlib>

#include "os/os_file.h"
#include "os/os_lock.h"
#include "os/os_path.h"
#include "os/os_process.h"
#include "rexx/rx_state.h"
#include "rexxlib/bu_frame.h"

namespace {

// Return codes.
constexpr int32_t rc_bad_operands = 1000004;
constexpr int32_t rc_empty = 1000024;
constexpr int32_t rc_initial = 1501000;
constexpr int32_t rc_lasting = 1502000;
constexpr int32_t rc_session = 1503000;
constexpr int32_t rc_working = 1504000;
constexpr int32_t rc_locked = 1505000;

constexpr int lock_tries = 300;
constexpr int lock_interval_ms = 10;

const char* const env_storage = "palom_STORAGE_GL";
const char* const env_group = "palom_GROUP_GL";
const char* const env_ini_done = "palom_GL_INI_IS_DONE";
const char* const env_debug_child = "QdbPid";

// The process's view of the tree: where it lies, the working copy, and the selected group.
struct bu_globalv_state {
  bool started = false;
  std::string base;     // GLOBALVHOME or HOME as it was when the tree was built
  std::string root;     // base + "/palom.globalv/", empty when there is none
  std::string storage;  // the working copy's directory, empty when none exists
  bool own_storage = false;  // made by this process, removed at its end
  bool exit_hook = false;
  std::string group = "unnamed";
};
bu_globalv_state gv;

std::string env_text(const char* name) {
  const char* v = std::getenv(name);
  return v ? v : "";
}

std::string to_hex(std::string_view s) {
  static const char digits[] = "0123456789abcdef";
  std::string out;
  for (unsigned char b : s) {
    out += digits[b >> 4];
    out += digits[b & 15];
  }
  return out;
}

int hex_digit(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
  if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
  return -1;
}

bool from_hex(std::string_view s, std::string& out) {
  if (s.empty() || s.size() % 2 != 0) return false;
  out.clear();
  for (std::size_t i = 0; i < s.size(); i += 2) {
    int hi = hex_digit(s[i]), lo = hex_digit(s[i + 1]);
    if (hi < 0 || lo < 0) return false;
    out += static_cast<char>(hi * 16 + lo);
  }
  return true;
}

// The base of the tree: GLOBALVHOME, else HOME (else the account's home), "\" turned to "/".
std::string current_base() {
  std::string b = env_text("GLOBALVHOME");
  if (b.empty()) b = env_text("HOME");
  if (b.empty()) b = os_home(os_env_process());
  std::replace(b.begin(), b.end(), '\\', '/');
  return b;
}

void remove_own_storage() {
  if (gv.own_storage && !gv.storage.empty()) os_remove_tree(gv.storage);
  gv.own_storage = false;
}

void at_exit() { remove_own_storage(); }

// Removes the working copies of sessions whose first process no longer runs.
void sweep_stale(const std::string& root) {
  std::vector<std::string> names;
  if (os_list_dir(root, names) != 0) return;
  for (const std::string& n : names) {
    if (n.rfind("storage.", 0) != 0 || n.size() == 8) continue;
    std::string digits = n.substr(8);
    if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 9) continue;
    if (!os_process_alive(std::stoi(digits))) os_remove_tree(root + n);
  }
}

// Builds the tree at the first GLOBALV of the process, or again when its base changed.
void start() {
  std::string base = current_base();
  if (gv.started && base == gv.base) return;
  if (gv.started) {  // the base moved: this process starts a session of its own in the new tree
    remove_own_storage();
    os_unset_env(env_storage);
    os_unset_env(env_ini_done);
  }
  gv.started = true;
  gv.base = base;
  gv.root.clear();
  gv.storage.clear();
  if (base.empty() || os_file_kind(base) != os_kind::directory) return;
  gv.root = base + (base.back() == '/' ? "" : "/") + "palom.globalv/";
  os_make_dirs(gv.root + "session", 0777);
  os_make_dirs(gv.root + "lasting", 0777);
  std::string inherited = env_text(env_storage);
  if (!inherited.empty() && env_text(env_debug_child).empty()) {
    gv.storage = inherited;
    return;
  }
  sweep_stale(gv.root);
  std::string mine = gv.root + "storage." + std::to_string(os_pid());
  os_remove_tree(mine);
  if (os_make_dir(mine, 0777) != 0) return;
  gv.storage = mine;
  gv.own_storage = true;
  if (!gv.exit_hook) {
    std::atexit(at_exit);
    gv.exit_hook = true;
  }
  os_set_env(env_storage, mine);
  os_unset_env(env_ini_done);
}

std::string value_path(const std::string& store, std::string_view group, std::string_view name) {
  return store + "/" + to_hex(group) + "/" + to_hex(name);
}

// Writes one value into a store: 0, `code` for a failure, rc_locked when the file stayed locked.
int32_t write_value(const std::string& store, std::string_view group, std::string_view name, std::string_view bytes,
                    int32_t code) {
  if (store.empty()) return code;
  if (os_make_dirs(store + "/" + to_hex(group), 0777) != 0) return code;
  os_locked_file f;
  if (f.open(value_path(store, group, name), true) != 0) return code;
  int lk = f.lock(lock_tries, lock_interval_ms);
  if (lk == EAGAIN) return rc_locked;
  if (lk != 0 || f.replace(bytes) != 0) return code;
  return 0;
}

// Reads one value: a missing file is the empty value.
int32_t read_value(const std::string& store, std::string_view group, std::string_view name, std::string& out,
                   int32_t code) {
  out.clear();
  if (store.empty()) return code;
  os_locked_file f;
  int op = f.open(value_path(store, group, name), false);
  if (op == ENOENT) return 0;
  if (op != 0) return code;
  int lk = f.lock(lock_tries, lock_interval_ms);
  if (lk == EAGAIN) return rc_locked;
  if (lk != 0 || f.read_all(out) != 0) return code;
  return 0;
}

// The entries of a directory that are regular files or directories, with hexadecimal names, decoded and sorted.
std::vector<std::pair<std::string, std::string>> hex_entries(const std::string& dir, os_kind kind) {
  std::vector<std::pair<std::string, std::string>> out;  // (decoded, file name)
  std::vector<std::string> names;
  if (os_list_dir(dir, names) != 0) return out;
  std::string decoded;
  for (const std::string& n : names) {
    if (!from_hex(n, decoded)) continue;
    if (os_file_kind(dir + "/" + n) != kind) continue;
    out.emplace_back(decoded, n);
  }
  std::sort(out.begin(), out.end());
  return out;
}

// Copies every value of a store into the working copy.
int32_t copy_store(const std::string& from, int32_t code) {
  for (const auto& [group, gdir] : hex_entries(from, os_kind::directory)) {
    for (const auto& [name, file] : hex_entries(from + "/" + gdir, os_kind::regular)) {
      std::string bytes;
      if (int32_t rc = read_value(from, group, name, bytes, code)) return rc;
      if (int32_t rc = write_value(gv.storage, group, name, bytes, code)) return rc;
    }
  }
  return 0;
}

// Loads the session: "initial", then "lasting", then "session" into the working copy; a later one wins.
int32_t load_session() {
  if (gv.storage.empty()) return rc_working;
  if (os_file_kind(gv.root + "initial") == os_kind::directory)
    if (int32_t rc = copy_store(gv.root + "initial", rc_initial)) return rc;
  if (int32_t rc = copy_store(gv.root + "lasting", rc_lasting)) return rc;
  if (int32_t rc = copy_store(gv.root + "session", rc_session)) return rc;
  os_set_env(env_ini_done, "1");
  return 0;
}

// ---- The verbs. Each gets the words behind it and the text behind it (for the setl forms). ----

struct verb_args {
  std::vector<std::string> words;
  std::string_view rest;  // the text behind the verb
  bool in_select = false;
};

// Stores for the set and put forms: the extra store (none, session or lasting) and its code.
struct extra_store {
  const char* dir;
  int32_t code;
};
const extra_store no_store{nullptr, 0};
const extra_store session_store{"session", rc_session};
const extra_store lasting_store{"lasting", rc_lasting};

int32_t store_value(const extra_store& extra, const std::string& name, std::string_view bytes) {
  if (extra.dir)
    if (int32_t rc = write_value(gv.root + extra.dir, gv.group, name, bytes, extra.code)) return rc;
  return write_value(gv.storage, gv.group, name, bytes, rc_working);
}

int32_t set_pairs(const verb_args& a, const extra_store& extra) {
  if (a.words.empty()) return rc_bad_operands;
  for (std::size_t i = 0; i < a.words.size(); i += 2) {
    std::string_view value = i + 1 < a.words.size() ? std::string_view(a.words[i + 1]) : std::string_view();
    if (int32_t rc = store_value(extra, bu_fold(a.words[i]), value)) return rc;
  }
  return 0;
}

int32_t set_line(const verb_args& a, const extra_store& extra) {
  if (a.words.empty()) return rc_bad_operands;
  std::string_view r = a.rest;
  std::size_t at = r.find_first_not_of(' ');
  r = r.substr(at + a.words[0].size());
  std::size_t v = r.find_first_not_of(' ');
  r = v == std::string_view::npos ? std::string_view() : r.substr(v);
  return store_value(extra, bu_fold(a.words[0]), r);
}

int32_t put_names(const verb_args& a, const extra_store& extra) {
  if (a.words.empty()) return rc_bad_operands;
  rx_var_ctx ctx = rx_ctx();
  for (const std::string& w : a.words) {
    if (!bu_valid_symbol(w)) return rc_bad_operands;
    rx_node sym = rx_symbol_of(w, ctx.case_mode);
    const rx_value* v = rx_get(ctx, sym);
    std::string buf;
    std::string text = v ? std::string(rx_text_of(*v, buf, nullptr)) : rx_default_text(ctx, sym);
    if (int32_t rc = store_value(extra, bu_fold(w), text)) return rc;
  }
  return 0;
}

// The names a get, list or stack works on: those asked, or every value of the group.
std::vector<std::string> names_of(const verb_args& a) {
  std::vector<std::string> out;
  if (!a.words.empty()) {
    for (const std::string& w : a.words) out.push_back(bu_fold(w));
    return out;
  }
  for (const auto& e : hex_entries(gv.storage + "/" + to_hex(gv.group), os_kind::regular)) out.push_back(e.first);
  return out;
}

int32_t do_set(const verb_args& a) { return set_pairs(a, no_store); }
int32_t do_sets(const verb_args& a) { return set_pairs(a, session_store); }
int32_t do_setp(const verb_args& a) { return set_pairs(a, lasting_store); }
int32_t do_setl(const verb_args& a) { return set_line(a, no_store); }
int32_t do_setls(const verb_args& a) { return set_line(a, session_store); }
int32_t do_setlp(const verb_args& a) { return set_line(a, lasting_store); }
int32_t do_put(const verb_args& a) { return put_names(a, no_store); }
int32_t do_puts(const verb_args& a) { return put_names(a, session_store); }
int32_t do_putp(const verb_args& a) { return put_names(a, lasting_store); }

int32_t do_get(const verb_args& a) {
  for (const std::string& name : names_of(a)) {
    std::string value;
    if (int32_t rc = read_value(gv.storage, gv.group, name, value, rc_working)) return rc;
    bu_set_derived(name, rx_value::string(value));
  }
  return 0;
}

int32_t do_list(const verb_args& a) {
  std::string out;
  for (const std::string& name : names_of(a)) {
    std::string value;
    if (int32_t rc = read_value(gv.storage, gv.group, name, value, rc_working)) return rc;
    out += name + " = \"" + value + "\"\n";
  }
  rx_output(out);
  return 0;
}

int32_t do_stack(const verb_args& a) {
  if (a.words.empty()) return rc_bad_operands;
  std::vector<std::string> values;
  for (const std::string& w : a.words) {
    std::string value;
    if (int32_t rc = read_value(gv.storage, gv.group, bu_fold(w), value, rc_working)) return rc;
    values.push_back(std::move(value));
  }
  for (auto it = values.rbegin(); it != values.rend(); ++it) rx_queue_push(*it);
  return 0;
}

int32_t purge_group(const std::string& gdir) {
  for (const auto& e : hex_entries(gdir, os_kind::regular)) {
    os_locked_file f;
    std::string path = gdir + "/" + e.second;
    if (f.open(path, true) != 0) continue;
    if (f.lock(lock_tries, lock_interval_ms) == EAGAIN) return rc_locked;
    if (os_remove(path) != 0) return rc_working;
  }
  os_remove_dir(gdir);
  return 0;
}

int32_t do_purge(const verb_args& a) {
  if (!a.words.empty()) return rc_bad_operands;
  if (a.in_select) return purge_group(gv.storage + "/" + to_hex(gv.group));
  for (const auto& g : hex_entries(gv.storage, os_kind::directory))
    if (int32_t rc = purge_group(gv.storage + "/" + g.second)) return rc;
  return 0;
}

int32_t do_grplist(const verb_args& a) {
  if (!a.words.empty()) return rc_bad_operands;
  std::string out;
  for (const auto& g : hex_entries(gv.storage, os_kind::directory)) out += g.first + "\n";
  rx_output(out);
  return 0;
}

int32_t do_grpstack(const verb_args& a) {
  if (!a.words.empty()) return rc_bad_operands;
  auto groups = hex_entries(gv.storage, os_kind::directory);
  rx_queue_push("");
  for (auto it = groups.rbegin(); it != groups.rend(); ++it) rx_queue_push(it->first);
  return 0;
}

int32_t do_init(const verb_args& a) {
  if (!a.words.empty()) return rc_bad_operands;
  return load_session();
}

int32_t run_verb(std::string_view word, verb_args& a);

int32_t do_select(const verb_args& a);

// The verbs, matched without regard to case.
struct verb_row {
  const char* name;
  int32_t (*fn)(const verb_args&);
};
const verb_row verbs[] = {
    {"init", do_init},   {"select", do_select}, {"set", do_set},         {"sets", do_sets},     {"setp", do_setp},
    {"setl", do_setl},   {"setls", do_setls},   {"setsl", do_setls},     {"setlp", do_setlp},   {"setpl", do_setlp},
    {"put", do_put},     {"puts", do_puts},     {"putp", do_putp},       {"get", do_get},       {"list", do_list},
    {"stack", do_stack}, {"purge", do_purge},   {"grplist", do_grplist}, {"grpstack", do_grpstack},
};

const verb_row* find_verb(std::string_view w) {
  std::string lower(w);
  for (char& ch : lower)
    if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch + 32);
  for (const verb_row& r : verbs)
    if (lower == r.name) return &r;
  return nullptr;
}

// The words of a text split at blanks, with the text behind each word's start.
verb_args args_of(std::string_view text) {
  verb_args a;
  a.rest = text;
  for (auto [at, len] : bu_word_list(text)) a.words.emplace_back(text.substr(at, len));
  return a;
}

// The text behind the first word of `text`.
std::string_view after_first_word(std::string_view text) {
  std::size_t at = text.find_first_not_of(' ');
  if (at == std::string_view::npos) return {};
  std::size_t end = text.find(' ', at);
  return end == std::string_view::npos ? std::string_view() : text.substr(end);
}

void select_group(std::string g) {
  gv.group = std::move(g);
  os_set_env(env_group, gv.group);
}

int32_t do_select(const verb_args& a) {
  if (a.words.empty()) {
    select_group("unnamed");
    return 0;
  }
  std::string_view behind = after_first_word(a.rest);
  if (find_verb(a.words[0])) {  // "select set a 1": the verb works on "unnamed"
    select_group("unnamed");
    verb_args inner = args_of(behind);
    return run_verb(a.words[0], inner);
  }
  if (a.words.size() == 1) {
    select_group(a.words[0]);
    return 0;
  }
  std::string old = gv.group;
  gv.group = a.words[0];
  verb_args inner = args_of(after_first_word(behind));
  inner.in_select = true;
  int32_t rc = run_verb(a.words[1], inner);
  gv.group = old;
  return rc;
}

int32_t run_verb(std::string_view word, verb_args& a) {
  const verb_row* r = find_verb(word);
  if (!r) return rc_bad_operands;
  return r->fn(a);
}

}  // namespace

bool bu_globalv_command(std::string_view word, std::string_view rest, int32_t* rc) {
  if (word != "globalv" || rx_st.sw.globalv == 1) return false;
  verb_args a = args_of(rest);
  if (a.words.empty()) {
    *rc = rc_empty;
    return true;
  }
  start();
  if (gv.storage.empty()) {
    *rc = rc_working;
    return true;
  }
  std::string inherited_group = env_text(env_group);
  if (!inherited_group.empty()) gv.group = inherited_group;
  if (env_text(env_ini_done).empty()) {
    const verb_row* first = find_verb(a.words[0]);
    if (!(first && first->fn == do_init))  // init loads the session itself
      if (int32_t r = load_session()) {
        *rc = r;
        return true;
      }
  }
  std::string verb = a.words[0];
  verb_args inner = args_of(after_first_word(rest));
  *rc = run_verb(verb, inner);
  return true;
}

namespace {
// GLOBALV reaches the default environment's commands through the engine's hook.
const bool hooked = (rx_globalv_hook = bu_globalv_command, true);
}  // namespace
