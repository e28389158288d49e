#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <sys/stat.h>

#include "common/descriptor.h"
#include "common/result.h"

namespace quorvex::view {

/// The folder of a book. Hidden files are not part of it. Links are followed inside the folder; out
/// of it only if they belong to root or to the folder's owner, and only to files that everybody may
/// read: systems share fonts and scripts between books by such links, but a book from a stranger's
/// archive must not show what is private.
class BookFolder {
 public:
  static Result<std::shared_ptr<const BookFolder>> open(const std::string& path);

  enum class Kind { none, file, folder };
  struct Found {
    Kind kind = Kind::none;
    std::shared_ptr<const Descriptor> file;  ///< of a regular file, for reading
    struct stat information {};
  };

  /// `path`: from the folder, decoded, without a slash in front ("" is the folder itself).
  Found find(const std::string& path) const;

  struct Shown {
    std::string path;
    Found found;
  };
  /// What an address shows, by its decoded path with the slash in front: a file, or the index page
  /// of a folder. A folder itself is found only where the slash behind its name is missing.
  Shown shownAt(std::string_view address) const;

 private:
  explicit BookFolder(Descriptor folder, uid_t owner) : _folder(std::move(folder)), _owner(owner) {}

  Descriptor locate(const std::string& path) const;
  Descriptor followOut(const std::string& path) const;

  Descriptor _folder;
  uid_t _owner;
};

}  // namespace quorvex::view
