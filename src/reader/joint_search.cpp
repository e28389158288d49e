#include "reader/joint_search.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::reader {

namespace {

using Found = OpenIndex::Found;

/// Also the first byte of curly ones.
constexpr std::string_view straightOrCurlyQuotes = "\"\xE2";

bool isWithoutPages(const Found& found) {
  return found.pages.empty() && found.answer.named.empty();
}

double strengthOf(const Found& found) {
  return found.answer.hits.empty() ? 0 : found.answer.hits.front().score;
}

/// Makes the scores of all books comparable.
void weigh(std::vector<Found>& all) {
  const double best = strengthOf(*std::ranges::max_element(all, {}, strengthOf));
  if (best == 0) return;  // no book has any of the words
  for (Found& found : all) {
    const double weight = strengthOf(found) / best;
    if (weight == 0) found.pages.clear();
    for (ScoredPage& page : found.pages)
      page.score *= weight;
    if (found.explanation) found.explanation->weigh(weight);
  }
}

/// Keeps the best names of all books.
void keepBestNames(std::vector<Found>& all) {
  std::vector<double> qualities;
  for (const Found& found : all) {
    for (const TSNamedPlace& named : found.answer.named)
      qualities.push_back(named.quality);
  }
  if (qualities.size() <= OpenIndex::mostNamed) return;
  std::ranges::sort(qualities, std::ranges::greater());
  const double least = qualities[OpenIndex::mostNamed - 1];
  const auto isBetter = [least](double quality) { return quality > least; };
  std::size_t ties =
      OpenIndex::mostNamed - static_cast<std::size_t>(std::ranges::count_if(qualities, isBetter));
  for (Found& found : all) {
    std::erase_if(found.answer.named, [&](const TSNamedPlace& named) {
      if (named.quality > least) return false;
      if (named.quality < least || ties == 0) return true;
      --ties;
      return false;
    });
  }
}

/// Tells what was or could be searched for instead, as in the best book that has something.
void takeSuggestion(const std::vector<Found>& all, quorvex_result& result) {
  const Found* best = nullptr;
  for (const Found& found : all) {
    const bool hasSome = found.suggestion || found.searched;
    if (hasSome && (best == nullptr || strengthOf(found) > strengthOf(*best))) best = &found;
  }
  if (best == nullptr) return;
  result.suggestion = best->suggestion;
  result.searched = best->searched;
}

struct PageOfBook {
  std::size_t book;
  OpenIndex::FoundPage page;
};

std::vector<PageOfBook> merged(const std::vector<Found>& all, std::size_t count) {
  double best = 0;
  for (const Found& found : all) {
    if (!found.pages.empty()) best = std::max(best, found.pages.front().score);
  }
  std::vector<PageOfBook> pages;
  for (std::size_t book = 0; book < all.size(); ++book) {
    for (const OpenIndex::FoundPage& page : OpenIndex::namedFirst(all[book], count, best))
      pages.push_back({book, page});
  }
  std::ranges::stable_sort(pages, std::ranges::greater(),
                           [](const PageOfBook& each) { return each.page.page.score; });
  if (pages.size() > count) pages.resize(count);
  return pages;
}

/// Adds the hits on pages, and what explains them. `pages`: best first.
void addHits(std::span<const IndexAndBook> indexes, const std::vector<Found>& all,
             const std::vector<PageOfBook>& pages, quorvex_result& result) {
  result.hits.resize(pages.size());
  for (std::size_t book = 0; book < all.size(); ++book) {
    std::vector<OpenIndex::FoundPage> own;
    std::vector<std::size_t> ranks;
    for (std::size_t rank = 0; rank < pages.size(); ++rank) {
      if (pages[rank].book != book) continue;
      own.push_back(pages[rank].page);
      ranks.push_back(rank);
    }
    auto hits = indexes[book].index->hitsWithPlaces(own, all[book].answer, indexes[book].texts);
    if (const auto& explanation = all[book].explanation) {
      explanation->addTo(hits);
      std::vector<std::string>& lines = result.explanation.texts;
      lines.push_back("Index " + std::to_string(book + 1) + ':');
      lines.insert(lines.end(), explanation->lines().begin(), explanation->lines().end());
    }
    for (std::size_t i = 0; i < hits.size(); ++i) {
      hits[i].index = book;
      result.hits[ranks[i]] = std::move(hits[i]);
    }
  }
}

}  // namespace

Result<quorvex_result> searchTogether(std::span<const IndexAndBook> indexes, std::string_view query,
                                      const quorvex_options& options) {
  TSCollection collection;
  for (const IndexAndBook& each : indexes)
    each.index->addTo(collection, query, options);
  std::vector<Found> all;
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    Result<Found> found = indexes[i].index->findPages(query, options, &collection);
    if (!found) {
      return Error{"Index " + std::to_string(i + 1) + ": " + found.error().description};
    }
    all.push_back(*std::move(found));
  }
  quorvex_result result;
  if (all.empty()) return result;
  const auto isAnswered = [](const Found& found) { return found.state == QUORVEX_STATE_ANSWERED; };
  const auto answered = std::ranges::find_if(all, isAnswered);
  result.state = (answered == all.end() ? all.begin() : answered)->state;
  if (result.state != QUORVEX_STATE_ANSWERED) return result;
  const bool isEmpty = std::ranges::all_of(all, &isWithoutPages);
  if (isEmpty && !options.phrasesAreWords &&
      query.find_first_of(straightOrCurlyQuotes) != query.npos) {
    quorvex_options asWords = options;
    asWords.phrasesAreWords = true;
    return searchTogether(indexes, query, asWords);
  }
  takeSuggestion(all, result);
  weigh(all);
  keepBestNames(all);
  addHits(indexes, all, merged(all, options.count), result);
  return result;
}

}  // namespace quorvex::reader
