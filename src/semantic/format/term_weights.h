#pragma once

#include <array>
#include <cstdint>

// How occurrences become weights, for the builder and for queries.
//
// Weights are log-entropy (Dumais 1991): log(1 + count) times 1 minus the normalised entropy of the
// term's spread over the articles. An article's weights are divided by
// sqrt(own length^2 + mean length^2): besides its terms, each article has a private dimension as
// long as the book's average article. Plain unit length would rank a page with only a title above
// every page that says more; with the extra dimension, the similarity is still a cosine.

namespace quorvex::docuvault {

/// Counts are stored in four bits: exact where one more occurrence matters, then in steps.
inline constexpr std::array<std::uint32_t, 16> countOfCode = {1,  2,  3,  4,  5,  6,  7,  8,
                                                              10, 12, 16, 24, 32, 48, 80, 160};

/// Returns the largest code whose count does not exceed `count`, which must be at least 1.
constexpr std::uint32_t codeOfCount(std::uint32_t count) {
  std::uint32_t code = 0;
  while (code + 1 < countOfCode.size() && countOfCode[code + 1] <= count)
    ++code;
  return code;
}

/// Packs the number of a term, article or column, below 2^28, and a count code into four bytes.
constexpr std::uint32_t packed(std::uint32_t number, std::uint32_t code) {
  return number << 4U | code;
}
constexpr std::uint32_t numberOf(std::uint32_t entry) {
  return entry >> 4U;
}
constexpr std::uint32_t codeOf(std::uint32_t entry) {
  return entry & 0xFU;
}

/// Maximum number of terms, and of articles.
inline constexpr std::uint32_t mostNumbers = numberOf(UINT32_MAX);

/// Returns log(1 + count) for each code.
const std::array<float, 16>& localWeights();

/// An occurrence in the title or keywords counts as this many in the content, as the author chose
/// it to name the page.
inline constexpr std::uint32_t titleWeight = 2;

/// Query counts are multiplied by their term's global weight to this power. Questions are
/// sentences, whose common words mean less than the same words chosen for an article.
inline constexpr double queryExponent = 1.5;

/// Share of the reduced space in the similarity; the rest comes from the terms. An article's vector
/// concatenates both, scaled by the square roots. On two test collections every share between 0.2
/// and 0.4 works well.
inline constexpr float semanticShare = 0.3F;

/// A term with a global weight below this is a stop word: it is spread as if evenly over more than
/// articles^0.9 articles. This needs no list, so it works for every language and for the words of
/// navigation bars.
inline constexpr double stopWordWeight = 0.1;

}  // namespace quorvex::docuvault
