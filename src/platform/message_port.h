#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/call_limits.h"

namespace quorvex {

class SessionBus;

/// How a request ended. The numbers are printed, so they never change.
enum class MessagePortStatus : int {
  success = 0,
  sendTimedOut = -1,    // the request could not be sent in time
  replyTimedOut = -2,   // it was sent, but not answered in time
  invalidPort = -3,     // nobody owned the port
  transportError = -4,  // the receiver refused, sent a malformed reply, or could not be reached
  portClosed = -5,      // the receiver left before replying
};

struct MessagePortReply {
  MessagePortStatus status = MessagePortStatus::success;
  std::string data;  // empty unless success
};

/// The port of another process. Use only on its bus's thread.
class RemoteMessagePort {
 public:
  RemoteMessagePort() = default;
  RemoteMessagePort(const RemoteMessagePort&) = delete;
  RemoteMessagePort& operator=(const RemoteMessagePort&) = delete;
  virtual ~RemoteMessagePort() = default;

  /// Whether a process listens at the port now.
  virtual bool isValid() = 0;

  /// Sends a request and waits for the reply. Meanwhile this thread's event loop runs, so observers
  /// are called.
  virtual MessagePortReply sendRequest(std::int32_t messageId, std::string_view payload,
                                       const CallLimits& limits) = 0;
};

class MessagePorts {
 public:
  MessagePorts() = default;
  MessagePorts(const MessagePorts&) = delete;
  MessagePorts& operator=(const MessagePorts&) = delete;
  virtual ~MessagePorts() = default;

  /// Returns the port of that name, or null if there is none. Starts no process.
  virtual std::unique_ptr<RemoteMessagePort> remotePort(const std::string& name) = 0;
};

/// Ports as names on the session bus.
std::shared_ptr<MessagePorts> busMessagePorts(std::shared_ptr<SessionBus> bus);

}  // namespace quorvex
