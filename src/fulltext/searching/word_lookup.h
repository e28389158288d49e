#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/compound_words.h"
#include "fulltext/searching/term_keys.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_terms.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

enum class Matching {
  exactly,    ///< the word as written
  inflected,  ///< also its inflections, other spellings of it and joined words that it is part of
  beginning,  ///< all words that begin with it, like those of `inflected` if it is one itself
  mistypedBeginning,  ///< all words whose beginning is one edit from it
};

/// Finds the terms of an index that stand for query words, and remembers them. Thread-safe.
class WordLookup {
 public:
  using Terms = std::shared_ptr<const WordTerms>;

  WordLookup(const IndexReader& index, const TitleIndex& titles)
      : _index(index), _titles(titles), _finder(index, titles), _keys(index) {}

  /// WordTerms::word
  static std::string wordKey(Matching matching, std::string_view word);

  /// `language`: that of the stemmer.
  Terms find(std::string_view word, Matching matching, std::string_view language,
             Stemmer& stemmer) const;
  /// Returns the documents with an operator or, if the index lacks it, with the longest known
  /// beginning of it; null if there is none.
  Terms findOperator(std::string_view text) const;
  /// Returns the parts of a joined word as it was typed, or of a compound; none of any other word.
  std::vector<std::string> partsOf(std::string_view word, std::string_view language,
                                   Stemmer& stemmer) const;
  /// Returns the most frequent of the terms that are one edit from a word, as far as it may be
  /// known while more may be typed; none if there is no such term.
  std::string mistypedTerm(std::string_view word) const;
  /// Returns where a compound that is being typed may be cut, behind a known word and before the
  /// beginning of others; 0 if it may not.
  std::size_t cutOf(std::string_view word, std::string_view language) const;
  /// Returns how many bytes of a word any term begins with.
  std::size_t longestBeginning(std::string_view word) const;
  /// Returns the terms of one word that two words make without what stands between them.
  std::vector<std::string> joined(std::string_view first, std::string_view second) const;
  /// Returns the terms with others added.
  Terms with(WordTerms terms, const std::vector<std::string>& others, float weight) const;

 private:
  void add(std::string_view term, float weight, WordTerms& terms) const;
  void addBeginningWith(std::string_view beginning, float weight, WordTerms& terms) const;
  WordTerms beginningWith(std::string_view word, std::string_view language, Stemmer& stemmer) const;
  WordTerms make(std::string_view word, Matching matching, std::string_view language,
                 Stemmer& stemmer) const;
  Terms makeOperator(std::string_view text, const TermEntry& entry) const;
  Terms remembered(std::string key, const std::function<Terms()>& make) const;
  CompoundWords compounds(std::string_view language, Stemmer& stemmer) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  TermFinder _finder;
  TermKeys _keys;
  mutable std::mutex _mutex;
  mutable std::unordered_map<std::string, Terms> _known;
};

}  // namespace quorvex::textsearch
