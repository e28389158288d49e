#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include <unistd.h>

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quorvex::test {

/// A private session bus and home folder; hides the user's during its lifetime.
class PrivateDesktop {
 public:
  PrivateDesktop()
      : _bus({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"}) {
    const std::string address = _bus.readLine();
    const std::size_t begin = address.find('=') + 1;
    _socket = address.substr(begin, address.find(',') - begin);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    ::setenv("HOME", home().c_str(), 1);
  }
  ~PrivateDesktop() {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    ::unlink(_socket.c_str());  // left behind by a killed daemon
  }

  std::string home() const { return _home.path().string(); }
  const TemporaryFolder& files() const { return _home; }
  const ChildProcess& bus() const { return _bus; }

 private:
  TemporaryFolder _home;
  ChildProcess _bus;
  std::string _socket;
};

/// A process that owns a name on the bus and behaves as told (see platform/stand_in.cpp).
class StandIn : public ChildProcess {
 public:
  StandIn(const std::string& name, const std::string& behaviour, const std::string& reply = "")
      : ChildProcess({QUORVEX_STAND_IN, name, behaviour, reply}) {
    readLine();  // "ready"
  }
};

}  // namespace quorvex::test
