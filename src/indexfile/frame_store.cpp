#include "indexfile/frame_store.h"

#include <algorithm>
#include <bit>
#include <utility>

#include <sys/mman.h>

namespace quorvex {

std::shared_ptr<const FrameStore> FrameStore::open(RegularFile file, std::uint64_t kept) {
  std::unique_ptr<const FrameFile> frames = FrameFile::open(file);
  if (frames == nullptr) return nullptr;
  const auto size = static_cast<std::size_t>(frames->table().contentSize);
  void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  // A large page would take the memory of many frames for one.
  ::madvise(memory, size, MADV_NOHUGEPAGE);
  return std::shared_ptr<const FrameStore>(
      new FrameStore(std::move(file), std::move(frames), static_cast<char*>(memory), kept));
}

FrameStore::FrameStore(RegularFile file, std::unique_ptr<const FrameFile> frames, char* memory,
                       std::uint64_t kept)
    : _file(std::move(file)),
      _frames(std::move(frames)),
      _memory(memory),
      _kept(kept),
      _shift(static_cast<unsigned>(std::countr_zero(_frames->table().frameSize))),
      _stamps(_frames->frames()) {}

FrameStore::~FrameStore() {
  ::munmap(_memory, static_cast<std::size_t>(table().contentSize));
}

Data FrameStore::contentOf(const std::shared_ptr<const FrameStore>& store) {
  const auto size = static_cast<std::size_t>(store->table().contentSize);
  return {store, LazyBytes(std::string_view(store->_memory, size), store.get())};
}

bool FrameStore::require(std::string_view range) const {
  if (range.empty()) return true;
  const auto begin = static_cast<std::size_t>(range.data() - _memory);
  const std::size_t last = (begin + range.size() - 1) >> _shift;
  const std::uint32_t now = _now.load(std::memory_order_relaxed);
  for (std::size_t frame = begin >> _shift; frame <= last; ++frame) {
    const std::uint32_t stamp = _stamps[frame].load(std::memory_order_acquire);
    if (stamp == now) continue;
    if (stamp == 0 && !unpack(frame)) return false;
    _stamps[frame].store(now, std::memory_order_release);
  }
  return true;
}

/// Leaves its stamp to the caller.
bool FrameStore::unpack(std::size_t frame) const {
  const std::lock_guard lock(_mutexes[frame % _mutexes.size()]);
  if (_stamps[frame].load(std::memory_order_acquire) != 0) return true;
  if (isDamaged()) return false;
  char* const content = _memory + (frame << _shift);
#ifdef MADV_POPULATE_WRITE
  // One call instead of a page fault for each 4 KiB. Older kernels refuse it.
  ::madvise(content, _frames->sizeOf(frame), MADV_POPULATE_WRITE);
#endif
  if (!_frames->unpack(frame, content)) {
    _isDamaged.store(true, std::memory_order_relaxed);
    return false;
  }
  _unpacked.fetch_add(_frames->sizeOf(frame), std::memory_order_relaxed);
  _stamps[frame].store(_now.load(std::memory_order_relaxed), std::memory_order_release);
  return true;
}

void FrameStore::enter() const {
  const std::lock_guard lock(_useMutex);
  ++_uses;
  _now.store(std::max<std::uint32_t>(1, _now.load(std::memory_order_relaxed) + 1),
             std::memory_order_relaxed);
}

void FrameStore::leave() const {
  const std::lock_guard lock(_useMutex);
  if (--_uses == 0 && unpackedSize() > _kept) giveBack();
}

/// Nobody else is at work: a new use has to wait.
void FrameStore::giveBack() const {
  std::vector<std::pair<std::uint32_t, std::size_t>> present;
  for (std::size_t frame = 0; frame < _stamps.size(); ++frame) {
    const std::uint32_t stamp = _stamps[frame].load(std::memory_order_relaxed);
    if (stamp != 0) present.emplace_back(stamp, frame);
  }
  std::ranges::sort(present);
  for (const auto& [stamp, frame] : present) {
    if (unpackedSize() <= _kept / 2) break;
    _stamps[frame].store(0, std::memory_order_relaxed);
    const std::size_t size = _frames->sizeOf(frame);
    _unpacked.fetch_sub(size, std::memory_order_relaxed);
    ::madvise(_memory + (frame << _shift), size, MADV_DONTNEED);
  }
}

FrameStore::Use::Use(std::shared_ptr<const FrameStore> store) : _store(std::move(store)) {
  if (_store != nullptr) _store->enter();
}

FrameStore::Use::~Use() {
  if (_store != nullptr) _store->leave();
}

}  // namespace quorvex
