#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "common/result.h"
#include "common/value.h"
#include "platform/call_limits.h"

namespace quorvex {

struct BusMethod {
  std::string destination;
  std::string path;
  std::string interface;
  std::string name;
};

struct BusSignal {
  const char* path;
  const char* interface;
  const char* name;
};

/// The arguments of a message. The signature (see "Type System" of D-Bus) contains each value's
/// type; a variant takes its type from the value: s, x, d or b.
///
/// Written: s, i, ay, av and a{sv}, omitting entries of other kinds. Read: these except av, plus u,
/// x, d and b; reading stops at a value of any other type.
struct BusArguments {
  std::string signature;
  Array values;
};

enum class CallEnd {
  replied,
  refused,       // an error reply
  calleeAbsent,  // the destination had no owner
  calleeGone,    // its owner left before replying
  sendTimedOut,  // the bus did not accept the call
  replyTimedOut,
  busLost,  // or it cannot carry the arguments
};

struct BusReply {
  CallEnd end = CallEnd::busLost;
  BusArguments arguments;
};

/// One connection to the user's session bus and its event loop. All services on one SessionBus
/// belong to one thread: what they observe is delivered while that thread runs the loop, either
/// directly or by waiting for a reply.
class SessionBus {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Wait { done, timedOut, lost };
  using SignalHandler = std::function<void(const BusArguments&)>;
  /// Unsubscribes when destroyed, which must happen before the bus is destroyed.
  using Subscription = std::shared_ptr<void>;

  /// `connectLimit`: how long to wait for a bus that accepts the connection but says nothing.
  explicit SessionBus(std::chrono::milliseconds connectLimit = std::chrono::seconds(10));
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  /// Does not wait: unsent messages are dropped.
  ~SessionBus();

  /// Opens the connection. Later calls return the first outcome: a missing bus is not retried.
  Status connect();

  /// Handles incoming messages until `done`, which is checked after each message, after each signal
  /// to the process, and at least once. `lost`: there is no connection (any more). Rethrows a
  /// handler's exception.
  Wait runUntil(const std::function<bool()>& done, Clock::time_point deadline);

  /// Calls a method and runs the loop until the outcome is known.
  BusReply call(const BusMethod& method, const BusArguments& arguments, const CallLimits& limits);

  /// Broadcasts a signal, dropping one whose arguments the bus cannot carry. Returns false if the
  /// connection is gone.
  bool emit(const BusSignal& signal, const BusArguments& arguments);

  /// Calls `handler` for each such signal from any sender. Null if the connection is gone.
  Subscription subscribe(const BusSignal& signal, SignalHandler handler);

 private:
  struct Connection;

  Status open();

  std::chrono::milliseconds _connectLimit;
  std::optional<Status> _connected;
  std::unique_ptr<Connection> _connection;  // null before connect() and after it failed
};

}  // namespace quorvex
