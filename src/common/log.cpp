#include "common/log.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>

#include <unistd.h>

#include "common/output.h"

namespace quorvex {

namespace {

constexpr int highestVerbosity = 4;
std::atomic<int> verbosity{-1};

}  // namespace

int logVerbosity() {
  return verbosity.load(std::memory_order_relaxed);
}

void setLogVerbosity(int value) {
  verbosity = std::min(value, highestVerbosity);
}

void raiseLogVerbosity() {
  setLogVerbosity(logVerbosity() + 1);
}

void writeLogLine(int level, std::string_view format,
                  std::initializer_list<FormatArgument> arguments) {
  const int stream = level <= 2 ? STDERR_FILENO : STDOUT_FILENO;
  try {
    std::string line = formatText(format, arguments);
    line += '\n';
    // A write longer than a pipe's buffer is split; the lock keeps the pieces together.
    static std::mutex lines;
    const std::scoped_lock lock(lines);
    writeFully(stream, line);
  } catch (const std::bad_alloc&) {
    // Messages are logged while handling errors, so this must not throw another.
    writeFully(stream, "Out of memory while logging a message\n");
  }
}

}  // namespace quorvex
