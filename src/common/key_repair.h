#pragma once

#include <set>
#include <string>

#include "common/value.h"

namespace quorvex {

/// Keys that a format cannot represent are repaired when written. Readers refuse duplicate keys, so
/// if several become equal, only one entry is written: the one whose key needed no repair, else the
/// first.
class RepairedKeys {
 public:
  explicit RepairedKeys(const Dictionary& dictionary) : _dictionary(dictionary) {}

  /// Whether to write the entry whose key became `repaired`.
  bool claim(const std::string& repaired) {
    return !_dictionary.contains(repaired) && _claimed.insert(repaired).second;
  }

 private:
  const Dictionary& _dictionary;
  std::set<std::string> _claimed;
};

}  // namespace quorvex
