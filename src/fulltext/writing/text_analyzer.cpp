#include "fulltext/writing/text_analyzer.h"

#include <algorithm>

#include "common/bytes.h"
#include "common/unicode.h"
#include "platform/textsift.h"

namespace quorvex {

namespace {

/// Reads an entry through `take`, which tells whether its kind is right; a missing one is.
template <typename Take>
bool takeEntry(const Dictionary& properties, std::string_view key, Take take) {
  const Value* value = find(properties, key);
  return value == nullptr || take(*value);
}

bool takeStopWords(const Value& value, std::vector<std::string>& stopWords) {
  const Array* words = value.array();
  if (words == nullptr) return false;
  for (const Value& word : *words) {
    if (word.string() == nullptr) return false;
    // No term is longer, folded or not.
    if (word.string()->size() > 3 * maximumTermSize) continue;
    stopWords.push_back(caseFolded(*word.string()));
  }
  return true;
}

}  // namespace

std::optional<AnalysisSettings> AnalysisSettings::from(const Dictionary& properties) {
  AnalysisSettings settings;
  const auto takeLength = [&](const Value& value) {
    if (value.integer() == nullptr) return false;
    settings.minimumTermLength =
        static_cast<std::uint64_t>(std::max<std::int64_t>(0, *value.integer()));
    return true;
  };
  const auto takeCharacters = [&](const Value& value) {
    if (value.string() == nullptr) return false;
    settings.termCharacters = *value.string();
    return true;
  };
  const auto takeWords = [&](const Value& value) {
    return takeStopWords(value, settings.stopWords);
  };
  if (!takeEntry(properties, kTSMinTermLength, takeLength) ||
      !takeEntry(properties, kTSTermChars, takeCharacters) ||
      !takeEntry(properties, kTSStopWords, takeWords)) {
    return std::nullopt;
  }
  return settings;
}

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

AnalyzedText TextAnalyzer::add(std::string_view text) {
  AnalyzedText analyzed;
  analyzed.offset = _codes.size();
  _tokenizer.reset(text);
  bool leftOut = false;
  Token token;
  while (_tokenizer.next(token)) {
    const bool kept = !isTooShort(token.term);
    const std::uint32_t number = kept ? _terms.insert(token.term) : 0;
    if (!kept || number < _stopWordCount) {
      if (!leftOut) _codes += '\0';
      leftOut = true;
      continue;
    }
    appendVarint(_codes, std::uint64_t{number - _stopWordCount} + 1);
    leftOut = false;
    ++analyzed.length;
  }
  analyzed.size = _codes.size() - analyzed.offset;
  return analyzed;
}

}  // namespace quorvex
