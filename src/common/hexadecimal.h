#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvex {

/// Returns a number in hexadecimal, with zeros in front up to so many digits.
std::string hexadecimal(std::uint64_t number, std::size_t digits = 1);

}  // namespace quorvex
