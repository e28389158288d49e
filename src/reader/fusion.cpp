#include "reader/fusion.h"

#include <algorithm>
#include <unordered_map>

namespace quorvex::reader {

std::vector<ScoredPage> fuse(const std::vector<ScoredPage>& byWords,
                             const std::vector<ScoredPage>& byMeaning) {
  std::unordered_map<std::size_t, double> scores;
  const auto add = [&](const std::vector<ScoredPage>& ranking, double part) {
    for (const ScoredPage& page : ranking)
      scores[page.page] += part * page.score / ranking.front().score;
  };
  add(byWords, byMeaning.empty() ? 1 : 1 - semanticPart);
  add(byMeaning, byWords.empty() ? 1 : semanticPart);
  std::vector<ScoredPage> fused;
  for (const auto& [page, score] : scores)
    fused.push_back({page, score});
  std::ranges::sort(fused, [](const ScoredPage& a, const ScoredPage& b) {
    return a.score != b.score ? a.score > b.score : a.page < b.page;
  });
  return fused;
}

}  // namespace quorvex::reader
