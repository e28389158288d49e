#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/value.h"

namespace quorvex {

/// A notification between processes.
struct Notification {
  std::string name;
  std::string sender;
  /// Integers, reals, strings and booleans.
  Dictionary userInfo;
};

/// The distributed notification centre: broadcasts reach every process that observes the name.
/// Posting is thread-safe, returns quickly and never fails: without a bus nobody listens.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;
  virtual ~NotificationCenter() = default;

  virtual void post(const Notification& notification) = 0;

  /// Calls `observer` for every notification of that name from any sender, while the centre lives,
  /// on the thread that runs the event loop. Returns false if the bus is missing or refuses, so
  /// nothing will be observed.
  virtual bool addObserver(const std::string& name, Observer observer) = 0;
};

class SessionBus;

/// Posts to the user's session bus from a separate thread, which connects at the first post. The
/// destructor waits up to two seconds for the bus to accept all posts. Without a `bus` it only
/// posts; with one, observers are called while that runs its event loop.
std::shared_ptr<NotificationCenter> distributedNotificationCenter();
std::shared_ptr<NotificationCenter> distributedNotificationCenter(std::shared_ptr<SessionBus> bus);

}  // namespace quorvex
