// Lexer tests: raw scanning, keyword decisions, abuttal, folding and splitting, string conversions, scan errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rexx/rx_lex.h"
#include "rexx/rx_state.h"

namespace {

// Kinds of the finished tokens, NOLEX left out.
std::vector<int32_t> kinds(const std::string& text) {
  rx_init();
  rx_lex_result r = rx_lex(text, 0, false);
  EXPECT_TRUE(r.ok) << text;
  std::vector<int32_t> out;
  for (const rx_node& t : r.tokens)
    if (t.type != RX_NOLEX) out.push_back(t.type);
  return out;
}

rx_tokens raw(const std::string& text) {
  rx_lex_result r;
  EXPECT_TRUE(rx_lex_scan(text, 0, r)) << text;
  return r.tokens;
}

std::vector<rx_node> finished(const std::string& text) {
  rx_init();
  rx_lex_result r = rx_lex(text, 0, false);
  EXPECT_TRUE(r.ok) << text;
  std::vector<rx_node> out;
  for (const rx_node& t : r.tokens)
    if (t.type != RX_NOLEX) out.push_back(t);
  return out;
}

rx_lex_result failure(const std::string& text) {
  rx_init();
  rx_lex_result r = rx_lex(text, 0, false);
  EXPECT_FALSE(r.ok) << text;
  EXPECT_TRUE(r.tokens.empty());
  return r;
}

using K = std::vector<int32_t>;

}  // namespace

TEST(RexxLexScan, EveryKeywordWordScansToItsKind) {
  struct row {
    const char* word;
    int32_t kind;
  } rows[] = {{"address", ADDRESS}, {"Arg", ARG},         {"EXTERNAL", LINEIN}, {"linein", LINEIN},
              {"template", TEMPLATE}, {"noglobalv", NOGLOBALV}, {"globalv", GLOBALV}, {"sayr", SAYR},
              {"otherwise", OTHERWISE}, {"notready", NOTREADY}, {"cd", CD},        {"in", IN}};
  for (const row& r : rows) {
    rx_tokens t = raw(r.word);
    ASSERT_EQ(t.size(), 2u) << r.word;
    EXPECT_EQ(t[0].type, r.kind) << r.word;
    EXPECT_EQ(t[0].value, r.word) << "a keyword keeps its spelling";
  }
  // Kinds that no program can spell are not in the word table.
  for (const char* w : {"environ", "function", "sfunction", "symbol"}) EXPECT_EQ(raw(w)[0].type, SYMBOL) << w;
}

TEST(RexxLexScan, OperatorTableLongestSpellingWins) {
  struct row {
    const char* text;
    int32_t kind;
  } rows[] = {{"a \\== b", OP_NNEQ}, {"a >>= b", OP_SSUP_EQ}, {"a /<< b", OP_SSUP_EQ}, {"a ^>> b", OP_IINF_EQ},
              {"a <> b", OP_NEQ},    {"a >< b", OP_NEQ},      {"a ** b", OP_EXP},       {"a // b", OP_REMAIN},
              {"a || b", OP_CONC},   {"a && b", OP_XOR},      {"a = = b", OP_EEQ},      {"a > = b", OP_SUP_EQ},
              {"a ~< b", OP_SUP_EQ}, {"a \\> b", OP_INF_EQ},  {"a \xAD b", OP_EQIC},    {"a ~\xAD b", OP_NEQIC},
              {"a \xBD b", OP_RHO}};
  for (const row& r : rows) {
    rx_tokens t = raw(r.text);
    ASSERT_GE(t.size(), 4u) << r.text;
    EXPECT_EQ(t[2].type, r.kind) << r.text;
    EXPECT_FALSE(t[2].has_value) << r.text;
  }
  // Bytes that are no spelling of their own stay single-character tokens.
  for (const char* op : {"=", "<", ">", "/", "*", "|", "&"}) {
    rx_tokens t = raw(std::string("a ") + op + " b");
    EXPECT_EQ(t[2].type, op[0]) << op;
  }
  // `\` alone is the negation; `=<` is no spelling, so it is '=' then '<'.
  EXPECT_EQ(raw("\\a")[0].type, OP_NOT);
  rx_tokens t = raw("a =< b");
  EXPECT_EQ(t[2].type, '=');
  EXPECT_EQ(t[3].type, '<');
}

TEST(RexxLexScan, BlanksCommentsAndClauseEnds) {
  // A run of blanks is one token; none behind an operator; none at the start of a clause.
  EXPECT_EQ(raw("   a    b").size(), 4u);
  rx_tokens t = raw("a +   b");
  ASSERT_EQ(t.size(), 5u);
  EXPECT_EQ(t[2].type, '+');
  EXPECT_EQ(t[3].type, SYMBOL);
  // Comments nest, span lines, and make no token.
  t = raw("a/* x /* y */ z\n */b");
  ASSERT_EQ(t.size(), 3u);
  EXPECT_EQ(t[1].type, SYMBOL);
  EXPECT_EQ(t[1].line, 1);
  // Line feeds give one ';' per clause; explicit ';' is not doubled; a text always ends with ';'.
  EXPECT_EQ(raw("a\n\n;;\nb").size(), 4u);
  EXPECT_EQ(raw("a").back().type, ';');
  EXPECT_TRUE(raw("").empty());
  // Carriage returns and 0x1A are skipped outside strings; '#' at a clause start comments out the line.
  EXPECT_EQ(raw("a\r\n\x1a").size(), 2u);
  t = raw("#!/usr/bin/palom\nsay 1");
  EXPECT_EQ(t[0].type, SAY);
  EXPECT_EQ(t[0].line, 1);
}

TEST(RexxLexScan, WordsNumbersAndPositions) {
  rx_tokens t = raw("x = 1e+5 a1e+5 .5 .a");
  EXPECT_EQ(t[3].type, STRING);
  EXPECT_EQ(t[3].value, "1e+5");
  EXPECT_EQ(t[3].quoted, 0);
  EXPECT_EQ(t[5].value, "a1e");
  EXPECT_EQ(t[6].type, '+');
  EXPECT_EQ(t[9].value, ".5");
  EXPECT_EQ(t[9].type, STRING);
  EXPECT_EQ(t[11].type, SYMBOL);
  // Lines and columns count from 0 and continue from the line the caller gives.
  rx_lex_result r;
  ASSERT_TRUE(rx_lex_scan("say 1\n  x = 'q'", 10, r));
  EXPECT_EQ(r.tokens[0].line, 10);
  EXPECT_EQ(r.tokens[0].column, 0);
  EXPECT_EQ(r.tokens[3].type, ';');
  EXPECT_EQ(r.tokens[3].column, 5);
  EXPECT_EQ(r.tokens[4].line, 11);
  EXPECT_EQ(r.tokens[4].column, 2);
  EXPECT_EQ(r.tokens[7].column, 6) << "no blank token behind an operator";
  EXPECT_EQ(r.last_line, 11);
}

TEST(RexxLexScan, StringsDoubledQuotesHexAndBinary) {
  rx_tokens t = raw("s = 'it''s' \"a\"\"b\" 'ab'x 'a b'x 'abc'X '1 11110000'b 'abc'xyz");
  EXPECT_EQ(t[3].value, "it's");
  EXPECT_EQ(t[3].quoted, 1);
  EXPECT_EQ(t[5].value, "a\"b");
  EXPECT_EQ(t[7].value, "\xAB");
  EXPECT_EQ(t[9].value, "\xAB");
  EXPECT_EQ(t[11].value, std::string("\x0A\xBC"));
  EXPECT_EQ(t[13].value, std::string("\x01\xF0"));
  EXPECT_EQ(t[15].value, "abc") << "x followed by a symbol character is no hex suffix";
  EXPECT_EQ(t[16].value, "xyz");
}

TEST(RexxLexScan, ConversionsFromTheRight) {
  std::string out;
  EXPECT_TRUE(rx_hex_to_bytes("", out));
  EXPECT_EQ(out, "");
  EXPECT_TRUE(rx_hex_to_bytes("4142 43", out));
  EXPECT_EQ(out, "ABC");
  EXPECT_TRUE(rx_hex_to_bytes("f", out, 'F'));
  EXPECT_EQ(out, "\xFF") << "the functions' form pads with F";
  EXPECT_TRUE(rx_hex_to_bytes("1 23", out));
  EXPECT_EQ(out, std::string("\x01\x23"));
  for (const char* bad : {" ab", "ab ", "a b c", "ab c", "g0", "0x1"}) EXPECT_FALSE(rx_hex_to_bytes(bad, out)) << bad;
  EXPECT_TRUE(rx_bin_to_bytes("0100 0001", out));
  EXPECT_EQ(out, "A");
  EXPECT_TRUE(rx_bin_to_bytes("1", out));
  EXPECT_EQ(out, "\x01");
  EXPECT_TRUE(rx_bin_to_bytes("101 01000001", out));
  EXPECT_EQ(out, std::string("\x05\x41"));
  for (const char* bad : {"1111 0000 1", " 1", "1 ", "102", "1 111"}) EXPECT_FALSE(rx_bin_to_bytes(bad, out)) << bad;
}

TEST(RexxLexScan, ScanErrorsAndTheirPositions) {
  struct row {
    const char* text;
    int number, line, column;
  } rows[] = {{"say 'abc", 1, 0, 4},          {"x\n  y = \"a\nb\"", 2, 1, 6}, {"a\n /* /* */", 6, 1, 0},
              {"x = ' ab'x", 15, 0, 4},       {"x = '12'b", 67, 0, 4},       {"  3 = 4", 31, 0, 2},
              {"x\n.5= 1", 31, 1, 0}};
  for (const row& r : rows) {
    rx_lex_result res = failure(r.text);
    EXPECT_EQ(res.error, r.number) << r.text;
    EXPECT_EQ(res.error_line, r.line) << r.text;
    EXPECT_EQ(res.error_column, r.column) << r.text;
    EXPECT_EQ(rx_st.error.number, r.number);
  }
  // A constant not at the start of a clause may be compared.
  EXPECT_EQ(kinds("say 3 = 4"), (K{SAY, STRING, '=', STRING, ';'}));
}

TEST(RexxLexScan, CommaContinuesOnlyBeforeALineFeed) {
  EXPECT_EQ(kinds("x = 1 ,\n + 2"), (K{SYMBOL, '=', STRING, '+', STRING, ';'}));
  EXPECT_EQ(kinds("x = 1 , /* c */\n + 2"), (K{SYMBOL, '=', STRING, '+', STRING, ';'}));
  EXPECT_EQ(kinds("x = 1 ,\t\n + 2"), (K{SYMBOL, '=', STRING, ',', VIDE, ';', '+', STRING, ';'}));
  rx_lex_result r;
  ASSERT_TRUE(rx_lex_scan("a ,\nb", 0, r));
  EXPECT_EQ(r.tokens[2].line, 1) << "the continued line is counted";
}

TEST(RexxLexKeywords, WordsDecidedByTheirPlace) {
  EXPECT_EQ(kinds("do = 1"), (K{SYMBOL, '=', STRING, ';'}));
  EXPECT_EQ(kinds("if = 2"), (K{SYMBOL, '=', STRING, ';'}));
  EXPECT_EQ(kinds("say == 3"), (K{SYMBOL, OP_EEQ, STRING, ';'}));
  EXPECT_EQ(kinds("end: nop"), (K{SYMBOL, ':', ';', NOP, ';'}));
  EXPECT_EQ(kinds("say -1"), (K{SAY, '-', STRING, ';'}));
  EXPECT_EQ(kinds("x = 5 + say"), (K{SYMBOL, '=', STRING, '+', SYMBOL, ';'}));
  EXPECT_EQ(kinds("nop 1"), (K{SYMBOL, ' ', STRING, ';'}));
  EXPECT_EQ(kinds("then = 1"), (K{SYMBOL, '=', STRING, ';'}));
  EXPECT_EQ(kinds("call else"), (K{CALL, SYMBOL, ';'}));
  EXPECT_EQ(kinds("x = to by for"), (K{SYMBOL, '=', SYMBOL, ' ', SYMBOL, ' ', SYMBOL, ';'}));
  EXPECT_EQ(kinds("do i = 1 to 3 by 1 for 2"), (K{DO, SYMBOL, '=', STRING, TO, STRING, BY, STRING, FOR, STRING, ';'}));
  EXPECT_EQ(kinds("do forever"), (K{DO, FOREVER, ';'}));
  EXPECT_EQ(kinds("do w in x"), (K{DO, SYMBOL, IN, SYMBOL, ';'}));
  EXPECT_EQ(kinds("select\notherwise\nselect"), (K{SELECT, ';', OTHERWISE, SYMBOL, ';'}));
}

TEST(RexxLexKeywords, ThenAndElseOnLinesOfTheirOwn) {
  K one_line = kinds("if a then b; else c");
  EXPECT_EQ(one_line, (K{IF, SYMBOL, THEN, SYMBOL, ELSE, SYMBOL, ';'}));
  EXPECT_EQ(kinds("if a\nthen\nb\nelse\nc"), one_line);
  EXPECT_EQ(kinds("if a then; else b"), (K{IF, SYMBOL, THEN, ELSE, SYMBOL, ';'}));
  // A THEN or ELSE that is a label or a variable keeps the ';' in front of it.
  EXPECT_EQ(kinds("x\nelse = 1"), (K{SYMBOL, ';', ELSE, '=', STRING, ';'}));
  // THEN is a keyword only while a condition is open.
  EXPECT_EQ(kinds("say then"), (K{SAY, SYMBOL, ';'}));
}

TEST(RexxLexKeywords, ClauseKeywordsCopyAndInsert) {
  EXPECT_EQ(kinds("address sh 'ls'"), (K{ADDRESS, ENVIRON, STRING, ';'}));
  std::vector<rx_node> t = finished("address sh");
  EXPECT_EQ(t[1].value, "SH");
  EXPECT_EQ(kinds("address (e)"), (K{ADDRESS, VALUE, '(', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("address value e"), (K{ADDRESS, VALUE, SYMBOL, ';'}));
  EXPECT_EQ(kinds("trace -1"), (K{TRACE, VALUE, '-', STRING, ';'}));
  EXPECT_EQ(kinds("signal end"), (K{SIGNAL, SYMBOL, ';'}));
  EXPECT_EQ(kinds("signal on error name do"), (K{SIGNAL, ON, ERROR, NAME, SYMBOL, ';'}));
  EXPECT_EQ(kinds("call on halt"), (K{CALL, ON, HALT, ';'}));
  EXPECT_EQ(kinds("numeric form (x)"), (K{NUMERIC, FORM, VALUE, '(', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("numeric digits"), (K{NUMERIC, DIGITS, ';'}));
  EXPECT_EQ(kinds("numeric x"), (K{SYMBOL, ' ', SYMBOL, ';'}));
  EXPECT_EQ(kinds("procedure expose a"), (K{PROCEDURE, EXPOSE, SYMBOL, ';'}));
  EXPECT_EQ(kinds("parse upper arg a linein"), (K{PARSE, UPPER, ARG, SYMBOL, SYMBOL, ';'}));
  EXPECT_EQ(kinds("parse value f(x) with a b"),
            (K{PARSE, VALUE, FUNCTION, '(', SYMBOL, ')', WITH, SYMBOL, SYMBOL, ';'}));
  EXPECT_EQ(kinds("parse var x a (b)"), (K{PARSE, VAR, SYMBOL, SYMBOL, '(', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("parse foo"), (K{SYMBOL, ' ', SYMBOL, ';'}));
}

TEST(RexxLexKeywords, FunctionsAndOmittedArguments) {
  EXPECT_EQ(kinds("x = f()"), (K{SYMBOL, '=', FUNCTION, '(', VIDE, ')', ';'}));
  EXPECT_EQ(kinds("x = 'f'(,)"), (K{SYMBOL, '=', SFUNCTION, '(', VIDE, ',', VIDE, ')', ';'}));
  EXPECT_EQ(kinds("x = f (1)"), (K{SYMBOL, '=', SYMBOL, ' ', '(', STRING, ')', ';'}));
  EXPECT_EQ(kinds("call f ,1"), (K{CALL, SYMBOL, VIDE, ',', STRING, ';'}));
  EXPECT_EQ(kinds("{ nop }"), (K{DO, ';', NOP, ';', END, ';'}));
}

TEST(RexxLexKeywords, OptionTakesEffectOnceAndFirstWins) {
  rx_init();
  rx_lex_result r = rx_lex("option lower mixed setenv noload\nFoo = 1", 0, false);
  ASSERT_TRUE(r.ok);
  EXPECT_EQ(rx_st.sw.case_mode, 2);
  EXPECT_EQ(rx_st.sw.setenv, 0);
  EXPECT_EQ(rx_st.sw.load, 1);
  EXPECT_EQ(rx_st.sw.globalv, 2);
  for (const rx_node& n : r.tokens)
    if (n.type == SYMBOL) {
      EXPECT_EQ(n.value, "foo");
    }
  // A switch set before the program is lexed is never overridden.
  rx_init();
  rx_st.sw.case_mode = 0;
  r = rx_lex("option upper\nFoo = bar.Baz", 0, false);
  EXPECT_EQ(rx_st.sw.case_mode, 0);
  std::vector<rx_node> t;
  for (const rx_node& n : r.tokens)
    if (n.type == SYMBOL) t.push_back(n);
  ASSERT_EQ(t.size(), 2u);
  EXPECT_EQ(t[0].value, "Foo");
  EXPECT_EQ(t[1].stem_key, "bar+");
}

TEST(RexxLexAbuttal, ConcatenationMadeExplicit) {
  EXPECT_EQ(kinds("say 'abc'xyz"), (K{SAY, STRING, OP_CONC, SYMBOL, ';'}));
  EXPECT_EQ(kinds("say a'b'"), (K{SAY, SYMBOL, OP_CONC, STRING, ';'}));
  EXPECT_EQ(kinds("say (a)(b)"), (K{SAY, '(', SYMBOL, ')', OP_CONC, '(', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("say (a) (b)"), (K{SAY, '(', SYMBOL, ')', OP_CONC, STRING, OP_CONC, '(', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("say x[1] y"), (K{SAY, SYMBOL, '[', STRING, ']', OP_CONC, STRING, OP_CONC, SYMBOL, ';'}));
  EXPECT_EQ(kinds("say (a) b"), (K{SAY, '(', SYMBOL, ')', ' ', SYMBOL, ';'}));
  // Templates and the name behind CALL get nothing.
  EXPECT_EQ(kinds("parse arg a'b'"), (K{PARSE, ARG, SYMBOL, STRING, ';'}));
  EXPECT_EQ(kinds("call f'x'"), (K{CALL, SYMBOL, STRING, ';'}));
}

TEST(RexxLexNames, FoldingSplittingAndBlanks) {
  std::vector<rx_node> t = finished("a.b. = x..y + .z");
  EXPECT_EQ(t[0].value, "A.B.");
  EXPECT_EQ(t[0].stem_key, "A+");
  EXPECT_EQ(t[0].parts, (std::vector<std::string>{"A", "B", ""}));
  EXPECT_EQ(t[2].parts, (std::vector<std::string>{"X", "", "Y"}));
  EXPECT_EQ(t[4].stem_key, "+");
  EXPECT_TRUE(finished("abc = 1")[0].parts.empty());
  // The name of a function is folded; a string used as a function name is not.
  t = finished("x = abc(1) 'abc'(2)");
  EXPECT_EQ(t[2].value, "ABC");
  EXPECT_EQ(t[7].type, SFUNCTION);
  EXPECT_EQ(t[7].value, "abc");
  // Blanks survive only between operands.
  EXPECT_EQ(kinds("say ( a , b )"), (K{SAY, '(', SYMBOL, ',', SYMBOL, ')', ';'}));
  EXPECT_EQ(kinds("x = a b"), (K{SYMBOL, '=', SYMBOL, ' ', SYMBOL, ';'}));
}

TEST(RexxLexMisc, TokenTraceAndCompiledFiles) {
  rx_init();
  rx_lex_result r = rx_lex("say 'hi'", 0, false);
  std::string trace = rx_token_trace(r.tokens);
  EXPECT_EQ(trace.substr(0, trace.find('\n') + 1),
            "lex: type = SAY   value = \"say\"    len = 3     line = 1    col = 1\n");
  EXPECT_NE(trace.find("lex: type = ';'                                line = 1    col = 9\n"), std::string::npos);
  EXPECT_TRUE(rx_is_compiled_text("#!/usr/bin/palom\n\n@ccpl 2\nxx"));
  EXPECT_FALSE(rx_is_compiled_text("#! palom -x\n@ccpl"));
  EXPECT_FALSE(rx_is_compiled_text("#!/usr/bin/palom\nsay 1"));
  EXPECT_FALSE(rx_is_compiled_text("say 1\nsay 2\n#!/bin/palom\n@ccpl"));
  r = rx_lex("#!/bin/palom\n@ccpl\n", 0, false);
  EXPECT_FALSE(r.ok);
  EXPECT_TRUE(r.compiled);
  EXPECT_TRUE(rx_lex("#!/bin/palom\n@ccpl\n", 0, true).ok) << "forbidden: read as source";
}
