#include "fulltext/searching/word_terms.h"

#include <algorithm>
#include <optional>

#include "fulltext/searching/stem_beginnings.h"

namespace quorvex::textsearch {

template <typename Accept>
void TermFinder::addBeginningWith(std::string_view prefix, WordTerms& found, Accept accept) const {
  TermDictionary::Cursor cursor(_index.terms(), 0);
  for (bool more = cursor.seek(prefix); more && cursor.term().starts_with(prefix);
       more = cursor.next()) {
    if (accept(cursor.term())) found.inTexts.push_back({cursor.entry()});
  }
  TermDictionary::Cursor title(_titles.terms(), 0);
  for (bool more = title.seek(prefix); more && title.term().starts_with(prefix);
       more = title.next()) {
    if (accept(title.term())) found.inTitles.push_back({title.id()});
  }
}

void TermFinder::addWithStem(std::string_view stem, const StemTable& table, Stemmer& stemmer,
                             WordTerms& found) const {
  table.forEachInTexts(stem, [&](std::uint32_t id) {
    const std::optional<std::string> term = _index.terms().term(id);
    if (!term || stemmer.stem(*term) != stem) return;
    if (const std::optional<TermEntry> entry = _index.terms().find(*term)) {
      found.inTexts.push_back({*entry});
    }
  });
  table.forEachInTitles(stem, [&](std::uint32_t term) {
    if (stemmer.stem(_titles.term(term)) == stem) found.inTitles.push_back({term});
  });
}

const StemTable* TermFinder::stemTable(std::string_view language, Stemmer& stemmer) const {
  const std::lock_guard lock(_mutex);
  auto known = _stemTables.find(language);
  if (known == _stemTables.end()) {
    std::unique_ptr<const StemTable> table;
    if (!beginningsAreKnown(language, _index, stemmer)) {
      table = std::make_unique<const StemTable>(_index, _titles, stemmer);
    }
    known = _stemTables.emplace(language, std::move(table)).first;
  }
  return known->second.get();
}

void TermFinder::addForms(WordTerms& found) const {
  for (const TextTerm& term : found.inTexts) {
    if (std::optional<std::string> form = _index.terms().term(term.entry.id)) {
      found.forms.push_back(*std::move(form));
    }
  }
  for (const TitleTerm& title : found.inTitles)
    found.forms.push_back(_titles.term(title.term));
  std::ranges::sort(found.forms);
  found.forms.erase(std::unique(found.forms.begin(), found.forms.end()), found.forms.end());
}

WordTerms TermFinder::exactly(std::string_view word) const {
  WordTerms found;
  if (const std::optional<TermEntry> entry = _index.terms().find(word)) {
    found.inTexts.push_back({*entry});
  }
  if (const std::optional<std::uint32_t> title = _titles.find(word)) {
    found.inTitles.push_back({*title});
  }
  addForms(found);
  return found;
}

WordTerms TermFinder::beginningWith(std::string_view prefix) const {
  WordTerms found;
  addBeginningWith(prefix, found, [](std::string_view) { return true; });
  const auto keepLargest = [](auto& terms, auto documentCount) {
    if (terms.size() <= maximumTermsOfPrefix) return;
    std::ranges::nth_element(terms, terms.begin() + maximumTermsOfPrefix, std::ranges::greater(),
                             documentCount);
    terms.resize(maximumTermsOfPrefix);
  };
  keepLargest(found.inTexts, [](const TextTerm& term) { return term.entry.documentCount; });
  keepLargest(found.inTitles,
              [&](const TitleTerm& title) { return _titles.titleCount(title.term); });
  addForms(found);
  return found;
}

WordTerms TermFinder::inflectionsOf(std::string_view word, std::string_view language,
                                    Stemmer& stemmer) const {
  if (!stemmer) return exactly(word);
  const std::string stem(stemmer.stem(word));
  WordTerms found;
  if (const StemTable* table = stemTable(language, stemmer)) {
    addWithStem(stem, *table, stemmer, found);
  } else {
    for (const std::string& beginning : beginningsOfStem(language, stem)) {
      addBeginningWith(beginning, found,
                       [&](std::string_view term) { return stemmer.stem(term) == stem; });
    }
  }
  addForms(found);
  return found;
}

}  // namespace quorvex::textsearch
