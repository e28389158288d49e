#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/result.h"
#include "common/value.h"
#include "indexfile/frame_store.h"
#include "platform/compression.h"

namespace quorvex {

/// Reads the complete archive of an index file in a compressed format.
Result<Dictionary> readIndexDictionary(const Data& archive, const FrameLimits& limits);

/// The top level of such an archive. Values stay encoded and share the archive's bytes; only what a
/// search needs is decoded, as anchors and items may be most of a file.
struct IndexFile {
  std::optional<Data> fullText;
  std::optional<Data> semantic;
  Data anchors;  ///< CBOR map, empty when there is none
  Data items;    ///< CBOR array, empty when there is none
  std::optional<std::string> remoteRoot;
  std::uint64_t mostNodes = 0;  ///< limit for the anchors and for the items
  /// What unpacks all of this on demand; whoever reads it needs a FrameStore::Use. Null if it is
  /// there.
  std::shared_ptr<const FrameStore> store;
};

Result<IndexFile> readIndexFile(const Result<Data>& archive, const FrameLimits& limits);

struct OpenedIndexFile {
  Result<IndexFile> file;  ///< or why it is none
};

/// Opens an index file by its table, reading little of it; one without a usable table is unpacked.
/// Fails if the file cannot be read.
Result<OpenedIndexFile> openIndexFile(const std::string& path);

/// Opens an index file by its table; null without a usable one.
std::optional<IndexFile> openByTable(RegularFile file);

/// Reads the dictionary of anchors: names to arrays of paths.
Result<Dictionary> readAnchors(const IndexFile& file);
/// Reads the array of searchable items.
Result<Array> readItems(const IndexFile& file);

}  // namespace quorvex
