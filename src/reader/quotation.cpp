#include "reader/quotation.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <thread>

#include "common/parallel.h"
#include "extract/page_tree.h"
#include "reader/page_text.h"
#include "reader/snippet.h"

namespace quorvex::reader {

namespace {

/// Parsing a page of this size takes a few milliseconds.
constexpr std::size_t largestWholePage = std::size_t{64} * 1024;
/// What is parsed of a larger page for each place; the second if the words stand further behind.
constexpr std::array<std::size_t, 2> partSizes = {std::size_t{32} * 1024, std::size_t{64} * 1024};
/// What one answer may read; reading and searching as much takes tens of milliseconds.
constexpr std::size_t mostBytesRead = std::size_t{32} << 20U;

/// Words around the matches that a snippet may need; it is cut in characters.
constexpr std::size_t wordsAround = 100;

class Quoter {
 public:
  Quoter(const TSSearchRef& search, const PageTexts& texts, const TSSearchTerms& terms)
      : _search(search), _texts(texts), _terms(terms) {}

  void quote(const PageToQuote& page, quorvex_hit& hit) {
    const std::size_t read = _bytesRead;
    if (read >= mostBytesRead) return;
    std::optional<PageTexts::Page> texts = _texts.page(hit.page.path, mostBytesRead - read);
    if (!texts) return;
    _bytesRead += texts->size();
    const bool isWhole = texts->size() <= largestWholePage;
    for (std::size_t i = 0; i < page.places.size(); ++i) {
      const TSFoundPlace& place = page.places[i];
      if (isWhole) {
        const auto text = texts->whole();
        if (text) quote(*text, locate(page.document, {text->text, 0, true}, place), hit.places[i]);
        continue;
      }
      for (const std::size_t size : partSizes) {
        const auto part = texts->part(place.fragment, size);
        if (!part) break;
        if (quote(*part, locateNearby(page.document, part->text, place), hit.places[i])) break;
      }
    }
  }

 private:
  /// False if there is nothing to quote.
  bool quote(const PageText& text, const std::optional<TSLocatedWords>& words,
             quorvex_place& place) const {
    if (!words || words->words[words->first].begin < text.bodyBegin) return false;
    place.snippet = snippetOf(text, *words);
    place.snippetMatches = publicRanges(TSSearchFindTerms(_search, _terms, *place.snippet));
    return true;
  }

  std::optional<TSLocatedWords> locate(TSDocumentID document, const TSTextPart& part,
                                       const TSFoundPlace& place) const {
    return TSSearchLocate(_search, document, part, place.begin, place.end, wordsAround);
  }

  /// The element with the fragment may begin some words before its heading or in the middle of it.
  std::optional<TSLocatedWords> locateNearby(TSDocumentID document, std::string_view text,
                                             const TSFoundPlace& place) const {
    constexpr std::uint32_t furthest = 8;
    for (std::uint32_t distance = 0; distance <= furthest; ++distance) {
      for (const bool isBefore : {true, false}) {
        if (isBefore && distance > place.start) continue;
        const std::uint32_t start = isBefore ? place.start - distance : place.start + distance;
        if (auto words = locate(document, {text, start, false}, place)) return words;
      }
    }
    return std::nullopt;
  }

  const TSSearchRef& _search;
  const PageTexts& _texts;
  const TSSearchTerms& _terms;
  std::atomic<std::size_t> _bytesRead = 0;
};

}  // namespace

std::vector<quorvex_range> publicRanges(const std::vector<TSTextRange>& ranges) {
  std::vector<quorvex_range> result;
  result.reserve(ranges.size());
  for (const TSTextRange& range : ranges)
    result.push_back({range.begin, range.end});
  return result;
}

void addSnippets(const TSSearchRef& search, const PageTexts& texts, const TSSearchTerms& terms,
                 std::span<const PageToQuote> pages, std::vector<quorvex_hit>& hits) {
  constexpr unsigned mostWorkers = 4;
  const auto workers = static_cast<unsigned>(std::min<std::size_t>(
      {pages.size(), std::max(1U, std::thread::hardware_concurrency()), mostWorkers}));
  Quoter quoter(search, texts, terms);
  forEachBlock(pages.size(), 1, workers, [&](std::size_t i, std::size_t, unsigned) {
    quoter.quote(pages[i], hits[pages[i].hit]);
  });
  PageTree::releaseSpareMemory();
}

}  // namespace quorvex::reader
