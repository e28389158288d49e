#include "fulltext/searching/title_index.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <string_view>

namespace quorvex::textsearch {

namespace {

/// Turns titles into term numbers. The parts between spaces, which no word crosses, are cached: in
/// a large book most of them occur in hundreds of titles, and a look-up takes a fraction of the
/// time of finding and folding the words.
class TitleReader {
 public:
  TitleReader(const WordFilter& filter, Tokenizer& tokenizer)
      : _filter(filter), _tokenizer(tokenizer) {}

  const TermTable& terms() const { return _terms; }

  /// `title` must outlive this object.
  void append(std::string_view title, std::vector<std::uint32_t>& words) {
    const std::size_t begin = words.size();
    const auto add = [&](std::uint32_t word) {
      // As in texts, adjacent words that are left out become one gap.
      const bool isBehindGap = words.size() > begin && words.back() == TitleIndex::gap;
      if (word != TitleIndex::gap || !isBehindGap) words.push_back(word);
    };
    for (std::size_t position = 0; position < title.size();) {
      const std::size_t end = std::min(title.find(' ', position), title.size());
      const Part& part = partFor(title.substr(position, end - position));
      std::for_each(_words.begin() + part.begin, _words.begin() + part.end, add);
      position = end + 1;
    }
  }

 private:
  template <typename Add>
  void read(std::string_view text, const Add& add) {
    _tokenizer.reset(text);
    for (Token token; _tokenizer.next(token);)
      add(_filter.leavesOut(token.term) ? TitleIndex::gap : _terms.insert(token.term));
  }

  /// A part of a title and the range of its words. A part evicts another one in the same slot.
  struct Part {
    std::string_view text;
    std::ptrdiff_t begin = 0;
    std::ptrdiff_t end = 0;
  };

  const Part& partFor(std::string_view text) {
    Part& part = _parts[std::hash<std::string_view>()(text) % _parts.size()];
    if (part.text != text) {
      part = {text, static_cast<std::ptrdiff_t>(_words.size()), 0};
      read(text, [&](std::uint32_t word) { _words.push_back(word); });
      part.end = static_cast<std::ptrdiff_t>(_words.size());
    }
    return part;
  }

  const WordFilter& _filter;
  Tokenizer& _tokenizer;
  TermTable _terms;
  std::vector<Part> _parts = std::vector<Part>(4096);
  std::vector<std::uint32_t> _words;  ///< of all parts
};

}  // namespace

TitleIndex::TitleIndex(const IndexReader& index, std::string_view property,
                       const WordFilter& filter, Tokenizer& tokenizer) {
  const DocumentTable& documents = index.documents();
  std::vector<std::string_view> found(documents.size());
  _titles.resize(documents.size());
  index.forEachProperty(property, [&](std::uint32_t document, std::string_view title) {
    _titles[document] = title;
    if (documents.length(document) > 0) found[document] = title;
  });
  _shared = TitleAffix(found);
  TitleReader reader(filter, tokenizer);
  _wordBegins.reserve(found.size() + 1);
  _wordBegins.push_back(0);
  for (const std::string_view title : found) {
    reader.append(_shared.cut(title), _words);
    _wordBegins.push_back(static_cast<std::uint32_t>(_words.size()));
  }
  const auto titles = static_cast<float>(std::max<std::size_t>(_wordBegins.size() - 1, 1));
  _averageLength = static_cast<float>(_words.size()) / titles;
  numberByOrder(reader.terms());
  invert();
}

std::string_view TitleIndex::title(std::uint32_t document) const {
  return document < _titles.size() ? _shared.cut(_titles[document]) : std::string_view();
}

/// Renumbers the terms in byte order.
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
  const auto count = [&](std::uint32_t word, std::uint32_t) { ++_postingBegins[word + 2]; };
  forEachNew(count, [](std::uint32_t) {});
  std::partial_sum(_postingBegins.begin(), _postingBegins.end(), _postingBegins.begin());
  _postings.resize(_postingBegins.back());
  // Counts are stored two places ahead: filling moves [w + 1] from the begin of word w to its end.
  const auto add = [&](std::uint32_t word, std::uint32_t document) {
    _postings[_postingBegins[word + 1]++] = {document, 1};
  };
  const auto addAgain = [&](std::uint32_t word) {
    ++_postings[_postingBegins[word + 1] - 1].count;
  };
  forEachNew(add, addAgain);
}

std::optional<std::uint32_t> TitleIndex::find(std::string_view term) const {
  const auto found = std::ranges::lower_bound(_terms, term);
  if (found == _terms.end() || *found != term) return std::nullopt;
  return static_cast<std::uint32_t>(found - _terms.begin());
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
