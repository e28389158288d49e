#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// Gives distinct terms dense numbers in the order in which they first appear. Open addressing over
/// one arena of text; hashed with a random seed, so that no page can aim at collisions.
class TermTable {
 public:
  TermTable();

  /// The number of `term`, a new one when it is not there yet.
  std::uint32_t insert(std::string_view term);

  std::uint32_t size() const { return static_cast<std::uint32_t>(_ends.size()); }
  /// Lives until the next insert().
  std::string_view term(std::uint32_t number) const;

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t numberPlusOne = 0;  ///< 0: free
  };

  std::uint64_t hashOf(std::string_view term) const;
  void grow();

  std::uint64_t _seed;
  std::vector<Slot> _slots;  ///< a power of two, at most half of them taken
  std::string _arena;
  std::vector<std::uint64_t> _ends;  ///< of each term in the arena
};

}  // namespace quorvex
