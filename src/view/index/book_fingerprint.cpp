#include "view/index/book_fingerprint.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "common/bytes.h"
#include "common/checksum.h"
#include "common/descriptor.h"
#include "common/files.h"
#include "common/predicate.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "common/url.h"
#include "sources/indexable_directory.h"

namespace quorvex::view {

namespace {

/// Raise it when the same release would make another index of the same pages.
constexpr std::string_view makerVersion = QUORVEX_VERSION " 2";

/// Tells why a folder cannot be listed.
Status readable(const std::string& folder) {
  const Descriptor opened(retried(
      [&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC); }));
  return opened ? okStatus() : Status(systemError(errno));
}

/// Null unless it is a regular file, perhaps at the end of a link.
std::optional<struct stat> regularFileAt(const std::string& path) {
  const Result<NearPath> near = nearPath(path);
  struct stat found = {};
  if (!near || ::fstatat(near->base(), near->rest, &found, 0) != 0 || !S_ISREG(found.st_mode)) {
    return std::nullopt;
  }
  return found;
}

void appendVersion(std::string& seen, const struct stat& file) {
  for (const auto number :
       {static_cast<std::uint64_t>(file.st_size), static_cast<std::uint64_t>(file.st_mtim.tv_sec),
        static_cast<std::uint64_t>(file.st_mtim.tv_nsec),
        static_cast<std::uint64_t>(file.st_ino)}) {
    appendU64(seen, number);
  }
}

}  // namespace

Result<BookPages> listPages(const std::string& folder) {
  if (const Status status = readable(folder); !status) return status.error();
  QXIndexableDirectory source(*URL::parse(percentEncodePath(folder)));
  std::optional<std::vector<std::string>> found = source.subpaths();
  if (!found) return Error{"It cannot be listed"};
  const std::optional<Predicate> isPage = source.defaultIncludePredicate();
  std::ranges::sort(*found);

  BookPages pages;
  std::string seen;
  appendText(seen, makerVersion);
  for (std::string& subpath : *found) {
    const Result<bool> selected = isPage->evaluate(subpath);
    if (!selected || !*selected) continue;
    const std::optional<struct stat> file = regularFileAt(appendPathComponent(folder, subpath));
    if (!file) continue;
    appendText(seen, subpath);
    appendVersion(seen, *file);
    pages.subpaths.push_back(std::move(subpath));
  }
  pages.fingerprint = checksum(seen);
  return pages;
}

std::optional<std::uint64_t> fingerprintOf(const std::string& file) {
  const std::optional<struct stat> found = regularFileAt(file);
  if (!found) return std::nullopt;
  std::string seen;
  appendVersion(seen, *found);
  return checksum(seen);
}

}  // namespace quorvex::view
