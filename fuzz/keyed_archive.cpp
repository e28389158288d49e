// Reads a keyed archive. A readable tree must survive being written and read again.

#include "platform/keyed_archive.h"

#include "fuzz/driver.h"
#include "platform/searchable_item.h"
#include "tests/support/cbor_forms.h"

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
