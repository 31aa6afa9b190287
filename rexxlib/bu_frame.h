// The built-in function frame: the table of built-ins, the name search, argument evaluation, checks and messages.
#pragma once

#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_exec.h"

// The argument values of one call, the usual few held inline. An argument that is a variable or a constant may be
// read in place (borrowed) when nothing evaluated after it can change it; asking for it through the non-const
// operator[] makes it a value of the call's own first, so that a handler's in-place conversion never reaches the
// variable or the constant.
class bu_values {
 public:
  bu_values() = default;
  bu_values(const bu_values&) = delete;
  bu_values& operator=(const bu_values&) = delete;
  ~bu_values();

  std::size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  const rx_value& operator[](std::size_t i) const {
    const entry& e = at(i);
    return e.borrowed ? *e.borrowed : e.own;
  }
  rx_value& operator[](std::size_t i) { return own(i); }
  bool present(std::size_t i) const { return i < count_ && at(i).present; }

  // Filling, by the frame, once: room for n arguments, then each one's slot for evaluation.
  struct entry {
    rx_value own;
    const rx_value* borrowed = nullptr;
    bool present = false;
  };
  void reset(std::size_t n);
  entry& slot(std::size_t i) { return at(i); }

 private:
  static constexpr std::size_t inline_count = 5;
  rx_value& own(std::size_t i);
  const entry& at(std::size_t i) const {
    return i < inline_count ? *std::launder(reinterpret_cast<const entry*>(inline_ + i * sizeof(entry)))
                            : more_[i - inline_count];
  }
  entry& at(std::size_t i) {
    return i < inline_count ? *std::launder(reinterpret_cast<entry*>(inline_ + i * sizeof(entry)))
                            : more_[i - inline_count];
  }
  // Storage for the first entries, made for the arguments there are and no more (reset and the destructor).
  alignas(entry) unsigned char inline_[inline_count * sizeof(entry)];
  std::vector<entry> more_;
  std::size_t count_ = 0;
};

// One call of a built-in: its NAME (upper case, for messages), its argument nodes and their values, evaluated left
// to right before any check. An omitted argument is absent; "F()" has a count of 1 with an absent first value.
struct bu_call {
  const char* name = "";
  const rx_node* first = nullptr;
  bu_values v;
  std::string buf[4];  // text forms of numbers handed out by str()

  std::size_t count() const { return v.size(); }
  bool has(std::size_t i) const { return v.present(i); }
  // The argument as a string view ("" when absent); a number is formatted into slot `slot`.
  std::string_view str(std::size_t i, int slot = 0);
};

using bu_handler = rx_value (*)(bu_call& c);

// A row of the built-in table: the name as spelled, and the handler (null: not available yet).
struct bu_row {
  const char* name;
  bu_handler fn;
};

// Number of rows in the table.
constexpr std::size_t bu_table_size = 311;

// Install the built-ins in the routine search (done at the start of every program that links them).
void bu_install();
// The routine search's entry: a name no label answers; false when no built-in has that name in the case mode.
bool bu_search(const rx_node* name, const rx_node* args, rx_value& out);

// Report a bad call: "\npalom: TEXT" on its own line, then error `number` (40 by default) at argument `index`.
[[noreturn]] void bu_error(const bu_call& c, std::size_t index, const std::string& text, int number = 40);
// The count check: min to max arguments (max -1: no upper limit), each of the first `min` present. Gives the
// message of the family for the range ("must receive 1 argument.", "2 or 3", "2 to 4").
void bu_count(const bu_call& c, std::size_t min, std::size_t max);
// A count failure with the given text after "NAME(): ".
void bu_count_msg(const bu_call& c, std::size_t min, std::size_t max, const char* text);
// Integer argument i (0-based). kind 0: a whole number; 1: positive (0 allowed); 2: strictly positive. Absent gives
// `dflt`.
long bu_int(bu_call& c, std::size_t i, int kind, long dflt);
// The pad argument i: one character, blank when absent.
char bu_pad(bu_call& c, std::size_t i);
// A number argument; error 40 "argument N must be a number." (or `number` for ABS/SIGN) when it is none.
double bu_num(bu_call& c, std::size_t i, int number = 40);
// A valid symbol for VALUE and the stem functions: not empty, not starting with "." or a digit, and made of
// letters, digits and "@#$.!?_".
bool bu_valid_symbol(std::string_view s);
// Round x to d significant digits.
double bu_round(double x, int d);
// A whole-number result.
inline rx_value bu_whole(long long n) { return rx_value::number(static_cast<double>(n), 0); }
// Words of a string split at blanks: (start, length) pairs.
std::vector<std::pair<std::size_t, std::size_t>> bu_word_list(std::string_view s);

// The handlers of each family, in the order of their table rows.
rx_value bu_abbrev(bu_call&);
rx_value bu_center(bu_call&);
rx_value bu_compare(bu_call&);
rx_value bu_copies(bu_call&);
rx_value bu_delstr(bu_call&);
rx_value bu_insert(bu_call&);
rx_value bu_lastpos(bu_call&);
rx_value bu_left(bu_call&);
rx_value bu_length(bu_call&);
rx_value bu_lower(bu_call&);
rx_value bu_overlay(bu_call&);
rx_value bu_pos(bu_call&);
rx_value bu_index(bu_call&);
rx_value bu_reverse(bu_call&);
rx_value bu_right(bu_call&);
rx_value bu_strip(bu_call&);
rx_value bu_substr(bu_call&);
rx_value bu_translate(bu_call&);
rx_value bu_upper(bu_call&);
rx_value bu_xrange(bu_call&);
rx_value bu_verify(bu_call&);
rx_value bu_words(bu_call&);
rx_value bu_word(bu_call&);
rx_value bu_subword(bu_call&);
rx_value bu_delword(bu_call&);
rx_value bu_wordindex(bu_call&);
rx_value bu_wordlength(bu_call&);
rx_value bu_wordpos(bu_call&);
rx_value bu_space(bu_call&);
rx_value bu_find(bu_call&);
rx_value bu_queued(bu_call&);
rx_value bu_bitand(bu_call&);
rx_value bu_bitor(bu_call&);
rx_value bu_bitxor(bu_call&);
rx_value bu_symbol(bu_call&);
rx_value bu_value(bu_call&);
rx_value bu_date(bu_call&);
rx_value bu_time(bu_call&);
rx_value bu_address(bu_call&);
rx_value bu_arg(bu_call&);
rx_value bu_condition(bu_call&);
rx_value bu_sourceline(bu_call&);
rx_value bu_trace(bu_call&);
rx_value bu_random(bu_call&);
rx_value bu_trunc(bu_call&);
rx_value bu_sin(bu_call&);
rx_value bu_cos(bu_call&);
rx_value bu_tan(bu_call&);
rx_value bu_asin(bu_call&);
rx_value bu_acos(bu_call&);
rx_value bu_atan(bu_call&);
rx_value bu_pi(bu_call&);
rx_value bu_change(bu_call&);
rx_value bu_comma(bu_call&);
rx_value bu_fwc(bu_call&);
rx_value bu_justify(bu_call&);
rx_value bu_datatype(bu_call&);
rx_value bu_digits(bu_call&);
rx_value bu_fuzz(bu_call&);
rx_value bu_form(bu_call&);
rx_value bu_errortext(bu_call&);
rx_value bu_arch(bu_call&);
rx_value bu_version(bu_call&);
rx_value bu_b2x(bu_call&);
rx_value bu_x2b(bu_call&);
rx_value bu_c2d(bu_call&);
rx_value bu_c2o(bu_call&);
rx_value bu_c2x(bu_call&);
rx_value bu_d2c(bu_call&);
rx_value bu_d2x(bu_call&);
rx_value bu_x2c(bu_call&);
rx_value bu_x2d(bu_call&);
rx_value bu_abs(bu_call&);
rx_value bu_sign(bu_call&);
rx_value bu_max(bu_call&);
rx_value bu_min(bu_call&);

// Stems. A stem is named without its final dot; its name is folded by the case mode, a tail is taken as given.
// The derived name of element `tail` (or `index`) of `stem`: "STEM.tail".
std::string bu_stem_ref(std::string_view stem, std::string_view tail);
std::string bu_stem_ref(std::string_view stem, long long index);
// Assign a derived name exactly (no tail is substituted), following exposure; read one (an unset element gives
// the stem's own value when it has one, else null).
void bu_set_derived(std::string_view name, rx_value v);
const rx_value* bu_get_derived(std::string_view name);
// Assign element `tail` (or `index`) of `stem` a string.
void bu_stem_set(std::string_view stem, std::string_view tail, std::string_view text);
void bu_stem_set(std::string_view stem, long long index, std::string_view text);
// A name folded by the case mode, as the lexer folds a symbol: for tails that a program writes as symbols
// (".%d.AdapterName" is read back as stem.1.AdapterName, which is STEM.1.ADAPTERNAME in upper case mode).
std::string bu_fold(std::string_view name);
// A list: stem.0 gets the count, stem.1 to stem.n the items.
void bu_stem_list(std::string_view stem, const std::vector<std::string>& items);
// Assign a string to a variable of the current pool, its name folded by the case mode.
void bu_set_var(std::string_view name, std::string_view text);
// The symbol written as argument `index` (a plain symbol, as the lexer folded it), or null for any other form.
const char* bu_symbol_arg(const bu_call& c, std::size_t index);

rx_value bu_format(bu_call&);
rx_value bu_upperw(bu_call&);
rx_value bu_rpos(bu_call&);
rx_value bu_rchange(bu_call&);
rx_value bu_sort(bu_call&);
rx_value bu_parg(bu_call&);
rx_value bu_linesize(bu_call&);
rx_value bu_externals(bu_call&);

// GLOBALV as a command to the default environment: true with its RC when `word` (lower case) is "globalv" and
// OPTION NOGLOBALV is not in force; `rest` is the text behind the word.
bool bu_globalv_command(std::string_view word, std::string_view rest, int32_t* rc);
// A word of at most 9 decimal digits and nothing else, as a number.
bool bu_digits(std::string_view w, long& out);
