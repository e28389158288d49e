#include "view/book/byte_ranges.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include <strings.h>

#include "common/unicode.h"

namespace quorvex::view {

namespace {

/// A number of digits only; one that is too large counts as the largest.
std::optional<std::uint64_t> position(std::string_view digits) {
  if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) return std::nullopt;
  std::uint64_t value = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return read.ec == std::errc() ? value : UINT64_MAX;
}

}  // namespace

ByteRange requestedRange(std::string_view header, std::uint64_t fileSize) {
  constexpr std::string_view unit = "bytes=";
  const ByteRange whole{ByteRange::Kind::whole, 0, fileSize};
  const ByteRange none{ByteRange::Kind::unsatisfiable, 0, 0};
  if (header.size() < unit.size() || ::strncasecmp(header.data(), unit.data(), unit.size()) != 0) {
    return whole;
  }
  const std::string_view range = trimWhitespace(header.substr(unit.size()));
  const std::size_t dash = range.find('-');
  if (dash == range.npos) return whole;
  const std::optional<std::uint64_t> first = position(range.substr(0, dash));
  const std::optional<std::uint64_t> last = position(range.substr(dash + 1));
  if (dash == 0 && last) {
    const std::uint64_t size = std::min(*last, fileSize);
    if (size == 0) return none;
    return {ByteRange::Kind::part, fileSize - size, size};
  }
  if (!first || (!last && dash + 1 != range.size()) || (last && *last < *first)) return whole;
  if (*first >= fileSize) return none;
  const std::uint64_t end = last ? std::min(*last, fileSize - 1) : fileSize - 1;
  return {ByteRange::Kind::part, *first, end - *first + 1};
}

}  // namespace quorvex::view
