// Files shared between processes under a per-file lock, and the process queries that stores shared that way need.
#pragma once

#include <string>
#include <string_view>

// A file opened for a locked read or a locked rewrite. The lock is an open-file-description lock over the whole
// file: it belongs to this object's descriptor, so two objects in one process exclude each other as two
// processes do, and it ends when the file is closed.
class os_locked_file {
 public:
  os_locked_file() = default;
  os_locked_file(const os_locked_file&) = delete;
  os_locked_file& operator=(const os_locked_file&) = delete;
  ~os_locked_file();

  // Opens `path` for reading, or for reading and writing, creating it (mode 0666 less the umask) without
  // truncating it. Returns 0 or errno.
  int open(std::string_view path, bool write);
  // Takes a shared lock (opened for reading) or an exclusive one (for writing), trying `tries` times,
  // `interval_ms` apart. Returns 0, EAGAIN when another holder kept it, or errno.
  int lock(int tries, int interval_ms);
  // The whole content, read from the start. Returns 0 or errno.
  int read_all(std::string& out);
  // Truncates the file and writes `bytes`. Returns 0 or errno (EIO for a write that stayed short).
  int replace(std::string_view bytes);
  // Closes the file, which ends the lock.
  void close();
  int fd() const { return fd_; }

 private:
  int fd_ = -1;
  bool write_ = false;
};

// This process's id.
int os_pid();
// Whether a process with this id runs (it may belong to another user).
bool os_process_alive(int pid);
// Removes a directory and everything under it (links are removed, not followed). Returns 0 or the first errno;
// a missing path is 0.
int os_remove_tree(std::string_view path);
// Removes an empty directory. Returns 0 or errno.
int os_remove_dir(std::string_view path);
