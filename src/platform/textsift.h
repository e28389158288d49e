#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/url.h"
#include "common/value.h"

// TextSift, the full-text library: an inverted index over a forest of documents, written into a
// buffer and read back in place, and a sentence summariser.

namespace quorvex {

/// The library's own version.
inline constexpr std::string_view textSiftVersion = "1.0";

class TSIndex;
class TSDocument;
class TSDocumentIterator;
class TSSummary;
using TSIndexRef = std::shared_ptr<TSIndex>;
/// Identifies one document by its URL; also its parent when it has one.
using TSDocumentRef = std::shared_ptr<const TSDocument>;
using TSDocumentID = std::uint32_t;
using TSTermID = std::uint32_t;

// Keys of the analysis properties.
inline constexpr std::string_view kTSMinTermLength = "kTSMinTermLength";  ///< integer, code points
inline constexpr std::string_view kTSTermChars = "kTSTermChars";          ///< string
inline constexpr std::string_view kTSStopWords = "kTSStopWords";          ///< array of strings

/// Term characters that hold contractions together: apostrophe and right single quotation mark.
inline constexpr std::string_view contractionMarks = "'\u2019";

// Properties of documents. Searches look for words in titles, too.
inline constexpr std::string_view titleProperty = "T";
inline constexpr std::string_view descriptionProperty = "D";

enum class TSIndexType { inverted = 1 };

/// An empty index whose storage is `buffer`. Null when a property is of the wrong kind; further
/// properties may be strings, integers and arrays of these.
TSIndexRef TSIndexCreateWithMutableData(std::shared_ptr<std::string> buffer,
                                        std::optional<std::string> name, TSIndexType type,
                                        const Dictionary& analysisProperties);

TSDocumentRef TSDocumentCreateWithURL(const URL& url);
TSDocumentRef TSDocumentCreateWithParent(const TSDocumentRef& parent, const URL& url);

/// Adds one document, and its parents when they are not there yet, as documents without a text.
/// Replacing a document keeps its place and drops its properties. False when the index is null,
/// closed or opened for reading, when it holds the document already and `mayReplace` is false, and
/// for a document below more than 127 others (common/nesting.h).
bool TSIndexAddDocumentWithText(const TSIndexRef& index, const TSDocumentRef& document,
                                std::string_view text, bool mayReplace);

/// What the bulk operation asks for each document.
struct TSDocumentContent {
  std::string text;
  Dictionary properties;
};

/// The same as TSIndexAddDocumentWithText and, where that succeeds, TSIndexSetDocumentProperties
/// for each document in order, with the analysis spread over `workers` threads. `contentOf(i)` is
/// called once for each i, from several threads at once when workers > 1. Gives for each document
/// whether it was added; the index does not depend on the number of workers.
std::vector<bool> TSIndexAddDocuments(
    const TSIndexRef& index, const std::vector<TSDocumentRef>& documents, bool mayReplace,
    unsigned workers, const std::function<TSDocumentContent(std::size_t)>& contentOf);

/// Stores strings with a document; false when the index does not hold it or a value is no string.
bool TSIndexSetDocumentProperties(const TSIndexRef& index, const TSDocumentRef& document,
                                  const Dictionary& properties);

/// Writes the complete index into the buffer. Afterwards the index takes nothing more; a null or
/// closed index is left alone.
void TSIndexClose(const TSIndexRef& index);

/// Opens an index for reading, in place: `data` is shared, not copied. Null when the bytes are not
/// an index, or when a name is given and the index has another. Reading operations are safe from
/// several threads; they find nothing in an index that is not open for reading.
TSIndexRef TSIndexOpenWithData(const Data& data, const std::optional<std::string>& name);

/// Iterates the children of a document, or the top-level documents for a null parent, in the order
/// in which they were added.
std::shared_ptr<TSDocumentIterator> TSIndexDocumentIteratorCreate(const TSIndexRef& index,
                                                                  const TSDocumentRef& parent);
TSDocumentRef TSIndexDocumentIteratorCopyNext(const std::shared_ptr<TSDocumentIterator>& iterator);

std::optional<URL> TSDocumentCopyURL(const TSDocumentRef& document);
std::optional<Dictionary> TSIndexCopyDocumentProperties(const TSIndexRef& index,
                                                        const TSDocumentRef& document);
std::optional<TSDocumentID> TSIndexGetDocumentID(const TSIndexRef& index,
                                                 const TSDocumentRef& document);
/// Ascending, which is the byte order of the terms.
std::vector<TSTermID> TSIndexCopyTermIDArrayForDocumentID(const TSIndexRef& index, TSDocumentID id);
std::optional<std::string> TSIndexCopyTermStringForTermID(const TSIndexRef& index, TSTermID id);
/// The properties the index was made with.
Dictionary TSIndexGetAnalysisProperties(const TSIndexRef& index);

/// Scores the sentences in the first 16 KiB of a text, any bytes. None crosses one of
/// `paragraphStarts`, offsets in ascending order. Null when there is none.
std::shared_ptr<TSSummary> TSSummaryCreateWithString(
    std::string_view text, std::span<const std::size_t> paragraphStarts = {});
/// The `count` sentences that represent the text best, in text order, joined with a space. White
/// space is collapsed, a sentence of more than 500 characters cut between words. Null without a
/// summary or count.
std::optional<std::string> TSSummaryCopySentenceSummaryString(
    const std::shared_ptr<TSSummary>& summary, std::size_t count);

// Searching. docs/searching.md describes the query language and the ranking.

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
