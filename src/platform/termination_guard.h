#pragma once

namespace quorvex {

/// While one lives, the signals that others send to end a process wait (SIGINT, SIGTERM, SIGHUP,
/// SIGQUIT, SIGXCPU, those of timers and of users), whichever thread they reach; what came
/// meanwhile is delivered when the last guard ends, with the disposition that held before the
/// first. A signal that is ignored stays ignored. Guards may nest and may live in several threads.
class TerminationGuard {
 public:
  TerminationGuard();
  ~TerminationGuard();
  TerminationGuard(const TerminationGuard&) = delete;
  TerminationGuard& operator=(const TerminationGuard&) = delete;
};

}  // namespace quorvex
