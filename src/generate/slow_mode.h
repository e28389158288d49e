#pragma once

#include <chrono>
#include <thread>

namespace quorvex {

/// Leaves the machine to others for a moment; slow mode does so after each page it queues and each
/// document it indexes.
inline void pauseSlowMode() {
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace quorvex
