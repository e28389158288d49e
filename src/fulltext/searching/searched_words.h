#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/ranking.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_lookup.h"
#include "text/stemmer.h"

namespace quorvex {

/// The words of a query and what they match.
class TSSearchedWords {
 public:
  std::vector<textsearch::RankedWord> words;
  std::vector<textsearch::WordSequence> phrases;
  std::size_t unknown = 0;  ///< words that nothing stands for
};

namespace textsearch {

/// A part of a query, as a byte range, and what was or could be searched for in its place.
struct Replacement {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string text;
  bool isMade = false;
};

/// Returns a query with parts replaced. `replacements` are ordered and do not overlap.
std::string replaced(std::string_view query, const std::vector<Replacement>& replacements);

/// Finds out what the words of a query match: the terms that stand for them, the parts of joined
/// words, and similar words in the place of those that the index lacks.
class WordCollector {
 public:
  /// `language`: that of the stemmer.
  WordCollector(const IndexReader& index, const TitleIndex& titles, const WordLookup& lookup,
                const WordFilter& filter, std::string_view language, Stemmer& stemmer)
      : _index(index),
        _titles(titles),
        _lookup(lookup),
        _filter(filter),
        _language(language),
        _stemmer(stemmer) {}

  /// `text`: what the query was parsed from. `mayReplace`: words that the index lacks. `elsewhere`:
  /// what other indexes have, so that these words are none to be replaced; may be null.
  void collect(const Query& query, std::string_view text, bool mayReplace,
               const TSCollection* elsewhere);

  TSSearchedWords takeWords() { return std::move(_searched); }
  /// Words that were replaced, and words of phrases that only could be.
  const std::vector<Replacement>& replacements() const { return _replacements; }

 private:
  /// A wanted word of the query.
  struct Item {
    const QueryWord* word;
    const QueryClause* clause;
    WordLookup::Terms terms;
  };

  void lookUp(const Query& query, std::string_view text);
  WordLookup::Terms beginningWith(std::string_view text, const Item& last) const;
  void joinNeighbours();
  float weightOf(const Item& item) const;
  float weightOfBeginning(std::string_view beginning) const;
  void takeUnknown(std::string_view text, const Item& item);
  void takeUnknownBeginning(std::string_view text, const Item& item);
  void addKnownBeginning(std::string_view word);
  bool addMistyped(const Item& item);
  bool addBeginningOfJoined(std::string_view text, const Item& item);
  bool addParts(std::string_view word, float weight, std::optional<std::size_t> whole);
  void addOperators(const Query& query);
  std::size_t add(const WordLookup::Terms& terms, float weight, const std::string& word,
                  std::optional<std::size_t> partOf = std::nullopt);
  WordLookup::Terms find(std::string_view word, Matching matching) const {
    return _lookup.find(word, matching, _language, _stemmer);
  }

  const IndexReader& _index;
  const TitleIndex& _titles;
  const WordLookup& _lookup;
  const WordFilter& _filter;
  std::string_view _language;
  Stemmer& _stemmer;
  std::vector<Item> _items;
  TSSearchedWords _searched;
  std::vector<Replacement> _replacements;
  unsigned _lookUpsLeft = 0;
  unsigned _cutsLeft = 32;  ///< words that may be taken apart as compounds, which is slow
  const TSCollection* _elsewhere = nullptr;
};

}  // namespace textsearch
}  // namespace quorvex
