#pragma once

#include "common/atomic_file.h"
#include "common/result.h"
#include "common/value.h"

namespace quorvex {

enum class IndexFileOutcome {
  written,
  nothingToWrite,  ///< compressing failed
  fileFailed,
};

/// Writes the index to `file` as a keyed archive that is compressed as a whole. Fails when the
/// index cannot be archived. The file is committed only when it was written.
Result<IndexFileOutcome> writeCompressedIndex(const Dictionary& index, AtomicFile& file);

/// Writes the index to `file` as a sequential archive; false, without committing it, when that
/// fails.
bool writeSequentialIndex(const Dictionary& index, AtomicFile& file);

}  // namespace quorvex
