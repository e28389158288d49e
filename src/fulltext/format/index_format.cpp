#include "fulltext/format/index_format.h"

#include <numeric>

#include "common/bytes.h"

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
