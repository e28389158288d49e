#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex {

/// Longer terms, in bytes after folding, are dropped: they are encoded data, not language.
inline constexpr std::size_t maximumTermSize = 255;

/// One occurrence of a term in a text.
struct Token {
  /// Case-folded term; valid until the next call of next() or reset().
  std::string_view term;
  /// Byte range of the word in the text.
  std::size_t begin = 0;
  std::size_t end = 0;
  /// No term character has joined or shortened the word: its term would be the same without them.
  bool isPlain = true;
};

/// Splits text into case-folded terms: Unicode word segmentation (UAX #29) with extra characters
/// that join words. A word contains at least one letter or digit; Chinese, Japanese and Thai are
/// segmented with ICU's dictionaries. Characters with simple rules, such as Latin, Greek and
/// Cyrillic, take a fast path that yields the same terms. One object serves one thread at a time;
/// reuse it for many texts.
class Tokenizer {
 public:
  /// `termCharacters`: UTF-8, characters that join the words on either side into one term; letters,
  /// digits and white space among them have no effect.
  explicit Tokenizer(std::string_view termCharacters);
  ~Tokenizer();
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;

  /// Starts a text, which must outlive the calls of next(). Accepts any bytes; an ill-formed
  /// sequence ends a word. Takes linear time: a stretch without ASCII white space that needs ICU is
  /// cut every 64 KiB, where a word may be split.
  void reset(std::string_view text);

  /// Has next() append to `terms` what words that are not plain would be without term characters,
  /// each term with a line feed behind it; those of the current text that begin at `from` or later.
  /// With the terms of the plain tokens they are all terms of a tokenizer without term characters.
  void collectParts(std::size_t from, std::string& terms);

  /// Moves to the next term; false at the end.
  bool next(Token& token);

 private:
  struct State;
  std::unique_ptr<State> _state;
};

/// Whether a text behind a blank is cut into the same words as the text alone. In a stretch of many
/// thousand bytes without ASCII white space, what stands before may decide where it is cut.
bool isCutAlikeAnywhere(std::string_view text);

}  // namespace quorvex
