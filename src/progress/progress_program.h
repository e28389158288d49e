#pragma once

#include <span>

namespace quorvex {

/// Exit statuses of quorvex-progress. A run that is interrupted ends by the signal.
enum class ProgressStatus : int {
  runEnded = 0,
  runVanished = 1,  // the process is not there, or ended without saying so
  wrongUsage = 2,
  noBus = 3,
  noOutput = 4,
};

/// The program without its process: follows a run until it ends and returns the exit status.
/// `arguments` are those behind the program's name.
int runProgressProgram(std::span<char* const> arguments);

}  // namespace quorvex
