#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "semantic/writing/sparse_matrix.h"
#include "semantic/writing/stem_analyzer.h"

namespace quorvex::docuvault {

/// An article's terms, numbered by the analyzer that found them.
struct AnalyzedArticle {
  std::size_t analyzer = 0;
  std::vector<std::uint32_t> terms;
};

/// The weighted articles of a book, one row each.
struct TermMatrix {
  std::vector<std::string> terms;           ///< of the columns, sorted by bytes
  std::vector<std::uint8_t> globalWeights;  ///< of the columns, in 255ths
  SparseMatrix matrix;
};

/// Merges the analyzers' terms, drops stop words and weights the rest. The result does not depend
/// on which analyzer handled an article.
TermMatrix termMatrix(const std::vector<std::unique_ptr<StemAnalyzer>>& analyzers,
                      const std::vector<AnalyzedArticle>& articles, unsigned workers);

}  // namespace quorvex::docuvault
