#pragma once

#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quorvex {

/// Runs `work(0)` … `work(count - 1)`, each on a thread of its own, the first on the caller's, and
/// waits for all. What one of them throws is thrown again here. Where the system gives no more
/// threads, the caller's does the rest.
template <typename Work>
void runInParallel(unsigned count, const Work& work) {
  std::exception_ptr failure;
  std::mutex failureMutex;
  const auto guarded = [&](unsigned index) {
    try {
      work(index);
    } catch (...) {
      const std::lock_guard lock(failureMutex);
      failure = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> threads;
    threads.reserve(count);
    unsigned own = count;
    try {
      for (unsigned index = 1; index < count; ++index)
        threads.emplace_back(guarded, index);
    } catch (const std::system_error&) {
      own = static_cast<unsigned>(threads.size()) + 1;
    }
    guarded(0);
    for (unsigned index = own; index < count; ++index)
      guarded(index);
  }
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace quorvex
