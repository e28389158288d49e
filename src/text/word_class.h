#pragma once

#include <array>
#include <cstdint>

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
  complex,
};

/// First character beyond the table; it and all later ones are complex.
inline constexpr char32_t wordClassLimit = 0x2E80;
using WordClasses = std::array<WordClass, wordClassLimit>;

/// Returns the classes, derived from ICU's properties on the first call. Thread-safe.
const WordClasses& wordClasses();

}  // namespace quorvex
