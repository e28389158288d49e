#include "platform/compression.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <zstd.h>

#include "common/parallel.h"
#include "indexfile/frame_table.h"

namespace quorvex {

namespace {

/// The parameters of every frame. Only the fast strategy produces the same bytes with zstd 1.5.4
/// (Debian 12) and 1.5.7 (Debian 13). Defaults that differ between versions are set explicitly.
struct Parameter {
  ZSTD_cParameter name;
  int value;
};
constexpr Parameter parameters[] = {{ZSTD_c_compressionLevel, 2},
                                    {ZSTD_c_strategy, ZSTD_fast},
                                    {ZSTD_c_targetLength, 0},
                                    {ZSTD_c_checksumFlag, 1}};
/// ZSTD_c_blockSplitterLevel, and its value for ending blocks only when full. By default 1.5.7
/// splits them at better places; older versions reject the parameter.
constexpr Parameter fullBlocks{static_cast<ZSTD_cParameter>(1017), 1};

/// What the frames of a file have in common.
struct FrameKind {
  std::uint64_t contentSize;
  int windowLog;
  int hashLog;
  std::span<const int> leastMatches;  ///< what is smallest is kept
  std::span<const Parameter> others;
  std::size_t atOnce;  ///< frames that are compressed together
};
/// Short matches suit text, long ones numbers, among which most short matches are of no use. Trying
/// both saves 1 % more than either.
constexpr std::array shortAndLong{4, 7};
constexpr FrameKind smallFrames{contentOfFrame, 16, 17, shortAndLong, {}, 32};
/// In much text, there are long matches enough, and many far away.
constexpr std::array onlyLong{6};
constexpr Parameter farMatches[] = {{ZSTD_c_enableLongDistanceMatching, 1},
                                    {ZSTD_c_ldmHashLog, 16},
                                    {ZSTD_c_ldmMinMatch, 32},
                                    {ZSTD_c_ldmBucketSizeLog, 3},
                                    {ZSTD_c_ldmHashRateLog, 5}};
constexpr FrameKind largeFrames{largestContentOfFrame, 22, 19, onlyLong, farMatches, 2};

constexpr unsigned compressingThreads = 2;

/// Makes frames. Serves one thread.
class FrameMaker {
 public:
  explicit FrameMaker(const FrameKind& kind)
      : _kind(kind),
        _context(ZSTD_createCCtx(), ZSTD_freeCCtx),
        _frame(ZSTD_compressBound(kind.contentSize), 0) {
    if (_context == nullptr) throw std::bad_alloc();
    for (const auto& [name, value] : parameters)
      ZSTD_CCtx_setParameter(_context.get(), name, value);
    ZSTD_CCtx_setParameter(_context.get(), fullBlocks.name, fullBlocks.value);
    ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_windowLog, kind.windowLog);
    ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_hashLog, kind.hashLog);
    for (const auto& [name, value] : kind.others)
      ZSTD_CCtx_setParameter(_context.get(), name, value);
  }

  std::string make(std::string_view content) {
    std::string smallest;
    for (const int leastMatch : _kind.leastMatches) {
      ZSTD_CCtx_setParameter(_context.get(), ZSTD_c_minMatch, leastMatch);
      const std::size_t size = ZSTD_compress2(_context.get(), _frame.data(), _frame.size(),
                                              content.data(), content.size());
      // With enough room, nothing but memory can be short.
      if (ZSTD_isError(size) != 0) throw std::bad_alloc();
      if (smallest.empty() || size < smallest.size()) smallest.assign(_frame, 0, size);
    }
    return smallest;
  }

 private:
  const FrameKind& _kind;
  std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> _context;
  std::string _frame;
};

}  // namespace

class Compressor::Stream {
 public:
  Stream(std::uint64_t contentSize, std::uint64_t nodes, const FrameKind& kind, ByteSink sink)
      : _kind(kind),
        _contentAtOnce(kind.atOnce * kind.contentSize),
        _nodes(nodes),
        _sink(std::move(sink)) {
    _table.frameSize = kind.contentSize;
    _table.contentSize = contentSize;
  }

  bool write(std::string_view bytes) {
    if (bytes.size() > _table.contentSize - _taken) return fail("More content than announced");
    _taken += bytes.size();
    while (!bytes.empty() && ok()) {
      std::string_view part = bytes.substr(0, _contentAtOnce - _waiting.size());
      bytes.remove_prefix(part.size());
      if (part.size() < _contentAtOnce) {
        part = _waiting.append(part);
        if (part.size() < _contentAtOnce) break;
      }
      compress(part);
      _waiting.clear();
    }
    return ok();
  }

  Status finish() {
    if (ok() && _taken < _table.contentSize) fail("Less content than announced");
    if (ok() && (!_waiting.empty() || _taken == 0)) compress(_waiting);
    if (ok()) pad();
    return _status;
  }

  Status finishWithTable(const std::vector<std::uint64_t>& bounds) {
    if (const Status finished = finish(); !finished) return finished;
    _table.bounds = bounds;
    emit(encodeFrameTable(_table));
    return _status;
  }

 private:
  void compress(std::string_view content) {
    const std::size_t size = _kind.contentSize;
    std::vector<std::string> frames(std::max<std::size_t>(1, (content.size() + size - 1) / size));
    forEachBlock(frames.size(), 1, compressingThreads,
                 [&](std::size_t i, std::size_t, unsigned worker) {
                   std::unique_ptr<FrameMaker>& maker = _makers[worker];
                   if (maker == nullptr) maker = std::make_unique<FrameMaker>(_kind);
                   frames[i] = maker->make(content.substr(i * size, size));
                 });
    for (const std::string& frame : frames) {
      if (!ok()) break;
      _table.packedSizes.push_back(frame.size());
      emit(frame);
    }
  }

  /// Pads the file to the size that readers expect; they mistake content that is large for its
  /// file for a bomb.
  void pad() {
    const std::uint64_t expected = FrameLimits::smallestFile(_table.contentSize, _nodes);
    if (_written >= expected) return;
    std::uint64_t left = expected - _written;
    emit(skippableFrameHead(static_cast<std::uint32_t>(left)));
    const std::string zeros(_kind.contentSize, '\0');
    while (left > 0 && ok()) {
      const std::uint64_t size = std::min<std::uint64_t>(left, zeros.size());
      emit(std::string_view(zeros).substr(0, size));
      left -= size;
    }
  }

  void emit(std::string_view bytes) {
    _written += bytes.size();
    if (!_sink(bytes)) fail("The output could not be written");
  }

  bool ok() const { return _status.ok(); }
  bool fail(const char* reason) {
    if (ok()) _status = Error{reason};
    return false;
  }

  const FrameKind& _kind;
  std::size_t _contentAtOnce;
  FrameTable _table;
  std::uint64_t _nodes;
  std::uint64_t _taken = 0;  ///< content
  std::uint64_t _written = 0;
  ByteSink _sink;
  std::string _waiting;  ///< content, less than is compressed at once
  std::array<std::unique_ptr<FrameMaker>, compressingThreads> _makers;
  Status _status = okStatus();
};

Compressor::Compressor(std::uint64_t contentSize, ByteSink sink, std::uint64_t nodes,
                       ReadingOrder order)
    : _stream(std::make_unique<Stream>(contentSize, nodes,
                                       order == ReadingOrder::whole ? largeFrames : smallFrames,
                                       std::move(sink))) {}

Compressor::~Compressor() = default;

bool Compressor::write(std::string_view bytes) {
  return _stream->write(bytes);
}

Status Compressor::finish() {
  return _stream->finish();
}

Status Compressor::finishWithTable(const std::vector<std::uint64_t>& bounds) {
  return _stream->finishWithTable(bounds);
}

}  // namespace quorvex
