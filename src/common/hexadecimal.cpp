#include "common/hexadecimal.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quorvex {

std::string hexadecimal(std::uint64_t number, std::size_t digits) {
  std::array<char, 16> text{};
  const auto written = std::to_chars(text.data(), text.data() + text.size(), number, 16);
  const auto size = static_cast<std::size_t>(written.ptr - text.data());
  return std::string(digits - std::min(digits, size), '0').append(text.data(), size);
}

}  // namespace quorvex
