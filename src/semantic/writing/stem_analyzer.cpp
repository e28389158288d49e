#include "semantic/writing/stem_analyzer.h"

#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

/// Longer terms are encoded data rather than words.
constexpr std::size_t longestTerm = 64;
constexpr std::uint32_t notStemmed = ~std::uint32_t{0} - 1;

}  // namespace

StemAnalyzer::StemAnalyzer(std::string_view language) : _tokenizer(""), _stemmer(language) {}

void StemAnalyzer::count(std::string_view text, std::uint32_t weight) {
  _tokenizer.reset(text);
  for (Token token; _tokenizer.next(token);)
    countTerm(token.term, weight);
}

void StemAnalyzer::countTerm(std::string_view term, std::uint32_t weight) {
  if (term.size() <= longestTerm) add(stemOf(term), weight);
}

void StemAnalyzer::count(std::span<const std::uint32_t> words, std::uint32_t weight,
                         const std::function<std::string_view(std::uint32_t)>& termOf) {
  for (const std::uint32_t word : words) {
    if (word >= _stemOfNumber.size()) _stemOfNumber.resize(std::size_t{word} + 1, notStemmed);
    std::uint32_t& stem = _stemOfNumber[word];
    if (stem == notStemmed) {
      const std::string_view term = termOf(word);
      stem = term.size() <= longestTerm ? newStemOf(term) : noTerm;
    }
    add(stem, weight);
  }
}

std::uint32_t StemAnalyzer::stemOf(std::string_view word) {
  const std::uint32_t id = _words.insert(word);
  if (id == _stemOfWord.size()) _stemOfWord.push_back(newStemOf(word));
  return _stemOfWord[id];
}

std::uint32_t StemAnalyzer::newStemOf(std::string_view word) {
  const std::string_view stem = _stemmer.stem(word);
  if (stem.empty() || _stems.size() >= mostNumbers) return noTerm;
  const std::uint32_t id = _stems.insert(stem);
  _counts.resize(_stems.size());
  return id;
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
