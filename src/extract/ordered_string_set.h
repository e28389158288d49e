#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>

namespace quorvex {

/// Unique strings in the order of their first insertion, compared exactly.
class OrderedStringSet {
 public:
  OrderedStringSet() = default;
  // The lookup table refers to the strings in place; moving a deque keeps them there.
  // NOLINTBEGIN(performance-noexcept-move-constructor): it may allocate
  OrderedStringSet(OrderedStringSet&&) = default;
  OrderedStringSet& operator=(OrderedStringSet&&) = default;
  // NOLINTEND(performance-noexcept-move-constructor)
  OrderedStringSet(const OrderedStringSet&) = delete;
  OrderedStringSet& operator=(const OrderedStringSet&) = delete;
  ~OrderedStringSet() = default;

  void add(std::string_view text) {
    if (contains(text)) return;
    const std::string& kept = _strings.emplace_back(text);
    // For few strings, linear search is faster than hashing.
    if (_strings.size() > walked) _later.insert(kept);
  }

  bool contains(std::string_view text) const {
    for (std::size_t i = 0; i < _strings.size() && i < walked; ++i) {
      if (_strings[i] == text) return true;
    }
    return _later.contains(text);
  }

  bool empty() const { return _strings.empty(); }
  std::size_t size() const { return _strings.size(); }
  const std::string& front() const { return _strings.front(); }
  auto begin() const { return _strings.begin(); }
  auto end() const { return _strings.end(); }

 private:
  static constexpr std::size_t walked = 10;

  std::deque<std::string> _strings;
  std::unordered_set<std::string_view> _later;  ///< the strings after the first `walked`
};

}  // namespace quorvex
