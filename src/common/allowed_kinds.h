#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// What may appear anywhere in a tree read from an archive.
class AllowedKinds {
 public:
  /// Creates an object from its archived fields.
  using Decoder = std::function<Result<Value::Object>(Dictionary fields)>;

  /// Allows kinds by their kindName() ("string", "array", …); no objects.
  AllowedKinds(std::initializer_list<std::string_view> kinds);
  /// Allows every kind of value, no objects.
  static AllowedKinds values();

  enum class Place {
    anywhere,
    inObjects,  ///< only as part of another object
  };
  /// Allows one more class of objects. Not while another thread reads.
  AllowedKinds& allowClass(std::string_view className, Decoder decoder,
                           Place place = Place::anywhere);

  /// Limits the values in one tree. Each takes up to 64 bytes plus its text, and one byte of input
  /// can create one.
  AllowedKinds& limitNodes(std::uint64_t nodes) {
    _mostNodes = nodes;
    return *this;
  }
  std::uint64_t mostNodes() const { return _mostNodes; }

  bool allows(Value::Kind kind) const { return (_kinds >> static_cast<unsigned>(kind) & 1U) != 0; }
  /// Null if objects of the class are not allowed there.
  const Decoder* decoder(std::string_view className, bool inObject) const;

 private:
  AllowedKinds() = default;

  unsigned _kinds = 0;                                 ///< one bit per Value::Kind
  std::uint64_t _mostNodes = std::uint64_t{1} << 27U;  ///< a tree of 8 GiB
  std::map<std::string, std::pair<Decoder, Place>, std::less<>> _classes;
};

}  // namespace quorvex
