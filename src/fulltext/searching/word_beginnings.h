#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/term_dictionary.h"

namespace quorvex::textsearch {

/// Finds beginnings of terms that are like one that is being typed, by a walk along its characters:
/// without a look at most of the terms.
class WordBeginnings {
 public:
  explicit WordBeginnings(const TermDictionary& terms) : _cursor(terms, 0) {}

  /// Whether any term begins so.
  bool has(std::string_view beginning);
  /// Returns the beginnings that differ from the word in the marks of letters only.
  std::vector<std::string> unmarked(std::string_view word);
  /// Returns the beginnings that are one edit from the word, behind its first letter and not in its
  /// last, which may be followed by more: two letters swapped, one missing, one too many or another
  /// one.
  std::vector<std::string> mistyped(std::string_view word);
  /// Returns how many bytes of the word a term begins with.
  std::size_t longest(std::string_view word);

 private:
  using Characters = std::span<const std::string_view>;

  std::vector<std::string> nextCharacters(const std::string& beginning, std::string_view from);
  void walk(std::string& beginning, Characters rest, std::vector<std::string>& found);

  TermDictionary::Cursor _cursor;
  unsigned _looksLeft = 0;
};

}  // namespace quorvex::textsearch
