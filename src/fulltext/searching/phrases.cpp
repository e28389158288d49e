#include "fulltext/searching/phrases.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>

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
    const auto term = std::ranges::lower_bound(titles.terms(), word.term);
    if (word.term.empty()) {
      phrase.push_back(TitleIndex::gap);
    } else if (term != titles.terms().end() && *term == word.term) {
      phrase.push_back(static_cast<std::uint32_t>(term - titles.terms().begin()));
    } else {
      return std::nullopt;
    }
  }
  return phrase;
}

void addFromTexts(const IndexReader& index, const std::vector<QueryWord>& words,
                  std::vector<std::uint32_t>& found) {
  const std::optional<Numbers> phrase = numbersInTexts(index, words);
  if (!phrase) return;
  std::vector<TermEntry> terms;
  for (const QueryWord& word : words) {
    if (!word.term.empty()) terms.push_back(*index.terms().find(word.term));
  }
  const Numbers documents = intersection(index, std::move(terms));
  for (const std::uint32_t document : documents) {
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

}  // namespace

std::vector<std::uint32_t> documentsWithPhrase(const IndexReader& index, const TitleIndex& titles,
                                               const std::vector<QueryWord>& words) {
  std::vector<std::uint32_t> found;
  addFromTexts(index, words, found);
  addFromTitles(titles, words, found);
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
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
  if (words.empty()) {
    for (const TextTerm& term : last.inTexts) {
      const Numbers documents = documentsOf(index, term.entry);
      found.insert(found.end(), documents.begin(), documents.end());
    }
    for (const TitleTerm& term : last.inTitles) {
      for (const TitleIndex::Posting& posting : titles.postings(term.term))
        found.push_back(posting.document);
    }
    std::ranges::sort(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
  }
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
