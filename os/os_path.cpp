// Paths on Linux: tilde expansion, lexical folding, home, realpath, the program's path and xhome.
#include "os/os_path.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool is_dir(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string with_slash(std::string s) {
  if (s.empty() || s.back() != '/') s += '/';
  return s;
}

// The passwd home of a user name, or of the real uid when the name is empty.
std::optional<std::string> passwd_home(const std::string& user) {
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::string buf(size > 0 ? static_cast<std::size_t>(size) : 16384, '\0');
  struct passwd pw;
  struct passwd* found = nullptr;
  for (;;) {
    int rc = user.empty() ? ::getpwuid_r(::getuid(), &pw, buf.data(), buf.size(), &found)
                          : ::getpwnam_r(user.c_str(), &pw, buf.data(), buf.size(), &found);
    if (rc == ERANGE && buf.size() < (1u << 20)) {
      buf.resize(buf.size() * 2);
      continue;
    }
    if (rc != 0 || found == nullptr || pw.pw_dir == nullptr) return std::nullopt;
    return std::string(pw.pw_dir);
  }
}

std::string xdg_dir(const os_env& env, const char* var, const char* fallback) {
  auto v = env.get(var);
  if (v && !v->empty() && (*v)[0] == '/') return os_fold(*v);
  return os_fold(os_home(env) + "/" + fallback);
}

}  // namespace

os_env os_env_process() {
  return os_env{[](const std::string& name) -> std::optional<std::string> {
    const char* v = ::getenv(name.c_str());
    if (v == nullptr) return std::nullopt;
    return std::string(v);
  }};
}

os_env os_env_map(std::map<std::string, std::string> vars) {
  return os_env{[vars = std::move(vars)](const std::string& name) -> std::optional<std::string> {
    auto it = vars.find(name);
    if (it == vars.end()) return std::nullopt;
    return it->second;
  }};
}

std::string os_expand_tilde(std::string_view path, const os_env& env) {
  if (path.empty() || path[0] != '~') return std::string(path);
  std::size_t end = path.find('/');
  if (end == std::string_view::npos) end = path.size();
  std::string user(path.substr(1, end - 1));
  std::optional<std::string> home = user.empty() ? std::optional<std::string>(os_home(env)) : passwd_home(user);
  if (!home) return std::string(path);
  std::string out = *home;
  std::string_view rest = path.substr(end);
  if (!out.empty() && out.back() == '/' && !rest.empty()) out.pop_back();
  out += rest;
  return out;
}

/* Folding keeps a stack of components: "." is skipped, ".." pops (never above the root), others push. Purely
   lexical: "a/link/.." becomes "a" even when link is a symlink, which is what a user typing the name means. */
std::string os_fold(std::string_view path) {
  std::vector<std::string_view> parts;
  std::size_t i = 0;
  while (i < path.size()) {
    while (i < path.size() && path[i] == '/') ++i;
    std::size_t j = path.find('/', i);
    if (j == std::string_view::npos) j = path.size();
    std::string_view part = path.substr(i, j - i);
    if (part.empty() || part == ".") {
    } else if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else {
      parts.push_back(part);
    }
    i = j;
  }
  std::string out;
  for (auto p : parts) {
    out += '/';
    out += p;
  }
  return out.empty() ? "/" : out;
}

std::string os_absolute(std::string_view path, std::string_view work_dir, const os_env& env) {
  std::string p = os_expand_tilde(path, env);
  if (!p.empty() && p[0] == '/') return os_fold(p);
  std::string joined(work_dir);
  joined += '/';
  joined += p;
  return os_fold(joined);
}

std::string_view os_base_name(std::string_view path) {
  std::size_t k = path.rfind('/');
  return k == std::string_view::npos ? path : path.substr(k + 1);
}

std::string_view os_dir_part(std::string_view path) {
  std::size_t k = path.rfind('/');
  return k == std::string_view::npos ? std::string_view() : path.substr(0, k + 1);
}

std::optional<std::string_view> os_extension(std::string_view path) {
  std::string_view base = os_base_name(path);
  std::size_t k = base.rfind('.');
  if (k == std::string_view::npos) return std::nullopt;
  return base.substr(k + 1);
}

std::vector<std::string> os_split_path_list(std::string_view list) {
  std::vector<std::string> out;
  std::size_t i = 0;
  while (i <= list.size()) {
    std::size_t j = list.find(':', i);
    if (j == std::string_view::npos) j = list.size();
    std::string_view entry = list.substr(i, j - i);
    if (!entry.empty() && entry[0] == '/') out.emplace_back(entry);
    i = j + 1;
  }
  return out;
}

std::string os_home(const os_env& env) {
  auto h = env.get("HOME");
  std::string home;
  if (h && !h->empty()) {
    home = *h;
  } else if (auto p = passwd_home("")) {
    home = *p;
  }
  if (home.empty()) return "/";
  while (home.size() > 1 && home.back() == '/') home.pop_back();
  return home;
}

std::optional<std::string> os_current_dir() {
  std::string buf(4096, '\0');
  for (;;) {
    if (::getcwd(buf.data(), buf.size()) != nullptr) return std::string(buf.c_str());
    if (errno != ERANGE || buf.size() > (1u << 20)) return std::nullopt;
    buf.resize(buf.size() * 2);
  }
}

int os_realpath(std::string_view path, std::string& out) {
  std::string p(path);
  char* r = ::realpath(p.c_str(), nullptr);
  if (r == nullptr) return errno;
  out = r;
  ::free(r);
  return 0;
}

std::optional<std::string> os_self_exe() {
  std::string buf(4096, '\0');
  for (;;) {
    ssize_t n = ::readlink("/proc/self/exe", buf.data(), buf.size());
    if (n < 0) return std::nullopt;
    if (static_cast<std::size_t>(n) < buf.size()) return buf.substr(0, static_cast<std::size_t>(n));
    if (buf.size() > (1u << 20)) return std::nullopt;
    buf.resize(buf.size() * 2);
  }
}

os_xhome_places os_xhome_default_places() {
#ifdef TOLVA_SOURCE_DATA_DIR
  std::string source = TOLVA_SOURCE_DATA_DIR;
#else
  std::string source;
#endif
#ifdef TOLVA_INSTALL_DATA_DIR
  std::string install = TOLVA_INSTALL_DATA_DIR;
#else
  std::string install = "/usr/local/share/tolva/";
#endif
  return {source, install};
}

std::string os_find_xhome(std::string_view exe, const os_xhome_places& places) {
  std::string dir(os_dir_part(exe));
  if (!dir.empty() && dir[0] == '/') {
    if (is_dir(dir + "help")) return dir;
    std::string share = os_fold(dir + "../share/tolva");
    if (is_dir(share)) return with_slash(share);
  }
  if (!places.source_data_dir.empty() && is_dir(places.source_data_dir)) return with_slash(places.source_data_dir);
  // Two levels above the program: a program kept in a subdirectory below the installation.
  if (!dir.empty() && dir[0] == '/' && dir != "/") {
    std::string parent(os_dir_part(std::string_view(dir).substr(0, dir.size() - 1)));
    if (!parent.empty()) return parent;
  }
  return with_slash(places.install_data_dir);
}

std::string os_xdg_config_home(const os_env& env) { return xdg_dir(env, "XDG_CONFIG_HOME", ".config"); }
std::string os_xdg_state_home(const os_env& env) { return xdg_dir(env, "XDG_STATE_HOME", ".local/state"); }
