#include "fulltext/searching/document_ranking.h"

#include <algorithm>
#include <cmath>

#include "fulltext/searching/document_places.h"

namespace quorvex::textsearch {

namespace {

/// Number of top documents whose texts are read.
constexpr std::size_t mostRead = 30;

/// Of a title that has the words of the query and no others, in the importance of these words.
constexpr float titleMatchWeight = 0.3F;

// Links and code are no text to read. Links cost where a page has more of them than is usual in
// its book; shares of its text.
constexpr float listOfLinks = 0.5F;
constexpr float costOfLinks = 0.5F;
constexpr float mostlyCode = 0.8F;
constexpr float costOfCode = 0.3F;

/// 0 up to `begin`, 1 from `end` on.
float ramp(float value, float begin, float end) {
  return std::clamp((value - begin) / (end - begin), 0.0F, 1.0F);
}

bool isNumber(std::string_view term) {
  return term.find_first_not_of("0123456789.") == term.npos;
}

}  // namespace

/// Rates documents for one query.
class DocumentRanking::Rater {
 public:
  Rater(const DocumentRanking& ranking, const Ranker& ranker, const TSSearchedWords& searched)
      : _index(ranking._index),
        _titles(ranking._titles),
        _words(searched.words),
        _usual(ranking.usualLinkShare()) {
    for (const RankedWord& word : _words) {
      _importance.push_back(word.weight * ranker.importance(*word.terms));
      _allImportance += _importance.back();
      _withOperator.emplace_back();
      for (const TextTerm& each : word.terms->operators) {
        for (PostingCursor posting = _index.operatorPostings(each.entry); posting.next();)
          _withOperator.back().push_back(posting.document());
      }
    }
  }

  /// Rates what is known without the text of a document.
  RankedDocument rate(const ScoredDocument& scored) {
    RankedDocument rated{.document = scored.document, .parts = {.words = scored.score}};
    const float match = titleMatch(scored.document);
    rated.parts.title = titleMatchWeight * _allImportance * match * match;
    addUp(rated);
    return rated;
  }

  void addUp(RankedDocument& rated) const {
    ScoreParts& parts = rated.parts;
    parts.furniture = 0;
    parts.furniture = -(1 - factor(rated.document)) * parts.sum();
    rated.score = parts.sum();
  }

  float coverage(std::uint32_t document, const Occurrences& occurrences) {
    _held.assign(_words.size(), 0);
    for (const Occurrence& occurrence : occurrences)
      _held[occurrence.word] = std::max(_held[occurrence.word], occurrence.weight);
    forEachInTitle(document, [&](std::size_t word, std::size_t, float weight) {
      _held[word] = std::max(_held[word], weight);
    });
    float sum = 0;
    for (std::size_t word = 0; word < _words.size(); ++word) {
      if (std::ranges::binary_search(_withOperator[word], document)) _held[word] = 1;
      sum += _importance[word] * _held[word];
    }
    return _allImportance > 0 ? sum / _allImportance : 0;
  }

 private:
  /// Calls visit(word, place, weight) for each word of the query in a title.
  template <typename Visit>
  void forEachInTitle(std::uint32_t document, const Visit& visit) const {
    const std::vector<std::uint32_t> title = _titles.words(document);
    for (std::size_t word = 0; word < _words.size(); ++word) {
      for (const TitleTerm& term : _words[word].terms->inTitles) {
        for (std::size_t place = 0; place < title.size(); ++place) {
          if (title[place] == term.term) visit(word, place, term.weight);
        }
      }
    }
  }

  /// The share of the query that is in the title, times the share of the title that is in the
  /// query.
  float titleMatch(std::uint32_t document) {
    const std::vector<std::uint32_t> title = _titles.words(document);
    _held.assign(_words.size(), 0);
    _inTitle.assign(title.size(), 0);
    forEachInTitle(document, [&](std::size_t word, std::size_t place, float weight) {
      _held[word] = std::max(_held[word], weight);
      _inTitle[place] = std::max(_inTitle[place], weight);
    });
    float ofQuery = 0;
    for (std::size_t word = 0; word < _words.size(); ++word) {
      const std::vector<TitleIndex::Posting>& titles = _words[word].terms->operatorTitles;
      if (std::ranges::binary_search(titles, document, {}, &TitleIndex::Posting::document)) {
        _held[word] = 1;
      }
      ofQuery += _importance[word] * _held[word];
    }
    if (ofQuery == 0) return 0;
    float ofTitle = 0;
    float size = 0;
    for (std::size_t place = 0; place < title.size(); ++place) {
      if (title[place] == TitleIndex::gap) continue;
      // "5.11. Table Partitioning" is about partitioning tables.
      const bool isSectionNumber =
          size == 0 && _inTitle[place] == 0 && isNumber(_titles.term(title[place]));
      if (isSectionNumber) continue;
      size += 1;
      ofTitle += _inTitle[place];
    }
    if (size == 0) return 0;
    return ofQuery / _allImportance * ofTitle / size;
  }

  /// What is left of the score of a list of links, or of program code.
  float factor(std::uint32_t document) const {
    const std::optional<IndexTraits> traits = _index.traits(document);
    if (!traits) return 1;
    constexpr float whole = 255;
    const float excess = (static_cast<float>(traits->linkShare) - _usual) / whole;
    const float links = ramp(excess, 0, listOfLinks);
    const float code = ramp(static_cast<float>(traits->codeShare) / whole, mostlyCode, 1);
    return (1 - costOfLinks * links) * (1 - costOfCode * code);
  }

  const IndexReader& _index;
  const TitleIndex& _titles;
  const std::vector<RankedWord>& _words;
  float _usual;
  std::vector<float> _importance;
  std::vector<std::vector<std::uint32_t>> _withOperator;  ///< of each word, ascending
  float _allImportance = 0;
  std::vector<float> _held;
  std::vector<float> _inTitle;
};

float DocumentRanking::usualLinkShare() const {
  _usualOnce.run([this] {
    const std::string_view stored = _index.linkShares();
    if (stored.empty()) return;
    std::vector<std::uint8_t> shares(stored.begin(), stored.end());
    const auto median = shares.begin() + static_cast<std::ptrdiff_t>(shares.size() / 2);
    std::ranges::nth_element(shares, median);
    _usualLinkShare = *median;
  });
  return _usualLinkShare;
}

std::vector<RankedDocument> DocumentRanking::best(const Ranker& ranker,
                                                  const TSSearchedWords& searched,
                                                  const DocumentMask& mask, std::size_t count,
                                                  DocumentRankingScratch& scratch) const {
  Rater rater(*this, ranker, searched);
  std::vector<RankedDocument> ranked;
  for (const ScoredDocument& scored :
       ranker.best(searched.words, mask, std::max(count, mostRead), scratch.ranking))
    ranked.push_back(rater.rate(scored));
  std::sort(ranked.begin(), ranked.end());
  const auto end = ranked.begin() + static_cast<std::ptrdiff_t>(std::min(mostRead, ranked.size()));
  const WordCodes codes(_index, searched.words, scratch.codes);
  ProximityScorer proximity(_index, ranker, searched.words);
  PassageFinder passages(ranker, searched.words, searched.phrases);
  Occurrences occurrences;
  const bool isOneWord = searched.words.size() == 1;
  std::for_each(ranked.begin(), end, [&](RankedDocument& rated) {
    if (isOneWord) {
      rated.coverage = 1;
      return;
    }
    codes.find(rated.document, occurrences);
    rated.coverage = rater.coverage(rated.document, occurrences);
    rated.parts.nearness = proximity.score(rated.document, occurrences);
    // Without places, the only passage would be the whole text, which is ranked already.
    const PlacesOfDocument places(_index, rated.document);
    if (places.size() > 0) {
      const std::vector<Passage> found = passages.find(places, occurrences);
      if (!found.empty()) {
        rated.parts.passage =
            ranker.settings.passageWeight * std::ranges::max(found, {}, &Passage::score).score;
      }
    }
    rater.addUp(rated);
  });
  std::sort(ranked.begin(), end);
  ranked.resize(std::min(count, ranked.size()));
  return ranked;
}

}  // namespace quorvex::textsearch
