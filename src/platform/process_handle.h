#pragma once

#include <sys/types.h>

namespace quorvex {

/// Refers to one process, even after it ends and its PID is reused.
class ProcessHandle {
 public:
  explicit ProcessHandle(pid_t process);
  ProcessHandle(const ProcessHandle&) = delete;
  ProcessHandle& operator=(const ProcessHandle&) = delete;
  ~ProcessHandle();

  /// Whether the process has ended, or did not exist at construction. A process that the system
  /// does not let us watch counts as running.
  bool ended() const;

  /// Returns false if the process is gone or not ours to signal.
  bool sendSignal(int signal) const;

 private:
  int _descriptor;
  bool _missing;
};

}  // namespace quorvex
