#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex::view {

struct CharacterReference {
  std::size_t size = 0;  ///< in bytes; 0 if the text is no reference
  char32_t character = 0;
};

/// Reads the reference that the "&" at `position` may begin. One with a name that is not known and
/// a semicolon is U+FFFD: browsers may know more names, so that its letters are no words either.
CharacterReference characterReference(std::string_view text, std::size_t position);

/// Appends a code point as UTF-8.
void appendCharacter(char32_t character, std::string& text);

}  // namespace quorvex::view
