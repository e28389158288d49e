#include "fulltext/format/text_sketch.h"

#include <algorithm>
#include <bit>

#include "common/checksum.h"

namespace quorvex {

namespace {

constexpr int mostDifferent = 2;

}  // namespace

bool areNearCopies(TextSketch a, TextSketch b) {
  if (a == 0 || b == 0) return false;
  std::uint64_t different = a ^ b;
  different |= different >> 2U;
  different |= different >> 1U;
  return std::popcount(different & 0x1111'1111'1111'1111U) <= mostDifferent;
}

std::uint32_t TextSketcher::hashOf(std::string_view term) {
  return static_cast<std::uint32_t>(checksum(term));
}

/// An empty bucket takes over the next one, changed by the distance (Shrivastava, Li 2014): else
/// short texts would be equal in what both lack.
TextSketch TextSketcher::sketch() const {
  const auto isEmpty = [](std::uint64_t smallest) { return smallest == UINT64_MAX; };
  if (std::ranges::all_of(_smallest, isEmpty)) return 0;
  TextSketch sketch = 0;
  for (std::size_t bucket = 0; bucket < _smallest.size(); ++bucket) {
    std::uint64_t distance = 0;
    while (isEmpty(_smallest[(bucket + distance) % _smallest.size()]))
      ++distance;
    std::uint64_t value = _smallest[(bucket + distance) % _smallest.size()] + distance;
    value = (value ^ (value >> 32U)) * spread;
    sketch |= (value >> bucketShift) << (4 * bucket);
  }
  return sketch;
}

}  // namespace quorvex
