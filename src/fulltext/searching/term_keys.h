#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"

namespace quorvex::textsearch {

/// Finds terms of texts and titles that are a word written otherwise or that it is a part of, by
/// the keys of text/word_key.h. Immutable; `index` must outlive it.
class TermKeys {
 public:
  /// A term and the byte range of a part in it.
  struct JoinedTerm {
    std::string term;
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  static constexpr std::size_t mostTerms = JoinedTermTable::mostTerms;

  explicit TermKeys(const IndexReader& index) : _index(index) {}

  /// Returns the terms that share a key with the word, without the word itself, in byte order.
  std::vector<std::string> likeWord(std::string_view word) const;
  /// Returns the joined terms of which this is, by its key, a part of at least two characters or
  /// all behind a separator of names ("path.join" in "os.path.join"), those in the most documents
  /// first, at most `mostTerms`.
  std::vector<JoinedTerm> withPart(std::string_view part) const;

 private:
  std::vector<std::string> termsWithKey(const std::string& key) const;
  std::vector<JoinedTerm> termsWithPart(const std::string& text) const;
  /// Empty for a number beyond those of the terms.
  std::string term(std::uint32_t number) const;
  bool hasTerm(std::string_view term) const;

  const IndexReader& _index;
};

}  // namespace quorvex::textsearch
