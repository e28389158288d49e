#include "fulltext/searching/searched_words.h"

#include <algorithm>
#include <utility>

#include "common/unicode.h"
#include "fulltext/searching/suggestion.h"
#include "text/word_key.h"

namespace quorvex {
namespace textsearch {

namespace {

/// Each walks all terms.
constexpr unsigned mostSuggestions = 3;
/// Of a similar word: up to which it is searched for, and rather than the parts of the unknown one.
constexpr float mostCost = 3;
constexpr float sureCost = 1.5F;

/// The parts of a known word say little more than the word itself.
constexpr float partOfKnown = 0.3F;
/// How surely one word stands for two.
constexpr float joinedNeighbours = 0.9F;

// Of the last word of a query that is being typed: letters that tell as much as a whole word, and
// what is left of the weight of a beginning of words that the index leaves out.
constexpr float completeBeginning = 3;
constexpr float mayBeLeftOut = 0.3F;
/// Signs say a little less than words do.
constexpr float operatorWeight = 0.8F;

}  // namespace

std::string replaced(std::string_view query, const std::vector<Replacement>& replacements) {
  std::string result;
  std::size_t position = 0;
  for (const Replacement& replacement : replacements) {
    result.append(query.substr(position, replacement.begin - position)).append(replacement.text);
    position = replacement.end;
  }
  return result.append(query.substr(position));
}

void WordCollector::collect(const Query& query, std::string_view text, bool mayReplace,
                            const TSCollection* elsewhere) {
  _elsewhere = elsewhere;
  _lookUpsLeft = mayReplace ? mostSuggestions : 0;
  lookUp(query, text);
  joinNeighbours();
  const QueryClause* phrase = nullptr;
  for (const Item& item : _items) {
    const bool isPhrase = item.clause->isPhrase;
    if (isPhrase && std::exchange(phrase, item.clause) != item.clause) {
      _searched.phrases.emplace_back();
    }
    std::size_t number = WordSequence::gap;
    if (item.terms != nullptr && !item.terms->empty()) {
      number = add(item.terms, weightOf(item), item.word->term);
      const bool isWhole = !isPhrase && !item.clause->isPrefix;
      const QueryWord& word = *item.word;
      if (isWhole) addParts(text.substr(word.begin, word.end - word.begin), partOfKnown, number);
    } else if (item.terms != nullptr && item.clause->isPrefix) {
      if (!isPhrase) takeUnknownBeginning(text, item);
    } else if (item.terms != nullptr) {
      takeUnknown(text, item);
    }
    if (isPhrase) _searched.phrases.back().words.push_back(number);
  }
  addOperators(query);
  const bool isEmpty = _searched.words.empty() && phrase == nullptr && !_items.empty();
  if (query.isBeingTyped && isEmpty) addKnownBeginning(_items.back().word->term);
}

void WordCollector::lookUp(const Query& query, std::string_view text) {
  for (const QueryClause& clause : query.clauses) {
    if (clause.isExcluded) continue;
    for (const QueryWord& word : clause.words) {
      const bool isLast = &word == &clause.words.back();
      const Matching matching = clause.isPrefix && isLast ? Matching::beginning
                                : clause.isPhrase         ? Matching::exactly
                                                          : Matching::inflected;
      const bool isGap = word.term.empty();
      _items.push_back({&word, &clause, isGap ? nullptr : find(word.term, matching)});
    }
    if (clause.isPrefix && !clause.isPhrase)
      _items.back().terms = beginningWith(text, _items.back());
  }
}

/// A script without blanks is cut into words that change while one of them is typed, so the last
/// ones are also tried together.
WordLookup::Terms WordCollector::beginningWith(std::string_view text, const Item& last) const {
  std::size_t begin = last.word->begin;
  for (std::size_t i = _items.size() - 1; i > 0 && _items[i - 1].word->end == begin; --i) {
    begin = _items[i - 1].word->begin;
    const std::string together = caseFolded(text.substr(begin, last.word->end - begin));
    WordLookup::Terms terms = find(together, Matching::beginning);
    if (!terms->empty()) return terms;
  }
  return last.terms;
}

/// "data base" is also found as "database", "hash map" as "HashMap".
void WordCollector::joinNeighbours() {
  for (std::size_t i = 0; i + 1 < _items.size(); ++i) {
    Item& first = _items[i];
    Item& second = _items[i + 1];
    if (first.clause->isPhrase || second.clause->isPhrase) continue;
    const std::vector<std::string> terms = _lookup.joined(first.word->term, second.word->term);
    if (terms.empty()) continue;
    for (Item* item : {&first, &second})
      item->terms = _lookup.with(*item->terms, terms, joinedNeighbours);
  }
}

float WordCollector::weightOf(const Item& item) const {
  return item.clause->isPrefix && !item.clause->isPhrase ? weightOfBeginning(item.word->term) : 1;
}

/// The fewer letters have been typed, the less they tell.
float WordCollector::weightOfBeginning(std::string_view beginning) const {
  const auto letters = static_cast<float>(characterCount(beginning));
  const float weight = std::min(1.0F, letters / completeBeginning);
  return _filter.leavesOutBeginningWith(beginning) ? weight * mayBeLeftOut : weight;
}

/// What nothing begins with may be mistyped, joined from words that are known or a compound of
/// them. Otherwise as much of it counts as something begins with, so that one more letter changes
/// nothing.
void WordCollector::takeUnknownBeginning(std::string_view text, const Item& item) {
  if (_elsewhere != nullptr && _elsewhere->words.contains(item.terms->word)) {
    add(item.terms, weightOf(item), item.word->term);
    return;
  }
  const bool mayReplace = _lookUpsLeft > 0;
  if ((mayReplace && addMistyped(item)) || addBeginningOfJoined(text, item)) return;
  const std::size_t before = _searched.words.size();
  takeUnknown(text, item);
  if (_searched.words.size() == before) addKnownBeginning(item.word->term);
}

/// Among other words, a few letters of many say nothing.
void WordCollector::addKnownBeginning(std::string_view word) {
  constexpr std::size_t fewestCharacters = 3;
  const std::string_view known = word.substr(0, _lookup.longestBeginning(word));
  const bool isMost = 2 * known.size() >= word.size() && characterCount(known) >= fewestCharacters;
  if (known.empty() || (!isMost && !_searched.words.empty())) return;
  const WordLookup::Terms terms = find(known, Matching::beginning);
  if (!terms->empty()) add(terms, weightOfBeginning(known), std::string(known));
}

bool WordCollector::addMistyped(const Item& item) {
  constexpr std::size_t fewestCharacters = 4;
  const std::string& word = item.word->term;
  if (characterCount(word) < fewestCharacters) return false;
  const WordLookup::Terms terms = find(word, Matching::mistypedBeginning);
  if (terms->empty()) return false;
  add(terms, weightOf(item), word);
  std::string meant = _lookup.mistypedTerm(word);
  if (meant.empty()) return true;
  _replacements.push_back({item.word->begin, item.word->end, std::move(meant), true});
  return true;
}

bool WordCollector::addBeginningOfJoined(std::string_view text, const Item& item) {
  const QueryWord& word = *item.word;
  std::vector<std::string> parts = partsOfWord(text.substr(word.begin, word.end - word.begin));
  if (parts.size() < 2) {
    const std::size_t cut = _lookup.cutOf(word.term, _language);
    if (cut == 0) return false;
    parts = {word.term.substr(0, cut), word.term.substr(cut)};
  }
  bool found = false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string part = caseFolded(parts[i]);
    const bool isLast = i + 1 == parts.size();
    if (!isLast && _filter.leavesOut(part)) continue;
    const WordLookup::Terms terms = find(part, isLast ? Matching::beginning : Matching::inflected);
    if (terms->empty()) continue;
    add(terms, isLast ? weightOfBeginning(part) : 1, part);
    found = true;
  }
  return found;
}

/// A joined word is rather a mistyped name, if there is one, than its parts.
void WordCollector::takeUnknown(std::string_view text, const Item& item) {
  const QueryWord& word = *item.word;
  const std::string_view typed = text.substr(word.begin, word.end - word.begin);
  if (_elsewhere != nullptr && _elsewhere->words.contains(item.terms->word)) {
    // Pages of this index lack a word of the query.
    if (!item.clause->isPhrase) add(item.terms, 1, word.term);
    return;
  }
  std::optional<SpellingCandidate> similar;
  if (_lookUpsLeft > 0) {
    --_lookUpsLeft;
    std::vector<SpellingCandidate> candidates = similarTerms(_index, _titles, word.term, 1);
    if (!candidates.empty() && candidates.front().cost <= mostCost) {
      similar = std::move(candidates.front());
    }
  }
  const bool isSure = similar && similar->isProminent && similar->cost <= sureCost;
  if (!isSure && !item.clause->isPhrase && addParts(typed, 1, std::nullopt)) return;
  if (!similar) {
    _searched.unknown += item.clause->isPhrase ? 0 : 1;
    return;
  }
  _replacements.push_back({word.begin, word.end, similar->term, !item.clause->isPhrase});
  if (item.clause->isPhrase) return;
  // May be two words, or a name that is put together from known parts.
  for (std::size_t begin = 0; begin < similar->term.size();) {
    const std::size_t end = std::min(similar->term.find(' ', begin), similar->term.size());
    const std::string part = similar->term.substr(begin, end - begin);
    const WordLookup::Terms terms = find(part, Matching::inflected);
    if (terms->empty()) {
      addParts(part, 1, std::nullopt);
    } else {
      addParts(part, partOfKnown, add(terms, 1, part));
    }
    begin = end + 1;
  }
}

/// Adds those parts of a joined word that the index has; false if it has none. `whole`: the number
/// of the word itself, if the index has it.
bool WordCollector::addParts(std::string_view word, float weight,
                             std::optional<std::size_t> whole) {
  if (partsOfWord(word).size() < 2) {
    if (_cutsLeft == 0) return false;
    --_cutsLeft;
  }
  bool found = false;
  for (const std::string& part : _lookup.partsOf(word, _language, _stemmer)) {
    if (_searched.words.size() >= maximumQueryWords) return found;
    if (_filter.leavesOut(part)) continue;
    const WordLookup::Terms terms = find(part, Matching::inflected);
    if (terms->empty()) continue;
    add(terms, weight, part, whole);
    found = true;
  }
  return found;
}

void WordCollector::addOperators(const Query& query) {
  for (const QueryWord& each : query.operators) {
    const WordLookup::Terms terms = _lookup.findOperator(each.term);
    if (terms == nullptr) continue;
    std::vector<RankedWord>& words = _searched.words;
    const bool isKnown = std::ranges::any_of(words, [&](const RankedWord& word) {
      return !word.terms->operators.empty() &&
             word.terms->operators.front().entry.id == terms->operators.front().entry.id;
    });
    if (!isKnown) words.push_back({terms, operatorWeight, each.term});
  }
}

/// Returns the number of the word. Repeated words weigh more.
std::size_t WordCollector::add(const WordLookup::Terms& terms, float weight,
                               const std::string& word, std::optional<std::size_t> partOf) {
  std::vector<RankedWord>& words = _searched.words;
  const auto same = std::ranges::find_if(words, [&](const RankedWord& other) {
    return other.terms->forms == terms->forms &&
           (!terms->empty() || other.terms->word == terms->word);
  });
  if (same == words.end()) {
    words.push_back({terms, weight, word, partOf});
    return words.size() - 1;
  }
  same->weight += weight;
  if (!partOf) same->partOf.reset();
  return static_cast<std::size_t>(same - words.begin());
}

}  // namespace textsearch
}  // namespace quorvex
