#include <atomic>
#include <cstdlib>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/lowered_priority.h"
#include "platform/termination_guard.h"

namespace quorvex {
namespace {

std::atomic<int> delivered = 0;

TEST(TerminationGuardTest, SignalsWaitForTheLastGuardWithOtherThreadsRunning) {
  std::atomic<bool> stop = false;
  std::atomic<int> woken = 0;
  std::thread worker([&] {
    for (; !stop; ++woken)
      ::pause();
  });
  const auto signalWorker = [&](int signal) {
    for (const int before = woken; woken == before; ::usleep(1000)) {
      ::pthread_kill(worker.native_handle(), signal);
    }
  };
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    ::signal(signal, [](int number) { delivered = number; });
    delivered = 0;
    std::optional<TerminationGuard> outer(std::in_place);
    {
      const TerminationGuard inner;
      signalWorker(signal);
    }
    EXPECT_EQ(delivered, 0);
    outer.reset();
    for (int i = 0; i < 1000 && delivered == 0; ++i)
      ::usleep(1000);
    EXPECT_EQ(delivered, signal);
  }
  stop = true;
  signalWorker(SIGHUP);
  worker.join();
}

TEST(TerminationGuardDeathTest, DefaultActionEndsTheProcessAfterTheGuard) {
  const auto interrupted = [] {
    ::signal(SIGHUP, SIG_IGN);
    {
      const TerminationGuard guard;
      ::kill(::getpid(), SIGTERM);
      ::kill(::getpid(), SIGHUP);
      if (::write(STDERR_FILENO, "written", 7) != 7) ::_exit(1);
    }
    ::_exit(0);
  };
  EXPECT_EXIT(interrupted(), testing::KilledBySignal(SIGTERM), "written");
}

TEST(LoweredPriorityTest, SendsThisProcessAloneToTheBackground) {
  // ionice(1) inherits the class and prints its name; its constants are not ours.
  const auto idle = [] { return std::system("test \"$(ionice)\" = idle") == 0; };
  const auto lowered = [&] {
    ::_exit(lowerProcessPriority() && ::getpriority(PRIO_PROCESS, 0) == 19 && idle() ? 0 : 1);
  };
  const bool idleBefore = idle();
  EXPECT_EXIT(lowered(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(idle(), idleBefore);
}

}  // namespace
}  // namespace quorvex
