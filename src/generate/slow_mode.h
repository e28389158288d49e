#pragma once

#include <chrono>
#include <thread>

namespace quorvex {

/// Yields the machine briefly. Slow mode calls this for each page it queues and each document it
/// indexes.
inline void pauseSlowMode() {
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace quorvex
