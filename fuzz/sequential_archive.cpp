// A sequential archive. What can be read is written so that it reads back as the same tree.

#include "platform/sequential_archive.h"

#include "fuzz/archive_kinds.h"
#include "fuzz/driver.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const AllowedKinds kinds = fuzz::archiveKinds();
  const Result<Dictionary> tree = unarchiveSequentially(fuzz::view(bytes, size), kinds);
  if (!tree) return 0;
  const std::string again = fuzz::archived<Dictionary>(archiveSequentially, *tree);
  fuzz::require(fuzz::archived<Dictionary>(archiveSequentially,
                                           unarchiveSequentially(again, kinds).value()) == again);
  return 0;
}
