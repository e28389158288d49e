#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace quorvex {

/// The most bytes that one page may have: its tree takes up to fifty times as much memory.
inline constexpr std::uint64_t maximumPageSize = std::uint64_t{64} << 20U;

/// What parsing one page may cost. docs/limits.md gives the reasons.
struct PageLimits {
  /// Elements and attributes together; one takes up to some 250 bytes.
  std::size_t nodes = 4'000'000;
  /// The parser looks each attribute up among all before it. Checked where its table doubles, so
  /// that it ends a tag of between 10,000 and 20,000 attributes.
  std::size_t attributes = 20'000;
  /// Processor time: so long, and so long for each MiB of the page. Real pages take a fiftieth.
  std::clock_t seconds = 2;
  std::clock_t secondsPerMiB = 1;
};

}  // namespace quorvex
