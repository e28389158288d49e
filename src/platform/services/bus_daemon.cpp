#include "platform/services/bus_daemon.h"

#include <utility>

#include "platform/session_bus.h"

namespace quorvex {
namespace {

constexpr CallLimits busLimits{std::chrono::seconds(5), std::chrono::seconds(5)};

BusMethod daemonMethod(std::string name) {
  return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", std::move(name)};
}

/// Calls a method of the bus itself with a name; returns one value of `type`.
std::optional<Value> askBus(SessionBus& bus, std::string method, const std::string& name,
                            const std::string& type) {
  BusReply reply = bus.call(daemonMethod(std::move(method)), {"s", {name}}, busLimits);
  if (reply.arguments.signature != type) return std::nullopt;
  return std::move(reply.arguments.values.front());
}

std::optional<std::uint32_t> askNumber(SessionBus& bus, std::string method,
                                       const std::string& name) {
  const auto answer = askBus(bus, std::move(method), name, "u");
  if (!answer) return std::nullopt;
  return static_cast<std::uint32_t>(*answer->integer());
}

}  // namespace

std::optional<std::string> nameOwner(SessionBus& bus, const std::string& name) {
  const auto answer = askBus(bus, "GetNameOwner", name, "s");
  if (!answer) return std::nullopt;
  return *answer->string();
}

std::optional<Peer> peerOf(SessionBus& bus, const std::string& connectionName) {
  const auto process = askNumber(bus, "GetConnectionUnixProcessID", connectionName);
  if (!process) return std::nullopt;
  const auto user = askNumber(bus, "GetConnectionUnixUser", connectionName);
  if (!user) return std::nullopt;
  return Peer{*process, *user};
}

void awaitTaken(SessionBus& bus) {
  static_cast<void>(bus.call(
      {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Peer", "Ping"}, {},
      {}));
}

}  // namespace quorvex
