#include "cli/index_container.h"

#include <exception>
#include <new>
#include <utility>

#include "common/atomic_file.h"
#include "common/files.h"
#include "common/log.h"
#include "common/memory_shortage.h"
#include "platform/compression.h"
#include "platform/keyed_archive.h"
#include "platform/searchable_item.h"
#include "platform/sequential_archive.h"
#include "platform/system_log.h"
#include "platform/termination_guard.h"

namespace quorvex {

namespace {

struct Extent {
  std::uint64_t size = 0;
  std::uint64_t items = 0;
};

/// The extent of the archive; makes it once for that, so that it need not be held while it is
/// compressed.
Result<Extent> archiveExtent(const Dictionary& index) try {
  Extent extent;
  const auto count = [&extent](std::string_view piece) {
    extent.size += piece.size();
    return true;
  };
  if (const Status archived = archiveKeyed(index, count, &extent.items); !archived) {
    return archived.error();
  }
  return extent;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& exception) {
  return Error{exception.what()};
}

enum class Outcome { written, nothingToWrite, fileFailed };

/// Archives and compresses into the file; on any outcome but `written` it stays uncommitted.
Outcome writeCompressed(const Dictionary& index, const Extent& extent, AtomicFile& file) try {
  bool fileFailed = false;
  const auto write = [&](std::string_view piece) {
    fileFailed = !file.write(piece);
    return !fileFailed;
  };
  Compressor compressor(extent.size, write, extent.items);
  const Status archived = archiveKeyed(
      index, [&compressor](std::string_view piece) { return compressor.write(piece); });
  const bool compressed = archived && compressor.finish();
  if (fileFailed) return Outcome::fileFailed;
  if (!compressed && memoryShortages() > 0) throw std::bad_alloc();  // the compressor's
  return compressed ? Outcome::written : Outcome::nothingToWrite;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  return Outcome::nothingToWrite;
}

bool writeSequential(const Dictionary& index, AtomicFile& file) try {
  return file.open() &&
         archiveSequentially(index,
                             [&file](std::string_view piece) { return file.write(piece).ok(); }) &&
         file.commit();
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  return false;
}

Result<Dictionary> unarchivedDictionary(const Data& archive, const FrameLimits& limits) {
  Result<Value> root = unarchiveKeyed(archive, valuesAndSearchableItems().limitNodes(limits.nodes));
  if (!root) return root.error();
  if (Dictionary* dictionary = root->dictionary()) return std::move(*dictionary);
  return Error{"The archive holds no dictionary but a value of kind " + kindName(*root)};
}

/// Null without an error when there is nothing to unarchive. An exception is an error as well.
std::optional<Result<Dictionary>> readCompressed(const std::string& path) try {
  const Result<DecompressedFile> file = decompressFile(path);
  if (!file || !file->content || file->content->empty()) return std::nullopt;
  return unarchivedDictionary(*file->content, file->limits);
} catch (const std::exception& exception) {
  return Error{exception.what()};
}

}  // namespace

bool writeIndexFile(const std::optional<Dictionary>& index, const std::optional<std::string>& path,
                    IndexFormat format) {
  static constexpr std::string_view noDirectory = "Error creating directory at path <%@>: %@";
  static constexpr std::string_view notWritten = "Error writing out generated index to path <%@>";
  if (!index) return false;
  if (!path) {
    QXLog(1, noDirectory, std::nullopt, std::nullopt);
    return false;
  }
  const std::string directory = folderOf(*path);
  if (const Status made = createFolders(directory); !made) {
    QXLog(1, noDirectory, directory, made.error());
    return false;
  }
  QXLog(3, "Writing generated index out to path: %@", *path);
  const TerminationGuard guard;
  AtomicFile file(*path);
  if (format == IndexFormat::none) {
    if (writeSequential(*index, file)) return true;
    QXLog(1, notWritten, *path);
    return false;
  }
  const Result<Extent> extent = archiveExtent(*index);
  if (!extent) {
    QXLog(1, "Error serializing index data <%@>", extent.error());
    return false;
  }
  const Outcome outcome =
      file.open() ? writeCompressed(*index, *extent, file) : Outcome::fileFailed;
  if (outcome == Outcome::nothingToWrite) return true;
  if (outcome == Outcome::written && file.commit()) return true;
  QXLog(1, notWritten, *path);
  return false;
}

std::optional<Dictionary> readIndexFileForCreate(const std::optional<std::string>& path,
                                                 IndexFormat format) {
  if (format == IndexFormat::none) {
    QXLog(0, "Unsuported index format");
    return std::nullopt;
  }
  if (!path) return std::nullopt;
  const TerminationGuard guard;
  std::optional<Result<Dictionary>> read = readCompressed(*path);
  if (!read) return std::nullopt;
  if (*read) return **std::move(read);
  QXLog(1, "Error trying to unarchive index data. Original path is <%@>. Error: %@", path,
        read->error());
  return std::nullopt;
}

std::optional<Dictionary> readIndexFileForListing(const std::string& path) {
  std::optional<Result<Dictionary>> read = readCompressed(path);
  if (!read) return std::nullopt;
  if (*read) return **std::move(read);
  systemLog(formatText("Error unarchiving file at <%@>: %@", {path, read->error()}));
  return std::nullopt;
}

}  // namespace quorvex
