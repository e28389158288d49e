#pragma once

#include <string>
#include <utility>
#include <variant>

namespace quorvex {

/// Why an operation failed, for a human reader.
struct Error {
  std::string description;
};

/// The outcome of an operation that can fail: its value or an Error. Low-level functions return it;
/// one place above turns it into a message and an exit status.
template <typename T>
class [[nodiscard]] Result {
 public:
  // NOLINTBEGIN(google-explicit-constructor)
  Result(const T& value) : _outcome(value) {}
  Result(T&& value) : _outcome(std::move(value)) {}
  Result(Error error) : _outcome(std::move(error)) {}
  // NOLINTEND(google-explicit-constructor)

  bool ok() const { return std::holds_alternative<T>(_outcome); }
  explicit operator bool() const { return ok(); }

  /// Only when ok().
  T& value() & { return std::get<T>(_outcome); }
  const T& value() const& { return std::get<T>(_outcome); }
  T&& value() && { return std::get<T>(std::move(_outcome)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  /// Only when not ok().
  const Error& error() const { return std::get<Error>(_outcome); }

 private:
  std::variant<T, Error> _outcome;
};

/// The outcome of an operation without a value.
using Status = Result<std::monostate>;
inline Status okStatus() {
  return std::monostate{};
}

}  // namespace quorvex
