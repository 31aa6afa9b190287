// The support library: splitting words with quotes, quoting names, options, PATH search, making commands.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct os_env;

// Words separated by the byte 32 only (a tab is part of a word).
std::vector<std::string> split_blanks(std::string_view text);

// Words with double and single quotes and backslash escapes; an empty quoted word is kept only with keep_empty.
std::vector<std::string> split_quoted(std::string_view text, bool keep_empty = false);

// As split_quoted, but everything from word `word_number` (1-based, counted by blanks) on is one word.
std::vector<std::string> split_quoted_rest(std::string_view text, int word_number);

// The text in double quotes, with a backslash before each double quote inside.
std::string quote_name(std::string_view text);
// quote_name when the text holds a blank or `force` is set; otherwise the text itself.
std::string quote_if_blank(std::string_view text, bool force = false);

// One known option: its exact name and how many operands follow it.
struct option_row {
  std::string_view name;
  int nb_operands;
};
// An option taken: its row's index and copies of its operands.
struct option_found {
  int index;
  std::vector<std::string> operands;
};
// Scans args from index 1. Returns the index of the first argument that does not start with "-" (args.size()
// at the end), -1 when an option lacks operands, -2 for an unknown option. `results` gets the options in order.
int get_options(std::span<const std::string> args, std::span<const option_row> names,
                std::vector<option_found>& results);

// Rejoins the words of a command line that a double quote spans. A word ending with a quote outside a run is an
// error: "tolva: Too many \"'s\n" on stderr and nullopt; with `allow` it is a plain word.
std::optional<std::vector<std::string>> join_quoted_args(std::span<const std::string> args, bool allow);

// The path of an executable regular file named `name` (quotes around it go): as it stands when it holds a "/",
// else in each directory of PATH (":" split, an empty entry is the current directory). Exact case, no extensions.
std::optional<std::string> find_on_path(std::string_view name, const os_env& env);
std::optional<std::string> find_on_path(std::string_view name);

// Whether `command` is to run through /bin/sh: it holds shell syntax or its first word is a builtin or keyword.
bool needs_shell(std::string_view command);
// The argv the system is to run: {"/bin/sh", "-c", command} by the shell rule, else the split_quoted words with
// the program found on PATH (left as it stands when not found). Empty for a blank command.
std::vector<std::string> make_command(std::string_view command, const os_env& env);
std::vector<std::string> make_command(std::string_view command);
