#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/textsift.h"
#include "reader/answers.h"
#include "reader/fusion.h"

namespace quorvex::reader {

/// The rankings that an answer is to be made of.
enum class RankedBy {
  words,      ///< as it was asked for
  onlyWords,  ///< for lack of a semantic index
  meaning,
  both,
};

/// Tells where the scores of one answer come from.
class Explanation {
 public:
  Explanation(const TSSearchRef& search, const TSSearchAnswer& answer,
              const std::vector<ScoredPage>& byWords, const std::vector<ScoredPage>& byMeaning,
              RankedBy rankedBy);

  /// Tells how much meaning counts, and what was searched for: short lines for people.
  const std::vector<std::string>& lines() const { return _lines; }
  /// All scores of the answer are multiplied with this.
  void weigh(double weight) { _weight *= weight; }
  /// Tells what the scores of hits are made of, without what is zero: the scores in both rankings,
  /// and how the page was moved from there.
  void addTo(std::span<quorvex_hit> hits) const;

 private:
  struct Sources {
    TSScoreParts words;
    double meaning = 0;
  };

  std::vector<quorvex_part> partsOf(const quorvex_hit& hit) const;

  RankingWeights _weights;
  double _weight = 1;
  std::unordered_map<std::size_t, Sources> _sources;  ///< by number of the page
  std::vector<std::string> _lines;
};

/// Explains the answer of a semantic index that is alone.
void explainByMeaning(quorvex_result& result);

}  // namespace quorvex::reader
