#pragma once

#include <string_view>

#include "common/format.h"

namespace quorvex {

// Levels as used: 0 a page or a whole result is lost; 1 warnings and fall-backs; 2 progress page by
// page; 3 details and progress notes; 4 tracing. Levels 0 to 2 go to standard error, 3 and 4 to
// standard output.

/// The process-wide verbosity: -1 at start, so that nothing is printed; at most 4. Written only
/// while the command line is parsed, before any thread starts; read from every thread.
int logVerbosity();
void setLogVerbosity(int verbosity);
/// One step up, not beyond 4.
void raiseLogVerbosity();

/// Whether a message of this level would be printed: guards arguments that are costly to make.
inline bool logs(int level) {
  return level <= logVerbosity();
}

void writeLogLine(int level, std::string_view format,
                  std::initializer_list<FormatArgument> arguments);

/// Prints the formatted message and a line feed with a single write, when `level` is at most the
/// verbosity. Safe from several threads: lines never interleave.
template <typename... Arguments>
void QXLog(int level, std::string_view format, const Arguments&... arguments) {
  if (logs(level)) writeLogLine(level, format, {FormatArgument(arguments)...});
}

}  // namespace quorvex
