// Paths on Linux: "/" only, tilde expansion, lexical folding, the user's and the program's directories.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "/" is the only separator; a backslash is an ordinary name byte, so slash conversions are the identity.
constexpr char os_sep = '/';
constexpr std::string_view os_to_slashes(std::string_view path) { return path; }

// Where environment reads come from: the process's environment, or a fixed map that tests point at temp dirs.
struct os_env {
  std::function<std::optional<std::string>(const std::string&)> lookup;
  // The variable's value, or nullopt when unset.
  std::optional<std::string> get(const std::string& name) const { return lookup ? lookup(name) : std::nullopt; }
};
os_env os_env_process();
os_env os_env_map(std::map<std::string, std::string> vars);

// `~` and `~/x` become $HOME (else the passwd home); `~user` that user's passwd home; an unknown user is left alone.
std::string os_expand_tilde(std::string_view path, const os_env& env);

// Folds "." and ".." lexically and collapses repeated "/" in an absolute path; ".." at the root stays at the root.
// A trailing "/" is dropped except for the root itself. A relative path is folded as if it hung below "/".
std::string os_fold(std::string_view path);

// Tilde expansion, then joined to `work_dir` unless absolute, then folded. No file system access.
std::string os_absolute(std::string_view path, std::string_view work_dir, const os_env& env);

// The three name parts below are views into `path`.
// "a/b/c.x" -> "c.x" (text after the last "/"; all of it when there is none).
std::string_view os_base_name(std::string_view path);
// "a/b/c.x" -> "a/b/" (up to and with the last "/"; "" when there is none): dir part + base name == path.
std::string_view os_dir_part(std::string_view path);
// The text after the last "." of the base name; nullopt when it has no "." ("a." gives "").
std::optional<std::string_view> os_extension(std::string_view path);

// Splits a PATH-like list at ":", keeping only absolute entries, in order.
std::vector<std::string> os_split_path_list(std::string_view list);

// The user's home: $HOME when set and not empty, else the passwd entry of the real uid, else "/". No trailing "/".
std::string os_home(const os_env& env);
// The current working directory, or nullopt (with errno) when it cannot be had (e.g. removed).
std::optional<std::string> os_current_dir();

// realpath(3): symlinks followed, result absolute. Returns 0 or errno (ELOOP for a loop of links, ENOENT, ...).
int os_realpath(std::string_view path, std::string& out);

// The program's own path (readlink /proc/self/exe), or nullopt.
std::optional<std::string> os_self_exe();

// Where the installed data may be besides the program's own tree; defaults are the compiled-in places.
struct os_xhome_places {
  std::string source_data_dir;   // the build tree's data/ (TOLVA_SOURCE_DATA_DIR)
  std::string install_data_dir;  // <prefix>/share/tolva/ (TOLVA_INSTALL_DATA_DIR)
};
os_xhome_places os_xhome_default_places();
// xhome for a program at `exe`: its dir if it holds help/, else <exe dir>/../share/tolva/, else the build tree's
// data/, else two levels above the program, else the install dir. Always ends in "/".
std::string os_find_xhome(std::string_view exe, const os_xhome_places& places);

// $XDG_CONFIG_HOME (absolute only), else <home>/.config. No trailing "/".
std::string os_xdg_config_home(const os_env& env);
// $XDG_STATE_HOME (absolute only), else <home>/.local/state. No trailing "/".
std::string os_xdg_state_home(const os_env& env);
