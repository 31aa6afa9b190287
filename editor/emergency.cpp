// The emergency road. Everything reached from a signal handler here is async-signal-safe: no allocation,
// no stdio, only the os_sa_ helpers and static buffers.
#include "editor/emergency.h"

#include <csignal>
#include <cstring>
#include <new>

#include "editor/fileio.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "editor/trace.h"
#include "os/os_signal.h"
#include "screen/host/term_host.h"

xf_trace_state xf_traces;

namespace {

constexpr std::size_t path_cap = 1400;
char work_dir_buf[path_cap];  // the working directory at start, with a trailing "/"
char out_buf[1 << 16];        // the writer's buffer
char path_buf[path_cap];
char error_tag[64];

void put(const char* s) { os_sa_stderr(s); }

// Appends `s` to a fixed buffer; false when it does not fit.
bool cat(char* buf, std::size_t cap, const char* s) {
  std::size_t n = os_sa_strlen(buf), m = os_sa_strlen(s);
  if (n + m + 1 > cap) return false;
  std::memcpy(buf + n, s, m + 1);
  return true;
}

bool in_work_dir(const char* name) {
  path_buf[0] = 0;
  return cat(path_buf, path_cap, work_dir_buf) && cat(path_buf, path_cap, name);
}

struct buffered {
  int fd;
  std::size_t used = 0;
  bool ok = true;
  void write(const char* p, std::size_t n) {
    while (n > 0 && ok) {
      std::size_t room = sizeof out_buf - used;
      std::size_t k = n < room ? n : room;
      std::memcpy(out_buf + used, p, k);
      used += k;
      p += k;
      n -= k;
      if (used == sizeof out_buf) flush();
    }
  }
  void flush() {
    if (used && !os_sa_write_all(fd, out_buf, used)) ok = false;
    used = 0;
  }
};

// Writes the lines of `f` to `path`: line feeds inside lines go back to NUL bytes, line ends as the file has them.
bool write_lines(const xf_file& f, const char* path) {
  int fd = os_sa_open_write(path);
  if (fd < 0) return false;
  buffered b{fd};
  for (int32_t i = 0; i < f.size && b.ok; ++i) {
    const char* t = f.text[i].get();
    int32_t n = t ? f.len[i] : 0;
    for (int32_t k = 0; k < n; ++k) {
      char ch = t[k] == '\n' ? 0 : t[k];
      b.write(&ch, 1);
    }
    if (i == f.size - 1 && f.binary) break;
    if (f.eol_unix)
      b.write("\n", 1);
    else
      b.write("\r\n", 2);
  }
  b.flush();
  bool ok = b.ok && os_sa_fsync(fd) == 0;
  os_sa_close(fd);
  return ok;
}

void write_trace() {
  if (!in_work_dir("xed.trace")) return;
  int fd = os_sa_open_write(path_buf);
  if (fd < 0) {
    put("..... Unable to create \"xed.trace\"\n");
    return;
  }
  int32_t count = xf_traces.count;
  int32_t start = (xf_traces.newest - count + 1 + xf_trace_size) % xf_trace_size;
  for (int32_t k = 0; k < count; ++k) {
    const char* tag = xf_traces.tags[(start + k) % xf_trace_size];
    if (!tag) continue;
    os_sa_write_str(fd, tag);
    os_sa_write_str(fd, "\n");
  }
  os_sa_close(fd);
}

// "restart.x": reopens each file where it was, and renames the .check copies back.
void write_restart() {
  char old_name[path_cap] = "";
  if (!in_work_dir("restart.x")) return;
  cat(old_name, path_cap, path_buf);
  cat(old_name, path_cap, "%");
  os_sa_rename(path_buf, old_name);
  int fd = os_sa_open_write(path_buf);
  if (fd < 0) return;
  char num[24];
  for (std::size_t i = 0; i < xf_ring.files.size(); ++i) {
    const xf_file& f = *xf_ring.files[i];
    os_sa_write_str(fd, "xed \"");
    os_sa_write_str(fd, f.name.c_str());
    os_sa_write_str(fd, "\":");
    int32_t line = xf_ring.view && i < xf_ring.view->per_file.size() ? xf_ring.view->per_file[i].current_line : 0;
    os_sa_format_int(num, sizeof num, line + 1);
    os_sa_write_str(fd, num);
    os_sa_write_str(fd, "\n");
    std::size_t n = f.name.size();
    if (n > 6 && std::memcmp(f.name.c_str() + n - 6, ".check", 6) == 0) {
      const char* base = std::strrchr(f.name.c_str(), '/');
      base = base ? base + 1 : f.name.c_str();
      os_sa_write_str(fd, "fn ");
      os_sa_write_all(fd, base, f.name.c_str() + n - 6 - base);
      os_sa_write_str(fd, "\n");
    }
  }
  if (xf_ring.file) {
    os_sa_write_str(fd, "xed \"");
    os_sa_write_str(fd, xf_ring.file->name.c_str());
    os_sa_write_str(fd, "\"\n");
  }
  os_sa_close(fd);
}

void fault_handler(int sig) { xf_internal_error(sig); }
void memory_handler() { xf_out_of_memory(0, 0); }
void terminate_handler() { xf_internal_error(SIGABRT); }

}  // namespace

void xf_emergency_install(int argc, char** argv) {
  std::size_t n = xf_run.work_dir.size();
  if (n + 2 < path_cap) {
    std::memcpy(work_dir_buf, xf_run.work_dir.c_str(), n + 1);
    if (n == 0 || work_dir_buf[n - 1] != '/') cat(work_dir_buf, path_cap, "/");
  }
  os_restart_prepare(argc, argv);
  os_signal_setup s;
  s.fault = fault_handler;
  s.emergency = fault_handler;
  s.out_of_memory = memory_handler;
  s.terminate = terminate_handler;
  os_signals_install(s);
}

void xf_emergency_poll() {
  if (int sig = os_term_pending()) xf_internal_error(sig);
}

void xf_internal_error(int sig) {
  term_emergency_reset();  // the terminal shows what follows in its normal state
  if (xf_run.crashing) {
    put("TOLVA: Unable to save modified files\n");
    os_sa_exit(1);
  }
  char num[24];
  os_sa_format_int(num, sizeof num, sig);
  error_tag[0] = 0;
  cat(error_tag, sizeof error_tag, "TOLVA internal error ");
  cat(error_tag, sizeof error_tag, num);
  cat(error_tag, sizeof error_tag, ".");
  xf_trace(error_tag);
  write_trace();
  xf_run.crashing = 1;
  bool any = false;
  for (auto& fp : xf_ring.files) {
    xf_file& f = *fp;
    if (f.alt_save == 0) continue;
    any = true;
    put(error_tag);
    put("\nTrying to save\n");
    put(f.name.c_str());
    put("\nappending a \".check\" filetype.\n");
    path_buf[0] = 0;
    if (!cat(path_buf, path_cap, f.name.c_str()) || !cat(path_buf, path_cap, ".check")) continue;
    // The name takes its ".check" in place: the buffer holds it already when the name is long enough.
    if (!write_lines(f, path_buf)) put("TOLVA: ................. Save failed\n");
    if (f.name.capacity() >= f.name.size() + 6) f.name.append(".check");
  }
  if (!any) {
    put(error_tag);
    put("\n");
  }
  write_restart();
  if (sig != SIGHUP && sig != SIGTERM && sig != SIGINT && !xf_run.profile_running)
    os_restart(sig, xf_run.batch != 0, !xf_run.batch);
  os_signals_reset();
  os_sa_exit(1);
}

void xf_out_of_memory(std::size_t size, int lines_full) {
  term_emergency_reset();
  if (lines_full == 0) {
    char num[24];
    os_sa_format_int(num, sizeof num, static_cast<int64_t>(size));
    put("TOLVA: ********      No more memory available      ******** \n");
    put("TOLVA:               ( size = ");
    put(num);
    put(" )\n");
    if (xf_run.crashing) {
      put("TOLVA: exiting without saving files\n");
      os_sa_exit(1);
    }
  } else {
    put("Maximum number of lines exceeded.\nEdited files will be saved with a \".check\" filetype.\n");
  }
  xf_run.crashing = 1;
  for (auto& fp : xf_ring.files) {
    xf_file& f = *fp;
    if (f.alt_save == 0) continue;
    put("TOLVA: ... Trying to save ");
    put(f.name.c_str());
    path_buf[0] = 0;
    bool ok = cat(path_buf, path_cap, f.name.c_str()) && cat(path_buf, path_cap, ".check");
    put(" after renaming in ");
    put(path_buf);
    put("\n");
    ok = ok && write_lines(f, path_buf);
    put(ok ? "TOLVA: ................. Save successfull\n" : "TOLVA: ................. Save failed\n");
  }
  os_sa_exit(1);
}
