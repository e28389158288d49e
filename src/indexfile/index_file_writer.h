#pragma once

#include "common/atomic_file.h"
#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

namespace quorvex {

enum class IndexFileOutcome {
  written,
  nothingToWrite,  ///< compressing failed
  fileFailed,
};

/// Passes the index as one compressed keyed archive to `sink`, which fails by returning false.
/// Fails if the index cannot be archived.
Result<IndexFileOutcome> compressIndex(const Dictionary& index, const ByteSink& sink);

/// Writes the index to `file` as one compressed keyed archive. Fails if the index cannot be
/// archived. Commits the file only on success.
Result<IndexFileOutcome> writeCompressedIndex(const Dictionary& index, AtomicFile& file);

/// Writes the index to `file` as a sequential archive. On failure, returns false and does not
/// commit the file.
bool writeSequentialIndex(const Dictionary& index, AtomicFile& file);

}  // namespace quorvex
