#include "platform/session_bus.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

namespace quorvex {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using Connection = std::unique_ptr<sdbus::IConnection>;

constexpr unsigned mostLateMessages = 100;

/// Opening waits for the bus to authenticate us, for up to a minute and a half when it is stuck,
/// and cannot be broken off. So it happens on a thread of its own, which is left behind if need be.
Connection openConnection(milliseconds limit) {
  std::packaged_task<Connection()> open([] { return sdbus::createSessionBusConnection(); });
  std::future<Connection> opened = open.get_future();
  std::thread(std::move(open)).detach();
  if (opened.wait_for(limit) != std::future_status::ready) {
    throw sdbus::Error("org.freedesktop.DBus.Error.Timeout", "The session bus does not answer");
  }
  return opened.get();
}

/// Sleeps until there is something to read, or to write when that is outstanding.
void waitForTraffic(sdbus::IConnection& connection, SessionBus::Clock::time_point deadline) {
  const auto data = connection.getEventLoopPollData();
  auto limit =
      std::max(microseconds(0), duration_cast<microseconds>(deadline - SessionBus::Clock::now()));
  if (const auto own = data.getRelativeTimeout()) limit = std::min(limit, *own);
  // Rounded up, so that the last millisecond is not spent in a busy loop; an hour at most, which
  // keeps a far deadline within an int.
  const auto rounded = std::min(std::chrono::ceil<milliseconds>(limit), milliseconds(3'600'000));
  pollfd entry{data.fd, data.events, 0};
  ::poll(&entry, 1, static_cast<int>(rounded.count()));
}

}  // namespace

SessionBus::SessionBus(milliseconds connectLimit) : _connectLimit(connectLimit) {}

SessionBus::~SessionBus() {
  if (!_connection) return;
  // Closing first writes what is outstanding, however long the bus takes; leave that behind too.
  try {
    if ((_connection->getEventLoopPollData().events & POLLOUT) != 0) {
      std::thread([connection = std::move(_connection)] {}).detach();
    }
  } catch (const std::exception&) {  // already closed, or no thread to be had
    _connection.reset();
  }
}

Status SessionBus::connect() {
  if (!_tried) {
    _tried = true;
    try {
      _connection = openConnection(_connectLimit);
      _connection->setMethodCallTimeout(_connectLimit);
    } catch (const sdbus::Error& error) {
      _connectError = {error.getMessage()};
    } catch (const std::system_error& error) {  // no thread to be had
      _connectError = {error.what()};
    }
  }
  if (!_connection) return _connectError;
  return okStatus();
}

SessionBus::Wait SessionBus::runUntil(const std::function<bool()>& done,
                                      Clock::time_point deadline) {
  if (!connect()) return Wait::lost;
  try {
    for (unsigned late = 0;;) {
      if (done()) return Wait::done;
      // The clock is looked at between messages as well: a flood of them must not postpone the end.
      // But a process that got the processor late still handles what has come in time.
      const bool handled = _connection->processPendingRequest();
      if (Clock::now() >= deadline && (!handled || ++late == mostLateMessages)) {
        return done() ? Wait::done : Wait::timedOut;
      }
      if (!handled) waitForTraffic(*_connection, deadline);
    }
  } catch (const sdbus::Error&) {
    return Wait::lost;
  }
}

}  // namespace quorvex
