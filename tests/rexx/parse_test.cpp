// Parser tests: tree records, label and line tables, error numbers and positions, reports, hostile input.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "rexx/paloma.h"
#include "rexx/rx_parse.h"
#include "rexx/rx_state.h"

namespace {

// Lex and parse `text` into a fresh program; `error` receives the parse result.
std::unique_ptr<rx_program> parse(const std::string& text, rx_parse_result* error = nullptr, bool outermost = true) {
  rx_init();
  auto prog = std::make_unique<rx_program>();
  prog->source = text;
  rx_lex_result lexed = rx_lex(prog->source, 0, false);
  EXPECT_TRUE(lexed.ok) << text;
  rx_settle_switches();
  prog->tokens = std::move(lexed.tokens);
  rx_parse_result r = rx_parse(*prog, outermost);
  if (error) *error = r;
  else EXPECT_EQ(r.error, 0) << text << "\n" << r.detail;
  return prog;
}

const rx_stmt& first(const rx_program& p) { return *p.head->stmt; }

rx_parse_result parse_error(const std::string& text) {
  rx_parse_result r;
  parse(text, &r);
  EXPECT_NE(r.error, 0) << text;
  return r;
}

}  // namespace

TEST(RexxErrors, TableAndReportTexts) {
  EXPECT_STREQ(rx_error_text(1), "Unmatched Quote.");
  EXPECT_STREQ(rx_error_text(55), "Syntax error.");
  EXPECT_STREQ(rx_error_text(98), "Invalid SIGNAL name.");
  EXPECT_STREQ(rx_error_text(3), "");
  EXPECT_STREQ(rx_error_text(0), "");
  EXPECT_STREQ(rx_error_text(99), "");
  EXPECT_STREQ(rx_error_report_text(99), "Unknown error.");
  EXPECT_STREQ(paloma_error_text(76), "Invalid compiled file.");
  // Every used row ends with a full stop; rows without text are the unused numbers.
  int used = 0;
  for (int n = 1; n <= rx_error_max; ++n) {
    std::string t = rx_error_text(n);
    if (t.empty()) continue;
    ++used;
    EXPECT_EQ(t.back(), '.') << n;
  }
  EXPECT_EQ(used, 72);
}

TEST(RexxErrors, ReportForms) {
  rx_report_place p;
  p.number = 55;
  p.line = 1;
  p.column = 6;
  p.source = "say 1\nx = 1 +\r\nsay 2";
  p.file = "t.plm";
  EXPECT_EQ(rx_format_report(p),
            "\n    2 +++ x = 1 +\n                ^\nError 55 on line 2 in file \"t.plm\": Syntax error.\n");
  // The column is kept within the line; a detail follows after an empty line.
  p.column = 40;
  p.detail = "\"TO\" has been used twice.";
  p.number = 27;
  EXPECT_EQ(rx_format_report(p), "\n    2 +++ x = 1 +\n                 ^\nError 27 on line 2 in file \"t.plm\": "
                                 "Invalid DO syntax.\n\n\"TO\" has been used twice.\n\n");
  // Lines of the prefix file are numbered by themselves; the program's lines less the prefix.
  p.detail = {};
  p.number = 200;
  p.column = 0;
  p.prefix_lines = 1;
  EXPECT_EQ(rx_format_report(p),
            "\n    1 +++ x = 1 +\n          ^\nError 200 on line 1 in file \"t.plm\": Unknown error.\n");
  p.line = 0;
  EXPECT_EQ(rx_format_report(p), "\n    1 (.palomrc) +++ say 1\n                     ^\nError 200 on line 1 in file "
                                 "\"t.plm\" (while processing \".palomrc\"): Unknown error.\n");
  p.interpreted = true;
  p.number = 55;
  EXPECT_EQ(rx_format_report(p), "\n    *interpreted* say 1\n                  ^\nError 55: Syntax error.\n");
}

TEST(RexxParseTree, StatementRecords) {
  auto p = parse("do i = 1 for 5 to 3 while i < 9\n  x[2:] = 'a'\nend i");
  const rx_stmt& d = first(*p);
  EXPECT_EQ(d.kind, RX_DO);
  EXPECT_EQ(d.form, RX_DO_CONTROLLED);
  EXPECT_EQ(d.order_count, 2);
  EXPECT_EQ(d.order[0], 3);
  EXPECT_EQ(d.order[1], 1);
  EXPECT_EQ(d.test_form, RX_TEST_WHILE);
  EXPECT_EQ(d.end_line, 2);
  EXPECT_EQ(d.target->value, "I");
  const rx_stmt& a = *d.body->stmt;
  EXPECT_EQ(a.kind, RX_ASSIGN);
  EXPECT_EQ(a.line, 1);
  EXPECT_EQ(a.index2, &rx_open_end);
  EXPECT_EQ(d.body->next->stmt, nullptr) << "every list ends in an empty cell";
  EXPECT_EQ(p->head->next->stmt, nullptr);

  p = parse("select\nwhen a then nop\nwhen b then say 1\notherwise nop\nend");
  const rx_stmt& s = first(*p);
  EXPECT_EQ(s.kind, RX_SELECT);
  EXPECT_EQ(s.end_line, 4);
  ASSERT_NE(s.whens, nullptr);
  ASSERT_NE(s.whens->next, nullptr);
  EXPECT_EQ(s.whens->next->line, 2);
  EXPECT_EQ(s.whens->body->stmt, nullptr) << "NOP makes no statement";
  EXPECT_EQ(s.whens->next->next, nullptr);
  ASSERT_NE(s.other, nullptr);
  EXPECT_EQ(s.other->stmt, nullptr);

  p = parse("parse upper var v a 'x' b; say 1");
  const rx_stmt& ps = first(*p);
  EXPECT_EQ(ps.kind, RX_PARSE);
  EXPECT_EQ(ps.upper, 1);
  EXPECT_EQ(ps.form, RX_SRC_VAR);
  EXPECT_EQ(ps.target->value, "V");
  int n = 0;
  for (const rx_node* t = ps.chain; t; t = t->next) ++n;
  EXPECT_EQ(n, 3) << "the template stops before the ';'";
}

TEST(RexxParseTree, ExpressionNodesAndChains) {
  auto p = parse("x = f(a, , 'lit') || 'b'");
  const rx_node* e = first(*p).expr;
  ASSERT_EQ(e->type, RX_EXPR);
  EXPECT_EQ(e->expr->op, rx_op::fx_conc);
  EXPECT_STREQ(e->expr->name, "fx_conc");
  EXPECT_EQ(e->expr->operand[1].kind, STRING);
  EXPECT_EQ(e->expr->operand[1].text, "b");
  const rx_node* call = e->expr->operand[0].node;
  EXPECT_EQ(call->expr->arity, 3);
  EXPECT_EQ(call->value, "F");
  EXPECT_EQ(call->expr->name_node->type, SYMBOL) << "a FUNCTION name is retyped to SYMBOL";
  const rx_node* arg = call->expr->args;
  ASSERT_NE(arg, nullptr);
  EXPECT_EQ(arg->value, "A");
  EXPECT_EQ(arg->next->type, VIDE);
  EXPECT_EQ(arg->next->next->value, "lit");
  EXPECT_EQ(arg->next->next->next, nullptr);

  p = parse("y = 'sub'(1)");
  EXPECT_EQ(first(*p).expr->expr->name_node->type, STRING) << "an SFUNCTION name is retyped to STRING";

  p = parse("drop a (b) c");
  const rx_node* names = first(*p).chain;
  EXPECT_EQ(names->quoted, 0);
  EXPECT_EQ(names->next->quoted, 2) << "(name) is an indirect list";
  EXPECT_EQ(names->next->next->value, "C");

  p = parse("call 'ext' 1, 2");
  EXPECT_EQ(first(*p).target->type, STRING);
  p = parse("call f(1)");
  EXPECT_EQ(first(*p).target->type, SYMBOL);
  EXPECT_EQ(first(*p).target->value, "F");
}

TEST(RexxParseTree, LabelsAndLineTable) {
  auto p = parse("a: say 1\nA: nop\n'a':\ndo\n  in: nop\nend\nb: ;");
  const rx_label* a = p->labels.find("A");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->cell.stmt->line, 0) << "the first label of a name wins";
  ASSERT_NE(a->cell.next->stmt, nullptr);
  EXPECT_EQ(a->cell.next->stmt->kind, RX_SAY) << "control continues behind the label";
  EXPECT_NE(p->labels.find("a"), nullptr) << "a string label keeps its case";
  const rx_label* in = p->labels.find("IN");
  ASSERT_NE(in, nullptr);
  EXPECT_NE(in->cell.stmt->block, nullptr);
  EXPECT_EQ(p->labels.find("B")->cell.stmt->block, nullptr);
  EXPECT_EQ(p->line_table, (std::vector<int32_t>{0, 0, 1, 1, 2, 4, 4, 3, 6}));
  // An INTERPRET-style parse leaves the line table alone.
  rx_parse_result r;
  p = parse("say 1; nop", &r, false);
  EXPECT_EQ(r.error, 0);
  EXPECT_TRUE(p->line_table.empty());
}

TEST(RexxParseTree, LabelHash) {
  EXPECT_EQ(rx_label_hash("A"), (65 * 31) & 127);
  EXPECT_EQ(rx_label_hash("AB"), (((65 * 31 + 66) & 127) * 31) & 127);
  for (const char* name : {"X", "LOOP", "a.b", "\xE9t\xE9"}) {
    int h = rx_label_hash(name);
    EXPECT_GE(h, 0);
    EXPECT_LT(h, 128);
  }
}

TEST(RexxParseErrors, NumbersPositionsAndDetails) {
  struct row {
    const char* text;
    int number;
    int32_t line, column;
    const char* detail;
  } rows[] = {
      {"x = 1 +", 55, 0, 7, ""},
      {"if a = then nop", 50, 0, 7, ""},
      {"if a b\nnop", 18, 0, 6, ""},
      {"do i = 1 to 3 to 4; end", 27, 0, 18, "\"TO\" has been used twice."},
      {"do i = 1 for 3 for 4; end", 27, 0, 20, "\"FOR\" has been used twice."},
      {"do 3; end i", 27, 0, 10, "A \"END symbol\" clause may only be used with a controlled repetitive loop"},
      {"do i = 1 to 3; end j", 27, 0, 19, "Only the controlling variable I can be specified."},
      {"do i = 1 to 3 while a until b; end", 55, 0, 22, ""},
      {"leave a b", 28, 0, 9, "LEAVE or ITERATE may only be followed by a SYMBOL."},
      {"select; end", 7, 0, 8, ""},
      {"select; otherwise; end", 53, 0, 8, ""},
      {"select; nop; end", 52, 0, 8, ""},
      {"drop 1", 20, 0, 5, ""},
      {"numeric digits 3 +", 25, 0, 18, ""},
      {"numeric form bad", 25, 0, 13, ""},
      {"if a then do\nsay 1", 64, 0, 0, ""},
      {"nop\nselect\nwhen a then do", 65, 1, 0, ""},
      {"x = (((1))", 55, 0, 10, ""},
  };
  for (const row& r : rows) {
    rx_parse_result e = parse_error(r.text);
    EXPECT_EQ(e.error, r.number) << r.text;
    EXPECT_EQ(e.line, r.line) << r.text;
    EXPECT_EQ(e.column, r.column) << r.text;
    EXPECT_EQ(e.detail, r.detail) << r.text;
    EXPECT_EQ(rx_st.error.number, r.number) << r.text;
  }
}

TEST(RexxParseErrors, AcceptedEdgeForms) {
  for (const char* ok : {";", "if a then; else b", "a =", "a[2:] = 'x'", "leave 'x'", "a.b:", "'x y':",
                         "do i = 1 to 3 by 2 for 5; end", "do i = 1 for 5 to 3; end i", "a[1] == 2",
                         "x = -2 ** 2", "if a then", "call f (1, 2)", "signal on syntax name x",
                         "trace ?r; trace 'i'; trace value 'o'; trace o; trace"}) {
    rx_parse_result r;
    parse(ok, &r);
    EXPECT_EQ(r.error, 0) << ok << " -> " << r.error;
  }
}

TEST(RexxParseHostile, DeepNestingIsBounded) {
  std::string deep = "x = " + std::string(100000, '(') + "1" + std::string(100000, ')');
  rx_parse_result r = parse_error(deep);
  EXPECT_EQ(r.error, 61);
  std::string blocks;
  for (int i = 0; i < 20000; ++i) blocks += "do;";
  EXPECT_EQ(parse_error(blocks).error, 61);
  EXPECT_EQ(parse_error("x = " + std::string(50000, '-') + "1").error, 61);
  std::string ok = "x = " + std::string(900, '(') + "1" + std::string(900, ')');
  rx_parse_result fine;
  parse(ok, &fine);
  EXPECT_EQ(fine.error, 0) << "nesting below the limit parses";
}

TEST(RexxParseHostile, LongLinesAndJunk) {
  // A 1 MB line: a long left-leaning chain, and its printed form, which must not recurse per operator.
  std::string chain = "x = a";
  while (chain.size() < 1000000) chain += "+a";
  paloma_load big = paloma_load_string(chain, "big");
  ASSERT_EQ(big.rc, 0);
  std::string dump = paloma_dump_tree(*big.program);
  EXPECT_GT(dump.size(), 1000000u);
  EXPECT_EQ(dump.substr(0, 31), "1: ASSIGN X = (fx_plus (fx_plus");

  // Arbitrary bytes: always a result and a message, never a crash.
  std::mt19937 rng(12345);
  const std::string alphabet = "do end if then else select when otherwise say call ( ) [ ] , ; : = + - * / \\ | & "
                               "' \" x b a.b 1 { } \n \t /* */ ` \xAD \xBD";
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    int len = static_cast<int>(rng() % 40);
    for (int i = 0; i < len; ++i) {
      if (round % 3 == 0) text += static_cast<char>(rng() % 256);
      else text += alphabet[rng() % alphabet.size()];
    }
    paloma_load r = paloma_load_string(text, "junk");
    if (r.rc != 0) {
      EXPECT_FALSE(r.message.empty()) << text;
    } else {
      EXPECT_FALSE(paloma_dump_tree(*r.program).empty());
    }
  }
}

TEST(RexxPaloma, LoadFileOutcomes) {
  paloma_init();
  paloma_load missing = paloma_load_file("/nonexistent/dir/prog.rexx");
  EXPECT_EQ(missing.rc, -1);
  EXPECT_EQ(missing.message, "palom: unable to open file \"/nonexistent/dir/prog.rexx\"\n");
  paloma_load dir = paloma_load_file("/");
  EXPECT_EQ(dir.rc, -1);
  EXPECT_EQ(dir.message, "palom: unable to read file \"/\"\n");
  paloma_load lexbad = paloma_load_string("say 'x", "q.rexx");
  EXPECT_EQ(lexbad.rc, -2);
  EXPECT_EQ(lexbad.error, 1);
  EXPECT_EQ(lexbad.message, "\n    1 +++ say 'x\n              ^\nError 1 on line 1 in file \"q.rexx\": Unmatched Quote.\n");
  paloma_load compiled = paloma_load_string("#!/bin/palom\n@ccpl\n", "c.plm");
  EXPECT_EQ(compiled.rc, -2);
  EXPECT_NE(compiled.message.find("not supported yet"), std::string::npos);
  paloma_load good = paloma_load_string("say 1", "g.rexx");
  ASSERT_EQ(good.rc, 0);
  EXPECT_EQ(paloma_dump_tokens(*good.program).substr(0, 15), "lex: type = SAY");
}
