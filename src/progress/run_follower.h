#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <sys/types.h>

#include "platform/notification_center.h"

namespace quorvex {

/// What is known of a run.
struct RunProgress {
  pid_t process = 0;
  std::optional<std::int64_t> pages;  // unknown when the beginning was missed
  double fraction = 0;                // 0 to 1
  bool ended = false;
};

/// A process id in decimal, as runs sign their notifications; nothing for any other text.
std::optional<pid_t> parseProcessId(std::string_view text);

/// Follows one run through the notifications of all: the wanted one, or the first that is heard of.
class RunFollower {
 public:
  explicit RunFollower(std::optional<pid_t> wanted) : _wanted(wanted) {}

  /// True when it told something about the run.
  bool handle(const Notification& notification);

  /// Nothing until the run is heard of.
  const std::optional<RunProgress>& progress() const { return _progress; }

 private:
  std::optional<pid_t> _wanted;
  std::optional<RunProgress> _progress;
};

}  // namespace quorvex
