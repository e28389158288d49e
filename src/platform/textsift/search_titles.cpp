#include "platform/textsift/search_titles.h"

#include <algorithm>
#include <numeric>
#include <string_view>

namespace quorvex::textsearch {

namespace {

constexpr std::string_view titleProperty = "T";

}  // namespace

TitleIndex::TitleIndex(const IndexReader& index, const WordFilter& filter, Tokenizer& tokenizer) {
  TermTable table;
  _wordBegins.reserve(std::size_t{index.documents().size()} + 1);
  _wordBegins.push_back(0);
  index.forEachProperty(titleProperty, [&](std::uint32_t document, std::string_view title) {
    _wordBegins.resize(document + std::size_t{1}, static_cast<std::uint32_t>(_words.size()));
    if (index.documents().length(document) == 0) return;
    tokenizer.reset(title);
    // As in texts, one gap stands for all words that are left out together.
    bool isBehindGap = false;
    for (Token token; tokenizer.next(token);) {
      const bool leftOut = filter.leavesOut(token.term);
      if (!leftOut || !isBehindGap) _words.push_back(leftOut ? gap : table.insert(token.term));
      isBehindGap = leftOut;
    }
  });
  _wordBegins.resize(index.documents().size() + std::size_t{1},
                     static_cast<std::uint32_t>(_words.size()));
  const auto titles = static_cast<float>(std::max<std::size_t>(_wordBegins.size() - 1, 1));
  _averageLength = static_cast<float>(_words.size()) / titles;
  numberByOrder(table);
  invert();
}

/// Gives the terms numbers in byte order.
void TitleIndex::numberByOrder(const TermTable& table) {
  std::vector<std::uint32_t> order(table.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::sort(order, {}, [&](std::uint32_t number) { return table.term(number); });
  std::vector<std::uint32_t> rankOf(order.size());
  _terms.reserve(order.size());
  for (std::uint32_t rank = 0; rank < order.size(); ++rank) {
    rankOf[order[rank]] = rank;
    _terms.emplace_back(table.term(order[rank]));
  }
  for (std::uint32_t& word : _words) {
    if (word != gap) word = rankOf[word];
  }
}

void TitleIndex::invert() {
  std::vector<std::uint32_t> lastDocument(_terms.size(), gap);
  _postingBegins.assign(_terms.size() + 2, 0);
  const auto forEachNew = [&](auto visitNew, auto visitAgain) {
    std::ranges::fill(lastDocument, gap);
    for (std::uint32_t document = 0; document + 1 < _wordBegins.size(); ++document) {
      for (const std::uint32_t word : words(document)) {
        if (word == gap) continue;
        if (lastDocument[word] == document) {
          visitAgain(word);
        } else {
          lastDocument[word] = document;
          visitNew(word, document);
        }
      }
    }
  };
  forEachNew([&](std::uint32_t word, std::uint32_t) { ++_postingBegins[word + 2]; },
             [](std::uint32_t) {});
  std::partial_sum(_postingBegins.begin(), _postingBegins.end(), _postingBegins.begin());
  _postings.resize(_postingBegins.back());
  // Counted two places on, a term's number becomes its end as its documents are filled in.
  forEachNew(
      [&](std::uint32_t word, std::uint32_t document) {
        _postings[_postingBegins[word + 1]++] = {document, 1};
      },
      [&](std::uint32_t word) { ++_postings[_postingBegins[word + 1] - 1].count; });
}

std::span<const TitleIndex::Posting> TitleIndex::postings(std::uint32_t term) const {
  return std::span(_postings).subspan(_postingBegins[term],
                                      _postingBegins[term + 1] - _postingBegins[term]);
}

std::span<const std::uint32_t> TitleIndex::words(std::uint32_t document) const {
  return std::span(_words).subspan(_wordBegins[document],
                                   _wordBegins[document + 1] - _wordBegins[document]);
}

}  // namespace quorvex::textsearch
