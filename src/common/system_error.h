#pragma once

#include <cerrno>
#include <system_error>

#include "common/memory_shortage.h"
#include "common/result.h"

namespace quorvex {

/// What the system says to an errno.
inline Error systemError(int code) {
  if (code == ENOMEM) ++memoryShortages();
  return {std::generic_category().message(code)};
}

}  // namespace quorvex
