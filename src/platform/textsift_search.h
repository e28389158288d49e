#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/textsift.h"

// Searching a full-text index. docs/searching.md tells the language of queries and how documents
// are ranked.

namespace quorvex {

class TSSearch;
/// An index made ready for queries. Immutable; safe from several threads.
using TSSearchRef = std::shared_ptr<const TSSearch>;

/// Null when the index is null, closed or not opened from data. Reads all titles.
TSSearchRef TSSearchCreateWithIndex(const TSIndexRef& index);

struct TSSearchOptions {
  /// ISO 639 code of the language by which words are matched across their inflections; empty, and
  /// for languages without a stemmer: as they are written.
  std::string language = {};
  /// The query is still being typed: its last word stands for all that begin with it.
  bool lastWordIsPrefix = false;
  /// The query is prose: quotation marks and hyphens in it ask for nothing.
  bool isPlainText = false;
};

enum class TSSearchState {
  answered,       ///< there was something to look for; the hits may be none
  noWords,        ///< no word at all
  onlyStopWords,  ///< only words that the index leaves out
  onlyExcluded,   ///< only words that must not be there
};

struct TSSearchHit {
  TSDocumentID document = 0;
  double score = 0;  ///< above 0; of use only beside other scores of the same query
};

struct TSSearchAnswer {
  TSSearchState state = TSSearchState::noWords;
  std::vector<TSSearchHit> hits;  ///< best first, ties in the order of the documents
  /// The terms that were looked for, inflections among them; case folded, in byte order.
  std::vector<std::string> terms;
  /// The query with words that the index lacks replaced by words it has; none when it lacks none,
  /// or has nothing near.
  std::optional<std::string> suggestion;
  /// The words that were looked for, without marks and excluded words, and how many they are.
  std::string words;
  std::size_t wordCount = 0;
  /// Where the query allows documents at all, one flag a document; empty: everywhere.
  std::vector<std::uint8_t> allowed;
};

/// The best `count` documents for a query of any bytes. A null search answers with no words.
TSSearchAnswer TSSearchFindDocuments(const TSSearchRef& search, std::string_view query,
                                     const TSSearchOptions& options, std::size_t count);

/// A part of a text, in bytes.
struct TSTextRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};
/// Where the terms of an answer stand in a text, ascending.
std::vector<TSTextRange> TSSearchFindTerms(const TSSearchRef& search,
                                           const std::vector<std::string>& terms,
                                           std::string_view text);

/// Number of documents; ids run from 0.
std::size_t TSSearchGetDocumentCount(const TSSearchRef& search);
/// The URL of a document, null past the end or on damage.
std::optional<URL> TSSearchCopyDocumentURL(const TSSearchRef& search, TSDocumentID document);
std::optional<Dictionary> TSSearchCopyDocumentProperties(const TSSearchRef& search,
                                                         TSDocumentID document);

}  // namespace quorvex
