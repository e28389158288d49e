#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// Compression: Zstandard frames (RFC 8878) with content size and checksum, no dictionary. Each can
// be unpacked alone. If the content is so repetitive that readers would mistake it for a bomb, a
// skippable frame after them pads the file. A table of the frames, in a skippable frame as well
// (indexfile/frame_table.h), may end it.

namespace quorvex {

/// How content will be read, which decides how much of it a frame holds.
enum class ReadingOrder {
  anyParts,  ///< 64 KiB: little is unpacked that is not needed
  whole,     ///< 4 MiB: smaller files
};

/// Compresses bytes in pieces. The same content yields the same frames, however it is split and
/// whatever the number of threads.
class Compressor {
 public:
  /// `contentSize`: total of all pieces; `nodes`: number of values if the content is an archive.
  /// The frames go to `sink`.
  Compressor(std::uint64_t contentSize, ByteSink sink, std::uint64_t nodes = 0,
             ReadingOrder order = ReadingOrder::anyParts);
  ~Compressor();
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  /// False if the sink stops the work or the announced size is exceeded.
  bool write(std::string_view bytes);
  /// Ends the frames; fails after any earlier failure or if the content is too short.
  Status finish();
  /// Likewise, and adds the table, which names the `bounds` of the parts of the content (see
  /// ArchiveOutline).
  Status finishWithTable(const std::vector<std::uint64_t>& bounds);

 private:
  class Stream;
  std::unique_ptr<Stream> _stream;
};

/// Limits on reading untrusted frames. They grow with the size of the file, not with what it
/// claims or expands to: the index of a large book expands to five times its size, and each value
/// in it takes several of its bytes.
struct FrameLimits {
  explicit FrameLimits(std::uint64_t fileSize);
  /// Returns the least size of a file, padding included, for such content.
  static std::uint64_t smallestFile(std::uint64_t contentSize, std::uint64_t nodes);

  std::uint64_t contentSize;
  std::uint64_t nodes;  ///< values, if the content is an archive
};

/// Decompresses the frames that make up `bytes`, apart from skippable ones after them. Memory
/// follows the actual output, not the size that the frames claim; more than `limit` fails.
Result<Data> decompress(std::string_view bytes, std::uint64_t limit);
inline Result<Data> decompress(std::string_view bytes) {
  return decompress(bytes, FrameLimits(bytes.size()).contentSize);
}

struct DecompressedFile {
  FrameLimits limits;
  Result<Data> content;  ///< or why there is none
};

/// Decompresses a file of frames, those that it has a table of on two threads. Never holds the
/// whole file in memory, and stops reading unless it begins as a frame. Fails if it cannot be read.
Result<DecompressedFile> decompressFile(const std::string& path);

}  // namespace quorvex
