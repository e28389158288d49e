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

/// What may appear anywhere in a tree that is read from an archive.
class AllowedKinds {
 public:
  /// Makes an object of its archived fields.
  using Decoder = std::function<Result<Value::Object>(Dictionary fields)>;

  /// Kinds by the names that kindName() gives them ("string", "array", …); no object.
  AllowedKinds(std::initializer_list<std::string_view> kinds);
  /// Every kind of value, but no object.
  static AllowedKinds values();

  enum class Place {
    anywhere,
    inObjects,  ///< only as part of another object
  };
  /// Objects of one more class. Not while another thread reads.
  AllowedKinds& allowClass(std::string_view className, Decoder decoder,
                           Place place = Place::anywhere);

  /// No more values than that in one tree. Each takes up to 64 bytes beside its text, and one byte
  /// of input can make one.
  AllowedKinds& limitNodes(std::uint64_t nodes) {
    _mostNodes = nodes;
    return *this;
  }
  std::uint64_t mostNodes() const { return _mostNodes; }

  bool allows(Value::Kind kind) const { return (_kinds >> static_cast<unsigned>(kind) & 1U) != 0; }
  /// Null when objects of the class are not allowed there.
  const Decoder* decoder(std::string_view className, bool inObject) const;

 private:
  AllowedKinds() = default;

  unsigned _kinds = 0;                                 ///< a bit for each Value::Kind
  std::uint64_t _mostNodes = std::uint64_t{1} << 27U;  ///< a tree of 8 GiB
  std::map<std::string, std::pair<Decoder, Place>, std::less<>> _classes;
};

}  // namespace quorvex
