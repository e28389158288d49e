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
  /// The program's first argument, as it was invoked.
  std::string programName;
  Options options;
  /// What is left after the options.
  std::vector<std::string> arguments;
};

class OptionSink;

/// One long option and what it does.
struct OptionDescription {
  const char* longName;
  char letter;
  bool takesArgument;        ///< in its long form
  std::string_view summary;  ///< a few words for a person
  /// `argument` is null for the forms that carry none.
  void (*apply)(OptionSink& sink, const char* argument);
};

/// The long options in their order; everything that lists the options is made from this table.
std::span<const OptionDescription> optionDescriptions();

/// The short options as getopt takes them. "r" carries no colon: only the long form of it takes a
/// URL. "c" and "t" are known and rejected; "1" has no long form.
inline constexpr const char* shortOptions = "aAcCDEe:f:Fghi:KLm:Mnrl:Rs:St:PvV1x:pTI:";

/// Parses with getopt_long, which prints its own diagnostics. Acts at once on -v (raises the
/// process-wide verbosity), -p (calls `lowerPriority`) and -x (reads the file). Main thread only:
/// getopt keeps its state in globals. `arguments` is the program name and what follows it; getopt
/// permutes it.
CommandLine parseCommandLine(std::span<char*> arguments,
                             const std::function<bool()>& lowerPriority);

}  // namespace quorvex
