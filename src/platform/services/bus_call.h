#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/call_limits.h"
#include "platform/session_bus.h"

namespace quorvex {

struct BusMethod {
  std::string destination;
  std::string path;
  std::string interface;
  std::string name;
};

enum class CallEnd {
  replied,
  refused,       // an error reply, or a reply of another signature
  calleeAbsent,  // nobody owned the destination when the call came
  calleeGone,    // its owner left before it replied
  sendTimedOut,  // the bus did not take the call
  replyTimedOut,
  busLost,
};

/// Calls a method and runs the bus's event loop until the outcome is there. `arguments` writes the
/// call's arguments, `results` reads the reply's values. Of sdbus::Error, which both may throw, the
/// former counts as a lost bus and the latter as a refusal.
CallEnd callMethod(SessionBus& bus, const BusMethod& method, const CallLimits& limits,
                   const std::function<void(sdbus::MethodCall&)>& arguments,
                   const std::function<void(sdbus::MethodReply&)>& results);

/// The unique name of the connection that owns `name`; nothing when nobody does or the bus does not
/// tell. Starts no service.
std::optional<std::string> nameOwner(SessionBus& bus, const std::string& name);

/// The process and user behind a connection, as the bus saw them when it connected.
struct Peer {
  std::uint32_t process = 0;
  std::uint32_t user = 0;
};
std::optional<Peer> peerOf(SessionBus& bus, const std::string& connectionName);

}  // namespace quorvex
