#include "fulltext/searching/proximity.h"

#include <algorithm>
#include <optional>
#include <span>

namespace quorvex::textsearch {

namespace {

/// The words of a phrase as numbers, gaps as the number that the searched sequence has for them.
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

/// The documents that hold all terms.
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

ProximityScorer::ProximityScorer(const IndexReader& index, const Ranker& ranker,
                                 const std::vector<RankedWord>& words, WordOfCode& wordOfCode)
    : _index(index), _ranker(ranker), _words(words), _wordOfCode(wordOfCode) {
  _wordOfCode.resize(std::size_t{index.terms().size()} + 1);
  for (std::size_t i = 0; i < words.size(); ++i) {
    for (const TermEntry& term : words[i].terms->inTexts) {
      _wordOfCode[index.occurrenceCode(term.id)] = static_cast<std::uint16_t>(i + 1);
    }
    _importance.push_back(ranker.importance(*words[i].terms));
  }
  _wordOfCode[0] = 0;
}

ProximityScorer::~ProximityScorer() {
  for (const RankedWord& word : _words) {
    for (const TermEntry& term : word.terms->inTexts)
      _wordOfCode[_index.occurrenceCode(term.id)] = 0;
  }
}

void ProximityScorer::measureNearness(std::uint32_t document) {
  _nearness.assign(_words.size(), 0);
  const std::string_view codes = _index.occurrenceCodes(document);
  const char* const end = codes.data() + codes.size();
  std::size_t last = 0;  // word plus 1
  std::size_t lastPlace = 0;
  std::size_t place = 0;
  for (const char* position = codes.data(); position != end; ++place) {
    std::uint32_t code = static_cast<unsigned char>(*position);
    if (code < firstLongCode) {
      ++position;
    } else {
      code = readCode(position, end);
    }
    const std::size_t word = code < _wordOfCode.size() ? _wordOfCode[code] : 0;
    if (word == 0) continue;
    if (last != 0 && last != word) {
      const auto distance = static_cast<float>(place - lastPlace);
      _nearness[word - 1] += _importance[last - 1] / (distance * distance);
      _nearness[last - 1] += _importance[word - 1] / (distance * distance);
    }
    last = word;
    lastPlace = place;
  }
}

void ProximityScorer::addTo(ScoredDocument& document) {
  const std::uint32_t length = _index.documents().length(document.document);
  if (length > longestTextForProximity) return;
  measureNearness(document.document);
  const float norm = _ranker.textNorm(length);
  float sum = 0;
  for (std::size_t i = 0; i < _words.size(); ++i) {
    sum += _words[i].weight * std::min(1.0F, _importance[i]) * _nearness[i] / (_nearness[i] + norm);
  }
  document.score += _ranker.settings.proximityWeight * (_ranker.settings.textK1 + 1) * sum;
}

}  // namespace quorvex::textsearch
