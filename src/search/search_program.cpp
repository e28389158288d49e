#include "search/search_program.h"

#include <cerrno>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <malloc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/locale.h"
#include "common/output.h"
#include "quorvex/help_index.h"
#include "search/browser.h"
#include "search/hit_text.h"
#include "search/search_arguments.h"

namespace quorvex {

namespace {

constexpr std::string_view usage =
    "Usage: quorvex-search [options] INDEX WORDS...\n"
    "       quorvex-search [options] --names TEXT INDEX\n"
    "       quorvex-search [options] --anchor NAME INDEX\n"
    "       quorvex-search [options] --related PATH INDEX\n"
    "Searches the index file of a help book and lists the pages that answer best.\n"
    "\n"
    "  WORDS            words to look for; '\"two words\"' must stand side by side,\n"
    "                   -word must not be there\n"
    "  -n, --count N    list at most N pages (10)\n"
    "      --book BOOK  quote the pages: the book's folder, or its description file\n"
    "      --open[=N]   open hit N (1) at its place, with $BROWSER or xdg-open;\n"
    "                   needs --book FOLDER\n"
    "      --prefix     the last word is still being typed\n"
    "      --language L match words across their inflections as in language L;\n"
    "                   without it, as in the index's, else the user's\n"
    "      --full-text  rank by words alone\n"
    "      --semantic   rank by meaning alone\n"
    "      --names T    list the defined names that begin with T, whole or by\n"
    "                   their last parts, and where they are defined\n"
    "      --anchor A   list the pages that hold the anchor A\n"
    "      --related P  list the pages nearest in meaning to the page with path P\n"
    "      --json       write one JSON object per line\n"
    "  -h, --help       print this help and exit\n"
    "      --version    print the version and exit\n"
    "\n"
    "Options go before INDEX. Behind it, any word that is no option of this program\n"
    "belongs to the question; others need -- before them.\n"
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

std::string listOf(const std::vector<Hit>& hits, const SearchArguments& arguments) {
  const TextStyle style = styleOf(STDOUT_FILENO);
  std::string list;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    list += arguments.json    ? hitAsJson(hits[i], i + 1)
            : arguments.names ? nameAsText(hits[i])
                              : hitAsText(hits[i], i + 1, style);
  }
  return list;
}

/// Opens one of the hits in the browser and tells which.
int openHit(const HelpIndex& index, const SearchResult& result, const SearchArguments& arguments) {
  const std::vector<Hit>& hits = result.hits;
  if (hits.size() < *arguments.open) {
    return fail(SearchStatus::nothingFound, "There is no hit " + std::to_string(*arguments.open));
  }
  const Hit& hit = hits[*arguments.open - 1];
  const Result<std::string> url = urlOfHit(*arguments.book, hit);
  if (!url) return fail(SearchStatus::unreadableIndex, url.error().description);
  if (const Status opened = openInBrowser(*url); !opened) {
    return fail(SearchStatus::noBrowser, opened.error().description);
  }
  return finish(arguments.json
                    ? hitAsJson(hit, *arguments.open) + resultAsJson(result, index.contents())
                    : hitAsText(hit, *arguments.open, styleOf(STDOUT_FILENO)));
}

/// Lists or opens the hits.
int answer(const HelpIndex& index, const SearchResult& result, const SearchArguments& arguments) {
  if (arguments.open) return openHit(index, result, arguments);
  std::string list = listOf(result.hits, arguments);
  if (!arguments.json) return finish(list);
  if (!writeFully(STDOUT_FILENO, list + resultAsJson(result, index.contents()))) {
    return fail(SearchStatus::noOutput, standardOutputError(errno).description);
  }
  return status(result.hits.empty() ? SearchStatus::nothingFound : SearchStatus::found);
}

SearchResult answered(const std::vector<Hit>& hits) {
  return {QueryState::answered, hits, std::nullopt};
}

void explain(const SearchResult& result) {
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
      if (result.suggestion) {
        complain("Did you mean: " + *result.suggestion);
      } else if (result.hits.empty()) {
        complain("Nothing found");
      }
      break;
  }
}

int search(const HelpIndex& index, SearchArguments& arguments) {
  if (arguments.options.language.empty() && !index.contents().language) {
    const Locale locale = Locale::current();
    if (locale.hasKnownLanguage()) arguments.options.language = locale.language();
  }
  const Expected<SearchResult> result = index.search(arguments.query, arguments.options);
  if (!result) {
    const bool isMisuse = result.failure().reason == Failure::Reason::unknownLanguage;
    return fail(isMisuse ? SearchStatus::misuse : SearchStatus::nothingFound,
                result.failure().message);
  }
  if (!arguments.json || arguments.open) explain(*result);
  return answer(index, *result, arguments);
}

int listRelated(const HelpIndex& index, const SearchArguments& arguments) {
  const auto hits = index.related(*arguments.related, arguments.options.count);
  if (!hits) return fail(SearchStatus::nothingFound, hits.failure().message);
  if (hits->empty())
    return fail(SearchStatus::nothingFound, "No page has this path, or none is near it in meaning");
  return answer(index, answered(*hits), arguments);
}

int listNames(const HelpIndex& index, const SearchArguments& arguments) {
  const auto hits = index.names(*arguments.names, arguments.options.count);
  if (!hits) return fail(SearchStatus::nothingFound, hits.failure().message);
  if (hits->empty()) return fail(SearchStatus::nothingFound, "No name begins with this");
  return answer(index, answered(*hits), arguments);
}

int listAnchor(const HelpIndex& index, const SearchArguments& arguments) {
  const std::vector<std::string> paths = index.pagesWithAnchor(*arguments.anchor);
  if (paths.empty()) return fail(SearchStatus::nothingFound, "No page has this anchor");
  std::string list;
  for (const std::string& path : paths) {
    list += arguments.json ? pathAsJson(path) : printable(path) + '\n';
  }
  return finish(list);
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
  Expected<HelpIndex> index = HelpIndex::open(arguments->index);
  if (index && arguments->book) index = index->withBook(*arguments->book);
  if (!index) return fail(SearchStatus::unreadableIndex, index.failure().message);
  if (arguments->names) return listNames(*index, *arguments);
  if (arguments->anchor) return listAnchor(*index, *arguments);
  if (arguments->related) return listRelated(*index, *arguments);
  return search(*index, *arguments);
} catch (const std::bad_alloc&) {
  return fail(SearchStatus::unreadableIndex, "Not enough memory");
}

}  // namespace quorvex
