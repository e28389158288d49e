#pragma once

#include <string>
#include <string_view>

#include "common/result.h"

namespace quorvex {

/// A file that takes the place of another one as a whole. What is written goes to a temporary file
/// in the target's folder; commit() puts that in the target's place, and without it the end of the
/// object removes it, so that the target is either as before or complete. Used from one thread.
class AtomicFile {
 public:
  /// `path` need not exist. When it is a symbolic link, the file is replaced that it points to; but
  /// one that a stranger may have put there is refused.
  explicit AtomicFile(std::string path);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Creates the temporary file. Fails as well where the target is anything but a regular file.
  /// The file gets the permissions of the target, or those that a new file would get.
  Status open();
  /// Only after open(). After a failure only the end of the object makes sense.
  Status write(std::string_view bytes);
  /// Flushes to the disk, replaces the target and makes the folder's new entry last.
  Status commit();

 private:
  Status failure(int code);
  void discard();

  std::string _path;
  std::string _temporaryPath;  ///< empty while there is none
  int _descriptor = -1;
};

}  // namespace quorvex
