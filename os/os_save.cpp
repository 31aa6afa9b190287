// The safe save: image beside the target, fsync, backup by link or copy, then rename or rewrite in place.
#include "os/os_save.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

#include "os/os_file.h"
#include "os/os_path.h"

#ifdef TOLVA_TEST_HOOKS
os_save_test_faults& os_save_faults() {
  static os_save_test_faults faults;
  return faults;
}
#endif

namespace {

constexpr int max_link_hops = 40;
constexpr std::size_t sink_buffer = 1 << 16;

// An owned descriptor.
struct fd_owner {
  int fd = -1;
  explicit fd_owner(int f = -1) : fd(f) {}
  fd_owner(const fd_owner&) = delete;
  fd_owner& operator=(const fd_owner&) = delete;
  ~fd_owner() { reset(); }
  void reset(int f = -1) {
    if (fd >= 0) ::close(fd);
    fd = f;
  }
};

// A name in the target's directory removed on scope exit unless released: temp images and half-made backups
// never stay.
struct unlink_guard {
  int dir = -1;
  std::string name;
  ~unlink_guard() {
    if (!name.empty()) ::unlinkat(dir, name.c_str(), 0);
  }
};

/* Writes all of [p, p+n) at the descriptor's offset, retrying EINTR and short writes. `done` counts bytes
   written through this channel so that a test fault can cut it after a given total (limit < 0: no fault). */
int write_all(int fd, const char* p, std::size_t n, int64_t& done, int64_t limit, int fault_err) {
  while (n > 0) {
    std::size_t chunk = n;
    if (limit >= 0) {
      if (done >= limit) return fault_err;
      chunk = std::min<std::size_t>(chunk, static_cast<std::size_t>(limit - done));
    }
    ssize_t w = ::write(fd, p, chunk);
    if (w < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    if (w == 0) return EIO;
    p += w;
    n -= static_cast<std::size_t>(w);
    done += w;
  }
  return 0;
}

int64_t image_fault_limit() {
#ifdef TOLVA_TEST_HOOKS
  return os_save_faults().image_bytes;
#else
  return -1;
#endif
}

int64_t inplace_fault_limit() {
#ifdef TOLVA_TEST_HOOKS
  return os_save_faults().inplace_bytes;
#else
  return -1;
#endif
}

int fault_err() {
#ifdef TOLVA_TEST_HOOKS
  return os_save_faults().err;
#else
  return EIO;
#endif
}

class fd_sink : public os_save_sink {
 public:
  explicit fd_sink(int fd) : fd_(fd) { buf_.reserve(sink_buffer); }
  void append(const char* data, std::size_t n) override {
    if (err_ != 0) return;
    if (buf_.size() + n > sink_buffer) {
      flush();
      if (err_ != 0) return;
      if (n >= sink_buffer) {
        err_ = write_all(fd_, data, n, done_, image_fault_limit(), fault_err());
        return;
      }
    }
    buf_.insert(buf_.end(), data, data + n);
  }
  bool failed() const override { return err_ != 0; }
  int flush() {
    if (err_ == 0 && !buf_.empty()) err_ = write_all(fd_, buf_.data(), buf_.size(), done_, image_fault_limit(), fault_err());
    buf_.clear();
    return err_;
  }

 private:
  int fd_;
  int err_ = 0;
  int64_t done_ = 0;
  std::vector<char> buf_;
};

// Copies `in` from offset 0 over `out` from offset 0, then cuts `out` to the copied length.
int copy_over(int in, int out, int64_t limit) {
  if (::lseek(in, 0, SEEK_SET) < 0 || ::lseek(out, 0, SEEK_SET) < 0) return errno;
  std::vector<char> buf(sink_buffer);
  int64_t done = 0;
  for (;;) {
    ssize_t n = ::read(in, buf.data(), buf.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    if (n == 0) break;
    if (int e = write_all(out, buf.data(), static_cast<std::size_t>(n), done, limit, fault_err())) return e;
  }
  if (::ftruncate(out, done) != 0) return errno;
  return 0;
}

/* Follows a chain of symlinks by hand so that a dangling link names the file to create, and a loop is told
   apart (ELOOP). An existing end is put through realpath for a clean name. */
int resolve_links(const std::string& name, std::string& out) {
  std::string p = name;
  for (int hop = 0;; ++hop) {
    struct stat st;
    if (::lstat(p.c_str(), &st) != 0) {
      if (errno != ENOENT) return errno;
      out = p;
      return 0;
    }
    if (!S_ISLNK(st.st_mode)) break;
    if (hop >= max_link_hops) return ELOOP;
    std::string target(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 4096) + 1, '\0');
    ssize_t n = ::readlink(p.c_str(), target.data(), target.size());
    if (n < 0) return errno;
    target.resize(static_cast<std::size_t>(n));
    p = (!target.empty() && target[0] == '/') ? target : std::string(os_dir_part(p)) + target;
  }
  if (os_realpath(p, out) != 0) out = p;
  return 0;
}

std::string random_suffix() {
  static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  unsigned char raw[6];
  if (::getrandom(raw, sizeof raw, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof raw)) {
    static unsigned counter = 0;
    struct timespec ts;
    ::clock_gettime(CLOCK_REALTIME, &ts);
    unsigned long v = static_cast<unsigned long>(ts.tv_nsec) ^ (static_cast<unsigned long>(::getpid()) << 16) ^ ++counter;
    for (auto& r : raw) {
      r = static_cast<unsigned char>(v);
      v = v * 6364136223846793005ul + 1442695040888963407ul;
      v ^= v >> 29;
    }
  }
  std::string s;
  for (unsigned char r : raw) s += letters[r % (sizeof letters - 1)];
  return s;
}

// Creates ".<name>.tolva-XXXXXX" in `dir`, exclusive, read-write. Returns the descriptor or -errno.
int create_temp(int dir, const std::string& name, uint32_t mode, std::string& temp) {
  std::string base = name.size() > 200 ? name.substr(0, 200) : name;
  for (int attempt = 0; attempt < 100; ++attempt) {
    temp = "." + base + ".tolva-" + random_suffix();
    int fd = ::openat(dir, temp.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    if (fd >= 0) return fd;
    if (errno != EEXIST) {
      temp.clear();
      return -errno;
    }
  }
  temp.clear();
  return -EEXIST;
}

// Copies extended attributes (ACLs among them) where the file systems allow; failures are not errors.
void copy_xattrs(int from, int to) {
  ssize_t n = ::flistxattr(from, nullptr, 0);
  if (n <= 0) return;
  std::vector<char> names(static_cast<std::size_t>(n));
  n = ::flistxattr(from, names.data(), names.size());
  if (n <= 0) return;
  std::vector<char> value;
  for (ssize_t i = 0; i < n;) {
    const char* name = names.data() + i;
    i += static_cast<ssize_t>(std::char_traits<char>::length(name)) + 1;
    ssize_t v = ::fgetxattr(from, name, nullptr, 0);
    if (v < 0) continue;
    value.resize(static_cast<std::size_t>(v));
    v = ::fgetxattr(from, name, value.data(), value.size());
    if (v < 0) continue;
    ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(v), 0);
  }
}

void fsync_dir(int dir) {
  fd_owner d(::openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (d.fd >= 0) ::fsync(d.fd);
}

// A fresh copy of `name` at `backup` (an old backup is removed first; a planted symlink is never followed).
int copy_to_backup(int dir, const std::string& name, const std::string& backup, uint32_t mode) {
  if (::unlinkat(dir, backup.c_str(), 0) != 0 && errno != ENOENT) return errno;
  fd_owner in(::openat(dir, name.c_str(), O_RDONLY | O_CLOEXEC));
  if (in.fd < 0) return errno;
  fd_owner out(::openat(dir, backup.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode & 0777));
  if (out.fd < 0) return errno;
  unlink_guard partial{dir, backup};
  if (int e = copy_over(in.fd, out.fd, -1)) return e;
  if (::fsync(out.fd) != 0) return errno;
  ::fchmod(out.fd, mode & 07777);
  partial.name.clear();
  return 0;
}

// The backup of the rename road: a hard link when the file system allows, else a copy.
int link_to_backup(int dir, const std::string& name, const std::string& backup, uint32_t mode) {
  if (::unlinkat(dir, backup.c_str(), 0) != 0 && errno != ENOENT) return errno;
  if (::linkat(dir, name.c_str(), dir, backup.c_str(), 0) == 0) return 0;
  return copy_to_backup(dir, name, backup, mode);
}

os_save_result fail(os_save_result r, os_save_status status, int err) {
  r.status = status;
  r.err = err;
  r.reason = os_strerror(err);
  return r;
}

void take_mtime(int fd, os_save_result& r) {
  struct stat st;
  if (::fstat(fd, &st) == 0) {
    r.mtime = st.st_mtim.tv_sec;
    r.mtime_ns = st.st_mtim.tv_nsec;
  }
}

void put_times(int fd, const struct stat& old) {
  struct timespec ts[2] = {old.st_atim, old.st_mtim};
  ::futimens(fd, ts);
}

// Where the save happens: the target's directory, held open so that every step names the same directory even
// if it is renamed meanwhile, and the names in it.
struct save_place {
  fd_owner dir;
  std::string name;    // the target's base name
  std::string backup;  // name + suffix
  std::string dir_path;
};

/* In place: the old content is copied to the backup first, then the image (already safe in the temp file) is
   written over the target's own inode, which keeps its hard links, owner and mode. If that rewrite fails, the
   backup is written back so that the target keeps its old content. */
os_save_result rewrite_in_place(os_save_result r, const os_save_options& o, const struct stat& old, int temp_fd,
                                const save_place& at) {
  int dir = at.dir.fd;
  if (int e = copy_to_backup(dir, at.name, at.backup, old.st_mode)) return fail(r, os_save_status::backup_failed, e);
  fd_owner target(::openat(dir, at.name.c_str(), O_WRONLY | O_CLOEXEC));
  int e = target.fd < 0 ? errno : copy_over(temp_fd, target.fd, inplace_fault_limit());
  if (e == 0 && ::fsync(target.fd) != 0) e = errno;
  if (e != 0) {
    bool restored = target.fd < 0;  // nothing was written when the open failed
    if (!restored) {
      fd_owner saved(::openat(dir, at.backup.c_str(), O_RDONLY | O_CLOEXEC));
      restored = saved.fd >= 0 && copy_over(saved.fd, target.fd, -1) == 0 && ::fsync(target.fd) == 0;
      put_times(target.fd, old);
    }
    // A backup that holds the only good copy stays, whatever backup_on says.
    if (restored && !o.backup_on) {
      ::unlinkat(dir, at.backup.c_str(), 0);
    } else {
      r.backup = at.dir_path + at.backup;
    }
    return fail(r, os_save_status::replace_failed, e);
  }
  if (o.keep_date) put_times(target.fd, old);
  take_mtime(target.fd, r);
  if (o.backup_on) {
    r.backup = at.dir_path + at.backup;
  } else {
    ::unlinkat(dir, at.backup.c_str(), 0);
  }
  return r;
}

}  // namespace

os_save_result os_save(const os_save_options& o, const os_save_producer& produce) {
  // Under `ulimit -f` a write past the limit must fail with EFBIG, not kill the editor.
  ::signal(SIGXFSZ, SIG_IGN);
  os_save_result r;
  if (int e = resolve_links(o.target, r.written)) {
    return fail(r, e == ELOOP ? os_save_status::linked_to_itself : os_save_status::create_failed, e);
  }
  save_place at;
  at.dir_path = std::string(os_dir_part(r.written));
  at.name = std::string(os_base_name(r.written));
  at.backup = at.name + o.backup_suffix;
  at.dir.reset(::open(at.dir_path.empty() ? "." : at.dir_path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (at.dir.fd < 0) return fail(r, os_save_status::create_failed, errno);
  const int dir = at.dir.fd;

  struct stat old;
  bool exists = ::fstatat(dir, at.name.c_str(), &old, 0) == 0;
  if (!exists && errno != ENOENT) return fail(r, os_save_status::create_failed, errno);
  if (exists && !S_ISREG(old.st_mode)) {
    return fail(r, os_save_status::create_failed, S_ISDIR(old.st_mode) ? EISDIR : EINVAL);
  }

  unlink_guard temp{dir, {}};
  int fd = create_temp(dir, at.name, exists ? (old.st_mode & 0777) : 0666, temp.name);
  if (fd < 0) return fail(r, os_save_status::create_failed, -fd);
  fd_owner image(fd);

  bool in_place = false;
  if (exists) {
    struct stat mine;
    if (::fstat(fd, &mine) == 0 && (mine.st_uid != old.st_uid || mine.st_gid != old.st_gid) &&
        ::fchown(fd, old.st_uid, old.st_gid) != 0) {
      in_place = true;  // we may not give the new file the old owner: keep the old inode
    }
    ::fchmod(fd, old.st_mode & 07777);
    fd_owner src(::openat(dir, at.name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (src.fd >= 0) copy_xattrs(src.fd, fd);
  }

  fd_sink sink(fd);
  produce(sink);
  if (int e = sink.flush()) return fail(r, os_save_status::write_failed, e);
  if (::fsync(fd) != 0) return fail(r, os_save_status::write_failed, errno);

  if (exists && !o.crashing && (in_place || o.preserve_links || old.st_nlink > 1)) {
    return rewrite_in_place(std::move(r), o, old, fd, at);
  }

  if (exists && o.keep_date) put_times(fd, old);
  take_mtime(fd, r);
  bool backed_up = false;
  if (exists && !o.crashing) {
    if (int e = link_to_backup(dir, at.name, at.backup, old.st_mode)) {
      r.backup_err = e;
      r.backup_reason = os_strerror(e);
    } else {
      backed_up = true;
    }
  }
  if (::renameat(dir, temp.name.c_str(), dir, at.name.c_str()) != 0) {
    int e = errno;
    if (backed_up && !o.backup_on) ::unlinkat(dir, at.backup.c_str(), 0);
    if (backed_up && o.backup_on) r.backup = at.dir_path + at.backup;
    return fail(r, os_save_status::replace_failed, e);
  }
  temp.name.clear();
  fsync_dir(dir);
  if (backed_up) {
    if (o.backup_on) {
      r.backup = at.dir_path + at.backup;
    } else {
      ::unlinkat(dir, at.backup.c_str(), 0);
    }
  }
  return r;
}
