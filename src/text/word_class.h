#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace quorvex {

/// A character's role in word boundaries (UAX #29), reduced to the rules that a scan with one
/// character of look-ahead can follow. `complex` is everything else: marks that extend the
/// preceding character, Hebrew, and scripts segmented with dictionaries.
enum class WordClass : std::uint8_t {
  other,
  cut,  ///< ASCII white space and "@": segmentation of either side ignores the other
  letter,
  upper,  ///< ASCII capital: a letter that folding changes
  wide,   ///< a letter or digit beyond ASCII
  digit,
  connector,  ///< ExtendNumLet
  midLetter,  ///< joins letters
  midNumber,  ///< joins digits
  midBoth,    ///< joins letters, joins digits
  ideograph,  ///< of Chinese and Japanese, kana included, with three bytes in UTF-8
  complex,
};

/// The classes, derived from ICU's properties. Those beyond ASCII are derived a block at a time
/// when a text has one of its characters: a program that starts to answer one question cannot wait
/// for all scripts. Thread-safe.
class WordClasses {
 public:
  WordClasses();

  WordClass ofAscii(unsigned char character) const { return _classes[character]; }

  WordClass of(char32_t character) const {
    if (character >= limit) return WordClass::complex;
    const std::size_t block = character / blockSize;
    if (!_isMade[block].load(std::memory_order_acquire)) make(block);
    return _classes[character];
  }

 private:
  /// The first character beyond the table; it and all later ones are complex.
  static constexpr std::size_t limit = 0x10000;
  static constexpr std::size_t blockSize = 128;  ///< that of ASCII
  static_assert(limit % blockSize == 0);

  void make(std::size_t block) const;

  mutable std::array<WordClass, limit> _classes;
  mutable std::array<std::atomic<bool>, limit / blockSize> _isMade{};
  mutable std::mutex _mutex;
};

const WordClasses& wordClasses();

}  // namespace quorvex
