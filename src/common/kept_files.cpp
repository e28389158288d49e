#include "common/kept_files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/private_folder.h"
#include "common/retry.h"
#include "common/system_error.h"

namespace quorvex {

namespace {

constexpr std::string_view unfinishedPrefix = ".quorvex-";  // of AtomicFile

using Nanoseconds = std::chrono::nanoseconds;
constexpr Nanoseconds longestUnused = std::chrono::hours(24 * 90);
/// No index takes so long to write.
constexpr Nanoseconds longestUnfinished = std::chrono::hours(1);

/// Two hexadecimal numbers: of the book or file, and of its content.
bool isIndex(std::string_view name) {
  constexpr std::size_t first = 16;
  if (!name.ends_with(keptIndexSuffix)) return false;
  name.remove_suffix(keptIndexSuffix.size());
  if (name.starts_with(keptItemsPrefix)) name.remove_prefix(keptItemsPrefix.size());
  const auto isNumber = [](std::string_view text) {
    return text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
  };
  return (name.size() == first + 1 + 16 || name.size() == first + 1 + 32) && name[first] == '-' &&
         isNumber(name.substr(0, first)) && isNumber(name.substr(first + 1));
}

/// Whether one of the programs gave a file its name.
bool isKept(std::string_view name) {
  return isIndex(name) || name.starts_with(unfinishedPrefix) || name == keptItemsSecret;
}

bool isOfThisUser(const struct stat& file, mode_t forbidden) {
  return file.st_uid == ::geteuid() && (file.st_mode & forbidden) == 0;
}

Error failure(const std::string& path, int code) {
  return {path + ": " + systemError(code).description};
}

}  // namespace

Result<KeptFiles> KeptFiles::in(const std::string& folder) {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  Descriptor opened(retried([&] { return ::open(folder.c_str(), flags); }));
  if (!opened) return failure(folder, errno);
  struct stat information {};
  if (::fstat(opened.get(), &information) != 0) return failure(folder, errno);
  if (!isOfThisUser(information, S_IRWXG | S_IRWXO)) {
    return Error{folder + " is not a private folder of yours"};
  }
  return KeptFiles(std::move(opened));
}

std::vector<KeptFile> KeptFiles::list() const {
  std::vector<KeptFile> files;
  // Not a copy of the descriptor, whose position all who list would share.
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const int number = retried([&] { return ::openat(_folder.get(), ".", flags); });
  if (number < 0) return files;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::fdopendir(number), ::closedir);
  if (folder == nullptr) {
    ::close(number);
    return files;
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): each thread reads a folder of its own
  while (const dirent* entry = ::readdir(folder.get())) {
    const char* const name = static_cast<const char*>(entry->d_name);
    struct stat found {};
    if (::fstatat(_folder.get(), name, &found, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (!S_ISREG(found.st_mode)) continue;
    files.push_back({name, static_cast<std::uint64_t>(found.st_size),
                     std::int64_t{found.st_mtim.tv_sec} * 1'000'000'000 + found.st_mtim.tv_nsec});
  }
  return files;
}

Descriptor KeptFiles::open(const std::string& name) const {
  constexpr int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  Descriptor file(retried([&] { return ::openat(_folder.get(), name.c_str(), flags); }));
  struct stat found {};
  const bool isSound = file && ::fstat(file.get(), &found) == 0 && S_ISREG(found.st_mode) &&
                       found.st_nlink == 1 && isOfThisUser(found, S_IWGRP | S_IWOTH);
  return isSound ? std::move(file) : Descriptor(-1);
}

bool KeptFiles::remove(const std::string& name) const {
  return ::unlinkat(_folder.get(), name.c_str(), 0) == 0 || errno == ENOENT;
}

void KeptFiles::tidy(std::vector<KeptFile> files, std::uint64_t mostBytes) const {
  const std::int64_t now =
      std::chrono::duration_cast<Nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count();
  for (const KeptFile& file : list()) {
    if (file.name.starts_with(unfinishedPrefix) && now - file.used > longestUnfinished.count())
      remove(file.name);
  }
  std::ranges::sort(files, {}, &KeptFile::used);
  std::uint64_t bytes = 0;
  for (const KeptFile& file : files)
    bytes += file.size;
  for (const KeptFile& file : files) {
    if (bytes <= mostBytes && now - file.used <= longestUnused.count()) break;
    bytes -= file.size;
    remove(file.name);
  }
}

Result<ClearedFiles> clearKeptFiles() {
  Result<std::string> path = cacheFolderPath();
  if (!path) return path.error();
  ClearedFiles cleared{.folder = *path};
  struct stat information {};
  if (::lstat(path->c_str(), &information) != 0 && errno == ENOENT) return cleared;
  path = cacheFolder();
  if (!path) return path.error();
  const Result<KeptFiles> folder = KeptFiles::in(*path);
  if (!folder) return folder.error();
  Status removed = okStatus();
  for (const KeptFile& file : folder->list()) {
    if (!isKept(file.name)) continue;
    if (folder->remove(file.name)) {
      ++cleared.count;
      cleared.bytes += file.size;
    } else {
      removed = failure(*path + '/' + file.name, errno);
    }
  }
  if (!removed) return removed.error();
  return cleared;
}

}  // namespace quorvex
