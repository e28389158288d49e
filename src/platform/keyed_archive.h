#pragma once

#include <string_view>

#include "common/allowed_kinds.h"
#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// The keyed archive: one tree in deterministic CBOR (common/cbor.h).
//
//   archive = #6.55799({ "root": tree, "version": 1, "archiver": "QXKeyedArchiver" })

namespace quorvex {

/// Writes the archive of a tree to `sink`, piece by piece. The same tree gives the same bytes.
/// Fails when the tree nests too deeply or holds an empty object, and when the sink ends the work.
Status archiveKeyed(const Value& root, const ByteSink& sink);
/// `items`, when given, becomes their number, as readers count them.
Status archiveKeyed(const Dictionary& root, const ByteSink& sink, std::uint64_t* items = nullptr);

/// The tree of an archive. One value of a kind that is not allowed, one object of a class that is
/// not, and one key that stands twice refuse the archive as a whole.
Result<Value> unarchiveKeyed(std::string_view bytes, const AllowedKinds& kinds);
/// The same; long data values of the tree share `bytes`.
Result<Value> unarchiveKeyed(const Data& bytes, const AllowedKinds& kinds);

/// For those who take the root apart themselves: what stands in front of it, and what stands behind
/// it up to the end.
Status enterKeyedArchive(CborReader& reader);
Status leaveKeyedArchive(CborReader& reader);

}  // namespace quorvex
