#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/result.h"

namespace quorvex::view {

/// The pages of a book's folder, as an index of it would be made from them.
struct BookPages {
  std::vector<std::string> subpaths;  ///< ascending
  /// Of the pages' paths, sizes, times and inodes, and of the program's release: another one may
  /// make another index of them.
  std::uint64_t fingerprint = 0;
};

/// Lists the pages without reading them. Fails if the folder cannot be read.
Result<BookPages> listPages(const std::string& folder);

/// Of a file's size, time and inode; null if there is none.
std::optional<std::uint64_t> fingerprintOf(const std::string& file);

}  // namespace quorvex::view
