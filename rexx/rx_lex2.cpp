// The three rewriting passes of the lexer: keywords decided by context, abuttal, blanks and names.
#include <cstring>

#include "rexx/rx_lex.h"
#include "rexx/rx_state.h"

namespace {

bool in_set_a(int32_t k) {
  if (k > 0 && k < 128 && std::strchr("/*|=<>&%:", k) != nullptr) return true;
  return rx_is_operator_kind(k) && k != OP_RHO && k != OP_NOT;
}
bool in_set_b(int32_t k) {
  if (k > 0 && k < 128 && std::strchr("/*|=<>&%+-", k) != nullptr) return true;
  return rx_is_operator_kind(k);
}
bool in_set_c(int32_t k) { return in_set_b(k) || k == '('; }

bool is_parse_source(int32_t k) {
  return k == UPPER || k == ARG || k == LINEIN || k == PULL || k == SOURCE || k == VALUE || k == VAR ||
         k == VERSION || k == NUMERIC;
}

/* lex2(1): each word of the keyword table stays a keyword only where its context says so; everything else that
   the scanner took for a keyword becomes a SYMBOL. The decisions look at the raw kind of the next token and at
   the kinds already written, and a few clause-wide flags (template mode, open condition, DO header, ...). */
class keyword_pass {
 public:
  explicit keyword_pass(const rx_tokens& raw) : raw_(raw), forced_nolex_(raw.size()), forced_symbol_(raw.size()) {}

  rx_tokens run() {
    out_.reserve(raw_.size() + raw_.size() / 4 + 16);
    for (i_ = 0; i_ < raw_.size(); ++i_) step();
    return std::move(out_);
  }

 private:
  // Index of the next raw token after j that is no blank and no NOLEX; raw size at the end.
  std::size_t next_index(std::size_t j) const {
    for (++j; j < raw_.size(); ++j)
      if (raw_[j].type != ' ' && raw_[j].type != RX_NOLEX && !forced_nolex_[j]) break;
    return j;
  }
  int32_t kind_at(std::size_t j) const { return j < raw_.size() ? raw_[j].type : -1; }
  int32_t next_kind() const { return kind_at(next_index(i_)); }
  bool is_last(std::size_t j) const { return j + 1 >= raw_.size(); }

  bool clause_start() const {
    return prev_ == ';' || prev_ == ':' || prev_ == THEN || prev_ == ELSE || prev_ == OTHERWISE;
  }

  void write(rx_node t) {
    if (t.type != ' ' && t.type != RX_NOLEX) {
      prev2_ = prev_;
      prev_ = t.type;
    }
    out_.push_back(std::move(t));
  }
  void write_as(const rx_node& t, int32_t kind) {
    rx_node c = t;
    c.type = kind;
    write(std::move(c));
  }
  void insert(int32_t kind, const rx_node& at, const char* value = nullptr) {
    rx_node t;
    t.type = kind;
    t.line = at.line;
    t.column = at.column;
    if (value) {
      t.value = value;
      t.has_value = true;
    }
    write(std::move(t));
  }
  // Copy the next word as it stands (keyword kind kept), with the blanks before it.
  void copy_next() {
    std::size_t j = next_index(i_);
    for (std::size_t b = i_ + 1; b < j; ++b)
      if (raw_[b].type == ' ' && !template_mode_ && !option_clause_) write(raw_[b]);
    if (j < raw_.size()) write(raw_[j]);
    i_ = j;
  }

  void apply_option(int32_t k) {
    rx_switches& sw = rx_st.sw;
    auto set = [](int& field, int unset, int value) {
      if (field == unset) field = value;
    };
    switch (k) {
      case UPPER: set(sw.case_mode, 3, 1); break;
      case LOWER: set(sw.case_mode, 3, 2); break;
      case MIXED: set(sw.case_mode, 3, 0); break;
      case SETENV: set(sw.setenv, 2, 0); break;
      case UNSETENV: set(sw.setenv, 2, 1); break;
      case LOAD: set(sw.load, 2, 0); break;
      case NOLOAD: set(sw.load, 2, 1); break;
      case GLOBALV: set(sw.globalv, 2, 0); break;
      case NOGLOBALV: set(sw.globalv, 2, 1); break;
      default: break;
    }
  }

  // THEN and ELSE swallow a ';' behind them, so that they can stand on lines of their own.
  void after_then_else() {
    cond_open_ = false;
    std::size_t j = next_index(i_);
    if (kind_at(j) == ';' && !is_last(j)) forced_nolex_[j] = true;
    do_header_ = next_kind() == DO;
  }

  void step() {
    const rx_node& t = raw_[i_];
    int32_t k = t.type;
    if (forced_nolex_[i_]) {
      write_as(t, RX_NOLEX);
      return;
    }
    if (k == ' ') {
      if (!template_mode_ && !option_clause_) write(t);
      return;
    }
    if (copy_rest_ && k != ';') {
      // Rest of a CALL ON / SIGNAL ON clause: copied as it stands; behind NAME every keyword is a name.
      if (after_name_ && rx_is_keyword_kind(k)) write_as(t, SYMBOL);
      else write(t);
      if (k == NAME) after_name_ = true;
      return;
    }
    if (forced_symbol_[i_]) {
      write_as(t, SYMBOL);
      return;
    }
    if (rx_is_keyword_kind(k)) {
      if (!keep_keyword(t)) write_as(t, SYMBOL);
      return;
    }
    switch (k) {
      case '(': open_paren(t); break;
      case ',': comma(t); break;
      case ':':
        write(t);
        if (next_kind() != ';') insert(';', t, ";");
        break;
      case ';': semicolon(t); break;
      default: write(t); break;
    }
  }

  void open_paren(const rx_node& t) {
    bool function = false;
    if (!template_mode_ && i_ > 0 && raw_[i_ - 1].type != ' ' && !out_.empty()) {
      rx_node& name = out_.back();
      if (name.type == SYMBOL) {
        name.type = FUNCTION;
        rx_fold_case(name.value, rx_st.sw.case_mode);
        function = true;
      } else if (name.type == STRING) {
        name.type = SFUNCTION;
        function = true;
      }
      if (function) prev_ = name.type;
    }
    write(t);
    if (function && next_kind() == ')') insert(VIDE, t);
  }

  void comma(const rx_node& t) {
    if (prev_ == '(' || prev_ == ',' || prev2_ == CALL) insert(VIDE, t);
    write(t);
    int32_t nk = next_kind();
    if (nk == ')' || nk == ';') insert(VIDE, t);
  }

  void semicolon(const rx_node& t) {
    template_mode_ = option_clause_ = source_seen_ = copy_rest_ = after_name_ = false;
    if (is_last(i_)) {
      write(t);
      return;
    }
    std::size_t j = next_index(i_);
    int32_t nk = kind_at(j);
    if ((nk == THEN || nk == ELSE) && !is_last(j)) {
      int32_t behind = kind_at(next_index(j));
      if (behind == ':' || behind == '=') write(t);
      else write_as(t, RX_NOLEX);
    } else if (prev_ == OTHERWISE) {
      write_as(t, RX_NOLEX);
    } else {
      write(t);
    }
    do_header_ = nk == DO;
  }

  // The table of keyword decisions: true keeps `t` a keyword (and may copy or put in tokens behind it).
  bool keep_keyword(const rx_node& t) {
    int32_t k = t.type;
    int32_t nk = next_kind();
    bool start = clause_start();
    bool instruction = start && !in_set_a(nk);  // the common test of clause keywords
    switch (k) {
      case ADDRESS:
        if (!instruction) return false;
        write(t);
        address_operand(t, nk);
        return true;
      case ARG:
      case PULL:
        if (start && nk != ':' && !in_set_b(nk)) {
          write(t);
          template_mode_ = source_seen_ = true;
          return true;
        }
        if (template_mode_ && (prev_ == PARSE || prev_ == UPPER)) {
          write(t);
          source_seen_ = true;
          return true;
        }
        return false;
      case END:
        if (!(start && nk != ':' && !in_set_b(nk))) return false;
        write(t);
        return true;
      case BY:
      case FOR:
      case TO:
        if (!(do_header_ && nk != '=' && !after_cond_)) return false;
        write(t);
        return true;
      case WHILE:
      case UNTIL: {
        bool keep = do_header_ && nk != '=';
        after_cond_ = true;
        if (keep) write(t);
        return keep;
      }
      case CALL:
        if (!(start && !in_set_b(nk) && nk != ':' && nk != ';' && nk != -1)) return false;
        write(t);
        if (nk == ON || nk == OFF) copy_rest_ = true, after_name_ = false;
        return true;
      case CD: case EXIT: case ITERATE: case LEAVE: case PUSH: case QUEUE: case RETURN:
      case SAY: case SAYN: case SAYR: case SAYX:
        if (!instruction) return false;
        write(t);
        return true;
      case DO:
      case WHEN:
        if (!instruction) return false;
        write(t);
        do_header_ = true;
        after_cond_ = false;
        if (k == WHEN) cond_open_ = true;
        return true;
      case DROP:
      case IF:
      case INTERPRET:
        if (!(instruction && nk != ';' && nk != -1)) return false;
        write(t);
        if (k == IF) cond_open_ = true;
        return true;
      case ELSE:
      case THEN:
        if (nk == ':' || prev_ == CALL || (k == THEN && !cond_open_)) return false;
        write(t);
        after_then_else();
        return true;
      case FOREVER:
        if (prev_ != DO) return false;
        write(t);
        return true;
      case IN:
        if (!(do_header_ && prev_ == SYMBOL)) return false;
        write(t);
        return true;
      case LINEIN: case SOURCE: case VAR: case VERSION:
        if (!(template_mode_ && !source_seen_)) return false;
        write(t);
        source_seen_ = true;
        return true;
      case LOWER:
      case UPPER:
        if (option_clause_) {
          apply_option(k);
        } else if (!((instruction && nk != ';' && nk != -1) || (k == UPPER && template_mode_))) {
          return false;
        }
        write(t);
        return true;
      case MIXED: case SETENV: case UNSETENV: case LOAD: case NOLOAD: case GLOBALV: case NOGLOBALV:
        if (!option_clause_) return false;
        apply_option(k);
        write(t);
        return true;
      case NOP:
        if (!(start && nk == ';')) return false;
        write(t);
        return true;
      case NUMERIC:
        if (!template_mode_ && !(start && (nk == DIGITS || nk == FORM || nk == FUZZ))) return false;
        write(t);
        if (nk == DIGITS || nk == FORM || nk == FUZZ) {
          copy_next();
          if (nk == FORM) {
            int32_t n2 = next_kind();
            if (n2 == SCIENTIFIC || n2 == ENGINEERING || n2 == VALUE) copy_next();
            else if (in_set_c(n2)) insert(VALUE, t, "VALUE");
          }
        }
        return true;
      case OPTION:
        if (!instruction) return false;
        write(t);
        option_clause_ = true;
        return true;
      case OTHERWISE:
        if (!(start && nk != ':' && prev_ != CALL)) return false;
        write(t);
        return true;
      case PARSE:
        if (!(start && is_parse_source(nk))) return false;
        write(t);
        template_mode_ = true;
        if (nk != VALUE) {
          copy_next();
          source_seen_ = nk != UPPER;
        }
        return true;
      case PROCEDURE:
        if (!(start && nk != ':' && !in_set_b(nk))) return false;
        write(t);
        if (nk == EXPOSE) copy_next();
        return true;
      case SELECT:
        if (!((prev_ == ';' && nk == ';') || prev_ == THEN || prev_ == ELSE)) return false;
        write(t);
        return true;
      case SIGNAL:
        if (!instruction) return false;
        write(t);
        if (in_set_c(nk)) {
          insert(VALUE, t, "VALUE");
        } else if (nk == ON || nk == OFF) {
          copy_rest_ = true;
          after_name_ = false;
        } else if (nk == VALUE) {
          copy_next();
        } else if (nk >= ADDRESS && nk <= IN) {
          forced_symbol_[next_index(i_)] = true;
        }
        return true;
      case TRACE:
        if (!instruction) return false;
        write(t);
        if (in_set_c(nk)) insert(VALUE, t, "VALUE");
        else if (nk == VALUE) copy_next();
        return true;
      case VALUE:
        if (!(template_mode_ && !source_seen_)) return false;
        write(t);
        template_mode_ = false;
        awaiting_with_ = source_seen_ = true;
        return true;
      case WITH:
        if (!(awaiting_with_ && nk != ':' && prev_ != CALL)) return false;
        write(t);
        awaiting_with_ = false;
        template_mode_ = true;
        return true;
      default:
        return false;  // DIGITS, FORM, NAME, ...: keywords only where a clause keyword copied them
    }
  }

  // ADDRESS: an operand in set C is an expression (VALUE put in); a word behind a blank names the environment.
  void address_operand(const rx_node& t, int32_t nk) {
    if (nk == VALUE) {
      copy_next();
      return;
    }
    if (in_set_c(nk)) {
      insert(VALUE, t, "VALUE");
      return;
    }
    std::size_t j = i_ + 2;
    if (kind_at(i_ + 1) != ' ' || j >= raw_.size()) return;
    int32_t k = raw_[j].type;
    if (k != SYMBOL && k != STRING && !rx_is_keyword_kind(k)) return;
    rx_node env = raw_[j];
    env.type = ENVIRON;
    rx_fold_case(env.value, 1);
    write(std::move(env));
    i_ = j;
    if (kind_at(i_ + 1) == ' ') ++i_;  // the blank behind the name is dropped
  }

  const rx_tokens& raw_;
  rx_tokens out_;
  std::vector<bool> forced_nolex_, forced_symbol_;
  std::size_t i_ = 0;
  int32_t prev_ = ';', prev2_ = ';';
  bool template_mode_ = false, awaiting_with_ = false, source_seen_ = false, cond_open_ = false;
  bool do_header_ = false, after_cond_ = false, option_clause_ = false, copy_rest_ = false, after_name_ = false;
};

bool is_operand_start(int32_t k) { return k == STRING || k == SYMBOL || k == FUNCTION || k == SFUNCTION; }

rx_node make_token(int32_t kind, const rx_node& at) {
  rx_node t;
  t.type = kind;
  t.line = at.line;
  t.column = at.column;
  return t;
}

}  // namespace

rx_tokens rx_lex2_keywords(const rx_tokens& raw) { return keyword_pass(raw).run(); }

/* lex2(2): abuttal becomes an explicit OP_CONC, except inside templates (from ARG, PARSE, PULL or WITH to the next
   ';' or VALUE). A blank between ')' and '(', or behind ']', becomes OP_CONC " " OP_CONC so that the grammar sees
   an operator there. */
rx_tokens rx_lex2_abuttal(const rx_tokens& in) {
  rx_tokens out;
  out.reserve(in.size() + in.size() / 4 + 16);
  bool active = true;
  std::size_t n = in.size();
  for (std::size_t i = 0; i < n; ++i) {
    const rx_node& t = in[i];
    int32_t k = t.type;
    out.push_back(t);
    if (k == ARG || k == PARSE || k == PULL || k == WITH) active = false;
    if (k == ';' || k == VALUE) active = true;
    if (!active || i + 1 >= n) continue;
    int32_t nk = in[i + 1].type;
    if (k == SYMBOL || k == STRING) {
      bool call_name = k == SYMBOL && i >= 2 && in[i - 1].type == ' ' && in[i - 2].type == CALL;
      if (is_operand_start(nk) && !call_name) out.push_back(make_token(OP_CONC, t));
    } else if (k == ')' || k == ']') {
      if (nk == '(' || is_operand_start(nk)) {
        out.push_back(make_token(OP_CONC, t));
      } else if (nk == ' ' && i + 2 < n) {
        int32_t k2 = in[i + 2].type;
        if (k2 == '(' || (k == ']' && is_operand_start(k2))) {
          out.push_back(make_token(OP_CONC, in[i + 1]));
          rx_node blank = make_token(STRING, in[i + 1]);
          blank.value = " ";
          blank.has_value = true;
          blank.quoted = 1;
          out.push_back(std::move(blank));
          out.push_back(make_token(OP_CONC, in[i + 1]));
          ++i;
        }
      }
    }
  }
  return out;
}

/* lex2(3): names are folded by the case mode and split at dots; a blank stays (as the blank concatenation) only
   between two operands, and becomes NOLEX everywhere else. */
void rx_lex2_names(rx_tokens& toks) {
  int case_mode = rx_st.sw.case_mode;
  bool backquote_open = false;
  std::size_t n = toks.size();
  for (std::size_t i = 0; i < n; ++i) {
    rx_node& t = toks[i];
    int32_t k = t.type;
    if (k == SYMBOL || k == FUNCTION) {
      rx_fold_case(t.value, case_mode);
      std::size_t dot = t.value.find('.');
      if (dot != std::string::npos) {
        t.stem_key = t.value.substr(0, dot) + "+";
        t.parts.clear();
        std::size_t start = 0;
        for (;;) {
          std::size_t d = t.value.find('.', start);
          t.parts.push_back(t.value.substr(start, d == std::string::npos ? std::string::npos : d - start));
          if (d == std::string::npos) break;
          start = d + 1;
        }
      }
    } else if (k == '`') {
      backquote_open = !backquote_open;
    } else if (k == ';') {
      backquote_open = false;
    } else if (k == ' ') {
      int32_t left = i > 0 ? toks[i - 1].type : -1;
      int32_t right = i + 1 < n ? toks[i + 1].type : -1;
      bool plain_byte = left >= 0 && left < 256 && std::strchr(" ,;:[]()=<>+-*/%|&\\^~", left) == nullptr &&
                        !(left == '`' && backquote_open) && left != 0;
      bool left_ok = left == SYMBOL || left == STRING || left == ')' || plain_byte;
      bool right_ok = is_operand_start(right) || right == '(';
      if (!(left_ok && right_ok)) t.type = RX_NOLEX;
    }
  }
}
