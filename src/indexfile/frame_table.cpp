#include "indexfile/frame_table.h"

#include <bit>
#include <cstddef>

#include <zstd.h>

#include "common/bytes.h"
#include "common/checksum.h"

namespace quorvex {

namespace {

constexpr std::string_view footerMagic = "QXFRAMES";
constexpr std::uint64_t tableVersion = 1;
/// Enough for the frames of 8 GiB.
constexpr std::uint64_t largestTable = std::uint64_t{4} << 20U;

/// Reads `count` sizes of one byte or more that make up at most `most`; false if they do not.
bool takeSizes(ByteReader& reader, std::uint64_t count, std::uint64_t most,
               std::vector<std::uint64_t>& sizes) {
  if (count > reader.rest().size()) return false;
  sizes.reserve(static_cast<std::size_t>(count));
  for (; count > 0; --count) {
    const std::uint64_t size = reader.varint();
    if (size == 0 || size > most) return false;
    most -= size;
    sizes.push_back(size);
  }
  return true;
}

bool takeFrames(ByteReader& reader, std::uint64_t sizeOfFrames, FrameTable& table) {
  table.frameSize = reader.varint();
  table.contentSize = reader.varint();
  // A multiple of a page of memory, so that the content of a frame can be given back.
  if (!std::has_single_bit(table.frameSize) || table.frameSize < contentOfFrame ||
      table.frameSize > largestContentOfFrame || table.contentSize == 0) {
    return false;
  }
  const std::uint64_t count = (table.contentSize - 1) / table.frameSize + 1;
  if (!takeSizes(reader, count, sizeOfFrames, table.packedSizes)) return false;
  const std::uint64_t largest = ZSTD_compressBound(static_cast<std::size_t>(table.frameSize));
  for (const std::uint64_t size : table.packedSizes) {
    if (size > largest) return false;
  }
  return true;
}

bool takeBounds(ByteReader& reader, FrameTable& table) {
  const std::uint64_t count = reader.varint();
  if (count == 0) return true;
  std::uint64_t bound = reader.varint();
  if (bound > table.contentSize) return false;
  std::vector<std::uint64_t> sizes;
  if (!takeSizes(reader, count - 1, table.contentSize - bound, sizes)) return false;
  table.bounds.push_back(bound);
  for (const std::uint64_t size : sizes)
    table.bounds.push_back(bound += size);
  return true;
}

}  // namespace

std::string skippableFrameHead(std::uint32_t size) {
  std::string head;
  appendU32(head, ZSTD_MAGIC_SKIPPABLE_START);
  appendU32(head, size);
  return head;
}

std::optional<std::uint32_t> sizeOfSkippableFrame(std::string_view head) {
  ByteReader reader(head);
  const std::uint32_t magic = reader.u32();
  const std::uint32_t size = reader.u32();
  if (!reader.ok() || (magic & ZSTD_MAGIC_SKIPPABLE_MASK) != ZSTD_MAGIC_SKIPPABLE_START) return {};
  return size;
}

std::string encodeFrameTable(const FrameTable& table) {
  std::string payload;
  appendVarint(payload, tableVersion);
  appendVarint(payload, table.frameSize);
  appendVarint(payload, table.contentSize);
  for (const std::uint64_t size : table.packedSizes)
    appendVarint(payload, size);
  appendVarint(payload, table.bounds.size());
  for (std::size_t i = 0; i < table.bounds.size(); ++i)
    appendVarint(payload, table.bounds[i] - (i == 0 ? 0 : table.bounds[i - 1]));
  const std::uint64_t sum = checksum(payload);
  appendU32(payload, static_cast<std::uint32_t>(payload.size() + FrameTable::footerSize));
  appendU64(payload, sum);
  payload += footerMagic;
  return skippableFrameHead(static_cast<std::uint32_t>(payload.size())) + payload;
}

std::uint64_t sizeOfFrameTable(std::string_view footer) {
  ByteReader reader(footer);
  const std::uint32_t size = reader.u32();
  reader.u64();
  const bool isOne = reader.rest() == footerMagic && size >= FrameTable::footerSize;
  return isOne && size <= largestTable ? FrameTable::headSize + size : 0;
}

std::optional<FrameTable> decodeFrameTable(std::string_view bytes, std::uint64_t sizeOfFrames) {
  constexpr std::size_t around = FrameTable::headSize + FrameTable::footerSize;
  if (bytes.size() < around || sizeOfSkippableFrame(bytes.substr(0, FrameTable::headSize)) !=
                                   bytes.size() - FrameTable::headSize) {
    return {};
  }
  const std::string_view entries = bytes.substr(FrameTable::headSize, bytes.size() - around);
  ByteReader footer(bytes.substr(bytes.size() - FrameTable::footerSize));
  footer.u32();
  if (footer.u64() != checksum(entries)) return {};
  ByteReader reader(entries);
  FrameTable table;
  if (reader.varint() != tableVersion || !takeFrames(reader, sizeOfFrames, table) ||
      !takeBounds(reader, table) || !reader.ok() || !reader.rest().empty()) {
    return {};
  }
  return table;
}

}  // namespace quorvex
