// The first stage of the lexer: bytes to raw tokens; string conversions; the token trace; the whole `rx_lex`.
#include "rexx/rx_lex.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "rexx/rx_state.h"

namespace {

bool is_digit(int c) { return c >= '0' && c <= '9'; }
bool is_letter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_symbol_char(int c) {
  return is_letter(c) || is_digit(c) || (c > 0 && std::strchr("@#$.!?_", c) != nullptr) || c == 0xA8;
}
bool is_op_char(int c) { return (c > 0 && std::strchr("\\~/^*|=<>&", c) != nullptr) || c == 0xAD || c == 0xBD; }
int to_upper(int c) { return (c >= 'a' && c <= 'z') ? c - 32 : c; }

// The 71 words that can be keywords; LINEIN has a second spelling, EXTERNAL.
struct keyword_row {
  const char* word;
  int32_t kind;
};
constexpr std::array<keyword_row, 71> keyword_rows = {{
    {"ADDRESS", ADDRESS},   {"ARG", ARG},
    {"BY", BY},             {"CALL", CALL},
    {"DIGITS", DIGITS},     {"DO", DO},
    {"DROP", DROP},         {"ELSE", ELSE},
    {"END", END},           {"ENGINEERING", ENGINEERING},
    {"EXIT", EXIT},         {"EXPOSE", EXPOSE},
    {"FOR", FOR},           {"FOREVER", FOREVER},
    {"FORM", FORM},         {"FUZZ", FUZZ},
    {"IF", IF},             {"INTERPRET", INTERPRET},
    {"ITERATE", ITERATE},   {"LEAVE", LEAVE},
    {"LINEIN", LINEIN},     {"EXTERNAL", LINEIN},
    {"NOP", NOP},           {"NUMERIC", NUMERIC},
    {"OFF", OFF},           {"ON", ON},
    {"OTHERWISE", OTHERWISE}, {"PARSE", PARSE},
    {"PROCEDURE", PROCEDURE}, {"PULL", PULL},
    {"PUSH", PUSH},         {"QUEUE", QUEUE},
    {"RETURN", RETURN},     {"SAY", SAY},
    {"SAYN", SAYN},         {"SAYX", SAYX},
    {"SAYR", SAYR},         {"SCIENTIFIC", SCIENTIFIC},
    {"SELECT", SELECT},     {"SIGNAL", SIGNAL},
    {"SOURCE", SOURCE},     {"THEN", THEN},
    {"TO", TO},             {"TRACE", TRACE},
    {"UNTIL", UNTIL},       {"UPPER", UPPER},
    {"VALUE", VALUE},       {"VAR", VAR},
    {"VERSION", VERSION},   {"WHILE", WHILE},
    {"WITH", WITH},         {"WHEN", WHEN},
    {"ERROR", ERROR},       {"FAILURE", FAILURE},
    {"HALT", HALT},         {"NOVALUE", NOVALUE},
    {"SYNTAX", SYNTAX},     {"TEMPLATE", TEMPLATE},
    {"LOWER", LOWER},       {"CD", CD},
    {"NAME", NAME},         {"NOTREADY", NOTREADY},
    {"IN", IN},             {"OPTION", OPTION},
    {"MIXED", MIXED},       {"SETENV", SETENV},
    {"UNSETENV", UNSETENV}, {"LOAD", LOAD},
    {"NOLOAD", NOLOAD},     {"GLOBALV", GLOBALV},
    {"NOGLOBALV", NOGLOBALV},
}};

int32_t keyword_kind(const std::string& upper) {
  for (const keyword_row& row : keyword_rows)
    if (upper == row.word) return row.kind;
  return SYMBOL;
}

// The 44 operator spellings; searched by exact length and bytes.
struct operator_row {
  const char* spelling;
  int32_t kind;
};
constexpr std::array<operator_row, 44> operator_rows = {{
    {"~", OP_NOT},          {"\\", OP_NOT},         {"^", OP_NOT},          {"**", OP_EXP},
    {"//", OP_REMAIN},      {"||", OP_CONC},        {"==", OP_EEQ},         {"\\=", OP_NEQ},
    {"/=", OP_NEQ},         {"~=", OP_NEQ},         {"^=", OP_NEQ},         {"<>", OP_NEQ},
    {"><", OP_NEQ},         {"\\==", OP_NNEQ},      {"/==", OP_NNEQ},       {"~==", OP_NNEQ},
    {"^==", OP_NNEQ},       {">>", OP_SSUP},        {"<<", OP_IINF},        {">=", OP_SUP_EQ},
    {"/<", OP_SUP_EQ},      {"\\<", OP_SUP_EQ},     {"~<", OP_SUP_EQ},      {"^<", OP_SUP_EQ},
    {">>=", OP_SSUP_EQ},    {"/<<", OP_SSUP_EQ},    {"\\<<", OP_SSUP_EQ},   {"~<<", OP_SSUP_EQ},
    {"^<<", OP_SSUP_EQ},    {"<=", OP_INF_EQ},      {"/>", OP_INF_EQ},      {"\\>", OP_INF_EQ},
    {"~>", OP_INF_EQ},      {"^>", OP_INF_EQ},      {"<<=", OP_IINF_EQ},    {"/>>", OP_IINF_EQ},
    {"\\>>", OP_IINF_EQ},   {"~>>", OP_IINF_EQ},    {"^>>", OP_IINF_EQ},    {"&&", OP_XOR},
    {"\xAD", OP_EQIC},      {"~\xAD", OP_NEQIC},    {"\\\xAD", OP_NEQIC},   {"\xBD", OP_RHO},
}};

int32_t operator_kind(std::string_view spelling) {
  for (const operator_row& row : operator_rows)
    if (spelling == row.spelling) return row.kind;
  return 0;
}

// No blank token follows these kinds: a run of blanks is one token, and none stands behind an operator.
bool swallows_blank(int32_t prev) {
  if (prev == ' ' || prev == 0xAD || prev == 0xBD || rx_is_operator_kind(prev)) return true;
  return prev > 0 && prev < 128 && std::strchr("\\~/^*|=<>&+-%", prev) != nullptr;
}

// Does `w` read as a number (the test that lets `1e+5` stay one word)?
bool reads_as_number(std::string_view w) {
  bool digit = false, dot = false, exp = false, plus = false, minus = false;
  for (char ch : w) {
    int c = static_cast<unsigned char>(ch);
    if (is_digit(c)) {
      digit = true;
    } else if (c == '.') {
      if (dot || exp) return false;
      dot = true;
    } else if (c == 'e' || c == 'E') {
      if (exp) return false;
      exp = true;
    } else if (c == '+' || c == '-') {
      bool& seen = c == '+' ? plus : minus;
      if (seen || (digit && !exp)) return false;
      seen = true;
    } else {
      return false;
    }
  }
  if (!digit || w.empty() || w.back() == '+' || w.back() == '-') return false;
  // It must begin a number when scanned: a sign, then a digit or a point and a digit.
  std::size_t i = (w[0] == '+' || w[0] == '-') ? 1 : 0;
  if (i >= w.size()) return false;
  if (is_digit(static_cast<unsigned char>(w[i]))) return true;
  return w[i] == '.' && i + 1 < w.size() && is_digit(static_cast<unsigned char>(w[i + 1]));
}

// Reads the text byte by byte, keeping the 0-based line and the column of the last byte read (-1 at line start).
struct scanner {
  std::string_view text;
  std::size_t pos = 0;
  int32_t line = 0;
  int32_t col = -1;

  struct mark_t {
    std::size_t pos;
    int32_t line, col;
  };
  mark_t mark() const { return {pos, line, col}; }
  void reset(const mark_t& m) { pos = m.pos, line = m.line, col = m.col; }

  int get() {
    if (pos >= text.size()) return -1;
    int c = static_cast<unsigned char>(text[pos++]);
    if (c == '\n') {
      ++line;
      col = -1;
    } else {
      ++col;
    }
    return c;
  }
  int peek(std::size_t ahead = 0) const {
    return pos + ahead < text.size() ? static_cast<unsigned char>(text[pos + ahead]) : -1;
  }
};

struct scan_error {
  int number;
  int32_t line, column;
};

class raw_lexer {
 public:
  raw_lexer(std::string_view text, int32_t first_line) {
    sc_.text = text;
    sc_.line = first_line;
  }

  // Scans everything into out.tokens; throws scan_error.
  void run(rx_tokens& out) {
    out_ = &out;
    for (;;) {
      int32_t tl = sc_.line, tc = sc_.col + 1;
      int c = sc_.get();
      if (c < 0) break;
      if (c == '\r' || c == 0x1A) continue;
      if (prev_ == ';' && (c == ' ' || c == '\t')) continue;
      if (prev_ == ';' && c == '#') {
        while ((c = sc_.get()) >= 0 && c != '\n') {
        }
        continue;
      }
      if (c == ' ' || c == '\t') {
        if (!swallows_blank(prev_)) emit(' ', tl, tc);
      } else if (c == '\n') {
        if (prev_ != ';') emit(';', tl, tc);
      } else if (c == '/' && sc_.peek() == '*') {
        skip_comment(tl, tc);
      } else if (c == '\'' || c == '"') {
        scan_string(c, tl, tc);
      } else if (is_symbol_char(c)) {
        scan_word(c, tl, tc);
      } else if (c == '{') {
        emit(DO, tl, tc, "DO");
        emit(';', tl, tc);
      } else if (c == '}') {
        if (prev_ != ';') emit(';', tl, tc);
        emit(END, tl, tc, "END");
      } else if (c == ',') {
        scan_comma(tl, tc);
      } else if (is_op_char(c)) {
        scan_operator(c, tl, tc);
      } else if (c == ';') {
        if (prev_ != ';') emit(';', tl, tc);
      } else {
        emit(c, tl, tc);
      }
    }
    if (prev_ != ';') emit(';', sc_.line, sc_.col + 1);
  }

  int32_t line() const { return sc_.line; }

 private:
  void emit(int32_t kind, int32_t line, int32_t col) {
    rx_node t;
    t.type = kind;
    t.line = line;
    t.column = col;
    out_->push_back(std::move(t));
    prev_ = kind;
  }
  void emit(int32_t kind, int32_t line, int32_t col, std::string value, int32_t quoted = 0) {
    emit(kind, line, col);
    out_->back().value = std::move(value);
    out_->back().has_value = true;
    out_->back().quoted = quoted;
  }

  // A comment, nested, over any number of lines. Unclosed: error 6 at the line where it began.
  void skip_comment(int32_t tl, int32_t tc) {
    sc_.get();
    int depth = 1;
    while (depth > 0) {
      int c = sc_.get();
      if (c < 0) throw scan_error{6, tl, tc - 1};
      if (c == '/' && sc_.peek() == '*') {
        sc_.get();
        ++depth;
      } else if (c == '*' && sc_.peek() == '/') {
        sc_.get();
        --depth;
      }
    }
  }

  void scan_string(int quote, int32_t tl, int32_t tc) {
    std::string content;
    for (;;) {
      int c = sc_.get();
      if (c < 0 || c == '\n') throw scan_error{quote == '\'' ? 1 : 2, tl, tc};
      if (c == quote) {
        if (sc_.peek() != quote) break;
        sc_.get();
      }
      content.push_back(static_cast<char>(c));
    }
    int n = sc_.peek();
    bool suffix_alone = !is_symbol_char(sc_.peek(1));
    if ((n == 'x' || n == 'X') && suffix_alone) {
      sc_.get();
      std::string bytes;
      if (!rx_hex_to_bytes(content, bytes)) throw scan_error{15, tl, tc};
      content = std::move(bytes);
    } else if ((n == 'b' || n == 'B') && suffix_alone) {
      sc_.get();
      std::string bytes;
      if (!rx_bin_to_bytes(content, bytes)) throw scan_error{67, tl, tc};
      content = std::move(bytes);
    }
    emit(STRING, tl, tc, std::move(content), 1);
  }

  void scan_word(int first, int32_t tl, int32_t tc) {
    std::string w(1, static_cast<char>(first));
    for (;;) {
      scanner::mark_t m = sc_.mark();
      int c = sc_.get();
      if (c >= 0 && is_symbol_char(c)) {
        w.push_back(static_cast<char>(c));
      } else if ((c == '+' || c == '-') && (w.back() == 'e' || w.back() == 'E') &&
                 reads_as_number(std::string_view(w).substr(0, w.size() - 1))) {
        w.push_back(static_cast<char>(c));
      } else {
        sc_.reset(m);
        break;
      }
    }
    bool constant = is_digit(static_cast<unsigned char>(w[0])) ||
                    (w[0] == '.' && w.size() >= 2 && is_digit(static_cast<unsigned char>(w[1])));
    if (constant) {
      if (prev_ == ';') {
        std::size_t p = sc_.pos;
        while (p < sc_.text.size() && (sc_.text[p] == ' ' || sc_.text[p] == '\t')) ++p;
        if (p < sc_.text.size() && sc_.text[p] == '=') throw scan_error{31, tl, tc};
      }
      emit(STRING, tl, tc, std::move(w), 0);
      return;
    }
    std::string upper = w;
    for (char& ch : upper) ch = static_cast<char>(to_upper(static_cast<unsigned char>(ch)));
    emit(keyword_kind(upper), tl, tc, std::move(w));
  }

  // A comma before the end of a line (blanks and comments between) continues the clause as one blank.
  void scan_comma(int32_t tl, int32_t tc) {
    scanner::mark_t behind = sc_.mark();
    for (;;) {
      int c = sc_.get();
      if (c == ' ' || c == '\r') continue;
      if (c == '/' && sc_.peek() == '*') {
        sc_.get();
        int depth = 1;
        while (depth > 0 && (c = sc_.get()) >= 0) {
          if (c == '/' && sc_.peek() == '*') sc_.get(), ++depth;
          else if (c == '*' && sc_.peek() == '/') sc_.get(), --depth;
        }
        if (depth > 0) break;  // unclosed: the main loop reports it
        continue;
      }
      if (c == '\n') {
        if (prev_ != ' ') emit(' ', tl, tc);
        return;
      }
      break;
    }
    sc_.reset(behind);
    emit(',', tl, tc);
  }

  // Up to four operator bytes, blanks between them allowed; the longest spelling in the table wins.
  void scan_operator(int first, int32_t tl, int32_t tc) {
    std::string bytes(1, static_cast<char>(first));
    std::vector<scanner::mark_t> behind{sc_.mark()};
    while (bytes.size() < 4) {
      scanner::mark_t before = sc_.mark();
      int c;
      do c = sc_.get();
      while (c == ' ' || c == '\t');
      if (c < 0 || !is_op_char(c) || (c == '/' && sc_.peek() == '*')) {
        sc_.reset(before);
        break;
      }
      bytes.push_back(static_cast<char>(c));
      behind.push_back(sc_.mark());
    }
    for (std::size_t n = bytes.size(); n >= 1; --n) {
      if (int32_t kind = operator_kind(std::string_view(bytes).substr(0, n))) {
        sc_.reset(behind[n - 1]);
        emit(kind, tl, tc);
        return;
      }
    }
    sc_.reset(behind[0]);
    emit(first, tl, tc);
  }

  scanner sc_;
  rx_tokens* out_ = nullptr;
  int32_t prev_ = ';';
};

int hex_value(int c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

/* Hexadecimal strings are read from the right, two digits to a byte, so that blanks separate whole bytes counted
   from the right; one digit left over at the left end is padded with `pad`. A blank inside a pair is an error,
   except inside the leftmost pair of the string, so that 'a b'x reads as 'ab'x while 'a b c'x is refused. */
bool rx_hex_to_bytes(std::string_view s, std::string& out, char pad) {
  out.clear();
  if (s.empty()) return true;
  if (s.front() == ' ' || s.back() == ' ') return false;
  std::size_t first_digit = s.find_first_not_of(' ');
  std::string rev;
  std::ptrdiff_t i = static_cast<std::ptrdiff_t>(s.size()) - 1;
  while (i >= 0) {
    if (s[i] == ' ') {
      --i;
      continue;
    }
    int lo = hex_value(static_cast<unsigned char>(s[i]));
    if (lo < 0) return false;
    --i;
    int hi;
    if (i < 0) {
      hi = hex_value(static_cast<unsigned char>(pad));
    } else {
      std::ptrdiff_t j = i;
      while (j >= 0 && s[j] == ' ') --j;
      if (j != i && static_cast<std::size_t>(j) != first_digit) return false;
      hi = hex_value(static_cast<unsigned char>(s[j]));
      if (hi < 0) return false;
      i = j - 1;
    }
    rev.push_back(static_cast<char>(hi * 16 + lo));
  }
  out.assign(rev.rbegin(), rev.rend());
  return true;
}

/* Binary strings: groups of digits separated by blanks; every group but the leftmost has 4 or 8 digits. Bits fill
   bytes from the right and the leftmost byte is padded with zero bits. */
bool rx_bin_to_bytes(std::string_view s, std::string& out) {
  out.clear();
  if (s.empty()) return true;
  if (s.front() == ' ' || s.back() == ' ') return false;
  std::string bits;
  std::size_t group = 0;
  for (std::ptrdiff_t i = static_cast<std::ptrdiff_t>(s.size()) - 1; i >= 0; --i) {
    char c = s[i];
    if (c == '0' || c == '1') {
      bits.push_back(c);
      ++group;
    } else if (c == ' ') {
      if (group != 0 && group != 4 && group != 8) return false;
      group = 0;
    } else {
      return false;
    }
  }
  std::string rev;
  for (std::size_t i = 0; i < bits.size(); i += 8) {
    int byte = 0;
    for (std::size_t b = 0; b < 8 && i + b < bits.size(); ++b)
      if (bits[i + b] == '1') byte |= 1 << b;
    rev.push_back(static_cast<char>(byte));
  }
  out.assign(rev.rbegin(), rev.rend());
  return true;
}

void rx_fold_case(std::string& s, int case_mode) {
  if (case_mode == 0) return;
  for (char& ch : s) {
    if (case_mode == 2) {
      if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch + 32);
    } else if (ch >= 'a' && ch <= 'z') {
      ch = static_cast<char>(ch - 32);
    }
  }
}

bool rx_is_compiled_text(std::string_view text) {
  std::size_t bang = std::string_view::npos;
  int feeds = 0;
  for (std::size_t i = 0; i + 1 < text.size() && feeds < 2; ++i) {
    if (text[i] == '\n') ++feeds;
    else if (text[i] == '#' && text[i + 1] == '!') {
      bang = i;
      break;
    }
  }
  if (bang == std::string_view::npos) return false;
  std::size_t eol = text.find('\n', bang);
  std::string_view row = text.substr(bang, eol == std::string_view::npos ? std::string_view::npos : eol - bang);
  if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
  if (row.size() < 5 || row.substr(row.size() - 5) != "palom" || eol == std::string_view::npos) return false;
  std::size_t p = eol;
  while (p < text.size() && text[p] == '\n') ++p;
  return text.substr(p, 5) == "@ccpl";
}

bool rx_lex_scan(std::string_view text, int32_t first_line, rx_lex_result& out) {
  if (text.size() > 1 && text.back() == '\n') text.remove_suffix(1);
  raw_lexer lexer(text, first_line);
  try {
    lexer.run(out.tokens);
  } catch (const scan_error& e) {
    out.tokens.clear();
    out.error = e.number;
    out.error_line = e.line;
    out.error_column = e.column;
    return false;
  }
  out.last_line = lexer.line();
  return true;
}

rx_lex_result rx_lex(std::string_view text, int32_t first_line, bool forbid_compiled) {
  rx_lex_result r;
  auto fail = [&r](int number, int32_t line, int32_t column) {
    r.ok = false;
    r.tokens.clear();
    r.error = number;
    r.error_line = line;
    r.error_column = column;
    rx_st.error.number = number;
    rx_st.error.line = line;
    rx_st.error.column = column;
    return r;
  };
  if (!forbid_compiled && rx_is_compiled_text(text)) {
    r.compiled = true;
    return fail(76, 0, 0);
  }
  rx_lex_result raw;
  if (!rx_lex_scan(text, first_line, raw)) return fail(raw.error, raw.error_line, raw.error_column);
  r.tokens = rx_lex2_keywords(raw.tokens);
  r.tokens = rx_lex2_abuttal(r.tokens);
  rx_lex2_names(r.tokens);
  r.last_line = raw.last_line;
  r.ok = true;
  return r;
}

std::string rx_token_trace(const rx_tokens& toks) {
  std::string out;
  char buf[160];
  for (const rx_node& t : toks) {
    std::string name = rx_kind_name(t.type);
    if (t.has_value) {
      std::snprintf(buf, sizeof buf, "lex: type = %s   value = \"", name.c_str());
      out += buf;
      out += t.value;
      std::snprintf(buf, sizeof buf, "\"    len = %d     line = %d    col = %d\n", static_cast<int>(t.len()),
                    static_cast<int>(t.line + 1), static_cast<int>(t.column + 1));
    } else {
      std::snprintf(buf, sizeof buf, "lex: type = %s                                line = %d    col = %d\n",
                    name.c_str(), static_cast<int>(t.line + 1), static_cast<int>(t.column + 1));
    }
    out += buf;
  }
  return out;
}
