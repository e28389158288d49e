#pragma once

#include <string_view>

#include "common/format.h"

namespace quorvex {

// Levels: 0 loss of a page or a whole result; 1 warnings and fallbacks; 2 progress per page;
// 3 details and progress notes; 4 tracing. Levels 0 to 2 go to standard error, 3 and 4 to standard
// output.

/// The process-wide verbosity: initially -1, so nothing is printed; at most 4. Set only while
/// parsing the command line, before any thread starts; read from every thread.
int logVerbosity();
void setLogVerbosity(int verbosity);
/// Raises it by one, up to 4.
void raiseLogVerbosity();

/// Whether a message of this level would be printed: guards arguments that are costly to compute.
inline bool logs(int level) {
  return level <= logVerbosity();
}

void writeLogLine(int level, std::string_view format,
                  std::initializer_list<FormatArgument> arguments);

/// Prints the formatted message and a line feed in a single write if `level` is at most the
/// verbosity. Thread-safe: lines never interleave.
template <typename... Arguments>
void QXLog(int level, std::string_view format, const Arguments&... arguments) {
  if (logs(level)) writeLogLine(level, format, {FormatArgument(arguments)...});
}

}  // namespace quorvex
