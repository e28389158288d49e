#include "platform/notification_center.h"

#include <optional>
#include <utility>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/services/notification_poster.h"
#include "platform/services/notification_wire.h"
#include "platform/session_bus.h"

namespace quorvex {
namespace {

// A living bus takes all in a few milliseconds.
constexpr std::chrono::seconds flushLimit(2);

class BusNotificationCenter final : public NotificationCenter {
 public:
  explicit BusNotificationCenter(std::shared_ptr<SessionBus> bus)
      : _bus(std::move(bus)), _poster(flushLimit) {}

  void post(const Notification& notification) override { _poster.post(notification); }

  void addObserver(const std::string& name, Observer observer) override {
    _observers.emplace_back(name, std::move(observer));
    if (_match || !_bus || !_bus->connect()) return;
    const std::string rule = std::string("type='signal',path='") + notificationPath +
                             "',interface='" + notificationInterface + "',member='" +
                             notificationSignal + "'";
    try {
      _match = _bus->connection()->addMatch(rule, [this](sdbus::Message& m) { dispatch(m); });
    } catch (const sdbus::Error&) {  // the bus left meanwhile: nothing will be observed
    }
  }

 private:
  void dispatch(sdbus::Message& message) {
    const auto notification = readNotification(message);
    if (!notification) return;
    // By index: an observer may add another.
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t i = 0; i < _observers.size(); ++i) {
      if (_observers[i].first != notification->name) continue;
      const Observer observer = _observers[i].second;
      observer(*notification);
    }
  }

  std::shared_ptr<SessionBus> _bus;
  NotificationPoster _poster;
  std::vector<std::pair<std::string, Observer>> _observers;
  std::optional<sdbus::Slot> _match;  // ends before the bus that it belongs to
};

}  // namespace

std::shared_ptr<NotificationCenter> distributedNotificationCenter() {
  return distributedNotificationCenter(nullptr);
}

std::shared_ptr<NotificationCenter> distributedNotificationCenter(std::shared_ptr<SessionBus> bus) {
  return std::make_shared<BusNotificationCenter>(std::move(bus));
}

}  // namespace quorvex
