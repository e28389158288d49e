#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/call_limits.h"

namespace quorvex {

class SessionBus;

/// An application that runs in the user's session. Used on the thread of its bus.
class RunningApplication {
 public:
  RunningApplication() = default;
  RunningApplication(const RunningApplication&) = delete;
  RunningApplication& operator=(const RunningApplication&) = delete;
  virtual ~RunningApplication() = default;

  /// Asks it to quit and waits for the reply, not for its exit. False if it refuses or cannot be
  /// reached.
  virtual bool terminate() = 0;

  /// Kills its process. False if that fails, or the process is not ours or this very one.
  virtual bool forceTerminate() = 0;
};

class RunningApplications {
 public:
  RunningApplications() = default;
  RunningApplications(const RunningApplications&) = delete;
  RunningApplications& operator=(const RunningApplications&) = delete;
  virtual ~RunningApplications() = default;

  virtual std::vector<std::unique_ptr<RunningApplication>> withIdentifier(
      const std::string& identifier) = 0;
};

/// Finds an application as the owner of the session bus name equal to its identifier, so at most
/// one. `limits` bounds the request to quit.
std::shared_ptr<RunningApplications> busRunningApplications(std::shared_ptr<SessionBus> bus,
                                                            CallLimits limits = {});

}  // namespace quorvex
