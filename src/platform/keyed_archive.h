#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "common/allowed_kinds.h"
#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// The keyed archive: one tree in deterministic CBOR (common/cbor.h).
//
//   archive = #6.55799({ "root": tree, "version": 1, "archiver": "QXKeyedArchiver" })

namespace quorvex {

/// What the parts of an archive measure.
struct ArchiveOutline {
  std::uint64_t size = 0;
  std::uint64_t items = 0;  ///< values, as readers count them
  /// Where the keys of the root begin, and where its last value ends.
  std::vector<std::uint64_t> bounds;
};

/// Writes the archive of a tree to `sink` in pieces. The same tree yields the same bytes. Fails if
/// the tree nests too deeply or contains an empty object, or if the sink stops the work. Fills
/// `outline`, if given.
Status archiveKeyed(const Dictionary& root, const ByteSink& sink,
                    ArchiveOutline* outline = nullptr);

/// Returns the tree of an archive. Refuses the whole archive on any disallowed kind or class or any
/// duplicate key.
Result<Value> unarchiveKeyed(std::string_view bytes, const AllowedKinds& kinds);
/// Likewise; long data values in the tree share `bytes`.
Result<Value> unarchiveKeyed(const Data& bytes, const AllowedKinds& kinds);

/// For callers that parse the root themselves: these read what precedes it and what follows it to
/// the end.
Status enterKeyedArchive(CborReader& reader);
Status leaveKeyedArchive(CborReader& reader);

}  // namespace quorvex
