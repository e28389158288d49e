#include "fulltext/searching/phrases.h"

#include <algorithm>
#include <optional>
#include <span>

namespace quorvex::textsearch {

namespace {

/// The words of a phrase as numbers; gaps as numbered in the searched sequence.
using Numbers = std::vector<std::uint32_t>;

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

void addFromTexts(const IndexReader& index, const std::vector<QueryWord>& words,
                  std::vector<std::uint32_t>& found) {
  Numbers phrase;
  std::vector<TermEntry> terms;
  for (const QueryWord& word : words) {
    if (word.term.empty()) {
      phrase.push_back(IndexReader::noTerm);
      continue;
    }
    const std::optional<TermEntry> term = index.terms().find(word.term);
    if (!term) return;
    phrase.push_back(term->id);
    terms.push_back(*term);
  }
  const Numbers documents = intersection(index, std::move(terms));
  for (const std::uint32_t document : documents) {
    if (phrase.size() == 1 || holds(index.occurrences(document), phrase)) found.push_back(document);
  }
}

void addFromTitles(const TitleIndex& titles, const std::vector<QueryWord>& words,
                   std::vector<std::uint32_t>& found) {
  Numbers phrase;
  for (const QueryWord& word : words) {
    const auto term = std::ranges::lower_bound(titles.terms(), word.term);
    if (word.term.empty()) {
      phrase.push_back(TitleIndex::gap);
    } else if (term != titles.terms().end() && *term == word.term) {
      phrase.push_back(static_cast<std::uint32_t>(term - titles.terms().begin()));
    } else {
      return;
    }
  }
  for (const TitleIndex::Posting& posting : titles.postings(phrase.front())) {
    if (holds(titles.words(posting.document), phrase)) found.push_back(posting.document);
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

}  // namespace quorvex::textsearch
