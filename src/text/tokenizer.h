#pragma once

#include <memory>
#include <string_view>

namespace quorvex {

/// Longer terms, in bytes after folding, are left out: they are encoded data, not language.
inline constexpr std::size_t maximumTermSize = 255;

/// One term occurrence of a text.
struct Token {
  /// Case-folded term; valid until the next call of next() or reset().
  std::string_view term;
  /// Where the word stands in the text, in bytes.
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// Cuts text into terms: Unicode word segmentation (UAX #29) with extra characters that hold words
/// together, case folded. Words hold at least one letter or digit; Chinese, Japanese and Thai are
/// cut by ICU's dictionaries. Runs of characters with simple rules, which is all of Latin, Greek
/// and Cyrillic, take a fast path that gives the same terms. One object serves one thread at a time
/// and is meant to be reused for many texts.
class Tokenizer {
 public:
  /// `termCharacters`: UTF-8, characters that join the words at their sides into one term; letters,
  /// digits and white space among them have no effect.
  explicit Tokenizer(std::string_view termCharacters);
  ~Tokenizer();
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;

  /// Starts on a text, which must outlive the calls of next(). Any bytes are accepted; an
  /// ill-formed sequence ends a word. Linear in the text: a stretch without ASCII white space that
  /// needs ICU is cut every 64 KiB, where a word may be split.
  void reset(std::string_view text);

  /// Moves to the next term; false at the end.
  bool next(Token& token);

 private:
  struct State;
  std::unique_ptr<State> _state;
};

}  // namespace quorvex
