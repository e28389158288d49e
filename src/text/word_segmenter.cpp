#include "text/word_segmenter.h"

#include <algorithm>
#include <cstring>

#include <unicode/uchar.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

// Small enough for the text of a zone to stay in the cache until its second scan.
constexpr std::size_t simpleWindow = std::size_t{16} << 10U;
constexpr std::size_t complexLimit = std::size_t{64} << 10U;
// Neighbouring complex stretches are joined up to this size: starting ICU on a text costs more than
// sending a few simple words through it.
constexpr std::size_t complexJoin = std::size_t{4} << 10U;

bool startsWord(WordClass c) {
  return c >= WordClass::letter && c <= WordClass::connector;
}
bool isLetter(WordClass c) {
  return c >= WordClass::letter && c <= WordClass::wide;
}
std::uint32_t bit(WordClass c) {
  return 1U << static_cast<std::uint32_t>(c);
}

constexpr std::size_t blockSize = sizeof(std::uint64_t);

bool isAsciiBlock(const char* bytes) {
  std::uint64_t block = 0;
  std::memcpy(&block, bytes, blockSize);
  return (block & 0x8080808080808080U) == 0;
}

bool holdsLetterOrDigit(std::string_view word) {
  for (std::size_t position = 0; position < word.size();) {
    if (isLetterOrDigit(nextCharacter(word, position))) return true;
  }
  return false;
}

}  // namespace

WordSegmenter::WordSegmenter() : _classes(wordClasses()) {
  UErrorCode status = U_ZERO_ERROR;
  _iterator.reset(icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) _iterator.reset();
}

WordSegmenter::~WordSegmenter() {
  _iterator.reset();
  utext_close(&_iteratorText);
}

void WordSegmenter::reset(std::string_view text) {
  _text = text;
  _position = _simpleEnd = _complexBegin = _complexEnd = 0;
  _iterating = false;
}

bool WordSegmenter::next(Word& word) {
  for (;;) {
    if (_position < _simpleEnd && nextSimple(word)) return true;
    if (_complexBegin < _complexEnd && nextComplex(word)) return true;
    if (!startZone()) return false;
  }
}

inline WordSegmenter::Character WordSegmenter::characterAt(std::size_t position) const {
  const auto byte = static_cast<unsigned char>(_text[position]);
  return byte < 0x80 ? Character{_classes.ofAscii(byte), 1} : wideCharacterAt(position);
}

WordSegmenter::Character WordSegmenter::wideCharacterAt(std::size_t position) const {
  std::size_t end = position;
  const char32_t character = nextCharacter(_text, end);
  // U+FFFD, which also represents ill-formed bytes, always ends a word.
  if (character == 0xFFFD) return {WordClass::other, end - position};
  return {_classes.of(character), end - position};
}

bool WordSegmenter::isCut(std::size_t position) const {
  const auto byte = static_cast<unsigned char>(_text[position]);
  return byte < 0x80 && _classes.ofAscii(byte) == WordClass::cut;
}

/// Returns the first complex character from `position` on, else an offset at or just past `limit`.
std::size_t WordSegmenter::skipSimple(std::size_t position, std::size_t limit) const {
  while (position < limit) {
    while (position + blockSize <= limit && isAsciiBlock(_text.data() + position)) {
      position += blockSize;
    }
    if (position == limit) break;
    const Character character = characterAt(position);
    if (character.wordClass == WordClass::complex) return position;
    position += character.size;
  }
  return position;
}

bool WordSegmenter::startZone() {
  const std::size_t begin = std::max(_simpleEnd, _complexEnd);
  if (begin == _text.size()) return false;
  _position = begin;
  for (std::size_t position = begin;;) {
    const std::size_t windowBegin = position;
    const std::size_t limit = position + std::min(simpleWindow, _text.size() - position);
    position = skipSimple(position, limit);
    const bool complex = position < limit;
    const std::size_t searched =
        complex ? position - std::min(position - begin, complexLimit / 2) : windowBegin;
    std::size_t cut = position;
    while (cut > searched && !isCut(cut - 1))
      --cut;
    if (complex) {
      _simpleEnd = cut;
      openComplexZone(complexZoneEnd(cut, position));
      return true;
    }
    if (position == _text.size() || cut > windowBegin) {
      _simpleEnd = position == _text.size() ? position : cut;
      return true;
    }
  }
}

/// Returns the end of a zone that starts at `begin` and is complex at `position`.
std::size_t WordSegmenter::complexZoneEnd(std::size_t begin, std::size_t position) const {
  const std::size_t limit = begin + std::min(complexLimit, _text.size() - begin);
  std::size_t end = begin;  // the last accepted cut
  bool complex = true;
  while (position < limit) {
    if (isCut(position)) {
      // ICU must not see text on both sides of "@", which it treats as a letter.
      if (complex) end = position + (_text[position] == '@' ? 0 : 1);
      if (!complex || _text[position] == '@' || end - begin >= complexJoin) break;
      complex = false;
      ++position;
    } else {
      const Character character = characterAt(position);
      complex = complex || character.wordClass == WordClass::complex;
      position += character.size;
    }
  }
  if (position < limit) return std::max(end, begin + 1);
  return complex ? position : end;
}

void WordSegmenter::openComplexZone(std::size_t end) {
  _complexBegin = _simpleEnd;
  _complexEnd = end;
  _iterating = false;
}

/// Whether the mid-word character `middle`, which ends at `position`, joins its neighbours.
bool WordSegmenter::joins(WordClass previous, WordClass middle, std::size_t position) const {
  if (position >= _simpleEnd) return false;
  if (isLetter(previous) && (middle == WordClass::midLetter || middle == WordClass::midBoth)) {
    return isLetter(characterAt(position).wordClass);
  }
  if (previous == WordClass::digit &&
      (middle == WordClass::midNumber || middle == WordClass::midBoth)) {
    return characterAt(position).wordClass == WordClass::digit;
  }
  return false;
}

/// Returns the end of the run of word characters at `position`. Adds their classes to `seen` and
/// stores the last one in `last`.
std::size_t WordSegmenter::runEnd(std::size_t position, std::uint32_t& seen,
                                  WordClass& last) const {
  while (position < _simpleEnd) {
    const Character character = characterAt(position);
    if (!startsWord(character.wordClass)) break;
    last = character.wordClass;
    seen |= bit(last);
    position += character.size;
  }
  return position;
}

bool WordSegmenter::nextSimple(Word& word) {
  std::size_t position = _position;
  while (position < _simpleEnd) {
    const Character character = characterAt(position);
    if (!startsWord(character.wordClass)) {
      position += character.size;
      continue;
    }
    WordClass last = WordClass::other;
    std::uint32_t seen = 0;
    word.begin = position;
    position = runEnd(position, seen, last);
    while (position < _simpleEnd) {
      const Character middle = characterAt(position);
      if (!joins(last, middle.wordClass, position + middle.size)) break;
      position = runEnd(position + middle.size, seen, last);
    }
    if (seen == bit(WordClass::connector)) continue;
    word.end = position;
    word.foldingNeeded = (seen & (bit(WordClass::upper) | bit(WordClass::wide))) != 0;
    _position = position;
    return true;
  }
  _position = _simpleEnd;
  return false;
}

bool WordSegmenter::nextComplex(Word& word) {
  const std::string_view zone = _text.substr(_complexBegin, _complexEnd - _complexBegin);
  if (_iterator != nullptr) {
    if (!_iterating) {
      UErrorCode status = U_ZERO_ERROR;
      utext_openUTF8(&_iteratorText, zone.data(), static_cast<std::int64_t>(zone.size()), &status);
      _iterator->setText(&_iteratorText, status);
      _iterator->first();
      _iterating = true;
    }
    for (;;) {
      const std::int32_t begin = _iterator->current();
      const std::int32_t end = _iterator->next();
      if (end == icu::BreakIterator::DONE) break;
      const auto start = static_cast<std::size_t>(begin);
      const auto size = static_cast<std::size_t>(end - begin);
      if (!holdsLetterOrDigit(zone.substr(start, size))) continue;
      word = {_complexBegin + start, _complexBegin + start + size, true};
      return true;
    }
  }
  _complexBegin = _complexEnd;
  return false;
}

}  // namespace quorvex
