#pragma once

#include <string>

#include "cli/options.h"

namespace quorvex {

/// Create mode: generates the index of the pages under `directory` (or of the external
/// description's) and writes the index file. Failures are logged; none changes the exit status.
void runCreate(const Options& options, const std::string& directory);

}  // namespace quorvex
