#include "text/word_key.h"

#include <array>
#include <cstdint>

#include <unicode/uchar.h>

#include "common/unicode.h"
#include "text/identifiers.h"
#include "text/tokenizer.h"

namespace quorvex {

namespace {

/// Folding makes a term of a longer word too long for an index.
constexpr std::size_t mostBytesOfWord = 3 * maximumTermSize;

enum class Kind : std::uint8_t { joint, small, capital, letter, digit, mark };

constexpr std::array<Kind, 128> kindsOfAscii = []() {
  std::array<Kind, 128> kinds{};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const auto c = static_cast<char>(i);
    kinds[i] = isLower(c)   ? Kind::small
               : isUpper(c) ? Kind::capital
               : isDigit(c) ? Kind::digit
                            : Kind::joint;
  }
  return kinds;
}();

Kind kindOf(char32_t character) {
  if (character < kindsOfAscii.size()) return kindsOfAscii[character];
  switch (u_charType(static_cast<UChar32>(character))) {
    case U_LOWERCASE_LETTER:
      return Kind::small;
    case U_UPPERCASE_LETTER:
    case U_TITLECASE_LETTER:
      return Kind::capital;
    case U_MODIFIER_LETTER:
    case U_OTHER_LETTER:
    case U_LETTER_NUMBER:
      return Kind::letter;
    case U_DECIMAL_DIGIT_NUMBER:
    case U_OTHER_NUMBER:
      return Kind::digit;
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_COMBINING_SPACING_MARK:
    case U_FORMAT_CHAR:
      return Kind::mark;
    default:
      return Kind::joint;
  }
}

/// Finds the parts of a word one after the other.
class PartReader {
 public:
  explicit PartReader(std::string_view word) : _word(word) { advance(); }

  /// Moves to a part; false if there is none left.
  bool next() {
    _isBehindJoint = false;
    _isQualified = false;
    for (; _begin < _word.size() && _kind == Kind::joint; advance()) {
      _isBehindJoint = true;
      if (nameSeparators.find(_word[_begin]) != nameSeparators.npos) _isQualified = true;
    }
    return _begin < _word.size();
  }

  /// Reads the part moved to.
  void read(WordKey::Part& part) {
    part.begin = static_cast<std::uint32_t>(_begin);
    part.isNumber = _kind == Kind::digit;
    part.isBehindJoint = _isBehindJoint;
    part.isQualified = _isQualified;
    part.end = static_cast<std::uint32_t>(endOfPart());
  }

  /// Whether the last part has only small letters and digits of ASCII.
  bool isFolded() const { return _isFolded; }

 private:
  /// Moves to the next character.
  void advance() {
    _begin = _end;
    if (_begin == _word.size()) return;
    if (!isAsciiAt(_begin)) {
      _kind = kindOf(nextCharacter(_word, _end));
      return;
    }
    _kind = asciiKindAt(_end++);
    if (_kind != Kind::small && _kind != Kind::digit) return;
    while (_end < _word.size() && isAsciiAt(_end) && asciiKindAt(_end) == _kind)
      ++_end;
  }

  bool isAsciiAt(std::size_t position) const {
    return static_cast<unsigned char>(_word[position]) < kindsOfAscii.size();
  }
  Kind asciiKindAt(std::size_t position) const {
    return kindsOfAscii[static_cast<unsigned char>(_word[position])];
  }

  std::size_t endOfPart() {
    Kind previous = _kind;
    std::size_t lastCapital = _begin;
    std::size_t capitals = 0;  // that end what has been read
    _isFolded = true;
    for (;; advance()) {
      if (_begin == _word.size() || _kind == Kind::joint) return _begin;
      if (_kind == Kind::mark) {
        _isFolded = false;
        continue;
      }
      if ((_kind == Kind::digit) != (previous == Kind::digit)) return _begin;
      if (_kind == Kind::capital) {
        if (previous == Kind::small) return _begin;
        lastCapital = _begin;
        ++capitals;
      } else {
        if (capitals > 1 && _kind == Kind::small && !endsPlural()) return back(lastCapital);
        capitals = 0;
      }
      previous = _kind;
      if (_kind == Kind::capital || !isAsciiAt(_begin)) _isFolded = false;
    }
  }

  /// Whether the current letter is the small one of "URLs".
  bool endsPlural() const {
    if (_word.substr(_begin, _end - _begin) != "s") return false;
    std::size_t end = _end;
    return end == _word.size() || kindOf(nextCharacter(_word, end)) != Kind::small;
  }

  std::size_t back(std::size_t position) {
    _end = position;
    advance();
    return position;
  }

  std::string_view _word;
  // The current character, or run of small letters or digits of ASCII.
  std::size_t _begin = 0;
  std::size_t _end = 0;
  Kind _kind = Kind::joint;
  bool _isBehindJoint = false;
  bool _isQualified = false;
  bool _isFolded = false;
};

}  // namespace

bool readKey(std::string_view word, Umlauts umlauts, WordKey& key) {
  key.text.clear();
  key.parts.clear();
  if (word.size() > mostBytesOfWord) return false;
  bool differ = false;
  bool isBehindNumber = false;
  PartReader reader(word);
  while (reader.next()) {
    // One more than allowed shows that there are too many.
    if (key.parts.size() <= mostWordParts) key.parts.emplace_back();
    WordKey::Part& part = key.parts.back();
    reader.read(part);
    if (isBehindNumber && part.isNumber) key.text += '.';
    isBehindNumber = part.isNumber;
    part.keyBegin = static_cast<std::uint32_t>(key.text.size());
    const std::string_view text = word.substr(part.begin, part.end - part.begin);
    if (reader.isFolded()) {
      key.text += text;
    } else if (appendFolded(text, umlauts, key.text)) {
      differ = true;
    }
    part.keyEnd = static_cast<std::uint32_t>(key.text.size());
  }
  if (key.parts.size() > mostWordParts ||
      (word.size() > mostCharactersOfParts && characterCount(word) > mostCharactersOfParts)) {
    key.parts.clear();
  }
  return differ;
}

std::vector<std::string> keysOfWord(std::string_view word) {
  WordKey key;
  const bool differ = readKey(word, Umlauts::bare, key);
  if (key.text.empty()) return {};
  std::vector<std::string> keys = {key.text};
  if (differ) {
    readKey(word, Umlauts::digraph, key);
    keys.push_back(key.text);
  }
  return keys;
}

std::vector<std::string> partsOfWord(std::string_view word) {
  WordKey key;
  readKey(word, Umlauts::bare, key);
  std::vector<std::string> parts;
  parts.reserve(key.parts.size());
  for (const WordKey::Part& part : key.parts)
    parts.emplace_back(word.substr(part.begin, part.end - part.begin));
  return parts;
}

}  // namespace quorvex
