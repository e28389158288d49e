#pragma once

#include <string>
#include <string_view>

#include <sys/types.h>

#include "common/result.h"

namespace quorvex {

/// Replaces a file atomically. Writes go to a temporary file in the target's folder; commit() moves
/// it into place, otherwise the destructor removes it, so the target is either unchanged or
/// complete. Use from one thread only.
class AtomicFile {
 public:
  /// `path` need not exist. If it is a symbolic link, its target is replaced, but a link that
  /// another user may have planted is refused. `newFileMode`: permissions of a file that replaces
  /// none, subject to the umask.
  explicit AtomicFile(std::string path, mode_t newFileMode = 0666);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Creates the temporary file with the permissions of the target, or those of a new file. Also
  /// fails if the target is not a regular file.
  Status open();
  /// Only after open(). After a failure the object can only be destroyed.
  Status write(std::string_view bytes);
  /// Flushes to disk, replaces the target and flushes the folder's new entry.
  Status commit();

 private:
  Status failure(int code);
  void discard();

  std::string _path;
  mode_t _newFileMode;
  std::string _temporaryPath;  ///< empty if there is none
  int _descriptor = -1;
};

}  // namespace quorvex
