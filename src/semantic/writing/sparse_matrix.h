#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

namespace quorvex::docuvault {

using DenseMatrix = Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// A sparse matrix by rows, four bytes per entry: the column packed with a code (term_weights.h).
/// An entry's value is rowScale[row] * localWeights()[code] * columnScale[column].
struct SparseMatrix {
  std::vector<std::size_t> start;  ///< of each row in `entries`, then the end of the last
  std::vector<std::uint32_t> entries;
  std::vector<float> rowScale;
  std::vector<float> columnScale;

  std::size_t rows() const { return rowScale.size(); }
  std::size_t columns() const { return columnScale.size(); }

  /// Returns rows with entries in ascending column order.
  SparseMatrix transposed() const;
  /// Marks a column that withColumns() drops.
  static constexpr std::uint32_t noColumn = ~std::uint32_t{0};
  /// Renumbers column i as `numbers[i]`, below `count`, and drops columns marked noColumn. The
  /// others must keep their order.
  SparseMatrix withColumns(const std::vector<std::uint32_t>& numbers, std::size_t count) const;
  /// Returns the rows with these numbers, in this order.
  SparseMatrix rowsAt(const std::vector<std::size_t>& numbers) const;
  double squaredNorm() const;
};

/// Returns the product. One thread computes each row, so the result does not depend on `workers`.
DenseMatrix multiply(const SparseMatrix& sparse, const DenseMatrix& dense, unsigned workers);

}  // namespace quorvex::docuvault
