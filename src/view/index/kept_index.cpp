#include "view/index/kept_index.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/atomic_file.h"
#include "common/checksum.h"
#include "common/files.h"
#include "common/hexadecimal.h"

namespace quorvex::view {

namespace {

constexpr std::size_t digits = 16;
constexpr std::size_t prefixSize = digits + 1;
constexpr mode_t ownerOnly = 0600;

constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30U;

/// Null unless the name is that of a kept index.
std::optional<std::uint64_t> fingerprintOf(std::string_view name) {
  if (name.size() != prefixSize + digits + keptIndexSuffix.size() ||
      !name.ends_with(keptIndexSuffix)) {
    return std::nullopt;
  }
  std::uint64_t fingerprint = 0;
  const char* const begin = name.data() + prefixSize;
  const auto read = std::from_chars(begin, begin + digits, fingerprint, 16);
  if (read.ec != std::errc() || read.ptr != begin + digits) return std::nullopt;
  return fingerprint;
}

}  // namespace

Result<KeptIndex> KeptIndex::in(const std::string& cacheFolder, const std::string& book) {
  Result<KeptFiles> files = KeptFiles::in(cacheFolder);
  if (!files) return files.error();
  return KeptIndex(*std::move(files), cacheFolder, hexadecimal(checksum(book), digits) + '-');
}

std::string KeptIndex::pathFor(std::uint64_t fingerprint) const {
  return appendPathComponent(
      _folder, _prefix + hexadecimal(fingerprint, digits) + std::string(keptIndexSuffix));
}

std::optional<KeptIndex::File> KeptIndex::newest() const {
  std::vector<KeptFile> files = _files.list();
  std::erase_if(files, [&](const KeptFile& file) {
    return !file.name.starts_with(_prefix) || !fingerprintOf(file.name);
  });
  const auto last = std::ranges::max_element(files, {}, &KeptFile::used);
  if (last == files.end()) return std::nullopt;
  return File{appendPathComponent(_folder, last->name), *fingerprintOf(last->name)};
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
  tidy(fingerprint);
  return kept;
}

void KeptIndex::touch(const File& file) {
  ::utimensat(AT_FDCWD, file.path.c_str(), nullptr, 0);
}

void KeptIndex::tidy(std::uint64_t kept) const {
  std::vector<KeptFile> others;
  std::uint64_t room = mostBytes;
  for (KeptFile& file : _files.list()) {
    const std::optional<std::uint64_t> fingerprint = fingerprintOf(file.name);
    if (!fingerprint) continue;
    if (!file.name.starts_with(_prefix)) {
      others.push_back(std::move(file));
    } else if (*fingerprint == kept) {
      room -= std::min(room, file.size);
    } else {
      _files.remove(file.name);  // an earlier one
    }
  }
  _files.tidy(std::move(others), room);
}

}  // namespace quorvex::view
