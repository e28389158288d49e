#pragma once

#include <string>

#include "common/result.h"

namespace quorvex {

// Folders in which the programs keep files for this user alone: "quorvex" in the folder that an
// environment variable names, or else in the usual one below the home folder.

/// For what can be made again. Makes the folder if it is missing, and closes it to others if it is
/// open. Fails if there is no home folder, or if the folder belongs to another user.
Result<std::string> cacheFolder();
/// Where that folder is, or would be.
Result<std::string> cacheFolderPath();
/// Likewise for ports and secrets, which make addresses last.
Result<std::string> stateFolder();

}  // namespace quorvex
