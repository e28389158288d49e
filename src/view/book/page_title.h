#pragma once

#include <string>

#include "common/descriptor.h"

namespace quorvex::view {

/// Returns the title of a page's file; empty if it has none or is too large to be read for that.
std::string titleOfPage(const Descriptor& file);

}  // namespace quorvex::view
