#include "fulltext/searching/passages.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvex::textsearch {

namespace {

// BM25 for passages; an average one is about a screen of text.
constexpr float passageK1 = 1.2F;
constexpr float passageB = 0.5F;
constexpr float averagePassage = 100;
/// Longer passages count as this long.
constexpr std::uint32_t longestPassage = 400;
/// Passages of fragments that lie close together overlap; those of one document read at most so
/// many occurrences, then only headings and terms count.
constexpr std::size_t mostOverlap = 250'000;

/// A heading or term is about this long, in positions; what it says counts more than text does.
constexpr std::uint32_t headingSize = 8;
constexpr float ownHeadingWeight = 4;
constexpr float upperHeadingWeight = 0.5F;
/// Of the densest stretch of a passage.
constexpr float densityWeight = 1;

/// Positions that a reader takes in at a glance.
constexpr std::uint32_t focusSize = 24;

}  // namespace

PassageFinder::PassageFinder(const Ranker& ranker, const std::vector<RankedWord>& words,
                             const std::vector<WordSequence>& phrases)
    : _words(words), _phrases(phrases) {
  for (const RankedWord& word : words)
    _importance.push_back(word.weight * ranker.importance(*word.terms));
}

std::vector<Passage> PassageFinder::find(const PlacesOfDocument& places,
                                         const Occurrences& occurrences) {
  std::vector<Passage> passages;
  if (occurrences.empty()) return passages;
  weighWords(places, occurrences);
  _overlapLeft = mostOverlap;
  if (places.size() == 0 || occurrences.front().position < places[0].position) {
    passages.push_back(passageAt(places, occurrences, PlacesOfDocument::none));
  }
  for (std::uint32_t place = 0; place < places.size(); ++place) {
    Passage passage = passageAt(places, occurrences, place);
    if (passage.score > 0) passages.push_back(passage);
  }
  std::sort(passages.begin(), passages.end());
  return passages;
}

/// Finds out how many headings and terms have each word under them.
void PassageFinder::weighWords(const PlacesOfDocument& places, const Occurrences& occurrences) {
  std::vector<std::uint32_t> counts(_words.size());
  std::vector<std::uint32_t> lastSeen(_words.size(), UINT32_MAX);
  std::uint32_t section = 0;
  std::uint32_t place = 0;
  for (const Occurrence& occurrence : occurrences) {
    for (; place < places.size() && places[place].position <= occurrence.position; ++place)
      section += places[place].level > 0 ? 1U : 0U;
    if (std::exchange(lastSeen[occurrence.word], section) != section) ++counts[occurrence.word];
  }
  for (; place < places.size(); ++place)
    section += places[place].level > 0 ? 1U : 0U;
  const auto sections = static_cast<float>(section + 1);
  _rarities.clear();
  for (const std::uint32_t count : counts) {
    const float rarity = std::log(1 + sections / static_cast<float>(std::max(1U, count)));
    _rarities.push_back(rarity / std::log(1 + sections));
  }
}

Passage PassageFinder::passageAt(const PlacesOfDocument& places, const Occurrences& occurrences,
                                 std::uint32_t place) {
  const bool isTop = place == PlacesOfDocument::none;
  const std::uint32_t begin = isTop ? 0 : places[place].position;
  std::uint32_t end = !isTop               ? places.end(place)
                      : places.size() == 0 ? UINT32_MAX
                                           : places[0].position;
  // Fragments share the text of their heading. Without limits, many would take quadratic time.
  const bool isFragment = !isTop && places[place].level == 0;
  if (isFragment) end = std::min(end, begin + longestPassage);
  const auto first = std::ranges::lower_bound(occurrences, begin, {}, &Occurrence::position);
  const auto last =
      std::ranges::lower_bound(first, occurrences.cend(), end, {}, &Occurrence::position);
  Passage passage{.place = place, .begin = begin, .end = begin};
  if (first == last) return passage;
  const auto size = static_cast<std::size_t>(last - first);
  if (isFragment && size > _overlapLeft) return passage;
  if (isFragment) _overlapLeft -= size;
  _frequencies.assign(_words.size(), 0);
  const bool hasHeading = !isTop && places[place].level > 0;
  for (auto at = first; at != last; ++at) {
    const bool isInHeading = hasHeading && at->position - begin < headingSize;
    _frequencies[at->word] += at->weight * (isInHeading ? ownHeadingWeight : 1.0F);
  }
  if (!isTop) addHeadings(places, occurrences, place);
  const auto length = static_cast<float>(
      std::min(longestPassage, std::min(end, (last - 1)->position + focusSize) - begin));
  const float norm = passageK1 * (1 - passageB + passageB * length / averagePassage);
  for (std::size_t word = 0; word < _words.size(); ++word) {
    const float frequency = _frequencies[word];
    const float gain = _importance[word] * frequency * (passageK1 + 1) / (frequency + norm);
    passage.score += gain;
    passage.distinction += gain * _rarities[word];
  }
  passage.holdsPhrase = holdPhrase(first, last, passage);
  const float densest = focus(first, last, passage);
  passage.distinction += densityWeight * densest;
  return passage;
}

/// Counts the words in the headings above a place.
void PassageFinder::addHeadings(const PlacesOfDocument& places, const Occurrences& occurrences,
                                std::uint32_t place) {
  for (std::uint32_t above = places.parent(place); above != PlacesOfDocument::none;
       above = places.parent(above)) {
    const std::uint32_t begin = places[above].position;
    const std::uint32_t end = std::min(begin + headingSize, places.end(above));
    for (auto at = std::ranges::lower_bound(occurrences, begin, {}, &Occurrence::position);
         at != occurrences.end() && at->position < end; ++at)
      _frequencies[at->word] += at->weight * upperHeadingWeight;
  }
}

/// Finds the stretch with the most important words. Returns their weight.
float PassageFinder::focus(Iterator begin, Iterator end, Passage& passage) const {
  float best = 0;
  for (auto first = begin; first != end; ++first) {
    float sum = 0;
    std::uint64_t seen = 0;
    auto last = first;
    for (auto at = first; at != end && at->position - first->position < focusSize; ++at) {
      const std::uint64_t bit = std::uint64_t{1} << (at->word % 64);
      // Another word counts much more than one that stands there already.
      constexpr float repetition = 0.1F;
      const float weight = at->weight * _importance[at->word] * _rarities[at->word];
      sum += (seen & bit) == 0 ? weight : repetition * weight;
      seen |= bit;
      last = at;
    }
    if (sum <= best) continue;
    best = sum;
    if (passage.holdsPhrase) continue;
    passage.begin = first->position;
    passage.end = last->position + 1;
  }
  return best;
}

bool PassageFinder::holdPhrase(Iterator begin, Iterator end, Passage& passage) const {
  for (const WordSequence& phrase : _phrases) {
    for (auto first = begin; first != end; ++first) {
      auto at = first;
      std::uint32_t position = first->position;
      const bool holds = std::ranges::all_of(phrase.words, [&](std::size_t word) {
        while (at != end &&
               (at->position < position || (at->position == position && at->word != word)))
          ++at;
        const bool isThere = word == WordSequence::gap || (at != end && at->position == position);
        ++position;
        return isThere;
      });
      if (!holds) continue;
      passage.begin = first->position;
      passage.end = position;
      return true;
    }
  }
  return false;
}

}  // namespace quorvex::textsearch
