#include "reader/fusion.h"

#include <algorithm>
#include <unordered_map>

namespace quorvex::reader {

double semanticPart(std::size_t wordCount, double coverage) {
  constexpr double fewWords = 4;
  constexpr double manyWords = 12;
  constexpr double mostPart = 0.8;
  constexpr double goodCoverage = 0.7;
  const double length = (static_cast<double>(wordCount) - fewWords) / (manyWords - fewWords);
  const double missing = (1 - coverage) / (1 - goodCoverage);
  return mostPart * std::clamp(length, 0.0, 1.0) * std::clamp(missing, 0.0, 1.0);
}

RankingWeights rankingWeights(const std::vector<ScoredPage>& byWords,
                              const std::vector<ScoredPage>& byMeaning, double meaningPart) {
  const auto weight = [](const std::vector<ScoredPage>& ranking, double part) {
    return ranking.empty() ? 0 : part / ranking.front().score;
  };
  return {weight(byWords, byMeaning.empty() ? 1 : 1 - meaningPart),
          weight(byMeaning, byWords.empty() ? 1 : meaningPart)};
}

std::vector<ScoredPage> fuse(const std::vector<ScoredPage>& byWords,
                             const std::vector<ScoredPage>& byMeaning, double meaningPart) {
  const RankingWeights weights = rankingWeights(byWords, byMeaning, meaningPart);
  std::unordered_map<std::size_t, double> scores;
  for (const ScoredPage& page : byWords)
    scores[page.page] += weights.words * page.score;
  for (const ScoredPage& page : byMeaning)
    scores[page.page] += weights.meaning * page.score;
  std::vector<ScoredPage> fused;
  fused.reserve(scores.size());
  for (const auto& [page, score] : scores)
    fused.push_back({page, score});
  std::ranges::sort(fused, [](const ScoredPage& a, const ScoredPage& b) {
    return a.score != b.score ? a.score > b.score : a.page < b.page;
  });
  return fused;
}

}  // namespace quorvex::reader
