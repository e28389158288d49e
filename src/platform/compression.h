#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// Compression: one Zstandard frame (RFC 8878) with content size and checksum, no dictionary. If the
// content is so repetitive that readers would mistake it for a bomb, a skippable frame after it
// pads the file.

namespace quorvex {

/// Compresses bytes in pieces. The same content yields the same frame, however it is split.
class Compressor {
 public:
  /// `contentSize`: total of all pieces; `nodes`: number of values if the content is an archive.
  /// The frame goes to `sink`.
  Compressor(std::uint64_t contentSize, ByteSink sink, std::uint64_t nodes = 0);
  ~Compressor();
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  /// False if compression fails, the sink stops the work or the announced size is exceeded.
  bool write(std::string_view bytes);
  /// Ends the frame; fails after any earlier failure or if the content is too short.
  Status finish();

 private:
  class Stream;
  std::unique_ptr<Stream> _stream;
};

/// Limits on reading an untrusted frame. They grow with the size of the frame, not with what it
/// claims or expands to: the index of a large book expands to five times its size, and each value
/// in it takes several of its bytes.
struct FrameLimits {
  explicit FrameLimits(std::uint64_t frameSize);
  /// Returns the least size of a frame, padding included, for such content.
  static std::uint64_t smallestFrame(std::uint64_t contentSize, std::uint64_t nodes);

  std::uint64_t contentSize;
  std::uint64_t nodes;  ///< values, if the content is an archive
};

/// Decompresses the frame that makes up `bytes`, apart from one skippable frame as padding. Memory
/// follows the actual output, not the size that the frame claims; more than `limit` fails.
Result<Data> decompress(std::string_view bytes, std::uint64_t limit);
inline Result<Data> decompress(std::string_view bytes) {
  return decompress(bytes, FrameLimits(bytes.size()).contentSize);
}

struct DecompressedFile {
  FrameLimits limits;
  Result<Data> content;  ///< or why there is none
};

/// Decompresses a file that is one frame. Never holds the whole file in memory, and stops reading
/// unless it begins as a frame. Fails if it cannot be read.
Result<DecompressedFile> decompressFile(const std::string& path);

}  // namespace quorvex
