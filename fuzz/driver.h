#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
/// Changes an input so that it stays well-formed as far as its readers check first. Only some
/// drivers have one.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) __attribute__((weak));
/// The fuzzer's own mutations.
std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t maximum);
}

namespace quorvex::fuzz {

inline std::string_view view(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

/// Ends the program when something does not hold that must hold for every input.
inline void require(bool holds) {
  if (!holds) std::abort();
}

/// A piece of an input, mutated; at most `maximum` bytes.
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

/// By so many bytes a mutator may lengthen what it works on.
inline constexpr std::size_t roomToGrow = 256;

}  // namespace quorvex::fuzz
