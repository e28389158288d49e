#include "reader/beacon_cache.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/auxv.h>
#include <sys/random.h>

#include "common/atomic_file.h"
#include "common/checksum.h"
#include "common/files.h"
#include "common/hexadecimal.h"
#include "common/kept_files.h"
#include "common/private_folder.h"
#include "common/unicode.h"
#include "indexfile/index_file_writer.h"

namespace quorvex::reader {

namespace {

/// Raise it when the same release would make another index of the same items.
constexpr std::string_view makerVersion = QUORVEX_VERSION " 1";

constexpr std::uint64_t mostBytes = std::uint64_t{512} << 20U;
constexpr mode_t ownerOnly = 0600;

bool isAllowed() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the environment is never written
  const char* const wanted = std::getenv("QUORVEX_CACHE");
  if (wanted != nullptr && std::string_view(wanted) == "no") return false;
  // The environment is that of another user.
  return ::getauxval(AT_SECURE) == 0;
}

/// Null unless it is a regular file.
std::optional<struct stat> regularFileAt(const std::string& path) {
  const Result<NearPath> near = nearPath(path);
  struct stat found = {};
  const bool isFile =
      near && ::fstatat(near->base(), near->rest, &found, 0) == 0 && S_ISREG(found.st_mode);
  return isFile ? std::optional(found) : std::nullopt;
}

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Whether a change after `now` gives a file last changed at `changed` another time.
bool isSettled(const timespec& changed, const timespec& now) {
  // Some file systems count whole seconds, or two.
  constexpr std::int64_t fine = 20'000'000;
  constexpr std::int64_t coarse = 3'000'000'000;
  return nanoseconds(now) - nanoseconds(changed) > (changed.tv_nsec == 0 ? coarse : fine);
}

bool isSameVersion(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
         nanoseconds(a.st_mtim) == nanoseconds(b.st_mtim) &&
         nanoseconds(a.st_ctim) == nanoseconds(b.st_ctim);
}

/// While it lives, a limit on the size of files makes this thread's writes fail, and does not end
/// the process.
class FileSizeSignal {
 public:
  FileSizeSignal() {
    ::sigemptyset(&_signal);
    ::sigaddset(&_signal, SIGXFSZ);
    ::pthread_sigmask(SIG_BLOCK, &_signal, &_before);
  }
  ~FileSizeSignal() {
    if (::sigismember(&_before, SIGXFSZ) == 1) return;
    constexpr timespec atOnce = {};
    ::sigtimedwait(&_signal, nullptr, &atOnce);
    ::pthread_sigmask(SIG_UNBLOCK, &_signal, nullptr);
  }
  FileSizeSignal(const FileSizeSignal&) = delete;
  FileSizeSignal& operator=(const FileSizeSignal&) = delete;

 private:
  sigset_t _signal = {};
  sigset_t _before = {};
};

/// Begins the names of indexes that were made from files of a size.
std::string prefixFor(std::uint64_t size) {
  return std::string(keptItemsPrefix) + hexadecimal(size, 16) + '-';
}

/// The name of the index that is made from a file; null if it cannot be read.
std::optional<std::string> nameFor(const std::string& path, std::string secret) {
  SecretChecksum checksum(std::move(secret));
  // With their final zero bytes, so that they and the file cannot be mistaken for each other.
  checksum.add({makerVersion.data(), makerVersion.size() + 1});
  checksum.add({unicodeLibraryVersion().data(), unicodeLibraryVersion().size() + 1});
  std::uint64_t size = 0;
  const Status read = readFileInPieces(path, maximumFileSize, [&](std::string_view piece) {
    checksum.add(piece);
    size += piece.size();
    return true;
  });
  if (!read) return std::nullopt;
  return prefixFor(size) + checksum.sum() + std::string(keptIndexSuffix);
}

std::optional<std::string> secretIn(const KeptFiles& files) {
  const Descriptor file = files.open(std::string(keptItemsSecret));
  if (!file) return std::nullopt;
  const Result<Data> secret = readOpenFile(file.get(), SecretChecksum::secretSize);
  if (!secret || secret->size() != SecretChecksum::secretSize) return std::nullopt;
  return std::string(secret->bytes());
}

/// Null if none can be kept.
std::optional<std::string> newSecretIn(const KeptFiles& files, const std::string& folder) {
  std::string secret(SecretChecksum::secretSize, '\0');
  if (::getentropy(secret.data(), secret.size()) != 0) return std::nullopt;
  files.remove(std::string(keptItemsSecret));
  AtomicFile file(appendPathComponent(folder, keptItemsSecret), ownerOnly);
  if (!file.open() || !file.write(secret) || !file.commit()) return std::nullopt;
  return secretIn(files);  // perhaps another program's, if two have made one at once
}

}  // namespace

BeaconCache::BeaconCache(std::string path) : _path(std::move(path)) {
  if (!isAllowed()) return;
  ::clock_gettime(CLOCK_REALTIME_COARSE, &_now);
  _file = regularFileAt(_path);
}

std::optional<BeaconCache::Kept> BeaconCache::find() const {
  if (!_file) return std::nullopt;
  const Result<std::string> folder = cacheFolderPath();
  if (!folder) return std::nullopt;
  const Result<KeptFiles> files = KeptFiles::in(*folder);
  if (!files) return std::nullopt;
  const std::string prefix = prefixFor(static_cast<std::uint64_t>(_file->st_size));
  const auto isLikely = [&](const KeptFile& file) { return file.name.starts_with(prefix); };
  if (std::ranges::none_of(files->list(), isLikely)) return std::nullopt;
  std::optional<std::string> secret = secretIn(*files);
  if (!secret) return std::nullopt;
  std::optional<std::string> name = nameFor(_path, *std::move(secret));
  if (!name) return std::nullopt;
  Descriptor file = files->open(*name);
  if (!file) return std::nullopt;
  ::futimens(file.get(), nullptr);  // it is in use
  struct stat status = {};
  if (::fstat(file.get(), &status) != 0) return std::nullopt;
  return Kept{*std::move(name), {std::move(file), static_cast<std::uint64_t>(status.st_size)}};
}

bool BeaconCache::isOfSameFile() const {
  const std::optional<struct stat> file = regularFileAt(_path);
  return file && _file && isSameVersion(*file, *_file);
}

void BeaconCache::discard(const std::string& name) {
  const Result<std::string> folder = cacheFolderPath();
  if (!folder) return;
  if (const Result<KeptFiles> files = KeptFiles::in(*folder)) files->remove(name);
}

void BeaconCache::keep(const Dictionary& index) const try {
  if (!_file || !isSettled(_file->st_ctim, _now)) return;
  const FileSizeSignal held;
  const Result<std::string> folder = cacheFolder();
  if (!folder) return;
  const Result<KeptFiles> files = KeptFiles::in(*folder);
  if (!files) return;
  std::optional<std::string> secret = secretIn(*files);
  if (!secret) secret = newSecretIn(*files, *folder);
  if (!secret) return;
  const std::optional<std::string> name = nameFor(_path, *std::move(secret));
  if (!name || !isOfSameFile()) return;
  files->remove(*name);  // what is there cannot be used, and must not be written through
  AtomicFile kept(appendPathComponent(*folder, *name), ownerOnly);
  const Result<IndexFileOutcome> written = writeCompressedIndex(index, kept);
  if (!written || *written != IndexFileOutcome::written) return;
  std::vector<KeptFile> all = files->list();
  std::erase_if(all, [](const KeptFile& each) {
    return !each.name.starts_with(keptItemsPrefix) || !each.name.ends_with(keptIndexSuffix);
  });
  files->tidy(std::move(all), mostBytes);
} catch (const std::exception&) {
  return;  // even if memory runs out, what was made can be searched
}

}  // namespace quorvex::reader
