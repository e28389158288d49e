#include "sources/indexable_directory.h"

#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/files.h"
#include "common/format.h"
#include "common/log.h"
#include "common/retry.h"
#include "common/system_error.h"

namespace quorvex {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// Opens a folder below `root`; "" is the root itself. Only the root may be reached through a link.
Result<Folder> openFolder(const std::string& root, const std::string& subpath) {
  const std::string path = subpath.empty() ? root : appendPathComponent(root, subpath);
  const Result<NearPath> near = nearPath(path);
  if (!near) return near.error();
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (subpath.empty() ? 0 : O_NOFOLLOW);
  const int descriptor = retried([&] { return ::openat(near->base(), near->rest, flags); });
  if (descriptor < 0) return systemError(errno);
  DIR* folder = ::fdopendir(descriptor);
  if (folder != nullptr) return Folder(folder);
  const Error error = systemError(errno);
  ::close(descriptor);
  return error;
}

bool isFolder(DIR* parent, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat information = {};
  return ::fstatat(::dirfd(parent), entry.d_name, &information, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(information.st_mode);
}

/// Appends the entries of one folder to `subpaths` and its folders to `folders`. Fails when the
/// folder cannot be read to its end.
Status listFolder(const std::string& root, const std::string& subpath,
                  std::vector<std::string>& subpaths, std::vector<std::string>& folders) {
  const Result<Folder> opened = openFolder(root, subpath);
  if (!opened) return opened.error();
  DIR* const folder = opened->get();
  for (;;) {
    errno = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): every call has a stream of its own
    const dirent* entry = ::readdir(folder);
    if (entry == nullptr) return errno == 0 ? okStatus() : Status(systemError(errno));
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    std::string path = subpath.empty() ? std::string(name) : subpath + '/';
    if (!subpath.empty()) path += name;
    if (isFolder(folder, *entry)) folders.push_back(path);
    subpaths.push_back(std::move(path));
  }
}

}  // namespace

std::optional<std::vector<std::string>> QXIndexableDirectory::subpaths() {
  const std::string root = description();
  std::vector<std::string> subpaths;
  std::vector<std::string> folders = {""};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    const Status listed = listFolder(root, folder, subpaths, folders);
    if (listed) continue;
    // An unreadable folder inside the book loses its own pages only.
    const std::string where =
        folder.empty() ? baseURL()->absoluteString() : appendPathComponent(root, folder);
    QXLog(0, "Error getting subpaths of directory <%@>: %@", where, listed.error());
    if (folder.empty()) return std::nullopt;
  }
  return subpaths;
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
  return *Predicate::matching(R"(.*\.html?$)");
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
