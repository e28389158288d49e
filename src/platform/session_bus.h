#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "common/result.h"

namespace sdbus {
class IConnection;
}

namespace quorvex {

/// One connection to the user's session bus and the event loop that serves it. All services made on
/// one SessionBus belong to one thread: what they observe is delivered while that thread runs the
/// loop, either by itself or by waiting for a reply.
class SessionBus {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Wait { done, timedOut, lost };

  /// `connectLimit`: how long a bus that takes the connection but says nothing is waited for.
  explicit SessionBus(std::chrono::milliseconds connectLimit = std::chrono::seconds(10));
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus();

  /// Opens the connection. The first outcome holds: a bus that is not there is not looked for
  /// twice.
  Status connect();

  /// Handles what comes in until `done`, which is asked after each message, after each signal that
  /// the process gets, and at least once. `lost`: there is no connection (any more).
  Wait runUntil(const std::function<bool()>& done, Clock::time_point deadline);

  /// For the services: null before connect() and after it failed. Owned by the bus.
  sdbus::IConnection* connection() const { return _connection.get(); }

 private:
  std::chrono::milliseconds _connectLimit;
  bool _tried = false;
  Error _connectError;
  std::unique_ptr<sdbus::IConnection> _connection;
};

}  // namespace quorvex
