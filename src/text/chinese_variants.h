#pragma once

#include <array>

namespace quorvex {

inline constexpr char32_t firstHan = 0x3400;
inline constexpr char32_t endOfHan = 0xA000;
/// By character from firstHan on: its simplified form, or the character itself.
using SimplifiedHan = std::array<char16_t, endOfHan - firstHan>;

/// Returns what ICU's rules say of single characters, read on the first call within a fraction of a
/// millisecond; building ICU's transliterator of the same rules takes fifteen. Each character
/// stands for itself if ICU's data lack the rules. Thread-safe.
const SimplifiedHan& simplifiedHan();

}  // namespace quorvex
