#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex {

/// Reads untrusted bytes from the front of a span. After a read that does not fit, ok() stays
/// false, every further read returns 0 or empty text, and nothing is left.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : _rest(bytes) {}

  bool ok() const { return _ok; }
  std::string_view rest() const { return _rest; }

  std::uint8_t byte() {
    if (_rest.empty()) return fail();
    const auto value = static_cast<std::uint8_t>(_rest.front());
    _rest.remove_prefix(1);
    return value;
  }
  std::uint32_t u32() { return static_cast<std::uint32_t>(fixed(4)); }
  std::uint64_t u64() { return fixed(8); }
  /// Reads a little-endian number of at most eight bytes.
  std::uint64_t fixed(unsigned size) {
    if (_rest.size() < size) return fail();
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) {
      value |= std::uint64_t{static_cast<unsigned char>(_rest[i])} << (8 * i);
    }
    _rest.remove_prefix(size);
    return value;
  }

  /// Reads LEB128 of at most 64 bits.
  std::uint64_t varint() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const std::uint64_t group = byte();
      value |= (group & 0x7FU) << shift;
      if (group < 0x80) return _ok && (shift < 63 || group < 2) ? value : fail();
    }
    return fail();
  }
  /// Reads a varint that must fit 32 bits.
  std::uint32_t varint32() {
    const std::uint64_t value = varint();
    return value <= UINT32_MAX ? static_cast<std::uint32_t>(value) : fail();
  }

  std::string_view bytes(std::uint64_t size) {
    if (size > _rest.size()) {
      fail();
      return {};
    }
    const std::string_view taken = _rest.substr(0, static_cast<std::size_t>(size));
    _rest.remove_prefix(taken.size());
    return taken;
  }
  /// Reads text after its varint size.
  std::string_view text() { return bytes(varint()); }

 private:
  std::uint8_t fail() {
    _ok = false;
    _rest = {};
    return 0;
  }

  std::string_view _rest;
  bool _ok = true;
};

inline void appendFixed(std::string& out, std::uint64_t value, unsigned size) {
  for (unsigned i = 0; i < size; ++i)
    out += static_cast<char>(value >> (8 * i));
}
inline void appendU32(std::string& out, std::uint32_t value) {
  appendFixed(out, value, 4);
}
inline void appendU64(std::string& out, std::uint64_t value) {
  appendFixed(out, value, 8);
}

inline void appendVarint(std::string& out, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7)
    out += static_cast<char>(value | 0x80U);
  out += static_cast<char>(value);
}

inline void appendText(std::string& out, std::string_view text) {
  appendVarint(out, text.size());
  out += text;
}

/// Returns the size of the common prefix in bytes.
inline std::size_t sharedPrefixSize(std::string_view a, std::string_view b) {
  return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

}  // namespace quorvex
