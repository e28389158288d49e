#pragma once

#include <cstdint>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/ranking.h"

namespace quorvex::textsearch {

/// Longer texts are not looked at for words that are near each other: in a page of a whole index of
/// names they are near by chance.
inline constexpr std::uint32_t longestTextForProximity = 20'000;

/// Adds to the scores of documents for words that stand near each other (Büttcher, Clarke, Lushman
/// 2006): each occurrence that follows one of another word at the distance d adds the importance of
/// the one to the other, divided by d squared, and the sums are saturated as frequencies are. Reads
/// the whole text of each document, so it is for the best few.
class ProximityScorer {
 public:
  /// One number an occurrence code, zero before and after.
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
  WordOfCode& _wordOfCode;  ///< number of the word plus 1
  std::vector<float> _importance;
  std::vector<float> _nearness;
};

}  // namespace quorvex::textsearch
