#pragma once

namespace quorvex {

/// While one lives, SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGXCPU wait, whichever thread they reach;
/// what came meanwhile is delivered when the last guard ends, with the disposition that held before
/// the first. A signal that is ignored stays ignored. Guards may nest and may live in several
/// threads.
class TerminationGuard {
 public:
  TerminationGuard();
  ~TerminationGuard();
  TerminationGuard(const TerminationGuard&) = delete;
  TerminationGuard& operator=(const TerminationGuard&) = delete;
};

}  // namespace quorvex
