#include "fulltext/writing/operator_section.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "fulltext/format/index_format.h"
#include "fulltext/format/operator_table.h"

namespace quorvex {

namespace {

constexpr std::size_t mostOperators = 4096;
/// An operator on more than half of all pages tells nothing of them, unless they are few.
constexpr std::size_t fewPages = 20;
constexpr std::size_t largestShare = 2;

constexpr std::uint32_t leftOut = UINT32_MAX;

/// An operator of one analyzer and the documents that have it.
struct Candidate {
  std::string_view text;
  std::uint32_t analyzer = 0;
  std::uint32_t number = 0;
  std::uint32_t documents = 0;
};

/// An operator of all analyzers.
struct Operator {
  std::string_view text;
  std::uint32_t documents = 0;
  std::span<const Candidate> candidates;
};

std::span<const OperatorCount> countsOf(
    const PendingDocument& document, const std::vector<std::unique_ptr<TextAnalyzer>>& analyzers) {
  const AnalyzedText& text = document.text;
  return std::span(analyzers[document.analyzer]->operators().counts())
      .subspan(text.operatorsBegin, text.operatorsEnd - text.operatorsBegin);
}

/// Sorted by text.
std::vector<Candidate> candidatesOf(const std::vector<PendingDocument>& documents,
                                    const std::vector<std::unique_ptr<TextAnalyzer>>& analyzers) {
  std::vector<std::vector<std::uint32_t>> documentCounts;
  documentCounts.reserve(analyzers.size());
  for (const auto& analyzer : analyzers)
    documentCounts.emplace_back(analyzer->operators().operatorCount());
  for (const PendingDocument& document : documents) {
    for (const OperatorCount& count : countsOf(document, analyzers))
      ++documentCounts[document.analyzer][count.number];
  }
  std::vector<Candidate> candidates;
  for (std::uint32_t a = 0; a < analyzers.size(); ++a) {
    for (std::uint32_t number = 0; number < documentCounts[a].size(); ++number) {
      const std::uint32_t count = documentCounts[a][number];
      if (count > 0)
        candidates.push_back({analyzers[a]->operators().operatorOf(number), a, number, count});
    }
  }
  std::ranges::sort(candidates, {}, &Candidate::text);
  return candidates;
}

/// Sorted by text.
std::vector<Operator> chooseOperators(std::span<const Candidate> candidates, std::size_t pages) {
  std::vector<Operator> chosen;
  while (!candidates.empty()) {
    const std::string_view text = candidates.front().text;
    std::size_t same = 0;
    std::uint32_t count = 0;
    for (; same < candidates.size() && candidates[same].text == text; ++same)
      count += candidates[same].documents;
    if (count <= std::max(fewPages, pages / largestShare)) {
      chosen.push_back({text, count, candidates.first(same)});
    }
    candidates = candidates.subspan(same);
  }
  if (chosen.size() > mostOperators) {
    std::ranges::stable_sort(chosen, std::ranges::greater(), &Operator::documents);
    chosen.resize(mostOperators);
    std::ranges::sort(chosen, {}, &Operator::text);
  }
  return chosen;
}

}  // namespace

std::string makeOperatorSection(const std::vector<PendingDocument>& documents,
                                const std::vector<std::unique_ptr<TextAnalyzer>>& analyzers) {
  const std::vector<Candidate> candidates = candidatesOf(documents, analyzers);
  const auto pages = static_cast<std::size_t>(std::ranges::count_if(
      documents, [](const PendingDocument& document) { return document.text.length > 0; }));
  const std::vector<Operator> operators = chooseOperators(candidates, pages);
  if (operators.empty()) return {};

  std::vector<std::vector<std::uint32_t>> idOf;  // per analyzer and number
  idOf.reserve(analyzers.size());
  for (const auto& analyzer : analyzers)
    idOf.emplace_back(analyzer->operators().operatorCount(), leftOut);
  std::vector<std::string_view> texts;
  std::vector<std::uint32_t> documentCounts;
  std::vector<std::size_t> next;
  std::size_t total = 0;
  for (const Operator& each : operators) {
    for (const Candidate& candidate : each.candidates)
      idOf[candidate.analyzer][candidate.number] = static_cast<std::uint32_t>(texts.size());
    texts.push_back(each.text);
    documentCounts.push_back(each.documents);
    next.push_back(total);
    total += each.documents;
  }
  std::vector<std::uint32_t> postingDocuments(total);
  std::string frequencies(total, '\0');
  for (std::uint32_t document = 0; document < documents.size(); ++document) {
    for (const OperatorCount& count : countsOf(documents[document], analyzers)) {
      const std::uint32_t id = idOf[documents[document].analyzer][count.number];
      if (id == leftOut) continue;
      const std::size_t posting = next[id]++;
      postingDocuments[posting] = document;
      frequencies[posting] = static_cast<char>(std::min(count.count, largestFrequency));
    }
  }
  return encodeOperators(texts, documentCounts, postingDocuments, frequencies);
}

}  // namespace quorvex
