#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/lazy_bytes.h"

namespace quorvex {

/// Entries in blocks of a fixed number, preceded by the block offsets (u64 each, relative to the
/// end of the offsets). Any entry is found without reading earlier blocks.
class BlockTable {
 public:
  BlockTable() = default;
  /// Empty when the offsets do not fit.
  BlockTable(const LazyBytes& bytes, std::uint64_t entries, std::uint32_t entriesPerBlock);

  std::uint64_t blockCount() const { return _offsets.size() / sizeof(std::uint64_t); }
  /// Empty past the end, and when its offsets do not ascend.
  std::string_view block(std::uint64_t number) const;
  /// Whether blocks never overlap, so that a pass over all of them reads each byte once. Reads all
  /// offsets.
  bool isInOrder() const;

 private:
  LazyBytes _offsets;
  LazyBytes _blocks;
};

/// Builds the bytes that BlockTable reads.
class BlockTableBuilder {
 public:
  void startBlock();
  std::string& entries() { return _entries; }
  std::string take() { return std::move(_offsets) + std::move(_entries); }

 private:
  std::string _offsets;
  std::string _entries;
};

}  // namespace quorvex
