#include "semantic/writing/stem_analyzer.h"

#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

/// Longer terms are encoded data rather than words.
constexpr std::size_t longestTerm = 64;
constexpr std::uint32_t noTerm = ~std::uint32_t{0};

}  // namespace

StemAnalyzer::StemAnalyzer(std::string_view language) : _tokenizer(""), _stemmer(language) {}

void StemAnalyzer::count(std::string_view text, std::uint32_t weight) {
  _tokenizer.reset(text);
  for (Token token; _tokenizer.next(token);) {
    if (token.term.size() > longestTerm) continue;
    const std::uint32_t stem = stemOf(token.term);
    if (stem == noTerm) continue;
    if (_counts[stem] == 0) _counted.push_back(stem);
    _counts[stem] += weight;
  }
}

std::uint32_t StemAnalyzer::stemOf(std::string_view word) {
  const std::uint32_t id = _words.insert(word);
  if (id < _stemOfWord.size()) return _stemOfWord[id];
  const std::string_view stem = _stemmer.stem(word);
  std::uint32_t stemId = noTerm;
  if (!stem.empty() && _stems.size() < mostNumbers) {
    stemId = _stems.insert(stem);
    _counts.resize(_stems.size());
  }
  _stemOfWord.push_back(stemId);
  return stemId;
}

std::vector<TermCount> StemAnalyzer::takeCounts() {
  std::vector<TermCount> result;
  result.reserve(_counted.size());
  for (const std::uint32_t stem : _counted) {
    result.push_back({stem, _counts[stem]});
    _counts[stem] = 0;
  }
  _counted.clear();
  return result;
}

}  // namespace quorvex::docuvault
