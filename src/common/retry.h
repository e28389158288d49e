#pragma once

#include <cerrno>

namespace quorvex {

/// Repeats a system call until no signal interrupts it. Network file systems can be interrupted
/// where disks cannot, such as in opening, and the readers' callers may handle signals.
template <typename Call>
auto retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR)
    result = call();
  return result;
}

}  // namespace quorvex
