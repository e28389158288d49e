#pragma once

namespace quorvex {

/// While a guard lives, external signals that end a process are held back (SIGINT, SIGTERM, SIGHUP,
/// SIGQUIT, SIGXCPU, SIGIO, SIGPWR, timer and user signals), whichever thread they reach. They are
/// delivered when the last guard ends, with the dispositions from before the first. Ignored signals
/// stay ignored. Guards may nest and may live in several threads.
class TerminationGuard {
 public:
  TerminationGuard();
  ~TerminationGuard();
  TerminationGuard(const TerminationGuard&) = delete;
  TerminationGuard& operator=(const TerminationGuard&) = delete;
};

}  // namespace quorvex
