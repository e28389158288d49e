#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/format/word_filter.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// The rest of a longer query is ignored: more words than these describe nothing in particular.
inline constexpr std::size_t maximumQuerySize = std::size_t{64} * 1024;
inline constexpr std::size_t maximumQueryWords = 256;

/// One query word and its byte range in the query.
struct QueryWord {
  std::string term;  ///< as in the index; empty for words left out of it
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// A word, or the words of a phrase in order.
struct QueryClause {
  std::vector<QueryWord> words;
  bool isPhrase = false;
  bool isExcluded = false;
  bool isPrefix = false;  ///< its last word matches words that begin with it
};

struct Query {
  std::vector<QueryClause> clauses;
  std::vector<QueryWord> operators;  ///< signs of program code that are neither quoted nor excluded
  bool hasLeftOutWords = false;      ///< stop words, and words too short for the index
  bool isBeingTyped = false;         ///< QueryReading::lastIsPrefix

  bool hasPhrases() const;
  /// Whether all its phrases are single words among several others, as in pasted messages.
  bool quotesSingleWords() const;
};

/// Returns a query without its quotation marks.
std::string withoutQuotationMarks(std::string_view text);

struct QueryReading {
  bool isPlainText = false;  ///< quotation marks and hyphens mean nothing
  /// The query is being typed: the word that ends it matches all words that begin with it, a word
  /// that it would exclude is not finished, and of words that the index leaves out, if there are no
  /// others, the last is searched for as the beginning of others.
  bool lastIsPrefix = false;
  bool phrasesAreWords = false;  ///< quotation marks mean nothing
  /// Whether a run such as "-Wall" is the name of something.
  std::function<bool(std::string_view run)> isName = nullptr;
};

/// Any bytes are a query:
///
///   word        a document should contain it
///   "two words" a document must contain the words side by side; straight or curly quotation marks
///   -word       a document must not contain it; also -"two words"
///   ->>         a document should contain the operator
///
/// What looks like an option of a program is a word: --word, -w, -O2, -std=c++20 and the name of
/// something. An unclosed phrase extends to the end.
Query parseQuery(std::string_view text, const WordFilter& filter, Tokenizer& tokenizer,
                 const QueryReading& reading);

}  // namespace quorvex::textsearch
