#pragma once

#include <cstddef>
#include <string_view>

namespace quorvex {

/// Between the parts of a name.
inline constexpr std::string_view nameSeparators = ".:#/\\> ";

// Of bytes; those beyond ASCII count as letters.
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
constexpr bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}
constexpr bool isLetter(char c) {
  return isLower(c) || isUpper(c) || static_cast<unsigned char>(c) >= 0x80;
}
constexpr bool isLetterOrDigitByte(char c) {
  return isLetter(c) || isDigit(c);
}
/// Whether a byte belongs to an identifier.
constexpr bool isIdentifierByte(char c) {
  return isLetterOrDigitByte(c) || c == '_';
}

/// Whether a word looks like a name of program code and not like a word of a language: it has
/// other characters than letters, or capitals behind the first letter.
bool looksLikeCode(std::string_view word);

/// Returns the number of bytes before the last part of a name: "asyncio." in "asyncio.gather".
std::size_t qualifierSize(std::string_view name);

/// Finds an identifier in a text, not as a part of another one.
bool holdsIdentifier(std::string_view text, std::string_view identifier);

}  // namespace quorvex
