#include "fulltext/searching/word_terms.h"

#include <algorithm>
#include <array>
#include <optional>

#include "common/unicode.h"

namespace quorvex::textsearch {

namespace {

/// What a stemmer changes in words before their endings.
struct StemRules {
  std::string_view language;
  /// Each a letter of stems followed by the letters of words that it may stand for.
  std::array<std::string_view, 6> letters;
};

// The languages whose Snowball stemmers take off or change endings, and before them write one
// letter for another at most. Those that are missing here take off beginnings as well, or change
// the script. Tried on ten thousand words and more of each language; all that is missed is
// fragments of words, as "lla" in Finnish.
constexpr std::array<StemRules, 20> stemRules = {{
    {"ca", {"aáà", "eéè", "iíìï", "oóò", "uúü", ".·"}},
    {"da", {}},
    {"de", {"aä", "oö", "uü"}},
    {"en", {"iy"}},
    {"es", {"aá", "eé", "ií", "oó", "uú"}},
    {"eu", {}},
    {"fi", {}},
    {"fr", {"eéèë", "iï"}},
    {"hu", {"aá", "eé"}},
    {"it", {"àá", "èé", "ìí", "òó", "ùú"}},
    {"lt", {}},
    {"nb", {}},
    {"nl", {"aáä", "eéë", "iíï", "oóö", "uúü"}},
    {"nn", {}},
    {"no", {}},
    {"pt", {"eê"}},
    {"ro", {}},
    {"ru", {"её"}},
    {"sv", {}},
    {"tr", {"kğ", "çc", "td", "pb"}},
}};

std::string_view takeCharacter(std::string_view& text) {
  std::size_t size = 0;
  nextCharacter(text, size);
  const std::string_view character = text.substr(0, size);
  text.remove_prefix(size);
  return character;
}

/// The letters that `letter` of a stem may stand for.
std::string_view originsOf(const StemRules& rules, std::string_view letter) {
  for (std::string_view letters : rules.letters) {
    if (!letters.empty() && takeCharacter(letters) == letter) return letters;
  }
  return {};
}

/// The front of a stem's part up to the next letter that may stand for others.
std::string_view beforeOrigins(const StemRules& rules, std::string_view part) {
  std::string_view rest = part;
  while (!rest.empty()) {
    std::string_view next = rest;
    if (!originsOf(rules, takeCharacter(next)).empty()) break;
    rest = next;
  }
  return part.substr(0, part.size() - rest.size());
}

/// Endings are changed by two letters at most: "ties" and "tying" have the stem "tie".
std::string_view withoutEnding(std::string_view stem) {
  constexpr std::size_t changed = 2;
  constexpr std::size_t fewestKept = 2;
  const std::size_t size = characterCount(stem);
  std::size_t end = 0;
  for (std::size_t kept = std::max(fewestKept, size - std::min(size, changed));
       kept > 0 && end < stem.size(); --kept) {
    nextCharacter(stem, end);
  }
  return stem.substr(0, end);
}

}  // namespace

std::vector<std::string> beginningsOfStem(std::string_view language, std::string_view stem) {
  const auto* const rules = std::ranges::find(stemRules, language, &StemRules::language);
  if (rules == stemRules.end()) return {};
  const std::string_view kept = withoutEnding(stem);
  std::vector<std::string> beginnings = {std::string(kept)};
  // By the first letter that a word has changed; behind it, others may be changed as well.
  for (std::string_view rest = kept; !rest.empty();) {
    const std::string_view before = kept.substr(0, kept.size() - rest.size());
    std::string_view origins = originsOf(*rules, takeCharacter(rest));
    const std::string_view fixed = beforeOrigins(*rules, rest);
    while (!origins.empty()) {
      beginnings.push_back(std::string(before).append(takeCharacter(origins)).append(fixed));
    }
  }
  return beginnings;
}

template <typename Accept>
void TermFinder::addBeginningWith(std::string_view prefix, WordTerms& found, Accept accept) const {
  TermDictionary::Cursor cursor(_index.terms(), 0);
  for (bool more = cursor.seek(prefix); more && cursor.term().starts_with(prefix);
       more = cursor.next()) {
    if (accept(cursor.term())) found.inTexts.push_back(cursor.entry());
  }
  const std::vector<std::string>& titles = _titles.terms();
  for (auto term = std::ranges::lower_bound(titles, prefix);
       term != titles.end() && term->starts_with(prefix); ++term) {
    if (accept(*term)) found.inTitles.push_back(static_cast<std::uint32_t>(term - titles.begin()));
  }
}

void TermFinder::addWithStem(std::string_view stem, const StemTable& table, Stemmer& stemmer,
                             WordTerms& found) const {
  table.forEachInTexts(stem, [&](std::uint32_t term) {
    TermDictionary::Cursor cursor(_index.terms(), term);
    while (cursor.next() && cursor.id() < term) {
    }
    if (stemmer.stem(cursor.term()) == stem) found.inTexts.push_back(cursor.entry());
  });
  table.forEachInTitles(stem, [&](std::uint32_t term) {
    if (stemmer.stem(_titles.terms()[term]) == stem) found.inTitles.push_back(term);
  });
}

void TermFinder::addForms(WordTerms& found) const {
  for (const TermEntry& entry : found.inTexts) {
    if (std::optional<std::string> form = _index.terms().term(entry.id)) {
      found.forms.push_back(*std::move(form));
    }
  }
  for (const std::uint32_t term : found.inTitles)
    found.forms.push_back(_titles.terms()[term]);
  std::ranges::sort(found.forms);
  found.forms.erase(std::unique(found.forms.begin(), found.forms.end()), found.forms.end());
}

WordTerms TermFinder::exactly(std::string_view word) const {
  WordTerms found;
  if (const std::optional<TermEntry> entry = _index.terms().find(word)) {
    found.inTexts.push_back(*entry);
  }
  const std::vector<std::string>& titles = _titles.terms();
  const auto title = std::ranges::lower_bound(titles, word);
  if (title != titles.end() && *title == word) {
    found.inTitles.push_back(static_cast<std::uint32_t>(title - titles.begin()));
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
  keepLargest(found.inTexts, &TermEntry::documentCount);
  keepLargest(found.inTitles, [&](std::uint32_t term) { return _titles.postings(term).size(); });
  addForms(found);
  return found;
}

WordTerms TermFinder::inflectionsOf(std::string_view word, std::string_view language,
                                    Stemmer& stemmer) const {
  if (!stemmer) return exactly(word);
  const std::string stem(stemmer.stem(word));
  WordTerms found;
  const std::vector<std::string> beginnings = beginningsOfStem(language, stem);
  for (const std::string& beginning : beginnings) {
    addBeginningWith(beginning, found,
                     [&](std::string_view term) { return stemmer.stem(term) == stem; });
  }
  if (beginnings.empty()) {
    addWithStem(stem, _stems.of(language, _index, _titles, stemmer), stemmer, found);
  }
  addForms(found);
  return found;
}

}  // namespace quorvex::textsearch
