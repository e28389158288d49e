#include "fulltext/searching/proximity.h"

#include <algorithm>

namespace quorvex::textsearch {

WordCodes::WordCodes(const IndexReader& index, const std::vector<RankedWord>& words,
                     WordOfCode& wordOfCode)
    : _index(index), _words(words), _wordOfCode(wordOfCode) {
  _wordOfCode.resize(std::size_t{index.terms().size()} + 1);
  for (std::size_t i = 0; i < words.size(); ++i) {
    for (const TermEntry& term : words[i].terms->inTexts) {
      _wordOfCode[index.occurrenceCode(term.id)] = static_cast<std::uint16_t>(i + 1);
    }
  }
  _wordOfCode[0] = 0;
}

WordCodes::~WordCodes() {
  for (const RankedWord& word : _words) {
    for (const TermEntry& term : word.terms->inTexts)
      _wordOfCode[_index.occurrenceCode(term.id)] = 0;
  }
}

ProximityScorer::ProximityScorer(const IndexReader& index, const Ranker& ranker,
                                 const std::vector<RankedWord>& words, const WordCodes& codes)
    : _index(index), _ranker(ranker), _words(words), _codes(codes) {
  for (const RankedWord& word : words)
    _importance.push_back(ranker.importance(*word.terms));
}

void ProximityScorer::measureNearness(std::uint32_t document) {
  _nearness.assign(_words.size(), 0);
  std::size_t last = SIZE_MAX;
  std::uint32_t lastPlace = 0;
  _codes.forEachOccurrence(document, [&](std::uint32_t place, std::size_t word) {
    if (last != SIZE_MAX && last != word) {
      const auto distance = static_cast<float>(place - lastPlace);
      _nearness[word] += _importance[last] / (distance * distance);
      _nearness[last] += _importance[word] / (distance * distance);
    }
    last = word;
    lastPlace = place;
  });
}

void ProximityScorer::addTo(ScoredDocument& document) {
  const std::uint32_t length = _index.documents().length(document.document);
  if (length > longestTextForProximity) return;
  measureNearness(document.document);
  const float norm = _ranker.textNorm(length);
  float sum = 0;
  for (std::size_t i = 0; i < _words.size(); ++i) {
    sum += _words[i].weight * std::min(1.0F, _importance[i]) * _nearness[i] / (_nearness[i] + norm);
  }
  document.score += _ranker.settings.proximityWeight * (_ranker.settings.textK1 + 1) * sum;
}

}  // namespace quorvex::textsearch
