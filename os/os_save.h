// The safe save: a file image written beside the target, then swapped in, so that any failure keeps the old file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct os_save_options {
  std::string target;               // the file's name; a symlink is followed to what it points to
  bool backup_on = true;            // keep target + backup_suffix after a successful save
  std::string backup_suffix = "%";  // appended to the target's name
  bool preserve_links = false;      // rewrite in place (keeps hard links) even for a file with one link
  bool keep_date = false;           // put back the old access and modification times
  bool crashing = false;            // emergency: no backup at all, never rewrite in place
};

enum class os_save_status {
  ok,
  linked_to_itself,  // the name is a loop of symlinks (ELOOP)
  create_failed,     // the new image could not be created beside the target (read-only or vanished directory)
  write_failed,      // writing or flushing the image failed (ENOSPC, EFBIG, EIO...)
  backup_failed,     // the in-place road needs a backup and none could be made
  replace_failed,    // the image could not take the target's place; the old content is kept
};

struct os_save_result {
  os_save_status status = os_save_status::ok;
  int err = 0;                  // errno of the failure
  std::string reason;           // the system's reason text for err
  std::string written;          // the file actually written (the link's target, through realpath, for a symlink)
  std::string backup;           // the backup's name when one is left on disk, else empty
  int backup_err = 0;           // a backup that failed on the rename road (the save went on); 0 if none
  std::string backup_reason;
  int64_t mtime = 0, mtime_ns = 0;  // the saved file's modification time
  bool ok() const { return status == os_save_status::ok; }
};

// What the producer appends the file image to. Buffered; after a failure further appends are ignored.
class os_save_sink {
 public:
  virtual ~os_save_sink() = default;
  virtual void append(const char* data, std::size_t n) = 0;
  void append(std::string_view s) { append(s.data(), s.size()); }
  // True once a write has failed: the producer may stop early.
  virtual bool failed() const = 0;
};

using os_save_producer = std::function<void(os_save_sink&)>;

// Saves: calls `produce` once with a sink, writes the image to ".<name>.tolva-XXXXXX" beside the target, fsyncs it,
// then replaces the target (rename road for one link, copy-to-backup and rewrite in place for several links or
// preserve_links or an owner we cannot give). Any failure leaves the target's old content and no temp file.
// Sets SIGXFSZ to ignored for the process, so that a write past `ulimit -f` fails with EFBIG.
os_save_result os_save(const os_save_options& options, const os_save_producer& produce);

#ifdef TOLVA_TEST_HOOKS
// Test-only faults: the image write fails after `image_bytes` bytes, or the in-place rewrite after `inplace_bytes`;
// -1 switches a fault off. `err` is the errno reported.
struct os_save_test_faults {
  int64_t image_bytes = -1;
  int64_t inplace_bytes = -1;
  int err = 5;  // EIO
};
os_save_test_faults& os_save_faults();
#endif
