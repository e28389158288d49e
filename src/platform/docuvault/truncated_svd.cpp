#include "platform/docuvault/truncated_svd.h"

#include <algorithm>
#include <numeric>

#include <Eigen/Eigenvalues>

#include "platform/docuvault/parallel.h"

namespace quorvex::docuvault {

namespace {

using Eigen::Index;

constexpr std::size_t oversampling = 16;
constexpr int powerIterations = 2;
/// Directions whose squared length is below this part of the longest are rounding.
constexpr double rankTolerance = 1e-9;

/// Random signs are as good a test matrix as Gaussian ones and need no library function.
DenseMatrix randomSigns(Index rows, Index columns) {
  DenseMatrix signs(rows, columns);
  std::uint64_t state = 0x51a7e5eed;
  for (Index i = 0; i < signs.size(); ++i) {
    // SplitMix64 (Steele, Lea, Flood 2014).
    std::uint64_t z = state += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    signs.data()[i] = (z >> 63) != 0 ? 1.0F : -1.0F;
  }
  return signs;
}

/// dense^T * dense, summed over blocks of rows in their order.
Eigen::MatrixXd gramMatrix(const DenseMatrix& dense, unsigned workers) {
  constexpr std::size_t blockSize = 1024;
  const auto rows = static_cast<std::size_t>(dense.rows());
  std::vector<Eigen::MatrixXf> parts((rows + blockSize - 1) / blockSize);
  forEachBlock(rows, blockSize, workers, [&](std::size_t begin, std::size_t end, unsigned) {
    const auto block = dense.middleRows(static_cast<Index>(begin), static_cast<Index>(end - begin));
    parts[begin / blockSize].noalias() = block.transpose() * block;
  });
  Eigen::MatrixXd sum = Eigen::MatrixXd::Zero(dense.cols(), dense.cols());
  for (const Eigen::MatrixXf& part : parts)
    sum += part.cast<double>();
  return sum;
}

/// dense * small, each block of rows the work of one thread.
DenseMatrix product(const DenseMatrix& dense, const Eigen::MatrixXf& small, unsigned workers) {
  DenseMatrix result(dense.rows(), small.cols());
  forEachBlock(static_cast<std::size_t>(dense.rows()), 1024, workers,
               [&](std::size_t begin, std::size_t end, unsigned) {
                 const auto first = static_cast<Index>(begin);
                 const auto count = static_cast<Index>(end - begin);
                 result.middleRows(first, count).noalias() = dense.middleRows(first, count) * small;
               });
  return result;
}

/// The principal directions of a Gram matrix, longest first, each scaled to give unit columns.
/// Short ones are left out, so that dependent columns do no harm.
Eigen::MatrixXf whitening(const Eigen::MatrixXd& gram, std::size_t most) {
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(gram);
  const Eigen::VectorXd& values = solver.eigenvalues();  // ascending
  const Index size = values.size();
  const double longest = size == 0 ? 0 : values[size - 1];
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

SparseMatrix sampledRows(const SparseMatrix& matrix) {
  const std::size_t count = std::min(matrix.rows(), mostSampledRows);
  std::vector<std::size_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i)
    numbers[i] = i * matrix.rows() / count;
  return matrix.rowsAt(numbers);
}

/// sample^T * Q, where the columns of Q span the sample's leading left singular vectors.
DenseMatrix projectedOnRange(const SparseMatrix& sample, std::size_t width, unsigned workers) {
  const SparseMatrix transposed = sample.transposed();
  DenseMatrix range = randomSigns(static_cast<Index>(sample.rows()), static_cast<Index>(width));
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
  if (dimensions > 0 && squaredNorm > 0) {
    const SparseMatrix sample = sampledRows(matrix);
    const std::size_t width =
        std::min({dimensions + oversampling, sample.rows(), sample.columns()});
    const DenseMatrix projected = projectedOnRange(sample, width, workers);
    // projected * whitening = V. Multiplying by it last needs a row for each article instead of
    // one for each term.
    const Eigen::MatrixXf small = whitening(gramMatrix(projected, workers), dimensions);
    folded = product(multiply(matrix, projected, workers), small, workers);
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
