#include "semantic/writing/sparse_matrix.h"

#include <algorithm>
#include <array>
#include <span>

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

namespace {

/// Entries of a row that are added in one pass over its sum, which then stays in a register for all
/// of them. More gain little.
constexpr std::size_t entriesPerPass = 4;

/// Adds multiples of rows to `sum`, one after the other for each of its numbers, so that they are
/// rounded as if each row had a pass of its own.
template <std::size_t count>
void addRows(std::span<const std::uint32_t, count> entries, const SparseMatrix& sparse,
             const DenseMatrix& dense, std::span<const float> local, std::span<float> sum) {
  std::array<float, count> factors{};
  std::array<const float*, count> rows{};
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t column = numberOf(entries[i]);
    factors[i] = local[codeOf(entries[i])] * sparse.columnScale[column];
    rows[i] = dense.data() + column * sum.size();
  }
  for (std::size_t j = 0; j < sum.size(); ++j) {
    float total = sum[j];
    for (std::size_t i = 0; i < count; ++i)
      total += factors[i] * rows[i][j];
    sum[j] = total;
  }
}

}  // namespace

DenseMatrix multiply(const SparseMatrix& sparse, const DenseMatrix& dense, unsigned workers) {
  const std::size_t width = static_cast<std::size_t>(dense.cols());
  DenseMatrix result(static_cast<Eigen::Index>(sparse.rows()), dense.cols());
  const std::array<float, 16> local = localWeights();
  forEachBlock(sparse.rows(), 64, workers, [&](std::size_t begin, std::size_t end, unsigned) {
    std::vector<float> sum(width);
    for (std::size_t row = begin; row < end; ++row) {
      std::fill(sum.begin(), sum.end(), 0.0F);
      std::span<const std::uint32_t> rest(sparse.entries.data() + sparse.start[row],
                                          sparse.start[row + 1] - sparse.start[row]);
      for (; rest.size() >= entriesPerPass; rest = rest.subspan(entriesPerPass))
        addRows(rest.first<entriesPerPass>(), sparse, dense, local, sum);
      for (; !rest.empty(); rest = rest.subspan(1))
        addRows(rest.first<1>(), sparse, dense, local, sum);
      float* target = result.data() + row * width;
      for (std::size_t j = 0; j < width; ++j)
        target[j] = sparse.rowScale[row] * sum[j];
    }
  });
  return result;
}

}  // namespace quorvex::docuvault
