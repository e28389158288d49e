#include "cli/index_container.h"

#include <exception>
#include <utility>

#include "common/atomic_file.h"
#include "common/files.h"
#include "common/log.h"
#include "indexfile/index_file_reader.h"
#include "indexfile/index_file_writer.h"
#include "platform/system_log.h"
#include "platform/termination_guard.h"

namespace quorvex {

namespace {

/// Returns null when there is nothing to unarchive. Turns exceptions into errors.
std::optional<Result<Dictionary>> readCompressed(const std::string& path) try {
  const Result<DecompressedFile> file = decompressFile(path);
  if (!file || !file->content || file->content->empty()) return std::nullopt;
  return readIndexDictionary(*file->content, file->limits);
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
  bool written = false;
  if (format == IndexFormat::none) {
    written = writeSequentialIndex(*index, file);
  } else {
    const Result<IndexFileOutcome> outcome = writeCompressedIndex(*index, file);
    if (!outcome) {
      QXLog(1, "Error serializing index data <%@>", outcome.error());
      return false;
    }
    written = *outcome != IndexFileOutcome::fileFailed;
  }
  if (!written) QXLog(1, notWritten, *path);
  return written;
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
