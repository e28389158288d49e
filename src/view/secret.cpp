#include "view/secret.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include <sys/random.h>

namespace quorvex::view {

namespace {

constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t bytesOfSecret = 16;

}  // namespace

std::string newSecret() {
  std::array<std::uint8_t, bytesOfSecret> bytes{};
  if (::getentropy(bytes.data(), bytes.size()) != 0) std::abort();
  std::string secret;
  for (const std::uint8_t byte : bytes) {
    secret += digits[byte >> 4U];
    secret += digits[byte & 0xFU];
  }
  return secret;
}

bool hasFormOfSecret(std::string_view text) {
  return text.size() == 2 * bytesOfSecret &&
         std::ranges::all_of(text, [](char c) { return digits.find(c) != std::string_view::npos; });
}

}  // namespace quorvex::view
