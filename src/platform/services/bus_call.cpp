#include "platform/services/bus_call.h"

#include <cstdint>
#include <utility>

#include <poll.h>

namespace quorvex {
namespace {

constexpr CallLimits busLimits{std::chrono::seconds(5), std::chrono::seconds(5)};

CallEnd endOfError(const sdbus::Error& error) {
  const std::string& name = error.getName();
  // Our own time-outs come first (the call is given more time than they allow), so a missing reply
  // means that the bus saw the callee leave, or that the bus itself is gone.
  if (name == "org.freedesktop.DBus.Error.NoReply") return CallEnd::calleeGone;
  if (name == "org.freedesktop.DBus.Error.ServiceUnknown" ||
      name == "org.freedesktop.DBus.Error.NameHasNoOwner") {
    return CallEnd::calleeAbsent;
  }
  return CallEnd::refused;
}

/// Whether everything that was sent has been handed to the system.
bool sent(const sdbus::IConnection& connection) {
  return (connection.getEventLoopPollData().events & POLLOUT) == 0;
}

BusMethod daemonMethod(std::string name) {
  return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", std::move(name)};
}

/// A method of the bus itself that takes a name.
template <typename T>
std::optional<T> askBus(SessionBus& bus, std::string method, const std::string& name) {
  T answer{};
  const CallEnd end = callMethod(
      bus, daemonMethod(std::move(method)), busLimits,
      [&](sdbus::MethodCall& call) { call << name; },
      [&](sdbus::MethodReply& reply) { reply >> answer; });
  if (end != CallEnd::replied) return std::nullopt;
  return answer;
}

}  // namespace

CallEnd callMethod(SessionBus& bus, const BusMethod& method, const CallLimits& limits,
                   const std::function<void(sdbus::MethodCall&)>& arguments,
                   const std::function<void(sdbus::MethodReply&)>& results) {
  if (!bus.connect()) return CallEnd::busLost;
  std::optional<CallEnd> end;
  try {
    const auto proxy = sdbus::createProxy(*bus.connection(), method.destination, method.path);
    auto call = proxy->createMethodCall(method.interface, method.name);
    if (arguments) arguments(call);
    const auto handler = [&](sdbus::MethodReply& reply, const sdbus::Error* error) {
      try {
        if (error == nullptr && results) results(reply);
        end = error == nullptr ? CallEnd::replied : endOfError(*error);
      } catch (const sdbus::Error&) {
        end = CallEnd::refused;
      }
    };
    const auto longest = limits.send + limits.reply + std::chrono::seconds(5);
    const auto start = SessionBus::Clock::now();
    proxy->callMethod(call, handler, longest);

    const auto leftOrEnded = [&] { return end || sent(*bus.connection()); };
    const auto ended = [&] { return end.has_value(); };
    auto wait = bus.runUntil(leftOrEnded, start + limits.send);
    if (wait == SessionBus::Wait::timedOut) return CallEnd::sendTimedOut;
    if (wait == SessionBus::Wait::done) {
      wait = bus.runUntil(ended, SessionBus::Clock::now() + limits.reply);
      if (wait == SessionBus::Wait::timedOut) return CallEnd::replyTimedOut;
    }
    if (wait == SessionBus::Wait::lost) return CallEnd::busLost;
    // A connection that breaks answers the open calls itself before it reports the loss.
    constexpr std::chrono::milliseconds untilLossShows{50};
    const auto never = [] { return false; };
    if (*end == CallEnd::calleeGone &&
        bus.runUntil(never, SessionBus::Clock::now() + untilLossShows) == SessionBus::Wait::lost) {
      return CallEnd::busLost;
    }
    return *end;
  } catch (const sdbus::Error&) {  // the call could not even be queued
    return CallEnd::busLost;
  }
}

std::optional<std::string> nameOwner(SessionBus& bus, const std::string& name) {
  return askBus<std::string>(bus, "GetNameOwner", name);
}

std::optional<Peer> peerOf(SessionBus& bus, const std::string& connectionName) {
  const auto process = askBus<std::uint32_t>(bus, "GetConnectionUnixProcessID", connectionName);
  if (!process) return std::nullopt;
  const auto user = askBus<std::uint32_t>(bus, "GetConnectionUnixUser", connectionName);
  if (!user) return std::nullopt;
  return Peer{*process, *user};
}

}  // namespace quorvex
