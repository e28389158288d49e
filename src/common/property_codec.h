#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/bytes.h"
#include "common/value.h"

// Named values, as the full-text index stores its settings and the semantic index its attributes:
//
//   properties = count:varint *(key:text value)                  ; in byte order of the keys
//   value      = 1 text | 2 zigzag:varint | 3 count:varint *value ; arrays do not nest
//              | 4 data:text | 5 real:f64 | 6 boolean:u8

namespace quorvex {

/// Whether values of this kind can be encoded.
bool isEncodable(const Value& value);

/// Encodes properties; all must be encodable.
void appendProperties(std::string& out, const Dictionary& properties);

struct DecodedProperties {
  Dictionary properties;  ///< those before the first that is damaged or of an unknown kind
  bool isComplete = false;
};
DecodedProperties readProperties(ByteReader& reader);

}  // namespace quorvex
