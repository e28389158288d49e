#include "fulltext/searching/proximity.h"

#include <algorithm>

namespace quorvex::textsearch {

WordCodes::WordCodes(const IndexReader& index, const std::vector<RankedWord>& words,
                     Scratch& scratch)
    : _index(index), _meaningOfCode(scratch) {
  _meaningOfCode.resize(std::size_t{index.terms().size()} + 1);
  for (std::uint32_t word = 0; word < words.size(); ++word) {
    for (const TextTerm& term : words[word].terms->inTexts) {
      // 0 stands for words left out.
      const std::uint32_t code = index.occurrenceCode(term.entry);
      if (code != 0) _meanings.push_back({code, word, term.weight});
    }
  }
  std::ranges::stable_sort(_meanings, {}, &Meaning::code);
  for (std::size_t i = _meanings.size(); i-- > 0;)
    _meaningOfCode[_meanings[i].code] = static_cast<std::uint32_t>(i + 1);
}

WordCodes::~WordCodes() {
  for (const Meaning& meaning : _meanings)
    _meaningOfCode[meaning.code] = 0;
}

void WordCodes::find(std::uint32_t document, Occurrences& found) const {
  found.clear();
  const std::string_view codes = _index.occurrenceCodes(document);
  const char* const end = codes.data() + codes.size();
  std::uint32_t position = 0;
  for (const char* at = codes.data(); at != end; ++position) {
    std::uint32_t code = static_cast<unsigned char>(*at);
    if (code < firstLongCode) {
      ++at;
    } else {
      code = readCode(at, end);
    }
    const std::size_t first = code < _meaningOfCode.size() ? _meaningOfCode[code] : 0;
    if (first == 0) continue;
    for (auto i = first - 1; i < _meanings.size() && _meanings[i].code == code; ++i)
      found.push_back({position, _meanings[i].word, _meanings[i].weight});
  }
}

ProximityScorer::ProximityScorer(const IndexReader& index, const Ranker& ranker,
                                 const std::vector<RankedWord>& words)
    : _index(index), _ranker(ranker), _words(words) {
  for (const RankedWord& word : words)
    _importance.push_back(ranker.importance(*word.terms));
}

void ProximityScorer::measureNearness(const Occurrences& occurrences) {
  _nearness.assign(_words.size(), 0);
  const Occurrence* last = nullptr;
  for (const Occurrence& occurrence : occurrences) {
    if (last != nullptr && last->word != occurrence.word) {
      // Words that one joined term stands for are side by side.
      const auto distance = static_cast<float>(std::max(1U, occurrence.position - last->position));
      _nearness[occurrence.word] += _importance[last->word] / (distance * distance);
      _nearness[last->word] += _importance[occurrence.word] / (distance * distance);
    }
    last = &occurrence;
  }
}

float ProximityScorer::score(std::uint32_t document, const Occurrences& occurrences) {
  const std::uint32_t length = _index.documents().length(document);
  if (length > longestTextForProximity) return 0;
  measureNearness(occurrences);
  const float norm = _ranker.textNorm(length);
  float sum = 0;
  for (std::size_t i = 0; i < _words.size(); ++i) {
    sum += _words[i].weight * std::min(1.0F, _importance[i]) * _nearness[i] / (_nearness[i] + norm);
  }
  return _ranker.settings.proximityWeight * (_ranker.settings.textK1 + 1) * sum;
}

}  // namespace quorvex::textsearch
