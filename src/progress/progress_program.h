#pragma once

#include <span>

namespace quorvex {

/// Exit statuses of quorvex-progress. On an interruption, the signal ends the process.
enum class ProgressStatus : int {
  runEnded = 0,
  runVanished = 1,  // the process does not exist, or ended without reporting it
  wrongUsage = 2,
  noBus = 3,
  noOutput = 4,
};

/// Implements the program: follows a run until it ends and returns the exit status. `arguments`
/// excludes the program name.
int runProgressProgram(std::span<char* const> arguments);

}  // namespace quorvex
