#pragma once

#include <vector>

#include "semantic/writing/sparse_matrix.h"

namespace quorvex::docuvault {

/// Rows of a matrix in the space of its leading right singular vectors.
struct ReducedRows {
  DenseMatrix rows;            ///< matrix * V, in the order of the matrix's rows
  std::vector<double> energy;  ///< squared length of each column of `rows`
  double shareOfVariance = 0;  ///< part of the matrix's squared norm in `rows`
};

/// Maximum number of rows used to find the singular vectors.
inline constexpr std::size_t mostSampledRows = 2048;

/// Computes a truncated singular value decomposition by randomised subspace iteration (Halko,
/// Martinsson, Tropp 2011, algorithms 4.4 and 5.1) with a fixed seed. Finds the vectors from at
/// most `mostSampledRows` rows, spread over all, and folds in all rows: a sample of a large matrix
/// has its leading directions. A column with an entry in only one sampled row relates it to no
/// other and is ignored. Returns fewer dimensions if the rank is lower, none for a zero matrix. The
/// result does not depend on `workers`.
ReducedRows truncatedSvd(const SparseMatrix& matrix, std::size_t dimensions, unsigned workers);

}  // namespace quorvex::docuvault
