#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/url.h"
#include "common/value.h"
#include "platform/text_words.h"

// TextSift, the full-text library: an inverted index over a forest of documents, written into a
// buffer and read back in place, and a sentence summariser.

namespace quorvex {

/// The library version.
inline constexpr std::string_view textSiftVersion = "1.0";

class TSIndex;
class TSDocument;
class TSDocumentIterator;
class TSSummary;
using TSIndexRef = std::shared_ptr<TSIndex>;
/// Identifies a document by its URL and its parent, if any.
using TSDocumentRef = std::shared_ptr<const TSDocument>;
using TSDocumentID = std::uint32_t;
using TSTermID = std::uint32_t;

// Keys of the analysis properties.
inline constexpr std::string_view kTSMinTermLength = "kTSMinTermLength";  ///< integer, code points
inline constexpr std::string_view kTSTermChars = "kTSTermChars";          ///< string
inline constexpr std::string_view kTSStopWords = "kTSStopWords";          ///< array of strings

/// Term characters that join contractions: apostrophe and right single quotation mark.
inline constexpr std::string_view contractionMarks = "'\u2019";

// Document properties. Searches cover titles, too.
inline constexpr std::string_view titleProperty = "T";
inline constexpr std::string_view descriptionProperty = "D";

enum class TSIndexType { inverted = 1 };

/// Creates an empty index with `buffer` as its storage. Null when a property has the wrong type;
/// additional properties may be anything but dictionaries, objects and arrays of arrays.
TSIndexRef TSIndexCreateWithMutableData(std::shared_ptr<std::string> buffer,
                                        std::optional<std::string> name, TSIndexType type,
                                        const Dictionary& analysisProperties);

TSDocumentRef TSDocumentCreateWithURL(const URL& url);
TSDocumentRef TSDocumentCreateWithParent(const TSDocumentRef& parent, const URL& url);

enum class TSNameKind : std::uint8_t {
  definition = 0,  ///< an identifier with a fragment that is made of it
  heading = 1,     ///< the words of a heading or a term
  term = 2,        ///< an identifier in a list that may only mention it
};

/// A name as the page writes it.
struct TSName {
  std::string text;
  TSNameKind kind = TSNameKind::definition;
};

/// A place in a document's text: a fragment of its URL, a heading or a term that the text defines.
struct TSPlace {
  std::size_t offset = 0;  ///< where it begins in the text, in bytes
  std::string fragment;    ///< as in the page; empty: the place has none of its own
  /// 1 to 6: of a heading; deepestHeading plus 1, 2 and so on: of a term in a list, in a list in it
  /// and so on; 0: neither. Text stands under a heading or a term up to the next one that is not
  /// deeper.
  unsigned level = 0;
  /// One line; empty for the heading of the whole page, which its title repeats. A term without a
  /// text is the end of a list on its level.
  std::string heading;
  std::vector<TSName> names;
};
inline constexpr unsigned deepestHeading = 6;

/// The places of one text, ascending. Packed, for an indexer keeps those of a whole book.
struct TSPlaces {
  std::vector<std::uint32_t> offsets;  ///< where each begins in the text, in bytes
  /// For each: level:u8 fragment:text heading:text names:varint *(kind:u8 name:text)
  std::string entries;
};

TSPlaces TSPlacesCreate(std::span<const TSPlace> places);

/// What the text of a page mostly is, without navigation, page headers and footers. Shares are of
/// its bytes other than white space, 0 to 255.
struct TSPageTraits {
  std::uint8_t linkShare = 0;  ///< in links
  std::uint8_t codeShare = 0;  ///< in preformatted text
  std::string language = {};   ///< as the page states it: empty or an isLanguageTag()
};

/// Adds a document and any missing parents, the latter without text. Replacing a document keeps
/// its id and drops its properties. False when the index is null, closed or opened for reading,
/// when it already contains the document and `mayReplace` is false, and for a document with more
/// than 127 ancestors (common/nesting.h).
bool TSIndexAddDocumentWithText(const TSIndexRef& index, const TSDocumentRef& document,
                                std::string_view text, bool mayReplace);

struct TSAnalyzedContent;
/// A document's content as an index keeps it, which takes a fraction of the memory.
using TSAnalyzedContentRef = std::shared_ptr<TSAnalyzedContent>;

/// A document's content for TSIndexAddDocuments.
struct TSDocumentContent {
  std::string text;
  Dictionary properties;
  TSPlaces places = {};
  std::optional<TSPageTraits> traits = {};  ///< null: unknown
  /// Unless null, from an analysis of the same index, which takes it over; replaces all others.
  TSAnalyzedContentRef analyzed = {};
};

/// Analyses contents before their documents are added to an index: in any order, so that nothing
/// else need be kept of them. Serves one thread at a time; several analyses of an index work
/// concurrently. Must not be used once the index is closed.
class TSAnalysis {
 public:
  virtual ~TSAnalysis() = default;
  /// `wordsFrom`: where a part of the text begins, behind a blank, whose words words() returns
  /// then.
  virtual TSAnalyzedContentRef analyze(TSDocumentContent content,
                                       std::size_t wordsFrom = std::string_view::npos) = 0;
  /// Of the last content; null if the part alone would be cut into other words.
  virtual std::optional<TextWords> words() const = 0;
};

/// Null when the index is null, closed or opened for reading. May be called from several threads.
std::unique_ptr<TSAnalysis> TSIndexCreateAnalysis(const TSIndexRef& index);

/// Does the same as TSIndexAddDocumentWithText and, if that succeeds, TSIndexSetDocumentProperties
/// for each document in order, but analyses the texts on `workers` threads. Calls `contentOf(i)`
/// once for each i, concurrently when workers > 1. Returns for each document whether it was added.
/// The index does not depend on the number of workers.
std::vector<bool> TSIndexAddDocuments(
    const TSIndexRef& index, const std::vector<TSDocumentRef>& documents, bool mayReplace,
    unsigned workers, const std::function<TSDocumentContent(std::size_t)>& contentOf);

/// Stores strings with a document; false when the index lacks it or a value is not a string.
bool TSIndexSetDocumentProperties(const TSIndexRef& index, const TSDocumentRef& document,
                                  const Dictionary& properties);

/// Writes the complete index into the buffer and closes the index. Does nothing to a null or closed
/// index.
void TSIndexClose(const TSIndexRef& index);

/// Opens an index for reading, in place: `data` is shared, not copied. Null when the bytes are not
/// an index, or when a name is given and the index has another. Reading is thread-safe; an index
/// that is not open for reading yields nothing.
TSIndexRef TSIndexOpenWithData(const Data& data, const std::optional<std::string>& name);

/// Iterates over the children of a document, or the top-level documents for a null parent, in the
/// order of their addition.
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
/// Returns the properties that the index was created with.
Dictionary TSIndexGetAnalysisProperties(const TSIndexRef& index);

/// Scores the sentences in the first 16 KiB of a text, any bytes. No sentence crosses any of
/// `paragraphStarts`, which are ascending offsets. Null when there is no sentence.
std::shared_ptr<TSSummary> TSSummaryCreateWithString(
    std::string_view text, std::span<const std::size_t> paragraphStarts = {});
/// Returns the `count` most representative sentences in text order, joined with spaces. White space
/// is collapsed, and sentences of more than 500 characters are cut between words. Null for a null
/// summary or a count of 0.
std::optional<std::string> TSSummaryCopySentenceSummaryString(
    const std::shared_ptr<TSSummary>& summary, std::size_t count);

// Searching. docs/searching.md describes the query language and the ranking.

class TSSearch;
/// An index prepared for queries. Immutable and thread-safe.
using TSSearchRef = std::shared_ptr<const TSSearch>;

/// Reads all titles. Null when the index is null, closed or not opened from data.
TSSearchRef TSSearchCreateWithIndex(const TSIndexRef& index);

/// What several indexes hold together, so that a query's words weigh the same in all of them.
struct TSCollection {
  /// Documents that contain a word, or an inflection of it.
  struct Word {
    double inTexts = 0;
    double inTitles = 0;
  };

  double documents = 0;
  double textLength = 0;                           ///< of all documents, in terms
  double titleLength = 0;                          ///< of all titles, in words
  std::map<std::string, Word, std::less<>> words;  ///< by WordTerms::word
};

struct TSSearchOptions {
  /// ISO 639 code of the language whose stemmer matches inflections. Words match exactly if it is
  /// empty or the language has no stemmer.
  std::string language = {};
  /// The query is still being typed: its last word matches all words that begin with it.
  bool lastWordIsPrefix = false;
  /// The query is prose: quotation marks and hyphens have no special meaning.
  bool isPlainText = false;
  /// Quotation marks have no special meaning.
  bool phrasesAreWords = false;
  /// Weighs words as in these indexes together, replaces no word that one of them has, and does not
  /// ask a phrase again as words; null: as in the index alone.
  const TSCollection* collection = nullptr;
};

enum class TSSearchState {
  answered,       ///< the query has words to find; there may be no hits
  noWords,        ///< no words
  onlyStopWords,  ///< only stop words and words too short for the index
  onlyExcluded,   ///< only excluded words
};

/// What a score is made of; the sum of all.
struct TSScoreParts {
  float words = 0;      ///< in text and title, by BM25
  float nearness = 0;   ///< of the words to each other
  float passage = 0;    ///< its best passage
  float title = 0;      ///< how much of the query and of its title are the same words
  float furniture = 0;  ///< not above 0: it is a list of links, or of program code

  float sum() const { return words + nearness + passage + title + furniture; }
};

struct TSSearchHit {
  TSDocumentID document = 0;
  double score = 0;  ///< above 0; comparable only within one query
  TSScoreParts parts = {};
};

/// The place that defines a name.
struct TSNamedPlace {
  static constexpr std::uint32_t pageItself = UINT32_MAX;

  TSDocumentID document = 0;
  std::uint32_t place = pageItself;  ///< number in the document, or pageItself
  double quality = 0;                ///< about 0.8 to 1
  std::string name = {};
};

/// The words of a query and what they match.
class TSSearchedWords;

/// What the words of a query are found by in a text. All terms are case-folded, in byte order.
struct TSSearchTerms {
  /// The parts of a joined word say what is meant only where the word itself is missing.
  struct Parts {
    std::vector<std::string> joined;  ///< the terms of the word
    std::vector<std::string> parts;
  };

  std::vector<std::string> words;  ///< including inflections
  std::vector<Parts> parts;
};

struct TSSearchAnswer {
  TSSearchState state = TSSearchState::noWords;
  std::vector<TSSearchHit> hits;  ///< best first, ties in document order
  TSSearchTerms terms;
  /// The query with unknown words replaced by similar indexed ones; null when no word is unknown or
  /// none has a similar one.
  std::optional<std::string> suggestion;
  /// What was searched for in the place of the query; null if it was searched for as it is.
  std::optional<std::string> searchedInstead;
  /// The words searched for, without marks and excluded words, and their number.
  std::string words;
  std::size_t wordCount = 0;
  /// The share of the words, by their importance, that the best five documents hold on average.
  double coverage = 0;
  /// One flag per document: whether the query admits it; empty: all are admitted.
  std::vector<std::uint8_t> allowed;
  /// The definitions of the name that the query is, best first; at most one per document.
  std::vector<TSNamedPlace> named;
  /// For TSSearchFindPlaces().
  std::shared_ptr<const TSSearchedWords> searched;
};

/// Adds what an index holds of the words of a query.
void TSSearchAddToCollection(const TSSearchRef& search, std::string_view query,
                             const TSSearchOptions& options, TSCollection& collection);

/// Returns the `count` best documents for a query, any bytes. A null search answers noWords.
TSSearchAnswer TSSearchFindDocuments(const TSSearchRef& search, std::string_view query,
                                     const TSSearchOptions& options, std::size_t count);

/// Whether two documents have nearly the same text. False where the index does not tell.
bool TSSearchAreNearCopies(const TSSearchRef& search, TSDocumentID first, TSDocumentID second);

/// A word that was searched for and what stood for it.
struct TSExplainedWord {
  struct Form {
    std::string text;
    double weight = 1;  ///< at most 1, how surely it stands for the word
    std::size_t documents = 0;
  };

  std::string word;  ///< as it was looked up
  double weight = 1;
  std::size_t documents = 0;  ///< with any of the forms, in text or title
  std::vector<Form> forms;    ///< the surest first, of these those in the most documents
};

/// Tells what was searched for, in the order of the query.
std::vector<TSExplainedWord> TSSearchExplainWords(const TSSearchRef& search,
                                                  const TSSearchAnswer& answer);

/// A place of a document that answers a query.
struct TSFoundPlace {
  /// That leads to it or to the nearest place above; empty for the top of a document.
  std::string fragment;
  std::vector<std::string> headings;  ///< those above it from the top down, its own included
  double score = 0;                   ///< comparable only within one query
  // Positions in the document, which TSSearchLocate() finds again in its text.
  std::uint32_t start = 0;  ///< of what the fragment leads to
  std::uint32_t begin = 0;  ///< where the words stand densest
  std::uint32_t end = 0;
};

/// Returns up to `count` places of a document that answer a query, best first. None if the document
/// has no places.
std::vector<TSFoundPlace> TSSearchFindPlaces(const TSSearchRef& search,
                                             const TSSearchAnswer& answer, TSDocumentID document,
                                             std::size_t count);

/// Returns the place that defines a name; for a page itself that of its own heading. Null if there
/// is none, or if the document has no fragments.
std::optional<TSFoundPlace> TSSearchCopyPlace(const TSSearchRef& search, const TSNamedPlace& named);

/// Returns names that begin with a text, or whose last parts do.
std::vector<TSNamedPlace> TSSearchFindNames(const TSSearchRef& search, std::string_view text,
                                            std::size_t count);

/// A byte range of a text.
struct TSTextRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};
/// Some words of a text, and the first and the last of those in question.
struct TSLocatedWords {
  std::vector<TSTextRange> words;
  std::size_t first = 0;
  std::size_t last = 0;
};

/// A text of a document.
struct TSTextPart {
  std::string_view text;
  std::uint32_t start = 0;  ///< its position in the document
  bool isWhole = true;      ///< the document ends with it
};

/// Finds the positions [begin, end) of a document in its text again, with up to `margin` words on
/// either side. Null if the words are not those of the document.
std::optional<TSLocatedWords> TSSearchLocate(const TSSearchRef& search, TSDocumentID document,
                                             const TSTextPart& part, std::uint32_t begin,
                                             std::uint32_t end, std::size_t margin);

/// Returns the occurrences of an answer's terms in a text, ascending.
std::vector<TSTextRange> TSSearchFindTerms(const TSSearchRef& search, const TSSearchTerms& terms,
                                           std::string_view text);

/// Returns the number of documents; ids start at 0.
std::size_t TSSearchGetDocumentCount(const TSSearchRef& search);
/// Returns the URL of a document; null past the end or on damage.
std::optional<URL> TSSearchCopyDocumentURL(const TSSearchRef& search, TSDocumentID document);
std::optional<Dictionary> TSSearchCopyDocumentProperties(const TSSearchRef& search,
                                                         TSDocumentID document);

/// Returns the part of a document's title that tells it from others: without what most titles
/// share, such as the name of the book behind a dash. Empty past the end and without a title.
std::string TSSearchCopyTitle(const TSSearchRef& search, TSDocumentID document);
/// Returns what most titles share, without separators and brackets; empty if there is no such part.
std::string TSSearchCopySharedTitle(const TSSearchRef& search);

}  // namespace quorvex
