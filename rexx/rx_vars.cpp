// Variable pools: the hash table, the lookup that follows exposure, compound names, stems, DROP and EXPOSE.
#include "rexx/rx_vars.h"

#include <cstdlib>

#include "os/os_process.h"
#include "rexx/rx_lex.h"
#include "rexx/rx_state.h"

namespace {

bool is_stem_symbol(const rx_node& sym) { return sym.parts.size() == 2 && sym.parts[1].empty(); }

uint64_t symbol_hash(const rx_node& sym) {
  if (sym.hash == 0) sym.hash = rx_name_hash(sym.value);
  return sym.hash;
}

// The slot of the stem key in `pool`, and the pool in which the stem lives (following its exposure).
rx_pool* stem_pool(rx_pool* pool, std::string_view key, uint64_t hash) {
  for (;;) {
    rx_var* s = pool->find(key, hash);
    if (!s || s->state != 2 || !pool->parent) return pool;
    pool = pool->parent;
  }
}

void drop_stem_in(rx_pool* pool, std::string_view key) {
  std::string_view stem = key.substr(0, key.size() - 1);
  for (rx_var& v : pool->slots()) {
    if (v.state != 1) continue;
    std::string_view n = v.name;
    bool tail = n.size() > stem.size() && n.compare(0, stem.size(), stem) == 0 && n[stem.size()] == '.';
    if (tail || n == key) {
      v.value = rx_value{};
      v.state = 0;
      ++v.changes;
    }
  }
}

// The slot of a simple symbol in `pool`, remembered by the token for the next access.
rx_var* cached_find(rx_pool* pool, const rx_node& sym, bool create) {
  if (sym.slot_pool == pool->id) return sym.slot;
  rx_var* v = create ? pool->find_or_add(sym.value, symbol_hash(sym)) : pool->find(sym.value, symbol_hash(sym));
  if (v) {
    sym.slot_pool = pool->id;
    sym.slot = v;
  }
  return v;
}

uint64_t key_hash(const rx_node& sym) {
  if (sym.key_hash == 0) sym.key_hash = rx_name_hash(sym.stem_key);
  return sym.key_hash;
}

// The pool in which a compound symbol's stem lives (following the stem's exposure from `pool`), with the stem
// key's slot there (null when none). The token remembers the key's slot in the pool it starts from; that slot is
// made (unset) when missing, so that it can be remembered.
rx_pool* compound_pool(rx_pool* pool, const rx_node& sym, rx_var** key) {
  rx_var* s;
  if (sym.slot_pool == pool->id) {
    s = sym.slot;
  } else {
    s = pool->find_or_add(sym.stem_key, key_hash(sym));
    sym.slot_pool = pool->id;
    sym.slot = s;
  }
  while (s && s->state == 2 && pool->parent) {
    pool = pool->parent;
    s = pool->find(sym.stem_key, key_hash(sym));
  }
  *key = s;
  return pool;
}

// Where a (derived) name's slot lives: its stem's exposure, then its own, are followed.
rx_var* find_value_slot(rx_pool* pool, const rx_node& sym, std::string_view name, uint64_t hash, rx_var** stem) {
  bool compound = !sym.parts.empty() && !is_stem_symbol(sym);
  bool first = true;
  rx_var* key = nullptr;
  for (;;) {
    if (compound) pool = compound_pool(pool, sym, &key);
    rx_var* v = first && sym.parts.empty() ? cached_find(pool, sym, false) : pool->find(name, hash);
    first = false;
    if (v && v->state == 2 && pool->parent) {
      pool = pool->parent;
      continue;
    }
    if (stem) *stem = key;
    return v && v->state == 1 ? v : nullptr;
  }
}

struct name_buf {
  std::string text;
  uint64_t hash = 0;
  std::string_view view;
};

uint64_t derive(const rx_var_ctx& c, const rx_node& sym, std::string& out);

void name_of(const rx_var_ctx& c, const rx_node& sym, name_buf& b) {
  if (sym.parts.empty()) {
    b.view = sym.value;
    b.hash = symbol_hash(sym);
    return;
  }
  if (is_stem_symbol(sym)) {
    b.view = sym.stem_key;
    b.hash = key_hash(sym);
    return;
  }
  b.hash = derive(c, sym, b.text);
  b.view = b.text;
}

}  // namespace

uint64_t rx_name_hash(std::string_view name) {
  // A polynomial hash: names that differ in their last character, as the tails of a stem filled in a loop do,
  // land in nearby buckets, which keeps a walk over many tails within the cache.
  uint64_t h = 0;
  for (unsigned char ch : name) h = h * 31 + ch;
  return h ? h : 1;
}

rx_var* rx_pool::find(std::string_view name, uint64_t hash) const {
  if (buckets_.empty()) return nullptr;
  for (rx_var* v = buckets_[hash & (buckets_.size() - 1)]; v; v = v->chain)
    if (v->hash == hash && v->name == name) return v;
  return nullptr;
}

void rx_pool::grow() {
  std::size_t n = buckets_.empty() ? 64 : buckets_.size() * 2;
  buckets_.assign(n, nullptr);
  for (rx_var& v : store_) {
    rx_var*& head = buckets_[v.hash & (n - 1)];
    v.chain = head;
    head = &v;
  }
}

rx_var* rx_pool::find_or_add(std::string_view name, uint64_t hash) {
  if (rx_var* v = find(name, hash)) return v;
  if (store_.size() >= buckets_.size()) grow();
  rx_var& v = store_.emplace_back();
  v.name.assign(name.data(), name.size());
  v.hash = hash;
  rx_var*& head = buckets_[hash & (buckets_.size() - 1)];
  v.chain = head;
  head = &v;
  return &v;
}

namespace {

// The hash of a name, carried on over more bytes: rx_name_hash is this from 0, with 0 itself mapped to 1.
uint64_t hash_on(uint64_t h, std::string_view more) {
  for (unsigned char ch : more) h = h * 31 + ch;
  return h;
}

bool constant_part(const std::string& part) { return part.empty() || (part[0] >= '0' && part[0] <= '9'); }

// The slot whose value tail `i` of a compound symbol takes (exposure followed), or null. The token remembers the
// tail's slot in the pool it is used in (made unset when missing, so that it can be).
rx_var* tail_slot(const rx_var_ctx& c, const rx_node& sym, std::size_t i) {
  rx_node::tail_cache& t = sym.tails[i];
  const std::string& part = sym.parts[i];
  rx_pool* p = c.pool;
  rx_var* v;
  if (t.pool == p->id) {
    v = t.slot;
  } else {
    v = p->find_or_add(part, t.hash);
    t.pool = p->id;
    t.slot = v;
  }
  while (v && v->state == 2 && p->parent) {
    p = p->parent;
    v = p->find(part, t.hash);
  }
  return v;
}

// The derived name of a compound symbol and its hash, made together. Each tail's slot in the pool is
// remembered by the token (made unset when missing, so that it can be).
uint64_t derive(const rx_var_ctx& c, const rx_node& sym, std::string& out) {
  if (sym.tails.size() != sym.parts.size()) {
    sym.tails.assign(sym.parts.size(), rx_node::tail_cache{});
    sym.tails[0].hash = hash_on(0, sym.parts[0]) * 31 + '.';
    for (std::size_t k = 1; k < sym.parts.size(); ++k) sym.tails[k].hash = rx_name_hash(sym.parts[k]);
  }
  out.assign(sym.parts[0]);
  out += '.';
  uint64_t h = sym.tails[0].hash;
  std::string buf;
  for (std::size_t i = 1; i < sym.parts.size(); ++i) {
    if (i > 1) {
      out += '.';
      h = h * 31 + '.';
    }
    const std::string& part = sym.parts[i];
    if (part.empty()) continue;
    // A tail is looked up as a simple variable; a constant tail (digits first) is its own text.
    rx_var* v = constant_part(part) ? nullptr : tail_slot(c, sym, i);
    std::string_view add;
    if (!v || v->state != 1) {
      add = part;
    } else if (v->value.kind == RX_STR) {
      add = v->value.text;
    } else {
      buf.clear();
      if (!rx_format_number(v->value.num, v->value.decimals, *c.numeric, buf)) buf = "inf";
      add = buf;
    }
    out.append(add);
    h = hash_on(h, add);
  }
  return h ? h : 1;
}

}  // namespace

void rx_derive_name(const rx_var_ctx& c, const rx_node& sym, std::string& out) {
  name_buf b;
  name_of(c, sym, b);
  out.assign(b.view);
}

const rx_value* rx_get(const rx_var_ctx& c, const rx_node& sym) {
  name_buf b;
  name_of(c, sym, b);
  rx_var* stem = nullptr;
  rx_var* v = find_value_slot(c.pool, sym, b.view, b.hash, &stem);
  if (v) return &v->value;
  if (stem && stem->state == 1) return &stem->value;
  return nullptr;
}

rx_var* rx_slot(const rx_var_ctx& c, const rx_node& sym) {
  name_buf b;
  name_of(c, sym, b);
  return find_value_slot(c.pool, sym, b.view, b.hash, nullptr);
}

std::string rx_default_text(const rx_var_ctx& c, const rx_node& sym) {
  std::string name;
  if (sym.parts.empty())
    name = sym.value;
  else
    rx_derive_name(c, sym, name);
  if (!name.empty() && name.back() == '+') name.back() = '.';
  return name;
}

namespace {

// The slot that an assignment to `sym` writes, its change count raised (a stem symbol drops its tails first).
rx_var* assign_slot(const rx_var_ctx& c, const rx_node& sym) {
  bool compound = !sym.parts.empty() && !is_stem_symbol(sym);
  name_buf b;
  name_of(c, sym, b);
  rx_pool* pool = c.pool;
  if (is_stem_symbol(sym)) {
    pool = stem_pool(pool, b.view, b.hash);
    drop_stem_in(pool, b.view);
  }
  bool first = true;
  rx_var* key = nullptr;
  for (;;) {
    if (compound) pool = compound_pool(pool, sym, &key);
    rx_var* slot = first && sym.parts.empty() ? cached_find(pool, sym, true) : pool->find_or_add(b.view, b.hash);
    first = false;
    if (slot->state == 2 && pool->parent) {
      pool = pool->parent;
      continue;
    }
    ++slot->changes;
    slot->state = 1;
    return slot;
  }
}

}  // namespace

namespace {

// The slot that an assignment writes. A simple symbol whose slot in this pool the token remembers, and which is
// not exposed, needs no search at all.
rx_var* target_slot(const rx_var_ctx& c, const rx_node& sym) {
  if (sym.slot_pool != c.pool->id || !sym.parts.empty() || sym.slot->state == 2) return assign_slot(c, sym);
  ++sym.slot->changes;
  sym.slot->state = 1;
  return sym.slot;
}

}  // namespace

rx_var* rx_assign(const rx_var_ctx& c, const rx_node& sym, rx_value v) {
  rx_var* slot = target_slot(c, sym);
  slot->value = std::move(v);
  return slot;
}

rx_var* rx_assign_text(const rx_var_ctx& c, const rx_node& sym, std::string_view text) {
  rx_var* slot = target_slot(c, sym);
  slot->value.set_text(text);  // reuses the slot's buffer
  return slot;
}

rx_node rx_symbol_of(std::string_view name, int case_mode) {
  rx_node n;
  n.type = SYMBOL;
  n.value.assign(name.data(), name.size());
  n.has_value = true;
  rx_fold_case(n.value, case_mode);
  std::size_t dot = n.value.find('.');
  if (dot != std::string::npos) {
    n.stem_key = n.value.substr(0, dot) + "+";
    std::size_t start = 0;
    for (;;) {
      std::size_t d = n.value.find('.', start);
      n.parts.push_back(n.value.substr(start, d == std::string::npos ? std::string::npos : d - start));
      if (d == std::string::npos) break;
      start = d + 1;
    }
  }
  return n;
}

rx_var* rx_assign_name(const rx_var_ctx& c, std::string_view name, rx_value v) {
  rx_node sym = rx_symbol_of(name, c.case_mode);
  return rx_assign(c, sym, std::move(v));
}

void rx_drop(const rx_var_ctx& c, const rx_node& sym) {
  name_buf b;
  name_of(c, sym, b);
  if (is_stem_symbol(sym)) {
    drop_stem_in(stem_pool(c.pool, b.view, b.hash), b.view);
    return;
  }
  if (rx_var* v = find_value_slot(c.pool, sym, b.view, b.hash, nullptr)) {
    v->value = rx_value{};
    v->state = 0;
    ++v->changes;
  }
}

void rx_expose(const rx_var_ctx& c, const rx_node& sym) {
  name_buf b;
  name_of(c, sym, b);
  rx_var* slot = c.pool->find_or_add(b.view, b.hash);
  slot->value = rx_value{};
  slot->state = 2;
  ++slot->changes;
}

bool rx_valid_var_name(std::string_view w) {
  if (w.empty() || w[0] == '.' || (w[0] >= '0' && w[0] <= '9')) return false;
  for (unsigned char ch : w) {
    bool ok = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') || ch == '@' ||
              ch == '#' || ch == '$' || ch == '.' || ch == '!' || ch == '?' || ch == '_' || ch == 0xA8;
    if (!ok) return false;
  }
  return true;
}

bool rx_env_symbol(const rx_node& sym) {
  return rx_st.sw.setenv == 0 && sym.value.size() >= 2 && sym.value[0] == '$' && sym.parts.empty();
}

void rx_env_refresh(const rx_var_ctx& c, const rx_node& sym) {
  bool probe = sym.value.size() >= 3 && sym.value[1] == '?';
  std::string name = sym.value.substr(probe ? 2 : 1);
  const char* v = std::getenv(name.c_str());
  rx_assign(c, sym, rx_value::string(probe ? (v ? "1" : "0") : (v ? v : "")));
}

void rx_env_store(const rx_node& sym, std::string_view text) {
  if (sym.value[1] == '?') return;
  os_set_env(std::string_view(sym.value).substr(1), text);
}
