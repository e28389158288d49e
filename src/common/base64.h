#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex {

/// RFC 4648, section 4, with padding and without line breaks.
std::string base64Encoded(std::string_view bytes);

/// Decodes base64 that arrives in pieces. White space is skipped, everything else outside the
/// alphabet is an error, and so is a last group without its padding.
class Base64Decoder {
 public:
  /// False on text that is not base64; the decoder is of no use then.
  bool append(std::string_view text);
  /// Whether the text may end here.
  bool complete() const { return _pending == 0; }
  /// The bytes so far; leaves the decoder as new.
  std::string take();

 private:
  bool appendSingly(unsigned char character);

  std::string _bytes;
  std::size_t _size = 0;     ///< of _bytes, which is kept larger while text arrives
  std::uint32_t _group = 0;  ///< the bits of the pending characters
  unsigned _pending = 0;     ///< characters of an unfinished group, padding included
  unsigned _padding = 0;
};

}  // namespace quorvex
