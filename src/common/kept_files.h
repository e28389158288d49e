#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/descriptor.h"
#include "common/result.h"

namespace quorvex {

// What the programs keep in the user's cache folder (private_folder.h): indexes, whose names tell
// what they were made from.

/// Ends the name of a kept index.
inline constexpr std::string_view keptIndexSuffix = ".bchelpindex";
/// Begins the name of an index that was made from searchable items.
inline constexpr std::string_view keptItemsPrefix = "items-";
/// What such names are made with.
inline constexpr std::string_view keptItemsSecret = "items-secret";

/// A regular file of the folder.
struct KeptFile {
  std::string name;
  std::uint64_t size = 0;
  std::int64_t used = 0;  ///< when it was written or touched, in nanoseconds
};

/// A folder of kept files. It is opened once: what takes its place later is neither read nor
/// changed.
class KeptFiles {
 public:
  /// Fails unless the folder belongs to this user and is closed to others: what is kept there is
  /// believed.
  static Result<KeptFiles> in(const std::string& folder);

  /// In no order.
  std::vector<KeptFile> list() const;
  /// Opens a file for reading; unset unless it is a regular one of this user, under this name
  /// alone, that nobody else can write.
  Descriptor open(const std::string& name) const;
  /// Removes a file, or the link that has its name; false if it is still there.
  bool remove(const std::string& name) const;
  /// Of the given files, removes those that have not been used for 90 days, then the least recently
  /// used until the rest takes `mostBytes` at most. Also removes what unfinished writing has left
  /// behind.
  void tidy(std::vector<KeptFile> files, std::uint64_t mostBytes) const;

 private:
  explicit KeptFiles(Descriptor folder) : _folder(std::move(folder)) {}

  Descriptor _folder;
};

struct ClearedFiles {
  std::string folder;
  std::size_t count = 0;
  std::uint64_t bytes = 0;
};

/// Removes what the programs keep in the user's cache folder, and nothing else that is there.
Result<ClearedFiles> clearKeptFiles();

}  // namespace quorvex
