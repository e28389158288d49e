#pragma once

#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex {

/// Runs `work(0)` … `work(count - 1)`, each on a thread of its own, the first on the caller's, and
/// waits for all. What one of them throws is thrown again here.
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
    for (unsigned index = 1; index < count; ++index)
      threads.emplace_back(guarded, index);
    guarded(0);
  }
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace quorvex
