#pragma once

#include <atomic>
#include <cstddef>

namespace quorvex {

/// Counts the failed allocations noted in this process. Some libraries silently drop data when
/// memory runs out, so check this before replacing good data with something built meanwhile.
inline std::atomic<std::size_t>& memoryShortages() noexcept {
  static std::atomic<std::size_t> count = 0;
  return count;
}

/// Counts a shortage if the system cannot provide a few megabytes. Detects failures that nobody
/// reports, such as in the dynamic loader.
void probeMemory();

}  // namespace quorvex
