#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"
#include "platform/compression.h"

namespace quorvex {

/// Reads the complete archive of an index file in a compressed format.
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
  std::uint64_t mostNodes = 0;  ///< limit for the anchors and for the items
};

Result<IndexFile> readIndexFile(const Data& archive, const FrameLimits& limits);

/// Reads the dictionary of anchors: names to arrays of paths.
Result<Dictionary> readAnchors(const IndexFile& file);
/// Reads the array of searchable items.
Result<Array> readItems(const IndexFile& file);

}  // namespace quorvex
