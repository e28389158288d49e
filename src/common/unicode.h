#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

// Text is UTF-8; a "character" that is counted is a code point. Functions that walk text accept any
// bytes: an ill-formed sequence counts as one U+FFFD.

/// Space separators and tab.
bool isWhitespace(char32_t character);
/// Also line feed, vertical tab, form feed, carriage return, next line, line and paragraph
/// separator.
bool isWhitespaceOrNewline(char32_t character);

/// The code point at `position`, which moves behind it. Only when position < text.size().
char32_t nextCharacter(std::string_view text, std::size_t& position);

/// Where the character begins to which the byte at `position` belongs; not before `first`. Only
/// when position < text.size().
inline std::size_t characterStart(std::string_view text, std::size_t position,
                                  std::size_t first = 0) {
  while (position > first && (static_cast<unsigned char>(text[position]) & 0xC0U) == 0x80U)
    --position;
  return position;
}

std::string_view trimWhitespace(std::string_view text);
std::string_view trimWhitespaceAndNewlines(std::string_view text);

bool isValidUtf8(std::string_view text);
/// The text itself when it is UTF-8, else a copy in which each ill-formed sequence is U+FFFD.
std::string validUtf8(std::string text);
std::size_t characterCount(std::string_view text);

/// Full lower-casing by the root locale. Throws std::length_error for a text of 2 GiB or more that
/// is not ASCII.
std::string lowercased(std::string_view text);
/// Full case folding, the form in which texts are compared without regard to case. Throws as above.
std::string caseFolded(std::string_view text);
/// Sorts by case-folded text, texts that differ only in case by their bytes.
void sortCaseInsensitively(std::vector<std::string>& texts);

}  // namespace quorvex
