#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/ranking.h"

namespace quorvex::textsearch {

/// Longer texts get no proximity score: on a page that lists a whole index of names, words are near
/// each other by chance.
inline constexpr std::uint32_t longestTextForProximity = 20'000;

/// Raises the scores of documents whose words are near each other (Büttcher, Clarke, Lushman 2006):
/// when an occurrence follows one of another word at distance d, each of the two words gains the
/// other's importance divided by d squared; the sums are saturated like term frequencies. Reads the
/// whole text of each document, so call it on few documents.
class ProximityScorer {
 public:
  /// One number per occurrence code, all zero before and after use.
  using WordOfCode = std::vector<std::uint16_t>;

  ProximityScorer(const IndexReader& index, const Ranker& ranker,
                  const std::vector<RankedWord>& words, WordOfCode& wordOfCode);
  ~ProximityScorer();
  ProximityScorer(const ProximityScorer&) = delete;
  ProximityScorer& operator=(const ProximityScorer&) = delete;

  void addTo(ScoredDocument& document);

 private:
  void measureNearness(std::uint32_t document);

  const IndexReader& _index;
  const Ranker& _ranker;
  const std::vector<RankedWord>& _words;
  WordOfCode& _wordOfCode;  ///< word number plus 1
  std::vector<float> _importance;
  std::vector<float> _nearness;
};

}  // namespace quorvex::textsearch
