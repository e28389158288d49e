#include "text/word_segmenter.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <unicode/uchar.h>

#include "common/unicode.h"

namespace quorvex {

namespace {

/// Ideographs and kana begin here. What follows has few simple words.
constexpr char32_t complexBegin = 0x2E80;
// Small enough for the text of a zone to stay in the cache until its second scan.
constexpr std::size_t simpleWindow = std::size_t{16} << 10U;
constexpr std::size_t complexLimit = std::size_t{64} << 10U;
// Neighbouring complex stretches are joined up to this size: starting ICU on a text costs more than
// sending a few simple words through it.
constexpr std::size_t complexJoin = std::size_t{4} << 10U;
constexpr std::size_t icuJoin = 64;

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

/// Whether a text may have an ideograph or kana; Korean and all other scripts have none of these
/// bytes.
bool mayHaveRuns(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0xE3 && byte <= 0xE9;
  });
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
  _position = _simpleEnd = _complexBegin = _complexEnd = _icuBegin = _icuEnd = 0;
  _runEnds = 0;
}

bool WordSegmenter::next(Word& word) {
  for (;;) {
    if (_position < _simpleEnd && nextSimple(word)) return true;
    if (_runEnds != 0) return nextOfRun(word);
    if (_icuBegin < _icuEnd && nextOfIcu(word)) return true;
    if (_complexBegin < _complexEnd) {
      startPiece();
    } else if (!startZone()) {
      return false;
    }
  }
}

inline WordSegmenter::Character WordSegmenter::characterAt(std::size_t position) const {
  const auto byte = static_cast<unsigned char>(_text[position]);
  return byte < 0x80 ? Character{_classes.ofAscii(byte), 1, false} : wideCharacterAt(position);
}

WordSegmenter::Character WordSegmenter::wideCharacterAt(std::size_t position) const {
  std::size_t end = position;
  const char32_t character = nextCharacter(_text, end);
  // U+FFFD, which also represents ill-formed bytes, always ends a word.
  if (character == 0xFFFD) return {WordClass::other, end - position, false};
  const WordClass wordClass = _classes.of(character);
  return {wordClass, end - position, character >= complexBegin || wordClass == WordClass::complex};
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
    if (character.isComplex) return position;
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
      complex = complex || character.isComplex;
      position += character.size;
    }
  }
  if (position < limit) return std::max(end, begin + 1);
  return complex ? position : end;
}

void WordSegmenter::openComplexZone(std::size_t end) {
  _complexBegin = _simpleEnd;
  _complexEnd = end;
  _hasRuns = mayHaveRuns(_text.substr(_complexBegin, end - _complexBegin));
}

/// Opens the next piece of the complex zone. A piece begins and ends where no rule joins the
/// characters on both sides, whatever else there is.
void WordSegmenter::startPiece() {
  const std::size_t begin = _complexBegin;
  if (!_hasRuns) {
    openIcuPiece(_complexEnd);
  } else if (characterAt(begin).wordClass != WordClass::ideograph) {
    if (!startSimplePiece()) openIcuPiece(icuPieceEnd(begin));
  } else {
    std::size_t end = begin;
    while (end < _complexEnd && characterAt(end).wordClass == WordClass::ideograph)
      end += IdeographRuns::characterSize;
    const WordClass next = end < _complexEnd ? characterAt(end).wordClass : WordClass::other;
    const bool isShort =
        end - begin <= IdeographRuns::mostCharacters * IdeographRuns::characterSize;
    if (next == WordClass::complex || next == WordClass::connector) {
      openIcuPiece(icuPieceEnd(begin));
    } else if (!isShort || _iterator == nullptr) {
      openIcuPiece(end);
    } else {
      _runPosition = begin;
      _runEnds = _runs.wordEnds(_text.substr(begin, end - begin), *_iterator);
      _complexBegin = end;
    }
  }
}

/// Opens a piece of simple characters; false if the first characters may belong to a complex one.
bool WordSegmenter::startSimplePiece() {
  std::size_t end = _complexBegin;
  std::size_t lastOther = _complexBegin;
  WordClass previous = WordClass::other;
  for (Character character{}; end < _complexEnd; end += character.size) {
    character = characterAt(end);
    const WordClass found = character.wordClass;
    // A mark joins what it follows; a connector joins kana.
    if (found == WordClass::complex ||
        (found == WordClass::ideograph && previous == WordClass::connector)) {
      end = lastOther;
      break;
    }
    if (found == WordClass::ideograph) break;
    if (found == WordClass::other || found == WordClass::cut) lastOther = end;
    previous = found;
  }
  if (end == _complexBegin) return false;
  _position = _complexBegin;
  _simpleEnd = _complexBegin = end;
  return true;
}

/// Returns the end of a piece that has a complex character or a connector near `position`.
std::size_t WordSegmenter::icuPieceEnd(std::size_t position) const {
  WordClass previous = WordClass::other;
  bool isBehind = false;          // behind the first of them
  std::size_t end = _complexEnd;  // the last accepted one
  for (Character character{}; position < _complexEnd; position += character.size) {
    if (end < _complexEnd && position - end >= icuJoin) return end;
    character = characterAt(position);
    const WordClass found = character.wordClass;
    if (found == WordClass::complex) {
      isBehind = true;
      end = _complexEnd;
    } else if (found == WordClass::connector) {
      isBehind = true;
    } else if ((found == WordClass::other || found == WordClass::cut) && isBehind &&
               previous != WordClass::complex && end == _complexEnd) {
      end = position;
    }
    previous = found;
  }
  return end;
}

/// Also moves on to the zone's next piece.
void WordSegmenter::openIcuPiece(std::size_t end) {
  _icuBegin = _complexBegin;
  _icuEnd = _complexBegin = end;
  if (_iterator == nullptr) {
    _icuBegin = _icuEnd;
    return;
  }
  const std::string_view piece = _text.substr(_icuBegin, _icuEnd - _icuBegin);
  UErrorCode status = U_ZERO_ERROR;
  utext_openUTF8(&_iteratorText, piece.data(), static_cast<std::int64_t>(piece.size()), &status);
  _iterator->setText(&_iteratorText, status);
  _iterator->first();
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

bool WordSegmenter::nextOfRun(Word& word) {
  const auto characters = static_cast<unsigned>(std::countr_zero(_runEnds)) + 1;
  // In two steps: there may be as many as bits.
  _runEnds = _runEnds >> (characters - 1) >> 1U;
  word.begin = _runPosition;
  _runPosition += characters * IdeographRuns::characterSize;
  word.end = _runPosition;
  word.foldingNeeded = false;
  return true;
}

bool WordSegmenter::nextOfIcu(Word& word) {
  const std::string_view piece = _text.substr(_icuBegin, _icuEnd - _icuBegin);
  for (;;) {
    const std::int32_t begin = _iterator->current();
    const std::int32_t end = _iterator->next();
    if (end == icu::BreakIterator::DONE) break;
    const auto start = static_cast<std::size_t>(begin);
    const auto size = static_cast<std::size_t>(end - begin);
    if (!holdsLetterOrDigit(piece.substr(start, size))) continue;
    word = {_icuBegin + start, _icuBegin + start + size, true};
    return true;
  }
  _icuBegin = _icuEnd;
  return false;
}

}  // namespace quorvex
