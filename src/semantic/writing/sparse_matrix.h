#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

namespace quorvex::docuvault {

using DenseMatrix = Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// A sparse matrix in rows, four bytes an entry: the column, packed with a code (term_weights.h).
/// The entry's value is rowScale[row] * localWeights()[code] * columnScale[column].
struct SparseMatrix {
  std::vector<std::size_t> start;  ///< of each row in `entries`, and the end of the last
  std::vector<std::uint32_t> entries;
  std::vector<float> rowScale;
  std::vector<float> columnScale;

  std::size_t rows() const { return rowScale.size(); }
  std::size_t columns() const { return columnScale.size(); }

  /// Entries of a row come in ascending order of their columns.
  SparseMatrix transposed() const;
  /// Column numbers for withColumns().
  static constexpr std::uint32_t noColumn = ~std::uint32_t{0};
  /// Column i becomes column `numbers[i]`, below `count`; entries of noColumn are left out. Kept
  /// columns keep their order.
  SparseMatrix withColumns(const std::vector<std::uint32_t>& numbers, std::size_t count) const;
  /// The rows with these numbers, in this order.
  SparseMatrix rowsAt(const std::vector<std::size_t>& numbers) const;
  double squaredNorm() const;
};

/// The product of both. Every row is the work of one thread, so the result does not depend on their
/// number.
DenseMatrix multiply(const SparseMatrix& sparse, const DenseMatrix& dense, unsigned workers);

}  // namespace quorvex::docuvault
