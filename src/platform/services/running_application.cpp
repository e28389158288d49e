#include "platform/running_application.h"

#include <algorithm>
#include <utility>

#include <signal.h>
#include <unistd.h>

#include "platform/process_handle.h"
#include "platform/services/bus_daemon.h"
#include "platform/session_bus.h"

namespace quorvex {
namespace {

/// By convention an application's object path is its identifier with slashes for dots.
std::string objectPath(std::string identifier) {
  std::replace(identifier.begin(), identifier.end(), '.', '/');
  return "/" + identifier;
}

class BusApplication final : public RunningApplication {
 public:
  BusApplication(std::shared_ptr<SessionBus> bus, std::string identifier, std::string owner,
                 CallLimits limits)
      : _bus(std::move(bus)),
        _identifier(std::move(identifier)),
        _owner(std::move(owner)),
        _limits(limits) {}

  bool terminate() override {
    const BusReply reply = _bus->call(
        {_owner, objectPath(_identifier), "org.freedesktop.Application", "ActivateAction"},
        {"sava{sv}", {"quit", Array(), Dictionary()}}, _limits);
    // An application that quits at once may never reply, but has done as requested. A busy one,
    // perhaps asking its user whether to save, has not refused.
    return reply.end == CallEnd::replied || reply.end == CallEnd::replyTimedOut ||
           reply.end == CallEnd::calleeGone || reply.end == CallEnd::calleeAbsent;
  }

  bool forceTerminate() override {
    const auto peer = peerOf(*_bus, _owner);
    if (!peer || peer->process <= 1 || peer->user != ::getuid()) return false;
    const auto process = static_cast<pid_t>(peer->process);
    if (process == ::getpid()) return false;
    const ProcessHandle handle(process);
    // The PID may have been reused before the handle was opened. If the connection still exists, so
    // does its process, and the handle refers to that one.
    return nameOwner(*_bus, _owner) && handle.sendSignal(SIGKILL);
  }

 private:
  std::shared_ptr<SessionBus> _bus;
  std::string _identifier;
  std::string _owner;  // unique name, which the bus never reuses
  CallLimits _limits;
};

class BusApplications final : public RunningApplications {
 public:
  BusApplications(std::shared_ptr<SessionBus> bus, CallLimits limits)
      : _bus(std::move(bus)), _limits(limits) {}

  std::vector<std::unique_ptr<RunningApplication>> withIdentifier(
      const std::string& identifier) override {
    std::vector<std::unique_ptr<RunningApplication>> running;
    if (auto owner = nameOwner(*_bus, identifier)) {
      running.push_back(
          std::make_unique<BusApplication>(_bus, identifier, *std::move(owner), _limits));
    }
    return running;
  }

 private:
  std::shared_ptr<SessionBus> _bus;
  CallLimits _limits;
};

}  // namespace

std::shared_ptr<RunningApplications> busRunningApplications(std::shared_ptr<SessionBus> bus,
                                                            CallLimits limits) {
  return std::make_shared<BusApplications>(std::move(bus), limits);
}

}  // namespace quorvex
