// An index file through both readers, and what is found in it through every listing. The mutator
// works on the archive inside the compressed frame.

#include <array>

#include <sys/mman.h>
#include <unistd.h>

#include "cli/index_container.h"
#include "cli/listing.h"
#include "common/output.h"
#include "fuzz/driver.h"
#include "platform/compression.h"

using namespace quorvex;

namespace {

std::string compressed(std::string_view archive) {
  std::string file;
  Compressor compressor(archive.size(), [&](std::string_view piece) {
    file += piece;
    return true;
  });
  fuzz::require(compressor.write(archive) && compressor.finish());
  return file;
}

void listEverything(const Dictionary& index) {
  for (int mode = 1; mode <= static_cast<int>(ListMode::rdxSummary); ++mode) {
    for (const IndexFormat format : {IndexFormat::lsm, IndexFormat::beacon}) {
      listIndex(index, static_cast<ListMode>(mode), true, format);
    }
  }
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
  return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) {
  const Result<Data> content = decompress(fuzz::view(bytes, size), 1U << 20U);
  if (!content || seed % 8 == 0) return LLVMFuzzerMutate(bytes, size, maximum);
  const std::string archive(content->bytes());
  return fuzz::give(compressed(fuzz::mutated(archive, archive.size() + fuzz::roomToGrow)), bytes,
                    maximum);
}
