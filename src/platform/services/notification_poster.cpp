#include "platform/services/notification_poster.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <signal.h>

#include "platform/services/bus_daemon.h"
#include "platform/services/notification_wire.h"
#include "platform/session_bus.h"

namespace quorvex {

/// Shared with the posting thread, which may outlive the poster when the bus is stuck.
struct NotificationPoster::Outbox {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Notification> waiting;
  bool started = false;
  bool closing = false;
  bool finished = false;  // the thread sends no more: all is sent or the bus is gone

  std::optional<Notification> next();
  void deliver();
};

namespace {

// Far more than a run posts; only a stuck bus lets so many pile up.
constexpr std::size_t maximumWaiting = 10'000;

/// False when the connection is gone.
bool send(SessionBus& bus, const Notification& notification) {
  const BusArguments arguments{notificationSignature,
                               {notification.name, notification.sender, notification.userInfo}};
  if (!bus.emit(notificationSignal, arguments)) return false;
  // Reads incoming messages, and so notices a closed connection.
  return bus.runUntil([] { return false; }, {}) != SessionBus::Wait::lost;
}

}  // namespace

/// Waits for the next notification; nothing once the poster is closing and all is sent.
std::optional<Notification> NotificationPoster::Outbox::next() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [this] { return closing || !waiting.empty(); });
  if (waiting.empty()) return std::nullopt;
  Notification notification = std::move(waiting.front());
  waiting.pop_front();
  return notification;
}

void NotificationPoster::Outbox::deliver() {
  SessionBus bus;
  try {
    if (bus.connect()) {
      bool connected = true;
      while (connected) {
        const auto notification = next();
        if (!notification) break;
        connected = send(bus, *notification);
      }
      if (connected) awaitTaken(bus);
    }
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
    // The bus is gone, so nobody listens, or memory ran out: the run matters more.
  }
  const std::scoped_lock lock(mutex);
  finished = true;
  waiting.clear();
  changed.notify_all();
}

NotificationPoster::NotificationPoster(std::chrono::milliseconds flushLimit)
    : _flushLimit(flushLimit), _outbox(std::make_shared<Outbox>()) {}

void NotificationPoster::post(const Notification& notification) {
  const std::scoped_lock lock(_outbox->mutex);
  if (_outbox->finished || _outbox->waiting.size() >= maximumWaiting) return;
  _outbox->waiting.push_back(notification);
  if (_outbox->started) {
    _outbox->changed.notify_all();
    return;
  }
  _outbox->started = true;
  // The thread inherits the mask, so signals go to the threads that expect them.
  sigset_t all;
  sigset_t previous;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &previous);
  try {
    std::thread([outbox = _outbox] { outbox->deliver(); }).detach();
  } catch (const std::exception&) {  // no thread or memory available
    _outbox->finished = true;
    _outbox->waiting.clear();
  }
  ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

NotificationPoster::~NotificationPoster() {
  std::unique_lock lock(_outbox->mutex);
  _outbox->closing = true;
  _outbox->changed.notify_all();
  if (!_outbox->started) return;
  _outbox->changed.wait_for(lock, _flushLimit, [this] { return _outbox->finished; });
}

}  // namespace quorvex
