#include <algorithm>
#include <filesystem>
#include <future>
#include <new>
#include <optional>
#include <string>
#include <system_error>

// Declares ZSTD_d_stableOutBuffer.
#define ZSTD_STATIC_LINKING_ONLY
#include <zstd.h>
#include <zstd_errors.h>

#include "common/files.h"
#include "common/fill_buffer.h"
#include "common/parallel.h"
#include "platform/compression.h"

namespace quorvex {

namespace {

/// A claimed size is trusted up to this many times the size of the frame.
constexpr std::uint64_t believedRatio = 16;
constexpr std::uint64_t smallestGrowth = std::uint64_t{64} * 1024;

constexpr std::uint64_t smallContent = std::uint64_t{32} << 20U;
constexpr std::uint64_t largestRatio = 64;
constexpr std::uint64_t largestContent = std::uint64_t{8} << 30U;
constexpr std::uint64_t fewNodes = std::uint64_t{1} << 20U;

/// Accepts an optional skippable frame (RFC 8878, section 3.1.2) in pieces.
class Padding {
 public:
  /// Returns false for anything else.
  bool take(std::string_view bytes) {
    while (_head.size() < headSize && !bytes.empty()) {
      _head += bytes.front();
      bytes.remove_prefix(1);
      if (_head.size() == headSize) _left = number(4);
    }
    if (_head.size() < headSize) return true;
    if ((number(0) & ZSTD_MAGIC_SKIPPABLE_MASK) != ZSTD_MAGIC_SKIPPABLE_START) return false;
    if (bytes.size() > _left) return false;
    _left -= bytes.size();
    return true;
  }
  bool isCut() const { return !_head.empty() && (_head.size() < headSize || _left > 0); }

 private:
  static constexpr std::size_t headSize = 8;

  std::uint32_t number(std::size_t at) const {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
      value = value << 8U | static_cast<unsigned char>(_head[at + i]);
    return value;
  }

  std::string _head;
  std::uint64_t _left = 0;
};

/// Decompresses a frame in pieces; the first must contain the frame header.
class Decompressor {
 public:
  Decompressor(std::uint64_t frameSize, std::uint64_t limit)
      : _context(ZSTD_createDCtx(), ZSTD_freeDCtx), _frameSize(frameSize), _limit(limit) {}
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;

  /// Returns false if further pieces are pointless.
  bool write(std::string_view piece) {
    const bool begun = _content || begin(piece);
    ZSTD_inBuffer in{piece.data(), piece.size(), 0};
    while (begun && step(in)) {
    }
    return _status.ok();
  }

  Result<Data> finish() {
    if (_status && !_content) fail("Not compressed data");
    if (_status && !_ended) fail("The compressed data is truncated");
    if (_status && _padding.isCut()) fail("The data after the compressed data is truncated");
    if (!_status) return _status.error();
    if (_populated.valid()) _populated.get();
    return _content->take(_filled);
  }

 private:
  bool fail(std::string message) {
    _status = Error{std::move(message)};
    return false;
  }

  /// Allocates memory. Most frames claim their true size and are decompressed straight into the
  /// final buffer.
  bool begin(std::string_view piece) {
    if (_context == nullptr) throw std::bad_alloc();
    const unsigned long long claimed = ZSTD_getFrameContentSize(piece.data(), piece.size());
    if (claimed == ZSTD_CONTENTSIZE_ERROR) return fail("Not compressed data");
    const bool isKnown = claimed != ZSTD_CONTENTSIZE_UNKNOWN;
    if (isKnown && claimed > _limit) return fail("Too large");
    const std::uint64_t believed = std::min(believedRatio * _frameSize, _limit);
    _content.emplace(static_cast<std::size_t>(std::min<std::uint64_t>(claimed, believed)) + 1);
    if (isKnown && claimed <= believed) {
      ZSTD_DCtx_setParameter(_context.get(), ZSTD_d_stableOutBuffer, 1);
      populate();
    }
    return true;
  }

  /// A page fault takes as long as decompressing a page of content.
  void populate() {
    constexpr std::size_t worthAThread = std::size_t{4} << 20U;
    if (_content->size() < worthAThread) return;
    _populated = inBackground([this] { _content->populate(); });
  }

  /// Returns false when the piece is used up, or on failure.
  bool step(ZSTD_inBuffer& in) {
    if (_ended) {
      const std::string_view rest(static_cast<const char*>(in.src) + in.pos, in.size - in.pos);
      return !_padding.take(rest) && fail("Unexpected data after the compressed data");
    }
    ZSTD_outBuffer out{_content->data(), _content->size(), _filled};
    const std::size_t left = ZSTD_decompressStream(_context.get(), &out, &in);
    if (ZSTD_getErrorCode(left) == ZSTD_error_memory_allocation) throw std::bad_alloc();
    if (ZSTD_isError(left) != 0) return fail(ZSTD_getErrorName(left));
    _filled = out.pos;
    if (_filled > _limit) return fail("Too large");
    _ended = left == 0;
    if (_ended || _filled < _content->size()) return in.pos < in.size;
    const std::uint64_t larger = _filled + std::max(_filled / 2, smallestGrowth);
    _content->resize(static_cast<std::size_t>(std::min(larger, _limit + 1)));
    return true;
  }

  std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> _context;
  std::uint64_t _frameSize;
  std::uint64_t _limit;
  std::optional<FillBuffer> _content;
  std::uint64_t _filled = 0;
  bool _ended = false;
  Padding _padding;
  Status _status = okStatus();
  std::future<void> _populated;  ///< waited for before `_content` is freed
};

}  // namespace

FrameLimits::FrameLimits(std::uint64_t frameSize)
    : contentSize(std::min(smallContent + largestRatio * frameSize, largestContent)),
      nodes(fewNodes + frameSize) {}

std::uint64_t FrameLimits::smallestFrame(std::uint64_t contentSize, std::uint64_t nodes) {
  const std::uint64_t excess = contentSize - std::min(contentSize, smallContent);
  return std::max((excess + largestRatio - 1) / largestRatio, nodes - std::min(nodes, fewNodes));
}

Result<Data> decompress(std::string_view bytes, std::uint64_t limit) {
  Decompressor decompressor(bytes.size(), limit);
  decompressor.write(bytes);
  return decompressor.finish();
}

Result<DecompressedFile> decompressFile(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  const FrameLimits limits(error ? 0 : size);
  Decompressor decompressor(error ? 0 : size, limits.contentSize);
  const Status read = readFileInPieces(
      path, maximumFileSize, [&](std::string_view piece) { return decompressor.write(piece); });
  if (!read) return read.error();
  return DecompressedFile{limits, decompressor.finish()};
}

}  // namespace quorvex
