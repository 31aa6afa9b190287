// Reading files into the ring and writing them back.
#include "editor/fileio.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "editor/autosave.h"
#include "editor/command.h"
#include "editor/filetype.h"
#include "editor/macros.h"
#include "editor/messages.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_path.h"
#include "os/os_save.h"
#include "os/os_time.h"

namespace {

constexpr int32_t max_count = 0x7fffffff;
constexpr std::size_t read_chunk = 1 << 20;

bool begins_relative(std::string_view n) {
  return n.starts_with("./") || n.starts_with("../") || n.starts_with("~") || n == "." || n == "..";
}

std::string join(std::string_view dir, std::string_view name) {
  std::string p(dir);
  if (p.empty() || p.back() != '/') p += '/';
  p += name;
  return p;
}

// Bytes of a name that make it invalid for a new file.
bool bad_new_name(std::string_view base) { return base.find_first_of("\"*<>?|") != std::string_view::npos; }

struct reader_messages {
  std::vector<std::string> texts;
};
reader_messages pending_reader_messages;

// Stores one line read from disk: CR and blank rules, then a heap copy with NUL bytes shown as line feeds.
struct line_builder {
  xf_file& f;
  int32_t& grow_by;
  bool strip_cr;
  bool any_cr = false;

  int store(const char* p, std::size_t n, int32_t keep) {
    if (f.size >= f.capacity - 1) {
      xf_grow(grow_by);
      if (grow_by < 100000000) grow_by = std::min<int64_t>(static_cast<int64_t>(grow_by) * 2, 100000000);
    }
    xf_reserve_rows(f, f.size + 1);
    if (strip_cr && n > 0 && p[n - 1] == '\r') {
      while (n > 0 && p[n - 1] == '\r') --n;
      any_cr = true;
    }
    if (!f.keep_blanks)
      while (static_cast<int32_t>(n) > keep && p[n - 1] == ' ') --n;
    xf_text t = xf_new_text(p, n);
    for (char* z = static_cast<char*>(std::memchr(t.get(), 0, n)); z;
         z = static_cast<char*>(std::memchr(z + 1, 0, n - (z + 1 - t.get()))))
      *z = '\n';
    f.text[f.size] = std::move(t);
    f.len[f.size] = static_cast<int32_t>(n);
    f.select[f.size] = 0;
    f.size++;
    if (f.size == max_count) return XF_FIND_TOO_MANY_LINES;
    return XF_FIND_OK;
  }
};

void clear_lines(xf_file& f) {
  for (int32_t i = 0; i < f.size; ++i) f.text[i].reset();
  f.size = 0;
}

// The time text of a last-files line: "Nov 23, 2026   12:04:47".
std::string lastfiles_time() {
  static const char* months[] = {"January", "February", "March",     "April",   "May",      "June",
                                 "July",    "August",   "September", "October", "November", "December"};
  os_local t = os_local_time(os_now());
  char buf[64];
  std::snprintf(buf, sizeof buf, "%s %d, %d   %2.2d:%2.2d:%2.2d", months[t.month - 1], t.day, t.year, t.hour,
                t.minute, t.second);
  return buf;
}

}  // namespace

void xf_build_id_text() {
  xf_file& f = *xf_ring.file;
  std::string id = f.name;
  if (f.eol_unix == 1 && xf_set.new_file_eol == 0 && id.size() < 997) id += " [U]";
  if (f.eol_unix == 0 && xf_set.new_file_eol == 1 && id.size() < 997) id += " [W]";
  if (id.size() > 1000) id.resize(1000);
  f.id_text = std::move(id);
}

int xf_find(std::string_view name, std::string_view dir, bool for_new, std::string& out) {
  if (name.size() > xf_max_path) return XF_FIND_TOO_LONG;
  os_env env = os_env_process();
  if (name.starts_with("/") || begins_relative(name)) {
    out = os_absolute(name, xf_run.work_dir, env);
    if (out.size() > xf_max_path) return XF_FIND_TOO_LONG;
    os_kind k = os_file_kind(out);
    if (k == os_kind::directory) return XF_FIND_NOT_EDITABLE;
    return XF_FIND_OK;
  }
  std::string first = os_absolute(join(dir, name), xf_run.work_dir, env);
  if (first.size() > xf_max_path) return XF_FIND_TOO_LONG;
  if (os_file_kind(first) == os_kind::regular) {
    out = first;
    return XF_FIND_OK;
  }
  for (const std::string& d : xf_run.path_dirs) {
    std::string p = join(d, name);
    if (p.size() > xf_max_path) return XF_FIND_TOO_LONG;
    if (os_file_kind(p) == os_kind::regular) {
      out = os_absolute(p, xf_run.work_dir, env);
      return XF_FIND_OK;
    }
  }
  out = first;
  if (for_new) return os_file_kind(first) == os_kind::directory ? XF_FIND_NOT_EDITABLE : XF_FIND_OK;
  return XF_FIND_NOT_FOUND;
}

int xftr1(const std::string& path) {
  xf_file& f = *xf_ring.file;
  pending_reader_messages.texts.clear();
  os_reader in;
  if (in.open(path) != 0) return XF_FIND_READ_FAILED;
  f.eol_unix = 1;
  clear_lines(f);
  int32_t grow_by = std::max<int32_t>(xf_ring.initial_capacity, 1000);
  std::vector<char> buf(read_chunk);
  std::string partial;  // a line that runs across reads
  bool first = true, last_was_lf = false, any_byte = false;
  line_builder lb{f, grow_by, xf_set.read_eol == 2 && !f.binary};
  while (true) {
    std::ptrdiff_t got = in.read(buf.data(), buf.size());
    if (got < 0) {
      clear_lines(f);
      return XF_FIND_READ_FAILED;
    }
    if (got == 0) break;
    any_byte = true;
    if (first && xf_set.auto_binary && !f.binary) {
      std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(got), 1024);
      for (std::size_t i = 0; i < n; ++i) {
        unsigned char b = static_cast<unsigned char>(buf[i]);
        if (b >= 32 || b == 10) continue;
        if (std::find(xf_set.binary_allowed.begin(), xf_set.binary_allowed.end(), b) != xf_set.binary_allowed.end())
          continue;
        f.binary = 1;
        f.keep_blanks = 1;
        lb.strip_cr = false;
        char msg[1400];
        std::snprintf(msg, sizeof msg, "..... Binary mode (Found x'%2.2X') set for file %s", b, path.c_str());
        pending_reader_messages.texts.push_back(msg);
        break;
      }
    }
    first = false;
    const char* p = buf.data();
    const char* end = p + got;
    while (p < end) {
      const char* nl = static_cast<const char*>(std::memchr(p, '\n', end - p));
      if (!nl) {
        if (partial.size() + (end - p) >= static_cast<std::size_t>(max_count)) {
          clear_lines(f);
          return XF_FIND_LINE_TOO_LONG;
        }
        partial.append(p, end);
        last_was_lf = false;
        break;
      }
      int st;
      if (partial.empty()) {
        st = lb.store(p, nl - p, 1);
      } else {
        partial.append(p, nl);
        st = lb.store(partial.data(), partial.size(), 1);
        partial.clear();
      }
      if (st != XF_FIND_OK) {
        clear_lines(f);
        return st;
      }
      p = nl + 1;
      last_was_lf = true;
    }
  }
  if (!partial.empty() || (any_byte && !last_was_lf)) {
    int st = lb.store(partial.data(), partial.size(), 2);
    if (st != XF_FIND_OK) {
      clear_lines(f);
      return st;
    }
  } else if (last_was_lf && f.binary) {
    lb.store("", 0, 0);
  }
  if (lb.any_cr) f.eol_unix = 0;
  if (f.size == 1 && f.len[0] == 1 && f.text[0][0] == 26 && xf_set.read_eol == 2 && !f.binary) {
    f.text[0][0] = 0;
    f.len[0] = 0;
    f.eol_unix = 0;
  }
  if (!any_byte) {
    if (xf_ring.lowest_line == 0) lb.store("", 0, 0);
    f.eol_unix = xf_set.new_file_eol;
  }
  if (any_byte && f.size == 1 && !last_was_lf && xf_set.new_file_eol == 0 && !f.binary) f.eol_unix = 0;
  if (f.binary) f.eol_unix = 1;

  // Read-only marks.
  std::string base(os_base_name(path));
  switch (os_read_only_reason(path, in.fd())) {
    case os_ro_reason::writable:
      break;
    case os_ro_reason::read_only:
      f.read_write = 0;
      pending_reader_messages.texts.push_back("..... File \"" + base + "\" is read-only - RW OFF");
      break;
    case os_ro_reason::in_use:
      f.read_write = 0;
      pending_reader_messages.texts.push_back("..... File in use by another program: loaded read-only (RW OFF)");
      break;
    case os_ro_reason::no_write_access:
      f.read_write = 0;
      pending_reader_messages.texts.push_back("..... No write access to the file: loaded read-only (RW OFF)");
      break;
    case os_ro_reason::other:
      f.read_write = 0;
      pending_reader_messages.texts.push_back("..... File loaded read-only (RW OFF)");
      break;
  }
  return XF_FIND_OK;
}

int xf_open(std::string_view name_in, std::string_view work_dir, bool no_alternative) {
  std::string name(os_to_slashes(name_in));
  if (name.size() >= xf_max_name) {
    xf_msg(2, XF_MSG_ERROR);
    return 1;
  }
  // A bare name is first looked for among the files of the ring.
  if (name.find('/') == std::string::npos && !begins_relative(name)) {
    for (int32_t i = 0; i < xf_file_count(); ++i)
      if (os_base_name(xf_ring.files[i]->name) == name) {
        xf_goto_file(i);
        return 0;
      }
  }
  std::string path;
  int st = xf_find(name, work_dir, false, path);
  if (st == XF_FIND_NOT_FOUND && !no_alternative) {
    std::string ext = xf_ft_extension(name);
    if (ext == "c" || ext == "cpp") {
      std::string other = name.substr(0, name.size() - ext.size()) + (ext == "c" ? "cpp" : "c");
      std::string alt;
      if (xf_find(other, work_dir, false, alt) == XF_FIND_OK) {
        name = other;
        path = alt;
        st = XF_FIND_OK;
      }
    }
  }
  if (st == XF_FIND_TOO_LONG) {
    xf_msg(2, XF_MSG_ERROR);
    return 1;
  }
  if (st == XF_FIND_NOT_EDITABLE) {
    xf_msg(1, XF_MSG_ERROR);
    return 1;
  }
  if (st != XF_FIND_OK && st != XF_FIND_NOT_FOUND) {
    xf_msg(0, XF_MSG_ERROR);
    return 1;
  }
  if (st == XF_FIND_NOT_FOUND) xf_find(name, work_dir, true, path);
  // The same file reached by another name is the file already in the ring.
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[i]->name == path) {
      xf_goto_file(i);
      return 0;
    }
  std::string real;
  if (os_realpath(path, real) == 0) {
    for (int32_t i = 0; i < xf_file_count(); ++i) {
      std::string other;
      if (os_realpath(xf_ring.files[i]->name, other) == 0 && other == real) {
        xf_goto_file(i);
        return 0;
      }
    }
  }
  os_file_info info;
  int err = os_file_stat(path, info);
  bool exists = err == 0 && info.kind != os_kind::none;
  if (!exists && !info.symlink) {
    std::string_view base = os_base_name(path);
    if (bad_new_name(base)) {
      xf_msgf(XF_MSG_ERROR, "..... File \"%s\": not a valid file name", std::string(base).c_str());
      return 1;
    }
    xf_ring.initial_capacity = 1000;
  } else if (!exists) {
    xf_ring.initial_capacity = 1000;
  } else {
    if (info.kind == os_kind::directory || info.kind == os_kind::other) {
      xf_msg(1, XF_MSG_ERROR);
      return 1;
    }
    if (xf_set.limit > 0 && info.size > xf_set.limit) {
      xf_msg(176, XF_MSG_ERROR);
      return 1;
    }
    int64_t cap = info.size / 20;
    xf_ring.initial_capacity = static_cast<int32_t>(std::clamp<int64_t>(cap, 1000, 100000000));
  }
  xf_new_file();
  xf_file& f = *xf_ring.file;
  f.name = path;
  f.name.reserve(path.size() + 8);  // room for ".check" on the emergency road
  xf_ft_apply(f);
  if (exists) {
    int rst = xftr1(path);
    if (rst != XF_FIND_OK) {
      xf_close_file();
      switch (rst) {
        case XF_FIND_NOT_EDITABLE: xf_msg(1, XF_MSG_ERROR); break;
        case XF_FIND_LINE_TOO_LONG: xf_msgf(XF_MSG_ERROR, "..... Line in file is larger than %d bytes.", 2147483646); break;
        case XF_FIND_TOO_MANY_LINES: xf_msgf(XF_MSG_ERROR, "..... More than %d lines in file.", 2147483646); break;
        case XF_FIND_TOO_LONG: xf_msg(2, XF_MSG_ERROR); break;
        default: xf_msg(153, XF_MSG_ERROR); break;
      }
      return 1;
    }
    os_file_info now;
    if (os_file_stat(path, now) == 0) {
      f.mtime = now.mtime;
      f.mtime_ns = now.mtime_ns;
    }
  } else {
    f.eol_unix = f.binary ? 1 : xf_set.new_file_eol;
    if (xf_ring.lowest_line == 0) {
      xf_reserve_rows(f, 1);
      f.text[0] = xf_new_text("", 0);
      f.len[0] = 0;
      f.size = 1;
    }
  }
  f.saved_name = f.name;
  xf_build_id_text();
  xf_current_line() = xf_ring.lowest_line;
  if (xf_macro_find(XF_MACRO_REXX, "reprofile") >= 0) {
    xfcom2("macro reprofile", work_dir);
  }
  for (const std::string& m : pending_reader_messages.texts) xf_msg_text(m, XF_MSG_INFO);
  pending_reader_messages.texts.clear();
  xf_lastfiles_update();
  return 0;
}

namespace {

// Streams the file image to the save sink, a megabyte at a time.
void produce_image(os_save_sink& sink, const xf_file& f, bool crlf, bool verify) {
  std::string out;
  out.reserve(read_chunk + 4096);
  const xf_view_file* vf = verify ? &xf_ring.view->per_file[xf_ring.file_no] : nullptr;
  for (int32_t i = 0; i < f.size && !sink.failed(); ++i) {
    std::string_view s = f.line(i);
    std::size_t start = out.size();
    if (vf) {
      int32_t first = vf->verify_first - 1;
      int32_t last = vf->verify_last == 0x7ffffffe ? static_cast<int32_t>(s.size()) : vf->verify_last;
      for (int32_t c = first; c < last; ++c) out += c < static_cast<int32_t>(s.size()) ? s[c] : ' ';
    } else {
      if (!f.keep_blanks)
        while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
      if (crlf && !s.empty() && s.back() == '\r') s.remove_suffix(1);
      std::size_t limit = s.size();
      if (f.lrecl > 0) limit = std::min<std::size_t>(limit, f.lrecl);
      if (f.trunc > 0) limit = std::min<std::size_t>(limit, f.trunc);
      s = s.substr(0, limit);
      out.append(s);
      if (f.lrecl > 0 && out.size() - start < static_cast<std::size_t>(f.lrecl))
        out.append(f.lrecl - (out.size() - start), ' ');
    }
    // Line feeds inside a line stand for NUL bytes on disk (rare: look before walking the bytes).
    if (std::memchr(out.data() + start, '\n', out.size() - start))
      std::replace(out.begin() + static_cast<std::ptrdiff_t>(start), out.end(), '\n', '\0');
    bool last = i == f.size - 1;
    if (!(last && f.binary)) {
      if (crlf) {
        if (last && out.size() > start && out.back() == 26)
          out += '\n';
        else
          out += "\r\n";
      } else {
        out += '\n';
      }
    }
    if (out.size() >= read_chunk) {
      sink.append(out);
      out.clear();
    }
  }
  if (!out.empty()) sink.append(out);
}

}  // namespace

int xf_write(int crlf, int verify) {
  xf_file& f = *xf_ring.file;
  bool use_crlf = crlf || f.eol_unix == 0;
  os_file_info info;
  if (os_file_stat(f.name, info) == 0 && info.kind == os_kind::regular && !info.owner_write && !xf_run.crashing) {
    // Removing the protection needs the user's yes; with no screen to ask on, the save is declined.
    std::fprintf(stderr, "The file\n%s\nis write-protected.\nDo you want to remove the protection?\n",
                 f.name.c_str());
    return 3;
  }
  os_save_options opt;
  opt.target = f.name;
  opt.backup_on = xf_set.backup_on != 0;
  opt.backup_suffix = xf_set.backup_suffix;
  opt.preserve_links = xf_set.preserve_links != 0;
  opt.crashing = xf_run.crashing != 0;
  os_save_result r = os_save(opt, [&](os_save_sink& sink) { produce_image(sink, f, use_crlf, verify != 0); });
  if (r.backup_err)
    std::fprintf(stderr, "save: Unable to rename %s into %s (%s)\n", r.written.c_str(),
                 (r.written + xf_set.backup_suffix).c_str(), r.backup_reason.c_str());
  switch (r.status) {
    case os_save_status::ok:
      f.mtime = r.mtime;
      f.mtime_ns = r.mtime_ns;
      return 0;
    case os_save_status::linked_to_itself:
      std::fprintf(stderr, "file %s linked to itself\n", f.name.c_str());
      return 2;
    case os_save_status::create_failed:
      std::fprintf(stderr, "save: Unable to write %s (%s)\n", r.written.empty() ? f.name.c_str() : r.written.c_str(),
                   r.reason.c_str());
      return 2;
    default:
      std::fprintf(stderr, "tolva: save : error occured while writing\n%s\n", r.reason.c_str());
      return 2;
  }
}

int xf_save(std::string_view, int force, int keep_date, int crlf, int, int verify) {
  if (!xf_ring.file) return 0;
  xf_file& f = *xf_ring.file;
  if (f.name != f.saved_name && !force && !xf_run.crashing && os_file_kind(f.name) != os_kind::none) return 2;
  os_file_info before;
  bool had = os_file_stat(f.name, before) == 0 && before.kind == os_kind::regular;
  int r = xf_write(crlf, verify);
  if (r == 3) return 3;
  if (r != 0) {
    xf_msg(21, XF_MSG_ERROR);
    return 1;
  }
  f.saved_name = f.name;
  f.alt_save = 0;
  if (xf_set.save_clear_undo) xf_undo_clear(f);
  xf_autosave_drop(f);
  if (keep_date && had) {
    os_set_times(f.name, before.atime, before.atime_ns, before.mtime, before.mtime_ns);
    f.mtime = before.mtime;
    f.mtime_ns = before.mtime_ns;
  }
  int kind = xf_macro_kind_of(f.name);
  if (kind >= 0) xf_macro_add(f.name, kind);
  return 0;
}

std::optional<std::string> xf_name_args(std::string_view operands, std::string_view work_dir) {
  std::vector<std::string> w;
  std::size_t i = 0;
  while (i < operands.size()) {
    while (i < operands.size() && operands[i] == ' ') ++i;
    std::size_t s = i;
    while (i < operands.size() && operands[i] != ' ') ++i;
    if (i > s) w.emplace_back(operands.substr(s, i - s));
  }
  const std::string& cur = xf_ring.file->name;
  if (w.empty()) return cur;
  // A single operand that is a whole file name ("new.txt", "dir/new.txt") names the file directly.
  if (w.size() == 1 && w[0] != "=" && w[0].find_first_of("./") != std::string::npos) {
    std::string full = w[0].find('/') != std::string::npos ? os_absolute(w[0], work_dir, os_env_process())
                                                            : std::string(os_dir_part(cur)) + w[0];
    if (full.size() >= xf_max_name) {
      xf_msg(2, XF_MSG_ERROR);
      rc = 1;
      return std::nullopt;
    }
    return full;
  }
  if (w.size() > 3) {
    xf_msg(16, XF_MSG_ERROR);
    rc = 1;
    return std::nullopt;
  }
  std::string dir(os_dir_part(cur));
  std::string base(os_base_name(cur));
  std::size_t dot = base.rfind('.');
  std::string fn = dot == std::string::npos ? base : base.substr(0, dot);
  std::string ft = dot == std::string::npos ? "" : base.substr(dot + 1);
  if (w[0] != "=") fn = w[0];
  if (w.size() > 1 && w[1] != "=") ft = w[1];
  if (w.size() > 2 && w[2] != "=") dir = os_absolute(w[2], work_dir, os_env_process()) + "/";
  std::string full = dir + fn + (ft.empty() ? "" : "." + ft);
  if (full.size() >= xf_max_name) {
    xf_msg(2, XF_MSG_ERROR);
    rc = 1;
    return std::nullopt;
  }
  return full;
}

void xf_lastfiles_update() {
  if (!xf_set.last_files_on || !xf_ring.file) return;
  os_env env = os_env_process();
  std::string path = os_expand_tilde(xf_set.last_files_path, env);
  std::string data;
  os_read_file(path, data);
  struct entry {
    std::string name, time;
  };
  std::vector<entry> entries;
  std::size_t i = 0;
  while (i < data.size()) {
    std::size_t e = data.find('\n', i);
    std::string line = data.substr(i, e == std::string::npos ? std::string::npos : e - i);
    i = e == std::string::npos ? data.size() : e + 1;
    if (line.size() < 2 || line[0] != '"') continue;
    std::size_t q = line.find('"', 1);
    if (q == std::string::npos) continue;
    std::string name = line.substr(1, q - 1);
    std::size_t t = line.find_first_not_of(' ', q + 1);
    entries.push_back({name, t == std::string::npos ? "" : line.substr(t)});
  }
  const std::string& me = xf_ring.file->name;
  std::vector<entry> out{{me, lastfiles_time()}};
  for (auto& en : entries)
    if (en.name != me && static_cast<int32_t>(out.size()) < xf_set.last_files_max) out.push_back(en);
  std::size_t width = 0;
  for (auto& en : out) width = std::max(width, en.name.size() + 2);
  std::string text;
  for (auto& en : out) {
    std::string q = "\"" + en.name + "\"";
    text += q;
    text.append(width + 3 - q.size(), ' ');
    text += en.time;
    text += '\n';
  }
  os_save_options opt;
  opt.target = path;
  opt.backup_on = false;
  os_save(opt, [&](os_save_sink& sink) { sink.append(text); });
}
