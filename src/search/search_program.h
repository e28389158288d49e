#pragma once

#include <span>

namespace quorvex {

/// Exit statuses of quorvex-search.
enum class SearchStatus : int {
  found = 0,
  nothingFound = 1,
  misuse = 2,
  unreadableIndex = 3,
  noOutput = 4,
  noBrowser = 5,
};

/// Implements the program. `arguments` excludes the program name.
int runSearchProgram(std::span<char* const> arguments);

}  // namespace quorvex
