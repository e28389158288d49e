#include <algorithm>
#include <future>
#include <new>
#include <optional>
#include <string>

// Declares ZSTD_d_stableOutBuffer.
#define ZSTD_STATIC_LINKING_ONLY
#include <zstd.h>
#include <zstd_errors.h>

#include "common/bytes.h"
#include "common/files.h"
#include "common/fill_buffer.h"
#include "common/parallel.h"
#include "indexfile/frame_file.h"
#include "platform/compression.h"

namespace quorvex {

namespace {

/// A claimed size is trusted up to this many times the size of the frame.
constexpr std::uint64_t believedRatio = 16;
constexpr std::uint64_t smallestGrowth = contentOfFrame;
constexpr std::size_t magicSize = 4;

constexpr std::uint64_t smallContent = std::uint64_t{32} << 20U;
constexpr std::uint64_t largestRatio = 64;
constexpr std::uint64_t largestContent = std::uint64_t{8} << 30U;
constexpr std::uint64_t fewNodes = std::uint64_t{1} << 20U;

/// Accepts skippable frames (RFC 8878, section 3.1.2) in pieces.
class SkippableFrames {
 public:
  /// Returns false for anything else.
  bool take(std::string_view bytes) {
    while (!bytes.empty()) {
      if (_left > 0) {
        const auto skipped = std::min<std::size_t>(_left, bytes.size());
        _left -= static_cast<std::uint32_t>(skipped);
        bytes.remove_prefix(skipped);
        continue;
      }
      _head += bytes.front();
      bytes.remove_prefix(1);
      if (_head.size() < FrameTable::headSize) continue;
      const std::optional<std::uint32_t> size = sizeOfSkippableFrame(_head);
      if (!size) return false;
      _left = *size;
      _head.clear();
    }
    return true;
  }
  bool isCut() const { return !_head.empty() || _left > 0; }

 private:
  std::string _head;
  std::uint32_t _left = 0;
};

/// Decompresses frames in pieces; the first piece must contain the header of the first frame.
class Decompressor {
 public:
  Decompressor(std::uint64_t fileSize, std::uint64_t limit)
      : _context(ZSTD_createDCtx(), ZSTD_freeDCtx), _fileSize(fileSize), _limit(limit) {}
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
    if (_status && (!_next.empty() || _skipped.isCut()))
      fail("The data after the compressed data is truncated");
    if (!_status) return _status.error();
    if (_populated.valid()) _populated.get();
    return _content->take(_filled);
  }

 private:
  bool fail(std::string message) {
    _status = Error{std::move(message)};
    return false;
  }

  /// Allocates memory. The only frame of a file may claim its true size, and is then decompressed
  /// straight into the final buffer.
  bool begin(std::string_view piece) {
    if (_context == nullptr) throw std::bad_alloc();
    const unsigned long long claimed = ZSTD_getFrameContentSize(piece.data(), piece.size());
    if (claimed == ZSTD_CONTENTSIZE_ERROR) return fail("Not compressed data");
    const bool isKnown = claimed != ZSTD_CONTENTSIZE_UNKNOWN;
    if (isKnown && claimed > _limit) return fail("Too large");
    const std::uint64_t believed = std::min(believedRatio * _fileSize, _limit);
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
    if (_ended) return stepBetweenFrames(in);
    ZSTD_outBuffer out{_content->data(), _content->size(), _filled};
    const std::size_t left = ZSTD_decompressStream(_context.get(), &out, &in);
    if (ZSTD_getErrorCode(left) == ZSTD_error_memory_allocation) throw std::bad_alloc();
    if (ZSTD_isError(left) != 0) return fail(ZSTD_getErrorName(left));
    _filled = out.pos;
    if (_filled > _limit) return fail("Too large");
    _ended = left == 0;
    if (_ended || _filled < _content->size()) return in.pos < in.size;
    grow();
    return true;
  }

  /// Another frame begins, or nothing but skippable frames follows.
  bool stepBetweenFrames(ZSTD_inBuffer& in) {
    const char* const bytes = static_cast<const char*>(in.src);
    const auto isFrame = [](std::string_view magic) {
      return ByteReader(magic).u32() == ZSTD_MAGICNUMBER;
    };
    if (!_isSkipping && _next.empty() && isFrame({bytes + in.pos, in.size - in.pos})) {
      return beginFrame();
    }
    for (; !_isSkipping && _next.size() < magicSize && in.pos < in.size; ++in.pos)
      _next += bytes[in.pos];
    if (!_isSkipping && _next.size() < magicSize) return false;
    if (isFrame(_next)) {
      beginFrame();
      // Decompressed together with the rest, which the magic number alone cannot be.
      ZSTD_inBuffer magic{_next.data(), _next.size(), 0};
      step(magic);
      _next.clear();
      return _status.ok() && in.pos < in.size;
    }
    _isSkipping = true;
    const std::string_view rest(bytes + in.pos, in.size - in.pos);
    in.pos = in.size;
    const bool areSkippable = _skipped.take(_next) && _skipped.take(rest);
    _next.clear();
    return !areSkippable && fail("Unexpected data after the compressed data");
  }

  /// A whole frame that finds room is decompressed without being copied.
  bool beginFrame() {
    _ended = false;
    ZSTD_DCtx_setParameter(_context.get(), ZSTD_d_stableOutBuffer, 0);
    if (_content->size() - _filled <= smallestGrowth) grow();
    return true;
  }

  void grow() {
    if (_populated.valid()) _populated.get();
    const std::uint64_t larger = _filled + std::max(_filled / 2, 2 * smallestGrowth);
    _content->resize(static_cast<std::size_t>(std::min(larger, _limit + 1)));
  }

  std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> _context;
  std::uint64_t _fileSize;
  std::uint64_t _limit;
  std::optional<FillBuffer> _content;
  std::uint64_t _filled = 0;
  bool _ended = false;  ///< a frame
  std::string _next;    ///< the beginning of what follows it
  bool _isSkipping = false;
  SkippableFrames _skipped;
  Status _status = okStatus();
  std::future<void> _populated;  ///< waited for before `_content` is freed
};

}  // namespace

FrameLimits::FrameLimits(std::uint64_t fileSize)
    : contentSize(std::min(smallContent + largestRatio * fileSize, largestContent)),
      nodes(fewNodes + fileSize) {}

std::uint64_t FrameLimits::smallestFile(std::uint64_t contentSize, std::uint64_t nodes) {
  const std::uint64_t excess = contentSize - std::min(contentSize, smallContent);
  return std::max((excess + largestRatio - 1) / largestRatio, nodes - std::min(nodes, fewNodes));
}

Result<Data> decompress(std::string_view bytes, std::uint64_t limit) {
  Decompressor decompressor(bytes.size(), limit);
  decompressor.write(bytes);
  return decompressor.finish();
}

Result<DecompressedFile> decompressFile(const std::string& path) {
  const Result<RegularFile> file = openRegularFile(path, maximumFileSize);
  if (!file) return file.error();
  const FrameLimits limits(file->size);
  if (const auto frames = FrameFile::open(*file); frames != nullptr) {
    if (std::optional<Data> content = frames->unpackAll()) {
      return DecompressedFile{limits, *std::move(content)};
    }
  }
  Decompressor decompressor(file->size, limits.contentSize);
  const Status read =
      readOpenFileInPieces(file->descriptor.get(), maximumFileSize,
                           [&](std::string_view piece) { return decompressor.write(piece); });
  if (!read) return read.error();
  return DecompressedFile{limits, decompressor.finish()};
}

}  // namespace quorvex
