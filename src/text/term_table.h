#pragma once

#include <cstdint>
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
  std::uint32_t insert(std::string_view term);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_ends.size()); }
  /// Valid until the next insert().
  std::string_view term(std::uint32_t number) const {
    const std::uint64_t begin = number == 0 ? 0 : _ends[number - 1];
    return {_arena.data() + begin, _ends[number] - begin};
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t numberPlusOne = 0;  ///< 0: free
  };

  std::uint64_t hashOf(std::string_view term) const;
  void grow();

  std::uint64_t _seed;
  std::vector<Slot> _slots;  ///< a power of two, at most half of them used
  std::string _arena;
  std::vector<std::uint64_t> _ends;  ///< of each term's text in the arena
};

}  // namespace quorvex
