#include "reader/fusion.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace quorvex::reader {

double semanticPart(std::size_t wordCount) {
  constexpr double fewWords = 4;
  constexpr double manyWords = 12;
  constexpr double partOfFew = 0.4;
  constexpr double partOfMany = 0.8;
  const double words = std::clamp(static_cast<double>(wordCount), fewWords, manyWords);
  return std::lerp(partOfFew, partOfMany, (words - fewWords) / (manyWords - fewWords));
}

std::vector<ScoredPage> fuse(const std::vector<ScoredPage>& byWords,
                             const std::vector<ScoredPage>& byMeaning, std::size_t wordCount) {
  const double meaningPart = semanticPart(wordCount);
  std::unordered_map<std::size_t, double> scores;
  const auto add = [&](const std::vector<ScoredPage>& ranking, double part) {
    for (const ScoredPage& page : ranking)
      scores[page.page] += part * page.score / ranking.front().score;
  };
  add(byWords, byMeaning.empty() ? 1 : 1 - meaningPart);
  add(byMeaning, byWords.empty() ? 1 : meaningPart);
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
