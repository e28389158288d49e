#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/format/index_format.h"
#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/ranking.h"

namespace quorvex::textsearch {

/// Longer texts get no proximity score: on a page that lists a whole index of names, words are near
/// each other by chance.
inline constexpr std::uint32_t longestTextForProximity = 20'000;

/// An occurrence of a query word in a document.
struct Occurrence {
  std::uint32_t position;  ///< number of codes before it
  std::uint32_t word;
  float weight;  ///< at most 1: how surely the term stands for the word
};
/// In text order.
using Occurrences = std::vector<Occurrence>;

/// Tells which occurrence codes stand for which words of a query.
class WordCodes {
 public:
  /// One number per occurrence code, all zero before and after use.
  using Scratch = std::vector<std::uint32_t>;

  WordCodes(const IndexReader& index, const std::vector<RankedWord>& words, Scratch& scratch);
  ~WordCodes();
  WordCodes(const WordCodes&) = delete;
  WordCodes& operator=(const WordCodes&) = delete;

  /// Finds the occurrences of all words in a document. Reads its whole text.
  void find(std::uint32_t document, Occurrences& found) const;

 private:
  struct Meaning {
    std::uint32_t code;
    std::uint32_t word;
    float weight;
  };

  const IndexReader& _index;
  std::vector<Meaning> _meanings;  ///< by code; a joined term may stand for several words
  Scratch& _meaningOfCode;         ///< number of the first one plus 1
};

/// Scores how near the words are to each other in a document (Büttcher, Clarke, Lushman 2006):
/// when an occurrence follows one of another word at distance d, each of the two words gains the
/// other's importance divided by d squared; the sums are saturated like term frequencies.
class ProximityScorer {
 public:
  ProximityScorer(const IndexReader& index, const Ranker& ranker,
                  const std::vector<RankedWord>& words);

  /// Returns what the nearness of the words adds to the score of a document.
  float score(std::uint32_t document, const Occurrences& occurrences);

 private:
  void measureNearness(const Occurrences& occurrences);

  const IndexReader& _index;
  const Ranker& _ranker;
  const std::vector<RankedWord>& _words;
  std::vector<float> _importance;
  std::vector<float> _nearness;
};

}  // namespace quorvex::textsearch
