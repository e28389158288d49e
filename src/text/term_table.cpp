#include "text/term_table.h"

#include <cstring>
#include <random>

namespace quorvex {

namespace {

constexpr std::size_t firstSlotCount = 1024;

std::uint64_t mixed(std::uint64_t state, std::uint64_t input) {
  state = (state ^ input) * 0x9E3779B185EBCA87U;
  return state ^ (state >> 32U);
}

std::uint64_t processSeed() {
  static const std::uint64_t seed = [] {
    std::random_device random;
    return (std::uint64_t{random()} << 32U) | random();
  }();
  return seed;
}

}  // namespace

TermTable::TermTable() : _seed(processSeed()), _slots(firstSlotCount) {}

std::uint64_t TermTable::hashOf(std::string_view term) const {
  std::uint64_t hash = _seed ^ term.size();
  std::uint64_t block = 0;
  for (; term.size() >= sizeof block; term.remove_prefix(sizeof block)) {
    std::memcpy(&block, term.data(), sizeof block);
    hash = mixed(hash, block);
  }
  // Two halves that may overlap; the size tells such texts apart.
  block = 0;
  if (constexpr std::size_t half = sizeof block / 2; term.size() >= half) {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, term.data(), half);
    std::memcpy(&last, term.data() + term.size() - half, half);
    block = std::uint64_t{first} << 32U | last;
  } else {
    for (const char c : term)
      block = (block << 8U) | static_cast<unsigned char>(c);
  }
  return mixed(mixed(hash, block), _seed);
}

std::uint32_t TermTable::insert(std::string_view term) {
  const std::uint64_t fullHash = hashOf(term);
  // The slot comes from the high half, so it is independent of the half that is stored.
  const auto hash = static_cast<std::uint32_t>(fullHash);
  const std::size_t mask = _slots.size() - 1;
  std::size_t at = (fullHash >> 32U) & mask;
  for (; _slots[at].numberPlusOne != 0; at = (at + 1) & mask) {
    if (_slots[at].hash == hash && this->term(_slots[at].numberPlusOne - 1) == term) {
      return _slots[at].numberPlusOne - 1;
    }
  }
  _arena += term;
  _ends.push_back(_arena.size());
  _slots[at] = {hash, size()};
  if (_ends.size() * 2 > _slots.size()) grow();
  return size() - 1;
}

void TermTable::grow() {
  std::vector<Slot> slots(_slots.size() * 2);
  const std::size_t mask = slots.size() - 1;
  for (std::uint32_t number = 0; number < size(); ++number) {
    const std::uint64_t hash = hashOf(term(number));
    std::size_t at = (hash >> 32U) & mask;
    while (slots[at].numberPlusOne != 0)
      at = (at + 1) & mask;
    slots[at] = {static_cast<std::uint32_t>(hash), number + 1};
  }
  _slots = std::move(slots);
}

}  // namespace quorvex
