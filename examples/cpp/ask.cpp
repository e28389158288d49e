// Asks an index file for the pages that answer best: ask INDEX WORDS

#include <iostream>

#include <quorvex/help_index.h>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto index = quorvex::HelpIndex::open(arguments[1]);
  if (!index) {
    std::cerr << "ask: " << index.failure().message << '\n';
    return 2;
  }
  const auto result = index->search(arguments[2]);
  if (!result) {
    std::cerr << "ask: " << result.failure().message << '\n';
    return 2;
  }
  for (const quorvex::Hit& hit : result->hits)
    std::cout << hit.page.path << "  " << hit.page.title << '\n';
  if (result->suggestion) std::cout << "Did you mean: " << *result->suggestion << '\n';
  return result->hits.empty() ? 1 : 0;
}
