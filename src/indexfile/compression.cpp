#include "platform/compression.h"

#include <algorithm>
#include <string>
#include <utility>

#include <zstd.h>

namespace quorvex {

namespace {

/// The parameters of every frame. Only the fast strategy produces the same bytes with zstd 1.5.4
/// (Debian 12) and 1.5.7 (Debian 13). With a larger table than usual and long-distance matching,
/// its indexes are as small as those of level 3. Defaults that differ between versions are set
/// explicitly.
struct Parameter {
  ZSTD_cParameter name;
  int value;
};
constexpr Parameter parameters[] = {
    {ZSTD_c_compressionLevel, 2}, {ZSTD_c_strategy, ZSTD_fast},
    {ZSTD_c_windowLog, 21},       {ZSTD_c_hashLog, 19},
    {ZSTD_c_minMatch, 6},         {ZSTD_c_enableLongDistanceMatching, 1},
    {ZSTD_c_ldmHashLog, 16},      {ZSTD_c_ldmMinMatch, 32},
    {ZSTD_c_ldmBucketSizeLog, 3}, {ZSTD_c_ldmHashRateLog, 5},
    {ZSTD_c_checksumFlag, 1},
};
/// ZSTD_c_blockSplitterLevel, and its value for ending blocks only when full. By default 1.5.7
/// splits them at better places, which saves 0.5 % of the size; older versions reject the
/// parameter.
constexpr Parameter fullBlocks{static_cast<ZSTD_cParameter>(1017), 1};
/// Threads besides the caller's, and bytes of content per job. Only the latter affects the frame,
/// unless the system provides no threads at all; half of it makes the frame 1 % larger.
constexpr int compressingThreads = 2;
constexpr int bytesPerJob = 2 * 1024 * 1024;

/// Magic number and size, little-endian (RFC 8878, section 3.1.2).
std::string skippableFrameHead(std::uint32_t size) {
  std::string head;
  for (const std::uint32_t number : {std::uint32_t{ZSTD_MAGIC_SKIPPABLE_START}, size}) {
    for (unsigned shift = 0; shift < 32; shift += 8)
      head += static_cast<char>(number >> shift & 0xFFU);
  }
  return head;
}

Error zstdError(std::size_t code) {
  return {ZSTD_getErrorName(code)};
}

}  // namespace

class Compressor::Stream {
 public:
  Stream(std::uint64_t contentSize, std::uint64_t nodes, ByteSink sink)
      : _context(ZSTD_createCCtx(), ZSTD_freeCCtx),
        _contentSize(contentSize),
        _nodes(nodes),
        _sink(std::move(sink)),
        _piece(ZSTD_CStreamOutSize(), '\0') {
    if (_context == nullptr) {
      _status = Error{"Out of memory"};
      return;
    }
    for (const auto& [name, value] : parameters)
      check(ZSTD_CCtx_setParameter(_context.get(), name, value));
    ZSTD_CCtx_setParameter(_context.get(), fullBlocks.name, fullBlocks.value);
    begin();
  }

  bool feed(std::string_view bytes, ZSTD_EndDirective directive) {
    ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
    bool more = true;
    while (more && ok()) {
      ZSTD_outBuffer out{_piece.data(), _piece.size(), 0};
      const std::size_t left = ZSTD_compressStream2(_context.get(), &out, &in, directive);
      if (!check(left)) break;
      if (out.pos > 0) emit(std::string_view(_piece).substr(0, out.pos));
      more = directive == ZSTD_e_end ? left != 0 : in.pos < in.size;
    }
    return ok();
  }

  /// Pads the file to the size that readers expect; they mistake content that is large for its
  /// frame for a bomb.
  void pad() {
    const std::uint64_t expected = FrameLimits::smallestFrame(_contentSize, _nodes);
    if (!ok() || _written >= expected) return;
    std::uint64_t left = expected - _written;
    emit(skippableFrameHead(static_cast<std::uint32_t>(left)));
    std::ranges::fill(_piece, '\0');
    while (left > 0 && ok()) {
      const std::uint64_t size = std::min<std::uint64_t>(left, _piece.size());
      emit(std::string_view(_piece).substr(0, size));
      left -= size;
    }
  }

  bool ok() const { return _status.ok(); }
  const Status& status() const { return _status; }

 private:
  /// Uses only the caller's thread if the system provides no others, which shows on first use.
  void begin() {
    check(ZSTD_CCtx_setPledgedSrcSize(_context.get(), _contentSize));
    check(ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_nbWorkers, compressingThreads));
    check(ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_jobSize, bytesPerJob));
    ZSTD_inBuffer in{nullptr, 0, 0};
    ZSTD_outBuffer out{_piece.data(), _piece.size(), 0};
    if (ZSTD_isError(ZSTD_compressStream2(_context.get(), &out, &in, ZSTD_e_continue)) != 0) {
      check(ZSTD_CCtx_reset(_context.get(), ZSTD_reset_session_only));
      check(ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_nbWorkers, 0));
      check(ZSTD_CCtx_setPledgedSrcSize(_context.get(), _contentSize));
    } else if (out.pos > 0) {
      emit(std::string_view(_piece).substr(0, out.pos));
    }
  }

  void emit(std::string_view bytes) {
    _written += bytes.size();
    if (!_sink(bytes)) _status = Error{"The output could not be written"};
  }

  bool check(std::size_t code) {
    if (ZSTD_isError(code) != 0 && ok()) _status = zstdError(code);
    return ok();
  }

  std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> _context;
  std::uint64_t _contentSize;
  std::uint64_t _nodes;
  std::uint64_t _written = 0;
  ByteSink _sink;
  std::string _piece;
  Status _status = okStatus();
};

Compressor::Compressor(std::uint64_t contentSize, ByteSink sink, std::uint64_t nodes)
    : _stream(std::make_unique<Stream>(contentSize, nodes, std::move(sink))) {}

Compressor::~Compressor() = default;

bool Compressor::write(std::string_view bytes) {
  return _stream->feed(bytes, ZSTD_e_continue);
}

Status Compressor::finish() {
  if (_stream->feed({}, ZSTD_e_end)) _stream->pad();
  return _stream->status();
}

}  // namespace quorvex
