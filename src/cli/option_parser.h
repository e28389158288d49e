#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options.h"

namespace quorvex {

/// A parsed command line.
struct CommandLine {
  /// The program's name as invoked (argv[0]).
  std::string programName;
  Options options;
  /// The arguments after the options.
  std::vector<std::string> arguments;
};

class OptionSink;

/// A long option and its effect.
struct OptionDescription {
  const char* longName;
  char letter;
  bool takesArgument;        ///< in its long form
  std::string_view summary;  ///< short and human-readable
  /// `argument` is null for forms without one.
  void (*apply)(OptionSink& sink, const char* argument);
};

/// Returns the long options in order; all option lists are generated from this table.
std::span<const OptionDescription> optionDescriptions();

/// The short options in getopt's syntax. "r" has no colon: only its long form accepts a URL. "c"
/// and "t" are recognised but rejected; "1" has no long form.
inline constexpr const char* shortOptions = "aAcCDEe:f:Fghi:KLm:Mnrl:Rs:St:PvV1x:pTI:";

/// Parses with getopt_long, which prints its own diagnostics. Applies -v (raises the process-wide
/// verbosity), -p (calls `lowerPriority`) and -x (reads the file) immediately. Main thread only:
/// getopt keeps its state in globals. `arguments` includes the program name; getopt permutes it.
CommandLine parseCommandLine(std::span<char*> arguments,
                             const std::function<bool()>& lowerPriority);

}  // namespace quorvex
