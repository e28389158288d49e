#pragma once

#include <array>
#include <cstdint>

// How occurrences become weights, shared by the builder and the queries.
//
// Weights are log-entropy (Dumais 1991): log(1 + count) times 1 minus the normalised entropy of the
// term's spread over the articles. An article's weights are divided by
// sqrt(own length^2 + mean length^2): each article has, besides its terms, one dimension of its own
// as long as the book's average article. Plain unit length would put a page of one title line above
// every page that says more; with the dimension the similarity still is a cosine.

namespace quorvex::docuvault {

/// Counts are kept in four bits: exact where one occurrence more matters, then in steps.
inline constexpr std::array<std::uint32_t, 16> countOfCode = {1,  2,  3,  4,  5,  6,  7,  8,
                                                              10, 12, 16, 24, 32, 48, 80, 160};

/// The largest code whose count is not above `count`, which is at least 1.
constexpr std::uint32_t codeOfCount(std::uint32_t count) {
  std::uint32_t code = 0;
  while (code + 1 < countOfCode.size() && countOfCode[code + 1] <= count)
    ++code;
  return code;
}

/// The number of a term, an article or a column, below 2^28, and the code of a count in four bytes.
constexpr std::uint32_t packed(std::uint32_t number, std::uint32_t code) {
  return number << 4U | code;
}
constexpr std::uint32_t numberOf(std::uint32_t entry) {
  return entry >> 4U;
}
constexpr std::uint32_t codeOf(std::uint32_t entry) {
  return entry & 0xFU;
}

/// So many terms and so many articles at most.
inline constexpr std::uint32_t mostNumbers = numberOf(UINT32_MAX);

/// log(1 + count) of each code.
const std::array<float, 16>& localWeights();

/// A term in the title or among the keywords counts as this many in the content: the author chose
/// it to name the page.
inline constexpr std::uint32_t titleWeight = 2;

/// A query's words are raised by their term's global weight to this power. Questions are asked in
/// sentences, whose common words mean less than the same words chosen for an article.
inline constexpr double queryExponent = 1.5;

/// Of the similarity, this part comes from the reduced space and the rest from the terms: an
/// article's vector is both, side by side, scaled by the square roots. Measured on two collections
/// every share between 0.2 and 0.4 is good.
inline constexpr float semanticShare = 0.3F;

/// A term whose global weight is below this is a stop word: it is spread evenly over about
/// articles^0.9 articles. Needs no list, so it holds for each language and for the words that
/// navigation bars repeat.
inline constexpr double stopWordWeight = 0.1;

}  // namespace quorvex::docuvault
