#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace quorvex {

/// The maximum bytes of a page; its tree takes up to fifty times as much memory.
inline constexpr std::uint64_t maximumPageSize = std::uint64_t{64} << 20U;

/// Places of one page, from its beginning.
inline constexpr std::size_t mostPlaces = 50'000;
// In bytes. A longer fragment or name is none; a longer heading is cut.
inline constexpr std::size_t largestFragment = 1000;
inline constexpr std::size_t largestName = 200;
inline constexpr std::size_t largestHeading = 120;
/// Deeper definition lists count as this deep.
inline constexpr unsigned deepestListLevel = 8;

/// Limits for parsing one page. docs/limits.md gives the reasons.
struct PageLimits {
  /// Elements and attributes together; each takes up to about 250 bytes.
  std::size_t nodes = 4'000'000;
  /// The parser compares each attribute with all before it. Checked when its table doubles, so it
  /// stops a tag at between 10,000 and 20,000.
  std::size_t attributes = 20'000;
  /// Processor time: a base, plus time per MiB of the page. Real pages take a fiftieth.
  std::clock_t seconds = 2;
  std::clock_t secondsPerMiB = 1;
};

}  // namespace quorvex
