#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/option_parser.h"

namespace quorvex {

/// What the entry routine hands its work to.
struct Collaborators {
  /// Puts the process into the background; false when the system refuses.
  std::function<bool()> lowerPriority;
  std::function<void()> purgeCaches;
  /// Runs create mode over the directory, whose symbolic links are resolved.
  std::function<void(const Options&, const std::string& directory)> create;
  /// The top-level dictionary of an index file, or null.
  std::function<std::optional<Dictionary>(const std::string& path)> readIndexFile;
  /// Fails when standard output takes no more.
  std::function<Status(const Dictionary&, ListMode, bool verbose, IndexFormat)> list;
};

/// Decides what a parsed command line asks for, has it done, prints what there is to say and gives
/// the exit status:
///   0 done                       4 the index file cannot be read
///   1 bad option (usage)         5 no mode, or modes that exclude each other
///   2 help asked for or needed   6 not a directory
/// Status 3 is reserved.
int runCommandLine(const CommandLine& commandLine, const Collaborators& collaborators);

}  // namespace quorvex
