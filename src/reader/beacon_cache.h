#pragma once

#include <ctime>
#include <optional>
#include <string>

#include <sys/stat.h>

#include "common/files.h"
#include "common/value.h"

namespace quorvex::reader {

/// Keeps what a search needs from a file of searchable items, so that it is made only once: as an
/// index file in the user's cache folder, found by the content of the file of items. Whatever is
/// wrong with the folder costs time and nothing else.
class BeaconCache {
 public:
  struct Kept {
    std::string name;
    RegularFile file;
  };

  /// To be made before the file is read: keep() keeps nothing if the file has changed since.
  explicit BeaconCache(std::string path);

  const std::string& path() const { return _path; }
  /// Whether the file is still the one that it was when this was made.
  bool isOfSameFile() const;
  /// Returns the index that was made from such a file. Takes a checksum of the file, but only if
  /// one was made from a file of this size.
  std::optional<Kept> find() const;
  /// Removes one that turned out to be damaged.
  static void discard(const std::string& name);
  /// Keeps an index that was made from the file; then removes those that have not been used for
  /// long or would take too much room.
  void keep(const Dictionary& index) const;

 private:
  std::string _path;
  std::optional<struct stat> _file;  ///< null if nothing is to be kept of it
  timespec _now = {};                ///< when it was looked at, by the clock of file systems
};

}  // namespace quorvex::reader
