#include "fulltext/writing/text_analyzer.h"

#include <cstring>

#include "common/bytes.h"
#include "common/unicode.h"

namespace quorvex {

TextAnalyzer::TextAnalyzer(const AnalysisSettings& settings)
    : _minimumTermLength(settings.minimumTermLength), _tokenizer(settings.termCharacters) {
  for (const std::string& word : settings.stopWords)
    _terms.insert(word);
  _stopWordCount = _terms.size();
}

bool TextAnalyzer::isTooShort(std::string_view term) const {
  if (term.size() < _minimumTermLength) return true;
  // A code point takes at most four bytes.
  return term.size() < 4 * _minimumTermLength && _minimumTermLength > 1 &&
         characterCount(term) < _minimumTermLength;
}

void TextAnalyzer::startText(std::string_view text, std::size_t wordsFrom) {
  _codes.clear();
  _numbers.clear();
  _otherWords.clear();
  _tokenizer.reset(text);
  _hasWords = wordsFrom <= text.size() && isCutAlikeAnywhere(text.substr(wordsFrom));
  _wordsFrom = _hasWords ? wordsFrom : noWords;
  if (_hasWords) _tokenizer.collectParts(wordsFrom, _otherWords);
}

/// Returns some of the next tokens, valid until the next call; none at the end.
std::span<const TextAnalyzer::NumberedToken> TextAnalyzer::nextTokens(std::string_view text) {
  std::array<std::string_view, batchSize> terms;
  std::array<std::uint32_t, batchSize> numbers;
  std::size_t count = 0;
  std::size_t longEnough = 0;
  char* copy = _foldedTerms.data();
  for (; count < batchSize && _tokenizer.next(_tokens[count]); ++count) {
    Token& token = _tokens[count];
    if (token.term.data() != text.data() + token.begin) {
      std::memcpy(copy, token.term.data(), token.term.size());
      token.term = {copy, token.term.size()};
      copy += token.term.size();
    }
    if (!isTooShort(token.term)) terms[longEnough++] = token.term;
  }
  _terms.insertAll(std::span(terms).first(longEnough), numbers);
  const std::span<NumberedToken> tokens = std::span(_tokens).first(count);
  const std::uint32_t* number = numbers.data();
  for (NumberedToken& token : tokens)
    token.number = longEnough == count || !isTooShort(token.term) ? *number++ : tooShort;
  return tokens;
}

void TextAnalyzer::noteWord(const NumberedToken& token) {
  if (token.number != tooShort) {
    _numbers.push_back(token.number);
  } else {
    _otherWords.append(token.term) += '\n';
  }
}

AnalyzedText TextAnalyzer::add(std::string_view text, std::span<std::uint32_t> boundaries,
                               std::size_t wordsFrom) {
  AnalyzedText analyzed;
  analyzed.operatorsBegin = _operators.counts().size();
  startText(text, wordsFrom);
  bool leftOut = false;
  std::uint32_t gaps = 0;
  const auto passBoundaries = [&](std::size_t position) {
    for (; !boundaries.empty() && boundaries.front() <= position;
         boundaries = boundaries.subspan(1))
      boundaries.front() = gaps + analyzed.length;
  };
  std::size_t wordEnd = 0;
  for (auto tokens = nextTokens(text); !tokens.empty(); tokens = nextTokens(text)) {
    for (const NumberedToken& token : tokens) {
      _operators.add(text, wordEnd, token.begin);
      wordEnd = token.end;
      passBoundaries(token.begin);
      if (token.begin >= _wordsFrom && token.isPlain) noteWord(token);
      if (token.number == tooShort || token.number < _stopWordCount) {
        if (!leftOut) {
          _codes += '\0';
          ++gaps;
        }
        leftOut = true;
        continue;
      }
      appendVarint(_codes, std::uint64_t{token.number - _stopWordCount} + 1);
      leftOut = false;
      ++analyzed.length;
    }
  }
  _operators.add(text, wordEnd, text.size());
  _operators.endText();
  analyzed.operatorsEnd = _operators.counts().size();
  passBoundaries(text.size());
  analyzed.codes = _codes;
  return analyzed;
}

std::optional<TextWords> TextAnalyzer::words() const {
  if (!_hasWords) return std::nullopt;
  return TextWords{.numbers = _numbers,
                   .termOf = [this](std::uint32_t number) { return _terms.term(number); },
                   .others = _otherWords};
}

}  // namespace quorvex
