#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// Compression: one Zstandard frame (RFC 8878) with the size of its content and a checksum of it, no
// dictionary. A skippable frame behind it pads the file where the content is so repetitive that
// readers would take it for a bomb.

namespace quorvex {

/// Compresses bytes that arrive in pieces. The same content gives the same frame, however it is cut
/// into pieces.
class Compressor {
 public:
  /// `contentSize`: of all the pieces together; `nodes`: the values in an archive that they are.
  /// The frame goes to `sink`.
  Compressor(std::uint64_t contentSize, ByteSink sink, std::uint64_t nodes = 0);
  ~Compressor();
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  /// False when compression fails, the sink ends the work or more comes than was announced.
  bool write(std::string_view bytes);
  /// Ends the frame; fails when anything failed before or less came than was announced.
  Status finish();

 private:
  class Stream;
  std::unique_ptr<Stream> _stream;
};

/// What reading a frame of somebody else's may take. It grows with the size of the frame, not with
/// what the frame claims or unfolds to: the index of a large book unfolds to five times its size,
/// and each value in it takes several bytes of it.
struct FrameLimits {
  explicit FrameLimits(std::uint64_t frameSize);
  /// How large a frame has to be, with the padding behind it, for a content of that size.
  static std::uint64_t smallestFrame(std::uint64_t contentSize, std::uint64_t nodes);

  std::uint64_t contentSize;
  std::uint64_t nodes;  ///< values in an archive that is the content
};

/// The content of a frame that is all of `bytes`, but for one skippable frame as padding. Memory
/// follows what really comes out, not the size that the frame claims; more than `limit` fails.
Result<Data> decompress(std::string_view bytes, std::uint64_t limit);
inline Result<Data> decompress(std::string_view bytes) {
  return decompress(bytes, FrameLimits(bytes.size()).contentSize);
}

struct DecompressedFile {
  FrameLimits limits;
  Result<Data> content;  ///< or why the file holds none
};

/// The content of the frame that a file is. The file is never held whole, and read no further when
/// it does not begin as a frame. Fails when it cannot be read.
Result<DecompressedFile> decompressFile(const std::string& path);

}  // namespace quorvex
