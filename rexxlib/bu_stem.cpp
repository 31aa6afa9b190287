// Stems for the built-ins that hand back lists: element names, their reading and assignment, and plain variables.

#include "rexx/rx_lex.h"
#include "rexx/rx_state.h"
#include "rexxlib/bu_frame.h"

namespace {

// The pool that holds `name`, following exposure to the caller's pools.
rx_pool* owning_pool(rx_pool* pool, std::string_view name) {
  uint64_t h = rx_name_hash(name);
  for (;;) {
    rx_var* v = pool->find(name, h);
    if (!v || v->state != 2 || !pool->parent) return pool;
    pool = pool->parent;
  }
}

// The stem key ("STEM+") of a derived element name.
std::string stem_key(std::string_view name) {
  std::size_t dot = name.find('.');
  return std::string(name.substr(0, dot)) + "+";
}

// The pool where element `name` lives: the stem's exposure first, then the element's own.
rx_pool* element_pool(std::string_view name) {
  rx_pool* pool = owning_pool(rx_ctx().pool, stem_key(name));
  return owning_pool(pool, name);
}

}  // namespace

std::string bu_stem_ref(std::string_view stem, std::string_view tail) {
  std::string name = bu_fold(stem);
  if (!name.empty() && name.back() == '.') name.pop_back();
  name += '.';
  name.append(tail.data(), tail.size());
  return name;
}

std::string bu_fold(std::string_view name) {
  std::string n(name);
  rx_fold_case(n, rx_st.sw.case_mode);
  return n;
}

std::string bu_stem_ref(std::string_view stem, long long index) { return bu_stem_ref(stem, std::to_string(index)); }

void bu_set_derived(std::string_view name, rx_value v) {
  rx_pool* pool = element_pool(name);
  rx_var* slot = pool->find_or_add(name, rx_name_hash(name));
  ++slot->changes;
  slot->state = 1;
  slot->value = std::move(v);
}

const rx_value* bu_get_derived(std::string_view name) {
  rx_pool* pool = owning_pool(rx_ctx().pool, stem_key(name));
  rx_pool* own = owning_pool(pool, name);
  if (rx_var* v = own->find(name, rx_name_hash(name)); v && v->state == 1) return &v->value;
  std::string key = stem_key(name);
  if (rx_var* s = pool->find(key, rx_name_hash(key)); s && s->state == 1) return &s->value;
  return nullptr;
}

void bu_stem_set(std::string_view stem, std::string_view tail, std::string_view text) {
  bu_set_derived(bu_stem_ref(stem, tail), rx_value::string(text));
}

void bu_stem_set(std::string_view stem, long long index, std::string_view text) {
  bu_set_derived(bu_stem_ref(stem, index), rx_value::string(text));
}

void bu_stem_list(std::string_view stem, const std::vector<std::string>& items) {
  bu_set_derived(bu_stem_ref(stem, 0), bu_whole(static_cast<long long>(items.size())));
  for (std::size_t i = 0; i < items.size(); ++i) bu_stem_set(stem, static_cast<long long>(i + 1), items[i]);
}

void bu_set_var(std::string_view name, std::string_view text) { bu_set_derived(bu_fold(name), rx_value::string(text)); }

const char* bu_symbol_arg(const bu_call& c, std::size_t index) {
  const rx_node* n = c.first;
  for (std::size_t i = 0; i < index && n; ++i) n = n->next;
  if (!n || n->type != SYMBOL || !n->has_value) return nullptr;
  return n->value.c_str();
}

bool bu_digits(std::string_view w, long& out) {
  if (w.empty() || w.size() > 9) return false;
  long n = 0;
  for (char ch : w) {
    if (ch < '0' || ch > '9') return false;
    n = n * 10 + (ch - '0');
  }
  out = n;
  return true;
}
