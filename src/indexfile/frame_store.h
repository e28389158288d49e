#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "common/files.h"
#include "common/lazy_bytes.h"
#include "common/value.h"
#include "indexfile/frame_file.h"

namespace quorvex {

/// The content of a compressed file, unpacked frame by frame as it is needed, each in its place in
/// memory that is reserved for all of it. What is unpacked stays while it is in use; when nobody
/// uses it, the frames that were used least recently are given back if there are too many. So every
/// operation that reads the content must hold a Use, and keep no view of it beyond. Thread-safe.
class FrameStore final : public Residency {
 public:
  /// What may stay unpacked while nobody uses it, unless given otherwise.
  static constexpr std::uint64_t usuallyKept = std::uint64_t{64} << 20U;

  /// Null without a usable table, or if the memory cannot be reserved.
  static std::shared_ptr<const FrameStore> open(RegularFile file, std::uint64_t kept = usuallyKept);
  ~FrameStore() override;

  /// The content; `store` must own this.
  static Data contentOf(const std::shared_ptr<const FrameStore>& store);
  const FrameTable& table() const { return _frames->table(); }

  /// Throws std::bad_alloc if memory is short.
  bool require(std::string_view range) const override;
  /// Whether a frame turned out to be damaged; what was read meanwhile is worthless.
  bool isDamaged() const { return _isDamaged.load(std::memory_order_relaxed); }
  /// The size of what is unpacked at present.
  std::uint64_t unpackedSize() const { return _unpacked.load(std::memory_order_relaxed); }

  /// Keeps unpacked what becomes so.
  class Use {
   public:
    /// `store` may be null.
    explicit Use(std::shared_ptr<const FrameStore> store);
    Use(Use&&) = default;
    Use& operator=(Use&&) = delete;
    ~Use();

   private:
    std::shared_ptr<const FrameStore> _store;
  };

 private:
  /// When a frame was last needed, as the number of the use; 0 if it is not unpacked.
  using Stamp = std::atomic<std::uint32_t>;

  FrameStore(RegularFile file, std::unique_ptr<const FrameFile> frames, char* memory,
             std::uint64_t kept);

  bool unpack(std::size_t frame) const;
  void enter() const;
  void leave() const;
  void giveBack() const;

  RegularFile _file;
  std::unique_ptr<const FrameFile> _frames;
  char* _memory;
  std::uint64_t _kept;
  unsigned _shift;  ///< binary logarithm of a frame's size
  mutable std::vector<Stamp> _stamps;
  mutable std::array<std::mutex, 16> _mutexes;  ///< of the frames, each of many
  mutable std::atomic<std::uint64_t> _unpacked = 0;
  mutable std::atomic<bool> _isDamaged = false;
  mutable std::mutex _useMutex;
  mutable std::size_t _uses = 0;
  mutable Stamp _now = 1;
};

}  // namespace quorvex
