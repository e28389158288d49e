#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

// Text is UTF-8; a "character" is a code point. Functions that walk text accept any bytes: an
// ill-formed sequence counts as one U+FFFD.

/// Of the Unicode library: another one may cut text into other words.
std::string_view unicodeLibraryVersion();

/// Space separators and tab.
bool isWhitespace(char32_t character);
/// Also line feed, vertical tab, form feed, carriage return, next line, line and paragraph
/// separator.
bool isWhitespaceOrNewline(char32_t character);

/// Letters, letter numbers and decimal digits.
bool isLetterOrDigit(char32_t character);

/// C0, DEL and C1, and the line and paragraph separators.
bool isControl(char32_t character);
/// Embeddings, overrides and isolates: they can reverse the rest of the line.
bool isDirectional(char32_t character);

/// Whether a character takes two columns of a terminal (UAX #11).
bool isWide(char32_t character);
/// Columns of a terminal: 0 for a mark on the character before it.
std::size_t displayWidth(char32_t character);

/// The same as nextCharacter(), which calls it for what is rare.
char32_t nextRareCharacter(std::string_view text, std::size_t& position);

/// Returns the code point at `position` and advances past it. Only if position < text.size().
inline char32_t nextCharacter(std::string_view text, std::size_t& position) {
  const auto byte = [&](std::size_t i) -> char32_t {
    return static_cast<unsigned char>(text[position + i]);
  };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80; };
  const std::size_t left = text.size() - position;
  const char32_t lead = byte(0);
  char32_t character = lead;
  // These first bytes put no further condition on the ones behind them.
  if (lead >= 0xC2 && lead <= 0xDF && left > 1 && continues(1)) {
    character = (lead & 0x1FU) << 6U | (byte(1) & 0x3FU);
    position += 2;
  } else if (lead >= 0xE1 && lead <= 0xEC && left > 2 && continues(1) && continues(2)) {
    character = (lead & 0xFU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU);
    position += 3;
  } else if (lead < 0x80) {
    ++position;
  } else {
    character = nextRareCharacter(text, position);
  }
  return character;
}

/// Returns the start of the character that contains the byte at `position`, at least `first`. Only
/// if position < text.size().
inline std::size_t characterStart(std::string_view text, std::size_t position,
                                  std::size_t first = 0) {
  while (position > first && (static_cast<unsigned char>(text[position]) & 0xC0U) == 0x80U)
    --position;
  return position;
}

std::string_view trimWhitespace(std::string_view text);
std::string_view trimWhitespaceAndNewlines(std::string_view text);

/// Appends a text with one blank for each run of white space, and none at the beginning of the
/// line, until the line has more bytes than `mostBytes`. A blank at its end may be left over.
void appendOnOneLine(std::string_view text, std::string& line,
                     std::size_t mostBytes = SIZE_MAX / 2);

bool isValidUtf8(std::string_view text);
/// Replaces each ill-formed sequence with U+FFFD.
std::string validUtf8(std::string text);
std::size_t characterCount(std::string_view text);

/// Applies full lower-casing by the root locale. Throws std::length_error for non-ASCII text of
/// 2 GiB or more.
std::string lowercased(std::string_view text);
/// Applies full case folding, for case-insensitive comparison. Throws as above.
std::string caseFolded(std::string_view text);
/// Sorts by case-folded text, then by bytes.
void sortCaseInsensitively(std::vector<std::string>& texts);

}  // namespace quorvex
