// The command table and its hash of abbreviations.
#include "editor/cmdtable.h"

#include <array>

#include "editor/handlers.h"
#include "rexxlib/support.h"

namespace {

constexpr xf_cmd_row rows[] = {
#include "editor/cmd_table.inc"
};
static_assert(sizeof rows / sizeof rows[0] == xf_cmd_count, "the command table has 365 rows");

// Names that SET and the NOTIMP rule accept for macros written for other editors.
constexpr const char* notimp_names[] = {"BRKkey", "COLPtr", "ESCape", "ETARBCH", "ETMODE", "FILler", "FMode",
                                        "FULLread", "IMage", "MASK", "MSGLine", "MSGMode", "NONDisp", "NULls",
                                        "PA1", "PA2", "PA3", "PACK", "RANge", "RECfm", "REMOte", "SERial",
                                        "SIDcode", "SPILL", "TERMinal", "TEXT", "TOPEOF", "TRANSLat"};
static_assert(sizeof notimp_names / sizeof notimp_names[0] == 28, "28 names without a handler");

constexpr uint32_t bucket_count = 8192;

struct cmd_tables {
  bool built = false;
  std::vector<xf_cmd_entry> entries;
  std::vector<xf_cmd_entry> set_entries;  // setting rows, then the 28 names without a handler
  std::array<std::vector<std::pair<std::string, int32_t>>, bucket_count> buckets;
};
cmd_tables tables;

xf_cmd_entry make_entry(const char* source) {
  xf_cmd_entry e;
  std::string_view s(source);
  e.name = xf_lower(s);
  e.name_len = static_cast<int32_t>(s.size());
  e.min_len = e.name_len;
  for (std::size_t i = 0; i < s.size(); ++i)
    if (s[i] >= 'a' && s[i] <= 'z') {
      e.min_len = static_cast<int32_t>(i);
      break;
    }
  if (e.min_len == 0) e.min_len = 1;
  return e;
}

}  // namespace

std::string xf_lower(std::string_view s) {
  std::string r(s);
  for (char& ch : r)
    if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
  return r;
}

std::string xf_upper(std::string_view s) {
  std::string r(s);
  for (char& ch : r)
    if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
  return r;
}

uint32_t xf_cmd_hash(std::string_view key) {
  if (key.empty()) return 0;
  uint32_t h = static_cast<unsigned char>(key[0]);
  for (char b : key) h = (h * 31 + static_cast<unsigned char>(b)) & 0x1fff;
  return h;
}

void xf_cmd_init() {
  if (tables.built) return;
  tables.entries.reserve(xf_cmd_count);
  for (const auto& r : rows) {
    xf_cmd_entry e = make_entry(r.source);
    e.is_setting = r.is_setting;
    e.is_query = r.is_query;
    e.handler = r.handler;
    e.trace_tag = r.trace_tag;
    tables.entries.push_back(e);
    if (e.is_setting) tables.set_entries.push_back(e);
  }
  for (const char* n : notimp_names) tables.set_entries.push_back(make_entry(n));
  // Every abbreviation of every row goes in under its own key; the first row to claim a key keeps it.
  for (int32_t i = xf_cmd_special; i < xf_cmd_count; ++i) {
    const xf_cmd_entry& e = tables.entries[i];
    for (int32_t l = e.min_len; l <= e.name_len; ++l) {
      std::string key = e.name.substr(0, l);
      auto& b = tables.buckets[xf_cmd_hash(key)];
      bool taken = false;
      for (auto& [k, row] : b)
        if (k == key) taken = true;
      if (!taken) b.emplace_back(std::move(key), i);
    }
  }
  tables.built = true;
}

const std::vector<xf_cmd_entry>& xf_cmd_entries() { return tables.entries; }
const xf_cmd_row* xf_cmd_source_rows() { return rows; }

int32_t xf_cmd_lookup(std::string_view lword) {
  if (lword.empty()) return -1;
  for (auto& [k, row] : tables.buckets[xf_cmd_hash(lword)])
    if (k == lword) return row;
  return -1;
}

int32_t xf_set_lookup(std::string_view word, int32_t* matched_len) {
  for (std::size_t i = 0; i < tables.set_entries.size(); ++i) {
    const xf_cmd_entry& e = tables.set_entries[i];
    int32_t n = xf_abbrev_word(word, e.name, e.min_len);
    if (n > 0) {
      if (matched_len) *matched_len = n;
      return static_cast<int32_t>(i);
    }
  }
  return -1;
}

bool xf_notimp_name(std::string_view ltext) {
  std::string_view word = ltext.substr(0, ltext.find(' '));
  for (const char* n : notimp_names) {
    xf_cmd_entry e = make_entry(n);
    if (xf_abbrev(word, e.name, e.min_len) > 0) return true;
  }
  return false;
}

int32_t xf_abbrev(std::string_view word, std::string_view name, int32_t min) {
  auto low = [](char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch; };
  if (static_cast<int32_t>(word.size()) < min) return 0;
  std::size_t i = 0;
  for (; i < word.size() && word[i] != ' ' && word[i] != '\t'; ++i) {
    if (i >= name.size()) return 0;  // longer than the name without a blank there
    if (low(word[i]) != low(name[i])) return 0;
  }
  if (static_cast<int32_t>(i) < min) return 0;
  return static_cast<int32_t>(i);
}

int32_t xf_abbrev_word(std::string_view word, std::string_view name, int32_t min) {
  auto low = [](char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch; };
  std::size_t n = 0;
  while (n < word.size() && ((word[n] >= 'a' && word[n] <= 'z') || (word[n] >= 'A' && word[n] <= 'Z'))) ++n;
  if (static_cast<int32_t>(n) < min || n > name.size()) return 0;
  for (std::size_t i = 0; i < n; ++i)
    if (low(word[i]) != low(name[i])) return 0;
  return static_cast<int32_t>(n);
}

int32_t xf_synonym_match(std::string_view word, std::string_view name, int32_t min) {
  if (static_cast<int32_t>(word.size()) < min) return 0;
  std::size_t i = 0;
  while (i < word.size() && i < name.size() && word[i] == name[i]) ++i;
  if (static_cast<int32_t>(i) < min) return 0;
  if (i < word.size()) {
    char ch = word[i];
    if (!(ch == '\t' || ch == ' ' || (ch >= '0' && ch <= '9') || ch == '-')) return 0;
  }
  return static_cast<int32_t>(i);
}

std::vector<std::string> xf_tokens(std::string_view text) { return split_blanks(text); }
