// Passes an index file through all readers, and its contents through every listing and searches.
// The mutator works on the archive inside the frames or on their table.

#include <array>

#include <sys/mman.h>
#include <unistd.h>

#include "cli/index_container.h"
#include "cli/listing.h"
#include "common/bytes.h"
#include "common/output.h"
#include "fuzz/driver.h"
#include "quorvex/help_index.h"
#include "tests/support/frame_files.h"

using namespace quorvex;

namespace {

void listEverything(const Dictionary& index) {
  for (int mode = 1; mode <= static_cast<int>(ListMode::rdxSummary); ++mode) {
    for (const IndexFormat format : {IndexFormat::lsm, IndexFormat::beacon}) {
      fuzz::require(listIndex(index, static_cast<ListMode>(mode), true, format).ok());
    }
  }
}

void search(const HelpIndex& index) {
  for (const char* query : {"harbour", "\"the boat\" -sail", "birds of the coast"}) {
    if (const Expected<SearchResult> result = index.search(query)) {
      for (const Hit& hit : result->hits)
        static_cast<void>(index.related(hit.page.path, 3));
    }
  }
  index.pagesWithAnchor("start");
  for (std::size_t number = 0; number <= index.contents().pages; ++number)
    index.page(number);
}

/// Mutates the numbers of a table.
FrameTable mutatedTable(FrameTable table) {
  const auto mutate = [](auto& numbers) {
    std::string bytes;
    for (const std::uint64_t number : numbers)
      appendU64(bytes, number);
    bytes = fuzz::mutated(bytes, bytes.size() + sizeof(std::uint64_t));
    numbers.clear();
    for (ByteReader reader(bytes); reader.rest().size() >= sizeof(std::uint64_t);)
      numbers.push_back(reader.u64());
  };
  mutate(table.packedSizes);
  mutate(table.bounds);
  return table;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const int file = ::memfd_create("index", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  fuzz::require(::ftruncate(file, 0) == 0 && ::lseek(file, 0, SEEK_SET) == 0);
  fuzz::require(writeFully(file, fuzz::view(bytes, size)));
  const std::optional<Dictionary> index = readIndexFileForListing(path);
  fuzz::require(readIndexFileForCreate(path, IndexFormat::lsm).has_value() == index.has_value());
  if (index) listEverything(*index);
  if (const Expected<HelpIndex> reader = HelpIndex::fromBytes(fuzz::view(bytes, size))) {
    search(*reader);
  }
  if (const Expected<HelpIndex> reader = HelpIndex::open(path)) search(*reader);
  return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) {
  const std::string file(fuzz::view(bytes, size));
  const Result<Data> content = decompress(file, 1U << 20U);
  if (!content || seed % 8 == 0) return LLVMFuzzerMutate(bytes, size, maximum);
  const std::optional<FrameTable> table = test::tableOf(file);
  if (table && seed % 8 == 1) {
    return fuzz::give(test::withTable(file, mutatedTable(*table)), bytes, maximum);
  }
  const std::string archive(content->bytes());
  const std::string mutated = fuzz::mutated(archive, archive.size() + fuzz::roomToGrow);
  return fuzz::give(table ? test::framed(mutated, table->bounds) : test::compressed(mutated), bytes,
                    maximum);
}
