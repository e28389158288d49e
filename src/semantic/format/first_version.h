#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::docuvault {

inline constexpr std::uint32_t firstIndexVersion = 1;

/// Turns an index of version 1 into one of the current version; empty if it is damaged. All of it
/// is checked and rewritten: some 6 ms for each MB.
std::string convertFirstVersion(std::string_view bytes);

}  // namespace quorvex::docuvault
