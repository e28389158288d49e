#include "fulltext/writing/text_analyzer.h"

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

AnalyzedText TextAnalyzer::add(std::string_view text, std::span<std::uint32_t> boundaries,
                               std::size_t wordsFrom) {
  AnalyzedText analyzed;
  _codes.clear();
  _numbers.clear();
  _otherWords.clear();
  analyzed.operatorsBegin = _operators.counts().size();
  _tokenizer.reset(text);
  _hasWords = wordsFrom <= text.size() && isCutAlikeAnywhere(text.substr(wordsFrom));
  if (!_hasWords) wordsFrom = noWords;
  if (_hasWords) _tokenizer.collectParts(wordsFrom, _otherWords);
  bool leftOut = false;
  std::uint32_t gaps = 0;
  const auto passBoundaries = [&](std::size_t position) {
    for (; !boundaries.empty() && boundaries.front() <= position;
         boundaries = boundaries.subspan(1))
      boundaries.front() = gaps + analyzed.length;
  };
  std::size_t wordEnd = 0;
  Token token;
  while (_tokenizer.next(token)) {
    _operators.add(text, wordEnd, token.begin);
    wordEnd = token.end;
    passBoundaries(token.begin);
    const bool kept = !isTooShort(token.term);
    const std::uint32_t number = kept ? _terms.insert(token.term) : 0;
    if (token.begin >= wordsFrom && token.isPlain) {
      if (kept) {
        _numbers.push_back(number);
      } else {
        _otherWords.append(token.term) += '\n';
      }
    }
    if (!kept || number < _stopWordCount) {
      if (!leftOut) {
        _codes += '\0';
        ++gaps;
      }
      leftOut = true;
      continue;
    }
    appendVarint(_codes, std::uint64_t{number - _stopWordCount} + 1);
    leftOut = false;
    ++analyzed.length;
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
