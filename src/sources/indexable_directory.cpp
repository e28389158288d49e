#include "sources/indexable_directory.h"

#include <cerrno>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/descriptor.h"
#include "common/files.h"
#include "common/format.h"
#include "common/log.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "extract/page_limits.h"

namespace quorvex {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// Identifies a folder regardless of its path.
using FolderId = std::pair<dev_t, ino_t>;

FolderId idOf(int descriptor) {
  struct stat information = {};
  ::fstat(descriptor, &information);
  return {information.st_dev, information.st_ino};
}

constexpr int passThrough = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool isFolder(DIR* parent, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat information = {};
  return ::fstatat(::dirfd(parent), entry.d_name, &information, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(information.st_mode);
}

/// Lists a folder recursively. Moves from folder to folder and keeps only one open: resolving each
/// path from the root would cost quadratic time in a deep tree.
class Walk {
 public:
  explicit Walk(const std::string& root) : _root(root) { _pending.emplace_back(); }

  bool isDone() const { return _pending.empty(); }
  /// Lists the next folder. Fails when it cannot be read completely.
  Status step() {
    const Found found = std::move(_pending.back());
    _pending.pop_back();
    subpath = found.subpath;
    const Result<Folder> folder = open(found);
    if (!folder) return folder.error();
    _here = Descriptor(::fcntl(::dirfd(folder->get()), F_DUPFD_CLOEXEC, 0));
    _depth = found.depth;
    return list(folder->get());
  }

  std::string subpath;  ///< of the last folder listed, "" for the root
  std::vector<std::string> subpaths;

 private:
  struct Found {
    std::string subpath;
    std::size_t depth = 0;
    FolderId parent;
  };

  Result<Folder> open(const Found& found) {
    // Only the root may be reached through a link.
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    int descriptor = -1;
    if (found.depth == 0) {
      const Result<NearPath> near = nearPath(_root);
      if (!near) return near.error();
      descriptor = retried([&] { return ::openat(near->base(), near->rest, flags); });
    } else {
      if (const Status climbed = goToParent(found); !climbed) return climbed.error();
      const std::string name(lastPathComponent(found.subpath));
      descriptor = retried([&] { return ::openat(_here.get(), name.c_str(), flags | O_NOFOLLOW); });
    }
    if (descriptor < 0) return systemError(errno);
    DIR* folder = ::fdopendir(descriptor);
    const int error = errno;
    if (folder != nullptr) return Folder(folder);
    ::close(descriptor);
    return systemError(error);
  }

  /// The walk is depth first, so the next parent is the current folder or an ancestor.
  Status goToParent(const Found& found) {
    for (; _here && _depth >= found.depth; --_depth)
      _here = Descriptor(retried([&] { return ::openat(_here.get(), "..", passThrough); }));
    if (_here && idOf(_here.get()) == found.parent) return okStatus();
    // A folder was moved, or ".." cannot be opened.
    const std::string path = appendPathComponent(_root, withoutLastPathComponent(found.subpath));
    const Result<NearPath> near = nearPath(path);
    if (!near) return near.error();
    _here = Descriptor(retried([&] { return ::openat(near->base(), near->rest, passThrough); }));
    _depth = found.depth - 1;
    if (!_here) return systemError(errno);
    return idOf(_here.get()) == found.parent ? okStatus() : Status(systemError(ENOENT));
  }

  Status list(DIR* folder) {
    const FolderId id = idOf(::dirfd(folder));
    const std::string base = subpath.empty() ? "" : subpath + '/';
    for (;;) {
      errno = 0;
      // NOLINTNEXTLINE(concurrency-mt-unsafe): every call has a stream of its own
      const dirent* entry = ::readdir(folder);
      if (entry == nullptr) return errno == 0 ? okStatus() : Status(systemError(errno));
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      subpaths.push_back(base + entry->d_name);
      if (isFolder(folder, *entry)) _pending.push_back({subpaths.back(), _depth + 1, id});
    }
  }

  const std::string& _root;
  Descriptor _here = Descriptor(-1);
  std::size_t _depth = 0;       ///< of `_here` below the root
  std::vector<Found> _pending;  ///< the last one is next
};

}  // namespace

std::optional<std::vector<std::string>> QXIndexableDirectory::subpaths() {
  const std::string root = description();
  Walk walk(root);
  while (!walk.isDone()) {
    const Status listed = walk.step();
    if (listed) continue;
    // An unreadable folder inside the book only loses its own pages.
    const bool isRoot = walk.subpath.empty();
    QXLog(0, "Error getting subpaths of directory <%@>: %@",
          isRoot ? baseURL()->absoluteString() : appendPathComponent(root, walk.subpath),
          listed.error());
    if (isRoot) return std::nullopt;
  }
  return std::move(walk.subpaths);
}

std::optional<Data> QXIndexableDirectory::contentsOfSubpath(const std::string& subpath) {
  if (subpath.empty()) return std::nullopt;
  const std::string path = appendPathComponent(description(), subpath);
  Result<Data> contents = readFile(path, maximumPageSize);
  if (contents) return *std::move(contents);
  QXLog(0, "Failed reading file <%@>: %@", path, contents.error());
  return std::nullopt;
}

std::optional<Predicate> QXIndexableDirectory::defaultIncludePredicate() const {
  return *Predicate::matching(Predicate::pageNames);
}

std::optional<URL> QXIndexableDirectory::baseURL() const {
  const std::scoped_lock lock(_mutex);
  return _baseURL;
}

void QXIndexableDirectory::setBaseURL(URL url) {
  const std::scoped_lock lock(_mutex);
  _baseURL = std::move(url);
}

std::string QXIndexableDirectory::description() const {
  return baseURL()->path();
}

}  // namespace quorvex
