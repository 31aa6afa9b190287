// Unit tests of variable pools: lookup and growth, compound names, stems, DROP, and the chain of pools that
// PROCEDURE EXPOSE builds.
#include <gtest/gtest.h>

#include "rexx/rx_vars.h"

namespace {

struct pools {
  rx_numeric numeric;
  rx_pool main;
  rx_var_ctx ctx() {
    rx_var_ctx c;
    c.pool = &main;
    c.numeric = &numeric;
    return c;
  }
};

std::string value_of(const rx_var_ctx& c, const char* name) {
  rx_node sym = rx_symbol_of(name, 1);
  const rx_value* v = rx_get(c, sym);
  if (!v) return "<unset:" + rx_default_text(c, sym) + ">";
  if (v->kind == RX_STR) return v->text;
  std::string out;
  rx_format_number(v->num, v->decimals, *c.numeric, out);
  return out;
}

}  // namespace

TEST(RexxVars, ManyNamesStayDistinctAsThePoolGrows) {
  pools p;
  rx_var_ctx c = p.ctx();
  for (int i = 0; i < 20000; ++i) rx_assign_name(c, "V" + std::to_string(i), rx_value::number(i, 0));
  for (int i = 0; i < 20000; i += 997) EXPECT_EQ(value_of(c, ("V" + std::to_string(i)).c_str()), std::to_string(i));
  EXPECT_EQ(p.main.slots().size(), 20000u);
  rx_var* slot = p.main.find("V5", rx_name_hash("V5"));
  ASSERT_NE(slot, nullptr);
  rx_assign_name(c, "V5", rx_value::string("again"));
  EXPECT_EQ(slot->changes, 2);  // the slot is reused and counts its assignments
}

TEST(RexxVars, CompoundNamesSubstituteTheirTails) {
  pools p;
  rx_var_ctx c = p.ctx();
  rx_assign_name(c, "I", rx_value::number(3, 0));
  std::string name;
  rx_derive_name(c, rx_symbol_of("a.i.j", 1), name);
  EXPECT_EQ(name, "A.3.J");
  rx_assign_name(c, "J", rx_value::string("x y"));
  rx_derive_name(c, rx_symbol_of("a.i.j", 1), name);
  EXPECT_EQ(name, "A.3.x y");
  rx_derive_name(c, rx_symbol_of("a.", 1), name);
  EXPECT_EQ(name, "A+");
  EXPECT_EQ(value_of(c, "a."), "<unset:A.>");
  EXPECT_EQ(value_of(c, "b.i"), "<unset:B.3>");
}

TEST(RexxVars, StemsGiveDefaultsAndTheirAssignmentDropsTails) {
  pools p;
  rx_var_ctx c = p.ctx();
  rx_assign_name(c, "S.", rx_value::string("5"));
  EXPECT_EQ(value_of(c, "s.anything"), "5");
  rx_assign_name(c, "S.1", rx_value::string("6"));
  rx_assign_name(c, "ST", rx_value::string("other"));  // shares the stem's first letter, not its dot
  EXPECT_EQ(value_of(c, "s.1"), "6");
  rx_assign_name(c, "S.", rx_value::string("7"));
  EXPECT_EQ(value_of(c, "s.1"), "7");
  EXPECT_EQ(value_of(c, "st"), "other");
  rx_drop(c, rx_symbol_of("s.", 1));
  EXPECT_EQ(value_of(c, "s.1"), "<unset:S.1>");
  rx_assign_name(c, "X", rx_value::string("v"));
  rx_drop(c, rx_symbol_of("x", 1));
  EXPECT_EQ(value_of(c, "x"), "<unset:X>");
  rx_drop(c, rx_symbol_of("never", 1));  // dropping an unset variable does nothing
  EXPECT_EQ(value_of(c, "never"), "<unset:NEVER>");
}

TEST(RexxVars, ExposedNamesReachTheCallersPool) {
  pools p;
  rx_var_ctx caller = p.ctx();
  rx_assign_name(caller, "A", rx_value::string("outer"));
  rx_assign_name(caller, "HIDDEN", rx_value::string("h"));
  rx_assign_name(caller, "I", rx_value::number(2, 0));
  rx_pool inner(&p.main);
  rx_var_ctx c = caller;
  c.pool = &inner;
  rx_expose(c, rx_symbol_of("a", 1));
  rx_expose(c, rx_symbol_of("st.", 1));
  rx_expose(c, rx_symbol_of("i", 1));
  rx_expose(c, rx_symbol_of("t.i", 1));  // formed with I already exposed: T.2
  EXPECT_EQ(value_of(c, "a"), "outer");
  EXPECT_EQ(value_of(c, "hidden"), "<unset:HIDDEN>");
  rx_assign_name(c, "A", rx_value::string("changed"));
  rx_assign_name(c, "LOCAL", rx_value::string("l"));
  rx_assign_name(c, "ST.9", rx_value::string("tail"));
  rx_assign_name(c, "T.2", rx_value::string("two"));
  rx_assign_name(c, "T.3", rx_value::string("three"));
  EXPECT_EQ(value_of(caller, "a"), "changed");
  EXPECT_EQ(value_of(caller, "local"), "<unset:LOCAL>");
  EXPECT_EQ(value_of(caller, "st.9"), "tail");
  EXPECT_EQ(value_of(caller, "t.2"), "two");
  EXPECT_EQ(value_of(caller, "t.3"), "<unset:T.3>");
  rx_drop(c, rx_symbol_of("a", 1));
  EXPECT_EQ(value_of(caller, "a"), "<unset:A>");
}

TEST(RexxVars, NamesFromText) {
  EXPECT_TRUE(rx_valid_var_name("abc"));
  EXPECT_TRUE(rx_valid_var_name("a.b.1"));
  EXPECT_TRUE(rx_valid_var_name("$x?!_@#"));
  EXPECT_FALSE(rx_valid_var_name(""));
  EXPECT_FALSE(rx_valid_var_name(".a"));
  EXPECT_FALSE(rx_valid_var_name("1a"));
  EXPECT_FALSE(rx_valid_var_name("a-b"));
  rx_node n = rx_symbol_of("ab.Cd.e", 1);
  EXPECT_EQ(n.value, "AB.CD.E");
  EXPECT_EQ(n.stem_key, "AB+");
  ASSERT_EQ(n.parts.size(), 3u);
  EXPECT_EQ(n.parts[1], "CD");
  EXPECT_EQ(rx_symbol_of("ab", 0).value, "ab");
}

// One token used again and again, as a program's loop uses it: what it remembers (its tails' slots, its stem's
// slot, a simple symbol's slot) must follow the pool it is used in and the values of its tails.
TEST(RexxVars, ATokenUsedAgainFollowsItsPoolAndItsTails) {
  pools p;
  rx_var_ctx c = p.ctx();
  const rx_node tok = rx_symbol_of("a.i.j", 1);
  rx_assign_name(c, "J", rx_value::string("x"));
  for (int i = 1; i <= 3; ++i) {
    rx_assign_name(c, "I", rx_value::number(i, 0));
    rx_assign(c, tok, rx_value::number(i * 10, 0));
  }
  rx_assign_name(c, "I", rx_value::number(2, 0));
  std::string name;
  rx_derive_name(c, tok, name);
  EXPECT_EQ(name, "A.2.x");
  EXPECT_EQ(rx_get(c, tok)->num, 20);
  rx_var* by_name = p.main.find("A.2.x", rx_name_hash("A.2.x"));  // the name's hash, however it was made
  ASSERT_NE(by_name, nullptr);
  EXPECT_EQ(by_name->value.num, 20);
  rx_drop(c, rx_symbol_of("j", 1));  // the tail is its own name again
  rx_derive_name(c, tok, name);
  EXPECT_EQ(name, "A.2.J");
  EXPECT_EQ(rx_get(c, tok), nullptr);
  rx_assign_name(c, "A.", rx_value::string("dflt"));  // an unset element gives the stem's value
  EXPECT_EQ(rx_get(c, tok)->text, "dflt");

  // The same token in a routine's pool that exposes the stem, then in one that does not.
  rx_pool shared(&p.main), own(&p.main);
  rx_var_ctx in_shared = c, in_own = c;
  in_shared.pool = &shared;
  in_own.pool = &own;
  rx_expose(in_shared, rx_symbol_of("a.", 1));
  rx_assign_name(in_shared, "I", rx_value::number(1, 0));
  rx_assign_name(in_own, "I", rx_value::number(1, 0));
  rx_assign_name(in_shared, "J", rx_value::string("x"));
  rx_assign_name(in_own, "J", rx_value::string("x"));
  ASSERT_NE(rx_get(in_shared, tok), nullptr);
  EXPECT_EQ(rx_get(in_shared, tok)->text, "dflt");  // A. = 'dflt' dropped A.1.x
  rx_assign(in_shared, tok, rx_value::string("from routine"));
  EXPECT_EQ(rx_get(in_own, tok), nullptr);
  rx_assign_name(c, "I", rx_value::number(1, 0));
  rx_assign_name(c, "J", rx_value::string("x"));
  EXPECT_EQ(rx_get(c, tok)->text, "from routine");
  rx_assign(in_own, tok, rx_value::string("local"));
  EXPECT_EQ(rx_get(c, tok)->text, "from routine");
  EXPECT_EQ(rx_get(in_own, tok)->text, "local");
  EXPECT_EQ(rx_get(in_shared, tok)->text, "from routine");

  // A simple symbol assigned as text (PARSE's road) in two pools by one token.
  const rx_node v = rx_symbol_of("v", 1);
  rx_assign_text(c, v, "main");
  rx_assign_text(in_own, v, "own");
  rx_assign_text(c, v, "main again");
  EXPECT_EQ(value_of(c, "v"), "main again");
  EXPECT_EQ(value_of(in_own, "v"), "own");
  rx_expose(in_shared, rx_symbol_of("v", 1));
  rx_assign_text(in_shared, v, "through exposure");
  EXPECT_EQ(value_of(c, "v"), "through exposure");
  rx_assign_text(in_shared, v, "and again");  // now remembered in that pool: still passed through
  EXPECT_EQ(value_of(c, "v"), "and again");
}

TEST(RexxVars, TextSetFromItsOwnBytes) {
  for (std::string start : {std::string("abcdef"), std::string(100, 'q') + "tail"}) {
    rx_value v = rx_value::string(start);
    v.set_text(std::string_view(v.text).substr(0, 3));
    EXPECT_EQ(v.text, start.substr(0, 3));
    v = rx_value::string(start);
    v.set_text(std::string_view(v.text).substr(2));
    EXPECT_EQ(v.text, start.substr(2));
    v.set_text("other");
    EXPECT_EQ(v.text, "other");
    EXPECT_EQ(v.kind, RX_STR);
  }
}
