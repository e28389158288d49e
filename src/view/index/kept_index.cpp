#include "view/index/kept_index.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/atomic_file.h"
#include "common/checksum.h"
#include "common/files.h"
#include "common/format.h"
#include "common/system_error.h"
#include "view/hexadecimal.h"

namespace quorvex::view {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view suffix = ".bchelpindex";
constexpr std::string_view unfinishedPrefix = ".quorvex-";  // of AtomicFile
constexpr std::size_t digits = 16;
constexpr std::size_t prefixSize = digits + 1;
constexpr mode_t ownerOnly = 0600;

constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30U;
constexpr auto longestUnused = std::chrono::hours(24 * 90);
/// No index takes so long to write.
constexpr auto longestUnfinished = std::chrono::hours(1);

/// Null unless the name is that of a kept index.
std::optional<std::uint64_t> fingerprintOf(std::string_view name) {
  if (name.size() != prefixSize + digits + suffix.size() || !name.ends_with(suffix)) {
    return std::nullopt;
  }
  std::uint64_t fingerprint = 0;
  const char* const begin = name.data() + prefixSize;
  const auto read = std::from_chars(begin, begin + digits, fingerprint, 16);
  if (read.ec != std::errc() || read.ptr != begin + digits) return std::nullopt;
  return fingerprint;
}

struct Entry {
  std::string path;
  std::string name;
  fs::file_time_type used;
  std::uintmax_t size = 0;
};

/// The folder's regular files.
std::vector<Entry> entriesOf(const std::string& folder) {
  std::vector<Entry> entries;
  std::error_code error;
  for (fs::directory_iterator at(folder, error); !error && at != fs::directory_iterator();
       at.increment(error)) {
    std::error_code gone;
    if (!fs::is_regular_file(at->symlink_status(gone))) continue;
    Entry entry{at->path(), at->path().filename(), at->last_write_time(gone), 0};
    if (!gone) entry.size = at->file_size(gone);
    if (!gone) entries.push_back(std::move(entry));
  }
  return entries;
}

void remove(const Entry& entry) {
  ::unlink(entry.path.c_str());
}

}  // namespace

Result<KeptIndex> KeptIndex::in(const std::string& cacheFolder, const std::string& book) {
  struct stat folder = {};
  if (::stat(cacheFolder.c_str(), &folder) != 0) return systemError(errno);
  if (!S_ISDIR(folder.st_mode) || folder.st_uid != ::geteuid() || (folder.st_mode & 077U) != 0) {
    return Error{cacheFolder + " is not a private folder of yours"};
  }
  return KeptIndex(cacheFolder, hexadecimal(checksum(book), digits) + '-');
}

std::string KeptIndex::pathFor(std::uint64_t fingerprint) const {
  return appendPathComponent(_folder,
                             _prefix + hexadecimal(fingerprint, digits) + std::string(suffix));
}

std::optional<KeptIndex::File> KeptIndex::newest() const {
  std::vector<Entry> entries = entriesOf(_folder);
  std::erase_if(entries, [&](const Entry& entry) {
    return !entry.name.starts_with(_prefix) || !fingerprintOf(entry.name);
  });
  const auto last = std::ranges::max_element(entries, {}, &Entry::used);
  if (last == entries.end()) return std::nullopt;
  return File{last->path, *fingerprintOf(last->name)};
}

std::optional<KeptIndex::File> KeptIndex::madeFrom(std::uint64_t fingerprint) const {
  File file{pathFor(fingerprint), fingerprint};
  if (::access(file.path.c_str(), R_OK) != 0) return std::nullopt;
  return file;
}

Result<KeptIndex::File> KeptIndex::keep(std::string_view bytes, std::uint64_t fingerprint) const {
  File kept{pathFor(fingerprint), fingerprint};
  AtomicFile file(kept.path, ownerOnly);
  Status written = file.open();
  if (written) written = file.write(bytes);
  if (written) written = file.commit();
  if (!written) return written.error();
  tidy(kept);
  return kept;
}

void KeptIndex::touch(const File& file) {
  ::utimensat(AT_FDCWD, file.path.c_str(), nullptr, 0);
}

void KeptIndex::tidy(const File& kept) const {
  const auto now = fs::file_time_type::clock::now();
  std::vector<Entry> others;
  std::uintmax_t bytes = 0;
  for (Entry& entry : entriesOf(_folder)) {
    if (entry.path == kept.path) {
      bytes += entry.size;
    } else if (entry.name.starts_with(unfinishedPrefix)) {
      if (now - entry.used > longestUnfinished) remove(entry);
    } else if (fingerprintOf(entry.name)) {
      const bool isEarlier = entry.name.starts_with(_prefix);
      if (isEarlier || now - entry.used > longestUnused) {
        remove(entry);
      } else {
        bytes += entry.size;
        others.push_back(std::move(entry));
      }
    }
  }
  std::ranges::sort(others, {}, &Entry::used);
  for (const Entry& entry : others) {
    if (bytes <= mostBytes) break;
    bytes -= entry.size;
    remove(entry);
  }
}

}  // namespace quorvex::view
