#include "search/search_program.h"

#include <cerrno>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "common/locale.h"
#include "common/output.h"
#include "quorvex/help_index.h"
#include "search/hit_text.h"
#include "search/search_arguments.h"

namespace quorvex {

namespace {

constexpr std::string_view usage =
    "Usage: quorvex-search [options] INDEX WORDS...\n"
    "       quorvex-search [options] --anchor NAME INDEX\n"
    "       quorvex-search [options] --related PATH INDEX\n"
    "Searches the index file of a help book and lists the pages that answer best.\n"
    "\n"
    "  WORDS            words to look for; '\"two words\"' must stand side by side,\n"
    "                   -word must not be there\n"
    "  -n, --count N    list at most N pages (10)\n"
    "      --prefix     the last word is still being typed\n"
    "      --language L match words across their inflections as in language L;\n"
    "                   without it, as in the index's, else the user's\n"
    "      --full-text  rank by words alone\n"
    "      --semantic   rank by meaning alone\n"
    "      --anchor A   list the pages that hold the anchor A\n"
    "      --related P  list the pages nearest in meaning to the page with path P\n"
    "      --json       write one JSON object per line\n"
    "  -h, --help       print this help and exit\n"
    "\n"
    "Options go before INDEX; long options may also follow it.\n"
    "Exit status: 0 found, 1 nothing found, 2 usage error, 3 unreadable index,\n"
    "4 no output possible.\n";

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

bool emphasises(const SearchArguments& arguments) {
  return !arguments.json && understandsEscapes(STDOUT_FILENO);
}

/// Writes the list; returns the status.
int finish(const std::string& list) {
  if (list.empty()) return status(SearchStatus::nothingFound);
  if (writeFully(STDOUT_FILENO, list)) return status(SearchStatus::found);
  return fail(SearchStatus::noOutput, standardOutputError(errno).description);
}

std::string listOf(const std::vector<Hit>& hits, const SearchArguments& arguments) {
  const bool emphasised = emphasises(arguments);
  std::string list;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    list += arguments.json ? hitAsJson(hits[i], i + 1) : hitAsText(hits[i], i + 1, emphasised);
  }
  return list;
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
  explain(*result);
  return finish(listOf(result->hits, arguments));
}

int listRelated(const HelpIndex& index, const SearchArguments& arguments) {
  const auto hits = index.related(*arguments.related, arguments.options.count);
  if (!hits) return fail(SearchStatus::nothingFound, hits.failure().message);
  if (hits->empty())
    return fail(SearchStatus::nothingFound, "No page has this path, or none is near it in meaning");
  return finish(listOf(*hits, arguments));
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
  const Expected<HelpIndex> index = HelpIndex::open(arguments->index);
  if (!index) return fail(SearchStatus::unreadableIndex, index.failure().message);
  if (arguments->anchor) return listAnchor(*index, *arguments);
  if (arguments->related) return listRelated(*index, *arguments);
  return search(*index, *arguments);
} catch (const std::bad_alloc&) {
  return fail(SearchStatus::unreadableIndex, "Not enough memory");
}

}  // namespace quorvex
