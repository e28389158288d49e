#include "common/checksum.h"

// Header-only: loading the library would take longer than checking most files.
#define XXH_INLINE_ALL
#include <utility>

#include <xxhash.h>

#include "common/hexadecimal.h"

namespace quorvex {

struct SecretChecksum::State {
  XXH3_state_t sum;
};

std::uint64_t checksum(std::string_view bytes) {
  return XXH64(bytes.data(), bytes.size(), 0);
}

SecretChecksum::SecretChecksum(std::string secret)
    : _secret(std::move(secret)), _state(std::make_unique<State>()) {
  _secret.resize(secretSize);
  XXH3_128bits_reset_withSecret(&_state->sum, _secret.data(), _secret.size());
}

SecretChecksum::~SecretChecksum() = default;

void SecretChecksum::add(std::string_view bytes) {
  XXH3_128bits_update(&_state->sum, bytes.data(), bytes.size());
}

std::string SecretChecksum::sum() const {
  constexpr std::size_t digits = 16;
  const XXH128_hash_t sum = XXH3_128bits_digest(&_state->sum);
  return hexadecimal(sum.high64, digits) + hexadecimal(sum.low64, digits);
}

}  // namespace quorvex
