// Variables: slots, hash pools chained from a routine's pool to its caller's, compound names, stems, exposure.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "rexx/rx_token.h"
#include "rexx/rx_value.h"

// A variable slot. state: 0 dropped (or never set), 1 has a value, 2 exposed (the value lives in the parent pool).
// `changes` counts assignments; a controlled DO uses it to see whether its body touched the control variable.
struct rx_var {
  int32_t state = 0;
  std::string name;
  rx_value value;
  int32_t changes = 0;
  uint64_t hash = 0;
  rx_var* chain = nullptr;
};

// Hash of a variable name (never 0, so that 0 can mean "not yet computed" in a token's cache).
uint64_t rx_name_hash(std::string_view name);

// A pool: a hash table of slots that grows with its contents; `parent` is the caller's pool (null for the main
// program). Slots are never removed before the pool ends, so pointers to them stay valid.
class rx_pool {
 public:
  explicit rx_pool(rx_pool* parent = nullptr) : parent(parent), id(next_id()) {}
  rx_pool(const rx_pool&) = delete;
  rx_pool& operator=(const rx_pool&) = delete;

  rx_var* find(std::string_view name, uint64_t hash) const;
  rx_var* find_or_add(std::string_view name, uint64_t hash);
  // Every slot, in the order of creation.
  std::deque<rx_var>& slots() { return store_; }

  rx_pool* parent;
  const uint64_t id;  // unique for the process, so that a token can remember its slot in this pool

 private:
  static uint64_t next_id() {
    static uint64_t last = 0;
    return ++last;
  }
  void grow();
  std::vector<rx_var*> buckets_;
  std::deque<rx_var> store_;
};

// What variable operations need from the running routine: its pool, its NUMERIC settings (to format numeric tails)
// and the case mode (for names taken from values).
struct rx_var_ctx {
  rx_pool* pool = nullptr;
  const rx_numeric* numeric = nullptr;
  int case_mode = 1;
};

// The full name of a symbol with its tails substituted ("A.3.J"); for a stem symbol "A." the stem key "A+".
void rx_derive_name(const rx_var_ctx& c, const rx_node& sym, std::string& out);
// The value of a symbol, following exposure; null when unset (a compound falls back to its stem's value first).
const rx_value* rx_get(const rx_var_ctx& c, const rx_node& sym);
// The default value of an unset symbol: its (derived) name, a stem key's '+' shown as '.'.
std::string rx_default_text(const rx_var_ctx& c, const rx_node& sym);
// The slot of a symbol that holds a value (following exposure), or null.
rx_var* rx_slot(const rx_var_ctx& c, const rx_node& sym);
// Assign a symbol (a stem symbol "A." drops every tail of the stem first). Returns the slot assigned.
rx_var* rx_assign(const rx_var_ctx& c, const rx_node& sym, rx_value v);
// Assign a string to a symbol, reusing the buffer of the value it replaces.
rx_var* rx_assign_text(const rx_var_ctx& c, const rx_node& sym, std::string_view text);
// Assign by name given as text (PARSE targets, RC, built-ins): folded by the case mode and split as a compound.
rx_var* rx_assign_name(const rx_var_ctx& c, std::string_view name, rx_value v);
// Drop a symbol (a stem: the stem and all its tails).
void rx_drop(const rx_var_ctx& c, const rx_node& sym);
// PROCEDURE EXPOSE of one symbol: `c.pool` is the routine's new pool, whose parent is the caller's.
void rx_expose(const rx_var_ctx& c, const rx_node& sym);
// OPTION SETENV: a simple symbol "$NAME" mirrors the process variable NAME, "$?NAME" tells whether it exists.
bool rx_env_symbol(const rx_node& sym);
// Refreshes such a symbol from the process environment before it is read.
void rx_env_refresh(const rx_var_ctx& c, const rx_node& sym);
// After an assignment to such a symbol: sets the process variable ("$?NAME" sets nothing).
void rx_env_store(const rx_node& sym, std::string_view text);
// A symbol token for a name held as text (upper-cased by the case mode, split at dots), for the operations above.
rx_node rx_symbol_of(std::string_view name, int case_mode);
// Whether a word of a name list is a valid variable name.
bool rx_valid_var_name(std::string_view word);
