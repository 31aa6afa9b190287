// Files: stat, reading to EOF, read-only reasons, listings, protection and times.
#include "os/os_file.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void fill_info(const struct stat& st, os_file_info& out) {
  if (S_ISREG(st.st_mode)) {
    out.kind = os_kind::regular;
  } else if (S_ISDIR(st.st_mode)) {
    out.kind = os_kind::directory;
  } else {
    out.kind = os_kind::other;
  }
  out.mode = st.st_mode & 07777;
  out.owner_write = (st.st_mode & S_IWUSR) != 0;
  out.size = st.st_size;
  out.mtime = st.st_mtim.tv_sec;
  out.mtime_ns = st.st_mtim.tv_nsec;
  out.atime = st.st_atim.tv_sec;
  out.atime_ns = st.st_atim.tv_nsec;
  out.links = st.st_nlink;
  out.dev = st.st_dev;
  out.ino = st.st_ino;
  out.uid = st.st_uid;
  out.gid = st.st_gid;
}

// Another process's write lock over any part of the file (OFD and classic record locks both show).
bool write_locked(int fd) {
  struct flock fl;
  std::memset(&fl, 0, sizeof fl);
  fl.l_type = F_RDLCK;  // conflicts only with write locks
  fl.l_whence = SEEK_SET;
  fl.l_start = 0;
  fl.l_len = 0;
  if (::fcntl(fd, F_OFD_GETLK, &fl) != 0) return false;
  return fl.l_type != F_UNLCK;
}

}  // namespace

std::string os_strerror(int err) {
  char buf[256];
  // GNU strerror_r returns the text, which may or may not live in buf.
  const char* s = ::strerror_r(err, buf, sizeof buf);
  return s ? std::string(s) : std::string("Unknown error");
}

int os_file_stat(std::string_view path, os_file_info& out) {
  out = os_file_info{};
  std::string p(path);
  struct stat lst;
  if (::lstat(p.c_str(), &lst) != 0) return errno;
  out.symlink = S_ISLNK(lst.st_mode);
  struct stat st;
  if (out.symlink) {
    if (::stat(p.c_str(), &st) != 0) return errno;
  } else {
    st = lst;
  }
  fill_info(st, out);
  return 0;
}

os_kind os_file_kind(std::string_view path) {
  os_file_info info;
  os_file_stat(path, info);
  return info.kind;
}

bool os_is_executable(std::string_view path) {
  std::string p(path);
  struct stat st;
  return ::stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::faccessat(AT_FDCWD, p.c_str(), X_OK, AT_EACCESS) == 0;
}

os_reader::os_reader(os_reader&& o) noexcept : fd_(o.fd_), err_(o.err_) { o.fd_ = -1; }

os_reader& os_reader::operator=(os_reader&& o) noexcept {
  if (this != &o) {
    close();
    fd_ = o.fd_;
    err_ = o.err_;
    o.fd_ = -1;
  }
  return *this;
}

os_reader::~os_reader() { close(); }

void os_reader::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

int os_reader::open(std::string_view path) {
  close();
  std::string p(path);
  do {
    fd_ = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
  } while (fd_ < 0 && errno == EINTR);
  if (fd_ < 0) return err_ = errno;
  struct stat st;
  if (::fstat(fd_, &st) == 0 && S_ISDIR(st.st_mode)) {
    close();
    return err_ = EISDIR;
  }
  return err_ = 0;
}

std::ptrdiff_t os_reader::read(char* buf, std::size_t n) {
  if (fd_ < 0) {
    err_ = EBADF;
    return -1;
  }
  for (;;) {
    ssize_t r = ::read(fd_, buf, n);
    if (r >= 0) return r;
    if (errno != EINTR) {
      err_ = errno;
      return -1;
    }
  }
}

int os_reader::stat(os_file_info& out) const {
  out = os_file_info{};
  struct stat st;
  if (::fstat(fd_, &st) != 0) return errno;
  fill_info(st, out);
  return 0;
}

int os_read_file(std::string_view path, std::string& out) {
  out.clear();
  os_reader r;
  if (int e = r.open(path)) return e;
  char buf[65536];
  for (;;) {
    std::ptrdiff_t n = r.read(buf, sizeof buf);
    if (n < 0) return r.err();
    if (n == 0) return 0;
    out.append(buf, static_cast<std::size_t>(n));
  }
}

/* The order matters: the attribute first (a 0444 file is "read-only" even for root, who could write it), then
   the access check for the effective ids, then locks, which only matter for a file we may write. */
os_ro_reason os_read_only_reason(std::string_view path, int fd) {
  std::string p(path);
  struct stat st;
  if (::stat(p.c_str(), &st) != 0) return os_ro_reason::other;
  if ((st.st_mode & 0222) == 0) return os_ro_reason::read_only;
  if (::faccessat(AT_FDCWD, p.c_str(), W_OK, AT_EACCESS) != 0) {
    switch (errno) {
      case EACCES:
      case EPERM: return os_ro_reason::no_write_access;
      case ETXTBSY: return os_ro_reason::in_use;
      default: return os_ro_reason::other;
    }
  }
  int own = -1;
  if (fd < 0) {
    own = ::open(p.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    fd = own;
  }
  bool locked = fd >= 0 && write_locked(fd);
  if (own >= 0) ::close(own);
  return locked ? os_ro_reason::in_use : os_ro_reason::writable;
}

int os_list_dir(std::string_view path, std::vector<std::string>& names) {
  names.clear();
  std::string p(path);
  DIR* d = ::opendir(p.c_str());
  if (d == nullptr) return errno;
  errno = 0;
  while (struct dirent* e = ::readdir(d)) {
    if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) names.emplace_back(e->d_name);
    errno = 0;
  }
  int err = errno;
  ::closedir(d);
  return err;
}

int os_make_writable(std::string_view path) {
  std::string p(path);
  struct stat st;
  if (::stat(p.c_str(), &st) != 0) return errno;
  if (::chmod(p.c_str(), (st.st_mode & 07777) | S_IWUSR) != 0) return errno;
  return 0;
}

int os_set_times(std::string_view path, int64_t atime, int64_t atime_ns, int64_t mtime, int64_t mtime_ns) {
  std::string p(path);
  struct timespec ts[2];
  ts[0].tv_sec = atime;
  ts[0].tv_nsec = atime_ns;
  ts[1].tv_sec = mtime;
  ts[1].tv_nsec = mtime_ns;
  if (::utimensat(AT_FDCWD, p.c_str(), ts, 0) != 0) return errno;
  return 0;
}

int os_remove(std::string_view path) {
  std::string p(path);
  return ::unlink(p.c_str()) == 0 ? 0 : errno;
}

int os_rename(std::string_view from, std::string_view to) {
  std::string f(from), t(to);
  return ::rename(f.c_str(), t.c_str()) == 0 ? 0 : errno;
}

int os_make_dir(std::string_view path, uint32_t mode) {
  std::string p(path);
  return ::mkdir(p.c_str(), mode) == 0 ? 0 : errno;
}

int os_make_dirs(std::string_view path, uint32_t mode) {
  std::string p(path);
  for (std::size_t i = 1; i <= p.size(); ++i) {
    if (i != p.size() && p[i] != '/') continue;
    std::string part = p.substr(0, i);
    if (::mkdir(part.c_str(), mode) != 0 && errno != EEXIST) return errno;
  }
  struct stat st;
  if (::stat(p.c_str(), &st) != 0) return errno;
  return S_ISDIR(st.st_mode) ? 0 : ENOTDIR;
}
