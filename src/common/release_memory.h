#pragma once

namespace quorvex {

/// Empties a string or container and frees its memory, which assigning an empty one would keep.
template <typename Container>
void releaseMemory(Container& container) {
  Container().swap(container);
}

}  // namespace quorvex
