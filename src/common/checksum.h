#pragma once

#include <cstdint>
#include <string_view>

namespace quorvex {

/// XXH64 with seed 0 (Y. Collet, xxHash fast digest algorithm, version 0.1.1), of many bytes in
/// about a tenth of a nanosecond each.
std::uint64_t checksum(std::string_view bytes);

}  // namespace quorvex
