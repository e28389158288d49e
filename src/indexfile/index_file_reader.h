#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"
#include "platform/compression.h"

namespace quorvex {

/// Everything in the archive that an index file of a compressed format holds.
Result<Dictionary> readIndexDictionary(const Data& archive, const FrameLimits& limits);

/// The top level of such an archive. Values stay encoded and share the archive's bytes; only what a
/// search needs is decoded, as anchors and items may be most of a file.
struct IndexFile {
  Data archive;
  std::optional<Data> fullText;
  std::optional<Data> semantic;
  std::string_view anchors;  ///< CBOR map, empty when there is none
  std::string_view items;    ///< CBOR array, empty when there is none
  std::optional<std::string> remoteRoot;
  std::uint64_t mostNodes = 0;  ///< that the anchors or the items may hold
};

Result<IndexFile> readIndexFile(const Data& archive, const FrameLimits& limits);

/// The dictionary of anchors: names to arrays of paths.
Result<Dictionary> readAnchors(const IndexFile& file);
/// The array of searchable items.
Result<Array> readItems(const IndexFile& file);

}  // namespace quorvex
