#include "fulltext/searching/word_lookup.h"

#include <algorithm>

#include "common/unicode.h"
#include "fulltext/searching/word_beginnings.h"
#include "text/operators.h"
#include "text/word_key.h"

namespace quorvex::textsearch {

namespace {

// How surely terms stand for a word that the index has itself, too. The last part of a name says
// what it is, "gather" in "asyncio.gather"; parts before it say where it belongs.
constexpr float otherSpelling = 0.8F;
constexpr float lastPart = 0.3F;
constexpr float innerPart = 0.2F;
constexpr float compound = 0.4F;

// Of what a beginning may become, beside the word that it is already.
constexpr float completion = 0.5F;
constexpr float inflectionOfBeginning = 0.7F;

/// Counts an operator in a text, not where it is part of a longer one. Most texts lack its signs.
std::uint32_t countIn(std::string_view text, std::string_view wanted) {
  if (text.find(wanted) == text.npos) return 0;
  std::uint32_t count = 0;
  for (std::size_t position = 0;;) {
    const std::string_view found = nextOperator(text, position, text.size());
    if (found.empty()) return count;
    count += found == wanted ? 1U : 0U;
  }
}

}  // namespace

WordLookup::Terms WordLookup::remembered(std::string key,
                                         const std::function<Terms()>& make) const {
  constexpr std::size_t mostRemembered = 4096;
  {
    const std::lock_guard lock(_mutex);
    const auto known = _known.find(key);
    if (known != _known.end()) return known->second;
  }
  Terms terms = make();
  const std::lock_guard lock(_mutex);
  if (_known.size() >= mostRemembered) _known.clear();
  _known.emplace(std::move(key), terms);
  return terms;
}

std::string WordLookup::wordKey(Matching matching, std::string_view word) {
  return std::string(1, static_cast<char>('0' + static_cast<int>(matching))).append(word);
}

WordLookup::Terms WordLookup::find(std::string_view word, Matching matching,
                                   std::string_view language, Stemmer& stemmer) const {
  std::string wordAndMatching = wordKey(matching, word);
  return remembered(std::string(language).append("\n").append(wordAndMatching), [&] {
    WordTerms terms = make(word, matching, language, stemmer);
    terms.word = std::move(wordAndMatching);
    return std::make_shared<const WordTerms>(std::move(terms));
  });
}

WordLookup::Terms WordLookup::findOperator(std::string_view text) const {
  for (; !text.empty(); text.remove_suffix(1)) {
    const std::optional<TermEntry> entry = _index.operators().find(text);
    if (!entry) continue;
    return remembered(std::string("operator\n").append(text),
                      [&] { return makeOperator(text, *entry); });
  }
  return nullptr;
}

WordLookup::Terms WordLookup::makeOperator(std::string_view text, const TermEntry& entry) const {
  auto terms = std::make_shared<WordTerms>();
  terms->word = std::string("operator\n").append(text);
  terms->operators.push_back({entry});
  const DocumentTable& documents = _index.documents();
  for (std::uint32_t document = 0; document < documents.size(); ++document) {
    if (documents.length(document) == 0) continue;
    const std::uint32_t count = countIn(_titles.title(document), text);
    if (count > 0) terms->operatorTitles.push_back({document, count});
  }
  return terms;
}

WordTerms WordLookup::make(std::string_view word, Matching matching, std::string_view language,
                           Stemmer& stemmer) const {
  if (matching == Matching::exactly) return _finder.exactly(word);
  if (matching == Matching::mistypedBeginning) {
    WordTerms mistyped;
    for (const std::string& beginning : WordBeginnings(_index.terms()).mistyped(word))
      addBeginningWith(beginning, completion, mistyped);
    return mistyped;
  }
  WordTerms terms = matching == Matching::beginning
                        ? beginningWith(word, language, stemmer)
                        : _finder.inflectionsOf(word, language, stemmer);
  const bool isKnown = !terms.empty();
  for (const std::string& term : _keys.likeWord(word))
    add(term, isKnown ? otherSpelling : 1, terms);
  for (const TermKeys::JoinedTerm& joined : _keys.withPart(word))
    add(joined.term, joined.end == joined.term.size() ? lastPart : innerPart, terms);
  if (CompoundWords::isFor(language)) {
    for (const std::string& term : compounds(language, stemmer).compoundsWith(word))
      add(term, compound, terms);
  }
  return terms;
}

void WordLookup::addBeginningWith(std::string_view beginning, float weight,
                                  WordTerms& terms) const {
  const WordTerms found = _finder.beginningWith(beginning);
  for (const std::string& term : found.forms)
    add(term, term == beginning ? 1 : weight, terms);
}

WordTerms WordLookup::beginningWith(std::string_view word, std::string_view language,
                                    Stemmer& stemmer) const {
  constexpr std::size_t fewestUnmarked = 3;
  const WordTerms inflections = _finder.inflectionsOf(word, language, stemmer);
  const bool isWord = std::ranges::binary_search(inflections.forms, word);
  WordTerms terms = isWord ? inflections : WordTerms();
  addBeginningWith(word, isWord ? completion : 1, terms);
  for (const std::string& form : inflections.forms)
    add(form, inflectionOfBeginning, terms);
  if (characterCount(word) < fewestUnmarked) return terms;
  for (const std::string& beginning : WordBeginnings(_index.terms()).unmarked(word))
    addBeginningWith(beginning, completion, terms);
  return terms;
}

std::string WordLookup::mistypedTerm(std::string_view word) const {
  std::string best;
  std::uint32_t documents = 0;
  for (std::string& term : WordBeginnings(_index.terms()).mistyped(word)) {
    const std::optional<TermEntry> entry = _index.terms().find(term);
    if (!entry || entry->documentCount <= documents) continue;
    documents = entry->documentCount;
    best = std::move(term);
  }
  return best;
}

std::size_t WordLookup::cutOf(std::string_view word, std::string_view language) const {
  constexpr std::size_t fewestBefore = 4;
  constexpr std::size_t fewestBehind = 2;
  if (!CompoundWords::isFor(language)) return 0;
  WordBeginnings beginnings(_index.terms());
  std::size_t cut = 0;
  for (std::size_t at = 0; at < word.size();) {
    nextCharacter(word, at);
    if (characterCount(word.substr(0, at)) < fewestBefore) continue;
    if (characterCount(word.substr(at)) < fewestBehind) break;
    if (_index.terms().find(word.substr(0, at)) && beginnings.has(word.substr(at))) cut = at;
  }
  return cut;
}

std::size_t WordLookup::longestBeginning(std::string_view word) const {
  return WordBeginnings(_index.terms()).longest(word);
}

CompoundWords WordLookup::compounds(std::string_view language, Stemmer& stemmer) const {
  return {_index, _titles, language, stemmer, [this, language, &stemmer](std::string_view word) {
            std::size_t documents = 0;
            for (const TextTerm& term : _finder.inflectionsOf(word, language, stemmer).inTexts)
              documents = std::max<std::size_t>(documents, term.entry.documentCount);
            return documents;
          }};
}

std::vector<std::string> WordLookup::partsOf(std::string_view word, std::string_view language,
                                             Stemmer& stemmer) const {
  std::vector<std::string> parts = partsOfWord(word);
  if (parts.size() < 2) {
    return CompoundWords::isFor(language) ? compounds(language, stemmer).partsOf(caseFolded(word))
                                          : std::vector<std::string>();
  }
  // "l'encre" is about ink, "don't" about nothing.
  const bool isContraction = word.find('\'') != word.npos || word.find("\u2019") != word.npos;
  const std::size_t shortest = isContraction ? 4 : 2;
  std::erase_if(parts, [&](const std::string& part) { return characterCount(part) < shortest; });
  for (std::string& part : parts)
    part = caseFolded(part);
  return parts;
}

std::vector<std::string> WordLookup::joined(std::string_view first, std::string_view second) const {
  const std::string word = std::string(first).append(second);
  std::vector<std::string> terms = _keys.likeWord(word);
  if (!_finder.exactly(word).empty()) terms.push_back(word);
  return terms;
}

WordLookup::Terms WordLookup::with(WordTerms terms, const std::vector<std::string>& others,
                                   float weight) const {
  for (const std::string& other : others)
    add(other, weight, terms);
  return std::make_shared<const WordTerms>(std::move(terms));
}

void WordLookup::add(std::string_view term, float weight, WordTerms& terms) const {
  const auto at = std::lower_bound(terms.forms.begin(), terms.forms.end(), term);
  if (at != terms.forms.end() && *at == term) return;
  WordTerms found = _finder.exactly(term);
  if (found.empty()) return;
  for (TextTerm& inText : found.inTexts) {
    inText.weight = weight;
    terms.inTexts.push_back(inText);
  }
  for (TitleTerm& inTitle : found.inTitles) {
    inTitle.weight = weight;
    terms.inTitles.push_back(inTitle);
  }
  terms.forms.insert(at, std::string(term));
}

}  // namespace quorvex::textsearch
