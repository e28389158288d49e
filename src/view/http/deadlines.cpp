#include "view/http/deadlines.h"

#include <algorithm>

#include <sys/socket.h>

namespace quorvex::view {

namespace {

using Clock = std::chrono::steady_clock;
constexpr Clock::duration longestRound = std::chrono::seconds(1);

}  // namespace

Deadlines::Deadlines(Clock::duration most) : _most(most), _thread([this] { watch(); }) {}

Deadlines::~Deadlines() {
  {
    const std::lock_guard lock(_mutex);
    _isStopping = true;
  }
  _stop.notify_all();
  _thread.join();
}

void Deadlines::expect(const void* connection, int socket) {
  const std::lock_guard lock(_mutex);
  _connections.insert_or_assign(connection, Expected{socket, Clock::now() + _most});
}

void Deadlines::arrived(const void* connection) {
  const std::lock_guard lock(_mutex);
  const auto found = _connections.find(connection);
  if (found != _connections.end()) found->second.until = Clock::time_point::max();
}

void Deadlines::expectNext(const void* connection) {
  const std::lock_guard lock(_mutex);
  const auto found = _connections.find(connection);
  if (found != _connections.end()) found->second.until = Clock::now() + _most;
}

void Deadlines::forget(const void* connection) {
  const std::lock_guard lock(_mutex);
  _connections.erase(connection);
}

void Deadlines::watch() {
  std::unique_lock lock(_mutex);
  while (!_stop.wait_for(lock, std::min(_most / 4, longestRound), [this] { return _isStopping; }))
    endLate();
}

void Deadlines::endLate() {
  const Clock::time_point now = Clock::now();
  for (auto& [connection, expected] : _connections) {
    if (expected.until > now) continue;
    // The server sees the end of the stream, and closes the socket.
    ::shutdown(expected.socket, SHUT_RDWR);
    expected.until = Clock::time_point::max();
  }
}

}  // namespace quorvex::view
