#include "fulltext/format/block_table.h"

#include "common/bytes.h"

namespace quorvex {

BlockTable::BlockTable(const LazyBytes& bytes, std::uint64_t entries,
                       std::uint32_t entriesPerBlock) {
  const std::uint64_t blocks = entries / entriesPerBlock + (entries % entriesPerBlock != 0 ? 1 : 0);
  if (blocks > bytes.size() / sizeof(std::uint64_t)) return;
  const LazyBytes offsets = bytes.sub(0, blocks * sizeof(std::uint64_t));
  std::uint64_t previous = 0;
  for (ByteReader reader(offsets.all()); !reader.rest().empty();) {
    const std::uint64_t begin = reader.u64();
    if (begin < previous) return;
    previous = begin;
  }
  _offsets = offsets;
  _blocks = bytes.sub(_offsets.size());
}

std::string_view BlockTable::block(std::uint64_t number) const {
  if (number >= blockCount()) return {};
  ByteReader offsets(_offsets.part(number * sizeof(std::uint64_t), 2 * sizeof(std::uint64_t)));
  const std::uint64_t begin = offsets.u64();
  if (!offsets.ok()) return {};
  const std::uint64_t end = number + 1 < blockCount() ? offsets.u64() : _blocks.size();
  return begin <= end && end <= _blocks.size() ? _blocks.part(begin, end - begin)
                                               : std::string_view();
}

void BlockTableBuilder::startBlock() {
  appendU64(_offsets, _entries.size());
}

}  // namespace quorvex
