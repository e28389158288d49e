#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quorvex {

/// Runs `work(0)` … `work(count - 1)`, the first on the calling thread and the others on one thread
/// each, and waits for all. Rethrows an exception from any of them. If the system has no more
/// threads, the calling thread does the rest.
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

/// Calls `work(begin, end, worker)` for consecutive blocks of `blockSize` that cover [0, count), on
/// up to `workers` threads (worker < workers). Any thread may take any block, so a block's result
/// must depend on the block alone. Rethrows an exception from any block.
void forEachBlock(
    std::size_t count, std::size_t blockSize, unsigned workers,
    const std::function<void(std::size_t begin, std::size_t end, unsigned worker)>& work);

/// Runs `work` in the background; the future's get() returns its result or rethrows its exception.
/// If the system has no thread for it, it runs when get() is called.
template <typename Work>
auto inBackground(const Work& work) {
  try {
    return std::async(std::launch::async, work);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, work);
  }
}

}  // namespace quorvex
