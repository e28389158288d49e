#pragma once

#include <set>
#include <string>

#include "common/value.h"

namespace quorvex {

/// Keys whose text a format cannot hold are written repaired. Readers refuse a key that stands
/// twice, so where several become equal, only one entry is written: the one whose key needed no
/// repair, else the first.
class RepairedKeys {
 public:
  explicit RepairedKeys(const Dictionary& dictionary) : _dictionary(dictionary) {}

  /// Whether the entry whose key became `repaired` is to be written.
  bool claim(const std::string& repaired) {
    return !_dictionary.contains(repaired) && _claimed.insert(repaired).second;
  }

 private:
  const Dictionary& _dictionary;
  std::set<std::string> _claimed;
};

}  // namespace quorvex
