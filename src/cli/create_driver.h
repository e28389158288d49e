#pragma once

#include <string>

#include "cli/options.h"

namespace quorvex {

/// Implements create mode: indexes the pages under `directory` (or in the external description) and
/// writes the index file. Only std::bad_alloc escapes; other failures are just logged.
void runCreate(const Options& options, const std::string& directory);

}  // namespace quorvex
