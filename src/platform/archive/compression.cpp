#include "platform/compression.h"

#include <algorithm>
#include <string>
#include <utility>

#include <zstd.h>

#include "common/files.h"
#include "common/large_text.h"

namespace quorvex {

namespace {

/// Beyond 3 an index gets little smaller and takes several times as long.
constexpr int compressionLevel = 3;
/// A claimed size is believed up to this many times the bytes that are there.
constexpr std::uint64_t believedRatio = 16;
constexpr std::size_t smallestGrowth = std::size_t{64} * 1024;

constexpr std::uint64_t smallContent = std::uint64_t{32} << 20U;
constexpr std::uint64_t largestRatio = 64;
constexpr std::uint64_t largestContent = std::uint64_t{8} << 30U;
constexpr std::uint64_t fewNodes = std::uint64_t{1} << 20U;

bool beginsAsFrame(std::string_view bytes) {
  return ZSTD_getFrameContentSize(bytes.data(), bytes.size()) != ZSTD_CONTENTSIZE_ERROR;
}

Error zstdError(std::size_t code) {
  return {ZSTD_getErrorName(code)};
}

}  // namespace

class Compressor::Stream {
 public:
  Stream(std::uint64_t contentSize, ByteSink sink)
      : _context(ZSTD_createCCtx(), ZSTD_freeCCtx),
        _sink(std::move(sink)),
        _piece(ZSTD_CStreamOutSize(), '\0') {
    if (_context == nullptr) {
      _error = {"Out of memory"};
      return;
    }
    check(ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_compressionLevel, compressionLevel));
    check(ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_checksumFlag, 1));
    check(ZSTD_CCtx_setPledgedSrcSize(_context.get(), contentSize));
  }

  bool feed(std::string_view bytes, ZSTD_EndDirective directive) {
    ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
    bool more = true;
    while (more && ok()) {
      ZSTD_outBuffer out{_piece.data(), _piece.size(), 0};
      const std::size_t left = ZSTD_compressStream2(_context.get(), &out, &in, directive);
      if (!check(left)) break;
      if (out.pos > 0 && !_sink(std::string_view(_piece).substr(0, out.pos))) {
        _error = {"The output could not be written"};
      }
      more = directive == ZSTD_e_end ? left != 0 : in.pos < in.size;
    }
    return ok();
  }

  bool ok() const { return _error.description.empty(); }
  const Error& error() const { return _error; }

 private:
  bool check(std::size_t code) {
    if (ZSTD_isError(code) != 0 && ok()) _error = zstdError(code);
    return ok();
  }

  std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> _context;
  ByteSink _sink;
  std::string _piece;
  Error _error;
};

Compressor::Compressor(std::uint64_t contentSize, ByteSink sink)
    : _stream(std::make_unique<Stream>(contentSize, std::move(sink))) {}

Compressor::~Compressor() = default;

bool Compressor::write(std::string_view bytes) {
  return _stream->feed(bytes, ZSTD_e_continue);
}

Status Compressor::finish() {
  if (!_stream->feed({}, ZSTD_e_end)) return _stream->error();
  return okStatus();
}

FrameLimits::FrameLimits(std::uint64_t frameSize)
    : contentSize(std::min(smallContent + largestRatio * frameSize, largestContent)),
      nodes(fewNodes + frameSize) {}

Result<Data> readCompressedFile(const std::string& path) {
  Data beginning;
  const Status read = readFileInPieces(path, maximumFileSize, [&](std::string_view piece) {
    beginning = Data(std::string(piece));
    return false;
  });
  if (!read) return read.error();
  if (!beginsAsFrame(beginning.bytes())) return beginning;
  return readFile(path);
}

Result<Data> decompress(std::string_view bytes, std::uint64_t limit) {
  const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(),
                                                                     ZSTD_freeDCtx);
  if (context == nullptr) return Error{"Out of memory"};
  const unsigned long long claimed = ZSTD_getFrameContentSize(bytes.data(), bytes.size());
  if (claimed == ZSTD_CONTENTSIZE_ERROR) return Error{"Not compressed data"};
  if (claimed != ZSTD_CONTENTSIZE_UNKNOWN && claimed > limit) return Error{"Too large"};
  std::string content;
  const std::uint64_t believed = std::min<std::uint64_t>(claimed, believedRatio * bytes.size());
  const auto expected = static_cast<std::size_t>(std::min(believed, limit)) + 1;
  reserveLarge(content, expected);
  content.resize(expected);
  std::size_t filled = 0;
  ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
  for (;;) {
    ZSTD_outBuffer out{content.data(), content.size(), filled};
    const std::size_t left = ZSTD_decompressStream(context.get(), &out, &in);
    if (ZSTD_isError(left) != 0) return zstdError(left);
    filled = out.pos;
    if (filled > limit) return Error{"Too large"};
    if (left == 0) break;
    if (filled < content.size()) {
      if (in.pos == in.size) return Error{"The compressed data ends too early"};
    } else {
      const std::size_t larger = content.size() + std::max(content.size() / 2, smallestGrowth);
      content.resize(static_cast<std::size_t>(std::min<std::uint64_t>(larger, limit + 1)));
    }
  }
  if (in.pos != in.size) return Error{"There is more behind the compressed data"};
  content.resize(filled);
  return Data(std::move(content));
}

}  // namespace quorvex
