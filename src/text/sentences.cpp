#include "text/sentences.h"

#include <algorithm>
#include <array>
#include <utility>

#include <unicode/uchar.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

constexpr char32_t paragraphSeparator = 0x2029;

/// Printable ASCII, which needs no decoding.
bool isPlain(char c) {
  return c > ' ' && c < 0x7F;
}
bool isPlainLetter(char c) {
  return c >= 'a' && c <= 'z';
}

bool isOpening(char32_t character) {
  const auto type = u_charType(static_cast<UChar32>(character));
  return type == U_START_PUNCTUATION || type == U_INITIAL_PUNCTUATION;
}

bool isClosing(char32_t character) {
  const auto type = u_charType(static_cast<UChar32>(character));
  return type == U_END_PUNCTUATION || type == U_FINAL_PUNCTUATION || character == '"' ||
         character == '\'';
}

/// Removes and returns the last character of a text.
char32_t takeLast(std::string_view& text) {
  const std::size_t start = characterStart(text, text.size() - 1);
  std::size_t position = start;
  const char32_t last = nextCharacter(text, position);
  text = text.substr(0, start);
  return last;
}

/// Returns the mark that ends a sentence, ignoring closing quotes and brackets.
char32_t endMark(std::string_view sentence) {
  while (!sentence.empty()) {
    const char32_t last = takeLast(sentence);
    if (!isClosing(last) || u_hasBinaryProperty(static_cast<UChar32>(last), UCHAR_S_TERM))
      return last;
  }
  return 0;
}

/// Whether `rest` continues the sentence: "f(a, ...);" goes on after the dots, "(of people!) and"
/// after its exclamation mark. The rules cover the former since Unicode 15.1; ICU may be older.
bool startsInside(std::string_view rest, char32_t endMark) {
  static constexpr std::u32string_view marks = U";,=)]}\u037E\uFE14\uFE54\uFF1B";
  std::size_t position = 0;
  const char32_t first = nextCharacter(rest, position);
  return marks.find(first) != marks.npos ||
         ((endMark == '!' || endMark == '?') && u_islower(static_cast<UChar32>(first)));
}

// Abbreviations, without their last full stop, that introduce the next word. Those that often end a
// sentence ("etc.", "Inc.") are excluded.

constexpr auto titles = std::to_array<std::string_view>({
    "Capt", "Col", "Dott", "Dr",     "Dra",  "Exmo", "Fr",   "Gen", "Gov",
    "Hon",  "Lt",  "Maj",  "Messrs", "Mlle", "Mme",  "Mr",   "Mrs", "Ms",
    "Prof", "Sgt", "Sig",  "Sr",     "Sra",  "Sen",  "Srta", "St",
});
constexpr auto lowerCaseAbbreviations = std::to_array<std::string_view>({
    "approx", "bzgl", "bzw",  "ca",  "cf",  "esp", "evtl", "excl", "ggf",  "incl",
    "inkl",   "ph.d", "resp", "sog", "vgl", "viz", "vs",   "zzgl", "напр", "см",
});
constexpr auto numberAbbreviations = std::to_array<std::string_view>({
    "abb", "apr", "art", "aug",  "bd",  "cap", "ch",  "dec", "eq",  "feb",
    "fig", "jan", "kap", "mar",  "no",  "nos", "nov", "nr",  "oct", "p",
    "pág", "pp",  "sec", "sept", "vol", "гл",  "рис", "стр",
});

/// Returns the only character of a text, else 0.
UChar32 onlyCharacter(std::string_view text) {
  std::size_t position = 0;
  const char32_t character = text.empty() ? U'\0' : nextCharacter(text, position);
  return position == text.size() ? static_cast<UChar32>(character) : 0;
}

/// Whether a word is a single letter, or several separated by full stops as in "e.g".
bool isLetter(std::string_view word) {
  const std::size_t stop = word.find('.');
  if (stop == word.npos) return u_isalpha(onlyCharacter(word)) != 0;
  return isLetter(word.substr(0, stop)) && isLetter(word.substr(stop + 1));
}

std::string_view lastWord(std::string_view text) {
  return text.substr(text.rfind(' ') + 1);
}

/// Whether the full stop at the end of a piece of text is only part of an abbreviation.
bool endsInAbbreviation(std::string_view piece, std::string_view rest) {
  // Longer words are not abbreviations; the limit bounds the work at every full stop.
  constexpr std::size_t longest = 32;
  if (!piece.ends_with('.')) return false;
  piece.remove_suffix(1);
  if (piece.size() > 2 * longest) piece.remove_prefix(piece.size() - 2 * longest);
  std::string_view word = lastWord(piece);
  if (word.size() > longest) return false;
  const std::string_view before = piece.substr(0, piece.size() - word.size());
  word.remove_prefix(std::min(word.find_first_not_of("([\"'"), word.size()));
  const std::string lower = lowercased(word);
  const auto isAmong = [](const auto& list, std::string_view text) {
    return std::ranges::find(list, text) != list.end();
  };
  if (isAmong(titles, word) || isAmong(lowerCaseAbbreviations, lower)) return true;
  if (isAmong(numberAbbreviations, lower)) return rest.front() >= '0' && rest.front() <= '9';
  if (!isLetter(word)) return false;
  // Times of day end sentences; other letters with full stops do not.
  if (word.find('.') != word.npos) return lower != "a.m" && lower != "p.m";
  // A single letter pairs with one on either side ("z. B."), or starts a list item or a name.
  const auto isInitial = [](std::string_view text) {
    return text.ends_with('.') && isLetter(text.substr(0, text.size() - 1));
  };
  return before.empty() || isInitial(lastWord(before.substr(0, before.size() - 1))) ||
         isInitial(rest.substr(0, rest.find(' ')));
}

using MakeIterator = icu::BreakIterator*(const icu::Locale&, UErrorCode&);

/// Returns the last boundary in a text at or before `limit`.
std::size_t lastBoundary(MakeIterator* make, std::string_view text, std::size_t limit) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> iterator(make(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return 0;
  UText opened = UTEXT_INITIALIZER;
  utext_openUTF8(&opened, text.data(), static_cast<std::int64_t>(text.size()), &status);
  iterator->setText(&opened, status);
  const auto end = static_cast<std::int32_t>(limit);
  const std::int32_t boundary = iterator->isBoundary(end) != 0 ? end : iterator->preceding(end);
  utext_close(&opened);
  return boundary == icu::BreakIterator::DONE ? 0 : static_cast<std::size_t>(boundary);
}

}  // namespace

std::vector<std::string> paragraphsOf(std::string_view text, std::span<const std::size_t> starts) {
  std::vector<std::string> paragraphs;
  std::string current;
  const auto finish = [&] {
    if (!current.empty()) paragraphs.push_back(std::exchange(current, {}));
  };
  bool isApart = false;
  for (std::size_t position = 0; position < text.size();) {
    if (!starts.empty() && position >= starts.front()) {
      finish();
      starts = starts.subspan(1);
      continue;
    }
    const std::size_t begin = position;
    const std::size_t limit = starts.empty() ? text.size() : starts.front();
    while (position < limit && isPlain(text[position]))
      ++position;
    const bool plain = position > begin;
    const char32_t character = plain ? U'a' : nextCharacter(text, position);
    if (character == paragraphSeparator) {
      finish();
    } else if (!plain && isWhitespaceOrNewline(character)) {
      isApart = true;
    } else {
      if (isApart && !current.empty()) current += ' ';
      isApart = false;
      current += character == 0xFFFD ? "\uFFFD" : text.substr(begin, position - begin);
    }
  }
  finish();
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
  _end = 0;
  if (_iterator == nullptr) return;
  UErrorCode status = U_ZERO_ERROR;
  utext_openUTF8(&_iteratorText, paragraph.data(), static_cast<std::int64_t>(paragraph.size()),
                 &status);
  _iterator->setText(&_iteratorText, status);
  _iterator->first();
}

bool SentenceSplitter::next(std::string_view& sentence) {
  if (_iterator == nullptr) return false;
  do {
    const std::size_t begin = _end;
    do {
      const std::int32_t end = _iterator->next();
      if (end == icu::BreakIterator::DONE) return false;
      _end = static_cast<std::size_t>(end);
      sentence = _paragraph.substr(begin, _end - begin);
    } while (goesOn(sentence));
    // An opening quote or bracket right after the end mark belongs to the next sentence.
    for (std::string_view before = sentence;
         _end < _paragraph.size() && !before.empty() && isOpening(takeLast(before));) {
      sentence = before;
      _end = begin + sentence.size();
    }
    sentence = trimWhitespaceAndNewlines(sentence);
  } while (sentence.empty());
  return true;
}

/// Whether the sentence continues where the rules end it.
bool SentenceSplitter::goesOn(std::string_view sentence) const {
  const std::string_view rest = _paragraph.substr(_end);
  if (rest.empty()) return false;
  sentence = trimWhitespaceAndNewlines(sentence);
  return startsInside(rest, endMark(sentence)) || endsInAbbreviation(sentence, rest);
}

std::string_view firstWords(std::string_view text, std::size_t most) {
  std::size_t limit = 0;
  for (std::size_t count = 0; count < most && limit < text.size(); ++count)
    nextCharacter(text, limit);
  if (limit == text.size()) return text;
  std::size_t end = lastBoundary(icu::BreakIterator::createWordInstance, text, limit);
  if (end == 0) end = lastBoundary(icu::BreakIterator::createCharacterInstance, text, limit);
  return trimWhitespaceAndNewlines(text.substr(0, end == 0 ? limit : end));
}

bool endsLikeSentence(std::string_view sentence) {
  return u_hasBinaryProperty(static_cast<UChar32>(endMark(sentence)), UCHAR_S_TERM) != 0;
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
