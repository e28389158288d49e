#include "common/files.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/fill_buffer.h"
#include "common/retry.h"
#include "common/system_error.h"

namespace quorvex {

namespace {

/// Reads to the end of the file, whose size may have changed since it was queried.
Result<Data> readToEnd(int descriptor, std::size_t expectedSize, std::uint64_t limit) {
  // One spare byte, so an unchanged file is read without a resize.
  FillBuffer bytes(expectedSize + 1);
  std::size_t filled = 0;
  for (;;) {
    const ssize_t count =
        retried([&] { return ::read(descriptor, bytes.data() + filled, bytes.size() - filled); });
    if (count < 0) return systemError(errno);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
    if (filled > limit) return systemError(EFBIG);
    if (filled == bytes.size()) bytes.resize(bytes.size() * 2);
  }
  return bytes.take(filled);
}

Result<std::uint64_t> sizeOfRegularFile(int descriptor, std::uint64_t limit) {
  struct stat information = {};
  if (::fstat(descriptor, &information) != 0) return systemError(errno);
  if (const Status regular = regularFile(information.st_mode); !regular) return regular.error();
  const auto size = static_cast<std::uint64_t>(information.st_size);
  if (size > limit) return systemError(EFBIG);
  return size;
}

/// The home folder in the user database; empty if it has none. `user`: empty for this one.
std::string homeOf(const std::string& user) {
  constexpr std::size_t mostBytes = std::size_t{1} << 20U;
  std::string texts(1024, '\0');
  passwd entry = {};
  passwd* found = nullptr;
  const auto look = [&] {
    return user.empty() ? ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found)
                        : ::getpwnam_r(user.c_str(), &entry, texts.data(), texts.size(), &found);
  };
  while (look() == ERANGE && texts.size() < mostBytes)
    texts.resize(texts.size() * 2);
  return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : std::string();
}

}  // namespace

Result<NearPath> nearPath(const std::string& path) {
  NearPath near{Descriptor(-1), path.c_str()};
  std::string_view rest = path;
  while (rest.size() >= PATH_MAX) {
    const std::size_t slash = rest.rfind('/', PATH_MAX - 1);
    if (slash == std::string_view::npos || slash == 0) return systemError(ENAMETOOLONG);
    const std::string piece(rest.substr(0, slash));
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    near.folder = Descriptor(retried([&] { return ::openat(near.base(), piece.c_str(), flags); }));
    if (!near.folder) return systemError(errno);
    rest.remove_prefix(std::min(rest.find_first_not_of('/', slash), rest.size()));
  }
  near.rest = rest.data();
  return near;
}

Status regularFile(mode_t mode) {
  if (S_ISDIR(mode)) return systemError(EISDIR);
  if (!S_ISREG(mode)) return Error{"Not a regular file"};
  return okStatus();
}

Result<RegularFile> openRegularFile(const std::string& path, std::uint64_t limit) {
  // The system stops at a NUL and would open a file the user did not name.
  if (path.find('\0') != std::string::npos) return systemError(EINVAL);
  // Merely opening a device can do harm, so check the type first, and again after opening in case
  // the file was replaced. Non-blocking, so opening a FIFO without a writer returns at once.
  const Result<NearPath> near = nearPath(path);
  if (!near) return near.error();
  struct stat information = {};
  if (::fstatat(near->base(), near->rest, &information, 0) != 0) return systemError(errno);
  if (const Status regular = regularFile(information.st_mode); !regular) return regular.error();
  constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  Descriptor file(retried([&] { return ::openat(near->base(), near->rest, flags); }));
  if (!file) return systemError(errno);
  const Result<std::uint64_t> size = sizeOfRegularFile(file.get(), limit);
  if (!size) return size.error();
  return RegularFile{std::move(file), *size};
}

Result<Data> readOpenFile(int descriptor, std::uint64_t limit) {
  const Result<std::uint64_t> size = sizeOfRegularFile(descriptor, limit);
  if (!size) return size.error();
  return readToEnd(descriptor, static_cast<std::size_t>(*size), limit);
}

Result<Data> readFile(const std::string& path, std::uint64_t limit) {
  const Result<RegularFile> file = openRegularFile(path, limit);
  if (!file) return file.error();
  return readToEnd(file->descriptor.get(), static_cast<std::size_t>(file->size), limit);
}

Status readOpenFileInPieces(int descriptor, std::uint64_t limit,
                            const std::function<bool(std::string_view)>& take) {
  constexpr std::size_t pieceSize = std::size_t{64} * 1024;
  std::string piece(pieceSize, '\0');
  for (std::uint64_t total = 0;;) {
    const ssize_t count = retried([&] { return ::read(descriptor, piece.data(), piece.size()); });
    if (count < 0) return systemError(errno);
    if (count == 0) return okStatus();
    total += static_cast<std::uint64_t>(count);
    if (total > limit) return systemError(EFBIG);
    if (!take({piece.data(), static_cast<std::size_t>(count)})) return okStatus();
  }
}

Status readFileInPieces(const std::string& path, std::uint64_t limit,
                        const std::function<bool(std::string_view)>& take) {
  const Result<RegularFile> file = openRegularFile(path, limit);
  if (!file) return file.error();
  return readOpenFileInPieces(file->descriptor.get(), limit, take);
}

Status createFolders(const std::string& path) {
  std::error_code error;
  std::vector<std::string> missing;
  for (std::string folder = path; !std::filesystem::exists(folder, error);) {
    missing.push_back(std::move(folder));
    folder = folderOf(missing.back());
    if (folder == missing.back()) break;
  }
  std::filesystem::create_directories(path, error);
  if (error) return Error{error.message()};
  for (const std::string& folder : missing)
    flushFolder(folderOf(folder));
  return okStatus();
}

void flushFolder(const std::string& path) {
  const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) ::fsync(folder.get());
}

std::string folderOf(const std::string& path) {
  const std::string_view folder = withoutLastPathComponent(path);
  return folder.empty() ? "." : std::string(folder);
}

std::string expandTilde(std::string_view path) {
  if (!path.starts_with('~')) return std::string(path);
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string user(path.substr(1, end - 1));
  std::string home;
  if (user.empty()) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
    if (const char* variable = std::getenv("HOME")) home = variable;
  }
  if (home.empty()) {
    home = homeOf(user);
    if (home.empty()) return std::string(path);
  }
  return home.append(path.substr(end));
}

std::string standardizePath(std::string_view path) {
  const std::string expanded = expandTilde(path);
  const bool absolute = expanded.starts_with('/');
  std::vector<std::string_view> components;
  std::string_view rest = expanded;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    const std::string_view component = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (component.empty() || component == ".") continue;
    if (component == ".." && !components.empty() && components.back() != "..") {
      components.pop_back();
    } else if (component != ".." || !absolute) {
      components.push_back(component);
    }
  }
  std::string standardized = absolute ? "/" : "";
  for (const std::string_view component : components) {
    if (!standardized.empty() && standardized.back() != '/') standardized += '/';
    standardized += component;
  }
  // A path that reduces to nothing ("./.") still names the current folder.
  if (standardized.empty() && !expanded.empty()) standardized = ".";
  return standardized;
}

std::string_view lastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  if (path == "/") return path;
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view withoutLastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  path = path.substr(0, slash);
  while (!path.empty() && path.back() == '/')
    path.remove_suffix(1);
  return path.empty() ? std::string_view("/") : path;
}

std::string appendPathComponent(std::string_view base, std::string_view component) {
  std::string path(base);
  while (component.starts_with('/'))
    component.remove_prefix(1);
  if (!path.ends_with('/')) path += '/';
  return path.append(component);
}

}  // namespace quorvex
