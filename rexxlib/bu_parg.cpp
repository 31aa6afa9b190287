// PARG: a command string split into its options, each with its words, and the rest, into a stem.
#include "rexxlib/bu_frame.h"
#include "rexxlib/support.h"

namespace {

struct known_option {
  std::string text;  // as folded by the case mode, with its "-"
  long words;
};

struct found_option {
  std::string name;  // without the "-"
  std::vector<std::string> words;
};

// A word count: a whole number from 0.
bool count_word(std::string_view w, long& out) { return bu_digits(w, out); }

}  // namespace

rx_value bu_parg(bu_call& c) {
  if (c.count() < 3 || c.count() > 4) bu_error(c, 0, "PARG(): needs 3 or 4 arguments.");
  for (std::size_t i = 0; i < 3; ++i)
    if (!c.has(i)) bu_error(c, i, "PARG(): argument " + std::to_string(i + 1) + " missing.");
  bool quoted = false;
  if (c.has(3)) {
    std::string_view f = c.str(3, 3);
    if (f != "0" && f != "1") bu_error(c, 3, "PARG(): argument 4 muste be 0 or 1.");
    quoted = f == "1";
  }
  const char* symbol = bu_symbol_arg(c, 2);
  if (!symbol) bu_error(c, 2, "PARG(): \"" + std::string(c.str(2, 2)) + "\" is not a valid REXX symbol.");
  std::string stem = symbol;
  if (!stem.empty() && stem.back() == '.') stem.pop_back();

  std::vector<std::string> options = split_blanks(c.str(1, 1));
  if (options.size() % 2 != 0) bu_error(c, 1, "PARG(): argument 2 must have an even number of elements.");
  std::vector<known_option> known;
  for (std::size_t i = 0; i < options.size(); i += 2) {
    known_option k{bu_fold(options[i]), 0};
    if (!count_word(options[i + 1], k.words))
      bu_error(c, 1, "PARG(): bad associated length \"" + options[i + 1] + "\" for element \"" + options[i] + "\".");
    known.push_back(std::move(k));
  }

  // Walk the words of the string while they are options; `rest` is where the first other word starts. The string
  // is copied: it may be a variable that the assignments below change.
  const std::string s(c.str(0, 0));
  std::vector<std::pair<std::size_t, std::size_t>> words = bu_word_list(s);
  std::vector<found_option> found;
  std::size_t w = 0;
  while (w < words.size() && s[words[w].first] == '-') {
    std::string word = bu_fold(s.substr(words[w].first, words[w].second));
    const known_option* k = nullptr;
    for (const known_option& row : known)
      if (row.text == word) k = &row;
    if (!k) return bu_whole(2);
    found_option f{word.substr(1), {}};
    ++w;
    for (long n = 0; n < k->words; ++n, ++w) {
      if (w >= words.size()) return bu_whole(1);
      std::string arg = s.substr(words[w].first, words[w].second);
      if (arg.size() > 1 && arg[0] == '-') return bu_whole(1);
      f.words.push_back(std::move(arg));
    }
    found.push_back(std::move(f));
  }

  bu_stem_set(stem, 0, std::to_string(found.size()));
  for (std::size_t i = 0; i < found.size(); ++i) {
    const found_option& f = found[i];
    bu_stem_set(stem, static_cast<long long>(i + 1), f.name);
    if (bu_valid_symbol(f.name)) bu_set_var(f.name, f.name);
    bu_stem_set(stem, f.name + ".0", std::to_string(f.words.size()));
    for (std::size_t k = 0; k < f.words.size(); ++k) bu_stem_set(stem, f.name + "." + std::to_string(k + 1), f.words[k]);
  }
  std::string_view rest = w < words.size() ? std::string_view(s).substr(words[w].first) : std::string_view();
  bu_stem_set(stem, static_cast<long long>(found.size() + 1), rest);
  std::vector<std::string> parts = quoted ? split_quoted(rest) : split_blanks(rest);
  std::string own = bu_fold(stem);
  bu_stem_set(stem, own + ".0", std::to_string(parts.size()));
  for (std::size_t k = 0; k < parts.size(); ++k) bu_stem_set(stem, own + "." + std::to_string(k + 1), parts[k]);
  return bu_whole(0);
}
