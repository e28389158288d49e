#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace quorvex::view {

/// Ends connections whose next request is not complete in time. The time without a byte, which
/// libraries watch, is not enough: a client that sends a byte now and then would stay for ever.
class Deadlines {
 public:
  explicit Deadlines(std::chrono::steady_clock::duration most);
  ~Deadlines();
  Deadlines(const Deadlines&) = delete;
  Deadlines& operator=(const Deadlines&) = delete;

  /// From now on the connection, told apart by any address, has to send a request.
  void expect(const void* connection, int socket);
  /// Its request is here.
  void arrived(const void* connection);
  /// The request is answered, and the connection may send another.
  void expectNext(const void* connection);
  /// To be called before the socket is closed, whose number may then mean another.
  void forget(const void* connection);

 private:
  struct Expected {
    int socket;
    std::chrono::steady_clock::time_point until;
  };

  void watch();
  void endLate();

  const std::chrono::steady_clock::duration _most;
  std::mutex _mutex;
  std::condition_variable _stop;
  bool _isStopping = false;
  std::map<const void*, Expected> _connections;
  std::thread _thread;
};

}  // namespace quorvex::view
