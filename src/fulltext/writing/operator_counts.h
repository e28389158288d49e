#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "text/operators.h"
#include "text/term_table.h"

namespace quorvex {

/// How often one text has an operator.
struct OperatorCount {
  std::uint32_t number = 0;  ///< of the operator, for one OperatorCounts
  std::uint32_t count = 0;
};

/// Counts the operators of texts, for one thread. Numbers them in order of first appearance.
class OperatorCounts {
 public:
  /// Counts those of the current text between two words, or beside one.
  void add(std::string_view text, std::size_t begin, std::size_t end) {
    // Most words are one blank apart.
    if (end - begin == 1 && text[begin] == ' ') return;
    for (; begin < end; ++begin) {
      if (mayBeginOperator(text, begin)) return scan(text, begin, end);
    }
  }
  void endText();

  /// Of all texts so far, one text behind the other.
  const std::vector<OperatorCount>& counts() const { return _counts; }
  std::uint32_t operatorCount() const { return _operators.size(); }
  std::string_view operatorOf(std::uint32_t number) const { return _operators.term(number); }

 private:
  void scan(std::string_view text, std::size_t begin, std::size_t end);
  std::uint32_t numberOf(std::string_view found);

  TermTable _operators;
  std::array<std::uint32_t, 128> _numbersOfSigns{};  ///< plus 1; saves looking up single signs
  std::vector<OperatorCount> _counts;
  std::size_t _textBegin = 0;          ///< of the current text in the counts
  std::vector<std::uint32_t> _places;  ///< of each operator in the counts; may be of earlier texts
};

}  // namespace quorvex
