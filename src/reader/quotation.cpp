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
  Quoter(const TSSearchRef& search, const Book& book, const std::vector<std::string>& terms)
      : _search(search), _book(book), _terms(terms) {}

  void quote(const PageToQuote& page, quorvex_hit& hit) {
    const std::size_t read = _bytesRead;
    if (read >= mostBytesRead) return;
    const std::optional<Data> html = _book.page(hit.page.path, mostBytesRead - read);
    if (!html) return;
    _bytesRead += html->size();
    const bool isWhole = html->size() <= largestWholePage;
    PageText text;
    if (isWhole) text = textOfPage(*html);
    for (std::size_t i = 0; i < page.places.size(); ++i) {
      if (isWhole) {
        const auto words = locate(page.document, {text.text, 0, true}, page.places[i]);
        quote(text, words, hit.places[i]);
        continue;
      }
      for (const std::size_t size : partSizes) {
        const PageText part = partOf(*html, page.places[i], size);
        const auto words = locateNearby(page.document, part.text, page.places[i]);
        if (quote(part, words, hit.places[i])) break;
      }
    }
  }

 private:
  static PageText partOf(const Data& html, const TSFoundPlace& place, std::size_t size) {
    return place.fragment.empty() ? beginningOfPage(html, size)
                                  : textFromFragment(html, place.fragment, size);
  }

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
  const Book& _book;
  const std::vector<std::string>& _terms;
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

void addSnippets(const TSSearchRef& search, const Book& book, const std::vector<std::string>& terms,
                 std::span<const PageToQuote> pages, std::vector<quorvex_hit>& hits) {
  constexpr unsigned mostWorkers = 4;
  const auto workers = static_cast<unsigned>(std::min<std::size_t>(
      {pages.size(), std::max(1U, std::thread::hardware_concurrency()), mostWorkers}));
  Quoter quoter(search, book, terms);
  forEachBlock(pages.size(), 1, workers, [&](std::size_t i, std::size_t, unsigned) {
    quoter.quote(pages[i], hits[pages[i].hit]);
  });
  PageTree::releaseSpareMemory();
}

}  // namespace quorvex::reader
