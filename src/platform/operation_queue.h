#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex {

/// A unit of work that an operation queue runs, on its user's thread or another.
class Operation {
 public:
  Operation() = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
  virtual ~Operation() = default;

  /// Does the work.
  virtual void main() noexcept = 0;
};

/// The default number of threads of a queue: one for each processor that the process may use.
unsigned defaultConcurrency();

/// Runs operations first in, first out. The thread that uses the queue also runs them whenever it
/// has to wait: if it slept instead, a processor would stay idle until the system woke it. Other
/// threads start as operations arrive; the destructor waits for them. Use from one thread only.
class OperationQueue {
 public:
  /// `maximumBacklog`: limits the total cost of waiting operations (in the unit of add's `cost`),
  /// so a fast producer does not fill the memory.
  explicit OperationQueue(std::size_t maximumBacklog);
  ~OperationQueue();
  OperationQueue(const OperationQueue&) = delete;
  OperationQueue& operator=(const OperationQueue&) = delete;

  /// At most this many operations run at once. Only before the first add().
  void setMaxConcurrentOperationCount(unsigned count) { _maxConcurrent = count; }
  unsigned maxConcurrentOperationCount() const { return _maxConcurrent; }

  /// Queues an operation; it may start at once. Runs operations while the backlog is full, or if
  /// there is no other thread.
  void add(std::shared_ptr<Operation> operation, std::size_t cost);

  /// Runs all waiting operations, then ends the threads, which frees the memory they keep for
  /// their next allocations.
  void waitUntilAllOperationsAreFinished();

  /// Operations queued or running.
  std::size_t operationCount() const;

 private:
  struct Waiting {
    std::shared_ptr<Operation> operation;
    std::size_t cost;
  };

  void work();
  /// Releases the lock meanwhile. Only while something waits.
  void runNext(std::unique_lock<std::mutex>& lock);

  const std::size_t _maximumBacklog;
  unsigned _maxConcurrent = defaultConcurrency();
  mutable std::mutex _mutex;
  std::condition_variable _arrived;  ///< work to do, or shutdown
  std::deque<Waiting> _waiting;
  std::size_t _backlog = 0;
  std::size_t _running = 0;
  bool _ending = false;
  std::vector<std::thread> _threads;
};

}  // namespace quorvex
