#include "fulltext/searching/compound_words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

#include "common/unicode.h"
#include "text/identifiers.h"

namespace quorvex::textsearch {

namespace {

constexpr std::size_t fewestLetters = 4;  ///< of a part
/// Of a part that one document has. A shorter one may be a piece of a word.
constexpr std::size_t fewestLettersOfRare = 6;
/// Of a part that is known by another form only: more forms than words are alike.
constexpr std::size_t fewestLettersOfForm = 5;
constexpr std::size_t fewestLettersOfLastForm = 6;
/// Of the rest beside a known word that stands nowhere else. Shorter ones are mostly prefixes.
constexpr std::size_t fewestLettersUnknown = 7;
constexpr std::size_t mostLetters = 64;
constexpr std::size_t mostParts = 4;

struct Rules {
  std::string_view language;
  std::span<const std::string_view> links;  ///< what may stand between two parts
  /// Begin words that are no compounds: "unter" in "unterscheiden".
  std::span<const std::string_view> particles;
  /// Stems of what looks like a last word and is an ending: "enden" in "passenden".
  std::span<const std::string_view> endings;
};

using Text = std::string_view;
constexpr Text germanLinks[] = {"s", "es", "n", "en", "ns", "er", "e"};
constexpr Text germanParticles[] = {
    "unter",  "über",   "wieder", "nach",     "hinter", "gegen",   "wider",    "durch", "hindurch",
    "hinzu",  "zurück", "herauf", "zusammen", "heraus", "hinaus",  "herunter", "voran", "voraus",
    "weiter", "inter",  "ohne",   "nicht",    "fest",   "fort",    "voll",     "ander", "anderer",
    "statt",  "einzu",  "auszu",  "aufzu",    "anzu",   "zwischen"};
constexpr Text germanEndings[] = {"end", "bar", "los", "haft", "der", "abl", "ment", "less"};
constexpr Text dutchLinks[] = {"s", "en", "e"};
constexpr Text dutchParticles[] = {"over",  "onder", "door", "tegen", "achter", "weer",
                                   "terug", "samen", "voor", "mede",  "niet"};
constexpr Text dutchEndings[] = {"end", "heid", "abl", "ment", "less"};
constexpr Text scandinavianLinks[] = {"s", "e"};
constexpr Text scandinavianParticles[] = {"över",  "under",   "efter",  "genom", "mellan", "over",
                                          "etter", "gjennom", "mellom", "imod",  "igen",   "utan",
                                          "uten",  "uden",    "fram",   "frem",  "till"};
constexpr Text scandinavianEndings[] = {"and", "end", "het", "abl", "ment", "less"};
constexpr Rules rules[] = {{"de", germanLinks, germanParticles, germanEndings},
                           {"nl", dutchLinks, dutchParticles, dutchEndings},
                           {"da", scandinavianLinks, scandinavianParticles, scandinavianEndings},
                           {"nb", scandinavianLinks, scandinavianParticles, scandinavianEndings},
                           {"nn", scandinavianLinks, scandinavianParticles, scandinavianEndings},
                           {"no", scandinavianLinks, scandinavianParticles, scandinavianEndings},
                           {"sv", scandinavianLinks, scandinavianParticles, scandinavianEndings},
                           {"fi", {}, {}, {}},
                           {"hu", {}, {}, {}}};

bool isOneOf(std::span<const std::string_view> words, std::string_view word) {
  return std::ranges::find(words, word) != words.end();
}

const Rules* rulesOf(std::string_view language) {
  const auto* const found = std::ranges::find(rules, language, &Rules::language);
  return found == std::end(rules) ? nullptr : found;
}

bool hasOnlyLetters(std::string_view text) {
  return std::ranges::all_of(text, isLetter);
}

/// The offsets at which characters begin, and the end.
std::vector<std::size_t> offsetsIn(std::string_view text) {
  std::vector<std::size_t> offsets = {0};
  for (std::size_t position = 0; position < text.size(); offsets.push_back(position))
    nextCharacter(text, position);
  return offsets;
}

bool hasLetters(std::string_view word, std::size_t fewest) {
  // A word has no more letters than bytes.
  return word.size() >= fewest && characterCount(word) >= fewest;
}

}  // namespace

bool CompoundWords::isFor(std::string_view language) {
  return rulesOf(language) != nullptr;
}

CompoundWords::CompoundWords(const IndexReader& index, const TitleIndex& titles,
                             std::string_view language, Stemmer& stemmer,
                             DocumentsWithForms documentsWithForms)
    : _index(index),
      _titles(titles),
      _stemmer(stemmer),
      _documentsWithForms(std::move(documentsWithForms)) {
  if (const Rules* const found = rulesOf(language)) {
    _links = found->links;
    _particles = found->particles;
    _endings = found->endings;
  }
}

std::size_t CompoundWords::documentsWith(std::string_view term) const {
  const std::optional<TermEntry> entry = _index.terms().find(term);
  const std::size_t documents = entry ? entry->documentCount : 0;
  const std::optional<std::uint32_t> title = _titles.find(term);
  return title ? std::max(documents, _titles.titleCount(*title)) : documents;
}

/// The known word that a part of a compound is, with or without its linking element; null if there
/// is none.
std::optional<CompoundWords::Part> CompoundWords::partIn(std::string_view text, bool isLast) const {
  if (isLast ? isOneOf(_endings, _stemmer.stem(text)) : isOneOf(_particles, text))
    return std::nullopt;
  std::vector<std::string_view> words = {text};
  if (!isLast) {
    for (const std::string_view link : _links) {
      if (text.ends_with(link)) words.push_back(text.substr(0, text.size() - link.size()));
    }
  }
  for (const std::string_view word : words) {
    if (!hasLetters(word, fewestLetters)) continue;
    const std::size_t documents = documentsWith(word);
    if (documents >= (hasLetters(word, fewestLettersOfRare) ? 1 : 2))
      return Part{word, documents, false};
  }
  if (!_documentsWithForms) return std::nullopt;
  for (const std::string_view word : words) {
    if (!hasLetters(word, isLast ? fewestLettersOfLastForm : fewestLettersOfForm) ||
        !hasLetters(_stemmer.stem(word), fewestLetters)) {
      continue;
    }
    if (const std::size_t documents = _documentsWithForms(word)) return Part{word, documents, true};
  }
  return std::nullopt;
}

std::vector<std::string> CompoundWords::partsOf(std::string_view word) const {
  if (word.size() > mostLetters * 4 || !hasOnlyLetters(word)) return {};
  const std::vector<std::size_t> offsets = offsetsIn(word);
  const std::size_t letters = offsets.size() - 1;
  if (letters < 2 * fewestLetters || letters > mostLetters) return {};
  for (const std::string_view particle : _particles) {
    if (word.starts_with(particle) && partIn(word.substr(particle.size()), true)) return {};
  }

  /// The best way to make the letters up to some place of a number of parts.
  struct Way {
    double frequency = -1;  ///< the sum of logarithms; less than 0 if there is no way
    bool hasForm = false;
    std::size_t begin = 0;  ///< of the last part
    std::string_view part;
  };
  std::vector<std::array<Way, mostParts + 1>> ways(letters + 1);
  ways[0][0].frequency = 0;
  for (std::size_t begin = 0; begin + fewestLetters <= letters; ++begin) {
    const auto isReached = [](const Way& way) { return way.frequency >= 0; };
    if (std::none_of(ways[begin].begin(), ways[begin].end() - 1, isReached)) continue;
    for (std::size_t end = begin + fewestLetters; end <= letters; ++end) {
      const std::size_t left = letters - end;
      if ((left > 0 && left < fewestLetters) || (begin == 0 && left == 0)) continue;
      const auto text = word.substr(offsets[begin], offsets[end] - offsets[begin]);
      const std::optional<Part> part = partIn(text, left == 0);
      if (!part) continue;
      for (std::size_t count = 0; count < mostParts; ++count) {
        const Way& before = ways[begin][count];
        // Where two parts are known by other forms only, they are mostly no words at all.
        if (!isReached(before) || (before.hasForm && part->isForm)) continue;
        Way& way = ways[end][count + 1];
        const double frequency = before.frequency + std::log(static_cast<double>(part->documents));
        if (frequency > way.frequency)
          way = {frequency, before.hasForm || part->isForm, begin, part->word};
      }
    }
  }
  for (std::size_t count = 2; count <= mostParts; ++count) {
    if (ways[letters][count].frequency < 0) continue;
    std::vector<std::string> parts(count);
    std::size_t end = letters;
    for (std::size_t number = count; number > 0; --number) {
      const Way& way = ways[end][number];
      parts[number - 1] = way.part;
      end = way.begin;
    }
    return parts;
  }
  return {};
}

/// Whether a compound ends with a form of a word. `common`: the beginning of its forms.
bool CompoundWords::isHeadOf(std::string_view term, std::string_view word, std::string_view common,
                             std::string_view stem) const {
  const std::size_t at = term.rfind(common);
  if (at == term.npos || at == 0) return false;
  const std::string_view head = term.substr(at);
  // Linking elements are endings too, and stemmers take some words for inflected: "system".
  const bool hasEnding =
      head.starts_with(word) && (head == word || isOneOf(_links, head.substr(word.size())));
  if (!hasEnding && _stemmer.stem(head) != stem) return false;
  const std::string_view rest = term.substr(0, at);
  return hasOnlyLetters(rest) && !isOneOf(_particles, rest) &&
         (hasLetters(rest, fewestLettersUnknown) || partIn(rest, false));
}

/// Whether a compound begins with a word or its stem, before a known word: what stands there is
/// often only an ending.
bool CompoundWords::isModifierOf(std::string_view term, std::string_view begin) const {
  if (!hasLetters(begin, fewestLetters) || !term.starts_with(begin)) return false;
  const std::string_view rest = term.substr(begin.size());
  if (!hasOnlyLetters(rest)) return false;
  if (partIn(rest, true)) return true;
  return std::ranges::any_of(_links, [&](std::string_view link) {
    return rest.starts_with(link) && partIn(rest.substr(link.size()), true);
  });
}

std::vector<std::string> CompoundWords::compoundsWith(std::string_view word,
                                                      std::size_t count) const {
  constexpr std::size_t mostExamined = 512;
  if (!hasOnlyLetters(word) || !hasLetters(word, fewestLetters) || word.size() > maximumTermSize) {
    return {};
  }
  const std::string stem(_stemmer.stem(word));
  const std::string_view common = word.starts_with(stem) ? std::string_view(stem) : word;
  std::vector<std::pair<std::size_t, std::string>> candidates;
  const auto offer = [&](std::string_view term, std::size_t documents) {
    if (term.size() >= word.size() + fewestLetters && term.find(common) != term.npos)
      candidates.emplace_back(documents, term);
  };
  for (TermDictionary::Cursor cursor(_index.terms(), 0); cursor.next();)
    offer(cursor.term(), cursor.entry().documentCount);
  for (TermDictionary::Cursor title(_titles.terms(), 0); title.next();)
    offer(title.term(), title.entry().documentCount);
  std::ranges::sort(candidates, [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  candidates.resize(std::min(candidates.size(), mostExamined));

  std::vector<std::string> compounds;
  for (auto& [documents, term] : candidates) {
    if (compounds.size() == count) break;
    if (std::ranges::find(compounds, term) != compounds.end()) continue;
    if (isHeadOf(term, word, common, stem) || isModifierOf(term, word) ||
        isModifierOf(term, common))
      compounds.push_back(std::move(term));
  }
  return compounds;
}

}  // namespace quorvex::textsearch
