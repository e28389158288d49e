#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_terms.h"

// Ranking by BM25 (Robertson, Walker, Jones, Hancock-Beaulieu, Gatford 1994), for the texts and for
// the titles apart, each with its own document frequencies and lengths:
//
//   score(d) = sum over words of weight * (bm25(text of d) + titleWeight * bm25(title of d))
//
// The best documents are found word by word, the word that can add most first (Turtle, Flood 1995):
// once the words that are left cannot lift a new document over the k-th best so far, they are only
// added to documents that have a score, and only to those that can still get there.

namespace quorvex::textsearch {

/// A word of the query with its terms; all of them count as one term.
struct RankedWord {
  std::shared_ptr<const WordTerms> terms;
  float weight = 1;
};

struct ScoredDocument {
  std::uint32_t document;
  float score;

  /// Best first; ties by document.
  friend bool operator<(const ScoredDocument& a, const ScoredDocument& b) {
    return a.score != b.score ? a.score > b.score : a.document < b.document;
  }
};

/// Set where documents may be found, one number a document; empty: everywhere.
using DocumentMask = std::vector<std::uint8_t>;

/// Of the usual ranges, chosen on two collections where every value near these does about as well.
struct RankingSettings {
  float textK1 = 1.2F;
  float textB = 0.7F;
  float titleK1 = 1.2F;
  float titleB = 0.75F;
  float titleWeight = 0.3F;
  float proximityWeight = 0.2F;
};

/// What a query needs for a while, one number a document each; kept from query to query, so that
/// nothing of the size of the index is allocated for each.
struct RankingScratch {
  std::vector<float> scores;
  std::vector<std::uint32_t> frequencies;
};

/// Computes rankings of one index. Safe from several threads, each with a scratch of its own.
class Ranker {
 public:
  Ranker(const IndexReader& index, const TitleIndex& titles);

  /// The best `count` documents by their words, best first.
  std::vector<ScoredDocument> best(const std::vector<RankedWord>& words, const DocumentMask& mask,
                                   std::size_t count, RankingScratch& scratch) const;

  /// How much a word tells of a text that holds it, from 0 on.
  float importance(const WordTerms& terms) const;
  /// The frequency that gives a text of this length half of what a word can give.
  float textNorm(std::uint32_t length) const;

  RankingSettings settings;

 private:
  struct WordWork;
  class Run;

  WordWork workOf(const RankedWord& word) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  float _averageLength;
};

}  // namespace quorvex::textsearch
