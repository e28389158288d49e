#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_terms.h"
#include "platform/textsift.h"

// BM25 ranking (Robertson, Walker, Jones, Hancock-Beaulieu, Gatford 1994) of texts and titles
// separately, each with its own document frequencies and lengths:
//
//   score(d) = sum over words of weight * (bm25(text of d) + titleWeight * bm25(title of d))
//
// The search goes word by word, starting with the word that can add the most (Turtle, Flood 1995):
// once the remaining words cannot lift a new document above the k-th best so far, they are added
// only to documents that already have a score and can still get there.

namespace quorvex::textsearch {

/// A query word with its terms, which together count as one term.
struct RankedWord {
  std::shared_ptr<const WordTerms> terms;
  float weight = 1;
  std::string word = {};  ///< as it was looked up
  /// The number of the joined word that this is only a part of; null for a word of the query.
  std::optional<std::size_t> partOf = std::nullopt;
};

/// The numbers of words that must stand side by side; `gap` for words left out of the index.
struct WordSequence {
  static constexpr std::size_t gap = SIZE_MAX;
  std::vector<std::size_t> words;
};

struct ScoredDocument {
  std::uint32_t document;
  float score;

  /// Best first; ties by document.
  friend bool operator<(const ScoredDocument& a, const ScoredDocument& b) {
    return a.score != b.score ? a.score > b.score : a.document < b.document;
  }
};

/// One number per document, nonzero if the document may be found; empty: all may be.
using DocumentMask = std::vector<std::uint8_t>;

/// From the usual ranges, tuned on two collections, where nearby values do about as well.
struct RankingSettings {
  float textK1 = 1.2F;
  float textB = 0.7F;
  float titleK1 = 1.2F;
  float titleB = 0.75F;
  float titleWeight = 0.4F;
  float proximityWeight = 0.2F;
  float passageWeight = 0.4F;  ///< of the best passage
};

/// Working memory of a query, one number per document each; reused between queries to avoid
/// allocations proportional to the index.
struct RankingScratch {
  std::vector<float> scores;
  std::vector<float> frequencies;
};

/// Ranks the documents of one index. Thread-safe if each thread has its own scratch.
class Ranker {
 public:
  Ranker(const IndexReader& index, const TitleIndex& titles);

  /// Adds what the index holds of words.
  void addTo(TSCollection& collection, const std::vector<RankedWord>& words) const;
  /// Returns a ranker that weighs words as in a collection, which must outlive it.
  Ranker within(const TSCollection& collection) const;

  /// Returns the `count` best documents, best first.
  std::vector<ScoredDocument> best(const std::vector<RankedWord>& words, const DocumentMask& mask,
                                   std::size_t count, RankingScratch& scratch) const;

  /// Returns the inverse document frequency of a word in texts, at least 0.
  float importance(const WordTerms& terms) const;
  /// Returns the term frequency that earns a text of this length half of a word's maximum score.
  float textNorm(std::uint32_t length) const;

  RankingSettings settings;

 private:
  struct WordWork;
  class Run;

  WordWork workOf(const RankedWord& word) const;
  /// Returns in how many documents of the index or the collection a word is.
  TSCollection::Word holding(const WordTerms& terms) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  const TSCollection* _collection = nullptr;
  double _documents;
  float _averageLength;
  float _averageTitleLength;
};

}  // namespace quorvex::textsearch
