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
// throws but for want of memory. docs/searching.md tells the language of queries and how pages are
// ranked.

#define QUORVEX_API __attribute__((visibility("default")))

namespace quorvex {

/// Why something was not done.
struct Failure {
  enum class Reason {
    unreadable,  ///< the file cannot be read
    notAnIndex,  ///< the bytes are not an index file of format 1 or 2, or are damaged
    lacksForm,   ///< the index does not hold what was asked of it, or says not to use it
  };
  Reason reason;
  std::string message;  ///< for a person
};

/// A value, or why there is none.
template <typename T>
class [[nodiscard]] Expected {
 public:
  Expected(T value) : _outcome(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  Expected(Failure failure) : _outcome(std::move(failure)) {}  // NOLINT

  explicit operator bool() const { return _outcome.index() == 0; }
  /// Only when there is one.
  T& operator*() { return *std::get_if<T>(&_outcome); }
  const T& operator*() const { return *std::get_if<T>(&_outcome); }
  T* operator->() { return std::get_if<T>(&_outcome); }
  const T* operator->() const { return std::get_if<T>(&_outcome); }
  /// Only when there is no value.
  const Failure& failure() const { return *std::get_if<Failure>(&_outcome); }

 private:
  std::variant<T, Failure> _outcome;
};

/// What an index file holds.
struct IndexContents {
  int format = 0;                ///< 1: full-text index, 2: searchable items
  std::size_t pages = 0;         ///< pages that can be listed
  bool fullText = false;         ///< of a file of format 2 it is made when the file is opened
  bool semantic = false;         ///< there is a semantic index
  bool ignoresSemantic = false;  ///< it says that the book is too small for it to be of use
  std::string language;          ///< locale of the semantic index ("en_US"); empty: not known
  std::optional<std::string> remoteRoot;  ///< URL below which the pages lie on the network
};

struct HelpPage {
  /// Below the root of the book, with a slash in front. Whoever made the index chose it, and may
  /// have put ".." into it: joinPagePath() alone makes a file's path of it.
  std::string path;
  std::string firstAnchor;  ///< empty when the page has none
  std::string title;
  std::string description;
};

/// The path of a page below a folder; null for a page path that names no file or leads out of the
/// folder by "..". Symbolic links in the folder may still lead anywhere. Throws nothing but for
/// want of memory.
QUORVEX_API std::optional<std::string> joinPagePath(std::string_view folder,
                                                    std::string_view pagePath);

/// A part of a text, in bytes.
struct TextRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct Hit {
  HelpPage page;
  double score = 0;  ///< above 0; of use only beside other scores of the same search
  std::vector<TextRange> titleMatches;        ///< words that were looked for
  std::vector<TextRange> descriptionMatches;  ///< words that were looked for
};

enum class Ranking {
  best,      ///< by words and by meaning, as far as the index holds both
  fullText,  ///< by words
  semantic,  ///< by meaning
};

struct SearchOptions {
  Ranking ranking = Ranking::best;
  std::size_t count = 10;  ///< hits at most
  /// The query is still being typed: its last word stands for all words that begin with it. Such
  /// queries are answered by words alone.
  bool lastWordIsPrefix = false;
  /// The query is prose: quotation marks and hyphens in it ask for nothing.
  bool isPlainText = false;
  /// By which words are matched across their inflections, as a locale or language ("en"); empty:
  /// that of the index.
  std::string language = {};
};

enum class QueryState {
  answered,       ///< there was something to look for; the hits may be none
  noWords,        ///< no word at all
  onlyStopWords,  ///< only words that the index leaves out
  onlyExcluded,   ///< only words that must not be there
};

struct SearchResult {
  QueryState state = QueryState::noWords;
  std::vector<Hit> hits;  ///< best first
  /// The query with words that the index lacks replaced by words it has.
  std::optional<std::string> suggestion;
};

/// An open index file. Copies are cheap and share it. Safe from several threads.
class QUORVEX_API HelpIndex {
 public:
  static Expected<HelpIndex> open(const std::string& path);
  /// The bytes of an index file.
  static Expected<HelpIndex> fromBytes(std::string_view bytes);

  const IndexContents& contents() const;

  /// A query of any bytes is answered. Fails when the index lacks the ranking that was asked for.
  Expected<SearchResult> search(std::string_view query, const SearchOptions& options = {}) const;
  /// The pages nearest in meaning to a page, which is given by its path. No hits for an unknown
  /// one. Fails without a semantic index.
  Expected<std::vector<Hit>> related(std::string_view path, std::size_t count = 10) const;

  /// The paths of the pages that hold an anchor of this name.
  std::vector<std::string> pagesWithAnchor(std::string_view name) const;

  /// Page `number` of contents().pages, in the order of the file; an empty page past the end.
  HelpPage page(std::size_t number) const;

 private:
  class Content;
  explicit HelpIndex(std::shared_ptr<const Content> content);

  std::shared_ptr<const Content> _content;
};

}  // namespace quorvex
