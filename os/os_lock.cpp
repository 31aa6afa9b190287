// Files shared between processes under a per-file lock, and the process queries that stores shared that way need.
#include "os/os_lock.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <vector>

namespace {

void sleep_ms(int ms) {
  struct timespec ts {ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
  while (::nanosleep(&ts, &ts) != 0 && errno == EINTR) {
  }
}

}  // namespace

os_locked_file::~os_locked_file() { close(); }

void os_locked_file::close() {
  if (fd_ >= 0) ::close(fd_);  // not retried on EINTR: the descriptor is gone either way
  fd_ = -1;
}

int os_locked_file::open(std::string_view path, bool write) {
  close();
  std::string p(path);
  int flags = (write ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC;
  do {
    fd_ = ::open(p.c_str(), flags, 0666);
  } while (fd_ < 0 && errno == EINTR);
  if (fd_ < 0) return errno;
  write_ = write;
  return 0;
}

int os_locked_file::lock(int tries, int interval_ms) {
  if (fd_ < 0) return EBADF;
  struct flock fl {};
  fl.l_type = write_ ? F_WRLCK : F_RDLCK;
  fl.l_whence = SEEK_SET;
  fl.l_start = 0;
  fl.l_len = 0;  // the whole file, however it grows
  for (int i = 0; i < tries; ++i) {
    if (::fcntl(fd_, F_OFD_SETLK, &fl) == 0) return 0;
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) return errno;
    if (i + 1 < tries) sleep_ms(interval_ms);
  }
  return EAGAIN;
}

int os_locked_file::read_all(std::string& out) {
  out.clear();
  if (::lseek(fd_, 0, SEEK_SET) < 0) return errno;
  char buf[8192];
  for (;;) {
    ssize_t n = ::read(fd_, buf, sizeof buf);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    if (n == 0) return 0;
    out.append(buf, static_cast<std::size_t>(n));
  }
}

int os_locked_file::replace(std::string_view bytes) {
  if (::ftruncate(fd_, 0) != 0) return errno;
  if (::lseek(fd_, 0, SEEK_SET) < 0) return errno;
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    if (n == 0) return EIO;
    done += static_cast<std::size_t>(n);
  }
  return 0;
}

int os_pid() { return static_cast<int>(::getpid()); }

bool os_process_alive(int pid) {
  if (pid <= 0) return false;
  return ::kill(pid, 0) == 0 || errno == EPERM;
}

int os_remove_dir(std::string_view path) {
  std::string p(path);
  return ::rmdir(p.c_str()) == 0 ? 0 : errno;
}

int os_remove_tree(std::string_view path) {
  std::string p(path);
  struct stat st {};
  if (::lstat(p.c_str(), &st) != 0) return errno == ENOENT ? 0 : errno;
  if (!S_ISDIR(st.st_mode)) return ::unlink(p.c_str()) == 0 || errno == ENOENT ? 0 : errno;
  std::vector<std::string> names;
  if (DIR* d = ::opendir(p.c_str())) {
    while (struct dirent* e = ::readdir(d)) {
      std::string n = e->d_name;
      if (n != "." && n != "..") names.push_back(n);
    }
    ::closedir(d);
  } else {
    return errno;
  }
  int first = 0;
  for (const std::string& n : names)
    if (int rc = os_remove_tree(p + "/" + n); rc != 0 && first == 0) first = rc;
  if (::rmdir(p.c_str()) != 0 && errno != ENOENT && first == 0) first = errno;
  return first;
}
