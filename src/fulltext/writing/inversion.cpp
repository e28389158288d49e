#include "fulltext/writing/inversion.h"

#include <algorithm>
#include <span>

#include "common/parallel.h"
#include "common/release_memory.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/posting_lists.h"

namespace quorvex {

namespace {

/// A term of one analyzer.
struct Candidate {
  std::uint64_t prefix;  ///< the first eight bytes, which decide most comparisons
  std::string_view term;
  std::uint32_t analyzer;
  std::uint32_t number;

  friend bool operator<(const Candidate& a, const Candidate& b) {
    return a.prefix != b.prefix ? a.prefix < b.prefix : a.term < b.term;
  }
};

std::uint64_t prefixOf(std::string_view term) {
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < sizeof prefix; ++i) {
    const std::uint64_t byte = i < term.size() ? static_cast<unsigned char>(term[i]) : 0;
    prefix = (prefix << 8U) | byte;
  }
  return prefix;
}

using Range = std::span<PendingDocument>;

class Merger {
 public:
  Merger(std::vector<PendingDocument>& documents,
         std::vector<std::unique_ptr<TextAnalyzer>>& analyzers)
      : _documents(documents), _analyzers(analyzers), _globalIds(analyzers.size()) {}

  TextSections merge(bool someUnused) {
    mergeTerms(someUnused);
    splitDocuments();
    countDocuments();
    layOutPostings();
    invert();
    _sections.occurrences = std::move(_pieces.front());
    for (std::size_t i = 1; i < _pieces.size(); ++i) {
      _sections.occurrences += _pieces[i];
      releaseMemory(_pieces[i]);
    }
    _sections.terms = encodeTerms(_terms, _documentCounts, _postingDocuments, _sections.postings);
    return std::move(_sections);
  }

 private:
  std::vector<std::vector<bool>> usedTerms() const;
  void mergeTerms(bool someUnused);
  void splitDocuments();
  void countDocuments();
  void layOutPostings();
  void invert();
  void invertRange(unsigned range);

  std::vector<PendingDocument>& _documents;
  std::vector<std::unique_ptr<TextAnalyzer>>& _analyzers;
  std::vector<std::vector<std::uint32_t>> _globalIds;  ///< per analyzer and term number
  std::vector<std::string_view> _terms;
  std::vector<Range> _ranges;
  std::vector<std::vector<std::uint32_t>> _rangeCounts;  ///< per range and term: document count
  std::vector<std::uint32_t> _documentCounts;
  std::vector<std::uint64_t> _firstPostings;
  struct TermNumbers {
    std::uint32_t code = 0;  ///< occurrence code
    std::uint32_t hash = 0;  ///< for sketches
  };
  std::vector<TermNumbers> _numbers;  ///< of each term
  std::vector<std::uint32_t> _postingDocuments;
  std::vector<std::string> _pieces;  ///< occurrences of each range
  TextSections _sections;
};

std::vector<std::vector<bool>> Merger::usedTerms() const {
  std::vector<std::vector<bool>> used;
  used.reserve(_analyzers.size());
  for (const auto& analyzer : _analyzers)
    used.emplace_back(analyzer->termCount());
  for (const PendingDocument& document : _documents) {
    const char* position = document.text.codes.data();
    const char* const end = position + document.text.codes.size();
    while (position != end) {
      const std::uint32_t number = nextTermNumber(position);
      if (number != 0) used[document.analyzer][number - 1] = true;
    }
  }
  return used;
}

void Merger::mergeTerms(bool someUnused) {
  const std::vector<std::vector<bool>> used =
      someUnused ? usedTerms() : std::vector<std::vector<bool>>();
  std::vector<Candidate> candidates;
  for (std::uint32_t a = 0; a < _analyzers.size(); ++a) {
    const TextAnalyzer& analyzer = *_analyzers[a];
    _globalIds[a].resize(analyzer.termCount());
    for (std::uint32_t number = 0; number < analyzer.termCount(); ++number) {
      if (someUnused && !used[a][number]) continue;
      const std::string_view term = analyzer.term(number);
      candidates.push_back({prefixOf(term), term, a, number});
    }
  }
  std::ranges::sort(candidates, std::less());
  for (const Candidate& candidate : candidates) {
    if (_terms.empty() || _terms.back() != candidate.term) _terms.push_back(candidate.term);
    _globalIds[candidate.analyzer][candidate.number] =
        static_cast<std::uint32_t>(_terms.size() - 1);
  }
}

/// Splits the documents into one range of about equal work per analyzer.
void Merger::splitDocuments() {
  std::uint64_t total = 0;
  for (const PendingDocument& document : _documents)
    total += document.text.codes.size();
  std::size_t begin = 0;
  std::uint64_t done = 0;
  for (std::uint64_t range = 1; range <= _analyzers.size(); ++range) {
    const std::uint64_t target = total / _analyzers.size() * range;
    std::size_t end = begin;
    while (end < _documents.size() && (done < target || range == _analyzers.size())) {
      done += _documents[end++].text.codes.size();
    }
    _ranges.push_back(Range(_documents).subspan(begin, end - begin));
    begin = end;
  }
}

void Merger::countDocuments() {
  _rangeCounts.assign(_ranges.size(), {});
  runInParallel(static_cast<unsigned>(_ranges.size()), [&](unsigned range) {
    std::vector<std::uint32_t> counts(_terms.size());
    std::vector<std::uint32_t> lastDocument(_terms.size());
    std::uint32_t stamp = 0;
    for (const PendingDocument& document : _ranges[range]) {
      ++stamp;
      const std::vector<std::uint32_t>& ids = _globalIds[document.analyzer];
      const char* position = document.text.codes.data();
      const char* const end = position + document.text.codes.size();
      while (position != end) {
        const std::uint32_t number = nextTermNumber(position);
        if (number == 0) continue;
        const std::uint32_t term = ids[number - 1];
        if (lastDocument[term] == stamp) continue;
        lastDocument[term] = stamp;
        ++counts[term];
      }
    }
    _rangeCounts[range] = std::move(counts);
  });
}

void Merger::layOutPostings() {
  _documentCounts.assign(_terms.size(), 0);
  for (const std::vector<std::uint32_t>& counts : _rangeCounts) {
    for (std::size_t term = 0; term < counts.size(); ++term)
      _documentCounts[term] += counts[term];
  }
  std::uint64_t total = 0;
  for (const std::uint32_t count : _documentCounts) {
    _firstPostings.push_back(total);
    total += count;
  }
  _postingDocuments.resize(total);
  _sections.frequencies.resize(total);
  _numbers.resize(_terms.size());
  std::uint32_t code = 0;
  for (const std::uint32_t term :
       termsByDocumentCount(_documentCounts, static_cast<std::uint32_t>(_documents.size()))) {
    _numbers[term] = {++code, TextSketcher::hashOf(_terms[term])};
  }
}

void Merger::invert() {
  _pieces.resize(_ranges.size());
  _sections.codeSizes.resize(_documents.size());
  _sections.sketches.resize(_documents.size());
  runInParallel(static_cast<unsigned>(_ranges.size()), [&](unsigned range) { invertRange(range); });
}

/// Each range writes to its own slots, after those of earlier ranges.
void Merger::invertRange(unsigned range) {
  std::vector<std::uint64_t> next = _firstPostings;
  for (unsigned earlier = 0; earlier < range; ++earlier) {
    for (std::size_t term = 0; term < next.size(); ++term)
      next[term] += _rangeCounts[earlier][term];
  }
  std::vector<std::uint32_t> lastDocument(_terms.size());
  std::string& out = _pieces[range];
  auto id = static_cast<std::uint32_t>(_ranges[range].data() - _documents.data());
  for (PendingDocument& document : _ranges[range]) {
    const std::size_t begin = out.size();
    TextSketcher sketcher;
    const std::vector<std::uint32_t>& ids = _globalIds[document.analyzer];
    const char* position = document.text.codes.data();
    const char* const end = position + document.text.codes.size();
    while (position != end) {
      const std::uint32_t number = nextTermNumber(position);
      if (number == 0) {
        out += '\0';
        continue;
      }
      const std::uint32_t term = ids[number - 1];
      appendCode(out, _numbers[term].code);
      sketcher.add(_numbers[term].hash);
      if (lastDocument[term] != id + 1) {
        lastDocument[term] = id + 1;
        _postingDocuments[next[term]++] = id;
      }
      char& frequency = _sections.frequencies[next[term] - 1];
      if (static_cast<unsigned char>(frequency) < largestFrequency) ++frequency;
    }
    _sections.sketches[id] = sketcher.sketch();
    _sections.codeSizes[id++] = out.size() - begin;
    releaseMemory(document.text.codes);
  }
}

}  // namespace

TextSections mergeTexts(std::vector<PendingDocument>& documents,
                        std::vector<std::unique_ptr<TextAnalyzer>>& analyzers, bool someUnused) {
  return Merger(documents, analyzers).merge(someUnused);
}

}  // namespace quorvex
