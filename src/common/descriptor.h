#pragma once

#include <utility>

#include <unistd.h>

namespace quorvex {

/// Owns a file descriptor; a negative one is none.
class Descriptor {
 public:
  explicit Descriptor(int number) : _number(number) {}
  Descriptor(Descriptor&& other) noexcept : _number(std::exchange(other._number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  ~Descriptor() {
    if (_number >= 0) ::close(_number);
  }

  int get() const { return _number; }
  explicit operator bool() const { return _number >= 0; }

 private:
  int _number;
};

}  // namespace quorvex
