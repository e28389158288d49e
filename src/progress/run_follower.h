#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <sys/types.h>

#include "platform/notification_center.h"

namespace quorvex {

/// What is known about a run.
struct RunProgress {
  pid_t process = 0;
  std::optional<std::int64_t> pages;  // unknown if the start was missed
  double fraction = 0;                // 0 to 1
  bool ended = false;
};

/// Parses a decimal process id, as in the sender of a run's notifications.
std::optional<pid_t> parseProcessId(std::string_view text);

/// Follows one run among all notifications: the requested one, or the first one heard.
class RunFollower {
 public:
  explicit RunFollower(std::optional<pid_t> wanted) : _wanted(wanted) {}

  /// True if it concerned the run.
  bool handle(const Notification& notification);

  /// Null until the run is heard of.
  const std::optional<RunProgress>& progress() const { return _progress; }

 private:
  std::optional<pid_t> _wanted;
  std::optional<RunProgress> _progress;
};

}  // namespace quorvex
