#pragma once

#include <span>

namespace quorvex::view {

/// Exit statuses of quorvex-view.
enum class ViewStatus : int {
  ended = 0,  ///< also when another process serves the book already
  misuse = 2,
  unreadableBook = 3,
  cannotServe = 4,
};

/// Implements the program. `arguments` excludes the program name. Blocks signals in the whole
/// process.
int runViewProgram(std::span<char* const> arguments);

}  // namespace quorvex::view
