#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex {

/// A unit of work that an operation queue runs, on the queue's user's thread or another.
class Operation {
 public:
  Operation() = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
  virtual ~Operation() = default;

  /// The body. Nothing may escape it.
  virtual void main() noexcept = 0;
};

/// The number of threads that a queue uses when nobody limits it: one for each processor that the
/// process may run on.
unsigned defaultConcurrency();

/// Runs operations first in, first out. The thread that uses the queue is one of those that run
/// them: it does so while it has to wait. A thread that sleeps then and wakes later would leave a
/// processor idle until the system notices. The others start as operations arrive; the queue waits
/// for them before it goes. Used from one thread.
class OperationQueue {
 public:
  /// `maximumBacklog`: the operations that wait hold no more than this together (in the unit of
  /// add's `cost`), so that a fast producer does not fill the memory.
  explicit OperationQueue(std::size_t maximumBacklog);
  ~OperationQueue();
  OperationQueue(const OperationQueue&) = delete;
  OperationQueue& operator=(const OperationQueue&) = delete;

  /// At most this many operations run at once. Only before the first add().
  void setMaxConcurrentOperationCount(unsigned count) { _maxConcurrent = count; }
  unsigned maxConcurrentOperationCount() const { return _maxConcurrent; }

  /// Queues an operation; it may start at once. Runs operations while the backlog is full, and
  /// where there is no other thread to do it.
  void add(std::shared_ptr<Operation> operation, std::size_t cost);

  /// Does what waits, then ends the threads: what they keep for their next allocations is free for
  /// others then.
  void waitUntilAllOperationsAreFinished();

  /// Operations queued or running.
  std::size_t operationCount() const;

 private:
  struct Waiting {
    std::shared_ptr<Operation> operation;
    std::size_t cost;
  };

  void work();
  /// The lock is given up meanwhile. Only while something waits.
  void runNext(std::unique_lock<std::mutex>& lock);

  const std::size_t _maximumBacklog;
  unsigned _maxConcurrent = defaultConcurrency();
  mutable std::mutex _mutex;
  std::condition_variable _arrived;  ///< work to do, or the end
  std::deque<Waiting> _waiting;
  std::size_t _backlog = 0;
  std::size_t _running = 0;
  bool _ending = false;
  std::vector<std::thread> _threads;
};

}  // namespace quorvex
