// The screen library's lifecycle: state, status and error text, pages, queries and the library-wide settings.
#include <cstdarg>
#include <cstdio>

#include "screen/fs_state.h"

fs_lib g_fs;

namespace {

constexpr size_t kErrorMax = 160;
constexpr int kPageGrowth = 10;

constexpr uint32_t kStartRgb[64] = {
    0xffffff, 0x0000ff, 0xff0000, 0xc04000, 0x00ff00, 0x0073ff, 0xc8c800, 0x8000b2, 0xffffff, 0x800080, 0x00b5b5,
    0x808000, 0x422d13, 0x854a00, 0xb97d6b, 0x7fffd4, 0x04825c, 0xa52a2a, 0x5f9ea0, 0x0ab839, 0xd2691e, 0xff7f50,
    0xb8860b, 0x556b2f, 0x483d8b, 0x2f4f4f, 0xff1493, 0x696969, 0xb22222, 0x228b22, 0xffd700, 0xff69b4, 0xcd5c5c,
    0xf0e68c, 0x7cfc00, 0xaa3afc, 0x00caca, 0xeedd82, 0xdf1aae, 0x20b2aa, 0x8470ff, 0x326455, 0x3cb371, 0x00fa9a,
    0x191970, 0xffe4b5, 0x6b8e23, 0xda70d6, 0xeee8aa, 0xafeeee, 0xbc8f8f, 0x4169e1, 0x8b4513, 0xfa8072, 0xa0522d,
    0x6a5acd, 0x708090, 0x00ff7f, 0x4682b4, 0x207068, 0x082090, 0xf5deb3, 0xffffff, 0x000000};

// A display that shows nothing and has no input: the read on it ends with ASR_QUIT.
class null_host final : public fs_host {
 public:
  bool start(int, char**, std::string&) override { return true; }
  void stop() override {}
  fs_geometry geometry() const override { return {}; }
  void paint(int, int, std::span<const fs_hcell>) override {}
  void clear() override {}
  void cursor(int, int) override {}
  fs_wait wait(fs_event&, int) override { return fs_wait::quit; }
  void beep() override {}
  void flash() override {}
  void suspend(bool) override {}
  unsigned caps() const override { return 0; }
  void palette(std::span<const uint32_t, 64>) override {}
  void message(std::string_view) override {}
  int popup(std::span<const std::string>, int, int) override { return -1; }
  void show(bool) override {}
};

null_host g_null_host;

fs_page* find_page(int id) {
  for (auto& p : g_fs.pages)
    if (p->id == id) return p.get();
  return nullptr;
}

void make_page(int id) {
  auto p = std::make_unique<fs_page>();
  p->id = id;
  size_t n = static_cast<size_t>(g_fs.nb_cells);
  p->cellmap.assign(n, 0);
  p->chars.assign(n, 32);
  p->hlt.assign(n, 0);
  p->color.assign(n, 63);
  p->intens.assign(n, 1);
  if (g_fs.pages.size() == g_fs.pages.capacity()) g_fs.pages.reserve(g_fs.pages.size() + kPageGrowth);
  g_fs.pages.push_back(std::move(p));
}

void select_page(fs_page* p) {
  if (g_fs.cur == p) return;
  g_fs.cur = p;
  g_as.armed = 0;  // a press armed on one page is not released on another
  g_as.selecting = false;
  g_fs.repaint = true;
  g_fs.full_repaint = true;
}

void start_colours() {
  for (int i = 0; i < 64; ++i) g_fs.map[i] = g_fs.rev[i] = i;
  g_fs.map[0] = 4;
  g_fs.map[7] = 63;
  g_fs.map[63] = 7;
  g_fs.rev[7] = 63;
  g_fs.rev[63] = 7;
  for (int i = 0; i < 64; ++i) g_fs.rgb[i] = kStartRgb[i];
  g_fs.colours_pending = true;
}

// A 0/1 setting with its own refusal text.
bool set_flag(int& slot, int v, const char* refusal) {
  if (v != 0 && v != 1) return fs_fail(1, "%s", refusal);
  slot = v;
  fs_ok();
  return true;
}

}  // namespace

bool fs_fail(int status, const char* fmt, ...) {
  char buf[512];
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  g_fs.status = status;
  g_fs.error.assign(buf);
  if (g_fs.error.size() > kErrorMax) g_fs.error.resize(kErrorMax);
  if (!g_fs.quiet && g_fs.host) g_fs.host->message(g_fs.error);
  return false;
}

bool fs_need_init(const char* name) {
  if (g_fs.inited && g_fs.cur) return true;
  return fs_fail(1, "%s : call fsinit() first", name);
}

void fs_ok() { g_fs.status = 0; }

void fs_sethost(fs_host* host) { g_fs.host = host ? host : &g_null_host; }

void fs_reset() {
  if (g_fs.inited && g_fs.host) g_fs.host->stop();
  fs_host* host = g_fs.host;
  g_fs = fs_lib{};
  g_fs.host = host ? host : &g_null_host;
  start_colours();
  as_reset_state();
}

int fsstatus() { return g_fs.status; }
std::string_view fserror() { return g_fs.error; }

void fsinit(int argc, char** argv) {
  if (!g_fs.host) g_fs.host = &g_null_host;
  if (g_fs.inited) {
    fs_fail(1, "fsinit : secondary entrance forbidden");
    return;
  }
  std::string why;
  if (!g_fs.host->start(argc, argv, why)) {
    fs_fail(1, "fsinit : %s", why.c_str());
    return;
  }
  fs_geometry g = g_fs.host->geometry();
  if (int64_t{g.lines} * g.cols > FS_MAX_CELLS) {
    g_fs.host->stop();
    fs_fail(1, "fsinit : a screen of %d x %d cells is too large", g.lines, g.cols);
    return;
  }
  g_fs.nb_lines = g.lines < 1 ? 1 : g.lines;
  g_fs.nb_cols = g.cols < 1 ? 1 : g.cols;
  g_fs.nb_cells = g_fs.nb_lines * g_fs.nb_cols;
  g_fs.inited = true;
  if (!g_as.loaded) as_reset_state();
  start_colours();
  g_fs.host->show(g_fs.view);
  g_fs.shadow.assign(static_cast<size_t>(g_fs.nb_cells), fs_shadow_cell{});
  g_fs.full_repaint = true;
  make_page(0);
  g_fs.cur = g_fs.pages.back().get();
  g_fs.repaint = true;
  fs_ok();
}

void fsterm() {
  if (!fs_need_init("fsterm")) return;
  g_fs.pages.clear();
  g_fs.cur = nullptr;
  g_as.last_page = nullptr;
  make_page(0);
  g_fs.cur = g_fs.pages.back().get();
  g_fs.host->clear();
  fs_forget_shadow();
  g_fs.repaint = true;
  fs_ok();
}

void fspcrt(int page, int, int, int) {
  if (!fs_need_init("fspcrt")) return;
  if (page < 0) {
    fs_fail(1, "fspcrt: Page %d invalid.", page);
    return;
  }
  if (find_page(page)) {
    fs_fail(2, "fspcrt: Page %d already exists.", page);
    return;
  }
  make_page(page);
  select_page(g_fs.pages.back().get());
  fs_ok();
}

void fspdel(int page) {
  if (!fs_need_init("fspdel")) return;
  fs_page* p = find_page(page);
  if (!p) {
    fs_fail(28, "fspdel: Page %d not found.", page);
    return;
  }
  if (page == 0) {
    fs_fail(1, "fspdel : page 0 cannot be destroyed");
    return;
  }
  if (g_fs.cur == p) select_page(find_page(0));
  if (g_as.last_page == p) g_as.last_page = nullptr;
  if (g_fs.window_page == page) g_fs.window_page = -1;
  std::erase_if(g_fs.pages, [p](const std::unique_ptr<fs_page>& q) { return q.get() == p; });
  fs_ok();
}

void fspsel(int page) {
  if (!fs_need_init("fspsel")) return;
  fs_page* p = find_page(page);
  if (!p) {
    fs_fail(28, "fspdel: Page %d not found.", page);
    return;
  }
  select_page(p);
  fs_ok();
}

int fscurpage() { return g_fs.cur ? g_fs.cur->id : -1; }

void fsqury(int code, int, int count, int* out) {
  if (!fs_need_init("fsqury")) return;
  if (code != 0 && code != 4) {
    fs_fail(1, "fsqury : Invalid code");
    return;
  }
  if ((code == 0 && count != 4) || (code == 4 && count != 8) || !out) {
    fs_fail(2, " fsqury: Invalid count");
    return;
  }
  if (code == 0) {
    out[0] = out[1] = 0;
    out[2] = g_fs.nb_lines;
    out[3] = g_fs.nb_cols;
  } else {
    fs_geometry g = g_fs.host->geometry();
    int v[8] = {g.desk_w, g.desk_h, g.cell_w, g.cell_h, g.left, g.top, g.client_w, g.client_h};
    for (int i = 0; i < 8; ++i) out[i] = v[i];
  }
  fs_ok();
}

void fsalrm() {
  if (!fs_need_init("fsalrm")) return;
  ++g_fs.cur->alarms;
  fs_ok();
}

void asfview(int on) {
  if (on != 0 && on != 1) {
    fs_fail(1, "asfview : invalid parameter");
    return;
  }
  g_fs.view = on != 0;
  if (g_fs.inited) g_fs.host->show(g_fs.view);
  fs_ok();
}

void asfquiet(int flag) {
  g_fs.quiet = flag != 0;
  fs_ok();
}

// --- settings ---

void asfacol(int on) {
  if (set_flag(g_fs.acol, on, "asfacol : invalid argument")) g_fs.colours_pending = true;
}

void asfmap(int logical, int red, int green, int blue) {
  if (!fs_need_init("asfmap")) return;
  if (logical < 0 || red < 0 || red > 255 || green < 0 || green > 255 || blue < 0 || blue > 255) {
    fs_fail(1, "asfmap : invalid colormap entry");
    return;
  }
  int index = g_fs.rev[logical % 64];
  g_fs.rgb[index] = static_cast<uint32_t>(red << 16 | green << 8 | blue);
  if (g_fs.acol) g_fs.colours_pending = true;
  fs_ok();
}

void asfrem(int mode) {
  if (mode < 0 || mode > 2) {
    fs_fail(1, "asfrem : invalid parameter");
    return;
  }
  g_fs.rem = mode;
  fs_ok();
}

void asfup(int on) { set_flag(g_fs.up, on, "asfup : invalid flagg"); }
void asfupm(int on) { set_flag(g_fs.upm, on, "asfupm : invalid flagg"); }
void asfskip(int on) { set_flag(g_fs.skip, on, "asfmod : invalid flagg"); }
void asfint2(int on) { set_flag(g_fs.int2, on, "asfint2 : invalid flagg"); }
void asfblk(int on) { set_flag(g_fs.blk, on, "asfblk : invalid mode"); }

void asfapl(int on) {
  if (set_flag(g_fs.apl, on, "asfapl : invalid mode") && g_fs.inited) fs_draw_indicators();
}

void asfrepeat(int on) { set_flag(g_fs.repeat, on, "asfrepeat: invalid parameter"); }

void asfdelay(int key_first, int key_next, int mouse_first, int mouse_next) {
  int v[4] = {key_first, key_next, mouse_first, mouse_next};
  for (int i = 0; i < 4; ++i) g_fs.delays[i] = v[i] < 0 ? 0 : v[i];
  fs_ok();
}

void asqdelay(int out[4]) {
  for (int i = 0; i < 4; ++i) out[i] = g_fs.delays[i];
  fs_ok();
}

void asfkeep() {
  g_fs.keep = 1;
  fs_ok();
}

void asflclk(int on) {
  g_fs.lclk = on != 0;
  if (on) g_fs.rclk = 0;
  fs_ok();
}

void asfrclk(int on) {
  g_fs.rclk = on != 0;
  if (on) g_fs.lclk = 0;
  fs_ok();
}

void asfrdonly(int on) {
  bool change = g_fs.rdonly != (on != 0);
  g_fs.rdonly = on != 0;
  if (change && g_fs.inited) fs_draw_indicators();
  fs_ok();
}

void asftrack(int on) {
  g_fs.track = on != 0;
  if (g_fs.cur) {  // moves are counted from where the cursor is now
    g_as.track_line = g_fs.cur->cur_line;
    g_as.track_col = g_fs.cur->cur_col;
  }
  fs_ok();
}

void asfveto(int mode) {
  if (mode != 0 && mode != 1 && mode != 2 && mode != 4 && mode != 5) {
    fs_fail(1, "asfveto : Invalid parameter");
    return;
  }
  g_fs.veto = mode;
  fs_ok();
}

void asflinecol(int on) {
  g_fs.linecol = on != 0;
  fs_ok();
}

void fssuspend(int on) {
  if (!fs_need_init("fssuspend")) return;
  g_fs.host->suspend(on != 0);
  if (!on) {
    g_fs.full_repaint = true;
    g_fs.repaint = true;
  }
  fs_ok();
}
