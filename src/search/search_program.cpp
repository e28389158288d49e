#include "search/search_program.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <malloc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/files.h"
#include "common/kept_files.h"
#include "common/locale.h"
#include "common/output.h"
#include "quorvex/help_index.h"
#include "search/browser.h"
#include "search/hit_json.h"
#include "search/hit_text.h"
#include "search/search_arguments.h"

namespace quorvex {

namespace {

constexpr std::string_view usage =
    "Usage: quorvex-search [options] INDEX WORDS...\n"
    "       quorvex-search [options] --index INDEX --index INDEX... WORDS...\n"
    "       quorvex-search [options] --names TEXT INDEX\n"
    "       quorvex-search [options] --anchor NAME INDEX\n"
    "       quorvex-search [options] --related PATH INDEX\n"
    "       quorvex-search --clear-cache\n"
    "Searches the index file of a help book and lists the pages that answer best.\n"
    "\n"
    "  WORDS            words to look for; '\"two words\"' must stand side by side,\n"
    "                   -word must not be there\n"
    "  -n, --count N    list at most N pages (10)\n"
    "      --book BOOK  quote the pages: the book's folder, or its description file\n"
    "      --index I    search the index I, too; then all operands are WORDS, and\n"
    "                   --book, if given, is needed for each index, in their order\n"
    "      --open[=N]   open hit N (1) at its place, with $BROWSER or xdg-open;\n"
    "                   needs --book FOLDER\n"
    "      --prefix     the last word is still being typed\n"
    "      --language L match words across their inflections as in language L;\n"
    "                   without it, as in the index's, else the user's\n"
    "      --full-text  rank by words alone\n"
    "      --semantic   rank by meaning alone\n"
    "      --explain    tell below each hit what its score is made of, and on standard\n"
    "                   error what was searched for\n"
    "      --names T    list the defined names that begin with T, whole or by\n"
    "                   their last parts, and where they are defined\n"
    "      --anchor A   list the pages that hold the anchor A\n"
    "      --related P  list the pages nearest in meaning to the page with path P\n"
    "      --clear-cache\n"
    "                   remove the indexes that are kept for you to search faster,\n"
    "                   those of quorvex-view included\n"
    "      --json       write one JSON object per line\n"
    "  -h, --help       print this help and exit\n"
    "      --version    print the version and exit\n"
    "\n"
    "Options go before INDEX and WORDS. Behind the first of them, any word that is no\n"
    "option of this program belongs to the question; others need -- before them.\n"
    "Exit status: 0 found, 1 nothing found, 2 usage error, 3 unreadable index or book,\n"
    "4 no output possible, 5 no browser.\n";

int status(SearchStatus status) {
  return static_cast<int>(status);
}

/// Prints safely, as messages quote the user or an index.
void complain(std::string_view message) {
  writeFully(STDERR_FILENO, "quorvex-search: " + printable(message) + "\n");
}

int fail(SearchStatus outcome, const std::string& message) {
  complain(message);
  return status(outcome);
}

/// Tells why a question was not answered.
int refuse(const Failure& failure) {
  using Reason = Failure::Reason;
  return fail(failure.reason == Reason::unknownLanguage ? SearchStatus::misuse
              : failure.reason == Reason::notAnIndex    ? SearchStatus::unreadableIndex
                                                        : SearchStatus::nothingFound,
              failure.message);
}

TextStyle styleOf(int descriptor) {
  TextStyle style;
  style.emphasised = understandsEscapes(descriptor);
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0) style.columns = size.ws_col;
  return style;
}

/// Writes the list; returns the status.
int finish(const std::string& list) {
  if (list.empty()) return status(SearchStatus::nothingFound);
  if (writeFully(STDOUT_FILENO, list)) return status(SearchStatus::found);
  return fail(SearchStatus::noOutput, standardOutputError(errno).description);
}

/// The books that are searched.
struct Books {
  std::vector<HelpIndex> indexes;
  std::vector<IndexContents> contents;  ///< empty when nothing tells of them
  std::vector<std::string> names;       ///< empty when there is only one book

  std::string_view nameFor(const Hit& hit) const {
    return names.empty() ? std::string_view() : names[hit.index];
  }
};

/// Fails with the name of the first file that cannot be read.
Expected<Books> openBooks(const SearchArguments& arguments) {
  Books books;
  for (std::size_t i = 0; i < arguments.indexes.size(); ++i) {
    Expected<HelpIndex> index = HelpIndex::open(arguments.indexes[i]);
    if (index && !arguments.books.empty()) index = index->withBook(arguments.books[i]);
    if (!index) return index.failure();
    const bool areTold = arguments.json || arguments.indexes.size() > 1;
    if (areTold) books.contents.push_back(index->contents());
    books.indexes.push_back(*std::move(index));
  }
  if (books.indexes.size() == 1) return books;
  for (std::size_t i = 0; i < arguments.indexes.size(); ++i) {
    const std::string file(lastPathComponent(arguments.indexes[i]));
    books.names.push_back(books.contents[i].title.value_or(file));
  }
  return books;
}

std::string listOf(const Books& books, const std::vector<Hit>& hits,
                   const SearchArguments& arguments) {
  const TextStyle style = styleOf(STDOUT_FILENO);
  std::string list;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    const std::string_view book = books.nameFor(hits[i]);
    list += arguments.json    ? hitAsJson(hits[i], i + 1, book)
            : arguments.names ? nameAsText(hits[i], book)
                              : hitAsText(hits[i], i + 1, style, book);
  }
  return list;
}

/// Opens one of the hits in the browser and tells which.
int openHit(const Books& books, const SearchResult& result, const SearchArguments& arguments) {
  const std::vector<Hit>& hits = result.hits;
  if (hits.size() < *arguments.open) {
    return fail(SearchStatus::nothingFound, "There is no hit " + std::to_string(*arguments.open));
  }
  const Hit& hit = hits[*arguments.open - 1];
  const Result<std::string> url = urlOfHit(arguments.books[hit.index], hit);
  if (!url) return fail(SearchStatus::unreadableIndex, url.error().description);
  if (const Status opened = openInBrowser(*url); !opened) {
    return fail(SearchStatus::noBrowser, opened.error().description);
  }
  const std::string_view book = books.nameFor(hit);
  return finish(arguments.json
                    ? hitAsJson(hit, *arguments.open, book) + resultAsJson(result, books.contents)
                    : hitAsText(hit, *arguments.open, styleOf(STDOUT_FILENO), book));
}

/// Lists or opens the hits.
int answer(const Books& books, const SearchResult& result, const SearchArguments& arguments) {
  if (arguments.open) return openHit(books, result, arguments);
  std::string list = listOf(books, result.hits, arguments);
  if (!arguments.json) return finish(list);
  if (!writeFully(STDOUT_FILENO, list + resultAsJson(result, books.contents))) {
    return fail(SearchStatus::noOutput, standardOutputError(errno).description);
  }
  return status(result.hits.empty() ? SearchStatus::nothingFound : SearchStatus::found);
}

SearchResult answered(const std::vector<Hit>& hits) {
  return {QueryState::answered, hits, std::nullopt, std::nullopt, {}};
}

/// Tells what is not to be seen from the hits.
void tell(const SearchResult& result) {
  switch (result.state) {
    case QueryState::noWords:
      complain("The query contains no words");
      break;
    case QueryState::onlyStopWords:
      complain("The index leaves out every word of the query");
      break;
    case QueryState::onlyExcluded:
      complain("The query only excludes words");
      break;
    case QueryState::answered:
      if (result.searched) {
        complain("Showing results for " + *result.searched);
      } else if (result.suggestion) {
        complain("Did you mean: " + *result.suggestion);
      } else if (result.hits.empty()) {
        complain("Nothing found");
      }
      break;
  }
  std::string lines;
  for (const std::string& line : result.explanation)
    lines += printable(line) + '\n';
  writeFully(STDERR_FILENO, lines);
}

int search(const Books& books, SearchArguments& arguments) {
  const auto statesLanguage = [](const HelpIndex& book) { return book.language().has_value(); };
  if (arguments.options.language.empty() && std::ranges::none_of(books.indexes, statesLanguage)) {
    const Locale locale = Locale::current();
    if (locale.hasKnownLanguage()) arguments.options.language = locale.language();
  }
  const Expected<SearchResult> result =
      books.indexes.size() == 1
          ? books.indexes.front().search(arguments.query, arguments.options)
          : HelpIndex::searchAll(books.indexes, arguments.query, arguments.options);
  if (!result) return refuse(result.failure());
  if (!arguments.json || arguments.open) tell(*result);
  return answer(books, *result, arguments);
}

int listRelated(const Books& books, const SearchArguments& arguments) {
  const auto hits = books.indexes.front().related(*arguments.related, arguments.options.count);
  if (!hits) return refuse(hits.failure());
  if (hits->empty())
    return fail(SearchStatus::nothingFound, "No page has this path, or none is near it in meaning");
  return answer(books, answered(*hits), arguments);
}

int listNames(const Books& books, const SearchArguments& arguments) {
  std::vector<Hit> all;
  for (std::size_t i = 0; i < books.indexes.size(); ++i) {
    auto hits = books.indexes[i].names(*arguments.names, arguments.options.count);
    if (!hits) return refuse(hits.failure());
    for (Hit& hit : *hits) {
      hit.index = i;
      all.push_back(std::move(hit));
    }
  }
  if (books.indexes.size() > 1) std::ranges::stable_sort(all, std::ranges::greater(), &Hit::score);
  if (all.size() > arguments.options.count) all.resize(arguments.options.count);
  if (all.empty()) return fail(SearchStatus::nothingFound, "No name begins with this");
  return answer(books, answered(all), arguments);
}

int listAnchor(const Books& books, const SearchArguments& arguments) {
  std::string list;
  Hit hit;
  for (; hit.index < books.indexes.size(); ++hit.index) {
    const HelpIndex& index = books.indexes[hit.index];
    const std::string_view book = books.nameFor(hit);
    std::vector<std::string> paths = index.pagesWithAnchor(*arguments.anchor);
    // A list has no room for a failure, but what is damaged stays so and fails all that follows.
    const auto next = index.search({}, {});
    if (!next && next.failure().reason == Failure::Reason::notAnIndex) {
      return refuse(next.failure());
    }
    for (std::string& path : paths) {
      hit.page.path = std::move(path);
      list += arguments.json ? pathAsJson(hit, book) : pathAsText(hit, book);
    }
  }
  if (list.empty()) return fail(SearchStatus::nothingFound, "No page has this anchor");
  return finish(list);
}

int clearCache() {
  const Result<ClearedFiles> cleared = clearKeptFiles();
  if (!cleared) {
    return fail(SearchStatus::unreadableIndex,
                "The cache cannot be cleared: " + cleared.error().description);
  }
  const std::string files =
      std::to_string(cleared->count) + (cleared->count == 1 ? " file" : " files");
  return finish("Removed " + files + ", " + std::to_string(cleared->bytes) + " bytes, from " +
                printable(cleared->folder) + '\n');
}

}  // namespace

int runSearchProgram(std::span<char* const> words) try {
  // A search's few threads live for milliseconds; separate arenas would take more address space
  // than an index.
  ::mallopt(M_ARENA_MAX, 1);
  unsetEmptyLocaleVariables();
  Result<SearchArguments> arguments = parseSearchArguments(words);
  if (!arguments) {
    complain(arguments.error().description);
    writeFully(STDERR_FILENO, "Try 'quorvex-search --help'.\n");
    return status(SearchStatus::misuse);
  }
  if (arguments->help) return finish(std::string(usage));
  if (arguments->version) return finish(std::string("quorvex-search ") + quorvex_version() + '\n');
  if (arguments->clearCache) return clearCache();
  const Expected<Books> books = openBooks(*arguments);
  if (!books) return fail(SearchStatus::unreadableIndex, books.failure().message);
  if (arguments->names) return listNames(*books, *arguments);
  if (arguments->anchor) return listAnchor(*books, *arguments);
  if (arguments->related) return listRelated(*books, *arguments);
  return search(*books, *arguments);
} catch (const std::bad_alloc&) {
  return fail(SearchStatus::unreadableIndex, "Not enough memory");
}

}  // namespace quorvex
