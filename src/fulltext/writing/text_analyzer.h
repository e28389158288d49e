#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/format/analysis_settings.h"
#include "fulltext/writing/operator_counts.h"
#include "platform/text_words.h"
#include "text/term_table.h"
#include "text/tokenizer.h"

namespace quorvex {

/// One text as term numbers.
struct AnalyzedText {
  /// One varint per term: 0 for one or more words left out, else the term's number plus 1.
  std::string codes;
  std::uint32_t length = 0;        ///< terms kept
  std::size_t operatorsBegin = 0;  ///< its counts of operators
  std::size_t operatorsEnd = 0;
};

/// Turns texts into its own term numbers, for one thread at a time.
class TextAnalyzer {
 public:
  explicit TextAnalyzer(const AnalysisSettings& settings);

  /// `boundaries`: ascending offsets in the text, which become the numbers of codes before them.
  /// `wordsFrom`: where a part of the text begins, behind a blank, whose words words() returns
  /// then.
  AnalyzedText add(std::string_view text, std::span<std::uint32_t> boundaries = {},
                   std::size_t wordsFrom = noWords);
  static constexpr std::size_t noWords = std::string_view::npos;

  /// Of the last text; null if the part alone would be cut into other words.
  std::optional<TextWords> words() const;

  /// Distinct terms so far, not counting the stop words.
  std::uint32_t termCount() const { return _terms.size() - _stopWordCount; }
  std::string_view term(std::uint32_t number) const { return _terms.term(_stopWordCount + number); }
  const OperatorCounts& operators() const { return _operators; }

 private:
  static constexpr std::uint32_t tooShort = UINT32_MAX;
  struct NumberedToken : Token {
    std::uint32_t number = tooShort;  ///< among the terms
  };
  static constexpr std::size_t batchSize = 64;

  bool isTooShort(std::string_view term) const;
  void startText(std::string_view text, std::size_t wordsFrom);
  std::span<const NumberedToken> nextTokens(std::string_view text);
  void noteWord(const NumberedToken& token);

  std::uint64_t _minimumTermLength;
  Tokenizer _tokenizer;
  TermTable _terms;  ///< the stop words first: one look-up finds any term
  std::uint32_t _stopWordCount;
  OperatorCounts _operators;
  // The current tokens, whose terms are looked up together.
  std::array<NumberedToken, batchSize> _tokens;
  std::array<char, batchSize * maximumTermSize> _foldedTerms{};
  // Of the current text; kept for their memory.
  std::string _codes;
  bool _hasWords = false;
  std::size_t _wordsFrom = noWords;
  std::vector<std::uint32_t> _numbers;
  std::string _otherWords;
};

/// Reads the number at `position` in a text's codes and moves past it.
inline std::uint32_t nextTermNumber(const char*& position) {
  std::uint32_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto group = static_cast<unsigned char>(*position++);
    value |= (group & 0x7FU) << shift;
    if (group < 0x80) return value;
  }
}

}  // namespace quorvex
