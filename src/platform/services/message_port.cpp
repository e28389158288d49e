#include "platform/message_port.h"

#include <utility>

#include "platform/services/bus_daemon.h"
#include "platform/session_bus.h"

namespace quorvex {
namespace {

MessagePortStatus statusOf(CallEnd end) {
  switch (end) {
    case CallEnd::replied:
      return MessagePortStatus::success;
    case CallEnd::sendTimedOut:
      return MessagePortStatus::sendTimedOut;
    case CallEnd::replyTimedOut:
      return MessagePortStatus::replyTimedOut;
    case CallEnd::calleeAbsent:
      return MessagePortStatus::invalidPort;
    case CallEnd::calleeGone:
      return MessagePortStatus::portClosed;
    case CallEnd::refused:
    case CallEnd::busLost:
      break;
  }
  return MessagePortStatus::transportError;
}

class BusMessagePort final : public RemoteMessagePort {
 public:
  BusMessagePort(std::shared_ptr<SessionBus> bus, std::string name)
      : _bus(std::move(bus)), _name(std::move(name)) {}

  bool isValid() override {
    auto owner = nameOwner(*_bus, _name);
    _owner = owner.value_or("");
    return owner.has_value();
  }

  MessagePortReply sendRequest(std::int32_t messageId, std::string_view payload,
                               const CallLimits& limits) override {
    if (_owner.empty()) return {MessagePortStatus::invalidPort, {}};
    const BusReply reply =
        _bus->call({_owner, "/com/corvane/MessagePort", "com.corvane.MessagePort", "Request"},
                   {"iay", {std::int64_t{messageId}, Data(std::string(payload))}}, limits);
    if (reply.end != CallEnd::replied) return {statusOf(reply.end), {}};
    const Array& values = reply.arguments.values;
    const Data* data = values.empty() ? nullptr : values.front().data();
    if (data == nullptr) return {MessagePortStatus::transportError, {}};
    return {MessagePortStatus::success, std::string(data->bytes())};
  }

 private:
  std::shared_ptr<SessionBus> _bus;
  std::string _name;
  // The owner's unique name. A message to it never makes the bus start the named service, even if
  // the owner has just left.
  std::string _owner;
};

class BusMessagePorts final : public MessagePorts {
 public:
  explicit BusMessagePorts(std::shared_ptr<SessionBus> bus) : _bus(std::move(bus)) {}

  std::unique_ptr<RemoteMessagePort> remotePort(const std::string& name) override {
    auto port = std::make_unique<BusMessagePort>(_bus, name);
    if (!port->isValid()) return nullptr;
    return port;
  }

 private:
  std::shared_ptr<SessionBus> _bus;
};

}  // namespace

std::shared_ptr<MessagePorts> busMessagePorts(std::shared_ptr<SessionBus> bus) {
  return std::make_shared<BusMessagePorts>(std::move(bus));
}

}  // namespace quorvex
