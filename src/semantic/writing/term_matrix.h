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

/// The weighted articles of a book, a row for each.
struct TermMatrix {
  std::vector<std::string> terms;           ///< of the columns, in byte order
  std::vector<std::uint8_t> globalWeights;  ///< of the columns, in parts of 255
  SparseMatrix matrix;
};

/// Joins the analyzers' terms, drops stop words and weighs the rest. The result does not depend on
/// which analyzer an article went through.
TermMatrix termMatrix(const std::vector<std::unique_ptr<StemAnalyzer>>& analyzers,
                      const std::vector<AnalyzedArticle>& articles, unsigned workers);

}  // namespace quorvex::docuvault
