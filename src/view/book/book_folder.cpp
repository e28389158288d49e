#include "view/book/book_folder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include "common/files.h"
#include "common/open_below.h"
#include "common/retry.h"
#include "common/system_error.h"
#include "view/book/file_types.h"

namespace quorvex::view {

namespace {

constexpr int onlyLocate = O_PATH | O_CLOEXEC;
constexpr int toRead = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

bool hasHiddenComponent(std::string_view path) {
  return path.starts_with('.') || path.find("/.") != path.npos;
}

/// The name under which the system has an open file.
std::string nameOf(const Descriptor& file) {
  return "/proc/self/fd/" + std::to_string(file.get());
}

/// The path of an open file without links; empty if it has none any more.
std::string realPath(const Descriptor& file) {
  std::array<char, PATH_MAX> path{};
  const ssize_t size = ::readlink(nameOf(file).c_str(), path.data(), path.size());
  if (size <= 0 || static_cast<std::size_t>(size) == path.size()) return {};
  return {path.data(), static_cast<std::size_t>(size)};
}

bool mayEverybody(const std::string& path, mode_t permission) {
  struct stat information {};
  return ::lstat(path.c_str(), &information) == 0 && (information.st_mode & permission) != 0;
}

/// Whether everybody may read the file or enter the folder, by each folder from the root. What the
/// system makes up about this process is not meant for a book.
bool isPublic(const Descriptor& file) {
  struct statfs system {};
  if (::fstatfs(file.get(), &system) != 0) return false;
  if (system.f_type == PROC_SUPER_MAGIC || system.f_type == SYSFS_MAGIC) return false;
  struct stat information {};
  if (::fstat(file.get(), &information) != 0) return false;
  const mode_t permission = S_ISDIR(information.st_mode) ? S_IXOTH : S_IROTH;
  if ((information.st_mode & permission) == 0) return false;

  const std::string path = realPath(file);
  if (!path.starts_with('/') || hasHiddenComponent(path) || !mayEverybody("/", S_IXOTH)) {
    return false;
  }
  for (std::size_t at = path.find('/', 1); at != path.npos; at = path.find('/', at + 1)) {
    if (!mayEverybody(path.substr(0, at), S_IXOTH)) return false;
  }
  // The path still means the file.
  struct stat named {};
  return ::lstat(path.c_str(), &named) == 0 && named.st_dev == information.st_dev &&
         named.st_ino == information.st_ino;
}

}  // namespace

Result<std::shared_ptr<const BookFolder>> BookFolder::open(const std::string& path) {
  Descriptor folder(retried([&] { return ::open(path.c_str(), onlyLocate | O_DIRECTORY); }));
  struct stat information {};
  if (!folder || ::fstat(folder.get(), &information) != 0 ||
      ::faccessat(folder.get(), ".", X_OK, AT_EACCESS) != 0) {
    return systemError(errno);
  }
  return std::shared_ptr<const BookFolder>(new BookFolder(std::move(folder), information.st_uid));
}

BookFolder::Found BookFolder::find(const std::string& path) const {
  Found found;
  if (hasHiddenComponent(path) || path.find('\0') != path.npos) return found;
  // Merely opening a device can do harm, so it is only located first.
  const Descriptor located = locate(path);
  if (!located || ::fstat(located.get(), &found.information) != 0) return found;
  if (S_ISDIR(found.information.st_mode)) {
    found.kind = Kind::folder;
  } else if (S_ISREG(found.information.st_mode)) {
    // The very file that was located, whatever its path means by now.
    Descriptor file(retried([&] { return ::open(nameOf(located).c_str(), toRead); }));
    if (!file || ::fstat(file.get(), &found.information) != 0) return found;
    found.file = std::make_shared<const Descriptor>(std::move(file));
    found.kind = Kind::file;
  }
  return found;
}

BookFolder::Shown BookFolder::shownAt(std::string_view address) const {
  if (!address.starts_with('/')) return {};
  std::string path(address.substr(1));
  const bool namesFolder = path.empty() || path.ends_with('/');
  if (!path.empty() && namesFolder) path.pop_back();
  Found found = find(path);
  if (!namesFolder) return {std::move(path), std::move(found)};
  if (found.kind != Kind::folder) return {};
  for (const char* start : indexPages) {
    std::string page = path.empty() ? start : appendPathComponent(path, start);
    found = find(page);
    if (found.kind == Kind::file) return {std::move(page), std::move(found)};
  }
  return {};
}

Descriptor BookFolder::locate(const std::string& path) const {
  Descriptor located = openBelow(_folder.get(), path.empty() ? "." : path, onlyLocate);
  struct stat information {};
  // Where the system cannot tell whether a link leads out, it is found itself, or not passed.
  const bool isLink =
      located && ::fstat(located.get(), &information) == 0 && S_ISLNK(information.st_mode);
  const bool leadsOut =
      !located && (errno == EXDEV || errno == ELOOP || errno == ENOTDIR || errno == EAGAIN);
  return isLink || leadsOut ? followOut(path) : std::move(located);
}

Descriptor BookFolder::followOut(const std::string& path) const {
  Descriptor at(-1);
  for (std::string_view rest = path; !rest.empty();) {
    const std::string name(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    if (name == "..") return Descriptor(-1);
    const int base = at ? at.get() : _folder.get();
    Descriptor next(retried([&] { return ::openat(base, name.c_str(), onlyLocate | O_NOFOLLOW); }));
    struct stat information {};
    if (!next || ::fstat(next.get(), &information) != 0) return Descriptor(-1);
    if (S_ISLNK(information.st_mode)) {
      if (information.st_uid != 0 && information.st_uid != _owner) return Descriptor(-1);
      next = Descriptor(retried([&] { return ::openat(base, name.c_str(), onlyLocate); }));
      if (!next) return next;
    }
    at = std::move(next);
  }
  return at && isPublic(at) ? std::move(at) : Descriptor(-1);
}

}  // namespace quorvex::view
