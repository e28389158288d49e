#pragma once

#include <sys/types.h>

namespace quorvex {

/// Holds on to one process, also after it ended and its number went to another.
class ProcessHandle {
 public:
  explicit ProcessHandle(pid_t process);
  ProcessHandle(const ProcessHandle&) = delete;
  ProcessHandle& operator=(const ProcessHandle&) = delete;
  ~ProcessHandle();

  /// True when the process ended, or was not there from the first. A process that the system does
  /// not let us watch counts as running.
  bool ended() const;

  /// False when there is nobody to get it, or it is not ours to signal.
  bool sendSignal(int signal) const;

 private:
  int _descriptor;
  bool _missing;
};

}  // namespace quorvex
