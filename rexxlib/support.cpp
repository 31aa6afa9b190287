// The support library: word splitting with quotes, quoting, options, PATH search and the /bin/sh rule.
#include "rexxlib/support.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "os/os_file.h"
#include "os/os_path.h"

namespace {

bool is_quote(char c) { return c == '"' || c == '\''; }

// Words that only the shell understands: a command starting with one runs through /bin/sh. Kept sorted.
constexpr std::array<std::string_view, 52> shell_words = {
    "!",       ".",     ":",      "[",       "[[",       "alias",  "bg",     "break",  "case",  "cd",
    "command", "continue", "do",  "done",    "elif",     "else",   "esac",   "eval",   "exec",  "exit",
    "export",  "fc",    "fg",     "fi",      "for",      "function", "getopts", "hash", "if",    "in",
    "jobs",    "local", "read",   "readonly", "return",  "select", "set",    "shift",  "source", "then",
    "times",   "trap",  "type",   "ulimit",  "umask",    "unalias", "unset", "until",  "wait",  "while",
    "{",       "}"};
static_assert(std::is_sorted(shell_words.begin(), shell_words.end()));

// Bytes that make a command shell syntax. A tab is here too: only the shell splits words at it.
constexpr std::string_view shell_syntax = "|&;<>()$`\\\"'*?[#~=%\n\t";

constexpr std::string_view default_path = "/usr/local/bin:/usr/bin:/bin";

}  // namespace

std::vector<std::string> split_blanks(std::string_view text) {
  std::vector<std::string> words;
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && text[i] == ' ') ++i;
    std::size_t j = i;
    while (j < text.size() && text[j] != ' ') ++j;
    if (j > i) words.emplace_back(text.substr(i, j - i));
    i = j;
  }
  return words;
}

/* One pass with `open` the quote character that is open (0 for none). `cur` is the word being built; an
   unquoted word exists once it has a byte, a quoted one from its opening quote on, so that "" can give an
   empty word. A backslash looks at the byte behind it to decide whether it escapes a quote. */
std::vector<std::string> split_quoted(std::string_view text, bool keep_empty) {
  std::vector<std::string> words;
  std::string cur;
  char open = 0;
  auto end_word = [&](bool quoted) {
    if (!cur.empty() || (quoted && keep_empty)) words.push_back(cur);
    cur.clear();
  };
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n; ++i) {
    char c = text[i];
    if (c == ' ') {
      if (open == 0) {
        end_word(false);
      } else {
        cur += c;
      }
    } else if (is_quote(c)) {
      if (open != 0 && open != c) {
        cur += c;
      } else if (open == 0) {
        end_word(false);
        open = c;
      } else {
        end_word(true);
        open = 0;
      }
    } else if (c == '\\' && i + 1 < n) {
      char next = text[i + 1];
      if (open == 0 && is_quote(next)) {
        cur += next;
        ++i;
      } else if (open != 0 && next == open) {
        bool closes = i + 2 == n || text[i + 2] == ' ';
        if (closes) {
          cur += '\\';
          end_word(true);
          open = 0;
        } else {
          cur += next;
        }
        ++i;
      } else if (open != 0 && is_quote(next)) {
        cur += next;
        ++i;
      } else {
        cur += c;
      }
    } else {
      cur += c;
    }
  }
  if (open != 0 && cur.empty()) {
    words.emplace_back(1, open);
  } else if (!cur.empty()) {
    words.push_back(cur);
  }
  return words;
}

std::vector<std::string> split_quoted_rest(std::string_view text, int word_number) {
  std::size_t p = 0;
  for (int w = 1; w < word_number; ++w) {
    while (p < text.size() && text[p] == ' ') ++p;
    while (p < text.size() && text[p] != ' ') ++p;
  }
  while (p < text.size() && text[p] == ' ') ++p;
  bool plain = p < text.size() && !is_quote(text[p]) &&
               !(text[p] == '\\' && p + 1 < text.size() && is_quote(text[p + 1]));
  if (!plain) return split_quoted(text);
  std::string joined(text.substr(0, p));
  joined += '"';
  for (char c : text.substr(p)) {
    if (c == '"') joined += '\\';
    joined += c;
  }
  return split_quoted(joined);
}

std::string quote_name(std::string_view text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"') out += '\\';
    out += c;
  }
  out += '"';
  return out;
}

std::string quote_if_blank(std::string_view text, bool force) {
  if (force || text.find(' ') != std::string_view::npos) return quote_name(text);
  return std::string(text);
}

int get_options(std::span<const std::string> args, std::span<const option_row> names,
                std::vector<option_found>& results) {
  results.clear();
  std::size_t i = 1;
  while (i < args.size()) {
    const std::string& a = args[i];
    if (a.empty() || a[0] != '-') return static_cast<int>(i);
    auto row = std::find_if(names.begin(), names.end(), [&](const option_row& r) { return r.name == a; });
    if (row == names.end()) return -2;
    std::size_t need = static_cast<std::size_t>(std::max(row->nb_operands, 0));
    if (i + need >= args.size()) return -1;
    option_found found{static_cast<int>(row - names.begin()), {}};
    found.operands.assign(args.begin() + static_cast<std::ptrdiff_t>(i + 1),
                          args.begin() + static_cast<std::ptrdiff_t>(i + 1 + need));
    results.push_back(std::move(found));
    i += need + 1;
  }
  return static_cast<int>(args.size());
}

/* A run opens at a word that starts with a double quote and does not end with one, and closes at the first
   word that ends with one; the words between are joined with one blank and the two quotes go. An odd quote
   (a close with no run, or a run never closed) is the error, unless `allow` keeps it as it comes. */
std::optional<std::vector<std::string>> join_quoted_args(std::span<const std::string> args, bool allow) {
  std::vector<std::string> out;
  std::string run;
  bool in_run = false;
  auto too_many = []() { std::fputs("tolva: Too many \"'s\n", stderr); };
  for (const std::string& a : args) {
    bool starts = !a.empty() && a.front() == '"';
    bool ends = !a.empty() && a.back() == '"';
    if (in_run) {
      run += ' ';
      if (ends) {
        run.append(a, 0, a.size() - 1);
        out.push_back(std::move(run));
        run.clear();
        in_run = false;
      } else {
        run += a;
      }
    } else if (starts && ends && a.size() >= 2) {
      out.push_back(a.substr(1, a.size() - 2));
    } else if (starts) {
      run = a.substr(1);
      in_run = true;
    } else if (ends && !allow) {
      too_many();
      return std::nullopt;
    } else {
      out.push_back(a);
    }
  }
  if (in_run) {
    if (!allow) {
      too_many();
      return std::nullopt;
    }
    out.push_back(std::move(run));
  }
  return out;
}

std::optional<std::string> find_on_path(std::string_view name, const os_env& env) {
  if (name.size() >= 2 && is_quote(name.front()) && name.back() == name.front()) {
    name = name.substr(1, name.size() - 2);
  }
  if (name.empty()) return std::nullopt;
  if (name.find('/') != std::string_view::npos) {
    if (os_is_executable(name)) return std::string(name);
    return std::nullopt;
  }
  std::string path = env.get("PATH").value_or(std::string(default_path));
  std::size_t i = 0;
  while (i <= path.size()) {
    std::size_t j = path.find(':', i);
    if (j == std::string::npos) j = path.size();
    std::string dir = j > i ? path.substr(i, j - i) : std::string(".");
    if (dir.back() != '/') dir += '/';
    std::string candidate = dir + std::string(name);
    if (os_is_executable(candidate)) return candidate;
    i = j + 1;
  }
  return std::nullopt;
}

std::optional<std::string> find_on_path(std::string_view name) { return find_on_path(name, os_env_process()); }

bool needs_shell(std::string_view command) {
  if (command.find_first_of(shell_syntax) != std::string_view::npos) return true;
  std::size_t b = command.find_first_not_of(' ');
  if (b == std::string_view::npos) return false;
  std::size_t e = command.find(' ', b);
  std::string_view first = command.substr(b, e == std::string_view::npos ? std::string_view::npos : e - b);
  return std::binary_search(shell_words.begin(), shell_words.end(), first);
}

std::vector<std::string> make_command(std::string_view command, const os_env& env) {
  if (command.find_first_not_of(' ') == std::string_view::npos) return {};
  if (needs_shell(command)) return {"/bin/sh", "-c", std::string(command)};
  std::vector<std::string> argv = split_quoted(command);
  if (!argv.empty()) {
    if (auto found = find_on_path(argv[0], env)) argv[0] = *found;
  }
  return argv;
}

std::vector<std::string> make_command(std::string_view command) { return make_command(command, os_env_process()); }
