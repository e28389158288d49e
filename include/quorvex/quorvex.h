#ifndef QUORVEX_QUORVEX_H
#define QUORVEX_QUORVEX_H

// Opens the index files of help books and answers searches: for C11, C++11 and every language that
// can call C. In C++17, quorvex/help_index.h offers the same as values. docs/searching.md describes
// the query language and how pages are ranked.
//
// Handles. What the caller frees says so below, with what; the freeing functions accept null.
// Everything else is borrowed: it lives as long as the handle that it was read from. Results, pages
// and lists of paths outlive their index.
//
// Text is UTF-8. As a parameter it is a pointer and a length in bytes, without any final zero; the
// pointer may be null if the length is 0. A returned text is followed by a zero byte; its length in
// bytes goes to `length`, unless that is null. Paths are the bytes of file names, which nearly
// always are UTF-8 too.
//
// Errors. What can fail returns a code and takes `error` last: unless that is null, it receives a
// quorvex_error, to be freed with quorvex_error_free(), or null on success. A handle to be returned
// is null after a failure. What cannot fail takes a null handle for an empty one and returns 0,
// false, null or an empty text.
//
// Threads. Several threads may use the same handle at once, as long as none of them frees it or
// sets an option in it. There is no global state.
//
// Undefined, because it cannot be noticed: pointers that are neither null nor what is asked for,
// handles that were freed, and lengths beyond the memory that they describe.
//
// Growth. Later releases with the same soname add functions, and values to the enumerations;
// nothing else changes. Treat an unknown code as QUORVEX_FAILED, an unknown state as
// QUORVEX_STATE_ANSWERED.

// NOLINTBEGIN(modernize-*): this is C
#include <stdbool.h>
#include <stddef.h>

#define QUORVEX_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define QUORVEX_INT : int  // so that a value of a later release is no undefined behaviour
extern "C" {
#else
#define QUORVEX_INT
#endif

typedef struct quorvex_index quorvex_index;      // an open index file
typedef struct quorvex_options quorvex_options;  // how to search
typedef struct quorvex_result quorvex_result;    // the answer to a search
typedef struct quorvex_hit quorvex_hit;          // a page that answers it
typedef struct quorvex_page quorvex_page;        // a page of the book
typedef struct quorvex_paths quorvex_paths;      // a list of page paths
typedef struct quorvex_error quorvex_error;      // why a function failed

// A part of a text, in bytes.
typedef struct quorvex_range {
  size_t begin;
  size_t end;
} quorvex_range;

typedef enum quorvex_code QUORVEX_INT {
  QUORVEX_OK = 0,
  QUORVEX_INVALID_ARGUMENT = 1,  // a null handle, or a value or length out of range
  QUORVEX_NO_MEMORY = 2,
  QUORVEX_UNREADABLE = 3,        // the file cannot be read
  QUORVEX_NOT_AN_INDEX = 4,      // no index file of format 1 or 2, or a damaged one
  QUORVEX_LACKS_FORM = 5,        // the index lacks what was requested, or says not to use it
  QUORVEX_UNKNOWN_LANGUAGE = 6,  // there is no such language
  QUORVEX_UNSAFE_PATH = 7,       // the path names no file of the book
  QUORVEX_FAILED = 8             // anything else, as the message says
} quorvex_code;

typedef enum quorvex_ranking QUORVEX_INT {
  QUORVEX_RANKING_BEST = 0,       // by words and by meaning, as far as the index has both
  QUORVEX_RANKING_FULL_TEXT = 1,  // by words
  QUORVEX_RANKING_SEMANTIC = 2    // by meaning
} quorvex_ranking;

typedef enum quorvex_state QUORVEX_INT {
  QUORVEX_STATE_NO_WORDS = 0,         // the query contains no word at all
  QUORVEX_STATE_ANSWERED = 1,         // there was something to search for; there may be no hits
  QUORVEX_STATE_ONLY_STOP_WORDS = 2,  // only words that the index omits
  QUORVEX_STATE_ONLY_EXCLUDED = 3     // only words that must not occur
} quorvex_state;

// The version of the library that is running ("2.0").
QUORVEX_API const char* quorvex_version(void);

// ---- Errors

QUORVEX_API quorvex_code quorvex_error_code(const quorvex_error* error);
// In English, for people.
QUORVEX_API const char* quorvex_error_message(const quorvex_error* error, size_t* length);
QUORVEX_API void quorvex_error_free(quorvex_error* error);

// ---- An index file

// Opens the file at a path. Free the index with quorvex_index_close().
QUORVEX_API quorvex_code quorvex_index_open(const char* path, size_t path_length,
                                            quorvex_index** index, quorvex_error** error);
// Opens the bytes of a file, which are not needed afterwards. Free the index with
// quorvex_index_close().
QUORVEX_API quorvex_code quorvex_index_open_bytes(const void* bytes, size_t size,
                                                  quorvex_index** index, quorvex_error** error);
QUORVEX_API void quorvex_index_close(quorvex_index* index);

// 1: full-text index; 2: searchable items, from which a full-text index is built on opening.
QUORVEX_API int quorvex_index_format(const quorvex_index* index);
// The number of pages that quorvex_index_page() gives: 0 without a full-text index.
QUORVEX_API size_t quorvex_index_page_count(const quorvex_index* index);
QUORVEX_API bool quorvex_index_has_full_text(const quorvex_index* index);
QUORVEX_API bool quorvex_index_has_semantic(const quorvex_index* index);
// Whether the semantic index says that the book is too small to benefit from it. It is not used
// then.
QUORVEX_API bool quorvex_index_ignores_semantic(const quorvex_index* index);
// The locale of the index ("en_US"); null if it tells none.
QUORVEX_API const char* quorvex_index_language(const quorvex_index* index, size_t* length);
// The base URL of the pages on the network; null if the book has none.
QUORVEX_API const char* quorvex_index_remote_root(const quorvex_index* index, size_t* length);

// ---- Pages

// Gives page `number`, in the order of the file, below quorvex_index_page_count(). Free it with
// quorvex_page_free().
QUORVEX_API quorvex_code quorvex_index_page(const quorvex_index* index, size_t number,
                                            quorvex_page** page, quorvex_error** error);
// Only for pages that quorvex_index_page() gave; those of hits belong to the hits.
QUORVEX_API void quorvex_page_free(quorvex_page* page);

// Relative to the book's root, with a leading slash. Untrusted: the author of the index may have
// put
// ".." into it, so make a file path of it only with quorvex_join_page_path().
QUORVEX_API const char* quorvex_page_path(const quorvex_page* page, size_t* length);
// Empty if the page has none.
QUORVEX_API const char* quorvex_page_first_anchor(const quorvex_page* page, size_t* length);
QUORVEX_API const char* quorvex_page_title(const quorvex_page* page, size_t* length);
QUORVEX_API const char* quorvex_page_description(const quorvex_page* page, size_t* length);

// Gives the paths of the pages with an anchor of this name; there may be none. Free them with
// quorvex_paths_free().
QUORVEX_API quorvex_code quorvex_index_pages_with_anchor(const quorvex_index* index,
                                                         const char* name, size_t name_length,
                                                         quorvex_paths** paths,
                                                         quorvex_error** error);
QUORVEX_API size_t quorvex_paths_count(const quorvex_paths* paths);
// Null past the last one.
QUORVEX_API const char* quorvex_paths_at(const quorvex_paths* paths, size_t number, size_t* length);
QUORVEX_API void quorvex_paths_free(quorvex_paths* paths);

// Gives the path of a page below a folder; QUORVEX_UNSAFE_PATH if the page path names no file, or
// leaves the folder through "..". Symbolic links in the folder may still lead anywhere. The path
// ends with a zero byte and contains no other; free it with quorvex_path_free().
QUORVEX_API quorvex_code quorvex_join_page_path(const char* folder, size_t folder_length,
                                                const char* page_path, size_t page_path_length,
                                                char** path, quorvex_error** error);
QUORVEX_API void quorvex_path_free(char* path);

// ---- Searching

// Accepts any bytes as a query: what is not UTF-8 separates words. Default options if `options` is
// null. Fails if the index lacks the requested ranking. Free the result with quorvex_result_free().
QUORVEX_API quorvex_code quorvex_index_search(const quorvex_index* index, const char* query,
                                              size_t query_length, const quorvex_options* options,
                                              quorvex_result** result, quorvex_error** error);
// Gives at most `count` pages, those closest in meaning to the page at a path; no hits for an
// unknown page. Fails without a semantic index. Free the result with quorvex_result_free().
QUORVEX_API quorvex_code quorvex_index_related(const quorvex_index* index, const char* path,
                                               size_t path_length, size_t count,
                                               quorvex_result** result, quorvex_error** error);

// Default options, for any number of searches in any index; null if there is no memory for them.
// Free them with quorvex_options_free().
QUORVEX_API quorvex_options* quorvex_options_new(void);
QUORVEX_API void quorvex_options_free(quorvex_options* options);
// Best by default.
QUORVEX_API quorvex_code quorvex_options_set_ranking(quorvex_options* options,
                                                     quorvex_ranking ranking,
                                                     quorvex_error** error);
// The maximum number of hits, by default 10.
QUORVEX_API quorvex_code quorvex_options_set_count(quorvex_options* options, size_t count,
                                                   quorvex_error** error);
// Whether the query is still being typed: then its last word matches all words that begin with it,
// and it is answered by words alone. By default not.
QUORVEX_API quorvex_code quorvex_options_set_last_word_is_prefix(quorvex_options* options,
                                                                 bool is_prefix,
                                                                 quorvex_error** error);
// Whether the query is prose: its quotation marks and hyphens then mean nothing. By default not.
QUORVEX_API quorvex_code quorvex_options_set_plain_text(quorvex_options* options,
                                                        bool is_plain_text, quorvex_error** error);
// The locale or language ("en") for matching words across their inflections; by default and if
// empty, that of the index. "und" matches words only as they are written, and so does a language
// without rules for inflections. Of QUORVEX_UNKNOWN_LANGUAGE, nothing is set.
QUORVEX_API quorvex_code quorvex_options_set_language(quorvex_options* options,
                                                      const char* language, size_t language_length,
                                                      quorvex_error** error);

QUORVEX_API void quorvex_result_free(quorvex_result* result);
QUORVEX_API quorvex_state quorvex_result_state(const quorvex_result* result);
// The query, with words that the index lacks replaced by ones it has; null if there are none.
QUORVEX_API const char* quorvex_result_suggestion(const quorvex_result* result, size_t* length);
QUORVEX_API size_t quorvex_result_hit_count(const quorvex_result* result);
// Best first; null past the last one.
QUORVEX_API const quorvex_hit* quorvex_result_hit(const quorvex_result* result, size_t number);

QUORVEX_API const quorvex_page* quorvex_hit_page(const quorvex_hit* hit);
// Above 0; comparable only within the same result.
QUORVEX_API double quorvex_hit_score(const quorvex_hit* hit);
// The matched words in title and description, in order: an array whose length goes to `count`,
// unless that is null.
QUORVEX_API const quorvex_range* quorvex_hit_title_matches(const quorvex_hit* hit, size_t* count);
QUORVEX_API const quorvex_range* quorvex_hit_description_matches(const quorvex_hit* hit,
                                                                 size_t* count);

#ifdef __cplusplus
}
#endif
#undef QUORVEX_INT
// NOLINTEND(modernize-*)

#endif
