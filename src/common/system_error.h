#pragma once

#include <system_error>

#include "common/result.h"

namespace quorvex {

/// What the system says to an errno.
inline Error systemError(int code) {
  return {std::generic_category().message(code)};
}

}  // namespace quorvex
