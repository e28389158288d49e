// Asks an index file for the pages that answer best, and where in them: ask INDEX WORDS [BOOK]
// With the book's folder, quotes them.

#include <iostream>

#include <quorvex/help_index.h>

int main(int count, char** arguments) {
  if (count != 3 && count != 4) return 2;
  auto index = quorvex::HelpIndex::open(arguments[1]);
  if (index && count == 4) index = index->withBook(arguments[3]);
  if (!index) {
    std::cerr << "ask: " << index.failure().message << '\n';
    return 2;
  }
  const auto result = index->search(arguments[2]);
  if (!result) {
    std::cerr << "ask: " << result.failure().message << '\n';
    return 2;
  }
  for (const quorvex::Hit& hit : result->hits) {
    std::cout << hit.page.path << "  " << hit.page.title << '\n';
    for (const quorvex::HelpPlace& place : hit.places)
      std::cout << "  #" << place.fragment << "  " << place.snippet.value_or("") << '\n';
  }
  if (result->searched) {
    std::cout << "Searched for: " << *result->searched << '\n';
  } else if (result->suggestion) {
    std::cout << "Did you mean: " << *result->suggestion << '\n';
  }
  return result->hits.empty() ? 1 : 0;
}
