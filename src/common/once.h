#pragma once

#include <atomic>
#include <mutex>

namespace quorvex {

/// Does something once for all threads. Unlike std::call_once, which unwinds through the C library
/// and so aborts a program without memory, it lets every exception pass; the next call tries again.
class Once {
 public:
  template <typename Work>
  void run(const Work& work) {
    if (_done.load(std::memory_order_acquire)) return;
    const std::lock_guard lock(_mutex);
    if (_done.load(std::memory_order_relaxed)) return;
    work();
    _done.store(true, std::memory_order_release);
  }

 private:
  std::mutex _mutex;
  std::atomic<bool> _done = false;
};

}  // namespace quorvex
