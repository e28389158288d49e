#pragma once

#include <cerrno>
#include <system_error>

#include "common/memory_shortage.h"
#include "common/result.h"

namespace quorvex {

/// Returns the message for an errno.
inline Error systemError(int code) {
  if (code == ENOMEM) ++memoryShortages();
  return {std::generic_category().message(code)};
}

}  // namespace quorvex
