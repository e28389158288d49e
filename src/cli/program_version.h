#pragma once

#include <string>
#include <string_view>

namespace quorvex {

/// Returns "quorvex version 2.0 (68)" and a line feed, from the program's information record; both
/// values are "err" when it is not found. `programName` is argv[0].
std::string versionLine(std::string_view programName);

/// Returns the version line and the usage text below it.
std::string usage(std::string_view programName);

}  // namespace quorvex
