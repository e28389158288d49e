#pragma once

#include <string>

#include "common/result.h"

namespace quorvex {

/// Whether something lies at `path`; a symbolic link counts itself, wherever it points. A path that
/// cannot be looked at counts as there, so that removing it tells why.
bool itemExists(const std::string& path);

/// Removes a file, a link, or a folder with all its contents. No link is followed, a trailing slash
/// notwithstanding. Stops at the first thing that cannot be removed and names it in the error. The
/// depth of the tree is bounded neither by the stack nor by open files. The path must be absolute.
Status removeItem(const std::string& path);

}  // namespace quorvex
