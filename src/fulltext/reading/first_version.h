#pragma once

#include <optional>

#include "common/value.h"

namespace quorvex {

/// Turns an index of version 1 into one of the present version: its documents and its dictionaries
/// are written anew, and what later versions store besides is made. Takes as long as making these
/// parts did. Null when the bytes are no such index.
std::optional<Data> upgradeFirstVersion(const Data& index);

}  // namespace quorvex
