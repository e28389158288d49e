#pragma once

#include <future>
#include <system_error>

namespace quorvex {

/// Does work beside the caller's own; the future's get() gives its result or throws what it threw.
/// Where the system has no thread for it, it is done when get() is called.
template <typename Work>
auto inBackground(const Work& work) {
  try {
    return std::async(std::launch::async, work);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, work);
  }
}

}  // namespace quorvex
