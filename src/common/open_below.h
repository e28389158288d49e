#pragma once

#include <string>

#include "common/descriptor.h"

namespace quorvex {

/// Opens a file without leaving the folder, be it by ".." or by links; otherwise the descriptor is
/// unset and errno tells why. Systems before Linux 5.6, and some sandboxes, cannot tell where a
/// link leads: there, no part of the path may be one.
Descriptor openBelow(int folder, const std::string& path, int flags);

}  // namespace quorvex
