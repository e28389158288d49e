#include "progress/run_follower.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "generate/run_notifications.h"

namespace quorvex {

std::optional<pid_t> parseProcessId(std::string_view text) {
  pid_t process = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), process);
  if (error != std::errc() || end != text.data() + text.size() || process <= 0) return std::nullopt;
  return process;
}

bool RunFollower::handle(const Notification& notification) {
  const auto sender = parseProcessId(notification.sender);
  if (!sender || (_wanted && *sender != *_wanted)) return false;
  if (!_progress) {
    _wanted = sender;
    _progress = RunProgress{*sender, std::nullopt, 0, false};
  }
  if (notification.name == runBegins) {
    const Value* count = find(notification.userInfo, operationCountKey);
    if (count != nullptr && count->integer() != nullptr && *count->integer() >= 0) {
      _progress->pages = *count->integer();
    }
  } else if (notification.name == runAdvances) {
    const Value* fraction = find(notification.userInfo, percentCompletedKey);
    if (fraction != nullptr && fraction->real() != nullptr && std::isfinite(*fraction->real())) {
      _progress->fraction = std::clamp(*fraction->real(), 0.0, 1.0);
    }
  } else if (notification.name == runEnds) {
    _progress->ended = true;
    _progress->fraction = 1;
  }
  return true;
}

}  // namespace quorvex
