#pragma once

#include <atomic>
#include <cstddef>

namespace quorvex {

/// How often this process found no memory, as far as it is noted. Some libraries get over that in
/// silence and leave out what they had no memory for; so whoever is about to replace something good
/// by what was made meanwhile looks here first.
inline std::atomic<std::size_t>& memoryShortages() noexcept {
  static std::atomic<std::size_t> count = 0;
  return count;
}

/// Counts a shortage where the system has not a few megabytes left. For what may have gone wrong
/// for want of them though nobody says so, as in the dynamic loader.
void probeMemory();

}  // namespace quorvex
