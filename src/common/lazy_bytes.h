#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex {

/// Fills memory with its content when that is first needed, and may take it back when nobody works
/// with it. Thread-safe.
class Residency {
 public:
  Residency() = default;
  Residency(const Residency&) = delete;
  Residency& operator=(const Residency&) = delete;
  virtual ~Residency() = default;

  /// Makes a range readable; false if its content is damaged or memory is short.
  virtual bool require(std::string_view range) const = 0;
};

/// A range of bytes whose parts become readable when they are asked for. Copies are cheap. What
/// part() returns is valid as long as the owner of the bytes lives and, if they are unpacked on
/// demand, until the current use of them ends: keep no view beyond one operation.
class LazyBytes {
 public:
  LazyBytes() = default;
  /// Bytes that are there.
  // NOLINTBEGIN(google-explicit-constructor)
  LazyBytes(std::string_view bytes) : _range(bytes) {}
  LazyBytes(const std::string& bytes) : _range(bytes) {}
  LazyBytes(const char* bytes) : _range(bytes) {}
  // NOLINTEND(google-explicit-constructor)
  /// `residency` must outlive this object and its copies; null if the bytes are there.
  LazyBytes(std::string_view range, const Residency* residency)
      : _range(range), _residency(residency) {}

  std::size_t size() const { return _range.size(); }
  bool empty() const { return _range.empty(); }
  /// Whether the content is still to be unpacked, and checked when it is.
  bool isLazy() const { return _residency != nullptr; }
  const Residency* residency() const { return _residency; }

  /// Returns a part, cut off at the end of the range; empty if it is damaged.
  std::string_view part(std::size_t offset, std::size_t size) const {
    const std::string_view range = rangeOf(offset, size);
    if (_residency != nullptr && !range.empty() && !_residency->require(range)) return {};
    return range;
  }
  std::string_view from(std::size_t offset) const { return part(offset, std::string_view::npos); }
  std::string_view all() const { return from(0); }

  /// Returns a part that is not made readable yet.
  LazyBytes sub(std::size_t offset, std::size_t size = std::string_view::npos) const {
    return {rangeOf(offset, size), _residency};
  }

 private:
  std::string_view rangeOf(std::size_t offset, std::size_t size) const {
    return _range.substr(std::min(offset, _range.size()), size);
  }

  std::string_view _range;
  const Residency* _residency = nullptr;
};

}  // namespace quorvex
