#pragma once

#include <memory>
#include <string_view>

struct sb_stemmer;

namespace quorvex {

/// Reduces words to their stems with the Snowball algorithm of a language; words of a language
/// without one stay unchanged. One object serves one thread at a time.
class Stemmer {
 public:
  /// `language`: ISO 639 code in lower case; may be empty.
  explicit Stemmer(std::string_view language);

  /// Whether the language has a stemmer.
  explicit operator bool() const { return _stemmer != nullptr; }

  /// Valid until the next call; may be `word` itself.
  std::string_view stem(std::string_view word);

 private:
  struct Deleter {
    void operator()(sb_stemmer* stemmer) const;
  };
  std::unique_ptr<sb_stemmer, Deleter> _stemmer;
};

}  // namespace quorvex
