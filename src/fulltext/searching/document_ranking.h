#pragma once

#include <vector>

#include "common/once.h"
#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/passages.h"
#include "fulltext/searching/proximity.h"
#include "fulltext/searching/ranking.h"
#include "fulltext/searching/searched_words.h"
#include "fulltext/searching/title_index.h"
#include "platform/textsift.h"

namespace quorvex::textsearch {

using ScoreParts = TSScoreParts;

struct RankedDocument {
  std::uint32_t document = 0;
  ScoreParts parts;
  float score = 0;
  /// The share of the query's words that it holds, by their importance.
  float coverage = 0;

  /// Best first; ties by document.
  friend bool operator<(const RankedDocument& a, const RankedDocument& b) {
    return a.score != b.score ? a.score > b.score : a.document < b.document;
  }
};

/// Working memory of a query, kept for the next.
struct DocumentRankingScratch {
  RankingScratch ranking;
  WordCodes::Scratch codes;
};

/// Ranks documents by all that the index tells of them: first all by their words, then the best of
/// these by where in them the words stand. Thread-safe if each thread has its own scratch.
class DocumentRanking {
 public:
  DocumentRanking(const IndexReader& index, const TitleIndex& titles)
      : _index(index), _titles(titles) {}

  /// Returns the `count` best documents, best first.
  std::vector<RankedDocument> best(const Ranker& ranker, const TSSearchedWords& searched,
                                   const DocumentMask& mask, std::size_t count,
                                   DocumentRankingScratch& scratch) const;

 private:
  class Rater;

  /// The median of all documents.
  float usualLinkShare() const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  mutable Once _usualOnce;
  mutable float _usualLinkShare = 0;
};

}  // namespace quorvex::textsearch
