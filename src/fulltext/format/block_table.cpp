#include "fulltext/format/block_table.h"

#include "common/bytes.h"

namespace quorvex {

BlockTable::BlockTable(std::string_view bytes, std::uint64_t entries,
                       std::uint32_t entriesPerBlock) {
  const std::uint64_t blocks = entries / entriesPerBlock + (entries % entriesPerBlock != 0 ? 1 : 0);
  if (blocks > bytes.size() / sizeof(std::uint64_t)) return;
  _offsets = bytes.substr(0, blocks * sizeof(std::uint64_t));
  _blocks = bytes.substr(_offsets.size());
  std::uint64_t previous = 0;
  for (std::uint64_t number = 0; number < blocks; ++number) {
    const std::uint64_t begin = offset(number);
    if (begin < previous || begin > _blocks.size()) {
      *this = BlockTable();
      return;
    }
    previous = begin;
  }
}

std::uint64_t BlockTable::offset(std::uint64_t number) const {
  return ByteReader(_offsets.substr(number * sizeof(std::uint64_t))).u64();
}

std::string_view BlockTable::block(std::uint64_t number) const {
  if (number >= blockCount()) return {};
  const std::uint64_t begin = offset(number);
  const std::uint64_t end = number + 1 < blockCount() ? offset(number + 1) : _blocks.size();
  return _blocks.substr(begin, end - begin);
}

void BlockTableBuilder::startBlock() {
  appendU64(_offsets, _entries.size());
}

}  // namespace quorvex
