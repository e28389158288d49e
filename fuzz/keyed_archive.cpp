// A keyed archive. What can be read is written so that it reads back as the same tree.

#include "fuzz/driver.h"
#include "platform/searchable_item.h"
#include "tests/support/archives.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const AllowedKinds kinds = valuesAndSearchableItems();
  const Result<Value> tree = unarchiveKeyed(fuzz::view(bytes, size), kinds);
  if (!tree) return 0;
  describe(*tree);
  const std::string again = test::keyed(*tree);
  fuzz::require(test::keyed(unarchiveKeyed(again, kinds).value()) == again);
  return 0;
}
