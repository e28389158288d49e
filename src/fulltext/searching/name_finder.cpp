#include "fulltext/searching/name_finder.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "common/unicode.h"
#include "fulltext/searching/document_places.h"
#include "fulltext/searching/name_text.h"
#include "platform/textsift.h"
#include "text/identifiers.h"

namespace quorvex::textsearch {

namespace {

/// A longer query is no name.
constexpr std::size_t longestQuery = 200;
constexpr std::size_t mostQueryWords = 6;
/// Places of one name in a list of names.
constexpr std::size_t mostPlacesOfName = 3;

// How well a name answers a query. Other case costs `foldedCost`; whatever is below
// NameFinder::certain is only used where the ranking agrees.
constexpr float wholeTitle = 1.01F;
constexpr float wholeDefinition = 1;
constexpr float titleByLastParts = 0.96F;
constexpr float definitionByLastParts = 0.95F;
// Then what is qualified by its surroundings: Surroundings::qualityOf().
constexpr float amongWords = 0.9F;
constexpr float beginningOfTitle = 0.87F;
constexpr float wholeHeading = 0.85F;
constexpr float plainWord = 0.7F;  ///< a heading of one word
constexpr float foldedCost = 0.03F;
constexpr float mentionCost = 0.1F;  ///< of a term that may be no definition

bool isTermOnly(const NameEntry& entry) {
  return entry.kind == static_cast<std::uint8_t>(TSNameKind::term);
}
bool isHeading(const NameEntry& entry) {
  return entry.kind == static_cast<std::uint8_t>(TSNameKind::heading);
}

/// `matches`: best first. Where a page has the name in its title and in a place, the page comes by
/// its title, and the place is that of the name.
std::vector<NameMatch> bestOfEachPage(const std::vector<NameMatch>& matches) {
  std::vector<NameMatch> best;
  std::unordered_map<std::uint32_t, std::size_t> numbers;
  for (const NameMatch& match : matches) {
    const auto [number, isNew] = numbers.emplace(match.at.document, best.size());
    if (isNew) {
      best.push_back(match);
    } else if (best[number->second].at.place == NameFinder::pageItself &&
               match.quality >= amongWords) {
      best[number->second].at.place = match.at.place;
    }
  }
  return best;
}

}  // namespace

/// What a query asks for.
struct NameFinder::Wanted {
  explicit Wanted(std::string_view typed)
      : text(typed),
        folded(caseFolded(typed)),
        last(std::string_view(folded).substr(qualifierSize(folded))),
        qualifier(std::string_view(folded).substr(0, folded.size() - last.size())),
        isCode(looksLikeCode(typed.substr(qualifierSize(typed)))),
        isOneWord(typed.find(' ') == typed.npos) {}
  Wanted(const Wanted&) = delete;
  Wanted& operator=(const Wanted&) = delete;

  /// What a name, or the last part of one, costs whose case differs.
  float costOf(std::string_view name) const {
    return endsWithParts(name, text.substr(qualifierSize(text))) ? 0 : foldedCost;
  }

  std::string_view text;
  std::string folded;
  std::string_view last;
  std::string_view qualifier;
  bool isCode;
  bool isOneWord;
};

/// A page deep in the book, or with a long path, is less likely meant than another.
float NameFinder::remoteness(std::uint32_t document) const {
  constexpr float perFolder = 0.001F;
  constexpr float perByte = 0.00001F;
  const std::string url = _index.url(document).value_or(std::string());
  const auto folders = static_cast<float>(std::ranges::count(url, '/'));
  return perFolder * std::min(10.0F, folders) +
         perByte * static_cast<float>(std::min<std::size_t>(200, url.size()));
}

/// What qualifies a name in its fragment counts like what qualifies it in the name itself, and the
/// less of it the plainer: "#print" comes before "#fixer-print". Looks at the best matches only,
/// because it takes reading their pages' places.
void NameFinder::preferPlain(const Wanted& wanted, Looks& looks, std::vector<NameMatch>& matches) {
  constexpr std::size_t mostRead = 200;
  constexpr float costPerByte = 0.001F;
  constexpr std::size_t mostBytes = 25;
  const auto end =
      matches.begin() + static_cast<std::ptrdiff_t>(std::min(mostRead, matches.size()));
  std::for_each(matches.begin(), end, [&](NameMatch& match) {
    const bool isDefinition = match.quality >= amongWords && match.at.place != pageItself;
    if (!isDefinition) return;
    const PlacesOfDocument* places = looks.places(match.at.document);
    if (places == nullptr || match.at.place >= places->size()) return;
    const std::string_view fragment = (*places)[match.at.place].fragment;
    const std::size_t name = std::max(match.name.size(), wanted.text.size()) - wanted.text.size();
    const bool hasName = fragment.find(nameInFragment) != fragment.npos;
    const std::size_t extra = name + (hasName ? fragment.size() - 1 : mostBytes / 2);
    const bool isQualified = hasName && name == 0 && fragment.find('.') < fragment.size();
    if (isQualified) match.quality -= wholeDefinition - definitionByLastParts;
    match.quality -= costPerByte * static_cast<float>(std::min(extra, mostBytes));
  });
  std::sort(matches.begin(), end);
}

void NameFinder::addDefinitions(const Wanted& wanted, Looks& looks,
                                std::vector<NameMatch>& matches) const {
  const std::vector<std::string_view> qualifiers = wordsOf(wanted.qualifier, nameSeparators);
  NameTable::Cursor name(_index.names());
  for (bool more = name.seek(wanted.last); more && name.folded() == wanted.last;
       more = name.next()) {
    const NameEntry& entry = name.entry();
    const std::string folded = caseFolded(entry.name);
    const float cost = wanted.costOf(entry.last());
    float quality = 0;
    if (folded == wanted.folded) {
      quality = !isHeading(entry)                    ? wholeDefinition
                : wanted.isCode || !wanted.isOneWord ? wholeHeading
                                                     : plainWord;
    } else if (endsWithParts(folded, wanted.folded)) {
      // Of a heading with several words, one alone says nothing unless it is a name.
      if (isHeading(entry) && !wanted.isCode) continue;
      quality = isHeading(entry) ? wholeHeading : definitionByLastParts;
    }
    for (const NamePlace& at : entry.places) {
      float here = quality;
      if (here == 0) {
        // What qualifies the name itself must not contradict the query.
        if (qualifiers.empty() || isHeading(entry) || !endsWithParts(wanted.folded, folded) ||
            !looks.take())
          break;
        Surroundings around(_index, _titles, looks, at);
        here = endsWithParts(around.fragment(folded), wanted.folded)
                   ? definitionByLastParts
                   : around.qualityOf(qualifiers, folded);
        if (here == 0) continue;
      }
      if (isTermOnly(entry)) here -= mentionCost;
      matches.push_back({at, here - cost, entry.name});
    }
  }
}

void NameFinder::addTitles(const Wanted& wanted, Tokenizer& tokenizer,
                           std::vector<NameMatch>& matches) const {
  // The title with the rarest word.
  std::optional<std::uint32_t> rarest;
  tokenizer.reset(wanted.text);
  for (Token token; tokenizer.next(token);) {
    const std::optional<std::uint32_t> term = _titles.find(token.term);
    if (!term) continue;
    if (!rarest || _titles.titleCount(*term) < _titles.titleCount(*rarest)) rarest = term;
  }
  if (!rarest) return;
  std::vector<NameMatch> beginnings;
  std::size_t looksLeft = mostSurroundings;
  for (const TitleIndex::Posting& posting : _titles.postings(*rarest)) {
    if (looksLeft-- == 0) break;
    const std::string name = nameInTitle(_titles.title(posting.document));
    const std::string folded = caseFolded(name);
    const NamePlace at{posting.document, pageItself};
    if (folded == wanted.folded) {
      matches.push_back({at, wholeTitle - (name == wanted.text ? 0 : foldedCost), name});
    } else if (endsWithParts(folded, wanted.folded) && folded.find(' ') == folded.npos) {
      matches.push_back({at, titleByLastParts - wanted.costOf(name), name});
    } else if (wanted.isOneWord && name.starts_with(wanted.text) &&
               name.size() > wanted.text.size() && name[wanted.text.size()] == ' ') {
      beginnings.push_back({at, beginningOfTitle, name});
    }
  }
  // A word that begins many titles is a word of the book's language.
  constexpr std::size_t fewBeginnings = 4;
  if (beginnings.size() <= fewBeginnings) {
    matches.insert(matches.end(), beginnings.begin(), beginnings.end());
  }
}

/// Finds a name among words that stand around its place: "pg_dump --clean".
void NameFinder::addByWords(std::string_view query, Looks& looks,
                            std::vector<NameMatch>& matches) const {
  const std::vector<std::string_view> words = wordsOf(query, " ");
  if (words.size() < 2 || words.size() > mostQueryWords) return;
  for (const std::string_view word : words) {
    if (!looksLikeCode(word)) continue;
    const Wanted wanted(withoutCall(word));
    std::vector<std::string> others;
    for (const std::string_view other : words) {
      if (other.data() != word.data()) others.push_back(caseFolded(other));
    }
    const std::vector<std::string_view> rest(others.begin(), others.end());
    std::vector<NameMatch> found;
    addDefinitions(wanted, looks, found);
    for (NameMatch& match : found) {
      if (!looks.take()) break;
      const float around =
          Surroundings(_index, _titles, looks, match.at).qualityOf(rest, caseFolded(match.name));
      if (around == 0) continue;
      match.quality = amongWords + around - qualifiedByTitle;
      matches.push_back(std::move(match));
    }
  }
}

std::vector<NameMatch> NameFinder::find(std::string_view query, Tokenizer& tokenizer,
                                        const LookLimits& limits) const {
  query = withoutCall(withoutQuotes(trimWhitespaceAndNewlines(query)));
  std::vector<NameMatch> matches;
  if (query.empty() || query.size() > longestQuery || !isValidUtf8(query)) return matches;
  if (wordsOf(query, " ").size() > mostQueryWords) return matches;
  const Wanted wanted(query);
  if (wanted.last.empty()) return matches;
  Looks looks(_index, limits);
  addDefinitions(wanted, looks, matches);
  addTitles(wanted, tokenizer, matches);
  const auto isCertain = [](const NameMatch& match) { return match.quality >= certain; };
  if (std::ranges::none_of(matches, isCertain)) addByWords(query, looks, matches);
  for (NameMatch& match : matches)
    match.quality -= remoteness(match.at.document);
  std::sort(matches.begin(), matches.end());
  preferPlain(wanted, looks, matches);
  return bestOfEachPage(matches);
}

void NameFinder::addBeginning(const NameEntry& entry, const Wanted& wanted, Looks& looks,
                              std::vector<NameMatch>& matches) const {
  std::vector<NamePlace> places = entry.places;
  const std::string folded = caseFolded(entry.name);
  const bool isQualified =
      folded.starts_with(wanted.folded) ||
      endsWithParts(std::string_view(folded).substr(0, entry.lastPart), wanted.qualifier);
  if (!isQualified) {
    const std::vector<std::string_view> qualifiers = wordsOf(wanted.qualifier, nameSeparators);
    std::erase_if(places, [&](const NamePlace& at) {
      return !looks.take() ||
             Surroundings(_index, _titles, looks, at).qualityOf(qualifiers, folded) == 0;
    });
  }
  if (places.size() > mostPlacesOfName) {
    std::ranges::stable_sort(places, {},
                             [&](const NamePlace& at) { return remoteness(at.document); });
    places.resize(mostPlacesOfName);
  }
  const float quality =
      isHeading(entry) ? plainWord : definitionByLastParts - (isTermOnly(entry) ? mentionCost : 0);
  for (const NamePlace& at : places)
    matches.push_back({at, quality, entry.name});
}

void NameFinder::addTitlesBeginning(const Wanted& wanted, std::vector<NameMatch>& matches) const {
  // The first word, as a title has it, begins with the first of the text.
  const std::string_view first = wordsOf(wanted.folded, nameSeparators).front();
  std::size_t looksLeft = mostSurroundings;
  std::unordered_set<std::uint32_t> seen;
  TermDictionary::Cursor term(_titles.terms(), 0);
  for (bool more = term.seek(first); more && term.term().starts_with(first); more = term.next()) {
    for (const TitleIndex::Posting& posting : _titles.postings(term.id())) {
      if (looksLeft-- == 0) return;
      std::string name = nameInTitle(_titles.title(posting.document));
      if (!hasPartsBeginning(caseFolded(name), wanted.folded)) continue;
      if (!seen.insert(posting.document).second) continue;
      matches.push_back({{posting.document, pageItself}, titleByLastParts, std::move(name)});
    }
  }
}

std::vector<NameMatch> NameFinder::beginningWith(std::string_view text, std::size_t count,
                                                 const LookLimits& limits) const {
  text = trimWhitespaceAndNewlines(text);
  std::vector<NameMatch> matches;
  if (text.empty() || text.size() > longestQuery || !isValidUtf8(text)) return matches;
  const Wanted wanted(text);
  if (wordsOf(wanted.folded, nameSeparators).empty()) return matches;
  Looks looks(_index, limits);
  NameTable::Cursor name(_index.names());
  for (bool more = name.seek(wanted.last);
       more && name.folded().starts_with(wanted.last) && matches.size() < count; more = name.next())
    addBeginning(name.entry(), wanted, looks, matches);
  // Then names that only begin with the text as a whole.
  NameTable::Cursor any(_index.names());
  while (wanted.isOneWord && matches.size() < count && any.next()) {
    const NameEntry& entry = any.entry();
    if (entry.lastPart < text.size()) continue;
    if (caseFolded(entry.qualifier()).starts_with(wanted.folded) &&
        !any.folded().starts_with(wanted.last)) {
      addBeginning(entry, wanted, looks, matches);
    }
  }
  std::vector<NameMatch> titles;
  addTitlesBeginning(wanted, titles);
  if (titles.size() > count) titles.resize(count);
  matches.insert(matches.begin(), titles.begin(), titles.end());
  if (matches.size() > count) matches.resize(count);
  return matches;
}

bool NameFinder::isName(std::string_view text) const {
  if (text.size() > longestQuery) return false;
  const Wanted wanted(text);
  NameTable::Cursor name(_index.names());
  for (bool more = name.seek(wanted.last); more && name.folded() == wanted.last;
       more = name.next()) {
    if (caseFolded(name.entry().name) == wanted.folded) return true;
  }
  return false;
}

std::vector<NameMatch> NameFinder::holding(std::string_view query, std::size_t count) const {
  std::vector<NameMatch> matches;
  if (query.size() > longestQuery) return matches;
  const std::string folded = caseFolded(query);
  const std::vector<std::string_view> words = wordsOf(folded, " \t\n\"'`()");
  if (words.empty() || words.size() > mostQueryWords) return matches;
  const auto offer = [&](std::string_view name, float whole, const auto& addPlaces) {
    const std::string text = caseFolded(name);
    const auto holds = [&](std::string_view word) { return holdsIdentifier(text, word); };
    if (!std::ranges::all_of(words, holds)) return;
    const float share = static_cast<float>(folded.size()) / static_cast<float>(text.size());
    addPlaces(text == folded ? whole : certain * whole * std::min(1.0F, share));
  };
  for (std::uint32_t document = 0; document < _index.documents().size(); ++document) {
    if (_index.documents().length(document) == 0) continue;
    const std::string name = nameInTitle(_titles.title(document));
    offer(name, wholeTitle, [&](float quality) {
      matches.push_back({{document, pageItself}, quality, name});
    });
  }
  NameTable::Cursor name(_index.names());
  for (bool more = name.seek({}); more; more = name.next()) {
    const NameEntry& entry = name.entry();
    offer(entry.name, isTermOnly(entry) ? wholeHeading - mentionCost : wholeHeading,
          [&](float quality) {
            for (const NamePlace& at : entry.places)
              matches.push_back({at, quality, entry.name});
          });
    if (matches.size() >= mostSurroundings) break;
  }
  constexpr float leastQuality = 0.0001F;
  for (NameMatch& match : matches)
    match.quality = std::max(leastQuality, match.quality - remoteness(match.at.document));
  std::sort(matches.begin(), matches.end());
  matches = bestOfEachPage(matches);
  matches.resize(std::min(count, matches.size()));
  return matches;
}

}  // namespace quorvex::textsearch
