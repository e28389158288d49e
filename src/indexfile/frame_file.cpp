#include "indexfile/frame_file.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <string_view>
#include <utility>

#include <unistd.h>
#include <zstd.h>
#include <zstd_errors.h>

#include "common/bytes.h"
#include "common/fill_buffer.h"
#include "common/parallel.h"
#include "common/retry.h"
#include "platform/compression.h"

namespace quorvex {

namespace {

constexpr unsigned unpackingThreads = 2;
/// Content is expected to be up to this many times the size of its file.
constexpr std::uint64_t believedRatio = 16;

/// False if the file ends before that or cannot be read.
bool readAt(int descriptor, std::uint64_t offset, std::size_t size, std::string& bytes) {
  bytes.resize(size);
  for (std::size_t filled = 0; filled < size;) {
    const ssize_t count = retried([&] {
      return ::pread(descriptor, bytes.data() + filled, size - filled,
                     static_cast<off_t>(offset + filled));
    });
    if (count <= 0) return false;
    filled += static_cast<std::size_t>(count);
  }
  return true;
}

/// Whether bytes are one frame as a writer makes it, which claims content of such a size.
bool isFrame(std::string_view bytes, std::size_t contentSize) {
  constexpr std::size_t smallest = 6;
  constexpr unsigned checksumFlag = 4;
  constexpr unsigned dictionaryFlags = 3;
  if (bytes.size() < smallest || ByteReader(bytes).u32() != ZSTD_MAGICNUMBER) return false;
  const unsigned descriptor = static_cast<unsigned char>(bytes[4]);
  return (descriptor & checksumFlag) != 0 && (descriptor & dictionaryFlags) == 0 &&
         ZSTD_getFrameContentSize(bytes.data(), bytes.size()) == contentSize &&
         ZSTD_findFrameCompressedSize(bytes.data(), bytes.size()) == bytes.size();
}

/// Whether what stands between the frames and the table is nothing or one skippable frame.
bool isPadding(int descriptor, std::uint64_t offset, std::uint64_t size) {
  if (size == 0) return true;
  std::string head;
  return size >= FrameTable::headSize && readAt(descriptor, offset, FrameTable::headSize, head) &&
         sizeOfSkippableFrame(head) == size - FrameTable::headSize;
}

}  // namespace

struct FrameFile::Unpacker {
  std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context{ZSTD_createDCtx(), ZSTD_freeDCtx};
  std::string packed;
};

std::unique_ptr<const FrameFile> FrameFile::open(const RegularFile& file) {
  const int descriptor = file.descriptor.get();
  std::string bytes;
  if (file.size < FrameTable::footerSize ||
      !readAt(descriptor, file.size - FrameTable::footerSize, FrameTable::footerSize, bytes)) {
    return nullptr;
  }
  const std::uint64_t size = sizeOfFrameTable(bytes);
  if (size == 0 || size > file.size) return nullptr;
  const std::uint64_t before = file.size - size;
  if (!readAt(descriptor, before, static_cast<std::size_t>(size), bytes)) return nullptr;
  std::optional<FrameTable> table = decodeFrameTable(bytes, before);
  if (!table || table->contentSize > FrameLimits(file.size).contentSize) return nullptr;
  auto opened = std::make_unique<FrameFile>(*std::move(table), descriptor);
  const std::uint64_t end = opened->_offsets.back();
  return isPadding(descriptor, end, before - end) ? std::move(opened) : nullptr;
}

FrameFile::FrameFile(FrameTable table, int descriptor)
    : _table(std::move(table)), _descriptor(descriptor) {
  _offsets.reserve(frames() + 1);
  _offsets.push_back(0);
  for (const std::uint64_t size : _table.packedSizes)
    _offsets.push_back(_offsets.back() + size);
}

FrameFile::~FrameFile() = default;

std::size_t FrameFile::sizeOf(std::size_t frame) const {
  const std::uint64_t offset = frame * _table.frameSize;
  return static_cast<std::size_t>(std::min(_table.frameSize, _table.contentSize - offset));
}

bool FrameFile::unpack(std::size_t frame, char* content) const {
  std::unique_ptr<Unpacker> unpacker = _unpackers.take([] { return std::make_unique<Unpacker>(); });
  if (unpacker->context == nullptr) throw std::bad_alloc();
  const std::size_t size = sizeOf(frame);
  std::string& packed = unpacker->packed;
  bool isSound = readAt(_descriptor, _offsets[frame],
                        static_cast<std::size_t>(_table.packedSizes[frame]), packed) &&
                 isFrame(packed, size);
  if (isSound) {
    const std::size_t filled =
        ZSTD_decompressDCtx(unpacker->context.get(), content, size, packed.data(), packed.size());
    if (ZSTD_getErrorCode(filled) == ZSTD_error_memory_allocation) throw std::bad_alloc();
    isSound = filled == size;
  }
  _unpackers.giveBack(std::move(unpacker));
  return isSound;
}

std::optional<Data> FrameFile::unpackAll() const {
  if (_table.contentSize > believedRatio * _offsets.back()) return {};
  FillBuffer content(static_cast<std::size_t>(_table.contentSize));
  std::atomic<bool> areSound = true;
  forEachBlock(frames(), 1, unpackingThreads, [&](std::size_t begin, std::size_t end, unsigned) {
    for (std::size_t frame = begin; frame < end && areSound; ++frame) {
      if (!unpack(frame, content.data() + frame * _table.frameSize)) areSound = false;
    }
  });
  if (!areSound) return {};
  return content.take(content.size());
}

}  // namespace quorvex
