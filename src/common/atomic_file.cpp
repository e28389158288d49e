#include "common/atomic_file.h"

#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/descriptor.h"
#include "common/files.h"
#include "common/log.h"
#include "common/output.h"
#include "common/retry.h"
#include "common/system_error.h"

namespace quorvex {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t ownerOnly = 0600;
constexpr int maximumLinks = 40;  // the kernel's limit

/// Returns the target of the symbolic link at `path`, or nothing if it is not one. In /tmp, anybody
/// could plant a link at a path that another user is about to write. The kernel guards the links it
/// follows (fs.protected_symlinks); this applies the same rule to links that the program resolves.
Result<std::optional<std::string>> linkTarget(const std::string& path) {
  std::optional<std::string> none;
  const Descriptor link(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!link && (errno == ENOENT || errno == ENOTDIR)) return none;
  struct stat information = {};
  if (!link || ::fstat(link.get(), &information) != 0) return systemError(errno);
  if (!S_ISLNK(information.st_mode)) return none;
  constexpr mode_t shared = S_ISVTX | S_IWOTH;
  struct stat folder = {};
  if (::stat(folderOf(path).c_str(), &folder) != 0) return systemError(errno);
  if ((folder.st_mode & shared) == shared && information.st_uid != ::geteuid() &&
      information.st_uid != folder.st_uid) {
    static constexpr const char* reason =
        "Not following another user's symbolic link in a world-writable folder";
    QXLog(1, "%@: %@", reason, path);
    return Error{reason};
  }
  std::array<char, PATH_MAX> target{};
  const ssize_t size = ::readlinkat(link.get(), "", target.data(), target.size());
  if (size <= 0) return systemError(size < 0 ? errno : ENOENT);
  return std::optional(std::string(target.data(), static_cast<std::size_t>(size)));
}

/// Follows symbolic links at `path` itself, including dangling ones.
Result<std::string> resolveLinks(std::string path) {
  for (int links = 0; links <= maximumLinks; ++links) {
    const Result<std::optional<std::string>> link = linkTarget(path);
    if (!link) return link.error();
    if (!*link) return path;
    const std::string& target = **link;
    path = target.starts_with('/') ? target : appendPathComponent(folderOf(path), target);
  }
  return systemError(ELOOP);
}

/// Creates a new file and opens it for writing; returns -1 and sets errno on failure. Unlike with
/// mkostemp(3), `mode` and the umask determine its permissions.
int createTemporary(const std::string& folder, mode_t mode, std::string& path) {
  // A short name: one derived from the target's could exceed the length limit.
  static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  constexpr int attempts = 100;
  int descriptor = -1;
  for (int i = 0; i < attempts; ++i) {
    std::array<unsigned char, 8> random{};
    if (::getrandom(random.data(), random.size(), 0) < 0) return -1;
    path = appendPathComponent(folder, ".quorvex-");
    for (const unsigned char byte : random)
      path += letters[byte % letters.size()];
    descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor >= 0 || errno != EEXIST) break;
  }
  return descriptor;
}

}  // namespace

AtomicFile::AtomicFile(std::string path, mode_t newFileMode)
    : _path(std::move(path)), _newFileMode(newFileMode) {}

AtomicFile::~AtomicFile() {
  discard();
}

void AtomicFile::discard() {
  if (_descriptor >= 0) ::close(std::exchange(_descriptor, -1));
  if (!_temporaryPath.empty()) ::unlink(std::exchange(_temporaryPath, {}).c_str());
}

Status AtomicFile::failure(int code) {
  discard();
  return systemError(code);
}

Status AtomicFile::open() {
  if (_path.empty() || _path.find('\0') != std::string::npos) return systemError(EINVAL);
  Result<std::string> resolved = resolveLinks(_path);
  if (!resolved) return resolved.error();
  _path = *std::move(resolved);
  struct stat target = {};
  const bool replaces = ::stat(_path.c_str(), &target) == 0;
  if (!replaces && errno != ENOENT) return systemError(errno);
  if (replaces) {
    if (Status regular = regularFile(target.st_mode); !regular) return regular;
  }
  std::string name;
  _descriptor = createTemporary(folderOf(_path), replaces ? ownerOnly : _newFileMode, name);
  if (_descriptor < 0) return systemError(errno);
  _temporaryPath = std::move(name);
  if (replaces && ::fchmod(_descriptor, target.st_mode & permissionBits) != 0)
    return failure(errno);
  return okStatus();
}

Status AtomicFile::write(std::string_view bytes) {
  if (!writeFully(_descriptor, bytes)) return failure(errno);
  return okStatus();
}

Status AtomicFile::commit() {
  if (retried([this] { return ::fsync(_descriptor); }) != 0) return failure(errno);
  // An interrupted close() still closes the file, and its data is already on disk.
  if (::close(std::exchange(_descriptor, -1)) != 0 && errno != EINTR) return failure(errno);
  if (::rename(_temporaryPath.c_str(), _path.c_str()) != 0) return failure(errno);
  _temporaryPath.clear();
  // The new file is already in place; flushing the folder only makes it survive a power cut.
  flushFolder(folderOf(_path));
  return okStatus();
}

}  // namespace quorvex
