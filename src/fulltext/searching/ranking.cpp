#include "fulltext/searching/ranking.h"

#include <algorithm>
#include <cmath>

namespace quorvex::textsearch {

namespace {

float inverseDocumentFrequency(double holding, double documents) {
  return static_cast<float>(std::log(1 + (documents - holding + 0.5) / (holding + 0.5)));
}

/// Estimates how many documents contain any of several terms, assuming independence.
class UnionEstimate {
 public:
  explicit UnionEstimate(double documents) : _documents(documents) {}
  void add(double holding) { _without *= std::max(0.0, 1 - holding / _documents); }
  double count() const { return _documents * (1 - _without); }

 private:
  double _documents;
  double _without = 1;  ///< share of documents without any of them
};

/// Calls visit(document, frequency) for each document that contains any of the terms.
/// `forEachPosting(term, add)` calls add(document, frequency) for the documents of one term; the
/// frequencies of several terms are summed by their weights.
/// `frequencies` has one element per document, all zero before and after.
template <typename Term, typename ForEachPosting, typename Visit>
void forEachDocument(const std::vector<Term>& terms, const ForEachPosting& forEachPosting,
                     std::vector<float>& frequencies, const Visit& visit) {
  if (terms.size() == 1 && terms.front().weight == 1) {
    return forEachPosting(terms.front(), visit);
  }
  std::vector<std::uint32_t> documents;
  for (const Term& term : terms) {
    forEachPosting(term, [&](std::uint32_t document, float frequency) {
      if (frequencies[document] == 0) documents.push_back(document);
      frequencies[document] += term.weight * frequency;
    });
  }
  for (const std::uint32_t document : documents) {
    visit(document, frequencies[document]);
    frequencies[document] = 0;
  }
}

/// One field's part of BM25, without the word's factors.
class Saturation {
 public:
  Saturation(float k1, float b, float averageLength)
      : _fixed(k1 * (1 - b)), _perTerm(k1 * b / std::max(averageLength, 1.0F)) {}
  float norm(std::size_t length) const { return _fixed + _perTerm * static_cast<float>(length); }
  float operator()(float frequency, std::size_t length) const {
    return frequency / (frequency + norm(length));
  }

 private:
  float _fixed;
  float _perTerm;
};

}  // namespace

/// One query word in one run.
struct Ranker::WordWork {
  const WordTerms* terms;
  float textFactor;
  float titleFactor;
  float bound;  ///< the most that the word adds to a document
};

/// Accumulates the scores of one query.
class Ranker::Run {
 public:
  Run(const Ranker& ranker, const DocumentMask& mask, std::size_t count, RankingScratch& scratch)
      : _ranker(ranker),
        _documents(ranker._index.documents()),
        _mask(mask),
        _count(count),
        _scratch(scratch) {
    _scratch.scores.assign(_documents.size(), 0);
    _scratch.frequencies.resize(_scratch.scores.size());
  }

  void add(const std::vector<RankedWord>& words) {
    std::vector<WordWork> work;
    float left = 0;
    for (const RankedWord& word : words) {
      work.push_back(_ranker.workOf(word));
      left += work.back().bound;
    }
    std::ranges::sort(work, std::ranges::greater(), &WordWork::bound);
    float done = 0;
    for (const WordWork& word : work) {
      // The k-th best score is at most `done`.
      if (done > left) _threshold = thresholdNow();
      _left = left;
      addWord(word);
      left -= word.bound;
      done += word.bound;
    }
  }

  std::vector<ScoredDocument> best() const {
    std::vector<ScoredDocument> found;
    for (std::uint32_t document = 0; document < _scratch.scores.size(); ++document) {
      if (_scratch.scores[document] > 0) found.push_back({document, _scratch.scores[document]});
    }
    const auto end = found.begin() + static_cast<std::ptrdiff_t>(std::min(_count, found.size()));
    std::partial_sort(found.begin(), end, found.end());
    found.erase(end, found.end());
    return found;
  }

 private:
  /// Whether the remaining words may lift the document into the best.
  bool matters(std::uint32_t document) const {
    if (!_mask.empty() && _mask[document] == 0) return false;
    return _scratch.scores[document] + _left >= _threshold;
  }

  void addWord(const WordWork& word) {
    const auto forEachPosting = [&](const TextTerm& term, const auto& add) {
      for (PostingCursor posting = _ranker._index.postings(term.entry); posting.next();) {
        add(posting.document(), static_cast<float>(posting.frequency()));
      }
    };
    const Saturation saturation(_ranker.settings.textK1, _ranker.settings.textB,
                                _ranker._averageLength);
    const auto score = [&](std::uint32_t document, float frequency) {
      if (!matters(document)) return;
      const std::uint32_t length = _documents.length(document);
      _scratch.scores[document] += word.textFactor * saturation(frequency, length);
    };
    forEachDocument(word.terms->inTexts, forEachPosting, _scratch.frequencies, score);
    for (const TextTerm& each : word.terms->operators) {
      for (PostingCursor posting = _ranker._index.operatorPostings(each.entry); posting.next();)
        score(posting.document(), static_cast<float>(posting.frequency()));
    }
    addTitles(word);
  }

  void addTitles(const WordWork& word) {
    const TitleIndex& titles = _ranker._titles;
    const auto forEachPosting = [&](const TitleTerm& title, const auto& add) {
      for (const TitleIndex::Posting& posting : titles.postings(title.term))
        add(posting.document, static_cast<float>(posting.count));
    };
    const Saturation saturation(_ranker.settings.titleK1, _ranker.settings.titleB,
                                _ranker._averageTitleLength);
    const auto score = [&](std::uint32_t document, float frequency) {
      if (!matters(document)) return;
      _scratch.scores[document] +=
          word.titleFactor * saturation(frequency, titles.length(document));
    };
    forEachDocument(word.terms->inTitles, forEachPosting, _scratch.frequencies, score);
    for (const TitleIndex::Posting& posting : word.terms->operatorTitles)
      score(posting.document, static_cast<float>(posting.count));
  }

  /// Returns the score that a document must reach to be among the best so far.
  float thresholdNow() {
    _sorted.clear();
    for (const float score : _scratch.scores) {
      if (score > _threshold) _sorted.push_back(score);
    }
    if (_sorted.size() < _count || _count == 0) return _threshold;
    const auto last = _sorted.begin() + static_cast<std::ptrdiff_t>(_count - 1);
    std::ranges::nth_element(_sorted, last, std::ranges::greater());
    return *last;
  }

  const Ranker& _ranker;
  const DocumentTable& _documents;
  const DocumentMask& _mask;
  std::size_t _count;
  RankingScratch& _scratch;
  float _threshold = 0;
  float _left = 0;  ///< the most that the current and later words can add
  std::vector<float> _sorted;
};

Ranker::Ranker(const IndexReader& index, const TitleIndex& titles)
    : _index(index),
      _titles(titles),
      _documents(std::max(1U, index.documents().size())),
      _averageLength(static_cast<float>(index.documents().averageLength())),
      _averageTitleLength(titles.averageLength()) {}

Ranker Ranker::within(const TSCollection& collection) const {
  Ranker ranker = *this;
  ranker._collection = &collection;
  ranker._documents = std::max(1.0, collection.documents);
  ranker._averageLength = static_cast<float>(collection.textLength / ranker._documents);
  ranker._averageTitleLength = static_cast<float>(collection.titleLength / ranker._documents);
  return ranker;
}

void Ranker::addTo(TSCollection& collection, const std::vector<RankedWord>& words) const {
  const double documents = _index.documents().size();
  collection.documents += documents;
  collection.textLength += documents * double{_averageLength};
  collection.titleLength += documents * double{_averageTitleLength};
  std::vector<std::string_view> added;
  for (const RankedWord& word : words) {
    if (std::ranges::find(added, word.terms->word) != added.end()) continue;
    added.push_back(word.terms->word);
    const TSCollection::Word own = holding(*word.terms);
    TSCollection::Word& all = collection.words[word.terms->word];
    all.inTexts += own.inTexts;
    all.inTitles += own.inTitles;
  }
}

TSCollection::Word Ranker::holding(const WordTerms& terms) const {
  if (_collection != nullptr) {
    const auto word = _collection->words.find(terms.word);
    if (word != _collection->words.end()) return word->second;
  }
  UnionEstimate inTexts(_documents);
  for (const TextTerm& term : terms.inTexts)
    inTexts.add(double{term.weight} * term.entry.documentCount);
  for (const TextTerm& each : terms.operators)
    inTexts.add(each.entry.documentCount);
  UnionEstimate inTitles(_documents);
  for (const TitleTerm& title : terms.inTitles)
    inTitles.add(double{title.weight} * static_cast<double>(_titles.titleCount(title.term)));
  inTitles.add(static_cast<double>(terms.operatorTitles.size()));
  return {inTexts.count(), inTitles.count()};
}

float Ranker::importance(const WordTerms& terms) const {
  return inverseDocumentFrequency(holding(terms).inTexts, _documents);
}

float Ranker::textNorm(std::uint32_t length) const {
  return Saturation(settings.textK1, settings.textB, _averageLength).norm(length);
}

Ranker::WordWork Ranker::workOf(const RankedWord& word) const {
  const TSCollection::Word held = holding(*word.terms);
  const float text =
      word.weight * inverseDocumentFrequency(held.inTexts, _documents) * (settings.textK1 + 1);
  const float title = word.weight * settings.titleWeight *
                      inverseDocumentFrequency(held.inTitles, _documents) * (settings.titleK1 + 1);
  const bool isInTexts = !word.terms->inTexts.empty() || !word.terms->operators.empty();
  const bool isInTitles = !word.terms->inTitles.empty() || !word.terms->operatorTitles.empty();
  const float bound = (isInTexts ? text : 0) + (isInTitles ? title : 0);
  return {word.terms.get(), text, title, bound};
}

std::vector<ScoredDocument> Ranker::best(const std::vector<RankedWord>& words,
                                         const DocumentMask& mask, std::size_t count,
                                         RankingScratch& scratch) const {
  Run run(*this, mask, count, scratch);
  run.add(words);
  return run.best();
}

}  // namespace quorvex::textsearch
