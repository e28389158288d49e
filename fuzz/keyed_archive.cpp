// A keyed archive. What can be read is written so that it reads back as the same tree.

#include "platform/keyed_archive.h"

#include "fuzz/archive_kinds.h"
#include "fuzz/driver.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const AllowedKinds kinds = fuzz::archiveKinds();
  const Result<Value> tree = unarchiveKeyed(fuzz::view(bytes, size), kinds);
  if (!tree) return 0;
  describe(*tree);
  const std::string again = fuzz::archived<Value>(archiveKeyed, *tree);
  fuzz::require(fuzz::archived<Value>(archiveKeyed, unarchiveKeyed(again, kinds).value()) == again);
  return 0;
}
