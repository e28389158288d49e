#include "semantic/format/index_format.h"

#include <bit>

namespace quorvex::docuvault {

std::string IndexSections::assemble() {
  std::string index;
  assembleContainer(indexContainer, _sections, index);
  return index;
}

void appendInfo(std::string& out, const IndexInfo& info) {
  appendU32(out, info.articles);
  appendU32(out, info.terms);
  appendU32(out, info.dimensions);
  appendU32(out, info.excluded);
  appendU64(out, info.postings);
  appendU64(out, std::bit_cast<std::uint64_t>(info.shareOfVariance));
  out += info.language;
}

std::optional<IndexInfo> readInfo(std::string_view section) {
  ByteReader reader(section);
  IndexInfo info;
  info.articles = reader.u32();
  info.terms = reader.u32();
  info.dimensions = reader.u32();
  info.excluded = reader.u32();
  info.postings = reader.u64();
  info.shareOfVariance = readDouble(reader);
  // The last two are also false for NaN.
  if (!reader.ok() || info.dimensions > mostDimensions || !(info.shareOfVariance >= 0) ||
      !(info.shareOfVariance <= 1)) {
    return std::nullopt;
  }
  info.language = reader.rest();
  return info;
}

std::uint64_t readCount(ByteReader& reader) {
  const std::uint64_t count = reader.varint();
  return count <= reader.rest().size() ? count : 0;
}

double readDouble(ByteReader& reader) {
  return std::bit_cast<double>(reader.u64());
}

void appendFloat(std::string& out, float number) {
  appendU32(out, std::bit_cast<std::uint32_t>(number));
}

}  // namespace quorvex::docuvault
