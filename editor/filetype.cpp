// Per-filetype defaults.
#include "editor/filetype.h"

#include "editor/ring.h"

xf_ft_state xf_ft;

namespace {

const xf_ft_row* find_row(int kind, std::string_view ext) {
  const xf_ft_row* any = nullptr;
  for (const auto& r : xf_ft.tables[kind]) {
    if (r.ext == ext) return &r;
    if (r.ext == "*") any = &r;
  }
  return any;
}

}  // namespace

void xf_ft_reset() {
  xf_ft = xf_ft_state{};
  for (const char* e : {"exe", "lib", "obj", "dll", "com"}) xf_ft.tables[XF_FT_BINARY].push_back({e, {1}});
}

void xf_ft_set(int kind, std::string_view ext, std::vector<int32_t> value) {
  for (auto& r : xf_ft.tables[kind])
    if (r.ext == ext) {
      r.value = std::move(value);
      return;
    }
  xf_ft.tables[kind].push_back({std::string(ext), std::move(value)});
}

std::string xf_ft_extension(std::string_view name) {
  std::size_t slash = name.rfind('/');
  std::string_view base = slash == std::string_view::npos ? name : name.substr(slash + 1);
  std::size_t dot = base.rfind('.');
  return dot == std::string_view::npos ? std::string() : std::string(base.substr(dot + 1));
}

void xf_ft_apply(xf_file& f) {
  std::string ext = xf_ft_extension(f.name);
  if (auto* r = find_row(XF_FT_TABS, ext)) f.tabs = r->value;
  if (auto* r = find_row(XF_FT_CASE, ext); r && r->value.size() >= 3) {
    f.case_mode = r->value[0];
    f.case_search_c = r->value[1];
    f.case_search_s = r->value[2];
  }
  if (auto* r = find_row(XF_FT_LRECL, ext); r && !r->value.empty()) f.lrecl = r->value[0];
  if (auto* r = find_row(XF_FT_TRUNC, ext); r && !r->value.empty()) f.trunc = r->value[0];
  if (auto* r = find_row(XF_FT_KEEPBLANKS, ext); r && !r->value.empty()) f.keep_blanks = r->value[0];
  if (auto* r = find_row(XF_FT_BINARY, ext); r && !r->value.empty()) f.binary = r->value[0];
  if (auto* r = find_row(XF_FT_POWER, ext); r && r->value.size() >= 3)
    for (int i = 0; i < 3; ++i) f.power[i] = r->value[i];
  if (xf_ft.force_keep_blanks) f.keep_blanks = 1;
  if (xf_ft.force_binary) f.binary = 1;
  if (f.binary) f.keep_blanks = 1;
}
