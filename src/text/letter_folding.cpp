#include "text/letter_folding.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include "common/unicode.h"
#include "text/chinese_variants.h"
#include "text/identifiers.h"

namespace quorvex {

namespace {

void append(char32_t character, std::string& text) {
  const auto byte = [&](char32_t bits) { text += static_cast<char>(bits); };
  if (character < 0x80) {
    byte(character);
    return;
  }
  if (character < 0x800) {
    byte(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      byte(0xE0 | character >> 12);
    } else {
      byte(0xF0 | character >> 18);
      byte(0x80 | (character >> 12 & 0x3F));
    }
    byte(0x80 | (character >> 6 & 0x3F));
  }
  byte(0x80 | (character & 0x3F));
}

constexpr bool isWithin(char32_t character, char32_t first, char32_t last) {
  return character >= first && character <= last;
}

struct Replacement {
  char32_t letter;
  std::string_view bare;
  std::string_view digraph = bare;
};

constexpr std::array<Replacement, 15> replacements = {{
    {U'ä', "a", "ae"},
    {U'å', "a", "aa"},
    {U'æ', "ae"},
    {U'ð', "d"},
    {U'ö', "o", "oe"},
    {U'ø', "o", "oe"},
    {U'ü', "u", "ue"},
    {U'þ', "th"},
    {U'đ', "d"},
    {U'ħ', "h"},
    {U'ı', "i"},
    {U'ł', "l"},
    {U'œ', "oe"},
    {U'ŧ', "t"},
    {U'ǿ', "o", "oe"},
}};

bool isLatinOrGreek(char32_t character) {
  return isWithin(character, 0xC0, 0x24F) || isWithin(character, 0x1E00, 0x1FFF) ||
         isWithin(character, 0x370, 0x3FF);
}

bool isOptionalMark(char32_t character) {
  return isWithin(character, 0x300, 0x36F) ||   // of Latin, Greek and Cyrillic
         (isWithin(character, 0x591, 0x5C7) &&  // Hebrew points, with some punctuation between
          u_charType(static_cast<UChar32>(character)) == U_NON_SPACING_MARK) ||
         isWithin(character, 0x610, 0x61A) ||  // Arabic, as all below
         character == 0x640 ||                 // tatweel
         isWithin(character, 0x64B, 0x655) || character == 0x670;
}

char32_t withoutMarks(char32_t character) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* const canonical = icu::Normalizer2::getNFDInstance(status);
  icu::UnicodeString decomposed;
  if (U_FAILURE(status) ||
      !canonical->getDecomposition(static_cast<UChar32>(character), decomposed)) {
    return character;
  }
  return static_cast<char32_t>(decomposed.char32At(0));
}

char32_t cyrillicLetter(char32_t character) {
  switch (character) {
    case U'\u0450':
    case U'ё':
      return U'е';
    case U'\u045D':
      return U'и';
    default:
      return character;
  }
}

char32_t arabicLetter(char32_t character) {
  const bool isAlif = character == 0x622 || character == 0x623 || character == 0x625;
  return isAlif ? 0x627 : character;
}

char32_t largeKana(char32_t character) {
  // Katakana has the same order.
  const char32_t shift = character >= 0x30A0 ? 0x60 : 0;
  switch (character - shift) {
    case U'ぁ':
    case U'ぃ':
    case U'ぅ':
    case U'ぇ':
    case U'ぉ':
    case U'っ':
    case U'ゃ':
    case U'ゅ':
    case U'ょ':
    case U'ゎ':
      return character + 1;
    case U'\u3095':
      return U'か' + shift;
    case U'\u3096':
      return U'け' + shift;
    default:
      return character;
  }
}

/// Appends a character of a normalized word.
bool appendFolded(char32_t character, Umlauts umlauts, std::string& folded) {
  constexpr char32_t longVowelMark = 0x30FC;
  if (character == longVowelMark || isOptionalMark(character)) return false;
  if (isLatinOrGreek(character)) {
    const auto* const found =
        std::ranges::lower_bound(replacements, character, {}, &Replacement::letter);
    if (found == replacements.end() || found->letter != character) {
      append(withoutMarks(character), folded);
      return false;
    }
    folded += umlauts == Umlauts::bare ? found->bare : found->digraph;
    return found->bare != found->digraph;
  }
  if (isWithin(character, 0x400, 0x45F)) {
    character = cyrillicLetter(character);
  } else if (isWithin(character, 0x600, 0x6FF)) {
    character = arabicLetter(character);
  } else if (isWithin(character, 0x3041, 0x30FF)) {
    character = largeKana(character);
  } else if (isWithin(character, firstHan, endOfHan - 1)) {
    character = simplifiedHan()[character - firstHan];
  }
  append(character, folded);
  return false;
}

/// Case-folds a word and composes its characters as far as possible, where it is not so yet.
std::string_view normalized(std::string_view word, std::string& buffer) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* const normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
  if (U_FAILURE(status)) return word;
  const icu::StringPiece piece(word.data(), static_cast<std::int32_t>(word.size()));
  if (normalizer->isNormalizedUTF8(piece, status) || U_FAILURE(status)) return word;
  icu::StringByteSink<std::string> sink(&buffer);
  normalizer->normalizeUTF8(0, piece, sink, nullptr, status);
  return U_SUCCESS(status) ? buffer : word;
}

/// Appends an ASCII word; false when it has other characters.
bool appendAscii(std::string_view word, std::string& folded) {
  const std::size_t begin = folded.size();
  folded += word;
  unsigned char seen = 0;
  for (std::size_t i = begin; i < folded.size(); ++i) {
    const auto byte = static_cast<unsigned char>(folded[i]);
    seen |= byte;
    if (isUpper(folded[i])) folded[i] = static_cast<char>(byte + ('a' - 'A'));
  }
  if (seen < 0x80) return true;
  folded.resize(begin);
  return false;
}

}  // namespace

bool appendFolded(std::string_view word, Umlauts umlauts, std::string& folded) {
  if (appendAscii(word, folded)) return false;
  std::string buffer;
  const std::string_view text = normalized(word, buffer);
  bool differ = false;
  for (std::size_t position = 0; position < text.size();)
    differ = appendFolded(nextCharacter(text, position), umlauts, folded) || differ;
  return differ;
}

}  // namespace quorvex
