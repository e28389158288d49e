#include "common/unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unicode/uvernum.h>

namespace quorvex {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr std::string_view replacementUtf8 = "\xEF\xBF\xBD";

/// Returns the end of the ASCII run at `position`. Texts are mostly ASCII, so eight bytes are
/// checked at once.
std::size_t skipAscii(std::string_view text, std::size_t position) {
  for (; text.size() - position >= sizeof(std::uint64_t); position += sizeof(std::uint64_t)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data() + position, sizeof bytes);
    if ((bytes & 0x8080808080808080U) != 0) break;
  }
  while (position < text.size() && static_cast<unsigned char>(text[position]) < 0x80)
    ++position;
  return position;
}

bool isAscii(std::string_view text) {
  return skipAscii(text, 0) == text.size();
}

template <typename Predicate>
std::string_view trim(std::string_view text, Predicate isBlank) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t next = begin;
    if (!isBlank(nextCharacter(text, next))) break;
    begin = next;
  }
  std::size_t end = text.size();
  while (end > begin) {
    const std::size_t start = characterStart(text, end - 1, begin);
    std::size_t next = start;
    if (!isBlank(nextCharacter(text, next)) || next != end) break;
    end = start;
  }
  return text.substr(begin, end - begin);
}

using CaseMapping = void (*)(std::uint32_t options, icu::StringPiece source, icu::ByteSink& sink,
                             UErrorCode& status);

std::string mapCase(std::string_view text, char (*mapAscii)(char), CaseMapping mapUnicode) {
  std::string mapped;
  if (isAscii(text)) {
    mapped.resize(text.size());
    std::ranges::transform(text, mapped.begin(), mapAscii);
    return mapped;
  }
  if (text.size() > INT32_MAX) throw std::length_error("Text too long for ICU");
  mapped.reserve(text.size());
  icu::StringByteSink<std::string> sink(&mapped);
  UErrorCode status = U_ZERO_ERROR;
  mapUnicode(0, icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink,
             status);
  return U_SUCCESS(status) ? mapped : std::string(text);
}

char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

}  // namespace

std::string_view unicodeLibraryVersion() {
  return U_ICU_VERSION;
}

bool isWhitespace(char32_t character) {
  if (character < 0x80) return character == ' ' || character == '\t';
  return u_charType(static_cast<UChar32>(character)) == U_SPACE_SEPARATOR;
}

bool isWhitespaceOrNewline(char32_t character) {
  if (character < 0x80) return character == ' ' || (character >= '\t' && character <= '\r');
  return character == 0x85 || character == 0x2028 || character == 0x2029 || isWhitespace(character);
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x2028 ||
         character == 0x2029;
}

bool isDirectional(char32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

bool isWide(char32_t character) {
  const auto width = u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

std::size_t displayWidth(char32_t character) {
  const auto type = u_charType(static_cast<UChar32>(character));
  const bool isMark =
      type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR;
  return isMark ? 0 : isWide(character) ? 2 : 1;
}

bool isLetterOrDigit(char32_t character) {
  const auto code = static_cast<UChar32>(character);
  return u_isalnum(code) || u_charType(code) == U_LETTER_NUMBER;
}

char32_t nextRareCharacter(std::string_view text, std::size_t& position) {
  // A sequence has at most four bytes, so a window keeps ICU's 32-bit offsets safe on any text.
  const std::string_view window = text.substr(position, 4);
  std::int32_t offset = 0;
  UChar32 character = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(window.data());
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // inside the macro
  // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): inside the macro too
  U8_NEXT_OR_FFFD(bytes, offset, static_cast<std::int32_t>(window.size()), character);
#pragma GCC diagnostic pop
  position += static_cast<std::size_t>(offset);
  return static_cast<char32_t>(character);
}

std::string_view trimWhitespace(std::string_view text) {
  return trim(text, isWhitespace);
}

std::string_view trimWhitespaceAndNewlines(std::string_view text) {
  return trim(text, isWhitespaceOrNewline);
}

void appendOnOneLine(std::string_view text, std::string& line, std::size_t mostBytes) {
  for (std::size_t position = 0; position < text.size() && line.size() <= mostBytes;) {
    // Most characters are ASCII and no blanks.
    const std::size_t run = position;
    const std::size_t end = run + std::min(text.size() - run, mostBytes + 1 - line.size());
    while (position < end && text[position] > ' ' && text[position] < '\x7F')
      ++position;
    line += text.substr(run, position - run);
    if (position == end) continue;
    const std::size_t begin = position;
    if (!isWhitespaceOrNewline(nextCharacter(text, position))) {
      line += text.substr(begin, position - begin);
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
}

bool isValidUtf8(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    position = skipAscii(text, position);
    if (position == text.size()) break;
    const std::size_t start = position;
    if (nextCharacter(text, position) == replacementCharacter &&
        text.substr(start, position - start) != replacementUtf8) {
      return false;
    }
  }
  return true;
}

std::string validUtf8(std::string text) {
  if (isValidUtf8(text)) return text;
  std::string repaired;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const bool replaced = nextCharacter(text, position) == replacementCharacter;
    repaired += replaced ? replacementUtf8 : std::string_view(text).substr(start, position - start);
  }
  return repaired;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t end = skipAscii(text, position);
    count += end - position;
    position = end;
    if (position == text.size()) break;
    nextCharacter(text, position);
    ++count;
  }
  return count;
}

std::string lowercased(std::string_view text) {
  return mapCase(
      text, asciiLower,
      [](std::uint32_t options, icu::StringPiece source, icu::ByteSink& sink, UErrorCode& status) {
        icu::CaseMap::utf8ToLower("", options, source, sink, nullptr, status);
      });
}

std::string caseFolded(std::string_view text) {
  return mapCase(
      text, asciiLower,
      [](std::uint32_t options, icu::StringPiece source, icu::ByteSink& sink, UErrorCode& status) {
        icu::CaseMap::utf8Fold(options, source, sink, nullptr, status);
      });
}

void sortCaseInsensitively(std::vector<std::string>& texts) {
  std::vector<std::pair<std::string, std::string>> keyed;
  keyed.reserve(texts.size());
  for (std::string& text : texts)
    keyed.emplace_back(caseFolded(text), std::move(text));
  std::ranges::sort(keyed);
  std::ranges::transform(keyed, texts.begin(), [](auto& entry) { return std::move(entry.second); });
}

}  // namespace quorvex
