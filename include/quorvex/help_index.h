#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// Reads the index files of help books and answers searches. There is no global state; nothing here
// throws except when memory runs out. docs/searching.md describes the query language and how pages
// are ranked.

#define QUORVEX_API __attribute__((visibility("default")))

namespace quorvex {

/// Why an operation failed.
struct Failure {
  enum class Reason {
    unreadable,  ///< the file cannot be read
    notAnIndex,  ///< the bytes are not an index file of format 1 or 2, or are damaged
    lacksForm,   ///< the index lacks what was requested, or says not to use it
  };
  Reason reason;
  std::string message;  ///< human-readable
};

/// A value, or why there is none.
template <typename T>
class [[nodiscard]] Expected {
 public:
  Expected(T value) : _outcome(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  Expected(Failure failure) : _outcome(std::move(failure)) {}  // NOLINT

  explicit operator bool() const { return _outcome.index() == 0; }
  /// Only when there is a value.
  T& operator*() { return *std::get_if<T>(&_outcome); }
  const T& operator*() const { return *std::get_if<T>(&_outcome); }
  T* operator->() { return std::get_if<T>(&_outcome); }
  const T* operator->() const { return std::get_if<T>(&_outcome); }
  /// Only when there is no value.
  const Failure& failure() const { return *std::get_if<Failure>(&_outcome); }

 private:
  std::variant<T, Failure> _outcome;
};

/// Contents of an index file.
struct IndexContents {
  int format = 0;                ///< 1: full-text index, 2: searchable items
  std::size_t pages = 0;         ///< pages that can be listed
  bool fullText = false;         ///< in format 2 it is built when the file is opened
  bool semantic = false;         ///< there is a semantic index
  bool ignoresSemantic = false;  ///< it says that the book is too small to benefit
  std::string language;          ///< locale of the semantic index ("en_US"); empty: unknown
  std::optional<std::string> remoteRoot;  ///< base URL of the pages on the network
};

struct HelpPage {
  /// Relative to the book's root, with a leading slash. Untrusted: the author of the index may have
  /// put ".." into it, so turn it into a file path only with joinPagePath().
  std::string path;
  std::string firstAnchor;  ///< empty when the page has none
  std::string title;
  std::string description;
};

/// Returns the path of a page below a folder; null if the page path names no file or leaves the
/// folder through "..". Symbolic links in the folder may still lead anywhere. Throws only when
/// memory runs out.
QUORVEX_API std::optional<std::string> joinPagePath(std::string_view folder,
                                                    std::string_view pagePath);

/// A part of a text, in bytes.
struct TextRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct Hit {
  HelpPage page;
  double score = 0;                           ///< above 0; comparable only within the same search
  std::vector<TextRange> titleMatches;        ///< matched words
  std::vector<TextRange> descriptionMatches;  ///< matched words
};

enum class Ranking {
  best,      ///< by words and by meaning, as far as the index has both
  fullText,  ///< by words
  semantic,  ///< by meaning
};

struct SearchOptions {
  Ranking ranking = Ranking::best;
  std::size_t count = 10;  ///< maximum hits
  /// The query is still being typed: its last word matches all words that begin with it. Such
  /// queries are answered by words alone.
  bool lastWordIsPrefix = false;
  /// The query is prose: its quotation marks and hyphens mean nothing.
  bool isPlainText = false;
  /// Locale or language ("en") for matching words across their inflections; empty: that of the
  /// index.
  std::string language = {};
};

enum class QueryState {
  answered,       ///< there was something to search for; hits may be empty
  noWords,        ///< no word at all
  onlyStopWords,  ///< only words that the index omits
  onlyExcluded,   ///< only words that must not occur
};

struct SearchResult {
  QueryState state = QueryState::noWords;
  std::vector<Hit> hits;  ///< best first
  /// The query, with words that the index lacks replaced by ones it has.
  std::optional<std::string> suggestion;
};

/// An open index file. Copies are cheap and share it. Thread-safe.
class QUORVEX_API HelpIndex {
 public:
  static Expected<HelpIndex> open(const std::string& path);
  /// Opens the bytes of an index file.
  static Expected<HelpIndex> fromBytes(std::string_view bytes);

  const IndexContents& contents() const;

  /// Accepts any bytes as a query. Fails if the index lacks the requested ranking.
  Expected<SearchResult> search(std::string_view query, const SearchOptions& options = {}) const;
  /// Returns the pages closest in meaning to the page at `path`; no hits for an unknown page. Fails
  /// without a semantic index.
  Expected<std::vector<Hit>> related(std::string_view path, std::size_t count = 10) const;

  /// Returns the paths of pages with an anchor of this name.
  std::vector<std::string> pagesWithAnchor(std::string_view name) const;

  /// Returns page `number` of contents().pages, in file order; an empty page past the end.
  HelpPage page(std::size_t number) const;

 private:
  class OpenIndex;
  explicit HelpIndex(std::shared_ptr<const OpenIndex> index);

  std::shared_ptr<const OpenIndex> _index;
};

}  // namespace quorvex
