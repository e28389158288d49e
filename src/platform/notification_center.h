#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/value.h"

namespace quorvex {

/// A notification as it travels between processes.
struct Notification {
  std::string name;
  std::string sender;
  /// Integers, reals, strings and booleans.
  Dictionary userInfo;
};

/// The distributed notification centre: broadcasts reach every process that observes the name.
/// Posting is safe from several threads, returns soon and never fails the caller: without a bus
/// nobody listens.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;
  virtual ~NotificationCenter() = default;

  virtual void post(const Notification& notification) = 0;

  /// Calls `observer` for every notification of that name, whoever sends it, while the centre
  /// lives. The call comes from the thread that runs the event loop. False when the bus is not
  /// there or does not take the wish, so that nothing will be observed.
  virtual bool addObserver(const std::string& name, Observer observer) = 0;
};

class SessionBus;

/// Posts to the user's session bus, to which it connects with the first post, on a thread of its
/// own. Its end waits until the bus has taken what was posted, at most two seconds. Without a `bus`
/// it only posts; with one, observers are called while that runs its event loop.
std::shared_ptr<NotificationCenter> distributedNotificationCenter();
std::shared_ptr<NotificationCenter> distributedNotificationCenter(std::shared_ptr<SessionBus> bus);

}  // namespace quorvex
