// Times searches in an index file.
//
//   search_latency <index file> [<number of queries>]
//
// The queries are titles of the index's pages, evenly spread over them, 1,000 by default. Prints
// the time to open the file, of the first search and, over all queries in turn, the median, 99th
// percentile and maximum, for each ranking in the index. Uses processor time, so that other work on
// the machine matters little.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string>
#include <vector>

#include "quorvex/help_index.h"

using namespace quorvex;

namespace {

double milliseconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

std::vector<std::string> titles(const HelpIndex& index, std::size_t count) {
  const std::size_t pages = index.contents().pages;
  std::vector<std::string> found;
  found.reserve(std::min(count, pages));
  for (std::size_t i = 0; i < std::min(count, pages); ++i) {
    found.push_back(index.page(i * pages / std::min(count, pages)).title);
  }
  return found;
}

double timeOf(const HelpIndex& index, const std::string& query, const SearchOptions& options) {
  const double begin = milliseconds();
  const auto result = index.search(query, options);
  const double end = milliseconds();
  if (!result) throw std::runtime_error(result.failure().message);
  return end - begin;
}

void measure(const HelpIndex& index, const std::vector<std::string>& queries, const char* name,
             Ranking ranking) {
  SearchOptions options;
  options.ranking = ranking;
  options.isPlainText = true;
  if (!index.contents().language) options.language = "en";
  std::vector<double> times;
  times.reserve(queries.size());
  for (const std::string& query : queries)
    times.push_back(timeOf(index, query, options));
  const double first = times.front();
  std::ranges::sort(times);
  std::printf("%-10s first %6.2f ms   median %5.2f ms   99th percentile %5.2f ms   most %5.2f ms\n",
              name, first, times[times.size() / 2], times[times.size() * 99 / 100], times.back());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2 && argc != 3) {
    std::cerr << "usage: search_latency <index file> [<number of queries>]\n";
    return 2;
  }
  const double begin = milliseconds();
  const auto index = HelpIndex::open(argv[1]);
  if (!index) throw std::runtime_error(index.failure().message);
  std::printf("pages: %zu   open: %.2f ms\n", index->contents().pages, milliseconds() - begin);
  const auto queries =
      titles(*index, argc == 3 ? std::strtoul(argv[2], nullptr, 10) : std::size_t{1000});
  if (queries.empty()) throw std::runtime_error("The index has no pages");
  const bool semantic = index->contents().semantic && !index->contents().ignoresSemantic;
  measure(*index, queries, "both", Ranking::best);
  measure(*index, queries, "full text", Ranking::fullText);
  if (semantic) measure(*index, queries, "semantic", Ranking::semantic);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "search_latency: " << error.what() << '\n';
  return 1;
}
