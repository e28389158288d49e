#include "semantic/writing/truncated_svd.h"

#include <Eigen/SVD>
#include <gtest/gtest.h>

#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {
namespace {

/// Returns a matrix with an entry wherever `codeAt` returns a non-negative code.
template <typename CodeAt>
SparseMatrix matrixOf(std::size_t rows, std::size_t columns, CodeAt codeAt) {
  SparseMatrix matrix;
  matrix.start.push_back(0);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t column = 0; column < columns; ++column) {
      const int code = codeAt(row, column);
      if (code < 0) continue;
      matrix.entries.push_back(
          packed(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(code)));
    }
    matrix.start.push_back(matrix.entries.size());
    matrix.rowScale.push_back(1.0F / static_cast<float>(row % 3 + 1));
  }
  for (std::size_t column = 0; column < columns; ++column) {
    matrix.columnScale.push_back(0.5F + static_cast<float>(column % 5));
  }
  return matrix;
}

Eigen::MatrixXd dense(const SparseMatrix& matrix) {
  const DenseMatrix identity = DenseMatrix::Identity(static_cast<Eigen::Index>(matrix.columns()),
                                                     static_cast<Eigen::Index>(matrix.columns()));
  return multiply(matrix, identity, 1).cast<double>();
}

// However many entries are added at a time, an index has the same bytes.
TEST(SparseMatrix, RoundsAfterEachEntryOfARow) {
  const SparseMatrix sparse = matrixOf(12, 12, [](std::size_t row, std::size_t column) {
    return column < row ? static_cast<int>((row * 5 + column * 7) % 16) : -1;
  });
  DenseMatrix dense(12, 7);
  for (Eigen::Index i = 0; i < dense.size(); ++i)
    dense.data()[i] = 1.0F / static_cast<float>(i * 37 % 101 + 3) - 0.1F;
  const DenseMatrix product = multiply(sparse, dense, 1);
  for (std::size_t row = 0; row < sparse.rows(); ++row) {
    Eigen::RowVectorXf sum = Eigen::RowVectorXf::Zero(dense.cols());
    for (std::size_t i = sparse.start[row]; i < sparse.start[row + 1]; ++i) {
      const std::uint32_t column = numberOf(sparse.entries[i]);
      sum += localWeights()[codeOf(sparse.entries[i])] * sparse.columnScale[column] *
             dense.row(column);
    }
    EXPECT_EQ(product.row(static_cast<Eigen::Index>(row)), sparse.rowScale[row] * sum) << row;
  }
}

TEST(TruncatedSvd, AgreesWithTheExactDecomposition) {
  const auto mixed = [](std::size_t row, std::size_t column) {
    const auto number = static_cast<int>((row * 7919 + column * 104729 + row * column * 31) % 23);
    return number < 16 ? number : -1;
  };
  const auto rankTwo = [](std::size_t row, std::size_t column) {
    return row % 2 == column % 2 ? static_cast<int>(row % 2) : -1;
  };
  struct {
    const char* name;
    SparseMatrix matrix;
    std::size_t dimensions;
    std::size_t kept;
  } cases[] = {
      {"full rank", matrixOf(30, 20, mixed), 5, 5},
      {"one column empty", matrixOf(30, 8, mixed), 12, 7},
      {"wide", matrixOf(6, 40, mixed), 6, 6},
      {"rank two", matrixOf(24, 24, rankTwo), 6, 2},
      {"zero", matrixOf(5, 5, [](std::size_t, std::size_t) { return -1; }), 3, 0},
      {"no rows", matrixOf(0, 0, mixed), 3, 0},
  };
  for (const auto& c : cases) {
    const ReducedRows reduced = truncatedSvd(c.matrix, c.dimensions, 2);
    ASSERT_EQ(static_cast<std::size_t>(reduced.rows.cols()), c.kept) << c.name;
    if (c.kept == 0) continue;
    const Eigen::JacobiSVD<Eigen::MatrixXd> exact(dense(c.matrix),
                                                  Eigen::ComputeThinU | Eigen::ComputeThinV);
    const auto kept = static_cast<Eigen::Index>(c.kept);
    const Eigen::MatrixXd expected =
        exact.matrixU().leftCols(kept) * exact.singularValues().head(kept).asDiagonal();
    // The signs of the vectors are arbitrary; the products of the rows are not.
    const Eigen::MatrixXd rows = reduced.rows.cast<double>();
    const double scale = exact.singularValues().squaredNorm();
    EXPECT_LT((rows * rows.transpose() - expected * expected.transpose()).norm() / scale, 1e-3)
        << c.name;
    EXPECT_NEAR(reduced.shareOfVariance, expected.squaredNorm() / scale, 1e-3) << c.name;
  }
}

TEST(TruncatedSvd, FoldsInTheRowsThatItDidNotSample) {
  // Three subjects, so three dimensions represent all rows however few are sampled.
  const SparseMatrix matrix =
      matrixOf(3 * mostSampledRows, 30,
               [](std::size_t row, std::size_t column) { return row % 3 == column % 3 ? 2 : -1; });
  EXPECT_NEAR(truncatedSvd(matrix, 3, 2).shareOfVariance, 1, 1e-4);
}

}  // namespace
}  // namespace quorvex::docuvault
