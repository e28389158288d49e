#include "fulltext/searching/stem_beginnings.h"

#include <algorithm>
#include <array>

#include "common/unicode.h"

namespace quorvex::textsearch {

namespace {

/// What a stemmer changes in words ahead of their endings.
struct StemRules {
  std::string_view language;
  /// Each a stem letter followed by the word letters that it may replace.
  std::array<std::string_view, 6> letters;
};

// Languages whose Snowball stemmers remove or change endings and, ahead of them, at most replace
// single letters. The missing ones also remove prefixes or change the script. Tested on at least
// ten thousand words of each language; the only misses are word fragments such as "lla" in Finnish.
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

/// Returns the letters that `letter` of a stem may have replaced.
std::string_view originsOf(const StemRules& rules, std::string_view letter) {
  for (std::string_view letters : rules.letters) {
    if (!letters.empty() && takeCharacter(letters) == letter) return letters;
  }
  return {};
}

/// Returns the part of a stem before the next letter that may have replaced others.
std::string_view beforeOrigins(const StemRules& rules, std::string_view part) {
  std::string_view rest = part;
  while (!rest.empty()) {
    std::string_view next = rest;
    if (!originsOf(rules, takeCharacter(next)).empty()) break;
    rest = next;
  }
  return part.substr(0, part.size() - rest.size());
}

/// Stemmers change at most two letters of an ending: "ties" and "tying" have the stem "tie".
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

/// Returns null for a language without rules.
const StemRules* rulesOf(std::string_view language) {
  const auto* const rules = std::ranges::find(stemRules, language, &StemRules::language);
  return rules == stemRules.end() ? nullptr : rules;
}

}  // namespace

std::vector<std::string> beginningsOfStem(std::string_view language, std::string_view stem) {
  const StemRules* const rules = rulesOf(language);
  if (rules == nullptr) return {};
  const std::string_view kept = withoutEnding(stem);
  std::vector<std::string> beginnings = {std::string(kept)};
  // One per letter that may be a word's first change; letters after it may have changed too.
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

bool beginningsAreKnown(std::string_view language, const IndexReader& index, Stemmer& stemmer) {
  constexpr std::uint32_t samples = 64;
  if (rulesOf(language) == nullptr) return false;
  const auto isKnown = [&](std::string_view term) {
    const std::string_view stem = stemmer.stem(term);
    if (term.starts_with(withoutEnding(stem))) return true;
    const auto begins = [&](const std::string& text) { return term.starts_with(text); };
    return std::ranges::any_of(beginningsOfStem(language, stem), begins);
  };
  const TermDictionary& terms = index.terms();
  const std::uint32_t step = terms.groupCount() / samples + 1;
  for (std::uint32_t group = 0; group < terms.groupCount(); group += step) {
    if (!isKnown(terms.firstTerm(group))) return false;
  }
  if (terms.groupCount() >= samples) return true;
  // Few groups, so a walk over all of them is short.
  const std::uint32_t every = std::max(1U, terms.size() / samples);
  for (TermDictionary::Cursor cursor(terms, 0); cursor.next();) {
    if (cursor.id() % every == 0 && !isKnown(cursor.term())) return false;
  }
  return true;
}

}  // namespace quorvex::textsearch
