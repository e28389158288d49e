#include "text/word_class.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

WordClass classOfLetter(UChar32 character) {
  // Symbols that only word boundaries treat as letters form no word: the slow path handles them.
  if (!isLetterOrDigit(static_cast<char32_t>(character))) return WordClass::complex;
  if (character >= 0x80) return WordClass::wide;
  return u_isUUppercase(character) ? WordClass::upper : WordClass::letter;
}

bool isCutByDictionary(UChar32 character) {
  UErrorCode status = U_ZERO_ERROR;
  return u_getIntPropertyValue(character, UCHAR_LINE_BREAK) == U_LB_COMPLEX_CONTEXT ||
         uscript_getScript(character, &status) == USCRIPT_HANGUL;
}

bool isOfChineseOrJapanese(UChar32 character) {
  UErrorCode status = U_ZERO_ERROR;
  const UScriptCode script = uscript_getScript(character, &status);
  return script == USCRIPT_HAN || script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
         u_getIntPropertyValue(character, UCHAR_WORD_BREAK) == U_WB_KATAKANA;
}

/// Of those that are no letters, some join others and some form no word.
WordClass classOfIdeograph(UChar32 character) {
  const int wordBreak = u_getIntPropertyValue(character, UCHAR_WORD_BREAK);
  const bool isPlain = (wordBreak == U_WB_OTHER || wordBreak == U_WB_KATAKANA) &&
                       isLetterOrDigit(static_cast<char32_t>(character)) &&
                       u_hasBinaryProperty(character, UCHAR_CHANGES_WHEN_CASEFOLDED) == 0;
  return isPlain ? WordClass::ideograph : WordClass::complex;
}

WordClass classOf(UChar32 character) {
  // ICU's root rules exclude the colons from MidLetter. Unlike UAX #29, they also treat "@" as a
  // letter, which would hide "override" in "@Override".
  if (character == ':' || character == 0xFE55 || character == 0xFF1A) return WordClass::other;
  if (character == '@' || (character < 0x80 && u_isUWhiteSpace(character))) return WordClass::cut;
  if (isCutByDictionary(character)) return WordClass::complex;
  if (isOfChineseOrJapanese(character)) return classOfIdeograph(character);
  switch (u_getIntPropertyValue(character, UCHAR_WORD_BREAK)) {
    case U_WB_ALETTER:
      return classOfLetter(character);
    case U_WB_NUMERIC:
      if (!u_isalnum(character)) return WordClass::complex;
      return character < 0x80 ? WordClass::digit : WordClass::complex;
    case U_WB_EXTENDNUMLET:
      return character < 0x80 ? WordClass::connector : WordClass::complex;
    case U_WB_MIDLETTER:
      return WordClass::midLetter;
    case U_WB_MIDNUM:
      return WordClass::midNumber;
    case U_WB_MIDNUMLET:
    case U_WB_SINGLE_QUOTE:
      return WordClass::midBoth;
    case U_WB_OTHER:
      return isLetterOrDigit(static_cast<char32_t>(character)) ? WordClass::complex
                                                               : WordClass::other;
    case U_WB_DOUBLE_QUOTE:
    case U_WB_CR:
    case U_WB_LF:
    case U_WB_NEWLINE:
    case U_WB_WSEGSPACE:
      return WordClass::other;
    default:
      return WordClass::complex;
  }
}

}  // namespace

WordClasses::WordClasses() {
  make(0);
}

void WordClasses::make(std::size_t block) const {
  const std::lock_guard lock(_mutex);
  if (_isMade[block].load(std::memory_order_relaxed)) return;
  for (std::size_t i = block * blockSize; i < (block + 1) * blockSize; ++i)
    _classes[i] = classOf(static_cast<UChar32>(i));
  _isMade[block].store(true, std::memory_order_release);
}

const WordClasses& wordClasses() {
  static const WordClasses classes;
  return classes;
}

}  // namespace quorvex
