#include "fulltext/format/index_format.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <span>

#include "common/bytes.h"
#include "common/checksum.h"

namespace quorvex {

namespace {

// Limits of the codes of one, two and three bytes.
constexpr std::uint32_t oneByte = firstLongCode;
constexpr std::uint32_t twoByteLeads = 0xF8 - oneByte;
constexpr std::uint32_t threeByteLeads = 0xFF - 0xF8;
constexpr std::uint32_t twoBytes = oneByte + (twoByteLeads << 8U);
constexpr std::uint32_t threeBytes = twoBytes + (threeByteLeads << 16U);

void appendBigEndian(std::string& out, std::uint32_t value, unsigned size) {
  while (size-- > 0)
    out += static_cast<char>(value >> (8 * size));
}

}  // namespace

std::optional<SectionTable> parseIndex(std::string_view bytes) {
  ByteReader reader(bytes);
  if (reader.bytes(indexMagic.size()) != indexMagic || reader.u32() != indexVersion) return {};
  const std::uint32_t count = reader.u32();
  if (reader.u64() != bytes.size() || count > indexEntryLimit) return {};
  const std::size_t tableEnd = indexHeaderSize + count * indexEntrySize;
  if (tableEnd + 8 > bytes.size()) return {};
  if (ByteReader(bytes.substr(tableEnd)).u64() != checksum(bytes.substr(0, tableEnd))) return {};

  SectionTable table{};
  std::array<bool, indexSectionCount> found{};
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t kind = reader.u32();
    reader.u32();
    const std::uint64_t offset = reader.u64();
    const std::uint64_t size = reader.u64();
    const std::uint64_t sum = reader.u64();
    if (offset < tableEnd + 8 || offset > bytes.size() || size > bytes.size() - offset) return {};
    if (kind == 0 || kind > indexSectionCount) continue;
    if (found[kind - 1]) return {};
    found[kind - 1] = true;
    table[kind - 1] = {bytes.substr(offset, size), sum};
  }
  const auto required = std::span(found).first(requiredSectionCount);
  if (!std::ranges::all_of(required, std::identity())) return {};
  return table;
}

void assembleIndex(std::array<std::string, indexSectionCount>& sections, std::string& out) {
  const std::size_t tableEnd = indexHeaderSize + indexSectionCount * indexEntrySize;
  std::uint64_t offset = tableEnd + 8;
  const std::uint64_t size = std::accumulate(
      sections.begin(), sections.end(), offset,
      [](std::uint64_t sum, const std::string& section) { return sum + section.size(); });
  out.clear();
  out.reserve(size);
  out += indexMagic;
  appendU32(out, indexVersion);
  appendU32(out, indexSectionCount);
  appendU64(out, size);
  for (std::uint32_t i = 0; i < indexSectionCount; ++i) {
    appendU32(out, i + 1);
    appendU32(out, 0);
    appendU64(out, offset);
    appendU64(out, sections[i].size());
    appendU64(out, checksum(sections[i]));
    offset += sections[i].size();
  }
  appendU64(out, checksum(out));
  for (std::string& section : sections) {
    out += section;
    section = std::string();
  }
}

std::vector<std::uint32_t> termsByDocumentCount(const std::vector<std::uint32_t>& documentCounts,
                                                std::uint32_t largestCount) {
  std::vector<std::uint32_t> starts(std::size_t{largestCount} + 2);
  for (const std::uint32_t count : documentCounts)
    ++starts[largestCount - count + 1];
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  std::vector<std::uint32_t> order(documentCounts.size());
  for (std::uint32_t term = 0; term < documentCounts.size(); ++term) {
    order[starts[largestCount - documentCounts[term]]++] = term;
  }
  return order;
}

void appendCode(std::string& out, std::uint32_t code) {
  if (code < oneByte) {
    out += static_cast<char>(code);
  } else if (code < twoBytes) {
    appendBigEndian(out, code - oneByte + (oneByte << 8U), 2);
  } else if (code < threeBytes) {
    appendBigEndian(out, code - twoBytes + (0xF8U << 16U), 3);
  } else {
    out += '\xFF';
    appendVarint(out, code - threeBytes);
  }
}

std::uint32_t readCode(const char*& position, const char* end) {
  const auto left = static_cast<std::size_t>(end - position);
  if (left == 0) return 0;
  const auto byte = [&](std::size_t i) {
    return std::uint32_t{static_cast<unsigned char>(position[i])};
  };
  const std::uint32_t lead = byte(0);
  std::uint32_t code = lead;
  std::size_t size = 1;
  if (lead >= oneByte && lead < 0xF8 && left >= 2) {
    code = oneByte + ((lead - oneByte) << 8U) + byte(1);
    size = 2;
  } else if (lead >= 0xF8 && lead < 0xFF && left >= 3) {
    code = twoBytes + ((lead - 0xF8) << 16U) + (byte(1) << 8U) + byte(2);
    size = 3;
  } else if (lead >= oneByte) {
    ByteReader reader({position + 1, left - 1});
    const std::uint32_t rest = reader.varint32();
    const bool fits = lead == 0xFF && reader.ok() && rest <= UINT32_MAX - threeBytes;
    code = fits ? threeBytes + rest : 0;
    size = fits ? left - reader.rest().size() : left;
  }
  position += size;
  return code;
}

}  // namespace quorvex
