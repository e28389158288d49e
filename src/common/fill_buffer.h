#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "common/value.h"

namespace quorvex {

/// Memory that is filled in place and then becomes data. Unlike a text it is not zeroed first, and
/// when it is large the system is asked to back it with large pages: filling 30 MB touches 15 pages
/// then instead of 7,000, each of which costs a fault.
class FillBuffer {
 public:
  explicit FillBuffer(std::size_t size) { resize(size); }

  char* data() { return _bytes.get(); }
  std::size_t size() const { return _size; }
  /// Has the system provide all the memory now. May run beside the filling.
  void populate() const;
  /// Keeps what fits; data() moves.
  void resize(std::size_t size);
  /// The first `filled` bytes. The buffer is not to be used any more.
  Data take(std::size_t filled);

 private:
  struct Free {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): only this memory can grow without being copied
    void operator()(char* bytes) const { std::free(bytes); }
  };

  std::unique_ptr<char, Free> _bytes;
  std::size_t _size = 0;
};

}  // namespace quorvex
