#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
/// Mutates an input so that it stays well-formed up to its readers' first checks. Only some drivers
/// have one.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) __attribute__((weak));
/// The fuzzer's own mutations.
std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t maximum);
}

namespace quorvex::fuzz {

inline std::string_view view(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

/// Aborts when a condition fails that must hold for every input.
inline void require(bool holds) {
  if (!holds) std::abort();
}

/// Mutates a piece of an input to at most `maximum` bytes.
inline std::string mutated(std::string piece, std::size_t maximum) {
  const std::size_t size = std::min(piece.size(), maximum);
  piece.resize(maximum);
  piece.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(piece.data()), size, maximum));
  return piece;
}

/// Makes `text` the mutator's result.
inline std::size_t give(std::string_view text, std::uint8_t* bytes, std::size_t maximum) {
  return text.copy(reinterpret_cast<char*>(bytes), maximum);
}

/// The maximum growth of an input in bytes.
inline constexpr std::size_t roomToGrow = 256;

}  // namespace quorvex::fuzz
