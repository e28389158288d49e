#include "semantic/writing/sparse_matrix.h"

#include <algorithm>

#include "common/parallel.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

SparseMatrix SparseMatrix::transposed() const {
  SparseMatrix result;
  result.rowScale = columnScale;
  result.columnScale = rowScale;
  result.start.assign(columns() + 1, 0);
  for (const std::uint32_t entry : entries)
    ++result.start[numberOf(entry) + 1];
  for (std::size_t row = 0; row < columns(); ++row)
    result.start[row + 1] += result.start[row];
  result.entries.resize(entries.size());
  std::vector<std::size_t> next(result.start.begin(), result.start.end() - 1);
  for (std::size_t row = 0; row < rows(); ++row) {
    for (std::size_t i = start[row]; i < start[row + 1]; ++i) {
      const std::uint32_t entry = entries[i];
      result.entries[next[numberOf(entry)]++] =
          packed(static_cast<std::uint32_t>(row), codeOf(entry));
    }
  }
  return result;
}

SparseMatrix SparseMatrix::withColumns(const std::vector<std::uint32_t>& numbers,
                                       std::size_t count) const {
  SparseMatrix result;
  result.rowScale = rowScale;
  result.columnScale.resize(count);
  for (std::size_t column = 0; column < columns(); ++column) {
    if (numbers[column] != noColumn) result.columnScale[numbers[column]] = columnScale[column];
  }
  result.start.reserve(start.size());
  result.start.push_back(0);
  result.entries.reserve(entries.size());
  for (std::size_t row = 0; row < rows(); ++row) {
    for (std::size_t i = start[row]; i < start[row + 1]; ++i) {
      const std::uint32_t column = numbers[numberOf(entries[i])];
      if (column == noColumn) continue;
      result.entries.push_back(packed(column, codeOf(entries[i])));
    }
    result.start.push_back(result.entries.size());
  }
  return result;
}

SparseMatrix SparseMatrix::rowsAt(const std::vector<std::size_t>& numbers) const {
  SparseMatrix result;
  result.columnScale = columnScale;
  result.start.push_back(0);
  for (const std::size_t row : numbers) {
    const auto first = entries.begin() + static_cast<std::ptrdiff_t>(start[row]);
    const auto last = entries.begin() + static_cast<std::ptrdiff_t>(start[row + 1]);
    result.entries.insert(result.entries.end(), first, last);
    result.start.push_back(result.entries.size());
    result.rowScale.push_back(rowScale[row]);
  }
  return result;
}

double SparseMatrix::squaredNorm() const {
  double sum = 0;
  for (std::size_t row = 0; row < rows(); ++row) {
    double rowSum = 0;
    for (std::size_t i = start[row]; i < start[row + 1]; ++i) {
      const double value = static_cast<double>(localWeights()[codeOf(entries[i])]) *
                           static_cast<double>(columnScale[numberOf(entries[i])]);
      rowSum += value * value;
    }
    sum += rowSum * static_cast<double>(rowScale[row]) * static_cast<double>(rowScale[row]);
  }
  return sum;
}

DenseMatrix multiply(const SparseMatrix& sparse, const DenseMatrix& dense, unsigned workers) {
  const std::size_t width = static_cast<std::size_t>(dense.cols());
  DenseMatrix result(static_cast<Eigen::Index>(sparse.rows()), dense.cols());
  const std::array<float, 16> local = localWeights();
  forEachBlock(sparse.rows(), 64, workers, [&](std::size_t begin, std::size_t end, unsigned) {
    std::vector<float> sum(width);
    for (std::size_t row = begin; row < end; ++row) {
      std::fill(sum.begin(), sum.end(), 0.0F);
      for (std::size_t i = sparse.start[row]; i < sparse.start[row + 1]; ++i) {
        const std::uint32_t entry = sparse.entries[i];
        const std::size_t column = numberOf(entry);
        const float value = local[codeOf(entry)] * sparse.columnScale[column];
        const float* source = dense.data() + column * width;
        for (std::size_t j = 0; j < width; ++j)
          sum[j] += value * source[j];
      }
      float* target = result.data() + row * width;
      for (std::size_t j = 0; j < width; ++j)
        target[j] = sparse.rowScale[row] * sum[j];
    }
  });
  return result;
}

}  // namespace quorvex::docuvault
