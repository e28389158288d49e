#include "indexfile/index_file_writer.h"

#include <exception>
#include <new>

#include "common/memory_shortage.h"
#include "indexfile/keys.h"
#include "platform/compression.h"
#include "platform/keyed_archive.h"
#include "platform/sequential_archive.h"

namespace quorvex {

namespace {

/// Measures the archive by producing it once, so that it need not be kept in memory for
/// compression.
Result<ArchiveOutline> archiveOutline(const Dictionary& index) try {
  ArchiveOutline outline;
  const auto ignore = [](std::string_view) { return true; };
  if (const Status archived = archiveKeyed(index, ignore, &outline); !archived) {
    return archived.error();
  }
  return outline;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& exception) {
  return Error{exception.what()};
}

/// Archives and compresses the index into the sink.
IndexFileOutcome compressInto(const Dictionary& index, const ArchiveOutline& outline,
                              const ByteSink& sink) try {
  bool fileFailed = false;
  const auto write = [&](std::string_view piece) {
    fileFailed = !sink(piece);
    return !fileFailed;
  };
  // Searchable items are of no use one by one.
  const bool isReadWhole = index.contains(indexableItemsKey);
  Compressor compressor(outline.size, write, outline.items,
                        isReadWhole ? ReadingOrder::whole : ReadingOrder::anyParts);
  const Status archived = archiveKeyed(
      index, [&compressor](std::string_view piece) { return compressor.write(piece); });
  const bool compressed = archived && compressor.finishWithTable(outline.bounds);
  if (fileFailed) return IndexFileOutcome::fileFailed;
  if (!compressed && memoryShortages() > 0) throw std::bad_alloc();  // in the compressor
  return compressed ? IndexFileOutcome::written : IndexFileOutcome::nothingToWrite;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  return IndexFileOutcome::nothingToWrite;
}

}  // namespace

Result<IndexFileOutcome> compressIndex(const Dictionary& index, const ByteSink& sink) {
  const Result<ArchiveOutline> outline = archiveOutline(index);
  if (!outline) return outline.error();
  return compressInto(index, *outline, sink);
}

Result<IndexFileOutcome> writeCompressedIndex(const Dictionary& index, AtomicFile& file) {
  const Result<ArchiveOutline> outline = archiveOutline(index);
  if (!outline) return outline.error();
  if (!file.open()) return IndexFileOutcome::fileFailed;
  const IndexFileOutcome outcome = compressInto(
      index, *outline, [&file](std::string_view piece) { return file.write(piece).ok(); });
  return outcome == IndexFileOutcome::written && !file.commit() ? IndexFileOutcome::fileFailed
                                                                : outcome;
}

bool writeSequentialIndex(const Dictionary& index, AtomicFile& file) try {
  return file.open() &&
         archiveSequentially(index,
                             [&file](std::string_view piece) { return file.write(piece).ok(); }) &&
         file.commit();
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  return false;
}

}  // namespace quorvex
