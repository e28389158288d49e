#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fulltext/format/analysis_settings.h"
#include "fulltext/writing/operator_counts.h"
#include "text/term_table.h"
#include "text/tokenizer.h"

namespace quorvex {

/// One text as term numbers.
struct AnalyzedText {
  std::uint64_t offset = 0;  ///< of its codes, in bytes
  std::uint64_t size = 0;
  std::uint32_t length = 0;        ///< terms kept
  std::size_t operatorsBegin = 0;  ///< its counts of operators
  std::size_t operatorsEnd = 0;
};

/// Turns texts into its own term numbers, for one thread. Texts are kept as one varint per term: 0
/// for one or more words left out, else the term number plus 1.
class TextAnalyzer {
 public:
  explicit TextAnalyzer(const AnalysisSettings& settings);

  /// `boundaries`: ascending offsets in the text, which become the numbers of codes before them.
  AnalyzedText add(std::string_view text, std::span<std::uint32_t> boundaries = {});

  /// Distinct terms so far, not counting the stop words.
  std::uint32_t termCount() const { return _terms.size() - _stopWordCount; }
  std::string_view term(std::uint32_t number) const { return _terms.term(_stopWordCount + number); }
  std::string_view codes() const { return _codes; }
  const OperatorCounts& operators() const { return _operators; }
  void dropCodes() { _codes = std::string(); }

 private:
  bool isTooShort(std::string_view term) const;

  std::uint64_t _minimumTermLength;
  Tokenizer _tokenizer;
  TermTable _terms;  ///< the stop words first: one look-up finds any term
  std::uint32_t _stopWordCount;
  std::string _codes;
  OperatorCounts _operators;
};

/// Reads the number at `position` in an analyzer's codes and moves past it.
inline std::uint32_t nextTermNumber(const char*& position) {
  std::uint32_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto group = static_cast<unsigned char>(*position++);
    value |= (group & 0x7FU) << shift;
    if (group < 0x80) return value;
  }
}

}  // namespace quorvex
