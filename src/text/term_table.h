#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// Numbers distinct terms densely in order of first appearance. Open addressing over one text
/// arena; the hash seed is random, so no page can provoke collisions.
class TermTable {
 public:
  TermTable();

  /// Returns the number of `term`; assigns the next one to a new term.
  std::uint32_t insert(std::string_view term) { return insert(keyOf(term), term); }
  /// The same for several terms. A large table is far from the processor: this waits for the
  /// entries of many terms at once.
  void insertAll(std::span<const std::string_view> terms, std::span<std::uint32_t> numbers);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_ends.size()); }
  /// Valid until the next insert().
  std::string_view term(std::uint32_t number) const {
    const std::uint64_t begin = number == 0 ? 0 : _ends[number - 1];
    return {_arena.data() + begin, _ends[number] - begin};
  }

 private:
  /// What tells terms of one size apart: the bytes of a short term, the hash of a long one, whose
  /// text must be compared too.
  struct Key {
    std::uint64_t value = 0;
    std::uint32_t size = 0;
    std::uint32_t hash = 0;

    bool isWhole() const { return size <= sizeof value; }
  };
  struct Slot {
    std::uint64_t value = 0;
    std::uint32_t size = 0;
    std::uint32_t numberPlusOne = 0;  ///< 0: free
  };

  Key keyOf(std::string_view term) const;
  std::uint32_t hashOf(std::uint64_t value, std::uint32_t size) const;
  const Slot& likelySlot(const Key& key) const { return _slots[key.hash & (_slots.size() - 1)]; }
  std::uint32_t insert(const Key& key, std::string_view term);
  void grow();

  std::uint64_t _seed;
  std::vector<Slot> _slots;  ///< a power of two, at most three quarters of them used
  std::string _arena;
  std::vector<std::uint64_t> _ends;  ///< of each term's text in the arena
};

}  // namespace quorvex
