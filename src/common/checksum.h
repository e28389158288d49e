#pragma once

#include <cstdint>
#include <string_view>

namespace quorvex {

/// XXH64 with seed 0, the checksum of the indexes.
std::uint64_t checksum(std::string_view bytes);

}  // namespace quorvex
