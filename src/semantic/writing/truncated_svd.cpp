#include "semantic/writing/truncated_svd.h"

#include <algorithm>
#include <numeric>

#include <Eigen/Eigenvalues>

#include "common/parallel.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

using Eigen::Index;

constexpr std::size_t oversampling = 16;
constexpr int powerIterations = 3;
/// Directions with a squared length below this fraction of the longest are rounding errors.
constexpr double rankTolerance = 1e-11;

/// Returns the n-th number of SplitMix64 (Steele, Lea, Flood 2014).
std::uint64_t randomNumber(std::uint64_t n) {
  std::uint64_t z = 0x51a7e5eed + n * 0x9e3779b97f4a7c15;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
  z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
  return z ^ (z >> 31);
}

/// Uniform numbers make as good a test matrix as Gaussian ones and need no library function. Random
/// signs suffice for large matrices, but can miss everything in one with two equal rows.
DenseMatrix randomMatrix(Index rows, Index columns) {
  DenseMatrix numbers(rows, columns);
  for (Index i = 0; i < numbers.size(); ++i) {
    const auto number = static_cast<float>(randomNumber(static_cast<std::uint64_t>(i)) >> 40);
    numbers.data()[i] = number / static_cast<float>(1U << 23) - 1;
  }
  return numbers;
}

/// Rows of a dense matrix that a thread processes at a time.
constexpr std::size_t rowsPerBlock = 256;

/// Returns the lower half of dense^T * dense, summed over blocks of rows in order. Needs double
/// precision: it squares the ratio of the longest direction to the shortest, so float would lose
/// the latter.
Eigen::MatrixXd gramMatrix(const DenseMatrix& dense, unsigned workers) {
  const auto rows = static_cast<std::size_t>(dense.rows());
  const Eigen::MatrixXd zero = Eigen::MatrixXd::Zero(dense.cols(), dense.cols());
  std::vector<Eigen::MatrixXd> parts((rows + rowsPerBlock - 1) / rowsPerBlock);
  forEachBlock(rows, rowsPerBlock, workers, [&](std::size_t begin, std::size_t end, unsigned) {
    const Eigen::MatrixXd block =
        dense.middleRows(static_cast<Index>(begin), static_cast<Index>(end - begin)).cast<double>();
    Eigen::MatrixXd& part = parts[begin / rowsPerBlock] = zero;
    part.selfadjointView<Eigen::Lower>().rankUpdate(block.transpose());
  });
  return std::accumulate(parts.begin(), parts.end(), zero);
}

/// Returns dense * small; one thread computes each block of rows.
DenseMatrix product(const DenseMatrix& dense, const Eigen::MatrixXf& small, unsigned workers) {
  DenseMatrix result(dense.rows(), small.cols());
  forEachBlock(static_cast<std::size_t>(dense.rows()), rowsPerBlock, workers,
               [&](std::size_t begin, std::size_t end, unsigned) {
                 const auto first = static_cast<Index>(begin);
                 const auto count = static_cast<Index>(end - begin);
                 result.middleRows(first, count).noalias() = dense.middleRows(first, count) * small;
               });
  return result;
}

/// Returns the principal directions of a Gram matrix, of which it reads the lower half: longest
/// first, each scaled for unit columns. Omits short ones, so that dependent columns do no harm.
Eigen::MatrixXf whitening(const Eigen::MatrixXd& gram, std::size_t most) {
  const Index size = gram.rows();
  if (size == 0) return {};
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(gram);
  const Eigen::VectorXd& values = solver.eigenvalues();  // ascending
  const double longest = values[size - 1];
  Index count = 0;
  while (count < size && count < static_cast<Index>(most) &&
         values[size - 1 - count] > std::max(longest * rankTolerance, 1e-30)) {
    ++count;
  }
  Eigen::MatrixXf result(size, count);
  for (Index j = 0; j < count; ++j) {
    result.col(j) =
        (solver.eigenvectors().col(size - 1 - j) / std::sqrt(values[size - 1 - j])).cast<float>();
  }
  return result;
}

/// Picks a random row from each of equally long ranges, as a book may repeat a pattern.
std::vector<std::size_t> sampledRows(const SparseMatrix& matrix) {
  const std::size_t count = std::min(matrix.rows(), mostSampledRows);
  std::vector<std::size_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t begin = i * matrix.rows() / count;
    const std::size_t end = (i + 1) * matrix.rows() / count;
    numbers[i] = begin + randomNumber(i) % (end - begin);
  }
  return numbers;
}

/// Returns the matrix without columns that have entries in fewer than two of these rows.
SparseMatrix joiningColumns(const SparseMatrix& matrix, const std::vector<std::size_t>& rows) {
  std::vector<std::uint32_t> numbers(matrix.columns(), 0);
  for (const std::size_t row : rows) {
    for (std::size_t i = matrix.start[row]; i < matrix.start[row + 1]; ++i) {
      ++numbers[numberOf(matrix.entries[i])];
    }
  }
  std::uint32_t count = 0;
  for (std::uint32_t& number : numbers) {
    number = number < 2 && rows.size() > 1 ? SparseMatrix::noColumn : count++;
  }
  return matrix.withColumns(numbers, count);
}

/// Returns sample^T * Q, where the columns of Q span the sample's leading left singular vectors.
DenseMatrix projectedOnRange(const SparseMatrix& sample, std::size_t width, unsigned workers) {
  const SparseMatrix transposed = sample.transposed();
  DenseMatrix range = randomMatrix(static_cast<Index>(sample.rows()), static_cast<Index>(width));
  for (int iteration = 0; iteration < powerIterations; ++iteration) {
    range = multiply(sample, multiply(transposed, range, workers), workers);
    range = product(range, whitening(gramMatrix(range, workers), width), workers);
  }
  return multiply(transposed, range, workers);
}

}  // namespace

ReducedRows truncatedSvd(const SparseMatrix& matrix, std::size_t dimensions, unsigned workers) {
  ReducedRows result;
  const double squaredNorm = matrix.squaredNorm();
  DenseMatrix folded(static_cast<Index>(matrix.rows()), 0);
  const std::vector<std::size_t> sampled = sampledRows(matrix);
  const SparseMatrix joining = joiningColumns(matrix, sampled);
  if (dimensions > 0 && squaredNorm > 0 && joining.columns() > 0) {
    const SparseMatrix sample = joining.rowsAt(sampled);
    const std::size_t width =
        std::min({dimensions + oversampling, sample.rows(), sample.columns()});
    const DenseMatrix projected = projectedOnRange(sample, width, workers);
    // projected * whitening = V. Multiplying by the whitening last works on one row per article
    // instead of one per term.
    const Eigen::MatrixXf small = whitening(gramMatrix(projected, workers), dimensions);
    folded = product(multiply(joining, projected, workers), small, workers);
  }
  double kept = 0;
  for (Index j = 0; j < folded.cols(); ++j) {
    result.energy.push_back(folded.col(j).cast<double>().squaredNorm());
    kept += result.energy.back();
  }
  result.rows = std::move(folded);
  result.shareOfVariance = squaredNorm > 0 ? std::min(1.0, kept / squaredNorm) : 0;
  return result;
}

}  // namespace quorvex::docuvault
