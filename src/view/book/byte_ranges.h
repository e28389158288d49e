#pragma once

#include <cstdint>
#include <string_view>

namespace quorvex::view {

/// Which bytes of a file a Range header asks for.
struct ByteRange {
  enum class Kind { whole, part, unsatisfiable };
  Kind kind = Kind::whole;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// Several ranges, other units and malformed headers ask for the whole, as a server may ignore
/// them (RFC 9110, 14.2).
ByteRange requestedRange(std::string_view header, std::uint64_t fileSize);

}  // namespace quorvex::view
