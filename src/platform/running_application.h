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

  /// Asks it to quit. False when it refuses or cannot be asked; an answer is waited for, its end is
  /// not.
  virtual bool terminate() = 0;

  /// Kills its process. False when that is not possible, not ours, or this very process.
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

/// Applications as owners of the session bus name that equals their identifier; so there is one at
/// most. `limits` bounds the request to quit.
std::shared_ptr<RunningApplications> busRunningApplications(std::shared_ptr<SessionBus> bus,
                                                            CallLimits limits = {});

}  // namespace quorvex
