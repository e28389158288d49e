#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace quorvex {

/// A thread-safe pool of objects that are costly to create and serve one thread at a time.
template <typename Object>
class IdlePool {
 public:
  /// Returns an idle object, else the result of `make()`.
  template <typename Make>
  std::unique_ptr<Object> take(const Make& make) {
    {
      const std::lock_guard lock(_mutex);
      if (!_idle.empty()) {
        std::unique_ptr<Object> object = std::move(_idle.back());
        _idle.pop_back();
        return object;
      }
    }
    return make();
  }

  void giveBack(std::unique_ptr<Object> object) {
    const std::lock_guard lock(_mutex);
    _idle.push_back(std::move(object));
  }

 private:
  std::mutex _mutex;
  std::vector<std::unique_ptr<Object>> _idle;
};

}  // namespace quorvex
