#include "fulltext/searching/proximity.h"

#include <algorithm>

namespace quorvex::textsearch {

ProximityScorer::ProximityScorer(const IndexReader& index, const Ranker& ranker,
                                 const std::vector<RankedWord>& words, WordOfCode& wordOfCode)
    : _index(index), _ranker(ranker), _words(words), _wordOfCode(wordOfCode) {
  _wordOfCode.resize(std::size_t{index.terms().size()} + 1);
  for (std::size_t i = 0; i < words.size(); ++i) {
    for (const TermEntry& term : words[i].terms->inTexts) {
      _wordOfCode[index.occurrenceCode(term.id)] = static_cast<std::uint16_t>(i + 1);
    }
    _importance.push_back(ranker.importance(*words[i].terms));
  }
  _wordOfCode[0] = 0;
}

ProximityScorer::~ProximityScorer() {
  for (const RankedWord& word : _words) {
    for (const TermEntry& term : word.terms->inTexts)
      _wordOfCode[_index.occurrenceCode(term.id)] = 0;
  }
}

void ProximityScorer::measureNearness(std::uint32_t document) {
  _nearness.assign(_words.size(), 0);
  const std::string_view codes = _index.occurrenceCodes(document);
  const char* const end = codes.data() + codes.size();
  std::size_t last = 0;  // word plus 1
  std::size_t lastPlace = 0;
  std::size_t place = 0;
  for (const char* position = codes.data(); position != end; ++place) {
    std::uint32_t code = static_cast<unsigned char>(*position);
    if (code < firstLongCode) {
      ++position;
    } else {
      code = readCode(position, end);
    }
    const std::size_t word = code < _wordOfCode.size() ? _wordOfCode[code] : 0;
    if (word == 0) continue;
    if (last != 0 && last != word) {
      const auto distance = static_cast<float>(place - lastPlace);
      _nearness[word - 1] += _importance[last - 1] / (distance * distance);
      _nearness[last - 1] += _importance[word - 1] / (distance * distance);
    }
    last = word;
    lastPlace = place;
  }
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
