#pragma once

#include <cstdint>
#include <string_view>

#include "common/bytes.h"
#include "common/lazy_bytes.h"

namespace quorvex {

/// Takes lazy bytes apart from the front, like ByteReader, without unpacking the parts.
class LazyReader {
 public:
  explicit LazyReader(const LazyBytes& bytes) : _rest(bytes) {}

  bool ok() const { return _ok; }
  const LazyBytes& rest() const { return _rest; }

  std::uint64_t varint() {
    constexpr std::size_t longestVarint = 10;
    ByteReader reader(_rest.part(0, longestVarint));
    const std::size_t before = reader.rest().size();
    const std::uint64_t value = reader.varint();
    if (!reader.ok()) return fail();
    _rest = _rest.sub(before - reader.rest().size());
    return value;
  }

  LazyBytes bytes(std::uint64_t size) {
    if (size > _rest.size()) {
      fail();
      return {};
    }
    const LazyBytes taken = _rest.sub(0, static_cast<std::size_t>(size));
    _rest = _rest.sub(taken.size());
    return taken;
  }
  /// Takes bytes after their varint size.
  LazyBytes text() { return bytes(varint()); }

 private:
  std::uint64_t fail() {
    _ok = false;
    _rest = {};
    return 0;
  }

  LazyBytes _rest;
  bool _ok = true;
};

}  // namespace quorvex
