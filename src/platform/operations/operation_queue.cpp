#include "platform/operation_queue.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <sched.h>

namespace quorvex {

unsigned defaultConcurrency() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (::sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
    return static_cast<unsigned>(std::max(1, CPU_COUNT(&allowed)));
  }
  return std::max(1U, std::thread::hardware_concurrency());
}

OperationQueue::OperationQueue(std::size_t maximumBacklog) : _maximumBacklog(maximumBacklog) {}

OperationQueue::~OperationQueue() {
  waitUntilAllOperationsAreFinished();
}

void OperationQueue::add(std::shared_ptr<Operation> operation, std::size_t cost) {
  std::unique_lock lock(_mutex);
  // An operation that exceeds the limit alone is accepted once nothing else waits.
  while (!_waiting.empty() && _backlog + cost > _maximumBacklog)
    runNext(lock);
  _waiting.push_back({std::move(operation), cost});
  _backlog += cost;
  const bool allBusy = _running + _waiting.size() > _threads.size();
  if (allBusy && _threads.size() + 1 < _maxConcurrent) {
    try {
      _threads.emplace_back([this] { work(); });
    } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch): the caller does the work
    }
  }
  if (_threads.empty()) {
    runNext(lock);
    return;
  }
  lock.unlock();
  _arrived.notify_one();
}

void OperationQueue::work() {
  std::unique_lock lock(_mutex);
  for (;;) {
    _arrived.wait(lock, [&] { return _ending || !_waiting.empty(); });
    if (_waiting.empty()) return;
    runNext(lock);
  }
}

void OperationQueue::runNext(std::unique_lock<std::mutex>& lock) {
  Waiting next = std::move(_waiting.front());
  _waiting.pop_front();
  _backlog -= next.cost;
  ++_running;
  lock.unlock();
  next.operation->main();
  next.operation.reset();  // outside the lock: it may own a lot
  lock.lock();
  --_running;
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
  {
    std::unique_lock lock(_mutex);
    while (!_waiting.empty())
      runNext(lock);
    _ending = true;
  }
  _arrived.notify_all();
  for (std::thread& thread : _threads)
    thread.join();
  _threads.clear();
  _ending = false;
}

std::size_t OperationQueue::operationCount() const {
  const std::scoped_lock lock(_mutex);
  return _waiting.size() + _running;
}

}  // namespace quorvex
