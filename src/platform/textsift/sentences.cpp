#include "platform/textsift/sentences.h"

#include <unicode/uchar.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

/// White space between two words, as it was.
struct Gap {
  std::size_t lineBreaks = 0;
  bool startsBlank = false;
  bool endsBlank = false;
  bool empty = true;

  void add(char32_t character) {
    const bool blank = isWhitespace(character);
    if (empty) startsBlank = blank;
    endsBlank = blank;
    empty = false;
    if (!blank) ++lineBreaks;
  }
  bool endsParagraph() const {
    return lineBreaks > 1 || (lineBreaks == 1 && startsBlank && endsBlank);
  }
};

/// Printing ASCII, which needs no closer look.
bool isPlain(char c) {
  return c > ' ' && c < 0x7F;
}
bool isPlainLetter(char c) {
  return c >= 'a' && c <= 'z';
}

/// No sentence starts so: "f(a, ...);" goes on after its full stops. The rules know it since
/// Unicode 15.1, and ICU may be older.
bool startsWithSemicolon(std::string_view text) {
  static constexpr std::u32string_view semicolons = U";\u037E\uFE14\uFE54\uFF1B";
  std::size_t position = 0;
  return !text.empty() && semicolons.find(nextCharacter(text, position)) != semicolons.npos;
}

}  // namespace

std::vector<std::string> paragraphsOf(std::string_view text) {
  std::vector<std::string> paragraphs;
  std::string current;
  Gap gap;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t begin = position;
    while (position < text.size() && isPlain(text[position]))
      ++position;
    const bool plain = position > begin;
    const char32_t character = plain ? U'a' : nextCharacter(text, position);
    if (!plain && isWhitespaceOrNewline(character)) {
      gap.add(character);
      continue;
    }
    if (gap.endsParagraph() && !current.empty()) {
      paragraphs.push_back(std::move(current));
      current.clear();
    }
    if (!gap.empty && !current.empty()) current += ' ';
    gap = {};
    current += character == 0xFFFD ? "\uFFFD" : text.substr(begin, position - begin);
  }
  if (!current.empty()) paragraphs.push_back(std::move(current));
  return paragraphs;
}

SentenceSplitter::SentenceSplitter() {
  UErrorCode status = U_ZERO_ERROR;
  _iterator.reset(icu::BreakIterator::createSentenceInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) _iterator.reset();
}

SentenceSplitter::~SentenceSplitter() {
  _iterator.reset();
  utext_close(&_iteratorText);
}

void SentenceSplitter::reset(std::string_view paragraph) {
  _paragraph = paragraph;
  if (_iterator == nullptr) return;
  UErrorCode status = U_ZERO_ERROR;
  utext_openUTF8(&_iteratorText, paragraph.data(), static_cast<std::int64_t>(paragraph.size()),
                 &status);
  _iterator->setText(&_iteratorText, status);
  _iterator->first();
}

bool SentenceSplitter::next(std::string_view& sentence) {
  if (_iterator == nullptr) return false;
  for (;;) {
    const std::int32_t begin = _iterator->current();
    std::int32_t end = _iterator->next();
    if (end == icu::BreakIterator::DONE) return false;
    while (startsWithSemicolon(_paragraph.substr(static_cast<std::size_t>(end))))
      end = _iterator->next();
    sentence = trimWhitespaceAndNewlines(
        _paragraph.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
    if (!sentence.empty()) return true;
  }
}

bool endsLikeSentence(std::string_view sentence) {
  while (!sentence.empty()) {
    const std::size_t start = characterStart(sentence, sentence.size() - 1);
    std::size_t position = start;
    const auto last = static_cast<UChar32>(nextCharacter(sentence, position));
    if (u_hasBinaryProperty(last, UCHAR_S_TERM)) return true;
    const auto type = u_charType(last);
    const bool closes =
        type == U_END_PUNCTUATION || type == U_FINAL_PUNCTUATION || last == '"' || last == '\'';
    if (!closes) return false;
    sentence = sentence.substr(0, start);
  }
  return false;
}

std::size_t separatorCount(std::string_view sentence) {
  static constexpr std::u32string_view separators =
      U"|/\\<>\u00A6\u00B7\u00AB\u00BB\u2022\u2039\u203A\u2190\u2192";
  std::size_t count = 0;
  for (std::size_t position = 0; position < sentence.size();) {
    if (isPlainLetter(sentence[position])) {
      ++position;
    } else if (separators.find(nextCharacter(sentence, position)) != separators.npos) {
      ++count;
    }
  }
  return count;
}

}  // namespace quorvex
