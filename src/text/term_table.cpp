#include "text/term_table.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

namespace quorvex {

namespace {

constexpr std::size_t firstSlotCount = 1024;

std::uint64_t mixed(std::uint64_t state, std::uint64_t input) {
  state = (state ^ input) * 0x9E3779B185EBCA87U;
  return state ^ (state >> 32U);
}

/// Returns the bytes of at most eight, which differ for texts of the same size.
std::uint64_t packed(std::string_view text) {
  std::uint64_t bytes = 0;
  // Two halves that may overlap.
  if (constexpr std::size_t half = sizeof bytes / 2; text.size() >= half) {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, text.data(), half);
    std::memcpy(&last, text.data() + text.size() - half, half);
    return std::uint64_t{first} << 32U | last;
  }
  for (const char c : text)
    bytes = (bytes << 8U) | static_cast<unsigned char>(c);
  return bytes;
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

TermTable::Key TermTable::keyOf(std::string_view term) const {
  Key key{.value = 0, .size = static_cast<std::uint32_t>(term.size()), .hash = 0};
  std::uint64_t hash = _seed;
  std::uint64_t block = 0;
  for (; term.size() > sizeof block; term.remove_prefix(sizeof block)) {
    std::memcpy(&block, term.data(), sizeof block);
    hash = mixed(hash, block);
  }
  key.value = key.isWhole() ? packed(term) : mixed(hash, packed(term));
  key.hash = hashOf(key.value, key.size);
  return key;
}

inline std::uint32_t TermTable::hashOf(std::uint64_t value, std::uint32_t size) const {
  return static_cast<std::uint32_t>(mixed(mixed(_seed ^ size, value), _seed) >> 32U);
}

void TermTable::insertAll(std::span<const std::string_view> terms,
                          std::span<std::uint32_t> numbers) {
  constexpr std::size_t atOnce = 64;
  std::array<Key, atOnce> keys;
  std::array<std::uint32_t, atOnce> likely;  // numbers of long terms
  for (std::size_t begin = 0; begin < terms.size(); begin += atOnce) {
    const std::size_t count = std::min(atOnce, terms.size() - begin);
    for (std::size_t i = 0; i < count; ++i) {
      keys[i] = keyOf(terms[begin + i]);
      __builtin_prefetch(&likelySlot(keys[i]));
    }
    std::size_t longTerms = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (keys[i].isWhole() || likelySlot(keys[i]).numberPlusOne == 0) continue;
      likely[longTerms] = likelySlot(keys[i]).numberPlusOne - 1;
      __builtin_prefetch(&_ends[likely[longTerms++]]);
    }
    for (std::size_t i = 0; i < longTerms; ++i)
      __builtin_prefetch(term(likely[i]).data());
    for (std::size_t i = 0; i < count; ++i)
      numbers[begin + i] = insert(keys[i], terms[begin + i]);
  }
}

std::uint32_t TermTable::insert(const Key& key, std::string_view term) {
  const std::size_t mask = _slots.size() - 1;
  std::size_t at = key.hash & mask;
  for (; _slots[at].numberPlusOne != 0; at = (at + 1) & mask) {
    const Slot& slot = _slots[at];
    if (slot.value != key.value || slot.size != key.size) continue;
    const std::uint32_t number = slot.numberPlusOne - 1;
    if (key.isWhole() || this->term(number) == term) return number;
  }
  _arena += term;
  _ends.push_back(_arena.size());
  _slots[at] = {key.value, key.size, size()};
  if (_ends.size() * 4 > _slots.size() * 3) grow();
  return size() - 1;
}

void TermTable::grow() {
  std::vector<Slot> old(_slots.size() * 2);
  old.swap(_slots);
  const std::size_t mask = _slots.size() - 1;
  for (const Slot& slot : old) {
    if (slot.numberPlusOne == 0) continue;
    std::size_t at = hashOf(slot.value, slot.size) & mask;
    while (_slots[at].numberPlusOne != 0)
      at = (at + 1) & mask;
    _slots[at] = slot;
  }
}

}  // namespace quorvex
