#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/files.h"
#include "common/idle_pool.h"
#include "common/value.h"
#include "indexfile/frame_table.h"

namespace quorvex {

/// A compressed file whose table says where its frames are. It is read, never mapped: a file that
/// someone cuts while it is open must not end the program. Thread-safe.
class FrameFile {
 public:
  /// Reads the table, but no frame. Null without a table that agrees with the file and its limits
  /// (FrameLimits).
  static std::unique_ptr<const FrameFile> open(const RegularFile& file);

  explicit FrameFile(FrameTable table, int descriptor);
  FrameFile(const FrameFile&) = delete;
  FrameFile& operator=(const FrameFile&) = delete;
  ~FrameFile();

  const FrameTable& table() const { return _table; }
  std::size_t frames() const { return _table.packedSizes.size(); }
  /// The size of a frame's content.
  std::size_t sizeOf(std::size_t frame) const;

  /// Unpacks a frame to `content`, of its size; false if it is damaged or cannot be read.
  bool unpack(std::size_t frame, char* content) const;
  /// Unpacks all frames, on two threads. Null if one is damaged, or if the content is so large for
  /// the file that the table is not to be believed.
  std::optional<Data> unpackAll() const;

 private:
  struct Unpacker;

  FrameTable _table;
  int _descriptor;
  std::vector<std::uint64_t> _offsets;  ///< of the frames, in the file
  mutable IdlePool<Unpacker> _unpackers;
};

}  // namespace quorvex
