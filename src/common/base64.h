#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex {

/// RFC 4648, section 4, with padding and without line breaks.
std::string base64Encoded(std::string_view bytes);

/// Decodes base64 in pieces. White space is skipped; anything else outside the alphabet and a last
/// group without padding are errors.
class Base64Decoder {
 public:
  /// False on text that is not base64; the decoder is then unusable.
  bool append(std::string_view text);
  /// Whether the text may end here.
  bool complete() const { return _pending == 0; }
  /// Returns the bytes so far; resets the decoder.
  std::string take();

 private:
  bool appendSingly(unsigned char character);

  std::string _bytes;
  std::size_t _size = 0;     ///< decoded so far; _bytes has spare room
  std::uint32_t _group = 0;  ///< the bits of the pending characters
  unsigned _pending = 0;     ///< characters of an unfinished group, padding included
  unsigned _padding = 0;
};

}  // namespace quorvex
