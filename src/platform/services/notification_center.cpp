#include "platform/notification_center.h"

#include <utility>
#include <vector>

#include "platform/services/notification_poster.h"
#include "platform/services/notification_wire.h"
#include "platform/session_bus.h"

namespace quorvex {
namespace {

// A live bus accepts everything in a few milliseconds.
constexpr std::chrono::seconds flushLimit(2);

class BusNotificationCenter final : public NotificationCenter {
 public:
  explicit BusNotificationCenter(std::shared_ptr<SessionBus> bus)
      : _bus(std::move(bus)), _poster(flushLimit) {}

  void post(const Notification& notification) override { _poster.post(notification); }

  bool addObserver(const std::string& name, Observer observer) override {
    _observers.emplace_back(name, std::move(observer));
    if (_bus != nullptr && _observers.size() == 1) {  // a bus that refused is not asked again
      _subscription = _bus->subscribe(
          notificationSignal, [this](const BusArguments& arguments) { dispatch(arguments); });
    }
    return _subscription != nullptr;
  }

 private:
  void dispatch(const BusArguments& arguments) {
    if (!arguments.signature.starts_with(notificationSignature)) return;
    const Notification notification{*arguments.values[0].string(), *arguments.values[1].string(),
                                    *arguments.values[2].dictionary()};
    // By index: an observer may add another.
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t i = 0; i < _observers.size(); ++i) {
      if (_observers[i].first != notification.name) continue;
      const Observer observer = _observers[i].second;
      observer(notification);
    }
  }

  std::shared_ptr<SessionBus> _bus;
  NotificationPoster _poster;
  std::vector<std::pair<std::string, Observer>> _observers;
  SessionBus::Subscription _subscription;  // ends before its bus
};

}  // namespace

std::shared_ptr<NotificationCenter> distributedNotificationCenter() {
  return distributedNotificationCenter(nullptr);
}

std::shared_ptr<NotificationCenter> distributedNotificationCenter(std::shared_ptr<SessionBus> bus) {
  return std::make_shared<BusNotificationCenter>(std::move(bus));
}

}  // namespace quorvex
