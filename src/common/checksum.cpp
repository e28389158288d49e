#include "common/checksum.h"

#include <xxhash.h>

namespace quorvex {

std::uint64_t checksum(std::string_view bytes) {
  return XXH64(bytes.data(), bytes.size(), 0);
}

}  // namespace quorvex
