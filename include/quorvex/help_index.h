#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "quorvex/quorvex.h"

// quorvex/quorvex.h for C++17, with values instead of handles. All of it is inline, so a program
// needs nothing of the library but those functions, and runs with its later releases.
//
// Everything returned is a value that needs nothing else to stay alive. A moved-from HelpIndex may
// be assigned, copied and destroyed; asked, it behaves like an index that holds nothing. Failures
// are returned: as Failure where a function returns Expected, else as an empty value. Only
// std::bad_alloc is thrown, when memory runs out; a program without exceptions is aborted. Several
// threads may use the same const object at once. docs/searching.md describes the query language and
// how pages are ranked.

namespace quorvex {

// The structures gain members, at their ends, from release to release. This name keeps apart the
// parts of a program that were compiled with different ones. So they have no place in the binary
// interface of another library.
#if QUORVEX_VERSION_MAJOR != 2 || QUORVEX_VERSION_MINOR != 0
#error "quorvex/help_index.h and quorvex/quorvex.h are of different releases"
#endif
inline namespace v2_0 {

/// Why an operation failed.
struct Failure {
  /// A later release of the library may give other values.
  enum class Reason {
    invalidArgument = QUORVEX_INVALID_ARGUMENT,  ///< a moved-from index, or what is not allowed
    unreadable = QUORVEX_UNREADABLE,             ///< the file cannot be read
    notAnIndex = QUORVEX_NOT_AN_INDEX,           ///< not an index file of format 1 or 2, or damaged
    lacksForm = QUORVEX_LACKS_FORM,  ///< it has no such index form, or says not to use it
    unknownLanguage = QUORVEX_UNKNOWN_LANGUAGE,  ///< the library knows no such language
    other = QUORVEX_FAILED,                      ///< anything else, as the message says
  };
  Reason reason;
  std::string message;  ///< human-readable
};

/// A value, or why there is none. The value lives as long as this object.
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
  int format = 0;                         ///< 1: full-text and semantic index, 2: searchable items
  std::size_t pages = 0;                  ///< pages that can be listed
  bool fullText = false;                  ///< in format 2 it is built when the file is opened
  bool semantic = false;                  ///< there is a semantic index
  bool ignoresSemantic = false;           ///< it says that the book is too small to benefit
  std::optional<std::string> language;    ///< locale ("en_US"); null if the index tells none
  std::optional<std::string> remoteRoot;  ///< base URL of the pages on the network
  /// Of the whole book: what most titles of its pages share, else that of the page highest in the
  /// folders; null if there is none.
  std::optional<std::string> title;
};

struct HelpPage {
  /// Relative to the book's root, with a leading slash. Untrusted, as it may contain "..": turn it
  /// into a file path only with joinPagePath().
  std::string path;
  std::string firstAnchor;  ///< the name of the first one in the page; empty if there is none
  std::string title;        ///< without what most titles of the book share
  std::string description;
};

/// The bytes of a text from `begin` up to but not including `end`.
using TextRange = quorvex_range;

/// A place in a page.
struct HelpPlace {
  /// Of the page's URL, as it stands in the page: encode it for a URL. Empty for the top.
  std::string fragment;
  std::vector<std::string> headings;  ///< above the place, from the top down to its own
  double score = 0;                   ///< comparable only within the same search
  /// The stretch of the page's text where the words stand closest, about 160 characters on one
  /// line, with an ellipsis where it begins or ends within a sentence. Null without the book, and
  /// if its page is missing, unreadable or not as it was when it was indexed.
  std::optional<std::string> snippet;
  std::vector<TextRange> snippetMatches;  ///< matched words, ascending, without overlaps
};

/// What a score owes to one of its reasons.
struct ScorePart {
  std::string name;  ///< the reason, in English, for people ("best section")
  double value = 0;  ///< may be below 0
};

struct Hit {
  HelpPage page;
  double score = 0;                           ///< above 0; comparable only within the same search
  std::vector<TextRange> titleMatches;        ///< matched words, ascending, without overlaps
  std::vector<TextRange> descriptionMatches;  ///< the same in the description
  std::vector<HelpPlace> places;              ///< at most three, best first
  /// The defined name by which the page was found; null if it was found by words or meaning alone.
  std::optional<std::string> name;
  std::size_t index = 0;         ///< number of its index among those that searchAll() was given
  std::vector<ScorePart> parts;  ///< whose sum is the score, if SearchOptions::explained
};

enum class Ranking {
  best = QUORVEX_RANKING_BEST,           ///< by words and by meaning, as far as the index has both
  fullText = QUORVEX_RANKING_FULL_TEXT,  ///< by words
  semantic = QUORVEX_RANKING_SEMANTIC,   ///< by meaning
};

struct SearchOptions {
  Ranking ranking = Ranking::best;
  std::size_t count = 10;  ///< maximum hits
  /// The query is still being typed: its last word, unless it is quoted, excluded or followed by a
  /// blank, matches all words that begin with it, and Ranking::best ranks by words alone.
  bool lastWordIsPrefix = false;
  /// The query is prose: its quotation marks and hyphens mean nothing.
  bool isPlainText = false;
  /// Language or locale ("en", "pt_BR") for matching words across their inflections; empty: that of
  /// the index. Words match only as they are written for "und", "C" and "POSIX", in a language
  /// without rules for inflections, and by default in an index that states no language. A search in
  /// a language that the library does not know fails.
  std::string language = {};
  /// Tells where the scores come from: Hit::parts, SearchResult::explanation. Takes longer.
  bool explained = false;
};

/// A later release of the library may give other values; hits are to be shown then, too.
enum class QueryState {
  noWords = QUORVEX_STATE_NO_WORDS,   ///< no word at all
  answered = QUORVEX_STATE_ANSWERED,  ///< there was something to search for; hits may be empty
  onlyStopWords = QUORVEX_STATE_ONLY_STOP_WORDS,  ///< only words that the index omits
  onlyExcluded = QUORVEX_STATE_ONLY_EXCLUDED,     ///< only words that must not occur
};

struct SearchResult {
  QueryState state = QueryState::noWords;
  std::vector<Hit> hits;  ///< best first
  /// The query, with words that the index lacks replaced by ones it has; null if there is none.
  std::optional<std::string> suggestion;
  /// What was searched for in the place of the query; null if it was searched for as it is.
  std::optional<std::string> searched = {};
  /// How much meaning counts in the scores, and each word searched for with what stands for it and
  /// the number of pages that have it: short lines in English. Empty unless explained.
  std::vector<std::string> explanation = {};
};

/// From the handles of quorvex.h to the values above.
namespace detail {

struct Free {
  void operator()(quorvex_error* error) const { quorvex_error_free(error); }
  void operator()(quorvex_index* index) const { quorvex_index_close(index); }
  void operator()(quorvex_options* options) const { quorvex_options_free(options); }
  void operator()(quorvex_page* page) const { quorvex_page_free(page); }
  void operator()(quorvex_list* list) const { quorvex_list_free(list); }
  void operator()(quorvex_matches* matches) const { quorvex_matches_free(matches); }
  void operator()(quorvex_result* result) const { quorvex_result_free(result); }
  void operator()(char* text) const { quorvex_text_free(text); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

[[noreturn]] inline void runOutOfMemory() {
#ifdef __cpp_exceptions
  throw std::bad_alloc();
#else
  std::abort();
#endif
}

/// Turns what a function returned and the error that it described, which is freed, into a failure.
inline std::optional<Failure> failureOf(quorvex_code code, quorvex_error* described) {
  const Owned<quorvex_error> error(described);
  if (code == QUORVEX_OK) return std::nullopt;
  if (code == QUORVEX_NO_MEMORY) runOutOfMemory();
  std::size_t length = 0;
  const char* message = quorvex_error_message(error.get(), &length);
  return Failure{static_cast<Failure::Reason>(code), {message, length}};
}

/// Calls a function with the places for its result and its error.
template <typename T, typename Function>
Expected<Owned<T>> made(const Function& function) {
  T* result = nullptr;
  quorvex_error* error = nullptr;
  const quorvex_code code = function(&result, &error);
  Owned<T> owned(result);
  if (std::optional<Failure> failure = failureOf(code, error)) return *std::move(failure);
  return owned;
}

/// Calls a function that returns a text, or null.
template <typename Handle>
std::optional<std::string> optionalText(const char* (*function)(const Handle*, std::size_t*),
                                        const Handle* handle) {
  std::size_t length = 0;
  const char* text = function(handle, &length);
  if (text == nullptr) return std::nullopt;
  return std::string(text, length);
}

template <typename Handle>
std::string text(const char* (*function)(const Handle*, std::size_t*), const Handle* handle) {
  return optionalText(function, handle).value_or(std::string());
}

inline HelpPage page(const quorvex_page* page) {
  return {text(quorvex_page_path, page), text(quorvex_page_first_anchor, page),
          text(quorvex_page_title, page), text(quorvex_page_description, page)};
}

template <typename Handle>
std::vector<TextRange> ranges(const TextRange* (*function)(const Handle*, std::size_t*),
                              const Handle* handle) {
  std::size_t count = 0;
  const TextRange* first = function(handle, &count);
  return {first, first + count};
}

inline std::vector<std::string> texts(const quorvex_list* list) {
  std::vector<std::string> texts;
  const std::size_t count = quorvex_list_count(list);
  texts.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::size_t length = 0;
    const char* text = quorvex_list_at(list, i, &length);
    texts.emplace_back(text, length);
  }
  return texts;
}

inline std::vector<HelpPlace> places(const quorvex_hit* hit) {
  std::vector<HelpPlace> places;
  for (std::size_t i = 0; i < quorvex_hit_place_count(hit); ++i) {
    const quorvex_place* place = quorvex_hit_place(hit, i);
    places.push_back({text(quorvex_place_fragment, place), texts(quorvex_place_headings(place)),
                      quorvex_place_score(place), optionalText(quorvex_place_snippet, place),
                      ranges(quorvex_place_snippet_matches, place)});
  }
  return places;
}

inline std::vector<ScorePart> parts(const quorvex_hit* hit) {
  std::vector<ScorePart> parts;
  for (std::size_t i = 0; i < quorvex_hit_part_count(hit); ++i) {
    std::size_t length = 0;
    const char* name = quorvex_hit_part_name(hit, i, &length);
    parts.push_back({std::string(name, length), quorvex_hit_part_value(hit, i)});
  }
  return parts;
}

inline std::vector<Hit> hits(const quorvex_result* result) {
  std::vector<Hit> hits;
  const std::size_t count = quorvex_result_hit_count(result);
  hits.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const quorvex_hit* hit = quorvex_result_hit(result, i);
    hits.push_back({page(quorvex_hit_page(hit)), quorvex_hit_score(hit),
                    ranges(quorvex_hit_title_matches, hit),
                    ranges(quorvex_hit_description_matches, hit), places(hit),
                    optionalText(quorvex_hit_name, hit), quorvex_hit_index(hit), parts(hit)});
  }
  return hits;
}

inline Expected<Owned<quorvex_options>> options(const SearchOptions& values) {
  Owned<quorvex_options> options(quorvex_options_new());
  if (options == nullptr) runOutOfMemory();
  quorvex_options_set_count(options.get(), values.count, nullptr);
  quorvex_options_set_last_word_is_prefix(options.get(), values.lastWordIsPrefix, nullptr);
  quorvex_options_set_plain_text(options.get(), values.isPlainText, nullptr);
  quorvex_options_set_explained(options.get(), values.explained, nullptr);
  quorvex_error* error = nullptr;
  quorvex_code code = quorvex_options_set_ranking(
      options.get(), static_cast<quorvex_ranking>(values.ranking), &error);
  if (code == QUORVEX_OK) {
    code = quorvex_options_set_language(options.get(), values.language.data(),
                                        values.language.size(), &error);
  }
  if (std::optional<Failure> failure = failureOf(code, error)) return *std::move(failure);
  return options;
}

}  // namespace detail

/// Returns the path of a page below a folder; null if the page path names no file,
/// contains a zero byte or has ".." as a component.
/// Symbolic links in the folder may still lead anywhere.
inline std::optional<std::string> joinPagePath(std::string_view folder, std::string_view pagePath) {
  const auto path = detail::made<char>([&](char** result, quorvex_error** error) {
    return quorvex_join_page_path(folder.data(), folder.size(), pagePath.data(), pagePath.size(),
                                  result, error);
  });
  if (!path) return std::nullopt;
  return std::string(path->get());
}

/// An open index file. Copies are cheap and share it.
class HelpIndex {
 public:
  static Expected<HelpIndex> open(const std::string& path) {
    return opened([&](quorvex_index** index, quorvex_error** error) {
      return quorvex_index_open(path.data(), path.size(), index, error);
    });
  }
  /// Opens the bytes of an index file, which are not needed afterwards.
  static Expected<HelpIndex> fromBytes(std::string_view bytes) {
    return opened([&](quorvex_index** index, quorvex_error** error) {
      return quorvex_index_open_bytes(bytes.data(), bytes.size(), index, error);
    });
  }

  /// Returns an index that also reads the pages of the book that it was made from, to quote them in
  /// HelpPlace::snippet: a folder of pages or a description file. They are read while searching,
  /// and only regular files in the folder.
  Expected<HelpIndex> withBook(const std::string& book) const {
    return opened([&](quorvex_index** index, quorvex_error** error) {
      return quorvex_index_with_book(_index.get(), book.data(), book.size(), index, error);
    });
  }

  /// Returns the language that the index states, like contents(); much faster in a large book,
  /// whose title takes a look at all pages.
  std::optional<std::string> language() const {
    return detail::optionalText(quorvex_index_language, _index.get());
  }

  IndexContents contents() const {
    const quorvex_index* index = _index.get();
    return {quorvex_index_format(index),
            quorvex_index_page_count(index),
            quorvex_index_has_full_text(index),
            quorvex_index_has_semantic(index),
            quorvex_index_ignores_semantic(index),
            detail::optionalText(quorvex_index_language, index),
            detail::optionalText(quorvex_index_remote_root, index),
            detail::optionalText(quorvex_index_title, index)};
  }

  /// Accepts any bytes as a query. Fails if the index lacks the requested ranking.
  Expected<SearchResult> search(std::string_view query, const SearchOptions& options = {}) const {
    return answered(options, [&](const quorvex_options* set, auto** made, auto** error) {
      return quorvex_index_search(_index.get(), query.data(), query.size(), set, made, error);
    });
  }

  /// Answers a query from several indexes at once. Words weigh as they do in all books together, so
  /// that scores can be compared; Hit::index tells where a hit is from. Each index is searched in
  /// its own language, unless the options have one. Fails if an index has no full-text index, or if
  /// one lacks the requested ranking.
  static Expected<SearchResult> searchAll(const std::vector<HelpIndex>& indexes,
                                          std::string_view query,
                                          const SearchOptions& options = {}) {
    std::vector<const quorvex_index*> handles;
    handles.reserve(indexes.size());
    for (const HelpIndex& index : indexes)
      handles.push_back(index._index.get());
    return answered(options, [&](const quorvex_options* set, auto** made, auto** error) {
      return quorvex_search_indexes(handles.data(), handles.size(), query.data(), query.size(), set,
                                    made, error);
    });
  }

  /// Returns the pages closest in meaning to the page at `path`; no hits for an unknown page. Fails
  /// without a semantic index.
  Expected<std::vector<Hit>> related(std::string_view path, std::size_t count = 10) const {
    return listed(path, count, quorvex_index_related);
  }

  /// Returns the defined names that begin with a text, or whose last parts do, each as a hit with
  /// Hit::name and the place that defines it. Fails without a full-text index.
  Expected<std::vector<Hit>> names(std::string_view text, std::size_t count = 10) const {
    return listed(text, count, quorvex_index_names);
  }

  /// Returns where the words of a query stand in a text, such as a page to be shown: those that a
  /// search with the same options finds, ascending, without overlaps. Both are any bytes. Fails
  /// without a full-text index.
  Expected<std::vector<TextRange>> match(std::string_view query, std::string_view text,
                                         const SearchOptions& options = {}) const {
    const auto set = detail::options(options);
    if (!set) return set.failure();
    const auto matches =
        detail::made<quorvex_matches>([&](quorvex_matches** made, quorvex_error** error) {
          return quorvex_index_match(_index.get(), query.data(), query.size(), text.data(),
                                     text.size(), set->get(), made, error);
        });
    if (!matches) return matches.failure();
    return detail::ranges(quorvex_matches_ranges, matches->get());
  }

  /// Returns the paths of pages with an anchor of this name.
  std::vector<std::string> pagesWithAnchor(std::string_view name) const {
    const auto paths = detail::made<quorvex_list>([&](quorvex_list** made, quorvex_error** error) {
      return quorvex_index_pages_with_anchor(_index.get(), name.data(), name.size(), made, error);
    });
    return paths ? detail::texts(paths->get()) : std::vector<std::string>();
  }

  /// Returns page `number` of contents().pages, in file order; an empty page past the end.
  HelpPage page(std::size_t number) const {
    const auto page = detail::made<quorvex_page>([&](quorvex_page** made, quorvex_error** error) {
      return quorvex_index_page(_index.get(), number, made, error);
    });
    return page ? detail::page(page->get()) : HelpPage();
  }

 private:
  explicit HelpIndex(detail::Owned<quorvex_index> index) : _index(std::move(index)) {}

  template <typename Function>
  static Expected<HelpIndex> opened(const Function& function) {
    auto index = detail::made<quorvex_index>(function);
    if (!index) return index.failure();
    return HelpIndex(std::move(*index));
  }

  template <typename Function>
  static Expected<SearchResult> answered(const SearchOptions& options, const Function& function) {
    const auto set = detail::options(options);
    if (!set) return set.failure();
    const auto result =
        detail::made<quorvex_result>([&](quorvex_result** made, quorvex_error** error) {
          return function(set->get(), made, error);
        });
    if (!result) return result.failure();
    return SearchResult{static_cast<QueryState>(quorvex_result_state(result->get())),
                        detail::hits(result->get()),
                        detail::optionalText(quorvex_result_suggestion, result->get()),
                        detail::optionalText(quorvex_result_searched, result->get()),
                        detail::texts(quorvex_result_explanation(result->get()))};
  }

  template <typename Function>
  Expected<std::vector<Hit>> listed(std::string_view text, std::size_t count,
                                    const Function& function) const {
    SearchOptions options;
    options.count = count;
    const auto set = detail::options(options);
    if (!set) return set.failure();
    const auto result =
        detail::made<quorvex_result>([&](quorvex_result** made, quorvex_error** error) {
          return function(_index.get(), text.data(), text.size(), set->get(), made, error);
        });
    if (!result) return result.failure();
    return detail::hits(result->get());
  }

  std::shared_ptr<const quorvex_index> _index;
};

}  // namespace v2_0
}  // namespace quorvex
