// The compact printed form of a program tree, for tests and `palom -dump-tree`.
//
// One statement a line, "<line>: <KIND> ...", its blocks indented by two blanks under it. Expressions are
// prefix forms "(fx_plus A 1)"; a function call is "(fx_func NAME args...)"; "<>" is an omitted argument or
// operand, "*" an open slice end. A quoted string prints in quotes (bytes outside ASCII as \xHH), a constant
// bare; a symbol with a dot shows its stem key and parts, "A.B.<A+:A,B,>"; an indirect name is "(NAME)".
// Templates print their tokens in brackets. Last come "labels:" (name@line) and "lines:" (the line table).
#include <algorithm>
#include <cstdio>
#include <variant>

#include "rexx/rx_tree.h"

namespace {

std::string quote(std::string_view s) {
  std::string out = "'";
  for (char ch : s) {
    auto c = static_cast<unsigned char>(ch);
    if (c == '\'') {
      out += "''";
    } else if (c < 0x20 || c >= 0x7F) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\x%02X", c);
      out += buf;
    } else {
      out += ch;
    }
  }
  return out + "'";
}

std::string leaf(const rx_node& n) {
  if (n.type == VIDE) return "<>";
  if (n.type == STRING) return n.quoted == 1 ? quote(n.value) : n.value;
  if (n.type == SYMBOL || n.type == ENVIRON) {
    std::string s = n.value;
    if (!n.stem_key.empty()) {
      s += "<" + n.stem_key + ":";
      for (std::size_t i = 0; i < n.parts.size(); ++i) s += (i ? "," : "") + n.parts[i];
      s += ">";
    }
    return n.quoted == 2 ? "(" + s + ")" : s;
  }
  if (n.type == ' ') return "' '";
  if (n.type > 32 && n.type < 127) return std::string(1, static_cast<char>(n.type));
  return rx_kind_name(n.type);
}

/* Expressions are printed with an explicit stack: a left-deep chain such as a+a+a+... from one long line can be far
   deeper than the native stack allows. */
void dump_expr(std::string& out, const rx_node* root) {
  using item = std::variant<const rx_node*, const char*>;
  std::vector<item> work{root};
  while (!work.empty()) {
    item it = work.back();
    work.pop_back();
    if (auto* text = std::get_if<const char*>(&it)) {
      out += *text;
      continue;
    }
    const rx_node* n = std::get<const rx_node*>(it);
    if (!n) {
      out += "<>";
      continue;
    }
    if (n == &rx_open_end) {
      out += "*";
      continue;
    }
    if (n->type != RX_EXPR || !n->expr) {
      out += leaf(*n);
      continue;
    }
    const rx_fx* fx = n->expr;
    out += "(";
    out += fx->name;
    std::vector<item> parts;
    if (fx->arity == 3) {
      parts.emplace_back(" ");
      parts.emplace_back(fx->name_node);
      for (const rx_node* a = fx->args; a; a = a->next) {
        parts.emplace_back(" ");
        parts.emplace_back(a);
      }
    } else {
      int count = fx->arity == 4 ? 3 : fx->arity;
      for (int i = 0; i < count; ++i) {
        parts.emplace_back(" ");
        parts.emplace_back(static_cast<const rx_node*>(fx->operand[i].node));
      }
    }
    parts.emplace_back(")");
    for (auto p = parts.rbegin(); p != parts.rend(); ++p) work.push_back(*p);
  }
}

std::string expr_text(const rx_node* n) {
  std::string s;
  dump_expr(s, n);
  return s;
}

std::string chain_text(const rx_node* n, const char* sep) {
  std::string s;
  for (; n; n = n->next) {
    if (!s.empty()) s += sep;
    s += n->type == RX_EXPR ? expr_text(n) : leaf(*n);
  }
  return s;
}

class tree_printer {
 public:
  explicit tree_printer(std::string& out) : out_(out) {}

  void list(const rx_cell* cell, int indent) {
    for (; cell && cell->stmt; cell = cell->next) stmt(*cell->stmt, indent);
  }

 private:
  void line(int indent, const std::string& text) {
    out_.append(static_cast<std::size_t>(indent) * 2, ' ');
    out_ += text;
    out_ += '\n';
  }
  static std::string opt(const char* word, const rx_node* e) { return e ? std::string(word) + " " + expr_text(e) : word; }

  void stmt(const rx_stmt& s, int indent) {
    std::string head = std::to_string(s.line + 1) + ": ";
    switch (s.kind) {
      case RX_COMMAND: line(indent, head + "CMD " + expr_text(s.expr)); break;
      case RX_ASSIGN: {
        std::string t = head + "ASSIGN " + leaf(*s.target);
        if (s.index1) {
          t += "[" + expr_text(s.index1);
          if (s.index2) t += ":" + expr_text(s.index2);
          t += "]";
        }
        line(indent, t + " =" + (s.expr ? " " + expr_text(s.expr) : ""));
        break;
      }
      case RX_IF:
        line(indent, head + "IF " + expr_text(s.expr));
        line(indent + 1, "THEN");
        list(s.body, indent + 2);
        if (s.other) {
          line(indent + 1, "ELSE");
          list(s.other, indent + 2);
        }
        break;
      case RX_DO: do_stmt(s, head, indent); break;
      case RX_SELECT:
        line(indent, head + "SELECT END@" + std::to_string(s.end_line + 1));
        for (const rx_when* w = s.whens; w; w = w->next) {
          line(indent + 1, std::to_string(w->line + 1) + ": WHEN " + expr_text(w->cond));
          list(w->body, indent + 2);
        }
        if (s.other) {
          line(indent + 1, "OTHERWISE");
          list(s.other, indent + 2);
        }
        break;
      case RX_LEAVE: line(indent, head + "LEAVE" + (s.has_name ? " " + s.name : "")); break;
      case RX_ITERATE: line(indent, head + "ITERATE" + (s.has_name ? " " + s.name : "")); break;
      case RX_LABEL: line(indent, head + "LABEL " + quote(s.name) + (s.block ? " (in block)" : "")); break;
      case RX_SIGNAL: signal_stmt(s, head, indent); break;
      case RX_CALL: line(indent, head + "CALL " + leaf(*s.target) + "(" + chain_text(s.chain, ",") + ")"); break;
      case RX_PROCEDURE:
        line(indent, head + "PROCEDURE" + (s.chain ? " EXPOSE " + chain_text(s.chain, " ") : ""));
        break;
      case RX_PARSE: parse_stmt(s, head, indent); break;
      case RX_ADDRESS: {
        std::string t = head + "ADDRESS";
        if (s.form == 1 && s.target->type == ENVIRON) t += " " + s.target->value + (s.expr ? " " + expr_text(s.expr) : "");
        else if (s.form == 1) t += " VALUE " + expr_text(s.target);
        line(indent, t);
        break;
      }
      case RX_DROP: line(indent, head + "DROP " + chain_text(s.chain, " ")); break;
      case RX_UPPER: line(indent, head + "UPPER " + chain_text(s.chain, " ")); break;
      case RX_LOWER: line(indent, head + "LOWER " + chain_text(s.chain, " ")); break;
      case RX_NUMERIC: {
        static const char* forms[] = {"DIGITS", "FORM SCIENTIFIC", "FORM ENGINEERING", "FORM VALUE", "FUZZ"};
        line(indent, head + opt((std::string("NUMERIC ") + forms[s.form]).c_str(), s.expr));
        break;
      }
      case RX_TRACE:
        if (!s.target) line(indent, head + "TRACE");
        else line(indent, head + "TRACE " + (s.upper ? "VALUE " + expr_text(s.target) : leaf(*s.target)));
        break;
      default: {
        static const struct {
          int32_t kind;
          const char* word;
        } simple[] = {{RX_SAY, "SAY"},   {RX_SAYN, "SAYN"},     {RX_SAYX, "SAYX"}, {RX_SAYR, "SAYR"},
                      {RX_EXIT, "EXIT"}, {RX_RETURN, "RETURN"}, {RX_PUSH, "PUSH"}, {RX_QUEUE, "QUEUE"},
                      {RX_CD, "CD"},     {RX_INTERPRET, "INTERPRET"}};
        for (const auto& row : simple)
          if (row.kind == s.kind) return line(indent, head + opt(row.word, s.expr));
        line(indent, head + "KIND " + std::to_string(s.kind));
      }
    }
  }

  void do_stmt(const rx_stmt& s, const std::string& head, int indent) {
    std::string t = head + "DO";
    switch (s.form) {
      case RX_DO_COUNT: t += " COUNT " + expr_text(s.expr); break;
      case RX_DO_FOREVER: t += " FOREVER"; break;
      case RX_DO_IN: t += " " + leaf(*s.target) + " IN " + expr_text(s.expr); break;
      case RX_DO_CONTROLLED: {
        t += " " + leaf(*s.target) + " = " + expr_text(s.expr);
        for (int i = 0; i < s.order_count; ++i) {
          int which = s.order[static_cast<std::size_t>(i)];
          t += which == 1 ? " TO " + expr_text(s.to) : which == 2 ? " BY " + expr_text(s.by) : " FOR " + expr_text(s.for_);
        }
        break;
      }
      default: break;
    }
    if (s.test_form == RX_TEST_WHILE) t += " WHILE " + expr_text(s.test);
    if (s.test_form == RX_TEST_UNTIL) t += " UNTIL " + expr_text(s.test);
    line(indent, t + " END@" + std::to_string(s.end_line + 1));
    list(s.body, indent + 1);
  }

  void signal_stmt(const rx_stmt& s, const std::string& head, int indent) {
    switch (s.form) {
      case RX_SIG_STRING:
      case RX_SIG_SYMBOL: line(indent, head + "SIGNAL " + leaf(*s.target)); break;
      case RX_SIG_VALUE: line(indent, head + "SIGNAL VALUE " + expr_text(s.target)); break;
      default: {
        std::string t = head + (s.form == RX_CALL_ONOFF ? "CALL " : "SIGNAL ") + rx_kind_name(s.target->type) + " " +
                        rx_kind_name(s.operand2->type);
        if (s.name_node) t += " NAME " + s.name_node->value;
        line(indent, t);
      }
    }
  }

  void parse_stmt(const rx_stmt& s, const std::string& head, int indent) {
    static const char* sources[] = {"ARG", "LINEIN", "PULL", "SOURCE", "VALUE", "VAR", "VERSION", "NUMERIC"};
    std::string t = head + "PARSE " + (s.upper ? "UPPER " : "") + sources[s.form];
    if (s.form == RX_SRC_VALUE) t += " " + expr_text(s.expr) + " WITH";
    if (s.form == RX_SRC_VAR) t += " " + leaf(*s.target);
    line(indent, t + " [" + chain_text(s.chain, " ") + "]");
  }

  std::string& out_;
};

}  // namespace

std::string rx_dump_expr(const rx_node* node) { return expr_text(node); }

std::string rx_dump_tree(const rx_program& prog) {
  std::string out;
  tree_printer(out).list(prog.head, 0);
  std::vector<std::pair<int32_t, std::string>> labels;
  for (const auto& bucket : prog.labels.buckets)
    for (const rx_label& l : bucket) labels.emplace_back(l.cell.stmt->line, l.name);
  std::sort(labels.begin(), labels.end());
  if (!labels.empty()) {
    out += "labels:";
    for (const auto& [line, name] : labels) out += " " + quote(name) + "@" + std::to_string(line + 1);
    out += '\n';
  }
  out += "lines:";
  for (int32_t l : prog.line_table) out += " " + std::to_string(l + 1);
  out += '\n';
  return out;
}
