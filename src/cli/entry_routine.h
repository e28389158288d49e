#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/option_parser.h"

namespace quorvex {

/// The functions that do the entry routine's work.
struct Collaborators {
  /// Puts the process into the background; false when the system refuses.
  std::function<bool()> lowerPriority;
  std::function<void()> purgeCaches;
  /// Runs create mode over the directory, whose symbolic links are resolved.
  std::function<void(const Options&, const std::string& directory)> create;
  /// The top-level dictionary of an index file, or null.
  std::function<std::optional<Dictionary>(const std::string& path)> readIndexFile;
  /// Fails if standard output cannot be written.
  std::function<Status(const Dictionary&, ListMode, bool verbose, IndexFormat)> list;
};

/// Carries out a parsed command line, prints any messages and returns the exit status:
///   0 done                       4 the index file cannot be read
///   1 bad option (usage)         5 no mode, or modes that exclude each other
///   2 help requested or needed   6 not a directory
/// Status 3 is reserved.
int runCommandLine(const CommandLine& commandLine, const Collaborators& collaborators);

}  // namespace quorvex
