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
};

/// The program without its process. `arguments` are those behind the program's name.
int runSearchProgram(std::span<char* const> arguments);

}  // namespace quorvex
