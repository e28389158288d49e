#include "common/checksum.h"

// Header-only: loading the library would take longer than checking most files.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace quorvex {

std::uint64_t checksum(std::string_view bytes) {
  return XXH64(bytes.data(), bytes.size(), 0);
}

}  // namespace quorvex
