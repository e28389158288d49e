#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

#include "common/result.h"
#include "view/http/listener.h"
#include "view/http/message.h"

namespace quorvex::view {

/// Serves HTTP/1.1 on a few threads of its own. What a client may hold is bounded: connections, the
/// time until a request is complete, the time without taking a byte of the reply, and the bytes of
/// replies in memory. Requests with a body are refused.
class Server {
 public:
  struct Limits {
    std::chrono::milliseconds request = std::chrono::seconds(15);  ///< until one is complete
    std::chrono::seconds silence = std::chrono::seconds(30);       ///< of a client that reads
    std::size_t bytesInMemory = std::size_t{64}
                                << 20U;  ///< of long replies; one alone may have more
  };

  static Result<std::unique_ptr<Server>> start(Listener listener, Handler handler, Limits limits);
  static Result<std::unique_ptr<Server>> start(Listener listener, Handler handler) {
    return start(std::move(listener), std::move(handler), Limits());
  }
  /// Closes all connections. Waits for the handlers that are running.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// When the last request was complete; at first, when the server was started.
  std::chrono::steady_clock::time_point lastRequest() const;

 private:
  struct Running;
  explicit Server(std::unique_ptr<Running> running);

  std::unique_ptr<Running> _running;
};

}  // namespace quorvex::view
