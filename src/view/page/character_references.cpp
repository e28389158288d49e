#include "view/page/character_references.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <libxml/HTMLparser.h>
#include <unicode/utf8.h>

#include "view/page/html_elements.h"

namespace quorvex::view {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t largestCharacter = 0x10FFFF;
/// No name of a reference is longer.
constexpr std::size_t longestName = 32;
/// Of the names that need no semicolon.
constexpr std::size_t longestBareName = 6;

using Names = std::vector<std::pair<std::string_view, char32_t>>;

/// libxml2 knows the names but looks them up one after the other.
Names sortedNames() {
  constexpr unsigned behindLast = 0x2700;
  Names names = {{"AMP", '&'}, {"COPY", 0xA9}, {"GT", '>'},
                 {"LT", '<'},  {"QUOT", '"'},  {"REG", 0xAE}};
  for (unsigned character = 0; character < behindLast; ++character) {
    const htmlEntityDesc* entity = htmlEntityValueLookup(character);
    if (entity != nullptr) names.emplace_back(entity->name, character);
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// 0 if there is no such name.
char32_t characterNamed(std::string_view name) {
  static const Names names = sortedNames();
  const auto found = std::lower_bound(names.begin(), names.end(), std::pair(name, char32_t{0}));
  return found != names.end() && found->first == name ? found->second : 0;
}

/// Browsers read the numbers of C1 control characters as windows-1252.
char32_t characterNumbered(char32_t number) {
  static constexpr auto windows1252 = std::to_array<char16_t>(
      {0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
       0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
       0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178});
  constexpr char32_t first = 0x80;
  if (number >= first && number < first + windows1252.size()) return windows1252[number - first];
  const bool isSurrogate = number >= 0xD800 && number < 0xE000;
  return number == 0 || isSurrogate || number > largestCharacter ? replacement : number;
}

int digitOf(char byte) {
  if (isAsciiDigit(byte)) return byte - '0';
  if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
  return byte >= 'A' && byte <= 'F' ? byte - 'A' + 10 : 16;
}

/// `text` begins with "&#".
CharacterReference numericReference(std::string_view text) {
  const bool isHexadecimal = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const int base = isHexadecimal ? 16 : 10;
  const std::size_t begin = isHexadecimal ? 3 : 2;
  std::size_t end = begin;
  char32_t number = 0;
  for (; end < text.size() && digitOf(text[end]) < base; ++end) {
    number = number * static_cast<char32_t>(base) + static_cast<char32_t>(digitOf(text[end]));
    number = std::min<char32_t>(number, largestCharacter + 1);
  }
  if (end == begin) return {};
  if (end < text.size() && text[end] == ';') ++end;
  return {end, characterNumbered(number)};
}

/// The old names of Latin-1 characters count without a semicolon, even with letters behind them.
CharacterReference bareReference(std::string_view name) {
  constexpr char32_t behindLatin1 = 0x100;
  for (std::size_t size = std::min(name.size(), longestBareName); size > 1; --size) {
    const std::string_view bare = name.substr(0, size);
    const char32_t character = characterNamed(bare);
    if (character != 0 && character < behindLatin1 && bare != "apos") return {size + 1, character};
  }
  return {};
}

}  // namespace

CharacterReference characterReference(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position);
  if (rest.starts_with("&#")) return numericReference(rest);
  std::size_t end = 1;
  while (end < rest.size() && end <= longestName &&
         (isAsciiLetter(rest[end]) || isAsciiDigit(rest[end])))
    ++end;
  const std::string_view name = rest.substr(1, end - 1);
  const bool isClosed = !name.empty() && end < rest.size() && rest[end] == ';';
  if (!isClosed) return bareReference(name);
  const char32_t character = characterNamed(name);
  return {end + 1, character == 0 ? replacement : character};
}

void appendCharacter(char32_t character, std::string& text) {
  std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
  std::size_t size = 0;
  const auto code = static_cast<std::uint32_t>(character);
  U8_APPEND_UNSAFE(bytes.data(), size, code);
  text.append(reinterpret_cast<const char*>(bytes.data()), size);
}

}  // namespace quorvex::view
