// The functions of the public header that can fail, or that take an index.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/locale.h"
#include "common/result.h"
#include "indexfile/index_file_reader.h"
#include "platform/compression.h"
#include "quorvex/quorvex.h"
#include "reader/answers.h"
#include "reader/beacon_cache.h"
#include "reader/c_call.h"
#include "reader/handle_values.h"
#include "reader/joint_search.h"
#include "reader/open_index.h"
#include "reader/page_path.h"

#define TEXT_OF(value) #value
#define VERSION_OF(major, minor) TEXT_OF(major) "." TEXT_OF(minor)
static_assert(std::string_view(QUORVEX_VERSION) ==
              VERSION_OF(QUORVEX_VERSION_MAJOR, QUORVEX_VERSION_MINOR));

struct quorvex_index {
  std::shared_ptr<const quorvex::reader::OpenIndex> content;
  std::shared_ptr<const quorvex::reader::PageTexts> texts;  ///< of the book; may be null
};

namespace quorvex::reader {

namespace {

const OpenIndex& contentOf(const quorvex_index* index) {
  return *required(index, "index").content;
}

Refusal damaged() {
  return {QUORVEX_NOT_AN_INDEX, "The index is damaged"};
}

/// Returns the content of an index, or what takes its place if it is known to be damaged.
const OpenIndex& soundContentOf(const quorvex_index* index) {
  const OpenIndex* content = &contentOf(index);
  while (content->isDamaged()) {
    content = content->madeAnew();
    if (content == nullptr) throw damaged();
  }
  return *content;
}

/// Returns what `work` reads from the content of an index.
template <typename Work>
auto readFrom(const quorvex_index* index, const Work& work) {
  for (;;) {
    const OpenIndex& content = soundContentOf(index);
    const FrameStore::Use use = content.use();
    auto answer = work(content);
    if (!content.isDamaged()) return answer;
  }
}

/// The same from several indexes at once.
template <typename Work>
auto readFromAll(std::span<const quorvex_index* const> indexes, const Work& work) {
  for (;;) {
    std::vector<IndexAndBook> contents;
    std::vector<FrameStore::Use> uses;
    for (const quorvex_index* const index : indexes) {
      contents.push_back({&soundContentOf(index), index->texts.get()});
      uses.push_back(contents.back().index->use());
    }
    auto answer = work(contents);
    const auto isSound = [](const IndexAndBook& each) { return !each.index->isDamaged(); };
    if (std::ranges::all_of(contents, isSound)) return answer;
  }
}

template <typename Answer>
Answer orRefused(Result<Answer> found) {
  if (!found) throw Refusal{QUORVEX_LACKS_FORM, found.error().description};
  return *std::move(found);
}

/// A path that the system will read: a zero byte would end it early.
std::string pathOf(const char* path, std::size_t length, const char* name) {
  const std::string_view bytes = bytesOf(path, length, name);
  if (bytes.find('\0') != std::string_view::npos) {
    throw invalid(std::string("There is a zero byte in the ") + name);
  }
  return std::string(bytes);
}

/// The subtag of a language or locale; null for no identifier, empty for one without a language.
std::optional<std::string> languageOf(std::string_view identifier) {
  if (identifier.empty()) return std::nullopt;
  const std::string_view name = identifier.substr(0, identifier.find_first_of("_-."));
  if (name == "und" || name == "C" || name == "POSIX") return std::string();
  const std::optional<Locale> locale = Locale::withIdentifier(identifier);
  if (!locale || !locale->hasKnownLanguage()) {
    throw Refusal{QUORVEX_UNKNOWN_LANGUAGE, "Unknown language: " + std::string(identifier)};
  }
  return locale->language();
}

const Contents& contentsOf(const quorvex_index* index) {
  return orEmpty(index == nullptr ? nullptr : &index->content->contents());
}

template <auto Member, typename T>
quorvex_code set(quorvex_options* options, T value, quorvex_error** error) {
  return attempt(error, [&] { required(options, "options").*Member = value; });
}

}  // namespace

}  // namespace quorvex::reader

using namespace quorvex;
using namespace quorvex::reader;

const char* quorvex_version() {
  return QUORVEX_VERSION;
}

// ---- Errors

quorvex_code quorvex_error_code(const quorvex_error* error) {
  return orEmpty(error).code;
}

const char* quorvex_error_message(const quorvex_error* error, size_t* length) {
  return given(orEmpty(error).message, length);
}

void quorvex_error_free(quorvex_error* error) {
  if (error != noMemory()) delete error;
}

// ---- An index file

quorvex_code quorvex_index_open(const char* path, size_t path_length, quorvex_index** index,
                                quorvex_error** error) {
  return give(index, error, [&] {
    const std::string name = pathOf(path, path_length, "path");
    if (name.empty()) throw invalid("The path is empty");
    const BeaconCache cache(name);
    if (auto kept = OpenIndex::makeKept(cache)) return quorvex_index{std::move(kept), nullptr};
    Result<OpenedIndexFile> opened = openIndexFile(name);
    if (!opened) throw Refusal{QUORVEX_UNREADABLE, name + ": " + opened.error().description};
    auto content = OpenIndex::make(std::move(opened->file), &cache);
    if (!content) throw Refusal{QUORVEX_NOT_AN_INDEX, name + ": " + content.error().description};
    return quorvex_index{*std::move(content), nullptr};
  });
}

quorvex_code quorvex_index_open_bytes(const void* bytes, size_t size, quorvex_index** index,
                                      quorvex_error** error) {
  return give(index, error, [&] {
    const std::string_view file = bytesOf(bytes, size, "bytes");
    auto content = OpenIndex::make(readIndexFile(decompress(file), FrameLimits(size)));
    if (!content) throw Refusal{QUORVEX_NOT_AN_INDEX, content.error().description};
    return quorvex_index{*std::move(content), nullptr};
  });
}

quorvex_code quorvex_index_with_book(const quorvex_index* index, const char* book,
                                     size_t book_length, quorvex_index** with_book,
                                     quorvex_error** error) {
  return give(with_book, error, [&] {
    const quorvex_index& content = required(index, "index");
    const std::string path = pathOf(book, book_length, "path of the book");
    if (path.empty()) throw invalid("The path of the book is empty");
    auto opened = Book::open(path);
    if (!opened) throw Refusal{QUORVEX_UNREADABLE, path + ": " + opened.error().description};
    return quorvex_index{content.content, std::make_shared<const PageTexts>(*std::move(opened))};
  });
}

void quorvex_index_close(quorvex_index* index) {
  delete index;
}

int quorvex_index_format(const quorvex_index* index) {
  return contentsOf(index).format;
}

size_t quorvex_index_page_count(const quorvex_index* index) {
  return contentsOf(index).pages;
}

bool quorvex_index_has_full_text(const quorvex_index* index) {
  return contentsOf(index).fullText;
}

bool quorvex_index_has_semantic(const quorvex_index* index) {
  return contentsOf(index).semantic;
}

bool quorvex_index_ignores_semantic(const quorvex_index* index) {
  return contentsOf(index).ignoresSemantic;
}

const char* quorvex_index_language(const quorvex_index* index, size_t* length) {
  return given(contentsOf(index).language, length);
}

const char* quorvex_index_title(const quorvex_index* index, size_t* length) {
  const std::optional<std::string>* title = nullptr;
  attempt(nullptr, [&] {
    title = readFrom(index, [](const OpenIndex& content) { return &content.title(); });
  });
  return title == nullptr ? given(std::nullopt, length) : given(*title, length);
}

const char* quorvex_index_remote_root(const quorvex_index* index, size_t* length) {
  return given(contentsOf(index).remoteRoot, length);
}

// ---- Pages

quorvex_code quorvex_index_page(const quorvex_index* index, size_t number, quorvex_page** page,
                                quorvex_error** error) {
  return give(page, error, [&] {
    return readFrom(index, [&](const OpenIndex& content) {
      if (number >= content.contents().pages) throw invalid("The index has fewer pages");
      return content.page(number);
    });
  });
}

quorvex_code quorvex_index_pages_with_anchor(const quorvex_index* index, const char* name,
                                             size_t name_length, quorvex_list** paths,
                                             quorvex_error** error) {
  return give(paths, error, [&] {
    return readFrom(index, [&](const OpenIndex& content) {
      return quorvex_list{.texts = content.pagesWithAnchor(bytesOf(name, name_length, "name"))};
    });
  });
}

quorvex_code quorvex_join_page_path(const char* folder, size_t folder_length, const char* page_path,
                                    size_t page_path_length, char** path, quorvex_error** error) {
  return attempt(error, [&] {
    if (path == nullptr) throw invalid("There is no place for the result");
    *path = nullptr;
    const std::optional<std::string> joined = pathBelow(
        pathOf(folder, folder_length, "folder"), bytesOf(page_path, page_path_length, "page path"));
    if (!joined) throw Refusal{QUORVEX_UNSAFE_PATH, "The path cannot be one of a page"};
    *path = new char[joined->size() + 1]();
    joined->copy(*path, joined->size());
  });
}

void quorvex_text_free(char* text) {
  delete[] text;
}

// ---- Searching

quorvex_code quorvex_index_search(const quorvex_index* index, const char* query,
                                  size_t query_length, const quorvex_options* options,
                                  quorvex_result** result, quorvex_error** error) {
  return give(result, error, [&] {
    return orRefused(readFrom(index, [&](const OpenIndex& content) {
      const std::string_view text = bytesOf(query, query_length, "query");
      return content.search(text, orEmpty(options), index->texts.get());
    }));
  });
}

quorvex_code quorvex_search_indexes(const quorvex_index* const* indexes, size_t index_count,
                                    const char* query, size_t query_length,
                                    const quorvex_options* options, quorvex_result** result,
                                    quorvex_error** error) {
  return give(result, error, [&] {
    if (index_count > PTRDIFF_MAX / sizeof(IndexAndBook)) throw invalid("Too many indexes");
    if (index_count > 0) required(indexes, "indexes");
    return orRefused(readFromAll({indexes, index_count}, [&](const auto& searched) {
      const std::string_view text = bytesOf(query, query_length, "query");
      return searchTogether(searched, text, orEmpty(options));
    }));
  });
}

quorvex_code quorvex_index_related(const quorvex_index* index, const char* path, size_t path_length,
                                   const quorvex_options* options, quorvex_result** result,
                                   quorvex_error** error) {
  return give(result, error, [&] {
    const std::string_view page = bytesOf(path, path_length, "path");
    return orRefused(readFrom(index, [&](const OpenIndex& content) {
      return content.related(page, orEmpty(options).count);
    }));
  });
}

quorvex_code quorvex_index_names(const quorvex_index* index, const char* text, size_t text_length,
                                 const quorvex_options* options, quorvex_result** result,
                                 quorvex_error** error) {
  return give(result, error, [&] {
    return orRefused(readFrom(index, [&](const OpenIndex& content) {
      const std::string_view beginning = bytesOf(text, text_length, "text");
      return content.names(beginning, orEmpty(options).count, index->texts.get());
    }));
  });
}

quorvex_code quorvex_index_match(const quorvex_index* index, const char* query, size_t query_length,
                                 const char* text, size_t text_length,
                                 const quorvex_options* options, quorvex_matches** matches,
                                 quorvex_error** error) {
  return give(matches, error, [&] {
    return quorvex_matches{.ranges = orRefused(readFrom(index, [&](const OpenIndex& content) {
                             return content.match(bytesOf(query, query_length, "query"),
                                                  bytesOf(text, text_length, "text"),
                                                  orEmpty(options));
                           }))};
  });
}

quorvex_options* quorvex_options_new() {
  return new (std::nothrow) quorvex_options;
}

void quorvex_options_free(quorvex_options* options) {
  delete options;
}

quorvex_code quorvex_options_set_ranking(quorvex_options* options, quorvex_ranking ranking,
                                         quorvex_error** error) {
  return attempt(error, [&] {
    if (ranking < QUORVEX_RANKING_BEST || ranking > QUORVEX_RANKING_SEMANTIC) {
      throw invalid("There is no such ranking");
    }
    required(options, "options").ranking = ranking;
  });
}

quorvex_code quorvex_options_set_count(quorvex_options* options, size_t count,
                                       quorvex_error** error) {
  return set<&quorvex_options::count>(options, count, error);
}

quorvex_code quorvex_options_set_last_word_is_prefix(quorvex_options* options, bool is_prefix,
                                                     quorvex_error** error) {
  return set<&quorvex_options::lastWordIsPrefix>(options, is_prefix, error);
}

quorvex_code quorvex_options_set_plain_text(quorvex_options* options, bool is_plain_text,
                                            quorvex_error** error) {
  return set<&quorvex_options::isPlainText>(options, is_plain_text, error);
}

quorvex_code quorvex_options_set_language(quorvex_options* options, const char* language,
                                          size_t language_length, quorvex_error** error) {
  return attempt(error, [&] {
    const std::string_view identifier = bytesOf(language, language_length, "language");
    required(options, "options").language = languageOf(identifier);
  });
}

quorvex_code quorvex_options_set_explained(quorvex_options* options, bool is_explained,
                                           quorvex_error** error) {
  return set<&quorvex_options::explained>(options, is_explained, error);
}
