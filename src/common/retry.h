#pragma once

#include <cerrno>

namespace quorvex {

/// What a system call returns once no signal interrupts it any more. A network file system can be
/// interrupted where a disk cannot, as in opening, and the readers' callers may handle signals.
template <typename Call>
auto retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR)
    result = call();
  return result;
}

}  // namespace quorvex
