#include "fulltext/searching/phrases.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace quorvex::textsearch {

namespace {

/// The words of a phrase as numbers; gaps as numbered in the searched sequence.
using Numbers = std::vector<std::uint32_t>;

/// Whether any of the numbers, which are ordered, stands behind the phrase.
bool holds(std::span<const std::uint32_t> sequence, const Numbers& phrase, const Numbers& next) {
  auto from = sequence.begin();
  for (;;) {
    const auto at = std::search(from, sequence.end(), phrase.begin(), phrase.end());
    if (static_cast<std::size_t>(sequence.end() - at) <= phrase.size()) return false;
    if (std::ranges::binary_search(next, at[static_cast<std::ptrdiff_t>(phrase.size())])) {
      return true;
    }
    from = at + 1;
  }
}

bool holds(std::span<const std::uint32_t> sequence, const Numbers& phrase) {
  return std::search(sequence.begin(), sequence.end(), phrase.begin(), phrase.end()) !=
         sequence.end();
}

std::vector<std::uint32_t> documentsOf(const IndexReader& index, const TermEntry& term) {
  std::vector<std::uint32_t> documents;
  for (PostingCursor posting = index.postings(term); posting.next();)
    documents.push_back(posting.document());
  return documents;
}

/// Returns the documents that contain all terms.
std::vector<std::uint32_t> intersection(const IndexReader& index, std::vector<TermEntry> terms) {
  std::ranges::sort(terms, {}, &TermEntry::documentCount);
  std::vector<std::uint32_t> documents = documentsOf(index, terms.front());
  for (std::size_t i = 1; i < terms.size() && !documents.empty(); ++i) {
    std::size_t kept = 0;
    auto candidate = documents.begin();
    for (PostingCursor posting = index.postings(terms[i]); posting.next();) {
      while (candidate != documents.end() && *candidate < posting.document())
        ++candidate;
      if (candidate == documents.end()) break;
      if (*candidate == posting.document()) documents[kept++] = *candidate;
    }
    documents.resize(kept);
  }
  return documents;
}

/// Returns the numbers of a phrase in texts; null if they lack a word of it.
std::optional<Numbers> numbersInTexts(const IndexReader& index,
                                      const std::vector<QueryWord>& words) {
  Numbers phrase;
  for (const QueryWord& word : words) {
    if (word.term.empty()) {
      phrase.push_back(IndexReader::noTerm);
      continue;
    }
    const std::optional<TermEntry> term = index.terms().find(word.term);
    if (!term) return std::nullopt;
    phrase.push_back(term->id);
  }
  return phrase;
}

/// The same of titles.
std::optional<Numbers> numbersInTitles(const TitleIndex& titles,
                                       const std::vector<QueryWord>& words) {
  Numbers phrase;
  for (const QueryWord& word : words) {
    if (word.term.empty()) {
      phrase.push_back(TitleIndex::gap);
      continue;
    }
    const std::optional<std::uint32_t> term = titles.find(word.term);
    if (!term) return std::nullopt;
    phrase.push_back(*term);
  }
  return phrase;
}

/// Returns the documents whose texts have all words of a phrase; `words`: in the index.
std::vector<std::uint32_t> documentsWithWords(const IndexReader& index,
                                              const std::vector<QueryWord>& words) {
  std::vector<TermEntry> terms;
  for (const QueryWord& word : words) {
    if (!word.term.empty()) terms.push_back(*index.terms().find(word.term));
  }
  return intersection(index, std::move(terms));
}

void addFromTexts(const IndexReader& index, const std::vector<QueryWord>& words,
                  std::vector<std::uint32_t>& found) {
  const std::optional<Numbers> phrase = numbersInTexts(index, words);
  if (!phrase) return;
  for (const std::uint32_t document : documentsWithWords(index, words)) {
    if (phrase->size() == 1 || holds(index.occurrences(document), *phrase))
      found.push_back(document);
  }
}

void addFromTitles(const TitleIndex& titles, const std::vector<QueryWord>& words,
                   std::vector<std::uint32_t>& found) {
  const std::optional<Numbers> phrase = numbersInTitles(titles, words);
  if (!phrase) return;
  for (const TitleIndex::Posting& posting : titles.postings(phrase->front())) {
    if (holds(titles.words(posting.document), *phrase)) found.push_back(posting.document);
  }
}

/// The documents with the words of a phrase side by side in the text or the title, ascending.
std::vector<std::uint32_t> documentsWithPhrase(const IndexReader& index, const TitleIndex& titles,
                                               const std::vector<QueryWord>& words) {
  std::vector<std::uint32_t> found;
  addFromTexts(index, words, found);
  addFromTitles(titles, words, found);
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

/// A phrase of a query as numbers; null where the words are unknown.
struct NumberedPhrase {
  bool isExcluded;
  std::optional<Numbers> inTexts;
  std::optional<Numbers> inTitles;
  std::size_t rarest = 0;  ///< of its words in texts
  bool operator==(const NumberedPhrase& other) const = default;
};

/// Checks a text for several phrases at once.
class PhraseMatcher {
 public:
  PhraseMatcher(const IndexReader& index, const TitleIndex& titles,
                const std::vector<NumberedPhrase>& phrases)
      : _index(index),
        _titles(titles),
        _phrases(phrases),
        _isRarest(index.terms().size()),
        _isFound(phrases.size()) {
    for (std::size_t i = 0; i < phrases.size(); ++i) {
      if (!phrases[i].inTexts) continue;
      const std::uint32_t term = (*phrases[i].inTexts)[phrases[i].rarest];
      _isRarest[term] = 1;
      _byRarest.push_back({term, i});
    }
    std::ranges::sort(_byRarest, {}, &ByRarest::term);
  }

  /// Whether a document has all phrases but no excluded one.
  bool allows(std::uint32_t document) {
    if (!readText(document)) return false;
    const std::span<const std::uint32_t> title = _titles.words(document);
    for (std::size_t i = 0; i < _phrases.size(); ++i) {
      const std::optional<Numbers>& inTitles = _phrases[i].inTitles;
      const bool isFound = _isFound[i] != 0 || (inTitles && holds(title, *inTitles));
      if (isFound == _phrases[i].isExcluded) return false;
    }
    return true;
  }

 private:
  struct ByRarest {
    std::uint32_t term;
    std::size_t phrase;
  };

  /// Sets which phrases the text has; false at an excluded one.
  bool readText(std::uint32_t document) {
    _isFound.assign(_phrases.size(), 0);
    const Numbers text = _index.occurrences(document);
    for (std::size_t at = 0; at < text.size(); ++at) {
      if (text[at] >= _isRarest.size() || _isRarest[text[at]] == 0) continue;
      auto each = std::ranges::lower_bound(_byRarest, text[at], {}, &ByRarest::term);
      for (; each != _byRarest.end() && each->term == text[at]; ++each) {
        if (_isFound[each->phrase] != 0 || !standsAt(text, at, _phrases[each->phrase])) continue;
        if (_phrases[each->phrase].isExcluded) return false;
        _isFound[each->phrase] = 1;
      }
    }
    return true;
  }

  static bool standsAt(const Numbers& text, std::size_t at, const NumberedPhrase& phrase) {
    const Numbers& numbers = *phrase.inTexts;
    if (at < phrase.rarest || text.size() - (at - phrase.rarest) < numbers.size()) return false;
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at - phrase.rarest);
    return std::equal(numbers.begin(), numbers.end(), begin);
  }

  const IndexReader& _index;
  const TitleIndex& _titles;
  const std::vector<NumberedPhrase>& _phrases;
  std::vector<std::uint8_t> _isRarest;  ///< by term
  std::vector<ByRarest> _byRarest;
  std::vector<std::uint8_t> _isFound;  ///< by phrase
};

/// Returns the place of the word of a phrase that the fewest texts have.
std::size_t rarestWord(const IndexReader& index, const std::vector<QueryWord>& words) {
  std::size_t rarest = 0;
  std::uint32_t fewest = std::numeric_limits<std::uint32_t>::max();
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i].term.empty()) continue;
    const std::optional<TermEntry> term = index.terms().find(words[i].term);
    if (!term || term->documentCount >= fewest) continue;
    rarest = i;
    fewest = term->documentCount;
  }
  return rarest;
}

}  // namespace

void restrictToPhrases(const IndexReader& index, const TitleIndex& titles,
                       const std::vector<SoughtPhrase>& sought,
                       std::vector<std::uint8_t>& allowed) {
  constexpr std::uint8_t hasWords = 1;
  constexpr std::uint8_t isFound = 2;
  std::vector<NumberedPhrase> phrases;
  std::vector<std::uint8_t> isToBeRead(allowed.size());
  std::vector<std::uint8_t> has;
  for (const SoughtPhrase& each : sought) {
    NumberedPhrase phrase{each.isExcluded, numbersInTexts(index, *each.words),
                          numbersInTitles(titles, *each.words), rarestWord(index, *each.words)};
    if (std::ranges::find(phrases, phrase) != phrases.end()) continue;
    has.assign(allowed.size(), 0);
    if (phrase.inTexts) {
      for (const std::uint32_t document : documentsWithWords(index, *each.words))
        has[document] = phrase.inTexts->size() == 1 ? isFound : hasWords;
    }
    Numbers inTitles;
    addFromTitles(titles, *each.words, inTitles);
    for (const std::uint32_t document : inTitles)
      has[document] = isFound;
    for (std::size_t i = 0; i < allowed.size(); ++i) {
      if (has[i] == (each.isExcluded ? isFound : 0)) allowed[i] = 0;
      if (has[i] == hasWords) isToBeRead[i] = 1;
    }
    phrases.push_back(std::move(phrase));
  }
  PhraseMatcher matcher(index, titles, phrases);
  for (std::uint32_t document = 0; document < allowed.size(); ++document) {
    if (allowed[document] != 0 && isToBeRead[document] != 0 && !matcher.allows(document)) {
      allowed[document] = 0;
    }
  }
}

std::vector<std::uint32_t> documentsWithPhraseBeginning(const IndexReader& index,
                                                        const TitleIndex& titles,
                                                        std::vector<QueryWord> words,
                                                        const WordTerms& last) {
  words.pop_back();
  Numbers inTexts;
  for (const TextTerm& term : last.inTexts)
    inTexts.push_back(term.entry.id);
  std::ranges::sort(inTexts);
  Numbers inTitles;
  for (const TitleTerm& term : last.inTitles)
    inTitles.push_back(term.term);
  std::ranges::sort(inTitles);
  Numbers found;
  const Numbers beginning = documentsWithPhrase(index, titles, words);
  const std::optional<Numbers> inText = numbersInTexts(index, words);
  const std::optional<Numbers> inTitle = numbersInTitles(titles, words);
  std::ranges::copy_if(beginning, std::back_inserter(found), [&](std::uint32_t document) {
    return (inText && holds(index.occurrences(document), *inText, inTexts)) ||
           (inTitle && holds(titles.words(document), *inTitle, inTitles));
  });
  return found.empty() ? beginning : found;
}

}  // namespace quorvex::textsearch
