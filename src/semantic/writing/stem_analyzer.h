#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "text/stemmer.h"
#include "text/term_table.h"
#include "text/tokenizer.h"

namespace quorvex::docuvault {

/// A term and its weighted count.
struct TermCount {
  std::uint32_t term;
  std::uint32_t count;
};

/// Splits texts into stemmed terms, numbers the terms and counts them. Stems each distinct word
/// only once. One object serves one thread at a time.
class StemAnalyzer {
 public:
  explicit StemAnalyzer(std::string_view language);

  /// Adds the terms of `text` to the counts, each occurrence as `weight`.
  void count(std::string_view text, std::uint32_t weight);
  /// The same for words that others have cut without term characters and numbered. A number must
  /// stand for the same term in all calls.
  void count(std::span<const std::uint32_t> words, std::uint32_t weight,
             const std::function<std::string_view(std::uint32_t)>& termOf);
  /// The same for a single term of a text.
  void countTerm(std::string_view term, std::uint32_t weight);
  /// Returns the counts since the last call and resets them; terms are in order of first
  /// occurrence.
  std::vector<TermCount> takeCounts();

  std::string_view term(std::uint32_t id) const { return _stems.term(id); }
  std::uint32_t termCount() const { return _stems.size(); }

 private:
  static constexpr std::uint32_t noTerm = ~std::uint32_t{0};

  std::uint32_t stemOf(std::string_view word);
  std::uint32_t newStemOf(std::string_view word);
  void add(std::uint32_t stem, std::uint32_t weight) {
    if (stem == noTerm) return;
    if (_counts[stem] == 0) _counted.push_back(stem);
    _counts[stem] += weight;
  }

  Tokenizer _tokenizer;
  Stemmer _stemmer;
  TermTable _words;
  std::vector<std::uint32_t> _stemOfWord;
  std::vector<std::uint32_t> _stemOfNumber;  ///< of others' words
  TermTable _stems;
  std::vector<std::uint32_t> _counts;  ///< by stem
  std::vector<std::uint32_t> _counted;
};

}  // namespace quorvex::docuvault
