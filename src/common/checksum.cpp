#include "common/checksum.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace quorvex {

namespace {

constexpr std::uint64_t prime1 = 0x9E3779B185EBCA87U;
constexpr std::uint64_t prime2 = 0xC2B2AE3D27D4EB4FU;
constexpr std::uint64_t prime3 = 0x165667B19E3779F9U;
constexpr std::uint64_t prime4 = 0x85EBCA77C2B2AE63U;
constexpr std::uint64_t prime5 = 0x27D4EB2F165667C5U;

template <typename Number>
Number take(std::string_view& bytes) {
  Number value = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, bytes.data(), sizeof value);
  } else {
    for (std::size_t i = 0; i < sizeof value; ++i) {
      value |= static_cast<Number>(Number{static_cast<unsigned char>(bytes[i])} << (8 * i));
    }
  }
  bytes.remove_prefix(sizeof value);
  return value;
}

std::uint64_t mix(std::uint64_t lane, std::uint64_t input) {
  return std::rotl(lane + input * prime2, 31) * prime1;
}

}  // namespace

std::uint64_t checksum(std::string_view bytes) {
  const std::uint64_t size = bytes.size();
  std::uint64_t hash = prime5;
  if (bytes.size() >= 32) {
    std::array<std::uint64_t, 4> lanes = {prime1 + prime2, prime2, 0, 0 - prime1};
    while (bytes.size() >= 32) {
      for (std::uint64_t& lane : lanes)
        lane = mix(lane, take<std::uint64_t>(bytes));
    }
    hash = std::rotl(lanes[0], 1) + std::rotl(lanes[1], 7) + std::rotl(lanes[2], 12) +
           std::rotl(lanes[3], 18);
    for (const std::uint64_t lane : lanes)
      hash = (hash ^ mix(0, lane)) * prime1 + prime4;
  }
  hash += size;
  while (bytes.size() >= 8) {
    hash = std::rotl(hash ^ mix(0, take<std::uint64_t>(bytes)), 27) * prime1 + prime4;
  }
  if (bytes.size() >= 4) {
    hash = std::rotl(hash ^ take<std::uint32_t>(bytes) * prime1, 23) * prime2 + prime3;
  }
  for (const char byte : bytes) {
    hash = std::rotl(hash ^ static_cast<unsigned char>(byte) * prime5, 11) * prime1;
  }
  hash = (hash ^ (hash >> 33U)) * prime2;
  hash = (hash ^ (hash >> 29U)) * prime3;
  return hash ^ (hash >> 32U);
}

}  // namespace quorvex
