#pragma once

#include <string>

#include "common/result.h"

namespace quorvex {

/// Whether `path` exists; a symbolic link counts even if dangling. A path that cannot be examined
/// counts as existing, so removing it reports why.
bool itemExists(const std::string& path);

/// Removes a file, a link, or a folder with all its contents. Follows no links, even with a
/// trailing slash. Stops at the first item that cannot be removed and names it in the error. The
/// depth of the tree is limited neither by the stack nor by open files. The path must be absolute.
Status removeItem(const std::string& path);

}  // namespace quorvex
