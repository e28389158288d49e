#pragma once

#include <string_view>

#include "common/descriptor.h"

namespace quorvex::view {

/// Whether a page's file has this address as the value of an attribute, as it stands there or with
/// its ampersands escaped; a slash at the end of a host's name may be missing.
bool holdsLink(const Descriptor& file, std::string_view address);

}  // namespace quorvex::view
