#pragma once

#include <vector>

#include "semantic/writing/sparse_matrix.h"

namespace quorvex::docuvault {

/// Rows of a matrix in the space of its leading right singular vectors.
struct ReducedRows {
  DenseMatrix rows;            ///< matrix * V: a row for each of the matrix
  std::vector<double> energy;  ///< squared length of each column of `rows`
  double shareOfVariance = 0;  ///< of the matrix's squared norm, what `rows` keep
};

/// How many rows the singular vectors are found from.
inline constexpr std::size_t mostSampledRows = 2048;

/// Truncated singular value decomposition by randomised subspace iteration (Halko, Martinsson,
/// Tropp 2011, algorithms 4.4 and 5.1) with a fixed seed. The vectors come from at most
/// `mostSampledRows` rows, spread over all, and all rows are folded into their space: the leading
/// directions of a large matrix are those of a sample of it. A column with an entry in only one of
/// those rows relates it to no other and takes no part. Gives fewer dimensions when the rank
/// is lower, none for a zero matrix. The result does not depend on `workers`.
ReducedRows truncatedSvd(const SparseMatrix& matrix, std::size_t dimensions, unsigned workers);

}  // namespace quorvex::docuvault
