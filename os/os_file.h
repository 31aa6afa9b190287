// Files: kind, size, times, links, reading to EOF, why a file is read-only, listings, protection and times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The system's reason text for an errno value ("No such file or directory").
std::string os_strerror(int err);

enum class os_kind { none, regular, directory, other };

// What stat says of a path. Kind, size, times and mode are those of what a symlink points to; `symlink` tells
// whether the name itself is a link (a dangling link has kind none and symlink true).
struct os_file_info {
  os_kind kind = os_kind::none;
  bool symlink = false;
  bool owner_write = false;  // the owner's write bit (its absence is the read-only attribute)
  uint32_t mode = 0;         // permission bits, 07777
  int64_t size = 0;
  int64_t mtime = 0, mtime_ns = 0;
  int64_t atime = 0, atime_ns = 0;
  uint64_t links = 0;
  uint64_t dev = 0, ino = 0;
  uint32_t uid = 0, gid = 0;
};

// Fills `out` for `path`. Returns 0, or errno (out.kind stays none; ENOENT when it does not exist).
int os_file_stat(std::string_view path, os_file_info& out);
// The kind alone (none when it cannot be stat'ed).
os_kind os_file_kind(std::string_view path);
// A regular file that the effective ids may execute.
bool os_is_executable(std::string_view path);

// A file opened for reading only (O_RDONLY|O_CLOEXEC); closed by the destructor. Read to EOF whatever
// st_size says: /proc files say 0.
class os_reader {
 public:
  os_reader() = default;
  os_reader(const os_reader&) = delete;
  os_reader& operator=(const os_reader&) = delete;
  os_reader(os_reader&& o) noexcept;
  os_reader& operator=(os_reader&& o) noexcept;
  ~os_reader();

  // Opens `path`; returns 0 or errno. A directory is refused with EISDIR.
  int open(std::string_view path);
  // Reads up to `n` bytes; returns the count, 0 at end of file, -1 on error (see err()). Retries EINTR.
  std::ptrdiff_t read(char* buf, std::size_t n);
  // The errno of the last failure, 0 if none.
  int err() const { return err_; }
  // fstat of the open file; returns 0 or errno.
  int stat(os_file_info& out) const;
  int fd() const { return fd_; }
  void close();

 private:
  int fd_ = -1;
  int err_ = 0;
};

// The whole content of a file into `out`; returns 0 or errno.
int os_read_file(std::string_view path, std::string& out);

// Why a file that was read may not be written (the editor's RW OFF messages).
enum class os_ro_reason {
  writable,
  read_only,        // no write bit at all: "is read-only"
  no_write_access,  // write bits, but faccessat(W_OK, AT_EACCESS) says EACCES/EPERM
  in_use,           // ETXTBSY, or another process holds an advisory write lock (F_OFD_GETLK)
  other,            // EROFS and the rest
};
// Classifies `path`; `fd` may be the reader's descriptor for the lock test (else the file is opened read-only).
os_ro_reason os_read_only_reason(std::string_view path, int fd = -1);

// The names in a directory, without "." and "..", in the order the system gives. Returns 0 or errno.
int os_list_dir(std::string_view path, std::vector<std::string>& names);

// Removes the write protection: chmod u+w. Returns 0 or errno.
int os_make_writable(std::string_view path);
// Sets access and modification times (seconds, nanoseconds) of `path`, following links. Returns 0 or errno.
int os_set_times(std::string_view path, int64_t atime, int64_t atime_ns, int64_t mtime, int64_t mtime_ns);

// Small wrappers the editor needs; each returns 0 or errno.
int os_remove(std::string_view path);                         // unlink (never follows a link)
int os_rename(std::string_view from, std::string_view to);    // rename(2)
int os_make_dir(std::string_view path, uint32_t mode);        // mkdir; EEXIST for an existing one
int os_make_dirs(std::string_view path, uint32_t mode);       // mkdir -p; 0 when it already is a directory
