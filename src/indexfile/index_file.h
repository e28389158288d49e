#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex::reader {

/// The top level of an index file, its values still as bytes, which the file's bytes are shared
/// for. Only what a search needs is decoded: anchors and items may be most of a file.
struct IndexFile {
  Data archive;
  std::optional<Data> fullText;
  std::optional<Data> semantic;
  std::string_view anchors;  ///< CBOR map, empty when there is none
  std::string_view items;    ///< CBOR array, empty when there is none
  std::optional<std::string> remoteRoot;
  std::uint64_t mostNodes = 0;  ///< that the anchors or the items may hold
};

/// Takes the archive of a file apart.
Result<IndexFile> readIndexFile(const Data& archive, std::uint64_t mostNodes);

/// The dictionary of anchors: names to arrays of paths.
Result<Dictionary> readAnchors(const IndexFile& file);
/// The array of searchable items.
Result<Array> readItems(const IndexFile& file);

}  // namespace quorvex::reader
