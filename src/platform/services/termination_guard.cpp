#include "platform/termination_guard.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>

#include <signal.h>
#include <unistd.h>

namespace quorvex {
namespace {

constexpr std::array heldSignals{SIGINT,  SIGTERM, SIGHUP,    SIGQUIT, SIGXCPU, SIGALRM,
                                 SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF, SIGIO,   SIGPWR};

// Dispositions are per process and a handler receives no argument of ours, so this state must be
// global too. Blocking the signals in the guard's thread would not suffice: the kernel delivers
// them to any thread that does not block them, and the default action ends the whole process.
struct HeldSignals {
  std::mutex mutex;
  int guards = 0;
  std::array<struct sigaction, heldSignals.size()> previous{};
  std::array<bool, heldSignals.size()> installed{};
  std::atomic<bool> holding = false;
  std::array<std::atomic<bool>, heldSignals.size()> pending{};
};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

HeldSignals& held() {
  static HeldSignals state;
  return state;
}

void deliverIfPending(HeldSignals& state, std::size_t index) {
  if (state.pending[index].exchange(false)) ::kill(::getpid(), heldSignals[index]);
}

extern "C" void holdSignal(int signal) {
  HeldSignals& state = held();
  for (std::size_t i = 0; i < heldSignals.size(); ++i) {
    if (heldSignals[i] != signal) continue;
    state.pending[i] = true;
    // The last guard may have ended between this handler's start on another thread and the line
    // above; then nobody else would deliver it.
    if (!state.holding) deliverIfPending(state, i);
  }
}

}  // namespace

TerminationGuard::TerminationGuard() {
  HeldSignals& state = held();
  const std::scoped_lock lock(state.mutex);
  if (state.guards++ > 0) return;
  state.holding = true;
  struct sigaction action = {};
  action.sa_handler = holdSignal;
  action.sa_flags = SA_RESTART;
  ::sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < heldSignals.size(); ++i) {
    state.installed[i] = ::sigaction(heldSignals[i], nullptr, &state.previous[i]) == 0 &&
                         state.previous[i].sa_handler != SIG_IGN &&
                         ::sigaction(heldSignals[i], &action, nullptr) == 0;
  }
}

TerminationGuard::~TerminationGuard() {
  HeldSignals& state = held();
  {
    const std::scoped_lock lock(state.mutex);
    if (--state.guards > 0) return;
    for (std::size_t i = 0; i < heldSignals.size(); ++i) {
      if (state.installed[i]) ::sigaction(heldSignals[i], &state.previous[i], nullptr);
    }
    state.holding = false;
  }
  for (std::size_t i = 0; i < heldSignals.size(); ++i)
    deliverIfPending(state, i);
}

}  // namespace quorvex
