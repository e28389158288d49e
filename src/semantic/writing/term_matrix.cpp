#include "semantic/writing/term_matrix.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/parallel.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

/// How a term is spread over the articles.
struct TermSpread {
  double count = 0;
  double countLogCount = 0;
};

/// All analyzers' terms under common numbers. These depend on the analyzers, unlike the column
/// numbers of the kept terms.
struct JoinedTerms {
  TermTable table;
  std::vector<std::vector<std::uint32_t>> common;  ///< by analyzer, then its term number
};

JoinedTerms joinTerms(const std::vector<std::unique_ptr<StemAnalyzer>>& analyzers) {
  JoinedTerms joined;
  for (const auto& analyzer : analyzers) {
    std::vector<std::uint32_t> common;
    common.reserve(analyzer->termCount());
    for (std::uint32_t id = 0; id < analyzer->termCount(); ++id) {
      common.push_back(joined.table.insert(analyzer->term(id)));
    }
    joined.common.push_back(std::move(common));
  }
  return joined;
}

std::vector<TermSpread> spreads(const JoinedTerms& joined,
                                const std::vector<AnalyzedArticle>& articles) {
  std::array<double, countOfCode.size()> countLogCount{};
  for (std::size_t code = 0; code < countOfCode.size(); ++code) {
    countLogCount[code] = countOfCode[code] * std::log(static_cast<double>(countOfCode[code]));
  }
  std::vector<TermSpread> result(joined.table.size());
  for (const AnalyzedArticle& article : articles) {
    const std::vector<std::uint32_t>& common = joined.common[article.analyzer];
    for (const std::uint32_t entry : article.terms) {
      TermSpread& spread = result[common[numberOf(entry)]];
      const std::uint32_t code = codeOf(entry);
      spread.count += countOfCode[code];
      spread.countLogCount += countLogCount[code];
    }
  }
  return result;
}

/// Returns 1 minus the normalised entropy. Counts one extra article, so that in a small book even a
/// term in every article has some weight.
double globalWeight(const TermSpread& spread, std::size_t articles) {
  if (spread.count <= 0) return 0;
  const double entropy = std::log(spread.count) - spread.countLogCount / spread.count;
  return std::clamp(1 - entropy / std::log(static_cast<double>(articles) + 1), 0.0, 1.0);
}

struct TermWeights {
  std::vector<std::uint8_t> weights;  ///< by common number, in 255ths; 0 for a stop word
  std::vector<std::uint32_t> kept;    ///< common numbers in the byte order of their terms
};

TermWeights weigh(const JoinedTerms& joined, const std::vector<TermSpread>& spread,
                  std::size_t articles, double stopWeight) {
  TermWeights result;
  result.weights.assign(spread.size(), 0);
  for (std::uint32_t id = 0; id < spread.size(); ++id) {
    const double weight = globalWeight(spread[id], articles);
    if (weight < stopWeight || spread[id].count <= 0) continue;
    result.weights[id] = static_cast<std::uint8_t>(std::max(1L, std::lround(weight * 255)));
    result.kept.push_back(id);
  }
  std::sort(result.kept.begin(), result.kept.end(), [&](std::uint32_t a, std::uint32_t b) {
    return joined.table.term(a) < joined.table.term(b);
  });
  return result;
}

/// Returns the squared length of an article; stop words weigh nothing. Sums integers for each code,
/// as the order of the terms depends on the analyzer.
double squaredLength(const AnalyzedArticle& article, const std::vector<std::uint32_t>& common,
                     const std::vector<std::uint8_t>& weights) {
  std::array<std::uint64_t, countOfCode.size()> squares{};
  for (const std::uint32_t entry : article.terms) {
    const std::uint64_t weight = weights[common[numberOf(entry)]];
    squares[codeOf(entry)] += weight * weight;
  }
  double sum = 0;
  for (std::size_t code = 0; code < squares.size(); ++code) {
    const double local = static_cast<double>(localWeights()[code]);
    sum += local * local * static_cast<double>(squares[code]);
  }
  return sum / (255.0 * 255.0);
}

/// Returns the row scale of each article.
std::vector<float> rowScales(const std::vector<double>& squaredLengths) {
  double sum = 0;
  std::size_t count = 0;
  for (const double squared : squaredLengths) {
    if (squared > 0) {
      sum += std::sqrt(squared);
      ++count;
    }
  }
  const double mean = count == 0 ? 0 : sum / static_cast<double>(count);
  std::vector<float> scales;
  scales.reserve(squaredLengths.size());
  for (const double squared : squaredLengths) {
    scales.push_back(squared > 0 ? static_cast<float>(1 / std::sqrt(squared + mean * mean)) : 0);
  }
  return scales;
}

/// Fills in the articles' kept terms in column order, and the row scales.
void fillRows(SparseMatrix& matrix, const std::vector<AnalyzedArticle>& articles,
              const JoinedTerms& joined, const std::vector<std::uint8_t>& weights,
              const std::vector<std::uint32_t>& column, unsigned workers) {
  matrix.start.assign(articles.size() + 1, 0);
  for (std::size_t i = 0; i < articles.size(); ++i) {
    const std::vector<std::uint32_t>& common = joined.common[articles[i].analyzer];
    std::size_t kept = 0;
    for (const std::uint32_t entry : articles[i].terms) {
      if (column[common[numberOf(entry)]] != SparseMatrix::noColumn) ++kept;
    }
    matrix.start[i + 1] = matrix.start[i] + kept;
  }
  matrix.entries.resize(matrix.start.back());
  std::vector<double> squaredLengths(articles.size());
  forEachBlock(articles.size(), 64, workers, [&](std::size_t begin, std::size_t end, unsigned) {
    for (std::size_t i = begin; i < end; ++i) {
      const std::vector<std::uint32_t>& common = joined.common[articles[i].analyzer];
      squaredLengths[i] = squaredLength(articles[i], common, weights);
      const auto first = matrix.entries.begin() + static_cast<std::ptrdiff_t>(matrix.start[i]);
      auto next = first;
      for (const std::uint32_t entry : articles[i].terms) {
        const std::uint32_t target = column[common[numberOf(entry)]];
        if (target != SparseMatrix::noColumn) *next++ = packed(target, codeOf(entry));
      }
      std::sort(first, next);
    }
  });
  matrix.rowScale = rowScales(squaredLengths);
}

}  // namespace

TermMatrix termMatrix(const std::vector<std::unique_ptr<StemAnalyzer>>& analyzers,
                      const std::vector<AnalyzedArticle>& articles, unsigned workers) {
  const JoinedTerms joined = joinTerms(analyzers);
  const std::vector<TermSpread> spread = spreads(joined, articles);
  TermWeights weights = weigh(joined, spread, articles.size(), stopWordWeight);
  // In a book of one page, or of identical ones, no term distinguishes pages: all would be dropped.
  if (weights.kept.empty()) weights = weigh(joined, spread, articles.size(), 0);

  TermMatrix result;
  std::vector<std::uint32_t> column(spread.size(), SparseMatrix::noColumn);
  for (const std::uint32_t id : weights.kept) {
    column[id] = static_cast<std::uint32_t>(result.terms.size());
    result.terms.emplace_back(joined.table.term(id));
    result.globalWeights.push_back(weights.weights[id]);
    result.matrix.columnScale.push_back(static_cast<float>(weights.weights[id]) / 255.0F);
  }
  fillRows(result.matrix, articles, joined, weights.weights, column, workers);
  return result;
}

}  // namespace quorvex::docuvault
