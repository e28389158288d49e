#pragma once

#include <cstdint>
#include <vector>

#include "common/descriptor.h"
#include "common/result.h"

namespace quorvex::view {

/// Sockets that listen on one port of 127.0.0.1 and of ::1: both, so that no other program can take
/// the second and be mistaken for us. Without IPv6 only the first.
class Listener {
 public:
  /// `port`: 0 for any that is free.
  static Result<Listener> open(std::uint16_t port);

  std::uint16_t port() const { return _port; }
  const std::vector<Descriptor>& sockets() const { return _sockets; }

 private:
  Listener(std::uint16_t port, std::vector<Descriptor> sockets)
      : _port(port), _sockets(std::move(sockets)) {}

  std::uint16_t _port;
  std::vector<Descriptor> _sockets;
};

}  // namespace quorvex::view
