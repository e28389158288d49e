#pragma once

#include <string_view>

namespace quorvex::reader {

/// Takes one whole item off the front of CBOR (RFC 8949) and gives its bytes, without looking at
/// what they mean; empty when it is not complete or has no definite length. Costs a step for each
/// item inside and needs no memory.
std::string_view takeCborItem(std::string_view& rest);

}  // namespace quorvex::reader
