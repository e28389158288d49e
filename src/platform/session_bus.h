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

/// What a message carries. The signature (see "Type System" of D-Bus) gives each value's type; a
/// variant takes its type from the value: s, x, d or b.
///
/// Written: s, i, ay, av and a{sv}, where entries of other kinds are left out. Read: these but av,
/// and u, x, d and b; a value of any other type is left unread with all that follow it.
struct BusArguments {
  std::string signature;
  Array values;
};

enum class CallEnd {
  replied,
  refused,       // an error reply
  calleeAbsent,  // nobody owned the destination when the call came
  calleeGone,    // its owner left before it replied
  sendTimedOut,  // the bus did not take the call
  replyTimedOut,
  busLost,  // or the arguments are nothing that it carries
};

struct BusReply {
  CallEnd end = CallEnd::busLost;
  BusArguments arguments;
};

/// One connection to the user's session bus and the event loop that serves it. All services made on
/// one SessionBus belong to one thread: what they observe is delivered while that thread runs the
/// loop, either by itself or by waiting for a reply.
class SessionBus {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Wait { done, timedOut, lost };
  using SignalHandler = std::function<void(const BusArguments&)>;
  /// Ends what it stands for when it is destroyed, which must be before the bus is.
  using Subscription = std::shared_ptr<void>;

  /// `connectLimit`: how long a bus that takes the connection but says nothing is waited for.
  explicit SessionBus(std::chrono::milliseconds connectLimit = std::chrono::seconds(10));
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  /// Does not wait: what the bus has not taken yet is dropped.
  ~SessionBus();

  /// Opens the connection. The first outcome holds: a bus that is not there is not looked for
  /// twice.
  Status connect();

  /// Handles what comes in until `done`, which is asked after each message, after each signal that
  /// the process gets, and at least once. `lost`: there is no connection (any more). Throws what a
  /// handler threw.
  Wait runUntil(const std::function<bool()>& done, Clock::time_point deadline);

  /// Calls a method and runs the loop until the outcome is there.
  BusReply call(const BusMethod& method, const BusArguments& arguments, const CallLimits& limits);

  /// Sends a signal to all who listen. One with text that the bus does not carry is dropped. False
  /// when the connection is gone.
  bool emit(const BusSignal& signal, const BusArguments& arguments);

  /// Calls `handler` for each such signal, whoever sends it. Null when the connection is gone.
  Subscription subscribe(const BusSignal& signal, SignalHandler handler);

 private:
  struct Connection;

  Status open();

  std::chrono::milliseconds _connectLimit;
  std::optional<Status> _connected;
  std::unique_ptr<Connection> _connection;  // null before connect() and after it failed
};

}  // namespace quorvex
