#pragma once

#include <array>
#include <cstdint>

namespace quorvex {

/// What a character does to word boundaries (UAX #29), reduced to the rules that a scan with one
/// character of look-ahead can follow. `complex` is everything else: marks that extend the
/// character before them, Hebrew, and the scripts that are cut by dictionaries.
enum class WordClass : std::uint8_t {
  other,
  cut,  ///< ASCII white space and "@": text is segmented the same on both sides of it
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

/// First character that the table does not cover; from there on everything is complex.
inline constexpr char32_t wordClassLimit = 0x2E80;
using WordClasses = std::array<WordClass, wordClassLimit>;

/// The classes by ICU's properties; made on the first call, safe from several threads.
const WordClasses& wordClasses();

}  // namespace quorvex
