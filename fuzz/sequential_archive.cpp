// A sequential archive. What can be read is written so that it reads back as the same tree.

#include "fuzz/driver.h"
#include "platform/searchable_item.h"
#include "tests/support/archives.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const AllowedKinds kinds = valuesAndSearchableItems();
  const Result<Dictionary> tree = unarchiveSequentially(fuzz::view(bytes, size), kinds);
  if (!tree) return 0;
  const std::string again = test::sequential(*tree);
  fuzz::require(test::sequential(unarchiveSequentially(again, kinds).value()) == again);
  return 0;
}
