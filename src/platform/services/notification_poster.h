#pragma once

#include <chrono>
#include <memory>

#include "platform/notification_center.h"

namespace quorvex {

/// Posts to the session bus in order from a separate thread, started by the first post, so posting
/// costs the caller a lock and a copy, whatever the state of the bus. Thread-safe.
class NotificationPoster {
 public:
  /// `flushLimit`: how long the destructor waits for the bus to accept all posts.
  explicit NotificationPoster(std::chrono::milliseconds flushLimit);
  NotificationPoster(const NotificationPoster&) = delete;
  NotificationPoster& operator=(const NotificationPoster&) = delete;
  ~NotificationPoster();

  void post(const Notification& notification);

 private:
  struct Outbox;

  std::chrono::milliseconds _flushLimit;
  std::shared_ptr<Outbox> _outbox;
};

}  // namespace quorvex
