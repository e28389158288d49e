#pragma once

#include <string>
#include <string_view>

namespace quorvex {

/// "quorvex version 2.0 (68)" and a line feed, from the program's information record; both values
/// are "err" when it cannot be found. `programName` is the program's first argument.
std::string versionLine(std::string_view programName);

/// The version line and what the usage says below it.
std::string usage(std::string_view programName);

}  // namespace quorvex
