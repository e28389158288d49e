#include "fulltext/searching/word_beginnings.h"

#include <algorithm>

#include "common/unicode.h"
#include "text/letter_folding.h"

namespace quorvex::textsearch {

namespace {

/// Bounds the time of one walk.
constexpr unsigned mostLooks = 2000;
constexpr std::size_t mostFound = 8;
constexpr std::size_t mostCharacters = 32;
constexpr std::string_view firstBeyondAscii = "\x80";
/// Behind a character: comes after all that begins with it.
constexpr char behindAll = '\xFF';

std::vector<std::string_view> charactersOf(std::string_view text) {
  std::vector<std::string_view> characters;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t begin = position;
    nextCharacter(text, position);
    characters.push_back(text.substr(begin, position - begin));
  }
  return characters;
}

std::string unmarkedLetter(std::string_view character) {
  std::string folded;
  appendFolded(character, Umlauts::bare, folded);
  return folded;
}

void addIfNew(std::string beginning, std::vector<std::string>& found) {
  if (std::ranges::find(found, beginning) == found.end()) found.push_back(std::move(beginning));
}

}  // namespace

bool WordBeginnings::has(std::string_view beginning) {
  return _cursor.seek(beginning) && _cursor.term().starts_with(beginning);
}

/// Returns the characters behind a beginning, in order, none before `from`.
std::vector<std::string> WordBeginnings::nextCharacters(const std::string& beginning,
                                                        std::string_view from) {
  std::vector<std::string> characters;
  std::string wanted = beginning;
  wanted += from;
  while (_looksLeft > 0) {
    --_looksLeft;
    if (!_cursor.seek(wanted) || !_cursor.term().starts_with(beginning)) break;
    std::size_t end = beginning.size();
    wanted = beginning;
    if (end == _cursor.term().size()) {
      wanted += '\1';
      continue;
    }
    nextCharacter(_cursor.term(), end);
    characters.emplace_back(_cursor.term().substr(beginning.size(), end - beginning.size()));
    wanted += characters.back();
    wanted += behindAll;
  }
  return characters;
}

void WordBeginnings::walk(std::string& beginning, Characters rest,
                          std::vector<std::string>& found) {
  if (found.size() == mostFound) return;
  if (rest.empty()) return addIfNew(beginning, found);
  const std::size_t size = beginning.size();
  const auto goOn = [&](std::string_view character) {
    if (_looksLeft == 0) return;
    --_looksLeft;
    beginning += character;
    if (has(beginning)) walk(beginning, rest.subspan(1), found);
    beginning.resize(size);
  };
  goOn(rest.front());
  const std::string plain = unmarkedLetter(rest.front());
  if (plain.size() != 1) return;
  if (plain != rest.front()) goOn(plain);
  for (const std::string& character : nextCharacters(beginning, firstBeyondAscii)) {
    if (character != rest.front() && unmarkedLetter(character) == plain) goOn(character);
  }
}

std::vector<std::string> WordBeginnings::unmarked(std::string_view word) {
  std::vector<std::string> found;
  const std::vector<std::string_view> characters = charactersOf(word);
  if (characters.size() > mostCharacters) return found;
  _looksLeft = mostLooks;
  std::string beginning;
  walk(beginning, characters, found);
  std::erase(found, word);
  return found;
}

std::vector<std::string> WordBeginnings::mistyped(std::string_view word) {
  std::vector<std::string> found;
  const std::vector<std::string_view> characters = charactersOf(word);
  if (characters.size() > mostCharacters) return found;
  _looksLeft = mostLooks;
  const auto offer = [&](std::string candidate, std::string_view rest) {
    candidate += rest;
    if (found.size() < mostFound && has(candidate)) addIfNew(std::move(candidate), found);
  };
  std::size_t begin = 0;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const std::string beginning(word.substr(0, begin));
    const std::size_t end = begin + characters[i].size();
    const std::string_view behind = word.substr(end);
    const bool isLast = behind.empty();
    if (i > 0 && !isLast) {
      const std::string_view next = characters[i + 1];
      offer(beginning + std::string(next) + std::string(characters[i]), behind.substr(next.size()));
      offer(beginning, behind);
    }
    if (i > 0) {
      for (const std::string& character : nextCharacters(beginning, {})) {
        offer(beginning + character, word.substr(begin));
        if (!isLast) offer(beginning + character, behind);
      }
    }
    begin = end;
    if (!has(word.substr(0, begin))) break;
  }
  return found;
}

std::size_t WordBeginnings::longest(std::string_view word) {
  std::size_t known = 0;
  for (std::size_t end = 0; end < word.size();) {
    nextCharacter(word, end);
    if (!has(word.substr(0, end))) break;
    known = end;
  }
  return known;
}

}  // namespace quorvex::textsearch
