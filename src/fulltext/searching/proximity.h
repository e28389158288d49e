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

/// Tells which occurrence codes stand for which words of a query.
class WordCodes {
 public:
  /// One number per occurrence code, all zero before and after use.
  using WordOfCode = std::vector<std::uint16_t>;

  WordCodes(const IndexReader& index, const std::vector<RankedWord>& words, WordOfCode& wordOfCode);
  ~WordCodes();
  WordCodes(const WordCodes&) = delete;
  WordCodes& operator=(const WordCodes&) = delete;

  /// Calls visit(position, word) for each occurrence of a word in a document, in text order.
  /// `position`: the number of codes before it.
  template <typename Visit>
  void forEachOccurrence(std::uint32_t document, const Visit& visit) const {
    const std::string_view codes = _index.occurrenceCodes(document);
    const char* const end = codes.data() + codes.size();
    std::uint32_t position = 0;
    for (const char* at = codes.data(); at != end; ++position) {
      std::uint32_t code = static_cast<unsigned char>(*at);
      if (code < firstLongCode) {
        ++at;
      } else {
        code = readCode(at, end);
      }
      const std::size_t word = code < _wordOfCode.size() ? _wordOfCode[code] : 0;
      if (word != 0) visit(position, word - 1);
    }
  }

 private:
  const IndexReader& _index;
  const std::vector<RankedWord>& _words;
  WordOfCode& _wordOfCode;  ///< word number plus 1
};

/// Raises the scores of documents whose words are near each other (Büttcher, Clarke, Lushman 2006):
/// when an occurrence follows one of another word at distance d, each of the two words gains the
/// other's importance divided by d squared; the sums are saturated like term frequencies. Reads the
/// whole text of each document, so call it on few documents.
class ProximityScorer {
 public:
  ProximityScorer(const IndexReader& index, const Ranker& ranker,
                  const std::vector<RankedWord>& words, const WordCodes& codes);

  void addTo(ScoredDocument& document);

 private:
  void measureNearness(std::uint32_t document);

  const IndexReader& _index;
  const Ranker& _ranker;
  const std::vector<RankedWord>& _words;
  const WordCodes& _codes;
  std::vector<float> _importance;
  std::vector<float> _nearness;
};

}  // namespace quorvex::textsearch
