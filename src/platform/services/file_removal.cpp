#include "platform/file_removal.h"

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/descriptor.h"
#include "common/files.h"
#include "common/system_error.h"

namespace quorvex {
namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;

/// Removes a tree with two or three open descriptors at any depth: it ascends through ".." and
/// checks that it is back where it came from. Reads every folder once.
class TreeRemoval {
 public:
  TreeRemoval(int parent, std::string parentPath)
      : _parent(parent), _prefix(std::move(parentPath)) {}

  Status remove(const std::string& name) {
    Status status = descend(_parent, name);
    while (status.ok() && !_folders.empty()) {
      if (_folders.back().subfolders.empty()) {
        status = ascend();
      } else {
        const std::string subfolder = std::move(_folders.back().subfolders.back());
        _folders.back().subfolders.pop_back();
        status = descend(_current.get(), subfolder);
      }
    }
    return status;
  }

 private:
  struct Folder {
    std::string name;
    dev_t device;
    ino_t inode;
    std::vector<std::string> subfolders;  // those that were not empty
  };

  Error failure(std::string_view name, int code) const {
    std::string path = _prefix;
    for (const Folder& folder : _folders)
      path = appendPathComponent(path, folder.name);
    return {appendPathComponent(path, name) + ": " + systemError(code).description};
  }

  /// Enters a folder and removes everything in it except non-empty folders.
  Status descend(int from, const std::string& name) {
    Descriptor folder(::openat(from, name.c_str(), folderFlags));
    struct stat information = {};
    if (!folder || ::fstat(folder.get(), &information) != 0) {
      if (errno == ENOENT) return okStatus();
      return failure(name, errno);
    }
    // Mounted file systems are not part of the folder.
    if (!_folders.empty() && information.st_dev != _folders.front().device) {
      return failure(name, EBUSY);
    }
    _folders.push_back({name, information.st_dev, information.st_ino, {}});
    _current = std::move(folder);
    return clear();
  }

  Status clear() {
    const int copy = ::openat(_current.get(), ".", folderFlags);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy < 0 ? nullptr : ::fdopendir(copy),
                                                      &::closedir);
    if (!entries) {
      const int code = errno;
      if (copy >= 0) ::close(copy);
      return failure("", code);
    }
    for (;;) {
      errno = 0;
      // NOLINTNEXTLINE(concurrency-mt-unsafe): safe on a stream of one's own
      const dirent* entry = ::readdir(entries.get());
      if (entry == nullptr) break;
      const std::string name = entry->d_name;
      if (name == "." || name == "..") continue;
      if (const int code = unlinkEntry(name); code != 0) return failure(name, code);
    }
    if (errno != 0) return failure("", errno);
    return okStatus();
  }

  /// Returns 0 or an errno. Keeps a non-empty folder for later.
  int unlinkEntry(const std::string& name) {
    if (::unlinkat(_current.get(), name.c_str(), 0) == 0 || errno == ENOENT) return 0;
    if (errno != EISDIR) return errno;
    if (::unlinkat(_current.get(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return 0;
    if (errno != ENOTEMPTY && errno != EEXIST) return errno;
    _folders.back().subfolders.push_back(name);
    return 0;
  }

  /// Leaves the folder, which is now empty, and removes it.
  Status ascend() {
    const std::string name = std::move(_folders.back().name);
    _folders.pop_back();
    int parent = _parent;
    if (!_folders.empty()) {
      Descriptor up(::openat(_current.get(), "..", folderFlags));
      struct stat information = {};
      if (!up || ::fstat(up.get(), &information) != 0) return failure(name, errno);
      const Folder& expected = _folders.back();
      // The folder was moved while its contents were removed.
      if (information.st_dev != expected.device || information.st_ino != expected.inode) {
        return failure(name, ESTALE);
      }
      _current = std::move(up);
      parent = _current.get();
    }
    if (::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return okStatus();
    return failure(name, errno);
  }

  int _parent;
  std::string _prefix;
  Descriptor _current{-1};
  std::vector<Folder> _folders;  // from the top to the current one
};

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  return path;
}

}  // namespace

bool itemExists(const std::string& path) {
  struct stat information = {};
  const std::string item(withoutTrailingSlashes(path));
  if (::lstat(item.c_str(), &information) == 0) return true;
  return errno != ENOENT && errno != ENOTDIR;
}

Status removeItem(const std::string& path) {
  const std::string item(withoutTrailingSlashes(path));
  const std::string name(lastPathComponent(item));
  const std::string folder(withoutLastPathComponent(item));
  const auto failure = [&](int code) { return Error{path + ": " + systemError(code).description}; };
  if (!item.starts_with('/')) return Error{path + ": Not an absolute path"};
  if (name == "/" || name == "." || name == "..") return failure(EINVAL);
  const Descriptor parent(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!parent) return failure(errno);
  if (::unlinkat(parent.get(), name.c_str(), 0) == 0 || errno == ENOENT) return okStatus();
  if (errno != EISDIR) return failure(errno);
  return TreeRemoval(parent.get(), folder).remove(name);
}

}  // namespace quorvex
