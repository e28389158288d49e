#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/stem_table.h"
#include "fulltext/searching/title_index.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// A term of texts that stands for a query word. `weight`: at most 1, how surely it does.
struct TextTerm {
  TermEntry entry;
  float weight = 1;
};

/// The same of titles.
struct TitleTerm {
  std::uint32_t term = 0;
  float weight = 1;
};

/// The terms of an index that match one query word.
struct WordTerms {
  std::vector<TextTerm> inTexts;
  std::vector<TitleTerm> inTitles;
  std::vector<std::string> forms;  ///< the text of all of them, in byte order
  std::string word;                ///< what was looked for, and how: the same in all indexes
  // In place of these if the word is an operator, which has no positions.
  std::vector<TextTerm> operators;  ///< in IndexReader::operators()
  std::vector<TitleIndex::Posting> operatorTitles;

  bool empty() const { return forms.empty(); }
};

/// A prefix matches at most this many terms, those in the most documents: when only one letter has
/// been typed, the rest would take time and make no visible difference.
inline constexpr std::size_t maximumTermsOfPrefix = 32;

/// Finds terms in texts and titles. Thread-safe.
class TermFinder {
 public:
  TermFinder(const IndexReader& index, const TitleIndex& titles) : _index(index), _titles(titles) {}

  WordTerms exactly(std::string_view word) const;
  WordTerms beginningWith(std::string_view prefix) const;
  /// Returns the terms with the word's stem. `language`: that of the stemmer.
  WordTerms inflectionsOf(std::string_view word, std::string_view language, Stemmer& stemmer) const;

 private:
  template <typename Accept>
  void addBeginningWith(std::string_view prefix, WordTerms& found, Accept accept) const;
  void addWithStem(std::string_view stem, const StemTable& table, Stemmer& stemmer,
                   WordTerms& found) const;
  void addForms(WordTerms& found) const;
  /// Returns the table for a language, built on first use; null if the beginnings of its stems are
  /// known, which is faster.
  const StemTable* stemTable(std::string_view language, Stemmer& stemmer) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  mutable std::mutex _mutex;
  mutable std::map<std::string, std::unique_ptr<const StemTable>, std::less<>> _stemTables;
};

}  // namespace quorvex::textsearch
