#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex {

/// A unit of work that an operation queue runs on one of its threads.
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

/// Runs operations first in, first out on a pool of threads. Threads start as operations arrive;
/// the queue waits for them before it goes. Used from one thread; operations run on the pool's.
class OperationQueue {
 public:
  /// `maximumBacklog`: once the operations that wait hold more than this together (in the unit of
  /// add's `cost`), add() waits until half of it is free, so that a fast producer neither fills the
  /// memory nor is woken for each operation.
  explicit OperationQueue(std::size_t maximumBacklog);
  ~OperationQueue();
  OperationQueue(const OperationQueue&) = delete;
  OperationQueue& operator=(const OperationQueue&) = delete;

  /// At most this many operations run at once. Only before the first add().
  void setMaxConcurrentOperationCount(unsigned count) { _maxConcurrent = count; }
  unsigned maxConcurrentOperationCount() const { return _maxConcurrent; }

  /// Queues an operation; it may start at once. Blocks while the backlog is full.
  void add(std::shared_ptr<Operation> operation, std::size_t cost);

  /// Ends the threads as well: what they keep for their next allocations is free for others then.
  void waitUntilAllOperationsAreFinished();

  /// Operations queued or running.
  std::size_t operationCount() const;

 private:
  struct Waiting {
    std::shared_ptr<Operation> operation;
    std::size_t cost;
  };

  void work();
  bool hasMuchRoom() const { return _backlog <= _maximumBacklog / 2; }

  const std::size_t _maximumBacklog;
  unsigned _maxConcurrent = defaultConcurrency();
  mutable std::mutex _mutex;
  std::condition_variable _arrived;  ///< work to do, or the end
  std::condition_variable _room;     ///< the producer may go on
  std::deque<Waiting> _waiting;
  std::size_t _backlog = 0;
  std::size_t _running = 0;
  bool _ending = false;
  std::vector<std::thread> _threads;
};

}  // namespace quorvex
