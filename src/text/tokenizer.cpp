#include "text/tokenizer.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/uchar.h>

#include "common/unicode.h"
#include "text/word_segmenter.h"

namespace quorvex {

namespace {

/// Characters that join words. A table of their first bytes rules out most text with one look-up.
class TermCharacters {
 public:
  explicit TermCharacters(std::string_view characters) {
    for (std::size_t position = 0; position < characters.size();) {
      const auto lead = static_cast<unsigned char>(characters[position]);
      const char32_t character = nextCharacter(characters, position);
      if (u_isalnum(static_cast<UChar32>(character)) || isWhitespaceOrNewline(character)) continue;
      _characters.push_back(character);
      _leads[lead] = true;
    }
  }

  bool mayStartAt(std::string_view text, std::size_t position) const {
    return position < text.size() && _leads[static_cast<unsigned char>(text[position])];
  }

  /// Returns the end of the run of these characters at `position`.
  std::size_t skip(std::string_view text, std::size_t position) const {
    while (mayStartAt(text, position)) {
      std::size_t end = position;
      if (!contains(nextCharacter(text, end))) break;
      position = end;
    }
    return position;
  }

  /// Trims these characters from both ends of a word.
  void trim(std::string_view text, Word& word) const {
    word.begin = std::min(skip(text, word.begin), word.end);
    while (word.end > word.begin) {
      const std::size_t start = characterStart(text, word.end - 1, word.begin);
      if (!_leads[static_cast<unsigned char>(text[start])] || skip(text, start) < word.end) break;
      word.end = start;
    }
  }

 private:
  bool contains(char32_t character) const {
    return std::ranges::find(_characters, character) != _characters.end();
  }

  std::vector<char32_t> _characters;
  std::array<bool, 256> _leads{};
};

/// Folds an ASCII word into `folded`; false when it contains other characters.
bool foldAscii(std::string_view word, std::string& folded) {
  folded.resize(word.size());
  unsigned char seen = 0;
  for (std::size_t i = 0; i < word.size(); ++i) {
    const auto byte = static_cast<unsigned char>(word[i]);
    const bool capital = byte - unsigned{'A'} <= 'Z' - 'A';
    folded[i] = static_cast<char>(capital ? byte + ('a' - 'A') : byte);
    seen |= byte;
  }
  return seen < 0x80;
}

}  // namespace

struct Tokenizer::State {
  explicit State(std::string_view characters) : termCharacters(characters) {}

  bool nextJoinedWord(Word& word);
  void fold(std::string_view word);

  TermCharacters termCharacters;
  WordSegmenter segmenter;
  std::string_view text;
  std::optional<Word> pending;  ///< read ahead; does not join the previous word
  std::string folded;
};

bool Tokenizer::State::nextJoinedWord(Word& word) {
  if (pending) {
    word = *pending;
    pending.reset();
  } else if (!segmenter.next(word)) {
    return false;
  }
  while (termCharacters.mayStartAt(text, word.end)) {
    const std::size_t joint = termCharacters.skip(text, word.end);
    Word following;
    if (joint == word.end || !segmenter.next(following)) break;
    if (following.begin > joint) {
      pending = following;
      break;
    }
    word.end = following.end;
    word.foldingNeeded = word.foldingNeeded || following.foldingNeeded;
  }
  termCharacters.trim(text, word);
  return true;
}

void Tokenizer::State::fold(std::string_view word) {
  if (foldAscii(word, folded)) return;
  folded.clear();
  icu::StringByteSink<std::string> sink(&folded);
  UErrorCode status = U_ZERO_ERROR;
  icu::CaseMap::utf8Fold(0, icu::StringPiece(word.data(), static_cast<std::int32_t>(word.size())),
                         sink, nullptr, status);
  if (U_FAILURE(status)) folded = word;
}

Tokenizer::Tokenizer(std::string_view termCharacters)
    : _state(std::make_unique<State>(termCharacters)) {}

Tokenizer::~Tokenizer() = default;

void Tokenizer::reset(std::string_view text) {
  _state->text = text;
  _state->pending.reset();
  _state->segmenter.reset(text);
}

bool Tokenizer::next(Token& token) {
  State& state = *_state;
  Word word;
  while (state.nextJoinedWord(word)) {
    std::string_view term = state.text.substr(word.begin, word.end - word.begin);
    // Folding shrinks a text to no less than a third of its bytes.
    if (term.size() > 3 * maximumTermSize) continue;
    if (word.foldingNeeded) {
      state.fold(term);
      term = state.folded;
    }
    if (term.size() > maximumTermSize) continue;
    token = {term, word.begin, word.end};
    return true;
  }
  return false;
}

}  // namespace quorvex
