#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvex {

class SessionBus;

/// Returns the unique name of the connection that owns `name`; nothing if none does or the bus does
/// not say. Starts no service.
std::optional<std::string> nameOwner(SessionBus& bus, const std::string& name);

/// The process and user behind a connection, as the bus saw them when it connected.
struct Peer {
  std::uint32_t process = 0;
  std::uint32_t user = 0;
};
std::optional<Peer> peerOf(SessionBus& bus, const std::string& connectionName);

/// Waits until the bus has accepted all messages: it handles those of a connection in order.
void awaitTaken(SessionBus& bus);

}  // namespace quorvex
