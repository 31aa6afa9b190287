// Protection of work: autosave copies after a number of changes, and the reload of a file that something else
// changed on disk.
#include "editor/autosave.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "editor/command.h"
#include "editor/fileio.h"
#include "editor/handlers.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_file.h"
#include "os/os_lock.h"
#include "os/os_path.h"
#include "os/os_save.h"

xf_autosave_state xf_autosave_st;

namespace {

std::string autosave_dir() {
  if (xf_autosave_st.dir.empty()) xf_autosave_st.dir = os_xdg_state_home(os_env_process()) + "/tolva/autosave/";
  return xf_autosave_st.dir;
}

int32_t index_of(const xf_file* f) {
  for (int32_t i = 0; i < xf_file_count(); ++i)
    if (xf_ring.files[static_cast<std::size_t>(i)].get() == f) return i;
  return -1;
}

}  // namespace

void xf_autosave_reset() { xf_autosave_st = xf_autosave_state{}; }

std::string xf_autosave_name(const xf_file& f) {
  const std::string& name = f.name;
  std::size_t slash = name.rfind('/');
  std::size_t dir_len = slash == std::string::npos ? 0 : std::max<std::size_t>(slash, 2);
  dir_len = std::min(dir_len, name.size());
  std::string dir = name.substr(0, dir_len);
  for (char& c : dir)
    if (c == '/' || c == ':') c = '_';
  std::string base = slash == std::string::npos ? name : name.substr(slash + 1);
  return autosave_dir() + "autosave" + std::to_string(os_pid()) + dir + "_" + base + "_";
}

bool xf_autosave(xf_file& f) {
  std::string dir = autosave_dir();
  os_make_dirs(dir, 0700);
  std::string path = xf_autosave_name(f);
  os_save_options opt;
  opt.target = path;
  opt.backup_on = false;
  os_save_result r = os_save(opt, [&](os_save_sink& s) {
    for (int32_t l = 0; l < f.size; ++l) {
      s.append(f.line(l));
      s.append("\n");
    }
  });
  if (!r.ok()) {
    bool open_failed = r.status == os_save_status::create_failed || r.status == os_save_status::linked_to_itself;
    xf_msgf(XF_MSG_ERROR, open_failed ? "..... Unable to open %s" : "..... Unable to write in %s", path.c_str());
    std::fprintf(stderr, "%s\n", r.reason.empty() ? std::strerror(EIO) : r.reason.c_str());
    return false;
  }
  xf_msgf(XF_MSG_INFO, "..... Autosaved as %s", path.c_str());
  return true;
}

void xf_autosave_drop(xf_file& f) {
  if (xf_autosave_st.count > 0 || os_file_kind(xf_autosave_name(f)) == os_kind::regular)
    os_remove(xf_autosave_name(f));
  f.alt_auto = 0;
}

void xf_autosave_round() {
  if (xf_autosave_st.count <= 0) return;
  for (auto& fp : xf_ring.files) {
    xf_file& f = *fp;
    if (f.alt_save != 0 && f.alt_save != f.alt_at_round) {
      f.alt_auto += std::max(0, f.alt_save - f.alt_at_round);
      if (f.alt_auto >= xf_autosave_st.count) {
        xf_autosave(f);
        f.alt_auto = 0;
      }
    }
    f.alt_at_round = f.alt_save;
  }
}

bool xf_reload_check(int32_t file, bool saving, int32_t back_to) {
  if (file < 0 || file >= xf_file_count()) return false;
  xf_file& f = *xf_ring.files[static_cast<std::size_t>(file)];
  os_file_info disk;
  if (!f.reload || f.name != f.saved_name || os_file_stat(f.name, disk) != 0 || disk.kind != os_kind::regular)
    return false;
  if (f.mtime > disk.mtime || (f.mtime == disk.mtime && f.mtime_ns >= disk.mtime_ns)) return false;
  // With changes of our own the user would be asked; until the question can be put, the local text stays and
  // this disk time is not asked about again.
  if (f.alt_save != 0 || saving) {
    xf_autosave_st.skip_once = true;
    f.mtime = disk.mtime;
    f.mtime_ns = disk.mtime_ns;
    return false;
  }
  // The reload: the old text is kept as a backup, the file read again in its place with its points and every
  // view's position.
  int32_t back_view = xf_ring.view_no;
  std::vector<std::vector<xf_view_file>> per_view;
  for (auto& v : xf_ring.views) per_view.push_back(v->per_file);
  std::vector<xf_point> points = f.points;
  std::string name = f.name;
  xf_set_file(file);
  {
    // The old text goes beside the file under the reload backup suffix.
    os_save_options opt;
    opt.target = name + xf_set.backup_suffix_reload;
    opt.backup_on = false;
    os_save(opt, [&](os_save_sink& s) {
      for (int32_t l = 0; l < f.size; ++l) {
        s.append(f.line(l));
        s.append(f.eol_unix ? "\n" : "\r\n");
      }
    });
  }
  xf_close_file();
  if (xf_open(name, xf_run.work_dir, true) != 0 || !xf_ring.file) return false;
  // The file came back at the end of the table: it moves back to its old number.
  int32_t now = xf_ring.file_no;
  std::unique_ptr<xf_file> moved = std::move(xf_ring.files[static_cast<std::size_t>(now)]);
  int32_t order = xf_ring.ring_order[static_cast<std::size_t>(now)];
  xf_ring.files.erase(xf_ring.files.begin() + now);
  xf_ring.ring_order.erase(xf_ring.ring_order.begin() + now);
  xf_ring.files.insert(xf_ring.files.begin() + file, std::move(moved));
  xf_ring.ring_order.insert(xf_ring.ring_order.begin() + file, order);
  for (std::size_t v = 0; v < xf_ring.views.size(); ++v) {
    xf_view& view = *xf_ring.views[v];
    view.per_file = per_view[v];
    for (xf_view_file& vf : view.per_file)
      vf.current_line = std::min(vf.current_line, std::max(xf_ring.files[static_cast<std::size_t>(file)]->size - 1,
                                                           xf_ring.lowest_line));
  }
  xf_set_view(back_view);
  xf_set_file(file);
  xf_file& g = *xf_ring.file;
  g.points = points;
  g.reload = 1;
  std::size_t slash = name.rfind('/');
  xf_msgf(XF_MSG_INFO, ".... Warning: reloaded \"%s\" file; previous version saved in backup format.",
          (slash == std::string::npos ? name : name.substr(slash + 1)).c_str());
  if (back_to >= 0 && back_to < xf_file_count()) xf_set_file(back_to);
  return true;
}

bool xf_reload_sweep() {
  if (xf_autosave_st.skip_once) {
    xf_autosave_st.skip_once = false;
    return false;
  }
  bool any = false;
  const xf_file* current = xf_ring.file;
  for (int32_t i = 0; i < xf_file_count(); ++i) {
    int32_t back = index_of(current);
    any = xf_reload_check(i, false, back) || any;
  }
  return any;
}

// AUtosave [OFF | n] [dir]; no operand reports.
int xfcm_autosave(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  std::string dir = autosave_dir();
  std::string shown = dir.size() > 1 && dir.back() == '/' ? dir.substr(0, dir.size() - 1) : dir;
  if (w.empty()) {
    if (xf_autosave_st.count > 0)
      xf_msgf(XF_MSG_INFO, "..... is %d %s", xf_autosave_st.count, shown.c_str());
    else
      xf_msgf(XF_MSG_INFO, "..... is OFF %s", shown.c_str());
    return 1;
  }
  if (w.size() > 2) return xf_bad_operands();
  int32_t n = 0;
  if (xf_lower(w[0]) != "off" && (!xf_parse_count(w[0], n) || n < 1)) return xf_bad_operands();
  if (w.size() == 2) {
    std::string d = w[1][0] == '/' ? w[1] : xf_run.work_dir + "/" + w[1];
    if (os_file_kind(d) != os_kind::directory) {
      xf_msg(8, XF_MSG_ERROR);
      rc = 1;
      return 1;
    }
    xf_autosave_st.dir = d.back() == '/' ? d : d + "/";
  }
  xf_autosave_st.count = n;
  for (auto& f : xf_ring.files) f->alt_at_round = f->alt_save;
  return 1;
}

// RELoad [ON|OFF [*]]: the reload check of the current file (and, with *, of new files).
int xfcm_reload(const xf_cmd_call& c) {
  std::vector<std::string> w = xf_tokens(xf_lower(xf_trim(xf_operands(c.text))));
  if (w.empty()) {
    if (xf_ring.file) xf_msg(xf_ring.file->reload ? 9 : 10, XF_MSG_INFO);
    return 1;
  }
  if (w.size() > 2 || (w[0] != "on" && w[0] != "off") || (w.size() == 2 && w[1] != "*")) return xf_bad_operands();
  int32_t on = w[0] == "on";
  if (w.size() == 2) xf_set.reload_default = on;
  if (!xf_ring.file) return 1;
  xf_ring.file->reload = on;
  if (on) xf_reload_check(xf_ring.file_no, false, -1);
  return 1;
}
