#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/kept_files.h"
#include "common/result.h"

namespace quorvex::view {

/// The index of one book that is kept from one run of the program to the next, in the user's own
/// cache folder. The file's name tells which book it belongs to and the fingerprint of the pages
/// that it was made from, so it needs no other record. Several programs may keep indexes of the
/// same book at once.
class KeptIndex {
 public:
  struct File {
    std::string path;
    std::uint64_t fingerprint = 0;
  };

  /// Fails unless the cache folder belongs to the user and is closed to others: what is opened from
  /// it is shown as the book's. `book`: the real path of its folder.
  static Result<KeptIndex> in(const std::string& cacheFolder, const std::string& book);

  /// The one that was kept last.
  std::optional<File> newest() const;
  /// Null if none was made from such pages.
  std::optional<File> madeFrom(std::uint64_t fingerprint) const;

  /// Writes it completely or not at all. Then removes the book's earlier ones, what unfinished
  /// writing has left behind, and indexes of other books that have not been used for long or would
  /// take too much room.
  Result<File> keep(std::string_view bytes, std::uint64_t fingerprint) const;

  /// Notes that a file is in use.
  static void touch(const File& file);

 private:
  KeptIndex(KeptFiles files, std::string folder, std::string prefix)
      : _files(std::move(files)), _folder(std::move(folder)), _prefix(std::move(prefix)) {}

  std::string pathFor(std::uint64_t fingerprint) const;
  void tidy(std::uint64_t kept) const;

  KeptFiles _files;
  std::string _folder;
  std::string _prefix;  ///< of the names of the book's files
};

}  // namespace quorvex::view
