#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// Compression: one Zstandard frame (RFC 8878) with the size of its content and a checksum of it, no
// dictionary.

namespace quorvex {

/// What is decompressed at most.
inline constexpr std::uint64_t maximumDecompressedSize = std::uint64_t{8} << 30U;

/// Compresses bytes that arrive in pieces. The same content gives the same frame, however it is cut
/// into pieces.
class Compressor {
 public:
  /// `contentSize`: of all the pieces together. The frame goes to `sink`.
  Compressor(std::uint64_t contentSize, ByteSink sink);
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

/// The content of a frame that is all of `bytes`. Memory follows what really comes out, not the
/// size that the frame claims; more than `limit` fails.
Result<Data> decompress(std::string_view bytes, std::uint64_t limit = maximumDecompressedSize);

}  // namespace quorvex
