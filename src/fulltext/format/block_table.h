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
  /// Empty when the offsets do not fit or do not ascend: blocks never overlap, so that no small
  /// file claims many large entries. Reads all offsets.
  BlockTable(const LazyBytes& bytes, std::uint64_t entries, std::uint32_t entriesPerBlock);

  std::uint64_t blockCount() const { return _offsets.size() / sizeof(std::uint64_t); }
  /// Empty past the end.
  std::string_view block(std::uint64_t number) const;

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
