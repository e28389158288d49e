#pragma once

#include <string>

#include "common/result.h"

namespace quorvex::view {

/// What is kept for the user: the folder "quorvex" in the folder that an environment variable
/// names, or else in `otherwise` below the home folder. Made if it is missing, for this user alone.
/// Fails if there is no home folder, or if another user could write there.
Result<std::string> privateFolder(const char* variable, const char* otherwise);

/// Likewise for indexes, which can be made again.
Result<std::string> cacheFolder();
/// Likewise for ports and secrets, which make addresses last.
Result<std::string> stateFolder();

}  // namespace quorvex::view
