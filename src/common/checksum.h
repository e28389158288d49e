#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex {

/// XXH64 with seed 0, the checksum of the indexes.
std::uint64_t checksum(std::string_view bytes);

/// XXH3 of 128 bits, with a secret, of bytes that come in pieces. Who does not know the secret
/// cannot choose two contents with the same sum.
class SecretChecksum {
 public:
  static constexpr std::size_t secretSize = 192;

  /// `secret`: that many random bytes.
  explicit SecretChecksum(std::string secret);
  ~SecretChecksum();
  SecretChecksum(const SecretChecksum&) = delete;
  SecretChecksum& operator=(const SecretChecksum&) = delete;

  void add(std::string_view bytes);
  /// Returns 32 hexadecimal digits.
  std::string sum() const;

 private:
  struct State;
  std::string _secret;
  std::unique_ptr<State> _state;
};

}  // namespace quorvex
