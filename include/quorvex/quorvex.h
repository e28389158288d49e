#ifndef QUORVEX_QUORVEX_H
#define QUORVEX_QUORVEX_H

// Opens the index files of help books and answers searches: for C11, C++11 and every language that
// can call C. In C++17, quorvex/help_index.h offers the same as values.
//
// Handles. A function that hands over something to be freed says how; the freeing functions accept
// null. Everything else is borrowed: it lives as long as the handle that it was read from. Results,
// pages and lists outlive their index.
//
// Text is UTF-8. As a parameter it is a pointer and a length in bytes, without any final zero; the
// pointer may be null if the length is 0. A returned text is followed by a zero byte; its length in
// bytes goes to `length`, unless that is null. In an odd index it may contain zero bytes itself.
// Paths are the bytes of file names, which nearly always are UTF-8 too.
//
// Errors. A function that can fail returns a code and takes `error` last. Each call overwrites what
// `error` points to, unless that is null: with a quorvex_error, to be freed with
// quorvex_error_free(), or with null on success. So read it in a statement after the call: in
// check(quorvex_...(..., &error), error) it may be read before. A result is null after a failure.
// Every such function may return QUORVEX_INVALID_ARGUMENT, QUORVEX_NO_MEMORY or QUORVEX_FAILED;
// other codes are listed. Functions that cannot fail treat a null handle as an empty one: they
// return 0, false, null or an empty text.
//
// Threads. Several threads may use the same handle at once, as long as none of them frees it or
// sets an option in it. No state is kept outside of handles, except for files that
// quorvex_index_open() may keep.
//
// Undefined behaviour, because the library cannot detect it: pointers that are neither null nor
// what is asked for, handles that were freed, lengths beyond the memory that they describe, and
// cancelling a thread (pthread_cancel) during a call.
//
// Growth. Later releases with the same soname add functions, and values to the enumerations;
// nothing else changes. Treat an unknown code as QUORVEX_FAILED, an unknown state as
// QUORVEX_STATE_ANSWERED.

// NOLINTBEGIN(modernize-*): this is C
#include <stdbool.h>
#include <stddef.h>

#define QUORVEX_VERSION_MAJOR 2
#define QUORVEX_VERSION_MINOR 0

#define QUORVEX_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define QUORVEX_INT : int  // so that values of a later release are defined behaviour
extern "C" {
#else
#define QUORVEX_INT
#endif

typedef struct quorvex_index quorvex_index;      // an open index file
typedef struct quorvex_options quorvex_options;  // how to search
typedef struct quorvex_result quorvex_result;    // the answer to a search
typedef struct quorvex_hit quorvex_hit;          // a page that answers it
typedef struct quorvex_place quorvex_place;      // a place in a page that answers it
typedef struct quorvex_page quorvex_page;        // a page of the book
typedef struct quorvex_list quorvex_list;        // a list of texts
typedef struct quorvex_matches quorvex_matches;  // where a query stands in a text
typedef struct quorvex_error quorvex_error;      // why a function failed

// The bytes of a text from `begin` up to but not including `end`.
typedef struct quorvex_range {
  size_t begin;
  size_t end;
} quorvex_range;

typedef enum quorvex_code QUORVEX_INT {
  QUORVEX_OK = 0,
  QUORVEX_INVALID_ARGUMENT = 1,  // a null, value, length or text that is not allowed
  QUORVEX_NO_MEMORY = 2,
  QUORVEX_UNREADABLE = 3,        // the file cannot be read
  QUORVEX_NOT_AN_INDEX = 4,      // not an index file of format 1 or 2, or damaged
  QUORVEX_LACKS_FORM = 5,        // the index has no such index form, or says not to use it
  QUORVEX_UNKNOWN_LANGUAGE = 6,  // the library knows no such language
  QUORVEX_UNSAFE_PATH = 7,       // the path cannot be one of a page
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

// QUORVEX_OK for null.
QUORVEX_API quorvex_code quorvex_error_code(const quorvex_error* error);
// In English, for people.
QUORVEX_API const char* quorvex_error_message(const quorvex_error* error, size_t* length);
QUORVEX_API void quorvex_error_free(quorvex_error* error);

// ---- An index file

// Opens the file at a path, or fails with QUORVEX_UNREADABLE or QUORVEX_NOT_AN_INDEX. Free the
// index with quorvex_index_close(). The full-text index of a file of format 2 is made the first
// time and kept in the user's cache folder ($XDG_CACHE_HOME/quorvex, else ~/.cache/quorvex), in
// 512 MiB at most. To forbid this, set QUORVEX_CACHE=no in the environment.
QUORVEX_API quorvex_code quorvex_index_open(const char* path, size_t path_length,
                                            quorvex_index** index, quorvex_error** error);
// Opens the bytes of a file, which are not needed afterwards, or fails with QUORVEX_NOT_AN_INDEX.
// Free the index with quorvex_index_close().
QUORVEX_API quorvex_code quorvex_index_open_bytes(const void* bytes, size_t size,
                                                  quorvex_index** index, quorvex_error** error);
// Gives another handle for an open index, whose searches also read the pages of the book that it
// was made from and so quote them: see quorvex_place_snippet(). `book` is the path of the folder
// with the pages, or of the description file that holds them; fails with QUORVEX_UNREADABLE. The
// pages are read while searching, and only regular files in the folder. The two handles are
// independent of each other; close the new one with quorvex_index_close(), too.
QUORVEX_API quorvex_code quorvex_index_with_book(const quorvex_index* index, const char* book,
                                                 size_t book_length, quorvex_index** with_book,
                                                 quorvex_error** error);
QUORVEX_API void quorvex_index_close(quorvex_index* index);

// 1: a full-text index, a semantic index or both; 2: searchable items, from which a full-text index
// is made on opening, unless one is kept.
QUORVEX_API int quorvex_index_format(const quorvex_index* index);
// The number of pages that quorvex_index_page() gives: 0 without a full-text index.
QUORVEX_API size_t quorvex_index_page_count(const quorvex_index* index);
QUORVEX_API bool quorvex_index_has_full_text(const quorvex_index* index);
QUORVEX_API bool quorvex_index_has_semantic(const quorvex_index* index);
// Whether the semantic index itself says not to use it, because the book is too small to benefit.
QUORVEX_API bool quorvex_index_ignores_semantic(const quorvex_index* index);
// The locale of the index ("en_US"); null if the index states none.
QUORVEX_API const char* quorvex_index_language(const quorvex_index* index, size_t* length);
// The title of the whole book: what most titles of its pages share, else that of its first page,
// the one highest in the folders. Null if there is none.
QUORVEX_API const char* quorvex_index_title(const quorvex_index* index, size_t* length);
// The base URL of the pages on the network, as the author gave it; null if there is none.
QUORVEX_API const char* quorvex_index_remote_root(const quorvex_index* index, size_t* length);

// ---- Pages

// Gives page `number`, counted from 0 in the order of the file; it must be less than
// quorvex_index_page_count(). Free the page with quorvex_page_free().
QUORVEX_API quorvex_code quorvex_index_page(const quorvex_index* index, size_t number,
                                            quorvex_page** page, quorvex_error** error);
// Only for pages that quorvex_index_page() gave; those of hits belong to the hits.
QUORVEX_API void quorvex_page_free(quorvex_page* page);

// Relative to the book's root, with a leading slash. Untrusted, as it may contain "..": make a file
// path of it only with quorvex_join_page_path().
QUORVEX_API const char* quorvex_page_path(const quorvex_page* page, size_t* length);
// The name of the first anchor in the page, empty if there is none. It is not chosen by a query.
QUORVEX_API const char* quorvex_page_first_anchor(const quorvex_page* page, size_t* length);
// Without what most titles of the book share, such as its name behind a dash.
QUORVEX_API const char* quorvex_page_title(const quorvex_page* page, size_t* length);
QUORVEX_API const char* quorvex_page_description(const quorvex_page* page, size_t* length);

// Gives the paths of the pages with an anchor of this name; there may be none. Free them with
// quorvex_list_free().
QUORVEX_API quorvex_code quorvex_index_pages_with_anchor(const quorvex_index* index,
                                                         const char* name, size_t name_length,
                                                         quorvex_list** paths,
                                                         quorvex_error** error);
QUORVEX_API size_t quorvex_list_count(const quorvex_list* list);
// Text `number`, counted from 0; null past the last one.
QUORVEX_API const char* quorvex_list_at(const quorvex_list* list, size_t number, size_t* length);
QUORVEX_API void quorvex_list_free(quorvex_list* list);

// Gives the path of a page below a folder ("." if that is empty), or fails with QUORVEX_UNSAFE_PATH
// if the page path names no file, contains a zero byte or has ".." as a component. Symbolic links
// in the folder may still lead anywhere. Free the path, which ends with its only zero byte, with
// quorvex_text_free().
QUORVEX_API quorvex_code quorvex_join_page_path(const char* folder, size_t folder_length,
                                                const char* page_path, size_t page_path_length,
                                                char** path, quorvex_error** error);
QUORVEX_API void quorvex_text_free(char* text);

// ---- Searching

// Answers a query: words, "two words" that stand side by side, -word to exclude. An index without a
// full-text index takes it for prose. Accepts any bytes; those that are not UTF-8 separate words.
// Default options if `options` is null. Fails with QUORVEX_LACKS_FORM if the index cannot rank as
// requested. Free the result with quorvex_result_free().
QUORVEX_API quorvex_code quorvex_index_search(const quorvex_index* index, const char* query,
                                              size_t query_length, const quorvex_options* options,
                                              quorvex_result** result, quorvex_error** error);
// Answers a query from several indexes at once, as quorvex_index_search() does from one: words
// weigh as they do in all books together, so that scores can be compared. quorvex_hit_index() tells
// which index a hit is of. Each is searched in its own language, unless `options` has one. Fails
// with QUORVEX_LACKS_FORM if an index has no full-text index, or if one cannot rank as requested.
// Free the result with quorvex_result_free(). The array is not needed afterwards.
QUORVEX_API quorvex_code quorvex_search_indexes(const quorvex_index* const* indexes,
                                                size_t index_count, const char* query,
                                                size_t query_length, const quorvex_options* options,
                                                quorvex_result** result, quorvex_error** error);
// Gives the other pages that are closest in meaning to the page at a path; no hits for an unknown
// page. Of the options, which may be null, only the count matters. Fails with QUORVEX_LACKS_FORM if
// there is no semantic index to be used. Free the result with quorvex_result_free().
QUORVEX_API quorvex_code quorvex_index_related(const quorvex_index* index, const char* path,
                                               size_t path_length, const quorvex_options* options,
                                               quorvex_result** result, quorvex_error** error);

// Gives the defined names that begin with a text, or whose last parts do ("gath" finds
// asyncio.gather, "asyncio.ga" too): for completion while a name is being typed. Each is a hit with
// quorvex_hit_name() and the place that defines it; a page whose title is the name has no place. Of
// the options, which may be null, only the count matters. Fails with QUORVEX_LACKS_FORM without a
// full-text index. Free the result with quorvex_result_free().
QUORVEX_API quorvex_code quorvex_index_names(const quorvex_index* index, const char* text,
                                             size_t text_length, const quorvex_options* options,
                                             quorvex_result** result, quorvex_error** error);

// Finds where the words of a query stand in a text, such as a page that a program shows: those that
// a search of the index with the same options finds, so also inflections and what stands for
// misspelt words, but neither words that no page of the index has nor signs. The words of a phrase
// match wherever they stand, the parts of a joined name where the text lacks the name. Both texts
// are any bytes; those that are not UTF-8 separate words. Fails with QUORVEX_LACKS_FORM without a
// full-text index. Free the matches with quorvex_matches_free().
QUORVEX_API quorvex_code quorvex_index_match(const quorvex_index* index, const char* query,
                                             size_t query_length, const char* text,
                                             size_t text_length, const quorvex_options* options,
                                             quorvex_matches** matches, quorvex_error** error);
// The words, like quorvex_hit_title_matches(); none if the query finds nothing.
QUORVEX_API const quorvex_range* quorvex_matches_ranges(const quorvex_matches* matches,
                                                        size_t* count);
QUORVEX_API void quorvex_matches_free(quorvex_matches* matches);

// Default options, for any number of calls with any index; null if memory runs out. Free them with
// quorvex_options_free().
QUORVEX_API quorvex_options* quorvex_options_new(void);
QUORVEX_API void quorvex_options_free(quorvex_options* options);
// By default QUORVEX_RANKING_BEST.
QUORVEX_API quorvex_code quorvex_options_set_ranking(quorvex_options* options,
                                                     quorvex_ranking ranking,
                                                     quorvex_error** error);
// The maximum number of hits, by default 10.
QUORVEX_API quorvex_code quorvex_options_set_count(quorvex_options* options, size_t count,
                                                   quorvex_error** error);
// Whether the query is still being typed, by default not. If so, its last word, unless it is
// quoted, excluded or followed by a blank, matches all words that begin with it, and
// QUORVEX_RANKING_BEST ranks by words alone. Has no effect on QUORVEX_RANKING_SEMANTIC.
QUORVEX_API quorvex_code quorvex_options_set_last_word_is_prefix(quorvex_options* options,
                                                                 bool is_prefix,
                                                                 quorvex_error** error);
// Whether the query is prose, so that its quotation marks and hyphens mean nothing. By default not.
QUORVEX_API quorvex_code quorvex_options_set_plain_text(quorvex_options* options,
                                                        bool is_plain_text, quorvex_error** error);
// Whether the result is to tell where its scores come from, by default not: see
// quorvex_hit_part_count() and quorvex_result_explanation(). Such a search takes longer.
QUORVEX_API quorvex_code quorvex_options_set_explained(quorvex_options* options, bool is_explained,
                                                       quorvex_error** error);
// The language or locale ("en", "pt_BR", "de_CH.UTF-8") for matching words across their
// inflections. By default, and if the length is 0, that of the index. Words match only as they are
// written for "und", "C" and "POSIX", in a language without rules for inflections, and by default
// in an index that states no language. Fails with QUORVEX_UNKNOWN_LANGUAGE, and changes nothing, if
// the library does not know the language.
QUORVEX_API quorvex_code quorvex_options_set_language(quorvex_options* options,
                                                      const char* language, size_t language_length,
                                                      quorvex_error** error);

QUORVEX_API void quorvex_result_free(quorvex_result* result);
// Of related pages, QUORVEX_STATE_ANSWERED.
QUORVEX_API quorvex_state quorvex_result_state(const quorvex_result* result);
// The query, with words that the index lacks replaced by ones it has; null if there is none.
QUORVEX_API const char* quorvex_result_suggestion(const quorvex_result* result, size_t* length);
// What was searched for in the place of the query; null if it was searched for as it is. With null,
// a suggestion is only offered.
QUORVEX_API const char* quorvex_result_searched(const quorvex_result* result, size_t* length);
// How much meaning counts in the scores, and each word searched for with what stands for it and the
// number of pages that have it: short lines in English, for people. Empty unless it was asked for
// with quorvex_options_set_explained().
QUORVEX_API const quorvex_list* quorvex_result_explanation(const quorvex_result* result);
QUORVEX_API size_t quorvex_result_hit_count(const quorvex_result* result);
// Hit `number`, counted from 0, best first; null past the last one.
QUORVEX_API const quorvex_hit* quorvex_result_hit(const quorvex_result* result, size_t number);

QUORVEX_API const quorvex_page* quorvex_hit_page(const quorvex_hit* hit);
// The number of the hit's index among those searched together, from 0.
QUORVEX_API size_t quorvex_hit_index(const quorvex_hit* hit);
// Always above 0; comparable only within the same result.
QUORVEX_API double quorvex_hit_score(const quorvex_hit* hit);
// What the score is made of, largely in the order in which it comes about: the sum of the values,
// which may be below 0, is the score. None unless it was asked for with
// quorvex_options_set_explained(), nor for related pages and names.
QUORVEX_API size_t quorvex_hit_part_count(const quorvex_hit* hit);
// What part `number`, counted from 0, is for, in English, for people ("best section"); null past
// the last one.
QUORVEX_API const char* quorvex_hit_part_name(const quorvex_hit* hit, size_t number,
                                              size_t* length);
QUORVEX_API double quorvex_hit_part_value(const quorvex_hit* hit, size_t number);
// The defined name by which the hit was found: the query is this name, or its last parts. Null if
// the hit was found by words or meaning alone.
QUORVEX_API const char* quorvex_hit_name(const quorvex_hit* hit, size_t* length);
// The matched words in the title and in the description: an array in ascending order, without
// overlaps, whose length goes to `count`, unless that is null. Empty for related pages.
QUORVEX_API const quorvex_range* quorvex_hit_title_matches(const quorvex_hit* hit, size_t* count);
QUORVEX_API const quorvex_range* quorvex_hit_description_matches(const quorvex_hit* hit,
                                                                 size_t* count);

// The places of the page that answer best: at most three, the best first. None in a page
// without fragments, in an index of format 2 and for related pages.
QUORVEX_API size_t quorvex_hit_place_count(const quorvex_hit* hit);
// Place `number`, counted from 0; null past the last one.
QUORVEX_API const quorvex_place* quorvex_hit_place(const quorvex_hit* hit, size_t number);
// The fragment of the page's URL that leads to the place, as it stands in the page: encode it for a
// URL. Empty for the top of the page. Untrusted, like a path.
QUORVEX_API const char* quorvex_place_fragment(const quorvex_place* place, size_t* length);
// The headings and defined names above the place, from the page's title down to its own.
QUORVEX_API const quorvex_list* quorvex_place_headings(const quorvex_place* place);
// Comparable only within the same result.
QUORVEX_API double quorvex_place_score(const quorvex_place* place);
// The stretch of the page's text where the words stand closest: one line of whole words, usually
// about 160 characters, with an ellipsis where it begins or ends within a sentence. Null without
// the book, and if its page is missing, unreadable or not as it was when it was indexed.
QUORVEX_API const char* quorvex_place_snippet(const quorvex_place* place, size_t* length);
// The matched words in the snippet, like quorvex_hit_title_matches().
QUORVEX_API const quorvex_range* quorvex_place_snippet_matches(const quorvex_place* place,
                                                               size_t* count);

#ifdef __cplusplus
}
#endif
#undef QUORVEX_INT
// NOLINTEND(modernize-*)

#endif
