#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "fulltext/format/analysis_settings.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// Of a query, what lies beyond is not looked at: more words than these ask for nothing in
/// particular.
inline constexpr std::size_t maximumQuerySize = std::size_t{64} * 1024;
inline constexpr std::size_t maximumQueryWords = 256;

/// One word that is looked for and where it stands in the query, in bytes.
struct QueryWord {
  std::string term;  ///< as the index writes it; empty for words that the index leaves out
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// A word, or the words of a phrase in order.
struct QueryClause {
  std::vector<QueryWord> words;
  bool isPhrase = false;
  bool isExcluded = false;
  bool isPrefix = false;  ///< of words that begin with it; never a phrase
};

struct Query {
  std::vector<QueryClause> clauses;
  bool hasLeftOutWords = false;  ///< stop words, and words that are too short for the index
};

/// Which words an index leaves out.
class WordFilter {
 public:
  explicit WordFilter(AnalysisSettings settings);
  WordFilter(const WordFilter&) = delete;
  WordFilter& operator=(const WordFilter&) = delete;

  const std::string& termCharacters() const { return _settings.termCharacters; }
  bool leavesOut(std::string_view term) const;

 private:
  AnalysisSettings _settings;
  std::unordered_set<std::string_view> _stopWords;  ///< into the settings
};

/// Reads a query. Any bytes are a query:
///
///   word        a document should hold it
///   "two words" a document must hold the words side by side; straight or curly quotation marks
///   -word       a document must not hold it; -"two words" as well
///
/// A quotation mark that nothing closes reaches to the end. Of plain text all words are wanted.
/// `lastIsPrefix`: the word that ends the query, unless it is quoted or excluded, stands for all
/// words that begin with it.
struct QueryReading {
  bool isPlainText = false;
  bool lastIsPrefix = false;
};
Query parseQuery(std::string_view text, const WordFilter& filter, Tokenizer& tokenizer,
                 QueryReading reading);

}  // namespace quorvex::textsearch
