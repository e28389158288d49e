#pragma once

#include <string>
#include <string_view>

namespace quorvex::test {

// Helpers that damage bytes in one place and, where they have a checksum, correct it, to see how a
// reader reacts.

/// Without the last `count` bytes.
inline std::string shrunk(std::string_view bytes, std::size_t count) {
  return std::string(bytes.substr(0, bytes.size() - count));
}

/// With the bits of `mask` flipped in one byte.
inline std::string flipped(std::string bytes, std::size_t at, unsigned char mask = 0xFF) {
  bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ mask);
  return bytes;
}

/// With the first `from` replaced by `to`, of any length.
inline std::string replaced(std::string bytes, std::string_view from, std::string_view to) {
  return bytes.replace(bytes.find(from), from.size(), to);
}

inline std::string repeated(std::string_view piece, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i)
    text += piece;
  return text;
}

/// Bytes from hexadecimal digits; blanks are ignored.
inline std::string fromHex(std::string_view digits) {
  std::string bytes;
  std::string pair;
  for (const char digit : digits) {
    if (digit != ' ') pair += digit;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

inline std::string toHex(std::string_view bytes) {
  static constexpr const char* digits = "0123456789abcdef";
  std::string hex;
  for (const char byte : bytes) {
    hex += digits[static_cast<unsigned char>(byte) >> 4U];
    hex += digits[static_cast<unsigned char>(byte) & 15U];
  }
  return hex;
}

}  // namespace quorvex::test
