#pragma once

#include <chrono>

namespace quorvex {

/// How long a request may take: to leave this process, and then to be answered.
struct CallLimits {
  std::chrono::milliseconds send = std::chrono::seconds(10);
  std::chrono::milliseconds reply = std::chrono::seconds(10);
};

}  // namespace quorvex
