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
      _lasts[static_cast<unsigned char>(characters[position - 1])] = true;
    }
  }

  /// A quick test that rules out most words: whether there may be one of them behind the word or at
  /// either end of it.
  bool mayTouch(std::string_view text, const Word& word) const {
    return mayStartAt(text, word.end) || mayStartAt(text, word.begin) ||
           _lasts[static_cast<unsigned char>(text[word.end - 1])];
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
  std::array<bool, 256> _lasts{};
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

  bool nextJoinedWord(Word& word, bool& isPlain);
  bool join(Word& word);
  std::optional<std::string_view> termOf(const Word& word);
  void addPart(const Word& word);
  void fold(std::string_view word);

  TermCharacters termCharacters;
  WordSegmenter segmenter;
  std::string_view text;
  std::optional<Word> pending;  ///< read ahead; does not join the previous word
  std::string folded;
  std::string* parts = nullptr;  ///< null: not wanted
  std::size_t partsFrom = 0;
};

bool Tokenizer::State::nextJoinedWord(Word& word, bool& isPlain) {
  if (pending) {
    word = *pending;
    pending.reset();
  } else if (!segmenter.next(word)) {
    return false;
  }
  isPlain = !termCharacters.mayTouch(text, word) || !join(word);
  return true;
}

/// Joins the following words to the word and trims it; false if there is nothing to do.
bool Tokenizer::State::join(Word& word) {
  bool isPlain = true;
  while (termCharacters.mayStartAt(text, word.end)) {
    const std::size_t joint = termCharacters.skip(text, word.end);
    Word following;
    if (joint == word.end || !segmenter.next(following)) break;
    if (following.begin > joint) {
      pending = following;
      break;
    }
    if (isPlain) addPart(word);
    addPart(following);
    isPlain = false;
    word.end = following.end;
    word.foldingNeeded = word.foldingNeeded || following.foldingNeeded;
  }
  const Word whole = word;
  termCharacters.trim(text, word);
  if (isPlain && (word.begin != whole.begin || word.end != whole.end)) {
    addPart(whole);
    isPlain = false;
  }
  return !isPlain;
}

void Tokenizer::State::addPart(const Word& word) {
  if (parts == nullptr || word.begin < partsFrom) return;
  if (const std::optional<std::string_view> term = termOf(word)) parts->append(*term) += '\n';
}

/// Null when the term is too long.
std::optional<std::string_view> Tokenizer::State::termOf(const Word& word) {
  std::string_view term = text.substr(word.begin, word.end - word.begin);
  // Folding shrinks a text to no less than a third of its bytes.
  if (term.size() > 3 * maximumTermSize) return std::nullopt;
  if (word.foldingNeeded) {
    fold(term);
    term = folded;
  }
  return term.size() > maximumTermSize ? std::nullopt : std::optional(term);
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
  _state->parts = nullptr;
}

void Tokenizer::collectParts(std::size_t from, std::string& terms) {
  _state->parts = &terms;
  _state->partsFrom = from;
}

bool Tokenizer::next(Token& token) {
  State& state = *_state;
  Word word;
  while (state.nextJoinedWord(word, token.isPlain)) {
    const std::optional<std::string_view> term = state.termOf(word);
    if (!term) continue;
    token.term = *term;
    token.begin = word.begin;
    token.end = word.end;
    return true;
  }
  return false;
}

bool isCutAlikeAnywhere(std::string_view text) {
  // The segmenter cuts no stretch that is at most twice as long.
  constexpr std::size_t longestStretch = std::size_t{16} << 10U;
  while (text.size() > longestStretch) {
    const std::size_t cut = text.substr(0, longestStretch).find_last_of(" \t\n\v\f\r@");
    if (cut == text.npos) return false;
    text.remove_prefix(cut + 1);
  }
  return true;
}

}  // namespace quorvex
