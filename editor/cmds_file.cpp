// Handlers of the file rows: opening, saving, filing, quitting, and the settings of reading and writing.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/filetype.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/startup.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_path.h"
#include "rexxlib/support.h"

namespace {





// After the current file leaves the ring: with MODE AUTOEXIT the run ends at the last file.
void after_close() {
  if (xf_file_count() == 0 && xf_set.mode_autoexit) xf_exit();
}

// Save forms, told apart by the row's name: s, ss, k, d and their VERIFY_ forms.
int do_save(const xf_cmd_call& c, bool close) {
  std::string_view name = c.row_name;
  bool verify = name.starts_with("verify_");
  if (verify) name.remove_prefix(7);
  int force = 0, keep = 0, crlf = 0;
  if (close) {
    if (name.starts_with("ff")) force = 1;
    else if (name.starts_with("k")) keep = 1;
    else if (name.starts_with("d")) crlf = 1;
  } else {
    if (name.starts_with("ss")) force = 1;
    else if (name.starts_with("k")) keep = 1;
    else if (name.starts_with("d")) crlf = 1;
  }
  if (!xf_ring.file) return 1;
  xf_file& f = *xf_ring.file;
  if (!f.read_write) {
    xf_msg(118, XF_MSG_ERROR);
    rc = 1;
    return 1;
  }
  auto target = xf_name_args(xf_operands(c.text), c.work_dir);
  if (!target) return 1;
  std::string old_name = f.name;
  bool renamed = *target != f.name;
  bool was_new = renamed && os_file_kind(*target) == os_kind::none;
  f.name = *target;
  int32_t alt = f.alt_save;
  int r = xf_save(c.work_dir, force, keep, crlf, 0, verify);
  // A name given only for this save comes back afterwards, unless the save made a new file of that name.
  if (renamed && !(r == 0 && was_new)) {
    f.name = old_name;
    if (r == 0) f.alt_save = alt;
  }
  if (r == 0 && renamed && was_new) xf_build_id_text();
  rc = r;
  if (r == 0 && close) {
    xf_close_file();
    after_close();
  }
  return 1;
}

// ON/OFF with an optional `ft name`, for the per-file settings that have filetype tables.
int file_switch(const xf_cmd_call& c, int kind, int32_t xf_file::*field) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) {
    if (!xf_ring.file) return 1;
    xf_msg(xf_ring.file->*field ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w[0] != "on" && w[0] != "off") return xf_bad_operands();
  int32_t v = w[0] == "on";
  if (w.size() == 3 && w[1] == "ft") {
    xf_ft_set(kind, w[2], {v});
    return 1;
  }
  if (w.size() != 1) return xf_bad_operands();
  if (kind == XF_FT_KEEPBLANKS) xf_ft.force_keep_blanks = v;
  if (kind == XF_FT_BINARY) xf_ft.force_binary = v;
  if (!xf_ring.file) return 1;
  xf_ring.file->*field = v;
  if (kind == XF_FT_BINARY && v) xf_ring.file->keep_blanks = 1;
  return 1;
}

// A number or "*" with an optional `ft name`, for LRecl and TRUnc.
int file_number(const xf_cmd_call& c, int kind, int32_t xf_file::*field) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) {
    if (!xf_ring.file) return 1;
    int32_t v = xf_ring.file->*field;
    if (v == 0)
      xf_msg_text("..... Is *", XF_MSG_INFO);
    else
      xf_msgf(XF_MSG_INFO, "..... Is %d", v);
    return 1;
  }
  int64_t n = 0;
  if (w[0] != "*" && (!xf_parse_digits(w[0], 18, n) || n < 1 || n > 0x7ffffffe)) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  int32_t v = static_cast<int32_t>(n);
  if (w.size() == 3 && w[1] == "ft") {
    xf_ft_set(kind, w[2], {v});
    return 1;
  }
  if (w.size() != 1) return xf_bad_operands();
  if (xf_ring.file) xf_ring.file->*field = v;
  return 1;
}

}  // namespace

int xfcm_save(const xf_cmd_call& c) { return do_save(c, false); }
int xfcm_file(const xf_cmd_call& c) { return do_save(c, true); }

int xfcm_xedit(const xf_cmd_call& c) {
  std::vector<std::string> w = split_quoted(xf_operands(c.text), false);
  if (w.empty()) return 1;
  for (const std::string& name : w)
    if (xf_open(name, c.work_dir, false) != 0) rc = 1;
  return 1;
}

int xfcm_xext(const xf_cmd_call& c) {
  static const std::pair<const char*, const char*> ext[] = {
      {"xc", ".c"},  {"xf", ".f"},    {"xfl", ".flist"},   {"xp", ".p"},  {"xm", ".mem"},  {"xt", ".txt"},
      {"xh", ".h"},  {"xi", ".dbxinit"}, {"xx", ".x"}, {"xe", ".ex"}, {"xs", ".tolva"}};
  std::vector<std::string> w = split_quoted(xf_operands(c.text), false);
  if (w.empty()) return 1;
  for (auto& [row, e] : ext)
    if (c.row_name == row) {
      if (xf_open(w[0] + e, c.work_dir, true) != 0) rc = 1;
      return 1;
    }
  return 1;
}

int xfcm_quit(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  bool force = c.row_name.starts_with("qq");
  bool pquit = c.row_name.starts_with("p");
  if (!force && xf_ring.file->alt_save != 0) {
    xf_msg(174, XF_MSG_ERROR);
    rc = pquit ? 12 : 1;
    return 1;
  }
  xf_close_file();
  after_close();
  return 1;
}

// XEDCANcel: every file without changes leaves the ring; the current one stays current if it has changes.
int xfcm_xedcancel(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  xf_file* keep = xf_ring.file;
  for (int32_t i = xf_file_count() - 1; i >= 0; --i) {
    if (xf_ring.files[i]->alt_save != 0) continue;
    if (xf_ring.files[i].get() == keep) keep = nullptr;
    xf_set_file(i);
    xf_close_file();
  }
  for (int32_t i = 0; keep && i < xf_file_count(); ++i)
    if (xf_ring.files[i].get() == keep) xf_set_file(i);
  after_close();
  return 1;
}

// PDFCANcel: the current file leaves the ring unsaved.
int xfcm_pdfcancel(const xf_cmd_call&) {
  if (!xf_ring.file) return 1;
  xf_close_file();
  after_close();
  return 1;
}

int xfcm_cancel(const xf_cmd_call& c) {
  return xf_set.mode_command_ispf ? xfcm_pdfcancel(c) : xfcm_xedcancel(c);
}

int xfcm_exit(const xf_cmd_call&) { xf_exit(); }

int xfcm_rw(const xf_cmd_call& c) {
  if (!xf_ring.file) return 1;
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msg(xf_ring.file->read_write ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w != "on" && w != "off") return xf_bad_operands();
  xf_ring.file->read_write = w == "on";
  return 1;
}

int xfcm_fileconv(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  auto word = [](int32_t unix_) { return unix_ ? "UNIX" : "WINDOWS"; };
  if (w.empty()) {
    std::string cur = xf_ring.file ? word(xf_ring.file->eol_unix) : "*";
    xf_msgf(XF_MSG_INFO, "..... Is %s %s %s", cur.c_str(), xf_set.read_eol == 2 ? "AUTO" : "UNIX",
            word(xf_set.new_file_eol));
    return 1;
  }
  if (w.size() > 3) return xf_bad_operands();
  auto valid = [](const std::string& s, std::initializer_list<const char*> ok) {
    for (const char* o : ok)
      if (s == o) return true;
    return false;
  };
  if (!valid(w[0], {"windows", "unix", "*"})) return xf_bad_operands();
  if (w.size() > 1 && !valid(w[1], {"auto", "unix", "*"})) return xf_bad_operands();
  if (w.size() > 2 && !valid(w[2], {"windows", "unix", "*"})) return xf_bad_operands();
  if (w[0] != "*" && xf_ring.file) {
    xf_ring.file->eol_unix = w[0] == "unix";
    xf_build_id_text();
  }
  if (w.size() > 1 && w[1] != "*") xf_set.read_eol = w[1] == "auto" ? 2 : 1;
  if (w.size() > 2 && w[2] != "*") xf_set.new_file_eol = w[2] == "unix";
  return 1;
}

int xfcm_autobin(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_operands(c.text)));
  if (w.empty()) {
    std::string t = xf_set.auto_binary ? "..... Is ON" : "..... Is OFF";
    char buf[8];
    for (unsigned char b : xf_set.binary_allowed) {
      std::snprintf(buf, sizeof buf, " 0x%2.2X", b);
      t += buf;
    }
    xf_msg_text(t, XF_MSG_INFO);
    return 1;
  }
  if (w[0] != "on" && w[0] != "off") return xf_bad_operands();
  std::vector<unsigned char> bytes;
  for (std::size_t i = 1; i < w.size(); ++i) {
    const std::string& s = w[i];
    // A byte is decimal, 0x.. or x'..'.
    std::string digits = s;
    int base = 10;
    if (s.size() > 3 && s[0] == 'x' && s[1] == '\'' && s.back() == '\'') {
      digits = s.substr(2, s.size() - 3);
      base = 16;
    } else if (s.starts_with("0x")) {
      digits = s.substr(2);
      base = 16;
    }
    char* end = nullptr;
    long v = digits.empty() ? -1 : std::strtol(digits.c_str(), &end, base);
    if (!end || *end || v < 0 || v > 255) return xf_bad_operands();
    bytes.push_back(static_cast<unsigned char>(v));
  }
  xf_set.auto_binary = w[0] == "on";
  if (w.size() > 1 && xf_set.auto_binary) xf_set.binary_allowed = bytes;
  return 1;
}

int xfcm_backup(const xf_cmd_call& c) {
  std::vector<std::string> w = split_quoted(xf_operands(c.text), true);
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... Is %s \"%s\" \"%s\"", xf_set.backup_on ? "ON" : "OFF", xf_set.backup_suffix.c_str(),
            xf_set.backup_suffix_reload.c_str());
    return 1;
  }
  std::string w0 = xf_lower(w[0]);
  if ((w0 != "on" && w0 != "off") || w.size() > 3) return xf_bad_operands();
  for (std::size_t i = 1; i < w.size(); ++i)
    if (w[i].empty() || w[i].find('/') != std::string::npos) return xf_bad_operands();
  xf_set.backup_on = w0 == "on";
  if (w.size() > 1) xf_set.backup_suffix = w[1];
  if (w.size() > 2) xf_set.backup_suffix_reload = w[2];
  return 1;
}

int xfcm_preservlinks(const xf_cmd_call& c) {
  std::string w = xf_lower(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msg(xf_set.preserve_links ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w != "on" && w != "off") return xf_bad_operands();
  xf_set.preserve_links = w == "on";
  return 1;
}

int xfcm_limit(const xf_cmd_call& c) {
  std::string w(xf_trim(xf_operands(c.text)));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... Is %lld", static_cast<long long>(xf_set.limit));
    return 1;
  }
  int shift = 0;
  switch (w.back()) {
    case 'k': case 'K': shift = 10; break;
    case 'm': case 'M': shift = 20; break;
    case 'g': case 'G': shift = 30; break;
    case 't': case 'T': shift = 40; break;
    default: break;
  }
  if (shift) w.pop_back();
  int64_t n = 0;
  if (!xf_parse_digits(w, 18, n) || (shift && n > (INT64_C(1) << (62 - shift)))) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 5;
    return 1;
  }
  xf_set.limit = n << shift;
  return 1;
}

int xfcm_lastfiles(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_operands(c.text));
  if (w.empty()) {
    xf_msgf(XF_MSG_INFO, "..... is %s %d %s", xf_set.last_files_on ? "ON" : "OFF", xf_set.last_files_max,
            xf_set.last_files_path.c_str());
    return 1;
  }
  std::string w0 = xf_lower(w[0]);
  if ((w0 != "on" && w0 != "off") || w.size() > 3) return xf_bad_operands();
  int64_t n = xf_set.last_files_max;
  if (w.size() > 1 && (!xf_parse_digits(w[1], 18, n) || n < 1 || n > 1000)) return xf_bad_operands();
  xf_set.last_files_on = w0 == "on";
  xf_set.last_files_max = static_cast<int32_t>(n);
  if (w.size() > 2) xf_set.last_files_path = w[2];
  return 1;
}

int xfcm_binary(const xf_cmd_call& c) { return file_switch(c, XF_FT_BINARY, &xf_file::binary); }
int xfcm_keepblanks(const xf_cmd_call& c) { return file_switch(c, XF_FT_KEEPBLANKS, &xf_file::keep_blanks); }
int xfcm_lrecl(const xf_cmd_call& c) { return file_number(c, XF_FT_LRECL, &xf_file::lrecl); }
int xfcm_trunc(const xf_cmd_call& c) { return file_number(c, XF_FT_TRUNC, &xf_file::trunc); }
