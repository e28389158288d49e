#pragma once

#include <chrono>
#include <thread>

namespace quorvex {

/// Pauses briefly so that others can run. Slow mode calls this for each queued page and each
/// indexed document.
inline void pauseSlowMode() {
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace quorvex
